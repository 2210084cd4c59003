#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "orvane/core/color.h"
#include "orvane/core/property_bag.h"
#include "orvane/render/line.h"
#include "support/event_recorder.h"
#include "support/expect_error.h"

namespace orvane {
namespace {

using testing::EventRecorder;

TEST(Line, EachStyleSelectsItsStipplePattern) {
  EXPECT_EQ(Line::StipplePattern(orvDrawStyleSolid), 0xFFFF);
  EXPECT_EQ(Line::StipplePattern(orvDrawStyleDash), 0xEEEE);
  EXPECT_EQ(Line::StipplePattern(orvDrawStyleDot), 0xAAAA);
  EXPECT_EQ(Line::StipplePattern(orvDrawStyleDashDot), 0xD6B4);
  EXPECT_EQ(Line::StipplePattern(orvDrawStyleDashDotDot), 0xEAEA);
  Line line;
  line.SetDrawStyle(3);
  EXPECT_EQ(line.StipplePattern(), 0xD6B4);
}

TEST(Line, LetsRaisePropertyChangedOnlyWhenTheValueChanges) {
  Line line;
  EventRecorder events(line.PropertyChanged);
  line.SetColor(0);
  line.SetColor(Rgb(255, 0, 0));
  line.SetDrawStyle(0);
  line.SetDrawStyle(orvDrawStyleDot);
  line.SetWidth(1);
  line.SetWidth(0);
  line.SetWidth(-3);  // any Long is accepted
  EXPECT_EQ(events.names, (std::vector<std::string>{"Color", "DrawStyle", "Width", "Width"}));
  EXPECT_EQ(line.Width(), -3);
}

TEST(Line, DrawStyleOutsideTheEnumerationIsRefused) {
  Line line;
  line.SetDrawStyle(orvDrawStyleDash);
  EventRecorder events(line.PropertyChanged);
  for (std::int32_t bad : {5, -1, 100, -2147483647 - 1}) {
    EXPECT_ORVANE_ERROR(line.SetDrawStyle(bad), 5, "Orvada.Line",
                        "Invalid procedure call or argument");
  }
  EXPECT_EQ(line.DrawStyle(), orvDrawStyleDash);
  EXPECT_TRUE(events.names.empty());
}

TEST(Line, PersistsThreeKeysUnderItsPrefixAndAnEmptyBagGivesTheDefaults) {
  Line line;
  line.SetColor(0x80563412u);  // the high bit survives the signed store
  line.SetDrawStyle(orvDrawStyleDashDotDot);
  line.SetWidth(3);
  PropertyBag bag;
  line.WriteProperties(bag, "Faces.EdgeLineMaster.");
  ASSERT_EQ(bag.Count(), 3u);
  EXPECT_EQ(bag.Items()[0].first, "Faces.EdgeLineMaster.Color");
  EXPECT_EQ(bag.Items()[1].first, "Faces.EdgeLineMaster.DrawStyle");
  EXPECT_EQ(bag.Items()[2].first, "Faces.EdgeLineMaster.Width");
  EXPECT_EQ(bag.TypeOf("Faces.EdgeLineMaster.Color"), PropertyType::Long);
  EXPECT_EQ(bag.ReadProperty("Faces.EdgeLineMaster.Color", std::int32_t{0}), static_cast<std::int32_t>(0x80563412u));

  PropertyBag stored;
  stored.SetContents(bag.Contents());
  Line restored;
  EventRecorder events(restored.PropertyChanged);
  restored.ReadProperties(stored, "Faces.EdgeLineMaster.");
  EXPECT_EQ(restored.Color(), 0x80563412u);
  EXPECT_EQ(restored.DrawStyle(), orvDrawStyleDashDotDot);
  EXPECT_EQ(restored.Width(), 3);
  EXPECT_EQ(events.names, (std::vector<std::string>{"Color", "DrawStyle", "Width"}));
  // No keys: black, solid, one pixel.
  restored.ReadProperties(PropertyBag(), "Cursor.Line.");
  EXPECT_EQ(restored.Color(), 0u);
  EXPECT_EQ(restored.DrawStyle(), orvDrawStyleSolid);
  EXPECT_EQ(restored.Width(), 1);
  EXPECT_EQ(restored.StipplePattern(), 0xFFFF);
}

TEST(Line, AnInvalidStoredStyleChangesNothing) {
  Line line;
  line.SetWidth(2);
  EventRecorder events(line.PropertyChanged);
  PropertyBag bag;
  bag.WriteProperty("L.Color", std::int32_t{255});
  bag.WriteProperty("L.DrawStyle", std::int32_t{7});
  EXPECT_ORVANE_ERROR(line.ReadProperties(bag, "L."), 5, "Orvada.Line");
  EXPECT_EQ(line.Color(), 0u);
  EXPECT_EQ(line.Width(), 2);
  EXPECT_TRUE(events.names.empty());
}

}  // namespace
}  // namespace orvane
