// The plot cube's faces, axes and cursor as the control draws them, checked by the pixels
// at projected points of the cube.

#include <gtest/gtest.h>

#include "control_fixture.h"
#include "orvane/axes/axes.h"
#include "orvane/render/cursor.h"
#include "orvane/render/faces.h"
#include "render/annotations.h"

namespace orvane {
namespace {

using testing::Control;
using testing::CountOf;

constexpr Color kRed = 0x0000FF, kGreen = 0x00FF00, kBlue = 0xFF0000;

// Whether the colour lies at the cube point's pixel or one of its eight neighbours: a line
// one pixel wide through a point on a pixel boundary lights either side.
bool ColourNear(Control& c, Color colour, double x, double y, double z) {
  const auto p = c.Project(x, y, z, false);
  for (int dy = -1; dy <= 1; ++dy) {
    for (int dx = -1; dx <= 1; ++dx) {
      if (c.Image().Pixel(p[0] + dx, p[1] + dy) == colour) return true;
    }
  }
  return false;
}

// Faces in their own fill colours, without grids, edges or axis lines.
void PlainColouredFaces(Surface& surface) {
  Faces& faces = surface.Faces();
  faces.SetUseMasterProperties(false);
  const std::pair<Face*, Color> fills[] = {{&faces.XYFace(), kRed}, {&faces.XZFace(), kGreen}, {&faces.YZFace(), kBlue}};
  for (const auto& [face, colour] : fills) {
    face->SetFillColor(colour);
    face->SetMajorGridVisible(false);
    face->SetEdgeVisible(false);
  }
  surface.Axes().AxisLineMaster().SetWidth(0);
}

TEST(SurfaceDrawing, EachPairShowsTheFaceBehindAndSwitchesSidesAsThePlotTurns) {
  Control c(200, 200);
  PlainColouredFaces(c.surface);
  c.surface.SetRotationX(60);
  c.surface.SetRotationZ(30);
  c.surface.Refresh();
  const auto planes = detail::PlotAnnotations::FacePlanes(c.State().renderer.LastFrame());
  EXPECT_EQ(c.PixelAt(0.5, 0.5, planes[0], false), kRed);
  EXPECT_EQ(c.PixelAt(0.5, planes[1], 0.5, false), kGreen);
  EXPECT_EQ(c.PixelAt(planes[2], 0.5, 0.5, false), kBlue);

  // Half a turn about Z: the viewer crosses the XZ and YZ planes, the faces move across.
  c.surface.SetRotationZ(210);
  c.surface.Refresh();
  const auto turned = detail::PlotAnnotations::FacePlanes(c.State().renderer.LastFrame());
  EXPECT_EQ(turned[0], planes[0]);
  EXPECT_EQ(turned[1], 1.0 - planes[1]);
  EXPECT_EQ(turned[2], 1.0 - planes[2]);
  EXPECT_EQ(c.PixelAt(0.5, turned[1], 0.5, false), kGreen);
  EXPECT_EQ(c.PixelAt(turned[2], 0.5, 0.5, false), kBlue);

  // In 2-D only the floor is drawn.
  c.surface.SetPlotType(orvPlotType2D);
  c.surface.Refresh();
  EXPECT_EQ(detail::PlotAnnotations::FacePlanes(c.State().renderer.LastFrame())[0], 0.0);
  EXPECT_GT(CountOf(c.Image(), kRed), 1000);
  EXPECT_EQ(CountOf(c.Image(), kGreen), 0);
  EXPECT_EQ(CountOf(c.Image(), kBlue), 0);
}

TEST(SurfaceDrawing, FaceFillsShowBehindTheDataAndNeverInFrontOfIt) {
  for (const int rotationZ : {30, 210}) {
    Control c(240, 240);
    PlainColouredFaces(c.surface);
    testing::Saddle(c.surface.DataSets().Item(0), 21);
    c.surface.DataSets().Item(0).ViewTop().SetVisible(false);
    c.surface.DataSets().Item(0).ViewBottom().SetVisible(false);
    c.surface.SetRotationZ(rotationZ);
    c.surface.Refresh();
    // Every point of the surface shows the surface, not a face, wherever a face lies
    // behind it; and the faces still show round it.
    const Axis& z = c.surface.Axes().ZAxis();
    for (int i = 1; i < 10; ++i) {
      for (int j = 1; j < 10; ++j) {
        const double x = i / 10.0, y = j / 10.0, cz = (x * y - z.Min()) / (z.Max() - z.Min());
        const Color p = c.PixelAt(x, y, cz);
        EXPECT_TRUE(p != kRed && p != kGreen && p != kBlue) << x << "," << y << " rotation " << rotationZ;
      }
    }
    EXPECT_GT(CountOf(c.Image(), kGreen), 500);
    EXPECT_GT(CountOf(c.Image(), kBlue), 500);
  }
}

TEST(SurfaceDrawing, AnAbsurdTickCountDrawsTheAxisWithoutTicks) {
  Control c(200, 200);
  testing::Saddle(c.surface.DataSets().Item(0));
  Axis& x = c.surface.Axes().XAxis();
  x.SetAutoRangeType(orvAutoRangeOff);
  x.SetMin(0.0);
  x.SetMax(1.0);
  x.SetMajorIntervalType(orvIntervalTypeByInterval);
  x.SetMajorInterval(1e-12);  // a trillion ticks
  c.surface.Refresh();
  EXPECT_TRUE(c.State().lastPaintError.empty()) << c.State().lastPaintError;
  EXPECT_EQ(detail::PlotAnnotations::DrawnTicks(x), -1);
  EXPECT_GT(c.Frames(), 0);
}

TEST(SurfaceDrawing, EdgesOfWidthZeroDrawNothing) {
  Control c(200, 200);
  c.surface.Axes().AxisLineMaster().SetWidth(0);
  Faces& faces = c.surface.Faces();
  faces.SetMajorGridVisibleMaster(false);
  faces.EdgeLineMaster().SetColor(kBlue);
  c.surface.Refresh();
  EXPECT_GT(CountOf(c.Image(), kBlue), 200);
  faces.EdgeLineMaster().SetWidth(0);
  c.surface.Refresh();
  EXPECT_EQ(CountOf(c.Image(), kBlue), 0);
}

TEST(SurfaceDrawing, GridLinesLieAtTheTickPositions) {
  Control c(240, 240);
  c.surface.SetPlotType(orvPlotType2D);
  c.surface.Axes().AxisLineMaster().SetWidth(0);
  Faces& faces = c.surface.Faces();
  faces.SetEdgeVisibleMaster(false);
  faces.MajorGridLineMaster().SetColor(kRed);
  // Data only to set the ranges; its views hidden.
  testing::Saddle(c.surface.DataSets().Item(0));
  c.surface.DataSets().Item(0).ViewMain().SetVisible(false);
  c.surface.Refresh();
  const Axis& x = c.surface.Axes().XAxis();
  ASSERT_GT(x.TickCount(), 2);
  for (std::int32_t i = 0; i <= x.TickCount(); ++i) {
    const double t = x.TickPosition(i);
    EXPECT_TRUE(ColourNear(c, kRed, t, 0.5, 0.0)) << "tick " << i;
  }
  // Half-way between two ticks: the face's fill.
  EXPECT_EQ(c.PixelAt((x.TickPosition(1) + x.TickPosition(2)) / 2, 0.37, 0.0, false), 0xFFFFFFu);
}

TEST(SurfaceDrawing, AxesRunAlongTheFrontEdgesAndMoveAsThePlotTurns) {
  Control c(240, 240);
  c.surface.Faces().SetFillVisibleMaster(false);
  c.surface.Faces().SetMajorGridVisibleMaster(false);
  c.surface.Faces().SetEdgeVisibleMaster(false);
  c.surface.Axes().AxisLineMaster().SetColor(kBlue);
  c.surface.Axes().AxisLineMaster().SetWidth(3);
  c.surface.SetRotationX(60);
  c.surface.SetRotationZ(30);
  c.surface.Refresh();
  auto frame = c.State().renderer.LastFrame();
  auto edges = detail::PlotAnnotations::AxisEdges(frame, frame.beforeViews);
  EXPECT_EQ(c.PixelAt(0.5, edges[0][0], edges[0][1], false), kBlue);
  EXPECT_EQ(c.PixelAt(edges[1][0], 0.5, edges[1][1], false), kBlue);
  EXPECT_EQ(c.PixelAt(edges[2][0], edges[2][1], 0.5, false), kBlue);
  const double y = edges[0][0];
  c.surface.SetRotationZ(210);
  c.surface.Refresh();
  frame = c.State().renderer.LastFrame();
  edges = detail::PlotAnnotations::AxisEdges(frame, frame.beforeViews);
  EXPECT_EQ(edges[0][0], 1.0 - y);
  EXPECT_EQ(c.PixelAt(0.5, edges[0][0], edges[0][1], false), kBlue);
}

TEST(SurfaceDrawing, CursorShowsThroughTheSurfaceIn3DAndCrossesTheMapIn2D) {
  Control c(200, 200);
  testing::Saddle(c.surface.DataSets().Item(0));
  Cursor& cursor = c.surface.Cursor();
  cursor.Line().SetColor(kRed);
  cursor.Line().SetWidth(3);
  cursor.SetXValue(0.5);
  cursor.SetYValue(0.5);
  cursor.SetZValue(0.25);
  c.surface.Refresh();
  EXPECT_EQ(CountOf(c.Image(), kRed), 0);  // hidden by default
  cursor.SetVisible(true);
  c.surface.Refresh();
  const Axis& z = c.surface.Axes().ZAxis();
  const double cz = (0.25 - z.Min()) / (z.Max() - z.Min());
  // Along the vertical line, under the surface (the point itself is on it).
  EXPECT_EQ(c.PixelAt(0.5, 0.5, cz * 0.5), kRed);
  EXPECT_EQ(c.PixelAt(0.2, 0.5, cz), kRed);
  EXPECT_EQ(c.PixelAt(0.5, 0.8, cz), kRed);

  c.surface.SetPlotType(orvPlotType2D);
  c.surface.Refresh();
  EXPECT_EQ(c.PixelAt(0.5, 0.1, 1.0), kRed);
  EXPECT_EQ(c.PixelAt(0.9, 0.5, 1.0), kRed);
  EXPECT_NE(c.PixelAt(0.3, 0.3, 1.0), kRed);
}

}  // namespace
}  // namespace orvane
