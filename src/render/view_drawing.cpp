// One data set's view, in the element order and GL state of the views: markers, filled
// surface, contour lines, mesh, then the hulls. Every vertex is mapped from the data
// set's normalised coordinates (or data units, for the markers) into cube coordinates.
//
// Beyond the bare element rules:
// - Lines are never lit: each line routine pushes GL_ENABLE_BIT and turns lighting off,
//   since a line has no surface normal and would take whatever normal came last.
// - The hulls are outlines on the cube's floor (Z minimum), drawn with the depth test
//   off so that they show through the surface in 3-D and are not buried under it in 2-D.
// - A triangle lies outside the user hull when its centroid does.
// - Markers: Size is in 1/200ths of the cube's edge (MarkerHalfWidth); the 3-D shapes are
//   solids round the point, the flat ones lie in the XY plane through it (facing the
//   viewer in 2-D and in the top and bottom views). Plus and cross are strokes: in the
//   edge line when EdgeVisible, else in the fill colour.

#include "view_drawing.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <span>
#include <vector>

#include "coord_mapper.h"
#include "data/data_set_state.h"
#include "data/geometry.h"
#include "gl_line.h"
#include "orvane/contour/contouring.h"
#include "orvane/data/data_set.h"
#include "orvane/render/marker.h"
#include "orvane/render/view.h"

namespace orvane::detail {

namespace {

// The drawn mesh: vertices (normalised) and triangles as vertex index triples.
struct MeshGeometry {
  std::span<const double> x, y, z;
  std::vector<std::int32_t> triangles;  // for a grid mesh, made here
  std::span<const std::int32_t> indices;
  std::span<const std::int32_t> neighbours;  // a triangulation's, else empty
  std::size_t gridX = 0, gridY = 0;          // counts of a grid mesh
};

MeshGeometry Mesh(const DataSetState& s) {
  MeshGeometry m;
  if (s.meshType == kGridMesh) {
    const std::size_t nx = s.gridX.size(), ny = s.gridY.size();
    if (nx < 2 || ny < 2 || s.meshZ.size() < nx * ny) return m;
    m.x = s.meshX;
    m.y = s.meshY;
    m.z = s.meshZ;
    m.gridX = nx;
    m.gridY = ny;
    m.triangles.reserve(6 * (nx - 1) * (ny - 1));
    for (std::size_t i = 0; i + 1 < nx; ++i) {
      for (std::size_t j = 0; j + 1 < ny; ++j) {
        const auto k00 = static_cast<std::int32_t>(i * ny + j);
        const auto k10 = static_cast<std::int32_t>((i + 1) * ny + j);
        const auto k01 = k00 + 1, k11 = k10 + 1;
        m.triangles.insert(m.triangles.end(), {k00, k10, k11, k00, k11, k01});
      }
    }
    m.indices = m.triangles;
  } else if (s.meshType == kTriangleMesh && s.triangulation) {
    const CTriangulate& t = *s.triangulation;
    m.x = t.PointX();
    m.y = t.PointY();
    m.z = t.PointZ();
    m.indices = t.TriangleVertices();
    m.neighbours = t.TriangleNeighbours();
  }
  return m;
}

GLubyte Alpha(const View& view) {
  if (!view.TransparencyOn()) return 255;
  return static_cast<GLubyte>(std::lround(std::clamp(view.Transparency(), 0.0, 1.0) * 255.0));
}

// Colour of a Z value in data units; grey when there are no levels to look it up in.
Color FillColor(const Contouring& contouring, double z) {
  if (contouring.Contours().Count() == 0) return 0xC0C0C0;
  return contouring.FindColor(z, false);
}

void DrawFill(const DataSetState& s, const View& view, const CCoordMapper& map, const ViewContext& context) {
  const MeshGeometry mesh = Mesh(s);
  const std::size_t triangles = mesh.indices.size() / 3;
  if (triangles == 0) return;
  const std::size_t n = mesh.x.size();
  std::vector<double> cx(n), cy(n), cz(n), zData(n);
  for (std::size_t k = 0; k < n; ++k) {
    cx[k] = map.NormalisedToCubeX(mesh.x[k]);
    cy[k] = map.NormalisedToCubeY(mesh.y[k]);
    cz[k] = map.NormalisedToCubeZ(mesh.z[k]);
    zData[k] = map.NormalisedToDataZ(mesh.z[k]);
  }
  // Triangles left out by the user hull.
  std::vector<bool> skip;
  const auto hullCount = static_cast<std::size_t>(s.userHullInputCount);
  if (view.UserHullClipping() && hullCount >= 3) {
    skip.assign(triangles, false);
    const std::span<const double> hx = std::span<const double>(s.userHullX).first(hullCount);
    const std::span<const double> hy = std::span<const double>(s.userHullY).first(hullCount);
    for (std::size_t t = 0; t < triangles; ++t) {
      const auto a = static_cast<std::size_t>(mesh.indices[3 * t]), b = static_cast<std::size_t>(mesh.indices[3 * t + 1]),
                 c = static_cast<std::size_t>(mesh.indices[3 * t + 2]);
      skip[t] = !IsPointInPolygonInclusive((mesh.x[a] + mesh.x[b] + mesh.x[c]) / 3.0,
                                           (mesh.y[a] + mesh.y[b] + mesh.y[c]) / 3.0, hx, hy);
    }
  }
  // Triangle normals in cube coordinates, and their average at each vertex.
  std::vector<double> normals;
  const bool lit = context.lightingOn;
  auto triangleNormal = [&](std::size_t t, double (&out)[3]) {
    const auto a = static_cast<std::size_t>(mesh.indices[3 * t]), b = static_cast<std::size_t>(mesh.indices[3 * t + 1]),
               c = static_cast<std::size_t>(mesh.indices[3 * t + 2]);
    const double ux = cx[b] - cx[a], uy = cy[b] - cy[a], uz = cz[b] - cz[a];
    const double vx = cx[c] - cx[a], vy = cy[c] - cy[a], vz = cz[c] - cz[a];
    out[0] = uy * vz - uz * vy;
    out[1] = uz * vx - ux * vz;
    out[2] = ux * vy - uy * vx;
  };
  if (lit) {
    normals.assign(3 * n, 0.0);
    for (std::size_t t = 0; t < triangles; ++t) {
      double nt[3];
      triangleNormal(t, nt);
      for (int k = 0; k < 3; ++k) {
        const auto v = static_cast<std::size_t>(mesh.indices[3 * t + static_cast<std::size_t>(k)]);
        normals[3 * v] += nt[0];
        normals[3 * v + 1] += nt[1];
        normals[3 * v + 2] += nt[2];
      }
    }
  }

  glPushAttrib(GL_ALL_ATTRIB_BITS);
  glPolygonMode(GL_FRONT_AND_BACK, GL_FILL);
  glEnable(GL_POLYGON_OFFSET_FILL);
  glPolygonOffset(0.9F, static_cast<GLfloat>(view.MeshLine().Width()));
  const GLubyte alpha = Alpha(view);
  if (view.TransparencyOn()) {
    glDepthMask(GL_FALSE);
    glEnable(GL_BLEND);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
  }
  const bool interpolate = context.contouring.InterpolateColors();
  glShadeModel(lit || interpolate ? GL_SMOOTH : GL_FLAT);
  // The triangles go in as vertex arrays, a block at a time: compiling one array draw
  // into the list is far faster than a call per vertex, and a block bounds the copies.
  constexpr std::size_t kBlock = 1 << 18;
  std::vector<GLfloat> position, normal;
  std::vector<GLubyte> colour;
  glPushClientAttrib(GL_CLIENT_VERTEX_ARRAY_BIT);
  glEnableClientState(GL_VERTEX_ARRAY);
  glEnableClientState(GL_COLOR_ARRAY);
  if (lit) glEnableClientState(GL_NORMAL_ARRAY);
  auto flush = [&]() {
    if (position.empty()) return;
    glVertexPointer(3, GL_FLOAT, 0, position.data());
    glColorPointer(4, GL_UNSIGNED_BYTE, 0, colour.data());
    if (lit) glNormalPointer(GL_FLOAT, 0, normal.data());
    glDrawArrays(GL_TRIANGLES, 0, static_cast<GLsizei>(position.size() / 3));
    position.clear();
    colour.clear();
    normal.clear();
  };
  auto pushColour = [&](Color c) {
    colour.insert(colour.end(), {static_cast<GLubyte>(c & 0xFF), static_cast<GLubyte>((c >> 8) & 0xFF),
                                 static_cast<GLubyte>((c >> 16) & 0xFF), alpha});
  };
  position.reserve(9 * kBlock);
  colour.reserve(12 * kBlock);
  if (lit) normal.reserve(9 * kBlock);
  for (std::size_t t = 0; t < triangles; ++t) {
    if (!skip.empty() && skip[t]) continue;
    const std::size_t v[3] = {static_cast<std::size_t>(mesh.indices[3 * t]),
                              static_cast<std::size_t>(mesh.indices[3 * t + 1]),
                              static_cast<std::size_t>(mesh.indices[3 * t + 2])};
    Color flat = 0;
    if (!interpolate) flat = FillColor(context.contouring, (zData[v[0]] + zData[v[1]] + zData[v[2]]) / 3.0);
    for (std::size_t k : v) {
      pushColour(interpolate ? FillColor(context.contouring, zData[k]) : flat);
      if (lit) {
        normal.insert(normal.end(), {static_cast<GLfloat>(normals[3 * k]), static_cast<GLfloat>(normals[3 * k + 1]),
                                     static_cast<GLfloat>(normals[3 * k + 2])});
      }
      position.insert(position.end(),
                      {static_cast<GLfloat>(cx[k]), static_cast<GLfloat>(cy[k]), static_cast<GLfloat>(cz[k])});
    }
    if (position.size() >= 9 * kBlock) flush();
  }
  flush();
  glPopClientAttrib();
  glPopAttrib();
}

// Polylines of every level, chained, in the master format or each level's own.
void DrawContourLines(const DataSetState& s, const View& view, const CCoordMapper& map, const ViewContext& context) {
  bool any = false;
  for (const CLineList& level : s.contourLines) any = any || level.Count() > 0;
  if (!any) return;
  const bool master = view.UseMasterProperties();
  if (master && view.ContourLinesMaster().Width() == 0) return;
  glPushAttrib(GL_DEPTH_BUFFER_BIT | GL_CURRENT_BIT | GL_LINE_BIT | GL_ENABLE_BIT);
  glDepthMask(GL_FALSE);
  glDisable(GL_LIGHTING);
  glEnable(GL_LINE_STIPPLE);
  if (master) ApplyLineFormat(view.ContourLinesMaster());
  const Contours& levels = context.contouring.Contours();
  for (std::size_t k = 0; k < s.contourLines.size(); ++k) {
    const CLineList& lines = s.contourLines[k];
    if (lines.Count() == 0) continue;
    if (!master) {
      if (static_cast<std::int32_t>(k) >= levels.Count()) break;
      const auto level = levels.Item(static_cast<std::int32_t>(k));
      if (level->LineWidth() <= 0) continue;
      ApplyLineFormat(Line::StipplePattern(static_cast<EDrawStyle>(level->LineDrawStyle())), level->LineWidth(),
                      level->Color());
    }
    const auto& starts = lines.PolylineStarts();
    for (std::size_t p = 0; p < starts.size(); ++p) {
      const auto begin = static_cast<std::size_t>(starts[p]);
      const std::size_t end = p + 1 < starts.size() ? static_cast<std::size_t>(starts[p + 1]) : lines.Count();
      glBegin(GL_LINE_STRIP);
      const CLine& first = lines.Item(begin);
      glVertex3d(map.NormalisedToCubeX(first.x1), map.NormalisedToCubeY(first.y1), map.NormalisedToCubeZ(first.z1));
      for (std::size_t i = begin; i < end; ++i) {
        const CLine& l = lines.Item(i);
        glVertex3d(map.NormalisedToCubeX(l.x2), map.NormalisedToCubeY(l.y2), map.NormalisedToCubeZ(l.z2));
      }
      glEnd();
    }
  }
  glPopAttrib();
}

// Every edge of the mesh once.
void DrawMesh(const DataSetState& s, const View& view, const CCoordMapper& map) {
  const Line& line = view.MeshLine();
  if (line.Width() == 0) return;
  const MeshGeometry mesh = Mesh(s);
  const std::size_t triangles = mesh.indices.size() / 3;
  if (triangles == 0) return;
  glPushAttrib(GL_CURRENT_BIT | GL_LINE_BIT | GL_ENABLE_BIT);
  glDisable(GL_LIGHTING);
  glEnable(GL_LINE_STIPPLE);
  ApplyLineFormat(line);
  auto vertex = [&](std::size_t k) {
    glVertex3d(map.NormalisedToCubeX(mesh.x[k]), map.NormalisedToCubeY(mesh.y[k]), map.NormalisedToCubeZ(mesh.z[k]));
  };
  glBegin(GL_LINES);
  for (std::size_t t = 0; t < triangles; ++t) {
    for (std::size_t e = 0; e < 3; ++e) {
      // A shared edge is drawn by the lower-numbered of its triangles; in a grid every
      // cell's left and bottom sides and its diagonal, plus the last row and column.
      bool draw = true;
      if (!mesh.neighbours.empty()) {
        const std::int32_t other = mesh.neighbours[3 * t + e];
        draw = other < 0 || static_cast<std::size_t>(other) > t;
      } else if (mesh.gridY > 0) {
        const std::size_t cell = t / 2, i = cell / (mesh.gridY - 1), j = cell % (mesh.gridY - 1);
        const bool lower = t % 2 == 0;  // (i,j) (i+1,j) (i+1,j+1): bottom, right, diagonal
        if (lower) draw = e != 1 || i + 2 == mesh.gridX;  // right side: the next cell's left
        else draw = e != 1 || j + 2 == mesh.gridY;        // top side: the next cell's bottom
        if (!lower && e == 0) draw = false;               // the diagonal, drawn by the lower
      }
      if (!draw) continue;
      vertex(static_cast<std::size_t>(mesh.indices[3 * t + e]));
      vertex(static_cast<std::size_t>(mesh.indices[3 * t + (e + 1) % 3]));
    }
  }
  glEnd();
  glPopAttrib();
}

void DrawClosedPolyline(std::span<const double> x, std::span<const double> y, const CCoordMapper& map) {
  glBegin(GL_LINE_LOOP);
  for (std::size_t k = 0; k < x.size() && k < y.size(); ++k) {
    glVertex3d(map.NormalisedToCubeX(x[k]), map.NormalisedToCubeY(y[k]), 0.0);
  }
  glEnd();
}

void DrawHulls(const DataSetState& s, const View& view, const CCoordMapper& map) {
  const bool data = view.DataHullVisible() && view.DataHullLine().Width() > 0 && s.dataHullX.size() >= 2;
  const auto userCount = static_cast<std::size_t>(s.userHullInputCount);
  const bool user = view.UserHullVisible() && view.UserHullLine().Width() > 0 && userCount >= 2;
  if (!data && !user) return;
  glPushAttrib(GL_CURRENT_BIT | GL_LINE_BIT | GL_DEPTH_BUFFER_BIT | GL_ENABLE_BIT);
  glEnable(GL_LINE_STIPPLE);
  glDepthMask(GL_FALSE);
  glDisable(GL_DEPTH_TEST);
  glDisable(GL_LIGHTING);
  if (data) {
    ApplyLineFormat(view.DataHullLine());
    DrawClosedPolyline(s.dataHullX, s.dataHullY, map);
  }
  if (user) {
    ApplyLineFormat(view.UserHullLine());
    DrawClosedPolyline(std::span<const double>(s.userHullX).first(userCount),
                       std::span<const double>(s.userHullY).first(userCount), map);
  }
  glPopAttrib();
}

// Marker geometry round (0, 0, 0) with half-widths h[0..2].
void MarkerFaces(EDataMarkerShape shape, const double (&h)[3], bool outline) {
  const double x = h[0], y = h[1], z = h[2];
  switch (shape) {
    case orvMarkerShape3DCube: {
      static constexpr int kFaces[6][4] = {{0, 1, 3, 2}, {4, 6, 7, 5}, {0, 4, 5, 1}, {2, 3, 7, 6}, {0, 2, 6, 4}, {1, 5, 7, 3}};
      static constexpr double kNormals[6][3] = {{-1, 0, 0}, {1, 0, 0}, {0, -1, 0}, {0, 1, 0}, {0, 0, -1}, {0, 0, 1}};
      auto corner = [&](int c) { glVertex3d((c & 4) ? x : -x, (c & 2) ? y : -y, (c & 1) ? z : -z); };
      for (int f = 0; f < 6; ++f) {
        glBegin(outline ? GL_LINE_LOOP : GL_QUADS);
        glNormal3d(kNormals[f][0], kNormals[f][1], kNormals[f][2]);
        for (int c : kFaces[f]) corner(c);
        glEnd();
      }
      return;
    }
    case orvMarkerShape3DPyramid: {
      const double base[4][2] = {{-x, -y}, {x, -y}, {x, y}, {-x, y}};
      glBegin(outline ? GL_LINE_LOOP : GL_QUADS);
      glNormal3d(0, 0, -1);
      for (int c = 3; c >= 0; --c) glVertex3d(base[c][0], base[c][1], -z);
      glEnd();
      for (int c = 0; c < 4; ++c) {
        const int d = (c + 1) % 4;
        glBegin(outline ? GL_LINE_LOOP : GL_TRIANGLES);
        glNormal3d((base[c][0] + base[d][0]) / 2, (base[c][1] + base[d][1]) / 2, 0.5 * (x + y) / 2);
        glVertex3d(base[c][0], base[c][1], -z);
        glVertex3d(base[d][0], base[d][1], -z);
        glVertex3d(0, 0, z);
        glEnd();
      }
      return;
    }
    case orvMarkerShape2DSquare:
      glBegin(outline ? GL_LINE_LOOP : GL_QUADS);
      glNormal3d(0, 0, 1);
      glVertex3d(-x, -y, 0);
      glVertex3d(x, -y, 0);
      glVertex3d(x, y, 0);
      glVertex3d(-x, y, 0);
      glEnd();
      return;
    case orvMarkerShape2DTriangle:
      glBegin(outline ? GL_LINE_LOOP : GL_TRIANGLES);
      glNormal3d(0, 0, 1);
      glVertex3d(-x, -y, 0);
      glVertex3d(x, -y, 0);
      glVertex3d(0, y, 0);
      glEnd();
      return;
    case orvMarkerShape2DCircle: {
      glBegin(outline ? GL_LINE_LOOP : GL_POLYGON);
      glNormal3d(0, 0, 1);
      for (int k = 0; k < 24; ++k) {
        const double a = 2 * std::numbers::pi * k / 24;
        glVertex3d(x * std::cos(a), y * std::sin(a), 0);
      }
      glEnd();
      return;
    }
    case orvMarkerShape2DPlus:
      glBegin(GL_LINES);
      glVertex3d(-x, 0, 0);
      glVertex3d(x, 0, 0);
      glVertex3d(0, -y, 0);
      glVertex3d(0, y, 0);
      glEnd();
      return;
    case orvMarkerShape2DCross:
      glBegin(GL_LINES);
      glVertex3d(-x, -y, 0);
      glVertex3d(x, y, 0);
      glVertex3d(-x, y, 0);
      glVertex3d(x, -y, 0);
      glEnd();
      return;
  }
}

void DrawMarkers(const DataSetState& s, const Marker& marker, const CCoordMapper& map, const ViewContext& context) {
  const auto count = static_cast<std::size_t>(s.pointCount);
  if (count == 0 || !(marker.Size() > 0.0)) return;
  const double half = MarkerHalfWidth(marker.Size());
  const double h[3] = {half / context.cubeLengths[0], half / context.cubeLengths[1], half / context.cubeLengths[2]};
  const auto shape = static_cast<EDataMarkerShape>(marker.Shape());
  const bool strokes = shape == orvMarkerShape2DPlus || shape == orvMarkerShape2DCross;
  const bool fill = marker.FillVisible() && !strokes;
  const bool edge = marker.EdgeVisible() && marker.EdgeLine().Width() > 0;
  glPushAttrib(GL_CURRENT_BIT | GL_LINE_BIT | GL_ENABLE_BIT | GL_POLYGON_BIT);
  glMatrixMode(GL_MODELVIEW);
  for (std::size_t k = 0; k < count; ++k) {
    glPushMatrix();
    glTranslated(map.DataToCubeX(s.inputX[k]), map.DataToCubeY(s.inputY[k]), map.DataToCubeZ(s.inputZ[k]));
    if (fill) {
      SetColor(marker.FillColor());
      MarkerFaces(shape, h, false);
    }
    if (edge || (strokes && marker.FillVisible())) {
      glPushAttrib(GL_ENABLE_BIT | GL_CURRENT_BIT | GL_LINE_BIT);
      glDisable(GL_LIGHTING);
      if (edge) {
        glEnable(GL_LINE_STIPPLE);
        ApplyLineFormat(marker.EdgeLine());
      } else {
        SetColor(marker.FillColor());
      }
      MarkerFaces(shape, h, true);
      glPopAttrib();
    }
    glPopMatrix();
  }
  glPopAttrib();
}

}  // namespace

double MarkerHalfWidth(double size) { return size / 200.0; }

void DrawView(DataSet& data, const View& view, const ViewContext& context) {
  const DataSetState& s = DataSetAccess::State(data);
  CCoordMapper map;
  map.Init(data, context.axes);
  if (view.DataMarkersMaster().Visible()) DrawMarkers(s, view.DataMarkersMaster(), map, context);
  if (view.ContourFillVisible()) DrawFill(s, view, map, context);
  if (view.ContourLinesVisible()) DrawContourLines(s, view, map, context);
  if (view.MeshVisible()) DrawMesh(s, view, map);
  DrawHulls(s, view, map);
}

}  // namespace orvane::detail
