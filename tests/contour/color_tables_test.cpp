#include <gtest/gtest.h>

#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <limits>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "orvane/contour/color_map.h"
#include "orvane/contour/color_tables.h"
#include "support/expect_error.h"

namespace orvane {
namespace {

// Whether two colours differ by at most one in each channel.
::testing::AssertionResult WithinOne(Color actual, Color expected) {
  const ColorBytes a = SplitColor(actual);
  const ColorBytes e = SplitColor(expected);
  if (std::abs(a.red - e.red) <= 1 && std::abs(a.green - e.green) <= 1 && std::abs(a.blue - e.blue) <= 1) {
    return ::testing::AssertionSuccess();
  }
  return ::testing::AssertionFailure() << std::hex << "0x" << actual << " is not within 1 of 0x" << expected;
}

std::vector<double> Values(const ColorMap& map) {
  std::vector<double> values;
  for (std::int32_t i = 0; i < map.Count(); ++i) values.push_back(map.Item(i)->Value());
  return values;
}

// The map's colour at each of the given positions.
void ExpectSamples(const ColorMap& map, std::initializer_list<std::pair<double, Color>> samples) {
  for (const auto& [t, color] : samples) EXPECT_EQ(map.Sample(t), color) << "at " << t;
}

// Named maps.

TEST(ColorTableNamed, ElevationsTakeTerrainAndOtherDataViridis) {
  for (const char* text : {"Height (m)", "ELEVATION", "dem.grd", "bathymetry", "topo.xyz volcano"}) {
    EXPECT_EQ(PerceptualColorMapFor(text), "terrain") << text;
  }
  for (const char* text : {"", "Zinc (ppm)", "meuse.csv", "temperature"}) EXPECT_EQ(PerceptualColorMapFor(text), "viridis") << text;
}

TEST(ColorTableNamed, EveryMapRunsFrom0To1BetweenItsPublishedEnds) {
  EXPECT_EQ(PerceptualColorMapNames(),
            (std::vector<std::string>{"viridis", "cividis", "magma", "diverging", "terrain"}));
  struct Ends {
    const char* name;
    std::uint32_t first, middle, last;
  };
  const Ends ends[] = {{"viridis", 0x440154, 0, 0xFDE725},
                       {"cividis", 0x00224E, 0, 0xFEE838},
                       {"magma", 0x000004, 0, 0xFCFDBF},
                       {"diverging", 0x053061, 0xF7F7F7, 0x67001F},
                       {"terrain", 0x333399, 0xFFFF99, 0xFFFFFF}};
  for (const Ends& e : ends) {
    SCOPED_TRACE(e.name);
    ColorMap map;
    map.Add(0.123, Rgb(1, 2, 3));  // gone once the named map is loaded
    LoadPerceptualColorMap(map, e.name);
    const std::vector<double> values = Values(map);
    ASSERT_GE(values.size(), 6u);
    EXPECT_EQ(values.front(), 0.0);
    EXPECT_EQ(values.back(), 1.0);
    EXPECT_TRUE(std::find(values.begin(), values.end(), 0.123) == values.end());
    EXPECT_EQ(map.Item(0)->Color(), FromHexRgb(e.first));
    EXPECT_EQ(map.Item(map.Count() - 1)->Color(), FromHexRgb(e.last));
    EXPECT_EQ(map.Sample(0.0), FromHexRgb(e.first));
    EXPECT_EQ(map.Sample(1.0), FromHexRgb(e.last));
    if (e.middle != 0) {
      EXPECT_EQ(map.Sample(0.5), FromHexRgb(e.middle));
    }
  }
}

TEST(ColorTableNamed, SampledMapsFollowMatplotlibsTablesBetweenTheirStops) {
  // Entries of the 256-entry tables, at positions entry / 255, including entries that
  // fall between two stops of the map and the sharp bend in cividis near entry 22.
  struct Entry {
    int index;
    std::uint32_t rrggbb;
  };
  struct Table {
    const char* name;
    std::vector<Entry> entries;
  };
  const Table tables[] = {
      {"viridis", {{22, 0x482071}, {64, 0x3B528B}, {128, 0x21918C}, {192, 0x5EC962}, {250, 0xF1E51D}}},
      {"cividis", {{22, 0x003171}, {64, 0x434E6C}, {128, 0x7D7C78}, {192, 0xBCAE6C}, {250, 0xFCE236}}},
      {"magma", {{22, 0x110C2F}, {64, 0x51127C}, {128, 0xB73779}, {192, 0xFC8961}, {250, 0xFCF4B6}}}};
  for (const Table& table : tables) {
    ColorMap map;
    LoadPerceptualColorMap(map, table.name);
    for (const Entry& entry : table.entries) {
      SCOPED_TRACE(std::string(table.name) + " entry " + std::to_string(entry.index));
      const std::optional<Color> sampled = map.Sample(entry.index / 255.0);
      ASSERT_TRUE(sampled.has_value());
      EXPECT_TRUE(WithinOne(*sampled, FromHexRgb(entry.rrggbb)));
    }
  }
}

TEST(ColorTableNamed, AnUnknownNameIsRefusedWithTheKnownOnesAndTheMapKept) {
  ColorMap map;
  for (const char* name : {"Viridis", "", "jet"}) {
    SCOPED_TRACE(name);
    EXPECT_ORVANE_ERROR(LoadPerceptualColorMap(map, name), 5, "Orvada.ColorMap",
                        "\"" + std::string(name) +
                            "\" is not a colour map; the known ones are viridis, cividis, magma, diverging and "
                            "terrain.");
  }
  EXPECT_ORVANE_ERROR(LoadPerceptualColorMap(map, "a\x1b[2Jb"), 5, "Orvada.ColorMap",
                      "\"a\\x1B[2Jb\" is not a colour map; the known ones are viridis, cividis, magma, "
                      "diverging and terrain.");
  EXPECT_EQ(Values(map), (std::vector<double>{0.0, 1.0}));
  EXPECT_EQ(map.Item(0)->Color(), FromHexRgb(0xC0C0C0));
}

// Reading files.

class ColorTableFile : public ::testing::Test {
 protected:
  void SetUp() override {
    dir_ = std::filesystem::temp_directory_path() /
           ("orvane_color_tables_" + std::to_string(::getpid()) + "_" +
            ::testing::UnitTest::GetInstance()->current_test_info()->name());
    std::filesystem::create_directories(dir_);
  }
  void TearDown() override { std::filesystem::remove_all(dir_); }

  std::string Write(const std::string& text, const std::string& name = "table.txt") {
    const std::string path = (dir_ / name).string();
    std::ofstream(path, std::ios::binary) << text;
    return path;
  }

  std::filesystem::path dir_;
};

TEST_F(ColorTableFile, SimpleTableTakesEveryColourForm) {
  const ColorTable table = ReadColorTable(Write(
      "\xEF\xBB\xBF# depth colours\r\n"
      "\r\n"
      "-10 #1A2B3C\r\n"
      "  -2.5\t0 128 255\n"
      "0 10,20,30\n"
      "    # a comment between stops\n"
      "+4e1 255/254/253\n"
      "40 1, 2, 3\n"
      "100 #ffffff"));
  EXPECT_EQ(table.values, (std::vector<double>{-10, -2.5, 0, 40, 40, 100}));
  EXPECT_EQ(table.colors, (std::vector<Color>{FromHexRgb(0x1A2B3C), Rgb(0, 128, 255), Rgb(10, 20, 30),
                                              Rgb(255, 254, 253), Rgb(1, 2, 3), Rgb(255, 255, 255)}));
  EXPECT_FALSE(table.relative);
  EXPECT_FALSE(table.below || table.above || table.missing);
}

TEST_F(ColorTableFile, RelativeOnlyWhenEveryValueLiesWithin0And1) {
  EXPECT_TRUE(ReadColorTable(Write("0 #000000\n0.5 #808080\n1 #FFFFFF\n")).relative);
  EXPECT_TRUE(ReadColorTable(Write("0.25 #000000\n0.75 #FFFFFF\n")).relative);
  EXPECT_FALSE(ReadColorTable(Write("-0.01 #000000\n1 #FFFFFF\n")).relative);
  EXPECT_FALSE(ReadColorTable(Write("0 #000000\n1.01 #FFFFFF\n")).relative);
}

TEST_F(ColorTableFile, DiscreteCptKeepsBothColoursOfEachBoundary) {
  const ColorTable table = ReadColorTable(Write(
      "# made by hand\n"
      "# COLOR_MODEL = RGB\n"
      "0\t255/0/0\t10\t255/0/0\n"
      "10 0 0 200 20 0 0 200 L ;shallow\n"
      "20 0/0/200 30 #00C800 U\n"
      "30 Green 40 white B\n"
      "B black\n"
      "F 250 250 250\n"
      "N 128\n",
      "steps.cpt"));
  // The boundaries at 10 and 30 change colour and are kept twice; the one at 20 does not.
  EXPECT_EQ(table.values, (std::vector<double>{0, 10, 10, 20, 30, 30, 40}));
  EXPECT_EQ(table.colors, (std::vector<Color>{Rgb(255, 0, 0), Rgb(255, 0, 0), Rgb(0, 0, 200), Rgb(0, 0, 200),
                                              Rgb(0, 200, 0), Rgb(0, 255, 0), Rgb(255, 255, 255)}));
  EXPECT_FALSE(table.relative);
  EXPECT_EQ(table.below, Rgb(0, 0, 0));
  EXPECT_EQ(table.above, Rgb(250, 250, 250));
  EXPECT_EQ(table.missing, Rgb(128, 128, 128));
}

TEST_F(ColorTableFile, HsvCptIsTurnedIntoRgb) {
  const ColorTable table = ReadColorTable(Write(
      "# COLOR_MODEL = +HSV\n"
      "0 0-1-1 0.5 120/1/1\n"
      "0.5 120 1 0.5 1 240 0.5 1\n"
      "N 60/1/1\n"));
  // Value 0.5 is 127.5, rounded half to even.
  EXPECT_EQ(table.values, (std::vector<double>{0, 0.5, 0.5, 1}));
  EXPECT_EQ(table.colors,
            (std::vector<Color>{Rgb(255, 0, 0), Rgb(0, 255, 0), Rgb(0, 128, 0), Rgb(128, 128, 255)}));
  EXPECT_TRUE(table.relative);
  EXPECT_EQ(table.missing, Rgb(255, 255, 0));
}

TEST_F(ColorTableFile, FourNumbersAreAGreyCptOnlyWhenTheFileSaysSo) {
  // Marked as a .cpt: two grey levels per line.
  const ColorTable grey = ReadColorTable(Write("# COLOR_MODEL = RGB\n0 0 10 255\n"));
  EXPECT_EQ(grey.values, (std::vector<double>{0, 10}));
  EXPECT_EQ(grey.colors, (std::vector<Color>{Rgb(0, 0, 0), Rgb(255, 255, 255)}));
  // Unmarked: VALUE R G B.
  const ColorTable simple = ReadColorTable(Write("0 0 10 255\n10 255 10 0\n"));
  EXPECT_EQ(simple.values, (std::vector<double>{0, 10}));
  EXPECT_EQ(simple.colors, (std::vector<Color>{Rgb(0, 10, 255), Rgb(255, 10, 0)}));
}

TEST_F(ColorTableFile, BadTablesAreRefusedWithTheFileAndLine) {
  struct Case {
    const char* text;
    const char* message;  // after "path:"; a line number unless the whole file is at fault
  };
  const Case cases[] = {
      {"0 #FF0000\n1 #GG0000\n", "2: \"#GG0000\" is not a colour (#RRGGBB)"},
      {"0 #FF000\n1 #000000\n", "1: \"#FF000\" is not a colour (#RRGGBB)"},
      {"# c\n0 255 0\n", "2: expected \"VALUE COLOR\" with COLOR as #RRGGBB, R G B, R,G,B or R/G/B, not \"0 255 0\""},
      {"0 256/0/0\n1 0/0/0\n", "1: \"256\" is not a colour channel (a whole number 0 to 255)"},
      {"0 1.5/0/0\n1 0/0/0\n", "1: \"1.5\" is not a colour channel (a whole number 0 to 255)"},
      {"0 1/2\n1 0/0/0\n", "1: \"1/2\" is not a colour (three channels are needed)"},
      {"0 red\nnan blue\n", "2: values must be finite numbers, not \"nan\""},
      {"0 red\n1e999 blue\n", "2: values must be finite numbers, not \"1e999\""},
      {"zero red\n1 blue\n", "1: \"zero\" is not a value"},
      {"0 red\n5 red\n\n1 blue\n", "4: values must ascend, and \"1\" is below the value before it"},
      {"0 red\n0 blue\n1 blue\n", "2: a value may be repeated only once, between others, to mark a jump: \"0\""},
      {"0 red\n1 blue\n1 green\n\n# end\n",
       "3: a value may be repeated only once, between others, to mark a jump: \"1\""},
      {"0 red\n1 blue\n1 green\n1 red\n2 red\n",
       "4: a value may be repeated only once, between others, to mark a jump: \"1\""},
      {"0 \x1b[31m\n", "1: \"\\x1B[31m\" is not a colour"},
      {"0 red 10 red\n12 blue 20 blue\n", "2: the slice starts at \"12\", not where the one before ended"},
      {"0 red 10 red\n10 red 5 blue\n", "2: a slice must go up, not from \"10\" to \"5\""},
      {"0 red 10 chartreuse\n", "1: \"chartreuse\" is not a colour"},
      {"0 red 10 blue\nB\n",
       "2: expected a slice \"z0 colour z1 colour\" or a B, F or N line, not \"B\""},
      {"0 red 10 blue\n20 green\n",
       "2: expected a slice \"z0 colour z1 colour\" or a B, F or N line, not \"20 green\""},
      {"# COLOR_MODEL = CMYK\n0 0/0/0/0 1 0/0/0/0\n", "1: CMYK colour tables are not supported"},
      {"#COLOR_MODEL = Lab\n", "1: unknown colour model \"Lab\" (expected RGB or HSV)"},
      {"# COLOR_MODEL = HSV\n0 400/1/1 1 0/1/1\n", "2: \"400\" is not a hue (0 to 360)"},
      {"# COLOR_MODEL = HSV\n0 0 1 2 1 0 1 1\n", "2: \"2\" is not a fraction (0 to 1)"},
      {"# only a comment\n", " a colour table needs at least 2 stops, and this one has 0"},
      {"0.5 #102030\n", " a colour table needs at least 2 stops, and this one has 1"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.text);
    const std::string path = Write(c.text);
    EXPECT_ORVANE_ERROR(ReadColorTable(path), 5, "Orvada.ColorMap", path + ":" + c.message);
  }
}

TEST_F(ColorTableFile, UnreadableFilesAreRefused) {
  const std::string path = (dir_ / "missing.cpt").string();
  EXPECT_ORVANE_ERROR(ReadColorTable(path), 5, "Orvada.ColorMap",
                      path + ": cannot open the file (No such file or directory)");
  EXPECT_ORVANE_ERROR(ReadColorTable(dir_.string()), 5, "Orvada.ColorMap",
                      dir_.string() + ": cannot open the file (Is a directory)");
}

// Laying a table over levels.

TEST(ColorTableLoad, AbsoluteTableIsCutToTheLevelRange) {
  ColorTable table;
  table.values = {0, 100};
  table.colors = {Rgb(0, 0, 0), Rgb(200, 100, 0)};
  ColorMap map;
  // Levels 50..150: the table covers the first half and its end colour the rest.
  LoadColorTable(map, table, 50, 150);
  EXPECT_EQ(Values(map), (std::vector<double>{0.0, 0.5, 1.0}));
  ExpectSamples(map, {{0.0, Rgb(100, 50, 0)}, {0.25, Rgb(150, 75, 0)}, {0.5, Rgb(200, 100, 0)},
                      {1.0, Rgb(200, 100, 0)}});
  // Levels 25..75 lie inside the table: both ends are interpolated.
  LoadColorTable(map, table, 25, 75);
  EXPECT_EQ(Values(map), (std::vector<double>{0.0, 1.0}));
  ExpectSamples(map, {{0.0, Rgb(50, 25, 0)}, {1.0, Rgb(150, 75, 0)}});
  // Levels -100..100 with a colour below the table: it holds up to the table's start.
  table.below = Rgb(0, 0, 255);
  LoadColorTable(map, table, -100, 100);
  ExpectSamples(map, {{0.0, Rgb(0, 0, 255)}, {0.4999, Rgb(0, 0, 255)}, {0.5, Rgb(0, 0, 0)},
                      {0.75, Rgb(100, 50, 0)}, {1.0, Rgb(200, 100, 0)}});
  // And a colour above it: the last value keeps the last colour.
  table.above = Rgb(0, 255, 0);
  LoadColorTable(map, table, 0, 200);
  ExpectSamples(map, {{0.0, Rgb(0, 0, 0)}, {0.5, Rgb(200, 100, 0)}, {0.5001, Rgb(0, 255, 0)},
                      {1.0, Rgb(0, 255, 0)}});
}

TEST_F(ColorTableFile, DiscreteCptSamplesEachSliceInItsColour) {
  const ColorTable table = ReadColorTable(Write(
      "0 255/0/0 10 255/0/0\n"
      "10 0/0/200 20 0/0/200\n"
      "20 0/200/0 30 0/0/200\n",
      "slices.cpt"));
  ColorMap map;
  LoadColorTable(map, table, 0, 30);
  // Levels 0 to 30; a boundary takes the slice above it.
  ExpectSamples(map, {{0.0, Rgb(255, 0, 0)}, {9.999 / 30, Rgb(255, 0, 0)}, {10.0 / 30, Rgb(0, 0, 200)},
                      {19.999 / 30, Rgb(0, 0, 200)}, {20.0 / 30, Rgb(0, 200, 0)}, {25.0 / 30, Rgb(0, 100, 100)},
                      {1.0, Rgb(0, 0, 200)}});
  // Each jump is two stops kJumpWidth apart.
  const std::vector<double> values = Values(map);
  ASSERT_EQ(values.size(), 6u);
  EXPECT_NEAR(values[2] - values[1], 1e-9, 1e-15);
  EXPECT_NEAR(values[4] - values[3], 1e-9, 1e-15);
  EXPECT_EQ(values[2], 10.0 / 30);
  EXPECT_EQ(values[4], 20.0 / 30);
}

TEST(ColorTableLoad, RelativeTableIgnoresTheLevelRange) {
  ColorTable table;
  table.values = {0.25, 0.5, 0.5, 0.75};
  table.colors = {Rgb(10, 10, 10), Rgb(20, 20, 20), Rgb(200, 0, 0), Rgb(100, 0, 0)};
  table.relative = true;
  ColorMap map;
  LoadColorTable(map, table, 1000, 2000);
  EXPECT_EQ(Values(map), (std::vector<double>{0.0, 0.25, 0.5 - 1e-9, 0.5, 0.75, 1.0}));
  ExpectSamples(map, {{0.0, Rgb(10, 10, 10)}, {0.375, Rgb(15, 15, 15)}, {0.5, Rgb(200, 0, 0)},
                      {1.0, Rgb(100, 0, 0)}});
}

TEST(ColorTableLoad, BadRangesAndTablesAreRefusedAndTheMapKept) {
  ColorTable good;
  good.values = {0, 1};
  good.colors = {0, 0xFFFFFF};
  ColorMap map;
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const double inf = std::numeric_limits<double>::infinity();
  const std::string range = "A colour table needs a level range of finite numbers, the first below the last.";
  for (const auto& limits : std::vector<std::pair<double, double>>{
           {1, 1}, {2, 1}, {nan, 1}, {0, nan}, {-inf, 0}, {0, inf}, {-1e308, 1e308}}) {
    SCOPED_TRACE(std::to_string(limits.first) + " " + std::to_string(limits.second));
    EXPECT_ORVANE_ERROR(LoadColorTable(map, good, limits.first, limits.second), 5, "Orvada.ColorMap", range);
  }
  ColorTable bad = good;
  bad.colors.pop_back();
  EXPECT_ORVANE_ERROR(LoadColorTable(map, bad, 0, 1), 5, "Orvada.ColorMap",
                      "A colour table needs one colour for each value.");
  const std::string order =
      "A colour table's values must ascend, a value repeated only once, between others, to mark a jump.";
  const std::pair<std::vector<double>, std::string> tables[] = {
      {{0}, "A colour table needs at least 2 stops."}, {{0, nan}, "A colour table's values must be finite numbers."},
      {{1, 0, 2}, order}, {{0, 0, 1}, order}, {{0, 1, 1}, order}, {{0, 1, 1, 1, 2}, order}};
  for (const auto& [values, message] : tables) {
    bad.values = values;
    bad.colors.assign(values.size(), 0);
    EXPECT_ORVANE_ERROR(LoadColorTable(map, bad, 0, 1), 5, "Orvada.ColorMap", message);
  }
  EXPECT_EQ(Values(map), (std::vector<double>{0.0, 1.0}));
  EXPECT_EQ(map.Item(0)->Color(), FromHexRgb(0xC0C0C0));
}

}  // namespace
}  // namespace orvane
