#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "orvane/core/property_bag.h"
#include "orvane/render/caption.h"
#include "orvane/render/cursor.h"
#include "orvane/render/legend.h"
#include "support/event_recorder.h"
#include "support/expect_error.h"

namespace orvane {
namespace {

using testing::EventRecorder;

TEST(Caption, EventsAndPersistedForm) {
  Caption caption;
  EXPECT_EQ(caption.Font().SizePoints(), 10.0);  // Arial (stored below), 10 points, bold
  EXPECT_TRUE(caption.Font().Bold());
  EventRecorder events(caption.PropertyChanged);
  caption.SetText("Z = f(X, Y)");
  caption.SetText("Z = f(X, Y)");
  caption.Font().SetSize(14.0);
  caption.SetVisible(false);
  EXPECT_EQ(events.names, (std::vector<std::string>{"Text", "Font", "Visible"}));
  PropertyBag bag;
  caption.WriteProperties(bag, "Header");
  EXPECT_EQ(bag.ReadProperty("HeaderCaption", ""), "Z = f(X, Y)");
  EXPECT_EQ(bag.ReadProperty("HeaderVisible", true), false);
  EXPECT_EQ(bag.ReadProperty("HeaderFontName", ""), "Arial");
  EXPECT_EQ(bag.ReadProperty("HeaderFontSize", Currency{}), Currency{140000});
  Caption copy;
  copy.ReadProperties(bag, "Header");
  EXPECT_EQ(copy.Text(), "Z = f(X, Y)");
  EXPECT_FALSE(copy.Visible());
  EXPECT_EQ(copy.Font().SizePoints(), 14.0);
  copy.ReadProperties(PropertyBag(), "Header");
  EXPECT_TRUE(copy.Visible());
  EXPECT_EQ(copy.Text(), "");
}

TEST(Legend, VisibleByDefaultAndStoredAsLegendVisible) {
  Legend legend;
  EventRecorder events(legend.PropertyChanged);
  EXPECT_TRUE(legend.Visible());
  legend.SetVisible(true);
  legend.SetVisible(false);
  EXPECT_EQ(events.names, (std::vector<std::string>{"Visible"}));
  PropertyBag bag;
  legend.WriteProperties(bag, "Legend");
  EXPECT_TRUE(bag.Contains("LegendVisible"));
  Legend copy;
  copy.ReadProperties(bag, "Legend");
  EXPECT_FALSE(copy.Visible());
}

TEST(Cursor, DefaultsValidationAndEvents) {
  Cursor cursor;
  EXPECT_EQ(cursor.Mode(), orvCursorModeTrackMouse);
  EXPECT_FALSE(cursor.Visible());
  EXPECT_EQ(cursor.XValue(), 0.0);
  EXPECT_EQ(cursor.Line().Width(), 1);
  EventRecorder events(cursor.PropertyChanged);
  EXPECT_ORVANE_ERROR(cursor.SetMode(2), 5, "Orvada.Cursor", "Invalid procedure call or argument");
  EXPECT_ORVANE_ERROR(cursor.SetMode(-1), 5, "Orvada.Cursor");
  EXPECT_ORVANE_ERROR(cursor.SetXValue(NAN), 5, "Orvada.Cursor", "XValue must be a finite number.");
  EXPECT_EQ(cursor.Mode(), orvCursorModeTrackMouse);
  EXPECT_TRUE(events.names.empty());
  cursor.SetMode(orvCursorModeManual);
  cursor.SetVisible(true);
  cursor.SetXValue(1.5);
  cursor.SetYValue(-2);
  cursor.SetZValue(3);
  cursor.SetZValue(3);
  cursor.Line().SetColor(255);
  EXPECT_EQ(events.names, (std::vector<std::string>{"Mode", "Visible", "XValue", "YValue",
                                                    "ZValue", "Line.Color"}));
}

TEST(Cursor, CoordinatesAreStoredUnderBareKeysWhateverThePrefix) {
  Cursor cursor;
  cursor.SetMode(orvCursorModeManual);
  cursor.SetXValue(1.25);
  cursor.SetYValue(-7);
  cursor.SetZValue(1e10);
  cursor.Line().SetWidth(3);
  PropertyBag bag;
  cursor.WriteProperties(bag, "Cursor.");
  EXPECT_TRUE(bag.Contains("Cursor.Mode"));
  EXPECT_TRUE(bag.Contains("Cursor.Visible"));
  EXPECT_TRUE(bag.Contains("XValue"));
  EXPECT_TRUE(bag.Contains("YValue"));
  EXPECT_TRUE(bag.Contains("ZValue"));
  EXPECT_FALSE(bag.Contains("Cursor.XValue"));
  EXPECT_TRUE(bag.Contains("Cursor.Line.Width"));
  Cursor copy;
  copy.ReadProperties(bag, "Other.");  // another prefix still finds the coordinates
  EXPECT_EQ(copy.XValue(), 1.25);
  EXPECT_EQ(copy.ZValue(), 1e10);
  EXPECT_EQ(copy.Mode(), orvCursorModeTrackMouse);  // "Other.Mode" is absent
  copy.ReadProperties(bag, "Cursor.");
  EXPECT_EQ(copy.Mode(), orvCursorModeManual);
  EXPECT_EQ(copy.Line().Width(), 3);
  PropertyBag bad;
  bad.WriteProperty("Cursor.Mode", std::int32_t{4});
  bad.WriteProperty("XValue", 99.0);
  EXPECT_ORVANE_ERROR(copy.ReadProperties(bad, "Cursor."), 5, "Orvada.Cursor");
  EXPECT_EQ(copy.XValue(), 1.25);
}

}  // namespace
}  // namespace orvane
