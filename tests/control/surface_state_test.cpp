// Saving and restoring the control: its own keys and types, the children under their
// prefixes, State in both forms, and bytes or values that cannot be used.

#include <gtest/gtest.h>

#include <string>
#include <variant>
#include <vector>

#include "control_fixture.h"
#include "orvane/core/property_bag.h"
#include "orvane/resample/resampling.h"
#include "support/expect_error.h"

namespace orvane {
namespace {

using testing::Control;

// The keys whose values differ between two States, and those only one of them holds.
std::vector<std::string> Differences(const std::vector<std::uint8_t>& a, const std::vector<std::uint8_t>& b) {
  PropertyBag x, y;
  x.SetContents(a);
  y.SetContents(b);
  std::vector<std::string> keys;
  for (const auto& [key, value] : x.Items()) {
    bool same = false;
    for (const auto& item : y.Items()) same = same || (item.first == key && item.second == value);
    if (!same) keys.push_back(key);
  }
  for (const auto& item : y.Items()) {
    if (!x.Contains(item.first)) keys.push_back("only in the second: " + item.first);
  }
  return keys;
}

// Gives a control formatting that differs from the defaults almost everywhere.
void Restyle(Surface& s) {
  s.SetBackColor(0x102030);
  s.SetForeColor(0x405060);
  s.SetLightingOn(true);
  s.SetLightingIntensityAmbient(0.25);
  s.SetOffsetHorizontal(0.125);
  s.SetPlotType(orvPlotType2D);
  s.SetRotationX(100);
  s.SetRotationZ(200);
  s.SetZoom(1.75);
  s.Axes().XAxis().SetTitle("Easting");
  s.Axes().SetLabelsFormatMaster("0.0");
  s.Contouring().SetInterpolateColors(true);
  s.Faces().SetFillColorMaster(0x00FF00);
  s.Legend().SetVisible(false);
  s.Header().SetText("A title");
  s.Cursor().SetXValue(2.5);
  s.DataSets().SetCount(2);
  s.DataSets().Item(1).ViewMain().SetMeshVisible(true);
}

TEST(SurfaceState, TheControlsKeysComeFirstInOrderWithTheirTypes) {
  Control c;
  PropertyBag bag;
  c.surface.WriteProperties(bag);
  const char* keys[] = {"Appearance", "AutoRefresh", "BackColor", "ForeColor", "BorderStyle", "Enabled",
                        "HorizontalOffset", "LightingOn", "LightingIntensityAmbient", "LightingIntensitySpotlight",
                        "LightingMaterialShininess", "VerticalOffset", "ViewType", "XRotation", "YRotation",
                        "ZRotation", "Zoom"};
  // 0 int32, 2 bool, 3 double: the alternatives of PropertyValue.
  const std::size_t types[] = {0, 2, 0, 0, 0, 2, 3, 2, 3, 3, 3, 3, 0, 0, 0, 0, 3};
  ASSERT_GE(bag.Items().size(), std::size(keys));
  for (std::size_t k = 0; k < std::size(keys); ++k) {
    EXPECT_EQ(bag.Items()[k].first, keys[k]);
    EXPECT_EQ(bag.Items()[k].second.index(), types[k]) << keys[k];
  }
  EXPECT_EQ(std::get<std::int32_t>(bag.Items()[13].second), 60);
  EXPECT_EQ(std::get<std::int32_t>(bag.Items()[15].second), 30);
  // The children follow under their prefixes, the odd ones without a dot.
  for (const char* key : {"Axes.XAxis.Title", "Axes.TitleFontMasterName", "Contouring.InterpolateColors",
                          "Datasets.Count", "Datasets.DataSet1.ViewMain.Visible",
                          "Datasets.DataSet1.Resampling.ResamperType", "Faces.XYFace.FillColor", "LegendVisible",
                          "HeaderCaption", "Cursor.Mode", "XValue"}) {
    EXPECT_TRUE(bag.Contains(key)) << key;
  }
  EXPECT_FALSE(bag.Contains("Datasets.DataSet1.X"));  // the formatting holds no data
}

TEST(SurfaceState, AnEmptyBagGivesTheDefaults) {
  Control fresh, used;
  Restyle(used.surface);
  used.surface.ReadProperties(PropertyBag());
  EXPECT_EQ(Differences(used.surface.State(), fresh.surface.State()), std::vector<std::string>{});
  EXPECT_EQ(used.surface.RotationX(), 60);
}

TEST(SurfaceState, FormattingTravelsAloneOrWithTheData) {
  Control a, b, d;
  Restyle(a.surface);
  testing::Saddle(a.surface.DataSets().Item(0));
  testing::Scatter(a.surface.DataSets().Item(1));
  a.surface.DataSets().Item(1).UserHullSet(3, std::vector<double>{0.5, 1.5, 1}, std::vector<double>{0.5, 0.5, 1.5});

  a.surface.Refresh();
  b.surface.SetState(a.surface.State(orvStateTypeFormatting), orvStateTypeFormatting);
  // All alike but what follows the data: the axes' scales, the automatic levels and the
  // resampling's automatic limits.
  for (const std::string& key : Differences(b.surface.State(), a.surface.State())) {
    const bool followsData = key.find(".Contour") != std::string::npos ||
                             key.find("Contours.Count") != std::string::npos ||
                             (key.rfind("Axes.", 0) == 0 && (key.find(".M") != std::string::npos));
    EXPECT_TRUE(followsData) << key;
  }
  EXPECT_EQ(b.surface.DataSets().Count(), 2);
  EXPECT_EQ(b.surface.DataSets().Item(0).XMax() < b.surface.DataSets().Item(0).XMin() ||
                b.surface.DataSets().Item(0).XMax() == b.surface.DataSets().Item(0).XMin(),
            true);  // no data came
  EXPECT_EQ(b.surface.Header().Text(), "A title");
  EXPECT_EQ(b.surface.RotationZ(), 200);

  const std::vector<std::uint8_t> full = a.surface.State(orvStateTypeFormattingAndData);
  d.surface.SetState(full, orvStateTypeFormattingAndData);
  // Read back, a State gives the same bytes, the resampling limits of both data sets
  // included: a data set writes 0 for them until it has data to follow.
  EXPECT_EQ(Differences(d.surface.State(orvStateTypeFormattingAndData), full), std::vector<std::string>{});
  EXPECT_EQ(d.surface.State(orvStateTypeFormattingAndData), full);
  Control fresh;
  fresh.surface.DataSets().SetCount(2);
  PropertyBag limits;
  limits.SetContents(fresh.surface.State());
  for (const char* key : {"Datasets.DataSet1.Resampling.XMin", "Datasets.DataSet1.Resampling.YMax",
                          "Datasets.DataSet2.Resampling.XMin", "Datasets.DataSet2.Resampling.YMax"}) {
    EXPECT_EQ(limits.ReadProperty(key, 1.0), 0.0) << key;
  }
  PropertyBag bag;
  bag.SetContents(full);
  EXPECT_TRUE(bag.Contains("Datasets.DataSet2.X"));
  EXPECT_TRUE(bag.Contains("Datasets.DataSet2.UserHull.X"));
  EXPECT_TRUE(bag.Contains("Datasets.DataSet2.ViewMain.MeshVisible"));
  EXPECT_EQ(d.surface.DataSets().Item(1).XMax(), a.surface.DataSets().Item(1).XMax());
  EXPECT_GT(d.Frames(), 0);  // SetState refreshes whatever AutoRefresh says
}

TEST(SurfaceState, AnyOtherTypeGivesAnEmptyBagAndItsLetReadsTheProperties) {
  Control c;
  EXPECT_EQ(c.surface.State(2), PropertyBag().Contents());
  EXPECT_EQ(c.surface.State(-1), PropertyBag().Contents());
  // The let reads the properties whatever the type, and the data only for type 1.
  Control a, b;
  Restyle(a.surface);
  testing::Saddle(a.surface.DataSets().Item(0));
  b.surface.SetState(a.surface.State(orvStateTypeFormattingAndData), 7);
  EXPECT_EQ(b.surface.Header().Text(), "A title");
  EXPECT_EQ(b.surface.DataSets().Count(), 2);
  EXPECT_EQ(b.surface.DataSets().Item(0).MeshTriangles().size(), 0U);  // no data came
}

TEST(SurfaceState, BytesOrValuesThatCannotBeUsedChangeNothing) {
  Control c;
  Restyle(c.surface);
  testing::Saddle(c.surface.DataSets().Item(0));
  const std::vector<std::uint8_t> before = c.surface.State(orvStateTypeFormattingAndData);
  std::vector<std::uint8_t> cut = before;
  cut.resize(cut.size() / 2);
  EXPECT_THROW(c.surface.SetState(cut, orvStateTypeFormattingAndData), Error);
  EXPECT_THROW(c.surface.SetState(std::vector<std::uint8_t>{1, 2, 3}, orvStateTypeFormatting), Error);
  EXPECT_THROW(c.surface.SetState({}, orvStateTypeFormatting), Error);

  // Well-formed bags with one bad value, late in the reading order: refused whole.
  auto bagWith = [&](const std::string& key, PropertyValue value) {
    PropertyBag bag;
    bag.SetContents(before);
    bag.WriteProperty(key, std::move(value));
    return bag.Contents();
  };
  EXPECT_ORVANE_ERROR(c.surface.SetState(bagWith("Appearance", std::int32_t{7}), orvStateTypeFormatting), 5,
                      "Orvada.Surface");
  EXPECT_ORVANE_ERROR(c.surface.SetState(bagWith("Zoom", 0.0), orvStateTypeFormatting), 5, "Orvada.Surface");
  EXPECT_THROW(c.surface.SetState(bagWith("Cursor.Mode", std::int32_t{9}), orvStateTypeFormatting), Error);
  EXPECT_THROW(c.surface.SetState(bagWith("Datasets.DataSet1.Count", std::int32_t{5}), orvStateTypeFormattingAndData),
               Error);
  EXPECT_EQ(c.surface.State(orvStateTypeFormattingAndData), before);

  // Refused only by the refresh: kriging's Sill reads back as 2, below this Nugget. The
  // control is put back, its Range and Sill included.
  Kriging& k = c.surface.DataSets().Item(0).Resampling().Kriging();
  c.surface.DataSets().Item(0).Resampling().SetResamplerType(orvResamplerTypeKriging);
  k.SetAutoSetRange(false);
  k.SetRange(7);
  k.SetSill(9);
  k.SetNugget(5);
  c.surface.Refresh();
  const std::vector<std::uint8_t> kriged = c.surface.State(orvStateTypeFormattingAndData);
  EXPECT_ORVANE_ERROR(c.surface.SetState(kriged, orvStateTypeFormattingAndData), 5, "Orvada.Kriging",
                      "Sill (2) must not be below Nugget (5).");
  EXPECT_EQ(c.surface.State(orvStateTypeFormattingAndData), kriged);
  EXPECT_EQ(k.Range(), 7);
  EXPECT_EQ(k.Sill(), 9);
}

}  // namespace
}  // namespace orvane
