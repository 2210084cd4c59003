// The control's properties: defaults, refused values, clamping, the keys the host hears
// (with their deliberate oddities), the children's defaults and the keys their changes
// bring up.

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <string>
#include <vector>

#include "control_fixture.h"
#include "support/expect_error.h"

namespace orvane {
namespace {

using testing::Control;

constexpr const char* kSource = "Orvada.Surface";
constexpr const char* kInvalid = "Invalid procedure call or argument";
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();

class SurfaceProperties : public ::testing::Test {
 protected:
  Control c;
  Surface& s = c.surface;
};

TEST_F(SurfaceProperties, ANewControlTakesItsDefaultsWithoutDrawing) {
  // Those no other test meets: the keys step the lighting and the zoom from theirs, and an
  // empty State gives back the angles.
  EXPECT_EQ(s.Appearance(), orvFlat);
  EXPECT_EQ(s.BorderStyle(), orvNone);
  EXPECT_EQ(s.ForeColor(), 0u);
  EXPECT_FALSE(s.LightingOn());
  EXPECT_EQ(s.OffsetHorizontal(), 0.0);
  EXPECT_EQ(s.OffsetVertical(), 0.0);
  EXPECT_EQ(s.PlotType(), orvPlotType3D);
  EXPECT_EQ(s.RotationY(), 0);
  EXPECT_EQ(c.State().Trackball().Radius(), 1.5);
  EXPECT_EQ(c.Frames(), 0);
}

TEST_F(SurfaceProperties, InitPropertiesPutsTheChildrenBackToTheirDefaultsButNotTheCursor) {
  s.SetBackColor(0x123456);
  s.SetZoom(3);
  s.SetRotationZ(100);
  s.Axes().XAxis().SetTitle("Easting");
  s.Axes().TitleFontMaster().SetSize(20.0);
  s.Contouring().SetInterpolateColors(true);
  s.DataSets().SetCount(3);
  testing::Saddle(s.DataSets().Item(2));
  s.DataSets().Item(0).ViewMain().SetMeshVisible(true);
  s.Faces().SetFillColorMaster(0x00FF00);
  s.Legend().SetVisible(false);
  s.Header().SetText("Title");
  s.Header().Font().SetSize(24.0);
  s.Cursor().SetVisible(true);
  s.Refresh();
  ASSERT_GT(s.Axes().ZAxis().Max(), 0.5);  // from the saddle

  s.InitProperties();
  EXPECT_EQ(s.BackColor(), 0xFFFFFFu);
  EXPECT_EQ(s.Zoom(), 1.0);
  EXPECT_EQ(s.RotationZ(), 30);
  EXPECT_EQ(s.Axes().XAxis().Title(), "X");
  // The scale is the stored default, not one worked out from the data that went.
  orvane::Axes fresh;
  EXPECT_EQ(s.Axes().ZAxis().Min(), fresh.ZAxis().Min());
  EXPECT_EQ(s.Axes().ZAxis().Max(), fresh.ZAxis().Max());
  EXPECT_EQ(s.Axes().ZAxis().MajorInterval(), fresh.ZAxis().MajorInterval());
  EXPECT_EQ(s.Axes().TitleFontMaster().SizePoints(), 8.0);
  EXPECT_FALSE(s.Contouring().InterpolateColors());
  ASSERT_EQ(s.DataSets().Count(), 1);
  EXPECT_EQ(detail::DataSetAccess::State(s.DataSets().Item(0)).pointCount, 0);
  EXPECT_FALSE(s.DataSets().Item(0).ViewMain().MeshVisible());
  EXPECT_EQ(s.Faces().FillColorMaster(), 0xFFFFFFu);
  EXPECT_TRUE(s.Legend().Visible());
  EXPECT_EQ(s.Header().Text(), "");
  EXPECT_EQ(s.Header().Font().SizePoints(), 10.0);
  EXPECT_TRUE(s.Header().Font().Bold());
  // The cursor is not among the objects that take their defaults.
  EXPECT_TRUE(s.Cursor().Visible());
}

// A let that must be refused with error 5, keeping the old value and telling the host
// nothing.
struct Refusal {
  const char* what;
  std::function<void(Surface&)> let;
  std::function<double(Surface&)> read;
  const char* description;
};

template <class Set, class Value, class Get>
Refusal Refused(const char* what, Set set, Value value, Get get, const char* description = kInvalid) {
  return {what, [=](Surface& surface) { (surface.*set)(value); }, [=](Surface& surface) { return double((surface.*get)()); },
          description};
}

TEST_F(SurfaceProperties, RefusedValuesRaiseError5AndKeepTheOldValue) {
  const std::vector<Refusal> cases = {
      Refused("Appearance 2", &Surface::SetAppearance, 2, &Surface::Appearance),
      Refused("Appearance -1", &Surface::SetAppearance, -1, &Surface::Appearance),
      Refused("BorderStyle 2", &Surface::SetBorderStyle, 2, &Surface::BorderStyle),
      Refused("PlotType 2", &Surface::SetPlotType, 2, &Surface::PlotType),
      Refused("PlotType -1", &Surface::SetPlotType, -1, &Surface::PlotType),
      Refused("Zoom 0", &Surface::SetZoom, 0.0, &Surface::Zoom),
      Refused("Zoom NaN", &Surface::SetZoom, kNaN, &Surface::Zoom),
      Refused("Zoom infinite", &Surface::SetZoom, kInf, &Surface::Zoom, "Zoom must be a finite number."),
      Refused("OffsetHorizontal NaN", &Surface::SetOffsetHorizontal, kNaN, &Surface::OffsetHorizontal,
              "OffsetHorizontal must be a finite number."),
      Refused("OffsetVertical infinite", &Surface::SetOffsetVertical, -kInf, &Surface::OffsetVertical,
              "OffsetVertical must be a finite number."),
      Refused("LightingIntensityAmbient NaN", &Surface::SetLightingIntensityAmbient, kNaN, &Surface::LightingIntensityAmbient,
              "LightingIntensityAmbient must be a number, not NaN."),
      Refused("LightingIntensitySpotlight NaN", &Surface::SetLightingIntensitySpotlight, kNaN,
              &Surface::LightingIntensitySpotlight, "LightingIntensitySpotlight must be a number, not NaN."),
      Refused("LightingMaterialShininess NaN", &Surface::SetLightingMaterialShininess, kNaN,
              &Surface::LightingMaterialShininess, "LightingMaterialShininess must be a number, not NaN."),
      Refused("RotationX infinite", &Surface::SetRotationX, kInf, &Surface::RotationX,
              "RotationX must be a finite number of degrees."),
      Refused("RotationZ NaN", &Surface::SetRotationZ, kNaN, &Surface::RotationZ, "RotationZ must be a finite number of degrees."),
  };
  for (const Refusal& r : cases) {
    Control fresh;
    fresh.surface.SetAutoRefresh(true);
    fresh.host.ClearRecords();
    const std::int64_t frames = fresh.Frames();
    const double before = r.read(fresh.surface);
    EXPECT_ORVANE_ERROR(r.let(fresh.surface), 5, kSource, r.description) << r.what;
    EXPECT_EQ(r.read(fresh.surface), before) << r.what;
    EXPECT_TRUE(fresh.Keys().empty()) << r.what;
    EXPECT_EQ(fresh.Frames(), frames) << r.what;
  }
}

TEST_F(SurfaceProperties, LightingValuesAreClampedToZeroAndOne) {
  for (const double v : {-0.2, 1.7, -kInf, kInf, 0.25}) {
    const double expected = v < 0 ? 0.0 : (v > 1 ? 1.0 : v);
    s.SetLightingIntensityAmbient(v);
    s.SetLightingIntensitySpotlight(v);
    s.SetLightingMaterialShininess(v);
    EXPECT_EQ(s.LightingIntensityAmbient(), expected) << v;
    EXPECT_EQ(s.LightingIntensitySpotlight(), expected) << v;
    EXPECT_EQ(s.LightingMaterialShininess(), expected) << v;
  }
}

TEST_F(SurfaceProperties, RotationLetsGoIntoWholeTurnsAndRoundHalfToEven) {
  const std::vector<std::pair<double, std::int32_t>> cases = {
      {720, 360}, {360, 360}, {1080, 360}, {-30, 330},  {-360, 0},   {0, 0},     {1080.4, 0},
      {361, 1},   {45.5, 46}, {44.5, 44},  {-0.4, 360}, {359.6, 360}, {1e20, 280}, {-725, 355}};
  for (const auto& [degrees, expected] : cases) {
    s.SetRotationY(degrees);
    EXPECT_EQ(s.RotationY(), expected) << degrees;
  }
  // The trackball takes the angles as its rotation.
  s.SetRotationX(90);
  s.SetRotationY(0);
  s.SetRotationZ(0);
  detail::CTrackball expected;
  expected.SetRotation(90, 0, 0);
  EXPECT_EQ(c.State().Trackball().Quaternion(), expected.Quaternion());
}

// Each let of the control, the key the host hears, and how often it hears it again when
// the same value is let once more.
struct Announced {
  std::function<void(Surface&)> let;
  const char* key;
  std::size_t repeated = 0;
};

TEST_F(SurfaceProperties, EachLetTellsTheHostItsStoredKeyOnceAndNothingWhenUnchanged) {
  const std::vector<Announced> cases = {
      {[](Surface& surface) { surface.SetAutoRefresh(true); }, "AutoRefresh"},
      {[](Surface& surface) { surface.SetBackColor(0x010203); }, "BackColor"},
      {[](Surface& surface) { surface.SetForeColor(0x0000FF); }, "ForeColor"},
      {[](Surface& surface) { surface.SetLightingIntensityAmbient(0.7); }, "LightingIntensityAmbient"},
      // Deliberately under the shininess key.
      {[](Surface& surface) { surface.SetLightingIntensitySpotlight(0.2); }, "LightingMaterialShininess"},
      {[](Surface& surface) { surface.SetLightingMaterialShininess(0.9); }, "LightingMaterialShininess"},
      {[](Surface& surface) { surface.SetLightingOn(true); }, "LightingOn"},
      {[](Surface& surface) { surface.SetOffsetHorizontal(0.3); }, "HorizontalOffset"},
      {[](Surface& surface) { surface.SetOffsetVertical(-0.3); }, "VerticalOffset"},
      {[](Surface& surface) { surface.SetPlotType(orvPlotType2D); }, "ViewType"},
      {[](Surface& surface) { surface.SetZoom(2.5); }, "Zoom"},
      {[](Surface& surface) { surface.SetLevelOfDetail(false); }, "LevelOfDetail"},
      // The trackball takes every rotation let, since a drag may have turned it since.
      {[](Surface& surface) { surface.SetRotationX(10); }, "XRotation", 1},
      {[](Surface& surface) { surface.SetRotationY(20); }, "YRotation", 1},
      {[](Surface& surface) { surface.SetRotationZ(40); }, "ZRotation", 1},
      {[](Surface& surface) { surface.SetEnabled(false); }, "Enabled"},
      // Compared with the window, which takes them only at the next refresh.
      {[](Surface& surface) { surface.SetAppearance(orv3d); }, "Appearance", 1},
      {[](Surface& surface) { surface.SetBorderStyle(orvFixedSingle); }, "BorderStyle", 1},
  };
  for (const Announced& a : cases) {
    Control fresh;
    a.let(fresh.surface);
    EXPECT_EQ(fresh.Keys(), std::vector<std::string>{a.key}) << a.key;
    fresh.host.ClearRecords();
    a.let(fresh.surface);
    EXPECT_EQ(fresh.Keys().size(), a.repeated) << a.key;
  }
}

TEST_F(SurfaceProperties, TheWindowsOwnStateRulesEnabledAndTheLetsOfItsLook) {
  s.SetEnabled(false);
  EXPECT_FALSE(c.host.Enabled());
  c.host.SetEnabled(true);
  EXPECT_TRUE(s.Enabled());
  c.host.ClearRecords();
  // Appearance and BorderStyle compare with the window's, not with a value still pending.
  s.SetAppearance(orvFlat);  // the window is flat already
  EXPECT_TRUE(c.Keys().empty());
  s.SetAppearance(orv3d);
  EXPECT_EQ(c.host.Appearance(), orvFlat);  // applied by a refresh only
  s.SetAppearance(orvFlat);  // the window still is flat, so the let does nothing at all
  EXPECT_EQ(s.Appearance(), orv3d);
  EXPECT_EQ(c.Keys(), std::vector<std::string>{"Appearance"});
  s.Refresh();
  EXPECT_EQ(c.host.Appearance(), orvFlat);  // no border: the look is not applied
  s.SetBorderStyle(orvFixedSingle);
  s.SetAppearance(orv3d);  // the window is still flat, so this marks it again
  s.Refresh();
  EXPECT_EQ(c.host.BorderStyle(), orvFixedSingle);
  EXPECT_EQ(c.host.Appearance(), orv3d);
  c.host.ClearRecords();
  s.SetBorderStyle(orvFixedSingle);
  EXPECT_TRUE(c.Keys().empty());
}

TEST_F(SurfaceProperties, ChildrenChangesComeUpUnderTheirKeys) {
  s.Header().SetText("Title");
  s.Legend().SetVisible(false);
  s.Faces().SetFillColorMaster(0x00FF00);
  s.Cursor().SetVisible(true);
  s.Contouring().SetInterpolateColors(true);
  s.Axes().SetKeepXYAspectRatio(true);
  s.Axes().LabelsFontMaster().SetBold(true);
  s.Axes().XAxis().SetAutoRangeType(orvAutoRangeOff);
  s.DataSets().Item(0).ViewMain().SetVisible(false);
  s.DataSets().Item(0).ViewBottom().MeshLine().SetWidth(3);
  s.DataSets().Item(0).Resampling().SetIntervalCount(5);
  // A master reaches the faces and axes before it is announced itself.
  EXPECT_EQ(c.Keys(),
            (std::vector<std::string>{"Text", "Visible", "XYFace.FillColor", "XZFace.FillColor", "YZFace.FillColor",
                                      "FillColorMaster", "Visible", "InterpolateColors", "KeepXYAspectRatio",
                                      "XAxis.LabelsFont", "YAxis.LabelsFont", "ZAxis.LabelsFont", "LabelsFontMaster",
                                      "AutoRangeType", "Main_Visible", "Bottom_MeshLine.Width",
                                      "DataSet1.Resampling.IntervalCount"}));
}

TEST_F(SurfaceProperties, ADataChangeOfDataSet2IsNotifiedAsDataSet2) {
  s.DataSets().SetCount(3);
  c.host.ClearRecords();
  testing::Saddle(s.DataSets().Item(2));
  // The setter clears the data set first and then announces the new data: two changes.
  EXPECT_EQ(c.Keys(), (std::vector<std::string>{"DataSet2", "DataSet2"}));
  c.host.ClearRecords();
  s.DataSets().Item(1).Clear();
  EXPECT_EQ(c.Keys(), (std::vector<std::string>{"DataSet1"}));
}

TEST_F(SurfaceProperties, TerminateStopsListeningAndDrawing) {
  s.Terminate();
  s.Terminate();
  s.Header().SetText("after");
  EXPECT_TRUE(c.Keys().empty());
  s.SetAutoRefresh(true);
  s.Refresh();
  EXPECT_EQ(c.Frames(), 0);
  EXPECT_FALSE(c.State().target.HasContext());
}

}  // namespace
}  // namespace orvane
