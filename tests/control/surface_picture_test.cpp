// What the control's pictures show: fills that depend on the data alone, band edges on
// the levels, markers and hulls where a viewer expects them. Checked by pixels.

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <set>
#include <vector>

#include "control/surface_state.h"
#include "control_fixture.h"
#include "orvane/axes/axes.h"
#include "orvane/contour/contouring.h"
#include "orvane/render/faces.h"
#include "render/gl.h"

namespace orvane {
namespace {

using testing::Control;

// Window pixel (top-left origin) of a cube point, through the main views' matrices.
std::array<int, 2> Project(Control& c, double x, double y, double z) {
  const auto& m = c.State().renderer.LastFrame().mainViews;
  double wx = 0, wy = 0, wz = 0;
  gluProject(x, y, z, m.modelView.data(), m.projection.data(), m.viewport.data(), &wx, &wy, &wz);
  return {static_cast<int>(std::floor(wx)), c.Image().header.biHeight - 1 - static_cast<int>(std::floor(wy))};
}

// A flat 2 x 2 grid at height z over [x0, x0 + 1] x [0, 1].
void Plane(DataSet& data, double z, double x0) {
  const std::vector<double> x{x0, x0 + 1.0}, y{0.0, 1.0};
  data.DataAsRectangularGridSet(x, 2, y, 2, Array2D(std::vector<double>{z, z, z, z}, 2, 2));
}

// Only the main views, no faces, axes or legend: the data alone on the background.
void BareViews(Control& c) {
  c.surface.Legend().SetVisible(false);
  c.surface.Faces().SetFillVisibleMaster(false);
  c.surface.Faces().SetMajorGridVisibleMaster(false);
  c.surface.Faces().SetEdgeVisibleMaster(false);
  for (DataSet& data : c.surface.DataSets()) {
    data.ViewTop().SetVisible(false);
    data.ViewBottom().SetVisible(false);
  }
}

TEST(SurfacePicture, AFlatPlaneIsOneColourWhateverTheOrderOfTheDataSets) {
  // The planes lie side by side, z = 0 over x in [0, 1] and z = 10 over [2, 3].
  for (const bool swapped : {false, true}) {
    Control c(240, 240);
    c.surface.DataSets().SetCount(2);
    Plane(c.surface.DataSets().Item(0), swapped ? 10.0 : 0.0, swapped ? 2.0 : 0.0);
    Plane(c.surface.DataSets().Item(1), swapped ? 0.0 : 10.0, swapped ? 0.0 : 2.0);
    c.surface.Axes().ZAxis().SetZoom(0.2);
    BareViews(c);
    if (getenv("NOLIST")) c.State().renderer.SetCompileLists(false);
    c.surface.Refresh();
    const Contouring& contouring = c.surface.Contouring();
    for (const double z : {0.0, 1.0}) {
      const Color expected = contouring.FindColor(z * 10.0, false);
      std::set<Color> seen;
      for (int i = 1; i < 20; ++i) {
        for (int j = 1; j < 20; ++j) {
          const auto p = Project(c, (i / 20.0 + 2.0 * z) / 3.0, j / 20.0, z);
          seen.insert(c.Image().Pixel(p[0], p[1]));
        }
      }
      EXPECT_EQ(seen, std::set<Color>{expected}) << "plane " << z * 10 << (swapped ? " (swapped)" : "");
    }
  }
}

}  // namespace
}  // namespace orvane
