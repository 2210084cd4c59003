#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "orvane/axes/axes.h"
#include "orvane/core/property_bag.h"
#include "support/expect_error.h"

namespace orvane {
namespace {

// Names raised by several events, in order.
struct Names {
  explicit Names(std::initializer_list<Event<const std::string&>*> events) {
    for (auto* e : events) connections.push_back(e->Connect([this](const std::string& n) { seen.push_back(n); }));
  }
  std::vector<std::string> seen;
  std::vector<Connection> connections;
};

TEST(Axis, TheWorkedExampleGivesMinus20To80By20) {
  Axis axis;
  Names names({&axis.ScaleChanged});
  axis.SetDataRange(-1, 70);
  EXPECT_EQ(axis.MajorInterval(), 8);  // ten intervals: -8 to 72
  axis.SetMajorIntervalCount(5);
  EXPECT_EQ(axis.Min(), -20);
  EXPECT_EQ(axis.Max(), 80);
  EXPECT_EQ(axis.MajorInterval(), 20);
  EXPECT_EQ(axis.MajorIntervalCount(), 5);
  // A let recalculates first, then announces itself.
  EXPECT_EQ(names.seen, (std::vector<std::string>{"AutoRangeOrIntervalValues",
                                                  "AutoRangeOrIntervalValues",
                                                  "MajorIntervalCount"}));
  names.seen.clear();
  axis.SetDataRange(-1, 70);  // nothing changes
  axis.SetAutoRangeType(orvAutoRangeRounded);
  axis.SetMajorIntervalCount(5);
  EXPECT_TRUE(names.seen.empty());
}

TEST(Axis, TheCountBecomesTheNaturalCountOfTheRoundedRange) {
  Axis axis;  // its data range starts as 0..0, widened to -0.05..0.05
  axis.SetMajorIntervalCount(5);
  EXPECT_EQ(axis.MajorInterval(), 0.03);
  EXPECT_EQ(axis.MajorIntervalCount(), 4);  // -0.06..0.06 by 0.03
}

TEST(Axis, DefaultsAndTicks) {
  Axis axis;
  EXPECT_EQ(axis.MajorIntervalType(), orvIntervalTypeByIntervalCount);
  EXPECT_EQ(axis.AxisLine().Width(), 2);
  EXPECT_FALSE(axis.LabelsFont().Bold());
  EXPECT_TRUE(axis.TitleFont().Bold());
  EXPECT_EQ(axis.AxisStart(), 0.0);
  EXPECT_EQ(axis.AxisEnd(), 1.0);
  EXPECT_DOUBLE_EQ(axis.TickLength(), 0.025);
  EXPECT_EQ(axis.TickPosition(3), 0.0);  // Max equals Min

  axis.SetDataRange(-1, 70);
  axis.SetMajorIntervalCount(5);
  EXPECT_EQ(axis.TickCount(), 5);
  EXPECT_EQ(axis.TickValue(0), -20);
  EXPECT_EQ(axis.TickValue(5), 80);
  EXPECT_DOUBLE_EQ(axis.TickPosition(1), 0.2);
  EXPECT_EQ(axis.TickPosition(5), 1.0);
  EXPECT_EQ(axis.LabelText(axis.TickValue(0)), "-20.00");
}

TEST(Axis, ExactAndOffRangesAndIntervalsByInterval) {
  Axis axis;
  axis.SetDataRange(2, 7);
  axis.SetAutoRangeType(orvAutoRangeExact);
  EXPECT_EQ(axis.Min(), 2);
  EXPECT_EQ(axis.Max(), 7);
  EXPECT_EQ(axis.MajorInterval(), 0.5);
  EXPECT_EQ(axis.MajorIntervalCount(), 10);
  axis.SetAutoRangeType(orvAutoRangeOff);
  axis.SetMin(0);
  axis.SetMax(20);
  EXPECT_EQ(axis.MajorInterval(), 2);
  axis.SetDataRange(-100, 100);  // Off: the data do not move the range
  EXPECT_EQ(axis.Min(), 0);
  axis.SetAutoRangeType(orvAutoRangeRounded);
  axis.SetMajorIntervalType(orvIntervalTypeByInterval);
  axis.SetDataRange(-2, 10);
  axis.SetMajorInterval(3);
  EXPECT_EQ(axis.Min(), -3);
  EXPECT_EQ(axis.Max(), 12);
  EXPECT_EQ(axis.MajorIntervalCount(), 5);
  // No data (maximum below minimum): nothing is recalculated.
  axis.SetDataRange(1, 0);
  axis.SetMajorInterval(5);
  EXPECT_EQ(axis.Min(), -3);
}

TEST(Axis, InvalidLetsRaiseErrorFiveAndKeepTheOldValue) {
  Axis axis;
  Names names({&axis.ScaleChanged});
  const char* standard = "Invalid procedure call or argument";
  EXPECT_ORVANE_ERROR(axis.SetAutoRangeType(3), 5, "Orvada.Axis", standard);
  EXPECT_ORVANE_ERROR(axis.SetAutoRangeType(-1), 5, "Orvada.Axis", standard);
  EXPECT_ORVANE_ERROR(axis.SetMajorIntervalCount(0), 5, "Orvada.Axis", standard);
  EXPECT_ORVANE_ERROR(axis.SetMajorIntervalType(2), 5, "Orvada.Axis", standard);
  EXPECT_ORVANE_ERROR(axis.SetMin(NAN), 5, "Orvada.Axis", "Min must be a finite number.");
  EXPECT_ORVANE_ERROR(axis.SetMax(INFINITY), 5, "Orvada.Axis");
  EXPECT_ORVANE_ERROR(axis.SetZoom(0), 5, "Orvada.Axis");
  EXPECT_ORVANE_ERROR(axis.SetDataRange(NAN, 1), 5, "Orvada.Axis");
  EXPECT_EQ(axis.AutoRangeType(), orvAutoRangeRounded);
  EXPECT_EQ(axis.MajorIntervalCount(), 10);
  EXPECT_TRUE(names.seen.empty());
  // A count too small for the multipliers fails in the recalculation and is not kept.
  axis.SetDataRange(-1, 1);
  EXPECT_ORVANE_ERROR(axis.SetMajorIntervalCount(1), 9, "Orvada", "Subscript out of range");
  EXPECT_EQ(axis.MajorIntervalCount(), 10);
  axis.SetAutoRangeType(orvAutoRangeOff);
  axis.SetMajorIntervalType(orvIntervalTypeByInterval);
  axis.SetMajorInterval(-2);  // accepted, as 0 is
  EXPECT_EQ(axis.MajorInterval(), -2);
}

TEST(Axis, TickCountTruncatesTowardZero) {
  Axis axis;
  EXPECT_EQ(axis.TickCount(), 0);  // 0 / 0: the single tick at Min
  axis.SetAutoRangeType(orvAutoRangeOff);
  axis.SetMajorIntervalType(orvIntervalTypeByInterval);
  axis.SetMin(0);
  axis.SetMax(10);
  axis.SetMajorInterval(3);
  // A range that the interval does not divide: the last tick lies below Max.
  EXPECT_EQ(axis.TickValue(3), 9);
  EXPECT_EQ(axis.MajorIntervalCount(), 3);  // 10 / 3 rounded
  // 3.33 truncates to 3. A negative interval gives a negative count (ticks 0 to -3 are
  // none at all), and -0.5 truncates to 0, not -1.
  const std::pair<double, std::int32_t> counts[] = {{3, 3}, {-3, -3}, {-2, -5}, {-20, 0}};
  for (const auto& [interval, count] : counts) {
    axis.SetMajorInterval(interval);
    EXPECT_EQ(axis.TickCount(), count) << interval;
  }
  // So does an inverted range.
  axis.SetMajorInterval(4);
  axis.SetMin(10);
  axis.SetMax(-1);
  EXPECT_EQ(axis.TickCount(), -2);
  // A zero interval over a range has no finite count: clamped, never undefined.
  axis.SetMajorInterval(0);
  EXPECT_EQ(axis.TickCount(), std::numeric_limits<std::int32_t>::min());
  axis.SetMin(-20);
  EXPECT_EQ(axis.TickCount(), std::numeric_limits<std::int32_t>::max());
}

TEST(Axis, ReadingItsOwnBagChangesNothingAndADifferentValueRecalculates) {
  Axis axis;
  axis.SetDataRange(-1, 70);
  axis.SetMajorIntervalCount(5);
  axis.SetMajorIntervalType(orvIntervalTypeByInterval);
  axis.TitleFont().SetItalic(true);
  PropertyBag bag;
  axis.WriteProperties(bag, "A.");
  Names names({&axis.ScaleChanged, &axis.FontChanged});
  axis.ReadProperties(bag, "A.");
  EXPECT_TRUE(names.seen.empty());
  EXPECT_EQ(axis.Min(), -20);
  EXPECT_EQ(axis.Max(), 80);
  EXPECT_EQ(axis.MajorInterval(), 20);
  bag.WriteProperty("A.MajorInterval", 30.0);
  axis.ReadProperties(bag, "A.");
  EXPECT_EQ(axis.Min(), -30);
  EXPECT_EQ(axis.Max(), 90);
  EXPECT_EQ(names.seen, (std::vector<std::string>{"AutoRangeOrIntervalValues", "MajorInterval",
                                                  "MajorIntervalCount", "Max", "Min"}));
}

TEST(Axes, NewAxesHaveTitlesAndTheMastersApplied) {
  Axes axes;
  EXPECT_EQ(axes.XAxis().Title(), "X");
  EXPECT_EQ(axes.YAxis().Title(), "Y");
  EXPECT_EQ(axes.ZAxis().Title(), "Z");
  EXPECT_TRUE(axes.UseMasterProperties());
  EXPECT_FALSE(axes.KeepXYAspectRatio());
  EXPECT_EQ(axes.LabelsFormatMaster(), "0.00");
  EXPECT_TRUE(axes.TitleFontMaster().Bold());
  // The master line (width 1) has been copied over the axis lines' own width 2.
  EXPECT_EQ(axes.ZAxis().AxisLine().Width(), 1);
}

TEST(Axes, AxisFormattingIsIgnoredWhileTheMastersRule) {
  Axes axes;
  Names names({&axes.PropertyChanged, &axes.FontChanged});
  axes.XAxis().SetLabelsFormat("0.0");
  axes.XAxis().SetLabelsVisible(false);
  axes.XAxis().LabelsFont().SetSize(20.0);  // undone at once, silently
  axes.XAxis().AxisLine().SetColor(255);
  EXPECT_EQ(axes.XAxis().LabelsFormat(), "0.00");
  EXPECT_TRUE(axes.XAxis().LabelsVisible());
  EXPECT_EQ(axes.XAxis().LabelsFont().SizePoints(), 8.0);
  EXPECT_EQ(axes.XAxis().AxisLine().Color(), 0u);
  EXPECT_TRUE(names.seen.empty());

  axes.SetUseMasterProperties(false);
  axes.XAxis().SetLabelsFormat("0.0");
  axes.XAxis().LabelsFont().SetSize(20.0);
  EXPECT_EQ(axes.XAxis().LabelsFormat(), "0.0");
  EXPECT_EQ(axes.XAxis().LabelsFont().SizePoints(), 20.0);
  EXPECT_EQ(names.seen, (std::vector<std::string>{"UseMasterProperties", "XAxis.LabelsFont"}));
  // Masters no longer reach the axes.
  axes.SetLabelsFormatMaster("0%");
  EXPECT_EQ(axes.YAxis().LabelsFormat(), "0.00");
  // Turning them back on copies them in.
  axes.SetUseMasterProperties(true);
  EXPECT_EQ(axes.XAxis().LabelsFormat(), "0%");
  EXPECT_EQ(axes.XAxis().LabelsFont().SizePoints(), 8.0);
}

TEST(Axes, MasterLetsReachEveryAxisWithTheirEventNames) {
  Axes axes;
  Names names({&axes.PropertyChanged, &axes.FontChanged});
  axes.SetLabelsFormatMaster("0.000");
  axes.SetLabelsVisibleMaster(false);
  axes.SetTitleVisibleMaster(false);
  axes.SetKeepXYAspectRatio(true);
  axes.SetKeepXYAspectRatio(true);
  EXPECT_EQ(names.seen, (std::vector<std::string>{"LabelFormatMaster", "LabelsVisibleMaster",
                                                  "TitleVisibleMaster", "KeepXYAspectRatio"}));
  for (Axis* a : {&axes.XAxis(), &axes.YAxis(), &axes.ZAxis()}) {
    EXPECT_EQ(a->LabelsFormat(), "0.000");
    EXPECT_FALSE(a->LabelsVisible());
    EXPECT_FALSE(a->TitleVisible());
  }
  names.seen.clear();
  axes.TitleFontMaster().SetName("Courier New");
  EXPECT_EQ(names.seen, (std::vector<std::string>{"XAxis.TitleFont", "YAxis.TitleFont",
                                                  "ZAxis.TitleFont", "TitleFontMaster"}));
  EXPECT_EQ(axes.ZAxis().TitleFont().Name(), "Courier New");
  names.seen.clear();
  axes.AxisLineMaster().SetDrawStyle(orvDrawStyleDot);
  EXPECT_EQ(names.seen, (std::vector<std::string>{"AxisLineMaster.DrawStyle"}));
  EXPECT_EQ(axes.YAxis().AxisLine().DrawStyle(), orvDrawStyleDot);
}

TEST(Axes, PersistedKeysAndRoundTrip) {
  Axes axes;
  axes.SetUseMasterProperties(false);
  axes.SetKeepXYAspectRatio(true);
  axes.LabelsFontMaster().SetItalic(true);
  axes.XAxis().SetLabelsFormat("#,##0");
  axes.XAxis().SetTitle("Easting");
  axes.YAxis().SetAutoRangeType(orvAutoRangeOff);
  axes.YAxis().SetMin(-5);
  axes.YAxis().SetMax(15);
  axes.ZAxis().SetZoom(2.5);
  axes.ZAxis().AxisLine().SetWidth(4);
  // Rounded limits derive from the data range, which a reader recalculates with.
  for (Axis* a : {&axes.XAxis(), &axes.YAxis(), &axes.ZAxis()}) a->SetDataRange(0, 0);
  PropertyBag bag;
  axes.WriteProperties(bag, "Axes.");
  for (const char* key : {"Axes.LabelFontMaster.Name", "Axes.TitleFontMasterName",
                          "Axes.TitleFontMasterWeight", "Axes.KeepXYAspectRatio",
                          "Axes.LabelFormatMaster", "Axes.AxisLine.Width",
                          "Axes.XAxis.LabelFont.Size", "Axes.XAxis.TitleFont.Bold",
                          "Axes.ZAxis.AxisLine.Color", "Axes.YAxis.MajorIntervalCount",
                          "Axes.ZAxis.Zoom", "Axes.XAxis.Title"}) {
    EXPECT_TRUE(bag.Contains(key)) << key;
  }
  PropertyBag stored;
  stored.SetContents(bag.Contents());
  Axes copy;
  copy.ReadProperties(stored, "Axes.");
  EXPECT_FALSE(copy.UseMasterProperties());
  EXPECT_TRUE(copy.KeepXYAspectRatio());
  EXPECT_TRUE(copy.LabelsFontMaster().Italic());
  EXPECT_EQ(copy.XAxis().LabelsFormat(), "#,##0");
  EXPECT_EQ(copy.XAxis().Title(), "Easting");
  EXPECT_EQ(copy.YAxis().AutoRangeType(), orvAutoRangeOff);
  EXPECT_EQ(copy.YAxis().Min(), -5);
  EXPECT_EQ(copy.YAxis().Max(), 15);
  EXPECT_EQ(copy.ZAxis().Zoom(), 2.5);
  EXPECT_EQ(copy.ZAxis().AxisLine().Width(), 4);
  PropertyBag again;
  copy.WriteProperties(again, "Axes.");
  EXPECT_EQ(again.Contents(), bag.Contents());
}

TEST(Axes, ReadingTheirOwnBagChangesNothing) {
  Axes axes;
  axes.YAxis().SetDataRange(3, 9);
  const double yMin = axes.YAxis().Min();
  const double yMax = axes.YAxis().Max();
  ASSERT_LT(yMin, yMax);
  PropertyBag bag;
  axes.WriteProperties(bag, "Axes.");
  Names names({&axes.PropertyChanged, &axes.FontChanged, &axes.XAxis().ScaleChanged, &axes.YAxis().ScaleChanged,
               &axes.ZAxis().ScaleChanged});
  axes.ReadProperties(bag, "Axes.");
  EXPECT_TRUE(names.seen.empty()) << names.seen.size() << " events, first " << names.seen.front();
  EXPECT_EQ(axes.XAxis().Min(), 0);  // not widened to -0.05..0.05
  EXPECT_EQ(axes.XAxis().Max(), 0);
  EXPECT_EQ(axes.YAxis().Min(), yMin);
  EXPECT_EQ(axes.YAxis().Max(), yMax);
  PropertyBag again;
  axes.WriteProperties(again, "Axes.");
  EXPECT_EQ(again.Contents(), bag.Contents());
}

TEST(Axes, ABagWithNoKeysGivesTheDefaultsAndABadBagChangesNothing) {
  Axes axes;
  axes.SetLabelsFormatMaster("0.0");
  axes.SetKeepXYAspectRatio(true);
  axes.ReadProperties(PropertyBag(), "Axes.");
  EXPECT_EQ(axes.LabelsFormatMaster(), "0.00");
  EXPECT_FALSE(axes.KeepXYAspectRatio());
  EXPECT_EQ(axes.XAxis().LabelsFormat(), "0.00");
  EXPECT_EQ(axes.XAxis().MajorIntervalCount(), 10);
  EXPECT_EQ(axes.XAxis().Title(), "");  // the stored default of a title is empty

  axes.SetLabelsFormatMaster("0.0");
  PropertyBag bad;
  bad.WriteProperty("Axes.LabelFormatMaster", std::string("0.000"));
  bad.WriteProperty("Axes.ZAxis.AutoRangeType", std::int32_t{7});
  EXPECT_ORVANE_ERROR(axes.ReadProperties(bad, "Axes."), 5, "Orvada.Axis");
  EXPECT_EQ(axes.LabelsFormatMaster(), "0.0");
  EXPECT_EQ(axes.ZAxis().AutoRangeType(), orvAutoRangeRounded);
}

}  // namespace
}  // namespace orvane
