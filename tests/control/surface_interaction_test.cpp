// Mouse and keyboard: the key table with its clamping and notifications, dragging the
// trackball, the events passed on to the host, and the cursor following the data.

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "control/surface_state.h"
#include "control_fixture.h"
#include "orvane/axes/axes.h"
#include "orvane/render/cursor.h"
#include "render/gl.h"

namespace orvane {
namespace {

using testing::Control;

constexpr std::int16_t kS = 83, kD = 68, kQ = 81, kW = 87, kO = 79, kP = 80, kPadPlus = 107, kPadMinus = 109;
constexpr std::int16_t kUp = 38, kDown = 40, kRight = 39, kLeft = 37;
constexpr std::int16_t kPageUp = 33, kPageDown = 34, kEnd = 35, kHome = 36;

TEST(SurfaceKeys, LightingKeysStepByATenthThroughTheClampingLetsAndOtherKeysAreNotTheControls) {
  Control c;
  Surface& s = c.surface;
  struct Row {
    std::int16_t key;
    double (Surface::*get)() const noexcept;
    double expected;
    const char* notified;
  };
  // From the defaults: spotlight 1, ambient 0.5, shininess 0.5; the spotlight's let
  // notifies under the shininess's key.
  const Row rows[] = {{kS, &Surface::LightingIntensitySpotlight, 1.0, nullptr},
                      {kD, &Surface::LightingIntensitySpotlight, 0.9, "LightingMaterialShininess"},
                      {kQ, &Surface::LightingIntensityAmbient, 0.6, "LightingIntensityAmbient"},
                      {kW, &Surface::LightingIntensityAmbient, 0.5, "LightingIntensityAmbient"},
                      {kO, &Surface::LightingMaterialShininess, 0.6, "LightingMaterialShininess"},
                      {kP, &Surface::LightingMaterialShininess, 0.5, "LightingMaterialShininess"}};
  for (const Row& row : rows) {
    c.host.ClearRecords();
    const std::int64_t frames = c.Frames();
    EXPECT_TRUE(s.OnKeyDown(row.key, 0));
    EXPECT_NEAR((s.*row.get)(), row.expected, 1e-12) << row.key;
    EXPECT_EQ(c.Frames(), frames + 1) << "every handled key draws, AutoRefresh or not";
    if (row.notified != nullptr) {
      EXPECT_EQ(c.Keys(), std::vector<std::string>{row.notified}) << row.key;
    } else {
      EXPECT_TRUE(c.Keys().empty()) << row.key;  // already at the top: no change
    }
  }
  s.SetLightingIntensityAmbient(0.95);
  s.OnKeyDown(kQ, 0);
  EXPECT_EQ(s.LightingIntensityAmbient(), 1.0);
  // Keys that are not the control's are left to the host: nothing drawn or told.
  c.host.ClearRecords();
  const std::int64_t frames = c.Frames();
  EXPECT_FALSE(s.OnKeyDown(65, 0));  // A
  EXPECT_FALSE(s.OnKeyDown(13, 0));  // Enter
  EXPECT_EQ(c.Frames(), frames);
  EXPECT_TRUE(c.Keys().empty());
}

TEST(SurfaceKeys, ZoomKeysMultiplyAndStopZoomingOutAtOne) {
  Control c;
  Surface& s = c.surface;
  s.OnKeyDown(kPadPlus, 0);
  EXPECT_DOUBLE_EQ(s.Zoom(), 1.2);
  EXPECT_EQ(c.Keys(), std::vector<std::string>{"Zoom"});
  s.SetZoom(1.1);
  s.OnKeyDown(kPadMinus, 0);
  EXPECT_EQ(s.Zoom(), 1.0);
  s.OnKeyDown(kPadMinus, 0);
  EXPECT_EQ(s.Zoom(), 1.0);
  s.SetZoom(3.0);
  s.OnKeyDown(kPadMinus, 0);
  EXPECT_DOUBLE_EQ(s.Zoom(), 2.5);
}

TEST(SurfaceKeys, ArrowsStepTheAnglesByFiveWithinAFullTurn) {
  Control c;
  Surface& s = c.surface;
  s.SetRotationX(358);
  s.OnKeyDown(kUp, 0);
  EXPECT_EQ(s.RotationX(), 3);
  s.SetRotationX(2);
  s.OnKeyDown(kDown, 0);
  EXPECT_EQ(s.RotationX(), 357);
  s.SetRotationZ(357);
  c.host.ClearRecords();
  s.OnKeyDown(kRight, 0);
  EXPECT_EQ(s.RotationZ(), 2);
  EXPECT_EQ(c.Keys(), std::vector<std::string>{"ZRotation"});
  s.OnKeyDown(kLeft, 0);
  s.OnKeyDown(kLeft, 0);
  EXPECT_EQ(s.RotationZ(), 352);
}

TEST(SurfaceKeys, PresetViewsResetZoomAndOffsetsSilentlyAndSetTheAngles) {
  struct Preset {
    std::int16_t key;
    std::int32_t x, y, z;
  };
  for (const Preset& p : {Preset{kHome, 60, 0, 30}, Preset{kPageUp, 120, 0, 30}, Preset{kPageDown, 120, 0, 210},
                          Preset{kEnd, 60, 0, 210}}) {
    Control c;
    Surface& s = c.surface;
    s.SetZoom(2.5);
    s.SetOffsetHorizontal(0.3);
    s.SetOffsetVertical(-0.2);
    s.SetRotationY(15);
    c.host.ClearRecords();
    EXPECT_TRUE(s.OnKeyDown(p.key, 0));
    EXPECT_EQ(s.Zoom(), 1.0);
    EXPECT_EQ(s.OffsetHorizontal(), 0.0);
    EXPECT_EQ(s.OffsetVertical(), 0.0);
    EXPECT_EQ(s.RotationX(), p.x);
    EXPECT_EQ(s.RotationY(), p.y);
    EXPECT_EQ(s.RotationZ(), p.z);
    for (const std::string& key : c.Keys()) {
      EXPECT_TRUE(key == "XRotation" || key == "YRotation" || key == "ZRotation") << key;
    }
  }
}

TEST(SurfaceMouse, EventsReachTheHostUnchanged) {
  Control c;
  Surface& s = c.surface;
  std::vector<std::string> seen;
  auto record = [&seen](const char* name) {
    return [&seen, name](std::int16_t b, std::int16_t sh, float x, float y) {
      seen.push_back(std::string(name) + " " + std::to_string(b) + " " + std::to_string(sh) + " " +
                     std::to_string(static_cast<int>(x * 10)) + " " + std::to_string(static_cast<int>(y * 10)));
    };
  };
  const Connection down = s.MouseDown.Connect(record("down"));
  const Connection move = s.MouseMove.Connect(record("move"));
  const Connection up = s.MouseUp.Connect(record("up"));
  const Connection dbl = s.DblClick.Connect([&seen] { seen.push_back("dbl"); });
  s.OnMouseDown(2, 3, 10.5F, 20.25F);
  s.OnMouseMove(2, 3, 11.5F, 21.5F);
  s.OnMouseUp(2, 1, 12.0F, 22.0F);
  s.OnDblClick();
  EXPECT_EQ(seen, (std::vector<std::string>{"down 2 3 105 202", "move 2 3 115 215", "up 2 1 120 220", "dbl"}));
}

TEST(SurfaceMouse, ALeftDragTurnsThePlotAndDrawsEvenWithoutAutoRefresh) {
  Control c(200, 200);
  Surface& s = c.surface;
  testing::Saddle(s.DataSets().Item(0));
  s.Refresh();
  ASSERT_FALSE(s.AutoRefresh());
  const std::vector<std::uint8_t> before = c.Image().bits;
  const auto quaternion = c.State().Trackball().Quaternion();
  const std::int64_t frames = c.Frames();
  s.OnMouseDown(1, 0, 100, 100);
  s.OnMouseMove(1, 0, 130, 100);
  s.OnMouseMove(1, 0, 160, 110);
  EXPECT_EQ(c.Frames(), frames + 2);
  EXPECT_NE(c.State().Trackball().Quaternion(), quaternion);
  EXPECT_NE(c.Image().bits, before);
  s.OnMouseUp(1, 0, 160, 110);
  // Moving without the button, or with the right one, turns nothing.
  const auto turned = c.State().Trackball().Quaternion();
  s.OnMouseMove(0, 0, 20, 20);
  s.OnMouseDown(2, 0, 20, 20);
  s.OnMouseMove(2, 0, 80, 80);
  EXPECT_EQ(c.State().Trackball().Quaternion(), turned);
  EXPECT_EQ(c.Frames(), frames + 2);
}

TEST(SurfaceMouse, TheCursorFollowsTheDataUnderThePointer) {
  Control c(200, 200);
  Surface& s = c.surface;
  s.SetPlotType(orvPlotType2D);
  // z = x + 2y over [0, 4] x [0, 2].
  std::vector<double> x, y, z;
  for (int i = 0; i <= 40; ++i) x.push_back(i * 0.1);
  for (int j = 0; j <= 20; ++j) y.push_back(j * 0.1);
  for (const double xi : x) {
    for (const double yj : y) z.push_back(xi + 2 * yj);
  }
  s.DataSets().Item(0).DataAsRectangularGridSet(x, 41, y, 21, Array2D(z, 41, 21));
  s.Cursor().SetVisible(true);
  s.Refresh();
  // The window pixel of the data point (1.5, 0.5) on the surface.
  const auto& frame = c.State().renderer.LastFrame();
  const auto& m = frame.mainViews;
  Axes& axes = s.Axes();
  auto cube = [&](int a, double v) {
    const Axis& axis = a == 0 ? axes.XAxis() : a == 1 ? axes.YAxis() : axes.ZAxis();
    return (v - axis.Min()) / (axis.Max() - axis.Min());
  };
  double wx = 0, wy = 0, wz = 0;
  gluProject(cube(0, 1.5), cube(1, 0.5), cube(2, 2.5), m.modelView.data(), m.projection.data(), m.viewport.data(), &wx,
             &wy, &wz);
  const float px = static_cast<float>(wx), py = static_cast<float>(frame.height - wy);
  s.OnMouseMove(0, 0, px, py);
  const double pixel = (axes.XAxis().Max() - axes.XAxis().Min()) / frame.plotWidth * 2;  // a pixel or two
  EXPECT_NEAR(s.Cursor().XValue(), 1.5, pixel);
  EXPECT_NEAR(s.Cursor().YValue(), 0.5, pixel);
  EXPECT_NEAR(s.Cursor().ZValue(), s.Cursor().XValue() + 2 * s.Cursor().YValue(), 0.05);
  // The conversion the cursor uses, in public: the cube's corners and a point between.
  double sx = 0, sy = 0;
  ASSERT_TRUE(s.ConvertInternalToScaledCoordinates(0.0, 1.0, sx, sy));
  EXPECT_EQ(sx, axes.XAxis().Min());
  EXPECT_EQ(sy, axes.YAxis().Max());
  ASSERT_TRUE(s.ConvertInternalToScaledCoordinates(cube(0, 1.5), cube(1, 0.5), sx, sy));
  EXPECT_NEAR(sx, 1.5, 1e-12);
  EXPECT_NEAR(sy, 0.5, 1e-12);
  EXPECT_FALSE(s.ConvertInternalToScaledCoordinates(std::nan(""), 0.5, sx, sy));
  EXPECT_NEAR(sx, 1.5, 1e-12);  // untouched
  // Off the data (the window's corner): the cursor stays where it was.
  const double kept = s.Cursor().XValue();
  s.OnMouseMove(0, 0, 1, 1);
  EXPECT_EQ(s.Cursor().XValue(), kept);
  // In manual mode the pointer moves nothing.
  s.Cursor().SetMode(orvCursorModeManual);
  s.OnMouseMove(0, 0, px + 30, py);
  EXPECT_EQ(s.Cursor().XValue(), kept);
}

}  // namespace
}  // namespace orvane
