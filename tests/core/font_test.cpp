#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <tuple>
#include <vector>

#include "orvane/core/font.h"
#include "orvane/core/property_bag.h"
#include "support/event_recorder.h"
#include "support/expect_error.h"

namespace orvane {
namespace {

using testing::EventRecorder;

// All seven attributes of a font (the size in ten-thousandths of a point).
std::tuple<std::string, std::int64_t, bool, bool, bool, bool, std::int16_t> Attributes(const Font& f) {
  return {f.Name(), f.Size().scaled, f.Bold(), f.Italic(), f.Underline(), f.Strikethrough(), f.Weight()};
}

TEST(Font, BoldAndWeightAreOneSetting) {
  Font font;
  EventRecorder events(font.FontChanged);
  font.SetWeight(551);
  EXPECT_TRUE(font.Bold());
  font.SetWeight(550);
  EXPECT_FALSE(font.Bold());
  font.SetBold(true);
  EXPECT_EQ(font.Weight(), 700);
  font.SetBold(true);  // unchanged: no event
  font.SetBold(false);
  EXPECT_EQ(font.Weight(), 400);
  EXPECT_EQ(events.names, (std::vector<std::string>{"Weight", "Weight", "Bold", "Bold"}));
}

TEST(Font, SizeKeepsFourDecimalsRoundedHalfToEven) {
  Font font;
  // In ten-thousandths: 10.12345 is 101234.5, 10.12355 is 101235.5.
  for (const auto& [points, size] : {std::pair{8.25, 82500}, {10.12345, 101234}, {10.12355, 101236}}) {
    font.SetSize(points);
    EXPECT_EQ(font.Size(), Currency{size}) << points;
  }
}

TEST(Font, EventsNameTheChangedAttributeOnlyOnRealChanges) {
  Font font;
  EventRecorder events(font.FontChanged);
  font.SetName("Arial");
  font.SetName("Times New Roman");
  font.SetSize(8.0);
  font.SetSize(12.0);
  font.SetItalic(true);
  font.SetUnderline(true);
  font.SetStrikethrough(true);
  font.SetStrikethrough(true);
  EXPECT_EQ(events.names,
            (std::vector<std::string>{"Name", "Size", "Italic", "Underline", "Strikethrough"}));
}

TEST(Font, InvalidValuesAreRefusedAndKeepTheOldOne) {
  Font font;
  EventRecorder events(font.FontChanged);
  EXPECT_ORVANE_ERROR(font.SetName(""), 380, "StdFont", "A font name cannot be empty.");
  EXPECT_ORVANE_ERROR(font.SetSize(0.0), 380, "StdFont",
                      "A font size must be above 0 and at most 16384 points, not 0.");
  EXPECT_ORVANE_ERROR(font.SetSize(-3.5), 380, "StdFont");
  EXPECT_ORVANE_ERROR(font.SetSize(20000.0), 380, "StdFont");
  EXPECT_ORVANE_ERROR(font.SetSize(std::nan("")), 380, "StdFont");
  EXPECT_ORVANE_ERROR(font.SetWeight(1001), 380, "StdFont");
  EXPECT_ORVANE_ERROR(font.SetWeight(-1), 380, "StdFont");
  EXPECT_EQ(Attributes(font), std::tuple("Arial", 80000, false, false, false, false, 400));
  EXPECT_TRUE(events.names.empty());
}

TEST(Font, CopyFromTakesAllSevenAttributes) {
  Font source("Courier New", 14.5, true);
  source.SetItalic(true);
  source.SetStrikethrough(true);
  source.SetWeight(900);
  Font target;
  EventRecorder events(target.FontChanged);
  target.CopyFrom(source);
  EXPECT_EQ(Attributes(target), std::tuple("Courier New", 145000, true, true, false, true, 900));
  EXPECT_EQ(events.names, (std::vector<std::string>{"Name", "Size", "Bold", "Italic",
                                                    "Strikethrough", "Weight"}));
}

TEST(Font, PersistsAsSevenKeysUnderItsPrefix) {
  Font font("Courier New", 9.75, true);
  font.SetUnderline(true);
  PropertyBag bag;
  font.WriteProperties(bag, "Axes.TitleFontMaster");
  ASSERT_EQ(bag.Count(), 7u);
  const char* keys[] = {"Name", "Bold", "Italic", "Size", "Strikethrough", "Underline", "Weight"};
  for (std::size_t i = 0; i < 7; ++i) {
    EXPECT_EQ(bag.Items()[i].first, std::string("Axes.TitleFontMaster") + keys[i]);
  }
  EXPECT_EQ(bag.TypeOf("Axes.TitleFontMasterSize"), PropertyType::Currency);
  EXPECT_EQ(bag.TypeOf("Axes.TitleFontMasterWeight"), PropertyType::Integer);
  EXPECT_EQ(bag.ReadProperty("Axes.TitleFontMasterSize", Currency{}), Currency{97500});

  PropertyBag stored;
  stored.SetContents(bag.Contents());
  Font restored;
  restored.ReadProperties(stored, "Axes.TitleFontMaster");
  EXPECT_EQ(Attributes(restored), std::tuple("Courier New", 97500, true, false, true, false, 700));
}

TEST(Font, MissingKeysKeepTheCurrentAttributes) {
  Font font("Arial", 10, true);
  PropertyBag partial;
  partial.WriteProperty("F.Italic", true);
  font.ReadProperties(partial, "F.");
  EXPECT_EQ(Attributes(font), std::tuple("Arial", 100000, true, true, false, false, 700));
  // Bold without Weight sets the weight Bold implies.
  PropertyBag boldOnly;
  boldOnly.WriteProperty("F.Bold", false);
  font.ReadProperties(boldOnly, "F.");
  EXPECT_EQ(font.Weight(), 400);
}

TEST(Font, BadBagValuesChangeNothing) {
  Font font;
  EventRecorder events(font.FontChanged);
  PropertyBag bag;
  bag.WriteProperty("F.Name", std::string("Verdana"));
  bag.WriteProperty("F.Size", std::string("large"));
  EXPECT_ORVANE_ERROR(font.ReadProperties(bag, "F."), 13, "PropertyBag");
  PropertyBag negative;
  negative.WriteProperty("F.Name", std::string("Verdana"));
  negative.WriteProperty("F.Size", -2.0);
  EXPECT_ORVANE_ERROR(font.ReadProperties(negative, "F."), 380, "StdFont");
  EXPECT_EQ(font.Name(), "Arial");
  EXPECT_TRUE(events.names.empty());
}

}  // namespace
}  // namespace orvane
