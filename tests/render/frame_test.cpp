// Frames drawn for real off-screen, checked by their pixels and by the GL state they
// leave behind.

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "control/trackball.h"
#include "data/data_set_state.h"
#include "orvane/axes/axes.h"
#include "orvane/contour/contouring.h"
#include "orvane/data/data_sets.h"
#include "orvane/render/view.h"
#include "render/coord_mapper.h"
#include "render/frame.h"
#include "render/gl.h"
#include "render/render_target.h"

namespace orvane {
namespace {

using detail::FrameSettings;
using detail::Renderer;
using detail::RenderTarget;
using detail::Scene;

constexpr Color kBack = 0x332211;  // r 0x11, g 0x22, b 0x33

// The trackball's rotation for the given angles, as a frame takes it.
void Turn(FrameSettings& settings, std::int32_t x, std::int32_t z) {
  detail::CTrackball ball;
  ball.SetRotation(x, 0, z);
  double m[16];
  ball.GetRotationMatrix(m);
  std::copy(m, m + 16, settings.rotation.begin());
}

// A control's worth of objects, drawn into its own target.
struct Bench {
  DataSets sets;
  Axes axes;
  Contouring contouring;
  Scene scene{sets, axes, contouring};
  Renderer renderer;
  RenderTarget target;
  FrameSettings settings;

  explicit Bench(int width = 200, int height = 200) {
    target.Create(width, height);
    EXPECT_TRUE(target.HasContext()) << target.FailureReason();
    settings.backColor = kBack;
    Turn(settings, 60, 30);
  }
  void Render(bool prepare = true) { renderer.Render(target, scene, settings, nullptr, prepare); }
  Color Pixel(int x, int y) const { return target.Image().Pixel(x, y); }
  // Window pixel (top-left origin) of a cube point as the main views were drawn.
  std::array<int, 2> Project(double cx, double cy, double cz) const {
    const auto& m = renderer.LastFrame().mainViews;
    double wx = 0, wy = 0, wz = 0;
    gluProject(cx, cy, cz, m.modelView.data(), m.projection.data(), m.viewport.data(), &wx, &wy, &wz);
    return {static_cast<int>(std::lround(wx - 0.5)), target.Height() - 1 - static_cast<int>(std::lround(wy - 0.5))};
  }
  int CountNot(Color c) const {
    int n = 0;
    for (int y = 0; y < target.Height(); ++y) {
      for (int x = 0; x < target.Width(); ++x) n += Pixel(x, y) != c;
    }
    return n;
  }
};

// z = x over [0, 1] x [0, 1] as an n x n grid.
void Plane(DataSet& data, int n = 11, double z0 = 0.0, double slope = 1.0) {
  std::vector<double> x(static_cast<std::size_t>(n)), y(x.size()), z(x.size() * x.size());
  for (int i = 0; i < n; ++i) x[static_cast<std::size_t>(i)] = y[static_cast<std::size_t>(i)] = i / (n - 1.0);
  for (int i = 0; i < n; ++i) {
    for (int j = 0; j < n; ++j) z[static_cast<std::size_t>(i * n + j)] = z0 + slope * x[static_cast<std::size_t>(i)];
  }
  const Array2D zs(z, static_cast<std::size_t>(n), static_cast<std::size_t>(n));
  data.DataAsRectangularGridSet(x, n, y, n, zs);
}

// Hides everything but the main view's fill.
void FillOnly(DataSet& data) {
  data.ViewMain().SetDataHullVisible(false);
  data.ViewMain().SetContourLinesVisible(false);
  data.ViewTop().SetVisible(false);
  data.ViewBottom().SetVisible(false);
}

TEST(Frame, TwoDimensionalPlaneShowsItsBandColours) {
  Bench b;
  b.settings.plotType = 1;
  DataSet& data = b.sets.Item(0);
  Plane(data);
  FillOnly(data);
  b.contouring.SetAutoSetContoursType(orvAutoSetOff);
  for (double level : {0.25, 0.5, 0.75}) b.contouring.Contours().Add(level);
  b.Render();
  ASSERT_EQ(b.contouring.Contours().Count(), 3);
  // Each band's middle shows the colour FindColor gives for a triangle there; X runs to
  // the right and Y up.
  for (double x : {0.1, 0.35, 0.62, 0.9}) {
    const auto p = b.Project(x, 0.5, x);
    const Color expected = b.contouring.FindColor(x, false);
    EXPECT_EQ(b.Pixel(p[0], p[1]), expected) << "x " << x;
  }
  const auto left = b.Project(0.1, 0.5, 0), right = b.Project(0.9, 0.5, 0), top = b.Project(0.5, 0.9, 0);
  EXPECT_LT(left[0], right[0]);
  EXPECT_LT(top[1], left[1]);  // Y up: higher Y is nearer the top row
  // Outside the data: background.
  EXPECT_EQ(b.Pixel(2, 2), kBack);
}

TEST(Frame, TransparentViewsAreCompositedOverOpaqueOnes) {
  Bench b;
  b.settings.plotType = 1;
  b.sets.SetCount(2);
  DataSet& high = b.sets.Item(0);  // first in the collection, transparent, nearer
  DataSet& low = b.sets.Item(1);
  Plane(high, 5, 2.0, 0.0);
  Plane(low, 5, 0.0, 0.0);
  FillOnly(high);
  FillOnly(low);
  b.contouring.SetAutoSetContoursType(orvAutoSetOff);
  b.contouring.Contours().Add(1.0);
  high.ViewMain().SetTransparencyOn(true);
  high.ViewMain().SetTransparency(0.5);
  b.Render();  // levels coloured from the map once the data's range is known
  b.contouring.Contours().Item(0)->SetColor(0x0000FF);       // above 1: red
  b.contouring.Contours().Item(0)->SetColorBelow(0xFF0000);  // below 1: blue
  b.renderer.MarkPlotsStale();
  b.Render();
  const auto p = b.Project(0.5, 0.5, 0.5);
  const Color c = b.Pixel(p[0], p[1]);
  // Half red over blue, whatever the collection order.
  EXPECT_NEAR(static_cast<int>(c & 0xFF), 128, 2);
  EXPECT_EQ((c >> 8) & 0xFF, 0u);
  EXPECT_NEAR(static_cast<int>((c >> 16) & 0xFF), 127, 2);

  // Transparency 0: the transparent view vanishes, the opaque one shows.
  high.ViewMain().SetTransparency(0.0);
  b.renderer.MarkPlotsStale();
  b.Render();
  EXPECT_EQ(b.Pixel(p[0], p[1]), 0xFF0000u);
  // And with nothing opaque below it, the background.
  low.ViewMain().SetVisible(false);
  b.renderer.MarkPlotsStale();
  b.Render();
  EXPECT_EQ(b.Pixel(p[0], p[1]), kBack);
}

// Top and bottom views belong to 3-D only; hidden views build no list and draw nothing.
TEST(Frame, HiddenViewsAndTwoDimensionalTopOrBottomViewsDrawNothing) {
  Bench b;
  DataSet& data = b.sets.Item(0);
  Plane(data);
  data.ViewMain().SetVisible(false);
  b.settings.plotType = 1;
  b.Render();
  EXPECT_EQ(b.CountNot(kBack), 0);
  for (int kind = 0; kind < 3; ++kind) {
    EXPECT_EQ(b.renderer.PlotOfKind(kind).BuildCount(), 0) << kind;
    EXPECT_EQ(b.renderer.PlotOfKind(kind).DisplayList(), 0u) << kind;
  }
  b.settings.plotType = 0;  // in 3-D the same views show, flattened on the cube's faces
  b.Render();
  EXPECT_GT(b.CountNot(kBack), 500);
  EXPECT_EQ(b.renderer.PlotOfKind(1).BuildCount(), 1);
  data.ViewTop().SetVisible(false);
  data.ViewBottom().SetVisible(false);
  b.renderer.MarkPlotsStale();  // the control does this when a view changes
  b.Render();
  EXPECT_EQ(b.CountNot(kBack), 0);
}

TEST(Frame, RotationReplaysTheListAndMovesTheViewerSide) {
  Bench b;
  Plane(b.sets.Item(0));
  b.Render();
  EXPECT_EQ(b.renderer.PlotOfKind(0).BuildCount(), 1);
  // The default view looks down from the side of low X and low Y.
  EXPECT_EQ(b.renderer.LastFrame().viewerOnPositiveSide, (std::array<bool, 3>{false, false, true}));
  const std::vector<std::uint8_t> before = b.target.Image().bits;
  Turn(b.settings, 100, 200);
  b.Render();
  EXPECT_NE(b.target.Image().bits, before);
  EXPECT_GT(b.CountNot(kBack), 1000);
  Turn(b.settings, 120, 210);  // from below, the other way round
  b.Render();
  EXPECT_EQ(b.renderer.PlotOfKind(0).BuildCount(), 1);
  EXPECT_EQ(b.renderer.LastFrame().viewerOnPositiveSide, (std::array<bool, 3>{true, true, false}));
}

TEST(Frame, PointsOnTheAxisMaximumAreKeptAndBeyondItCut) {
  Bench b;
  b.settings.plotType = 1;
  DataSet& data = b.sets.Item(0);
  Plane(data, 11, 0.0, 0.0);
  FillOnly(data);
  // The X axis shows 0 .. 0.5: the half of the plane beyond it is cut away.
  b.axes.XAxis().SetAutoRangeType(0);
  b.axes.XAxis().SetMin(0.0);
  b.axes.XAxis().SetMax(0.5);
  b.Render();
  const auto inside = b.Project(0.9, 0.5, 0.0);    // x 0.45
  const auto beyond = b.Project(1.05, 0.5, 0.0);   // x 0.525
  EXPECT_NE(b.Pixel(inside[0], inside[1]), kBack);
  EXPECT_EQ(b.Pixel(beyond[0], beyond[1]), kBack);
  // A plus marker exactly at the corner (0.5, 1): its vertical stroke lies on the X
  // maximum and is kept.
  Marker& marker = data.ViewMain().DataMarkersMaster();
  data.ViewMain().SetContourFillVisible(false);
  marker.SetVisible(true);
  marker.SetShape(orvMarkerShape2DPlus);
  marker.SetSize(20);
  marker.SetEdgeVisible(false);
  marker.SetFillColor(0x00FF00);
  b.renderer.MarkPlotsStale();
  b.Render();
  const auto corner = b.Project(1.0, 1.0 - 0.04, 0.0);
  bool seen = false;
  for (int dx = -1; dx <= 1; ++dx) seen = seen || b.Pixel(corner[0] + dx, corner[1]) == 0x00FF00u;
  EXPECT_TRUE(seen);
}

TEST(Frame, LeavesTheStacksAsItFoundThemAndRaisesNoGlError) {
  for (const bool lit : {false, true}) {
    for (const std::int32_t type : {0, 1}) {
      Bench b(120, 90);
      DataSet& data = b.sets.Item(0);
      Plane(data);
      data.ViewMain().SetMeshVisible(true);
      data.ViewMain().DataMarkersMaster().SetVisible(true);
      data.ViewMain().SetUserHullVisible(true);
      b.settings.lightingOn = lit;
      b.settings.plotType = type;
      b.Render();
      ASSERT_TRUE(b.target.MakeCurrent());
      GLint attrib = -1, model = -1, projection = -1;
      glGetIntegerv(GL_ATTRIB_STACK_DEPTH, &attrib);
      glGetIntegerv(GL_MODELVIEW_STACK_DEPTH, &model);
      glGetIntegerv(GL_PROJECTION_STACK_DEPTH, &projection);
      EXPECT_EQ(attrib, 0);
      EXPECT_EQ(model, 1);
      EXPECT_EQ(projection, 1);
      EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR)) << "lit " << lit << " type " << type;
      EXPECT_TRUE(glIsEnabled(GL_DEPTH_TEST) == GL_FALSE);  // the frame's push is undone
      b.target.ReleaseCurrent();
    }
  }
}

TEST(Frame, AControlWithNoHeightStillRenders) {
  Bench b(200, 0);
  Plane(b.sets.Item(0));
  b.Render();
  EXPECT_TRUE(b.target.Image().bits.empty());
  EXPECT_EQ(b.renderer.LastFrame().plotHeight, 1);
  EXPECT_EQ(b.renderer.PlotOfKind(0).BuildCount(), 1);
}

TEST(CoordMapper, MapsNormalisedAndDataUnitsIntoTheCube) {
  DataSet data;
  Axes axes;
  detail::CCoordMapper map;  // made with origin 0 and span 1
  EXPECT_EQ(map.DataToCubeX(0.25), 0.25);
  EXPECT_EQ(map.DataToCubeZ(-3.0), -3.0);
  Plane(data, 3, 10.0, 4.0);  // x, y in 0..1, z 10..14
  axes.XAxis().SetAutoRangeType(0);
  axes.XAxis().SetMin(-1.0);
  axes.XAxis().SetMax(3.0);
  axes.ZAxis().SetAutoRangeType(0);
  axes.ZAxis().SetMin(10.0);
  axes.ZAxis().SetMax(20.0);
  map.Init(data, axes);
  EXPECT_EQ(map.DataToCubeX(-1.0), 0.0);
  EXPECT_EQ(map.DataToCubeX(3.0), 1.0);
  EXPECT_EQ(map.NormalisedToCubeX(1.0), 0.5);    // data 1 on -1 .. 3
  EXPECT_EQ(map.NormalisedToDataZ(0.5), 12.0);   // 10 + 0.5 * 4
  EXPECT_EQ(map.NormalisedToCubeZ(1.0), 0.4);    // data 14 on 10 .. 20
  EXPECT_DOUBLE_EQ(map.DataToCubeZ(25.0), 1.5);  // beyond the axis: outside the cube
  map.Reset();
  EXPECT_EQ(map.DataToCubeX(3.0), 3.0);
  EXPECT_EQ(map.NormalisedToDataZ(0.5), 12.0);  // the data scales stay
}

TEST(Frame, WithoutListsTheViewsDrawTheSamePicture) {
  Bench listed, direct;
  for (Bench* b : {&listed, &direct}) {
    Plane(b->sets.Item(0));
    b->sets.Item(0).ViewMain().SetMeshVisible(true);
  }
  direct.renderer.SetCompileLists(false);
  listed.Render();
  direct.Render();
  EXPECT_EQ(direct.target.Image().bits, listed.target.Image().bits);
  for (int kind = 0; kind < 3; ++kind) {
    EXPECT_EQ(direct.renderer.PlotOfKind(kind).BuildCount(), 0) << kind;
    EXPECT_EQ(direct.renderer.PlotOfKind(kind).DisplayList(), 0u) << kind;
  }
  EXPECT_EQ(listed.renderer.PlotOfKind(0).BuildCount(), 1);
}

// A whole grid is drawn as triangle strips; with a user hull round all of it (clipping
// on) the same cells go as separate triangles. The pictures must be the same pixel for
// pixel: the same diagonals, windings (two-sided lighting sees them) and flat colours.
TEST(Frame, GridStripsDrawTheSamePictureAsSeparateTriangles) {
  for (const int mode : {0, 1, 2}) {  // flat colours, interpolated colours, both lit
    Bench strips(160, 120), triangles(160, 120);
    for (Bench* b : {&strips, &triangles}) {
      DataSet& data = b->sets.Item(0);
      const int n = 23;
      std::vector<double> x(n), y(n), z(n * n);
      for (int i = 0; i < n; ++i) x[static_cast<std::size_t>(i)] = y[static_cast<std::size_t>(i)] = i / (n - 1.0);
      for (int i = 0; i < n; ++i) {
        for (int j = 0; j < n; ++j) {
          z[static_cast<std::size_t>(i * n + j)] = std::sin(5.0 * i / n) * std::cos(4.0 * j / n);
        }
      }
      data.DataAsRectangularGridSet(x, n, y, n, Array2D(z, static_cast<std::size_t>(n), static_cast<std::size_t>(n)));
      data.ViewMain().SetContourLinesVisible(false);
      data.ViewMain().SetDataHullVisible(false);
      b->contouring.SetInterpolateColors(mode >= 1);
      b->settings.lightingOn = mode == 2;
      b->renderer.SetCompileLists(false);
    }
    DataSet& clipped = triangles.sets.Item(0);
    clipped.UserHullSet(4, std::vector<double>{-1, 2, 2, -1}, std::vector<double>{-1, -1, 2, 2});
    for (View* v : {&clipped.ViewMain(), &clipped.ViewTop(), &clipped.ViewBottom()}) {
      v->SetUserHullClipping(true);
      v->SetUserHullVisible(false);
    }
    strips.Render();
    triangles.Render();
    EXPECT_GT(strips.CountNot(kBack), 3000) << "mode " << mode;
    EXPECT_EQ(strips.target.Image().bits, triangles.target.Image().bits) << "mode " << mode;
  }
}

}  // namespace
}  // namespace orvane
