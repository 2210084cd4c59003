// The faces, axes and cursor of the plot cube.
//
// Faces. Of each pair of parallel faces the one behind the data is drawn: a fill, the
// major grid at the axes' tick positions and the four edges, all with depth writes off
// and before the data, so that nothing of the data is ever hidden by them. The fill is
// pushed back with a polygon offset of the grid line's width (at least 1), so that the
// grid and edges drawn on it stay in front.
//
// Axes. X and Y run along the edges of the floor face (the XY face drawn behind the
// data) that are nearest the viewer; Z along the vertical edge furthest to the left on
// screen. As the plot turns, each axis moves to the edge that is then in front. Ticks
// point out of the cube, 0.025 cube units long.

#include "annotations.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "gl.h"
#include "gl_line.h"
#include "orvane/axes/axes.h"
#include "orvane/render/cursor.h"
#include "orvane/render/faces.h"

namespace orvane::detail {

namespace {

// A point of the cube with its coordinates given per axis.
struct CubePoint {
  double c[3];
};

void Vertex(const CubePoint& p) { glVertex3d(p.c[0], p.c[1], p.c[2]); }

// The point with axis a at value v, the other two as given in order.
CubePoint Place(int a, double v, double first, double second) {
  CubePoint p{};
  const int u = (a + 1) % 3, w = (a + 2) % 3;
  p.c[a] = v;
  p.c[std::min(u, w)] = first;
  p.c[std::max(u, w)] = second;
  return p;
}


}  // namespace

Axis& PlotAnnotations::AxisOf(Axes& axes, int a) {
  return a == 0 ? axes.XAxis() : a == 1 ? axes.YAxis() : axes.ZAxis();
}

std::int32_t PlotAnnotations::DrawnTicks(const Axis& axis) {
  const std::int32_t count = axis.TickCount();
  return count >= 0 && count <= kMostTicks ? count : -1;
}

std::array<double, 3> PlotAnnotations::FacePlanes(const FrameState& frame) {
  if (!frame.is3D) return {0.0, 0.0, 0.0};
  const auto& side = frame.viewerOnPositiveSide;
  return {side[2] ? 0.0 : 1.0, side[1] ? 0.0 : 1.0, side[0] ? 0.0 : 1.0};
}

std::array<std::array<double, 2>, 3> PlotAnnotations::AxisEdges(const FrameState& frame,
                                                                const CapturedMatrices& m) {
  const std::array<double, 3> planes = FacePlanes(frame);
  if (!frame.is3D) return {{{0.0, 0.0}, {0.0, 0.0}, {0.0, 0.0}}};
  const double floor = planes[0];
  const double nearY = 1.0 - planes[1], nearX = 1.0 - planes[2];
  // The vertical edge whose middle lies furthest to the left in the window.
  std::array<double, 2> left{0.0, 0.0};
  double best = std::numeric_limits<double>::infinity();
  for (const double x : {0.0, 1.0}) {
    for (const double y : {0.0, 1.0}) {
      double wx = 0, wy = 0, wz = 0;
      if (gluProject(x, y, 0.5, m.modelView.data(), m.projection.data(), m.viewport.data(), &wx, &wy, &wz) != GL_TRUE) {
        continue;
      }
      if (wx < best - 1e-9) {
        best = wx;
        left = {x, y};
      }
    }
  }
  return {{{nearY, floor}, {nearX, floor}, left}};
}

void PlotAnnotations::DrawFace(Face& face, int normalAxis, double plane) {
  // The two in-plane axes, in X, Y, Z order.
  const int a = normalAxis == 0 ? 1 : 0;
  const int b = normalAxis == 2 ? 1 : 2;
  auto point = [&](double va, double vb) {
    CubePoint p{};
    p.c[normalAxis] = plane;
    p.c[a] = va;
    p.c[b] = vb;
    return p;
  };
  if (face.FillVisible()) {
    glPushAttrib(GL_CURRENT_BIT | GL_POLYGON_BIT | GL_DEPTH_BUFFER_BIT | GL_ENABLE_BIT);
    glDisable(GL_LIGHTING);
    glPolygonMode(GL_FRONT_AND_BACK, GL_FILL);
    glEnable(GL_POLYGON_OFFSET_FILL);
    const Line& grid = face.MajorGridLine();
    glPolygonOffset(1.0F, static_cast<GLfloat>(std::max(grid.Width(), 1)));
    SetColor(face.FillColor());
    glDepthMask(GL_FALSE);
    glBegin(GL_QUADS);
    Vertex(point(0, 0));
    Vertex(point(1, 0));
    Vertex(point(1, 1));
    Vertex(point(0, 1));
    glEnd();
    glPopAttrib();
  }
  Face& f = face;
  if (face.MajorGridVisible() && f.MajorGridLine().Width() > 0) {
    glPushAttrib(GL_CURRENT_BIT | GL_LINE_BIT | GL_DEPTH_BUFFER_BIT | GL_ENABLE_BIT);
    glDisable(GL_LIGHTING);
    glEnable(GL_LINE_STIPPLE);
    ApplyLineFormat(f.MajorGridLine());
    glDepthMask(GL_FALSE);
    glBegin(GL_LINES);
    for (const int along : {a, b}) {
      const Axis& axis = AxisOf(o_.axes, along);
      const std::int32_t count = DrawnTicks(axis);
      for (std::int32_t i = 0; i <= count && count >= 0; ++i) {
        const double t = axis.TickPosition(i);
        if (!(t >= 0.0 && t <= 1.0)) continue;
        if (along == a) {
          Vertex(point(t, 0));
          Vertex(point(t, 1));
        } else {
          Vertex(point(0, t));
          Vertex(point(1, t));
        }
      }
    }
    glEnd();
    glPopAttrib();
  }
  if (face.EdgeVisible() && f.EdgeLine().Width() > 0) {
    glPushAttrib(GL_DEPTH_BUFFER_BIT);
    glDepthMask(GL_FALSE);
    const CubePoint corners[4] = {point(0, 0), point(1, 0), point(1, 1), point(0, 1)};
    for (int k = 0; k < 4; ++k) {
      const CubePoint& p = corners[k];
      const CubePoint& q = corners[(k + 1) % 4];
      DrawLineSegment(f.EdgeLine(), p.c[0], p.c[1], p.c[2], q.c[0], q.c[1], q.c[2]);
    }
    glPopAttrib();
  }
}

void PlotAnnotations::DrawFaces(const FrameState& frame) {
  const std::array<double, 3> planes = FacePlanes(frame);
  DrawFace(o_.faces.XYFace(), 2, planes[0]);
  if (!frame.is3D) return;
  DrawFace(o_.faces.XZFace(), 1, planes[1]);
  DrawFace(o_.faces.YZFace(), 0, planes[2]);
}

void PlotAnnotations::DrawAxes(const FrameState& frame) {
  CapturedMatrices m;
  glGetDoublev(GL_MODELVIEW_MATRIX, m.modelView.data());
  glGetDoublev(GL_PROJECTION_MATRIX, m.projection.data());
  glGetIntegerv(GL_VIEWPORT, m.viewport.data());
  const auto edges = AxisEdges(frame, m);
  for (int a = 0; a < (frame.is3D ? 3 : 2); ++a) {
    Axis& axis = AxisOf(o_.axes, a);
    const Line& line = axis.AxisLine();
    if (line.Width() == 0) continue;
    const double first = edges[static_cast<std::size_t>(a)][0], second = edges[static_cast<std::size_t>(a)][1];
    const CubePoint from = Place(a, axis.AxisStart(), first, second);
    const CubePoint to = Place(a, axis.AxisEnd(), first, second);
    DrawLineSegment(line, from.c[0], from.c[1], from.c[2], to.c[0], to.c[1], to.c[2]);
    // Ticks point out of the cube along the first of the two other axes (Y for X, X for
    // Y and Z; in 2-D, away from the map).
    const int out = a == 0 ? 1 : 0;
    const double outward = first >= 0.5 ? 1.0 : -1.0;
    const double length = axis.TickLength();
    const std::int32_t count = DrawnTicks(axis);
    for (std::int32_t i = 0; i <= count && count >= 0; ++i) {
      const double t = axis.TickPosition(i);
      if (!(t >= 0.0 && t <= 1.0)) continue;
      CubePoint p = Place(a, t, first, second);
      CubePoint q = p;
      q.c[out] += outward * length;
      DrawLineSegment(line, p.c[0], p.c[1], p.c[2], q.c[0], q.c[1], q.c[2]);
    }
  }
}

void PlotAnnotations::DrawCursor(const FrameState& frame) {
  Cursor& cursor = o_.cursor;
  const Line& line = cursor.Line();
  if (line.Width() == 0) return;
  const double values[3] = {cursor.XValue(), cursor.YValue(), cursor.ZValue()};
  double c[3];
  for (int a = 0; a < 3; ++a) {
    const Axis& axis = AxisOf(o_.axes, a);
    const double span = axis.Max() - axis.Min();
    c[a] = span > 0.0 && std::isfinite(span) ? (values[a] - axis.Min()) / span : 0.5;
  }
  // In 2-D the two lines through X and Y across the map; in 3-D the three lines through
  // the point parallel to the axes, from face to face of the cube.
  for (int a = 0; a < (frame.is3D ? 3 : 2); ++a) {
    double p[3] = {c[0], c[1], frame.is3D ? c[2] : 1.0};
    double q[3] = {p[0], p[1], p[2]};
    p[a] = 0.0;
    q[a] = 1.0;
    DrawLineSegment(line, p[0], p[1], p[2], q[0], q[1], q[2]);
  }
}

}  // namespace orvane::detail
