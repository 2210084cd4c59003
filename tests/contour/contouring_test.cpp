#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <memory>
#include <string>
#include <vector>

#include "orvane/contour/contouring.h"
#include "orvane/core/property_bag.h"
#include "support/event_recorder.h"
#include "support/expect_error.h"

namespace orvane {
namespace {

using testing::EventRecorder;

std::vector<double> Values(const Contouring& c) {
  std::vector<double> v;
  for (std::int32_t i = 0; i < c.Contours().Count(); ++i) v.push_back(c.Contours().Item(i)->Value());
  return v;
}

TEST(Contouring, DefaultLevelsByIntervalCountInRainbowColours) {
  Contouring c;
  c.AutoSetContours(0, 100);
  EXPECT_EQ(Values(c), (std::vector<double>{0, 10, 20, 30, 40, 50, 60, 70, 80, 90, 100}));
  const auto& levels = c.Contours();
  EXPECT_EQ(levels.Item(0)->Color(), FromHexRgb(0xEE82EE));    // violet at 0
  EXPECT_EQ(levels.Item(10)->Color(), FromHexRgb(0xCD5C5C));   // indian red at 1
  EXPECT_EQ(levels.Item(0)->ColorBelow(), levels.Item(0)->Color());
  // 0.1 lies between 0 (violet) and 0.14 (dark violet): t = 0.1 / 0.14.
  EXPECT_EQ(levels.Item(1)->Color(), InterpolateColor(FromHexRgb(0xEE82EE), FromHexRgb(0x9400D3), 0.1 / 0.14));
}

TEST(Contouring, LevelsByIntervalRoundTheCountHalfToEven) {
  Contouring c;
  c.SetAutoSetContoursType(orvAutoSetByInterval);
  c.SetAutoSetInterval(3);
  c.AutoSetContours(0, 10);
  EXPECT_EQ(Values(c), (std::vector<double>{0, 3, 6, 9}));  // round(3.33) = 3
  c.SetAutoSetInterval(4);
  c.AutoSetContours(0, 10);
  EXPECT_EQ(Values(c), (std::vector<double>{0, 4, 8}));  // round-half-even(2.5) = 2
  // Repeated addition, not ZMin + i * interval.
  c.SetAutoSetInterval(0.1);
  c.AutoSetContours(0, 0.3);
  EXPECT_EQ(Values(c), (std::vector<double>{0, 0.1, 0.2, 0.30000000000000004}));
}

TEST(Contouring, BadSettingsAndFlatDataGiveNoLevels) {
  Contouring c;
  const auto levelsFor = [&c](double zMin, double zMax) {
    c.AutoSetContours(zMin, zMax);
    return c.Contours().Count();
  };
  EXPECT_EQ(levelsFor(5, 5), 0);
  c.SetAutoSetContoursType(orvAutoSetByInterval);
  EXPECT_EQ(levelsFor(5, 5), 0);
  c.SetAutoSetInterval(-1);
  EXPECT_EQ(levelsFor(0, 10), 0);
  c.SetAutoSetInterval(NAN);
  EXPECT_EQ(levelsFor(0, 10), 0);
  c.SetAutoSetContoursType(orvAutoSetByIntervalCount);
  c.SetAutoSetIntervalCount(0);
  EXPECT_EQ(levelsFor(0, 10), 0);
  EXPECT_EQ(levelsFor(10, 0), 0);  // maximum below minimum
  // Off leaves the host's levels alone.
  c.SetAutoSetContoursType(orvAutoSetOff);
  c.Contours().Add(1);
  c.AutoSetContours(0, 100);
  EXPECT_EQ(Values(c), std::vector<double>{1});
}

// Where a level goes, and what a moved one keeps, is held to the literal insertion in
// contour_insertion_test.cpp.
TEST(Contours, RemovalAndRefusals) {
  Contours levels;
  levels.AddLevels(std::vector<double>{0, 5, 10});
  levels.Remove(0);
  EXPECT_EQ(levels.Item(0)->Value(), 5);
  EXPECT_ORVANE_ERROR(levels.Item(2), 9, "Orvada", "Subscript out of range");
  EXPECT_ORVANE_ERROR(levels.Remove(-1), 9, "Orvada");
  EXPECT_ORVANE_ERROR(levels.Add(1, 0x100000000ll), 5, "Orvada.Contours");
}

TEST(Contour, LineDrawStyleIsStoredBeforeItIsRefused) {
  Contour level(2.0);
  EventRecorder events(level.PropertyChanged);
  EXPECT_ORVANE_ERROR(level.SetLineDrawStyle(7), 5, "Orvada.Contour",
                      "Invalid procedure call or argument");
  EXPECT_EQ(level.LineDrawStyle(), 7);
  level.SetLineDrawStyle(3);
  level.SetLineWidth(2);
  level.SetColor(9);
  level.SetColorBelow(9);
  level.SetColorBelow(9);
  EXPECT_EQ(events.names, (std::vector<std::string>{"LineDrawStyle", "LineWidth", "Color", "ColorBelow"}));
}

TEST(Contouring, StripedMapsSetEveryColorBelow) {
  Contouring c;
  c.SetColorMapType(orvColorMapRainbowStriped);
  c.AutoSetContours(0, 100);
  for (std::int32_t i = 0; i < c.Contours().Count(); ++i) {
    EXPECT_EQ(c.Contours().Item(i)->ColorBelow(), FromHexRgb(0xF5F5F5));
  }
  EXPECT_EQ(c.Contours().Item(0)->Color(), FromHexRgb(0xEE82EE));
  c.SetColorMapType(orvColorMapZebraStriped);
  c.ApplyColorMap();
  EXPECT_EQ(c.Contours().Item(5)->Color(), 0u);
  EXPECT_EQ(c.Contours().Item(5)->ColorBelow(), FromHexRgb(0xF5F5F5));
  EXPECT_TRUE(c.WorkingColorMap().IsStriped());
  // The reversed rainbow keeps the positions: 0.14 is red there.
  c.SetColorMapType(orvColorMapRainbowReverse);
  c.Contours().RemoveAll();
  c.Contours().AddLevels(std::vector<double>{0, 14, 100});
  c.ApplyColorMap();
  EXPECT_EQ(c.Contours().Item(1)->Color(), FromHexRgb(0xFF0000));
  EXPECT_FALSE(c.WorkingColorMap().IsStriped());
}

TEST(Contouring, FindColorAtBetweenAndOutsideTheLevels) {
  Contouring c;
  c.SetAutoSetContoursType(orvAutoSetOff);
  EXPECT_ORVANE_ERROR(c.FindColor(1, false), 9, "Orvada");
  c.Contours().Add(0, Rgb(0, 0, 0), Rgb(10, 10, 10));
  c.Contours().Add(10, Rgb(255, 255, 255), Rgb(100, 100, 100));
  EXPECT_EQ(c.FindColor(0, false), Rgb(0, 0, 0));
  EXPECT_EQ(c.FindColor(1e-14, true), Rgb(10, 10, 10));   // within the tolerance
  EXPECT_EQ(c.FindColor(-1e-9, false), Rgb(10, 10, 10));  // below the first: its ColorBelow
  EXPECT_EQ(c.FindColor(5, true), Rgb(0, 0, 0));          // between: the lower's Color
  EXPECT_EQ(c.FindColor(11, true), Rgb(255, 255, 255));   // above: the last's Color
  c.SetInterpolateColors(true);
  // From the lower's Color (0) to the upper's ColorBelow (100): 50 at the middle.
  EXPECT_EQ(c.FindColor(5, false), Rgb(50, 50, 50));
  EXPECT_EQ(c.FindColor(0.5, false), Rgb(5, 5, 5));
  EXPECT_EQ(c.FindColor(-1, false), Rgb(10, 10, 10));
}

TEST(Contouring, NoneMapCarriesTheHostsColoursAcrossARebuild) {
  Contouring c;
  c.SetColorMapType(orvColorMapNone);
  c.ApplyColorMap();  // nothing captured yet: nothing happens
  c.Contours().Add(0, Rgb(255, 0, 0));
  c.Contours().Add(10, Rgb(0, 0, 255));
  c.AutoSetContours(0, 100);
  ASSERT_EQ(c.Contours().Count(), 11);
  EXPECT_EQ(c.Contours().Item(0)->Color(), Rgb(255, 0, 0));
  EXPECT_EQ(c.Contours().Item(5)->Color(), Rgb(128, 0, 128));
  EXPECT_EQ(c.Contours().Item(10)->Color(), Rgb(0, 0, 255));
}

TEST(Contouring, UserMapIsSampledDirectly) {
  Contouring c;
  c.SetColorMapType(orvColorMapUser);
  c.UserColorMap().RemoveAll();
  c.UserColorMap().Add(0, Rgb(0, 0, 0));
  c.UserColorMap().Add(1, Rgb(200, 0, 0));
  c.SetAutoSetIntervalCount(4);
  c.AutoSetContours(0, 4);
  EXPECT_EQ(c.Contours().Item(2)->Color(), Rgb(100, 0, 0));
  // A single stop reaches nothing: the levels keep their colours.
  c.UserColorMap().Remove(1);
  c.Contours().Item(2)->SetColor(7);
  c.ApplyColorMap();
  EXPECT_EQ(c.Contours().Item(2)->Color(), 7u);
}

TEST(Contouring, LetsRaiseTheirNamesAndPersist) {
  Contouring c;
  EventRecorder events(c.PropertyChanged);
  c.SetColorMapType(orvColorMapLandSeaDark);
  c.SetColorMapType(orvColorMapLandSeaDark);
  c.SetAutoSetInterval(2.5);
  c.SetAutoSetIntervalCount(7);
  c.SetAutoSetContoursType(orvAutoSetByInterval);
  c.SetInterpolateColors(true);
  c.SetExactBands(false);  // the default: no event
  c.SetExactBands(true);
  c.SetTiesAbove(true);
  c.SetTiesAbove(true);
  c.UserColorMap().Add(0.5, orvColorGold);
  EXPECT_EQ(events.names, (std::vector<std::string>{"ColorMap", "AutoSetInterval",
                                                    "AutoSetIntervalCount", "AutoSetContoursType",
                                                    "InterpolateColors", "ExactBands", "TiesAbove",
                                                    "UserColorMap.Count"}));
  c.AutoSetContours(0, 10);
  c.Contours().Item(1)->SetLineWidth(4);
  PropertyBag bag;
  c.WriteProperties(bag, "Contouring.");
  EXPECT_EQ(bag.ReadProperty("Contouring.ColorMap", std::int32_t{0}), orvColorMapLandSeaDark);
  EXPECT_TRUE(bag.Contains("Contouring.Contours.Contour1.LineWidth"));
  Contouring copy;
  copy.ReadProperties(bag, "Contouring.");
  EXPECT_EQ(copy.ColorMapType(), orvColorMapLandSeaDark);
  EXPECT_EQ(copy.AutoSetInterval(), 2.5);
  EXPECT_TRUE(copy.InterpolateColors());
  EXPECT_TRUE(copy.ExactBands());
  EXPECT_TRUE(copy.TiesAbove());
  EXPECT_EQ(Values(copy), Values(c));
  EXPECT_EQ(copy.Contours().Item(1)->LineWidth(), 4);
  EXPECT_EQ(copy.Contours().Item(1)->Color(), c.Contours().Item(1)->Color());
  EXPECT_EQ(copy.UserColorMap().Count(), 3);
  // No keys: the defaults. A bad style: nothing changes.
  copy.ReadProperties(PropertyBag(), "Contouring.");
  EXPECT_EQ(copy.ColorMapType(), orvColorMapRainbow);
  EXPECT_FALSE(copy.ExactBands());  // absent: the one colour a triangle
  EXPECT_FALSE(copy.TiesAbove());   // absent: exact signs
  EXPECT_EQ(copy.Contours().Count(), 0);
  PropertyBag bad;
  bad.WriteProperty("C.ColorMap", std::int32_t{2});
  bad.WriteProperty("C.Contours.Count", std::int32_t{1});
  bad.WriteProperty("C.Contours.Contour0.LineDrawStyle", std::int32_t{9});
  EXPECT_ORVANE_ERROR(c.ReadProperties(bad, "C."), 5, "Orvada.Contour");
  EXPECT_EQ(c.ColorMapType(), orvColorMapLandSeaDark);
  c.ResetToDefaults();
  EXPECT_EQ(c.Contours().Count(), 0);
  EXPECT_EQ(c.AutoSetInterval(), 1.0);
  EXPECT_FALSE(c.ExactBands());
  EXPECT_FALSE(c.TiesAbove());
}

TEST(Contouring, RelaysTheHostsChangesOfALevelUnderItsStoredKey) {
  Contouring c;
  c.SetAutoSetContoursType(orvAutoSetOff);
  c.Contours().AddLevels(std::vector<double>{0, 10, 20});
  EventRecorder events(c.PropertyChanged);
  c.Contours().Item(1)->SetColor(Rgb(1, 2, 3));
  c.Contours().Item(1)->SetColor(Rgb(1, 2, 3));  // unchanged: nothing
  c.Contours().Item(2)->SetLineWidth(3);
  EXPECT_ORVANE_ERROR(c.Contours().Item(0)->SetLineDrawStyle(8), 5, "Orvada.Contour");
  EXPECT_EQ(events.names,
            (std::vector<std::string>{"Contours.Contour1.Color", "Contours.Contour2.LineWidth"}));

  // An insertion below moves the later levels up as fresh copies; they relay under their
  // new index, and the level the host kept from before relays nothing any more.
  const std::shared_ptr<Contour> old20 = c.Contours().Item(2);
  c.Contours().Add(5);
  events.names.clear();
  old20->SetColor(7);
  c.Contours().Item(3)->SetColorBelow(8);   // the level 20
  c.Contours().Item(1)->SetLineWidth(2);    // the new level 5
  c.Contours().Item(0)->SetLineWidth(2);    // the level 0 did not move
  EXPECT_EQ(events.names, (std::vector<std::string>{"Contours.Contour3.ColorBelow",
                                                    "Contours.Contour1.LineWidth",
                                                    "Contours.Contour0.LineWidth"}));

  // A removal moves the following levels down, the same objects under smaller indices.
  const std::shared_ptr<Contour> removed = c.Contours().Item(1);
  const std::shared_ptr<Contour> moved = c.Contours().Item(3);
  c.Contours().Remove(1);
  events.names.clear();
  removed->SetColor(1);
  moved->SetColor(1);
  EXPECT_EQ(events.names, std::vector<std::string>{"Contours.Contour2.Color"});

  c.Contours().RemoveAll();
  events.names.clear();
  moved->SetColor(2);
  EXPECT_TRUE(events.names.empty());
}

TEST(Contouring, RecolouringAndRebuildingTheLevelsRaiseNothingForTheLevels) {
  Contouring c;
  EventRecorder events(c.PropertyChanged);
  c.AutoSetContours(0, 100);
  c.SetColorMapType(orvColorMapZebraStriped);
  c.ApplyColorMap();
  c.AutoSetContours(0, 50);
  EXPECT_EQ(events.names, std::vector<std::string>{"ColorMap"});
  // The rebuilt levels relay the host's changes.
  c.Contours().Item(10)->SetColor(Rgb(9, 9, 9));
  EXPECT_EQ(events.names.back(), "Contours.Contour10.Color");
  EXPECT_EQ(events.names.size(), 2u);
}

TEST(Contouring, LevelsReadFromABagRelayTheirChanges) {
  Contouring source;
  source.AutoSetContours(0, 4);
  PropertyBag bag;
  source.WriteProperties(bag, "Contouring.");
  Contouring c;
  c.AutoSetContours(0, 1);
  const std::shared_ptr<Contour> before = c.Contours().Item(0);
  EventRecorder events(c.PropertyChanged);
  c.ReadProperties(bag, "Contouring.");
  events.names.clear();
  before->SetLineWidth(5);
  c.Contours().Item(4)->SetLineWidth(5);
  EXPECT_EQ(events.names, std::vector<std::string>{"Contours.Contour4.LineWidth"});
}

// FindColor as a plain walk from the first level.
Color WalkFindColor(const Contouring& c, double z, bool below) {
  const Contours& levels = c.Contours();
  std::shared_ptr<Contour> lower, upper;
  for (std::int32_t i = 0; i < levels.Count(); ++i) {
    const auto level = levels.Item(i);
    if (std::fabs(z - level->Value()) < 2.2204460492503102e-14) return below ? level->ColorBelow() : level->Color();
    if (z < level->Value()) {
      upper = level;
      break;
    }
    lower = level;
  }
  if (!upper) return levels.Item(levels.Count() - 1)->Color();
  if (!lower) return upper->ColorBelow();
  if (c.InterpolateColors()) {
    return InterpolateColor(lower->Color(), upper->ColorBelow(),
                            (z - lower->Value()) / (upper->Value() - lower->Value()));
  }
  return lower->Color();
}

TEST(Contouring, FindColorByBisectionGivesTheWalksColours) {
  std::mt19937 random(17);
  std::uniform_real_distribution<double> unit(-1, 1);
  for (int round = 0; round < 20; ++round) {
    Contouring c;
    c.SetAutoSetContoursType(orvAutoSetOff);
    c.SetInterpolateColors(round % 2 == 1);
    std::vector<double> values;
    const double scale = round < 10 ? 1.0 : 1e6;  // where the tolerance is below an ulp too
    for (int k = 0; k < 40; ++k) values.push_back(std::round(unit(random) * 20) / 20 * scale);
    values.push_back(values[3]);  // ties
    for (double v : values) c.Contours().Add(v, static_cast<std::int64_t>(random() & 0xFFFFFF),
                                            static_cast<std::int64_t>(random() & 0xFFFFFF));
    std::vector<double> probes{std::nan(""), -2 * scale, 2 * scale};
    for (double v : values) {
      for (double d : {0.0, 1e-14, -1e-14, 2.2e-14, -2.3e-14, 5e-14, -5e-14, 1e-9}) probes.push_back(v + d);
      probes.push_back(std::nextafter(v, 1e300));
      probes.push_back(std::nextafter(v, -1e300));
    }
    for (int k = 0; k < 500; ++k) probes.push_back(unit(random) * 1.2 * scale);
    for (double z : probes) {
      for (bool below : {false, true}) {
        ASSERT_EQ(c.FindColor(z, below), WalkFindColor(c, z, below)) << "z " << z << " round " << round;
      }
    }
  }
}

}  // namespace
}  // namespace orvane
