// One data set's view, in the element order and GL state of the views: markers, filled
// surface, contour lines, mesh, then the hulls; in 2-D the hulls and markers of every
// view come after all the views' fills and lines (DrawOverlays). Every vertex is mapped
// from the data set's normalised coordinates (or data units, for the markers) into cube
// coordinates.
//
// Beyond the bare element rules:
// - Lines are never lit: each line routine pushes GL_ENABLE_BIT and turns lighting off,
//   since a line has no surface normal and would take whatever normal came last.
// - A triangle lies outside the user hull when its centroid does.
// - Exact bands (Contouring.ExactBands, InterpolateColors off): the fill is white,
//   modulated by a 1-D texture of the band colours indexed by each vertex's Z, so that
//   every pixel takes the band of its own interpolated Z and band edges run along the
//   levels, lit or not. Specular light is added after the texture, as it is added after
//   the colour in the other modes.
// - In 3-D the hulls on the cube's floor are hidden where the surface lies in front of
//   them; in 2-D they and the markers are drawn over every fill.
// - Markers: Size is in 1/200ths of the cube's edge (MarkerHalfWidth); the 3-D shapes are
//   solids round the point, the flat ones lie in the XY plane through it (facing the
//   viewer in 2-D and in the top and bottom views). Plus and cross are strokes: in the
//   edge line when EdgeVisible, else in the fill colour.

#include "view_drawing.h"

#include <algorithm>
#include <chrono>
#include <cstring>
#include <cmath>
#include <numbers>
#include <span>
#include <vector>

#include "coord_mapper.h"
#include "core/parallel.h"
#include "data/data_set_state.h"
#include "data/geometry.h"
#include "gl_line.h"
#include "level_of_detail.h"
#include "view_access.h"
#include "orvane/contour/contouring.h"
#include "orvane/data/data_set.h"
#include "orvane/render/marker.h"
#include "orvane/render/view.h"

namespace orvane::detail {

namespace {

// The drawn mesh: vertices (normalised) and its triangles. A grid's triangles are
// worked out from their number rather than stored: two per cell, cells numbered with X
// outer, the lower (i,j) (i+1,j) (i+1,j+1) before the upper (i,j) (i+1,j+1) (i,j+1).
struct MeshGeometry {
  // A triangulation's vertices; a grid's column X and row Y values and its flat Z.
  std::span<const double> x, y, z;
  std::span<const std::int32_t> indices;     // a triangulation's vertex triples
  std::span<const std::int32_t> neighbours;  // a triangulation's, else empty
  std::size_t gridX = 0, gridY = 0;          // counts of a grid mesh
  std::size_t level = 1;                     // the level of detail drawn (1: whole)

  std::size_t VertexCount() const noexcept { return gridY > 0 ? gridX * gridY : x.size(); }
  double X(std::size_t k) const noexcept { return gridY > 0 ? x[k / gridY] : x[k]; }
  double Y(std::size_t k) const noexcept { return gridY > 0 ? y[k % gridY] : y[k]; }

  std::size_t TriangleCount() const noexcept {
    return gridY > 0 ? 2 * (gridX - 1) * (gridY - 1) : indices.size() / 3;
  }
  void Corners(std::size_t t, std::size_t (&v)[3]) const noexcept {
    if (gridY > 0) {
      const std::size_t cell = t / 2, i = cell / (gridY - 1), j = cell % (gridY - 1);
      const std::size_t k00 = i * gridY + j, k11 = k00 + gridY + 1;
      v[0] = k00;
      v[1] = t % 2 == 0 ? k00 + gridY : k11;
      v[2] = t % 2 == 0 ? k11 : k00 + 1;
    } else {
      for (std::size_t k = 0; k < 3; ++k) v[k] = static_cast<std::size_t>(indices[3 * t + k]);
    }
  }
};

MeshGeometry Mesh(const DataSetState& s) {
  MeshGeometry m;
  if (s.meshType == kGridMesh) {
    const std::size_t nx = s.gridX.size(), ny = s.gridY.size();
    if (nx < 2 || ny < 2 || s.meshX.size() < nx || s.meshY.size() < ny || s.meshZ.size() < nx * ny) return m;
    m.x = s.meshX;
    m.y = s.meshY;
    m.z = s.meshZ;
    m.gridX = nx;
    m.gridY = ny;
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

// The level a mesh is drawn at over `pixels`: a grid's stride, a triangulation's
// clustering cells, or 1 for the whole mesh.
std::size_t LevelOf(const MeshGeometry& full, std::size_t pixels) {
  const std::size_t triangles = full.TriangleCount();
  if (pixels == 0 || triangles == 0) return 1;
  if (full.gridY > 0) return DetailStride(triangles, pixels);
  return std::max<std::size_t>(ClusterCells(triangles, pixels), 1);
}

// The mesh the fill and the mesh lines are drawn from: the whole mesh, or its decimated
// copy when it has far more triangles than the plot has pixels (made once for the mesh
// and the level, then kept in the data set).
MeshGeometry DrawnMesh(DataSetState& s, const ViewContext& context) {
  const MeshGeometry full = Mesh(s);
  const std::size_t level = LevelOf(full, context.detailPixels);
  if (level <= 1) return full;
  DataSetState::DetailMesh& d = s.detailMesh;
  if (d.level != level || d.generation != s.meshGeneration) {
    d = {};
    if (full.gridY > 0) {
      ReducedGrid r = ReduceGrid(full.z, full.gridX, full.gridY, level);
      for (const std::size_t i : r.columns) d.x.push_back(full.x[i]);
      for (const std::size_t j : r.rows) d.y.push_back(full.y[j]);
      d.z = std::move(r.z);
      d.gridX = r.columns.size();
      d.gridY = r.rows.size();
    } else {
      ClusteredMesh c = ClusterTriangulation(full.x, full.y, full.indices, level);
      for (const std::int32_t k : c.kept) {
        d.x.push_back(full.x[static_cast<std::size_t>(k)]);
        d.y.push_back(full.y[static_cast<std::size_t>(k)]);
        d.z.push_back(full.z[static_cast<std::size_t>(k)]);
      }
      d.indices = std::move(c.triangles);
    }
    d.level = level;
    d.generation = s.meshGeneration;
  }
  MeshGeometry m;
  m.x = d.x;
  m.y = d.y;
  m.z = d.z;
  m.indices = d.indices;
  m.gridX = d.gridX;
  m.gridY = d.gridY;
  m.level = level;
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

// RGBA bytes in memory order, whatever the host's byte order.
std::uint32_t PackRgba(Color c, GLubyte alpha) {
  const std::uint8_t bytes[4] = {static_cast<std::uint8_t>(c & 0xFF), static_cast<std::uint8_t>((c >> 8) & 0xFF),
                                 static_cast<std::uint8_t>((c >> 16) & 0xFF), alpha};
  std::uint32_t packed = 0;
  std::memcpy(&packed, bytes, 4);
  return packed;
}

}  // namespace

// The texels: evenly spaced levels get the same number of texels per band, each level
// just above a texel edge; others (and more bands than texels) spread the most texels
// over their span, each level then within a texel of its place.
BandTexture MakeBandTexture(const Contouring& contouring, double zRange, std::size_t maxTexels) {
  BandTexture t;
  const Contours& contours = contouring.Contours();
  std::vector<double> levels;
  for (std::int32_t k = 0; k < contours.Count(); ++k) levels.push_back(contours.Item(k)->Value());
  for (const double level : levels) {
    if (!std::isfinite(level)) return t;
  }
  if (levels.empty() || maxTexels < 2) return t;
  std::sort(levels.begin(), levels.end());
  const std::size_t n = levels.size();
  const double span = levels[n - 1] - levels[0];
  double step = n >= 2 ? span / static_cast<double>(n - 1) : 0.0;
  bool even = true;
  for (std::size_t k = 1; k < n && even; ++k) {
    even = std::fabs((levels[k] - levels[k - 1]) - step) <= 1e-9 * step;
  }
  if (!(step > 0.0)) {  // one level, or all equal: a step from the data
    step = zRange > 0.0 && std::isfinite(zRange) ? zRange : 1.0;
    even = true;
  }
  std::size_t count = maxTexels;
  double texel = 0.0;
  if (even && n + 1 <= maxTexels) {
    const std::size_t perBand = std::max<std::size_t>(1, maxTexels / (n + 1));
    count = perBand * (n + 1);
    texel = step / static_cast<double>(perBand);
  } else {
    texel = (span + 2.0 * step) / static_cast<double>(count);
  }
  t.step = texel;
  t.zLow = levels[0] - step - 0.01 * texel;
  t.texels.resize(count);
  for (std::size_t j = 0; j < count; ++j) {
    t.texels[j] = PackRgba(contouring.FindColor(t.zLow + (static_cast<double>(j) + 0.5) * texel, false), 255);
  }
  return t;
}

namespace {

// item(k) for k = 0 .. count - 1, in fixed parts over the cores (each k written alone).
template <class Item>
void InParts(std::size_t count, const Item& item) {
  constexpr std::size_t kPart = std::size_t{1} << 16;
  RunTasks((count + kPart - 1) / kPart, [&](std::size_t part) {
    for (std::size_t k = part * kPart; k < std::min(count, (part + 1) * kPart); ++k) item(k);
  });
}

// The filled surface's vertex data for each data set, shared by its main, top and
// bottom views (the flat views squash Z with their matrix): positions, normals and
// blanks are kept from frame to frame while the mesh, its level, the mapping and the
// lighting stay; the colours are worked out again once a frame, since levels and colours
// may have changed whenever the lists are built.
FillGeometry& PrepareFill(const DataSetState& s, const MeshGeometry& mesh, const CCoordMapper& map,
                          const ViewContext& context, FillCache& cache) {
  FillGeometry& g = cache[&s];
  const std::size_t n = mesh.VertexCount();
  const std::size_t triangles = mesh.TriangleCount();
  const bool kept = g.ready && g.meshGeneration == s.meshGeneration && g.level == mesh.level &&
                    g.mapping == map.Signature() && g.lit == context.lightingOn && g.zData.size() == n;
  if (!kept) {
    g.position.resize(3 * n);
    g.zData.resize(n);
    InParts(n, [&](std::size_t k) {
      g.position[3 * k] = static_cast<GLfloat>(map.NormalisedToCubeX(mesh.X(k)));
      g.position[3 * k + 1] = static_cast<GLfloat>(map.NormalisedToCubeY(mesh.Y(k)));
      g.position[3 * k + 2] = static_cast<GLfloat>(map.NormalisedToCubeZ(mesh.z[k]));
      g.zData[k] = map.NormalisedToDataZ(mesh.z[k]);
    });
    // Triangles with a blank corner (NaN height) are left out of the drawing.
    g.hasBlanks = std::any_of(mesh.z.begin(), mesh.z.end(), [](double z) { return std::isnan(z); });
    g.blank.clear();
    if (g.hasBlanks) {
      g.blank.assign(triangles, false);
      for (std::size_t t = 0; t < triangles; ++t) {
        std::size_t v[3];
        mesh.Corners(t, v);
        g.blank[t] = std::isnan(mesh.z[v[0]] + mesh.z[v[1]] + mesh.z[v[2]]);
      }
    }
    // Vertex normals: the sum of the adjoining triangles' normals (in cube coordinates,
    // computed in double), normalised by the pipeline.
    g.normal.clear();
    if (context.lightingOn) {
      std::vector<double> sum(3 * n, 0.0);
      const auto c = [&](std::size_t k, std::size_t axis) { return static_cast<double>(g.position[3 * k + axis]); };
      for (std::size_t t = 0; t < triangles; ++t) {
        if (g.hasBlanks && g.blank[t]) continue;
        std::size_t v[3];
        mesh.Corners(t, v);
        const double ux = c(v[1], 0) - c(v[0], 0), uy = c(v[1], 1) - c(v[0], 1), uz = c(v[1], 2) - c(v[0], 2);
        const double vx = c(v[2], 0) - c(v[0], 0), vy = c(v[2], 1) - c(v[0], 1), vz = c(v[2], 2) - c(v[0], 2);
        const double nt[3] = {uy * vz - uz * vy, uz * vx - ux * vz, ux * vy - uy * vx};
        for (const std::size_t k : v) {
          for (std::size_t a = 0; a < 3; ++a) sum[3 * k + a] += nt[a];
        }
      }
      g.normal.resize(3 * n);
      for (std::size_t k = 0; k < 3 * n; ++k) g.normal[k] = static_cast<GLfloat>(sum[k]);
    }
    g.meshGeneration = s.meshGeneration;
    g.level = mesh.level;
    g.mapping = map.Signature();
    g.lit = context.lightingOn;
    g.colourFrame = 0;
    g.ready = true;
  }
  if (g.colourFrame == context.frame && context.frame != 0) return g;
  // Colours: each vertex's own when interpolating, else one per triangle from the mean
  // of its corners' heights; or, for exact bands, each vertex's place in the texture.
  g.colourFrame = context.frame;
  g.outsideReady = false;  // the user hull may have moved
  g.interpolated = context.contouring.InterpolateColors();
  g.bands = false;
  g.colour.clear();
  g.texel.clear();
  if (!g.interpolated && context.contouring.ExactBands()) {
    GLint largest = 0;
    glGetIntegerv(GL_MAX_TEXTURE_SIZE, &largest);
    const double zRange = map.NormalisedToDataZ(1.0) - map.NormalisedToDataZ(0.0);
    g.texture = MakeBandTexture(context.contouring, zRange, std::min<std::size_t>(4096, static_cast<std::size_t>(std::max(largest, 0))));
    g.bands = !g.texture.texels.empty();
  }
  if (g.bands) {
    g.texel.resize(n);
    InParts(n, [&](std::size_t k) { g.texel[k] = g.texture.Coordinate(g.zData[k]); });
  } else if (g.interpolated) {
    g.colour.resize(n);
    InParts(n, [&](std::size_t k) { g.colour[k] = FillColor(context.contouring, g.zData[k]); });
  } else {
    g.colour.resize(triangles);
    InParts(triangles, [&](std::size_t t) {
      std::size_t v[3];
      mesh.Corners(t, v);
      g.colour[t] = FillColor(context.contouring, (g.zData[v[0]] + g.zData[v[1]] + g.zData[v[2]]) / 3.0);
    });
  }
  return g;
}

// Triangles whose centroid lies outside the user hull, worked out once as well.
const std::vector<bool>& OutsideUserHull(const DataSetState& s, const MeshGeometry& mesh, FillGeometry& g) {
  if (!g.outsideReady) {
    const std::size_t hullCount = std::min(s.UserHullCount(), s.userHullX.size());
    const std::span<const double> hx = std::span<const double>(s.userHullX).first(hullCount);
    const std::span<const double> hy = std::span<const double>(s.userHullY).first(hullCount);
    const std::size_t triangles = mesh.TriangleCount();
    g.outside.assign(triangles, false);
    for (std::size_t t = 0; t < triangles; ++t) {
      std::size_t v[3];
      mesh.Corners(t, v);
      g.outside[t] = (g.hasBlanks && g.blank[t]) || !IsPointInPolygonInclusive((mesh.X(v[0]) + mesh.X(v[1]) + mesh.X(v[2])) / 3.0,
                                                (mesh.Y(v[0]) + mesh.Y(v[1]) + mesh.Y(v[2])) / 3.0, hx, hy);
    }
    g.outsideReady = true;
  }
  return g.outside;
}

void DrawFill(const DataSetState& s, const MeshGeometry& mesh, const View& view, const CCoordMapper& map,
              const ViewContext& context) {
  const std::size_t triangles = mesh.TriangleCount();
  if (triangles == 0) return;
  // The time spent here, GL calls apart, is the preparation of the vertex data.
  const auto started = std::chrono::steady_clock::now();
  double inGl = 0.0;
  FillCache ownCache;
  FillGeometry& g = PrepareFill(s, mesh, map, context, context.fillCache != nullptr ? *context.fillCache : ownCache);
  const bool lit = context.lightingOn;
  const std::vector<bool>* skip = nullptr;
  if (view.UserHullClipping() && s.UserHullCount() >= 3) {
    skip = &OutsideUserHull(s, mesh, g);
  } else if (g.hasBlanks) {
    skip = &g.blank;
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
  const bool perVertex = g.interpolated || g.bands;  // no colour of a triangle's own
  const GLenum shading = lit || perVertex ? GL_SMOOTH : GL_FLAT;
  // Mesa leaves out of a display list a shade model equal to the last one compiled into
  // it, unaware that a pop in between restored another; naming the other one first keeps
  // the list's model right for the second and later data sets.
  glShadeModel(shading == GL_FLAT ? GL_SMOOTH : GL_FLAT);
  glShadeModel(shading);
  // The triangles go in as vertex arrays, a block at a time: compiling one array draw
  // into the list is far faster than a call per vertex. Blocks are kept small so that
  // the driver's copy of each stays in cache and its memory is reused; drawing straight
  // away (no list being compiled), each block is waited for, or llvmpipe keeps queueing
  // copies and the time goes into fresh pages.
  constexpr std::size_t kBlock = 1 << 14;
  GLint compiling = 0;
  glGetIntegerv(GL_LIST_INDEX, &compiling);
  if (g.bands) {
    // The default 1-D texture object, filled here (compiled into the list with it).
    glBindTexture(GL_TEXTURE_1D, 0);
    glTexParameteri(GL_TEXTURE_1D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
    glTexParameteri(GL_TEXTURE_1D, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
    glTexParameteri(GL_TEXTURE_1D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
    glTexImage1D(GL_TEXTURE_1D, 0, GL_RGBA8, static_cast<GLsizei>(g.texture.texels.size()), 0, GL_RGBA,
                 GL_UNSIGNED_BYTE, g.texture.texels.data());
    glTexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_MODULATE);
    glDisable(GL_TEXTURE_2D);  // it would take the 1-D texture's place
    glEnable(GL_TEXTURE_1D);
    if (lit) glLightModeli(GL_LIGHT_MODEL_COLOR_CONTROL, GL_SEPARATE_SPECULAR_COLOR);
  }
  std::vector<GLfloat> position, normal, texel;
  std::vector<std::uint32_t> colour;
  std::vector<GLint> stripFirst;
  std::vector<GLsizei> stripCount;
  glPushClientAttrib(GL_CLIENT_VERTEX_ARRAY_BIT);
  // Exact bands unlit: one colour for all, white with the view's alpha, for the texture
  // to modulate (a list may leave out a colour equal to the one compiled before it, as it
  // does the shade model, so another goes first). Lit, the colour material takes its
  // white from the vertices: Mesa's lighting did not follow a colour set this way.
  const bool colourArray = !g.bands || lit;
  glEnableClientState(GL_VERTEX_ARRAY);
  if (colourArray) glEnableClientState(GL_COLOR_ARRAY);
  if (lit) glEnableClientState(GL_NORMAL_ARRAY);
  if (g.bands) glEnableClientState(GL_TEXTURE_COORD_ARRAY);
  if (!colourArray) {
    glColor4ub(0, 0, 0, 0);
    glColor4ub(255, 255, 255, alpha);
  }
  // The block's arrays are sized once and filled by index: `used` vertices so far.
  std::size_t used = 0;
  auto flush = [&]() {
    if (used == 0) return;
    const auto glStarted = std::chrono::steady_clock::now();
    glVertexPointer(3, GL_FLOAT, 0, position.data());
    if (colourArray) glColorPointer(4, GL_UNSIGNED_BYTE, 0, colour.data());
    if (lit) glNormalPointer(GL_FLOAT, 0, normal.data());
    if (g.bands) glTexCoordPointer(1, GL_FLOAT, 0, texel.data());
    if (stripFirst.empty()) {
      glDrawArrays(GL_TRIANGLES, 0, static_cast<GLsizei>(used));
    } else {
      glMultiDrawArrays(GL_TRIANGLE_STRIP, stripFirst.data(), stripCount.data(),
                        static_cast<GLsizei>(stripFirst.size()));
    }
    if (compiling == 0) glFinish();
    inGl += std::chrono::duration<double>(std::chrono::steady_clock::now() - glStarted).count();
    used = 0;
    stripFirst.clear();
    stripCount.clear();
  };
  auto rgba = [alpha](Color c) { return PackRgba(c, alpha); };
  auto vertex = [&](std::size_t k, std::uint32_t colourOf) {
    if (colourArray) colour[used] = colourOf;
    std::copy_n(&g.position[3 * k], 3, &position[3 * used]);
    if (lit) std::copy_n(&g.normal[3 * k], 3, &normal[3 * used]);
    if (g.bands) texel[used] = g.texel[k];
    ++used;
  };
  const std::uint32_t white = rgba(0xFFFFFF);
  auto colourAt = [&](std::size_t k) { return g.bands ? white : rgba(g.colour[k]); };
  // A block ends after the row of cells or the triangle that takes it past 3 kBlock
  // vertices: room for one more row (2 gridX) or triangle (3) beyond that.
  const std::size_t room = 3 * kBlock + 2 * mesh.gridX + 3;
  position.resize(3 * room);
  if (colourArray) colour.resize(room);
  if (lit) normal.resize(3 * room);
  if (g.bands) texel.resize(room);
  // Smooth shading of flat colours (lit, not interpolated) needs each triangle's colour
  // at all three corners, which a strip cannot give: those go as separate triangles.
  if (mesh.gridY > 0 && skip == nullptr && (perVertex || !lit)) {
    // A whole grid goes as one triangle strip per row of cells, run from the last
    // column to the first: (i, j) and (i, j + 1) for i = nx - 1 .. 0 make the cells'
    // lower and upper triangles with their own diagonal and winding, in a third of the
    // vertices. Flat shading takes each triangle's colour from its last vertex, which in
    // a strip no other triangle ends on.
    const std::size_t nx = mesh.gridX, ny = mesh.gridY;
    for (std::size_t j = 0; j + 1 < ny; ++j) {
      stripFirst.push_back(static_cast<GLint>(used));
      stripCount.push_back(static_cast<GLsizei>(2 * nx));
      for (std::size_t q = 0; q < nx; ++q) {
        const std::size_t i = nx - 1 - q;
        const std::size_t k0 = i * ny + j;
        if (perVertex) {
          vertex(k0, colourAt(k0));
          vertex(k0 + 1, colourAt(k0 + 1));
        } else if (q == 0) {
          vertex(k0, 0);
          vertex(k0 + 1, 0);
        } else {
          // Ends the lower triangle of cell (i, j), then its upper one.
          const std::size_t lower = 2 * (i * (ny - 1) + j);
          vertex(k0, rgba(g.colour[lower]));
          vertex(k0 + 1, rgba(g.colour[lower + 1]));
        }
      }
      if (used >= 3 * kBlock) flush();
    }
  } else {
    for (std::size_t t = 0; t < triangles; ++t) {
      if (skip != nullptr && (*skip)[t]) continue;
      std::size_t v[3];
      mesh.Corners(t, v);
      const std::uint32_t flat = perVertex ? 0 : rgba(g.colour[t]);
      for (const std::size_t k : v) vertex(k, perVertex ? colourAt(k) : flat);
      if (used >= 3 * kBlock) flush();
    }
  }
  flush();
  glPopClientAttrib();
  glPopAttrib();
  if (context.preparationSeconds != nullptr) {
    *context.preparationSeconds += std::chrono::duration<double>(std::chrono::steady_clock::now() - started).count() - inGl;
  }
}

// Polylines of every level, chained, in the master format or each level's own.
void DrawContourLines(const DataSetState& s, const View& view, const CCoordMapper& map, const ViewContext& context) {
  bool any = false;
  for (const CLineList& level : s.contourLines) any = any || level.Count() > 0;
  if (!any) return;
  const bool master = view.UseMasterProperties();
  if (master && view.ContourLinesMaster().Width() == 0) return;
  glPushAttrib(GL_DEPTH_BUFFER_BIT | GL_CURRENT_BIT | GL_LINE_BIT | GL_POINT_BIT | GL_ENABLE_BIT);
  glDepthMask(GL_FALSE);
  glDisable(GL_LIGHTING);
  glEnable(GL_LINE_STIPPLE);
  if (master) ApplyLineFormat(view.ContourLinesMaster());
  const Contours& levels = context.contouring.Contours();
  // A pixel and a half in cube units, the cube's edge taken as the plot's side (which it
  // rarely fills: a piece is then about a pixel long).
  const double step = context.detailPixels > 0 ? 1.5 / std::sqrt(static_cast<double>(context.detailPixels)) : 0.0;
  for (std::size_t k = 0; k < s.contourLines.size(); ++k) {
    const CLineList& lines = s.contourLines[k];
    if (lines.Count() == 0) continue;
    std::int32_t width = view.ContourLinesMaster().Width();
    std::uint16_t stipple = view.ContourLinesMaster().StipplePattern();
    if (!master) {
      if (static_cast<std::int32_t>(k) >= levels.Count()) break;
      const auto level = levels.Item(static_cast<std::int32_t>(k));
      if (level->LineWidth() <= 0) continue;
      width = level->LineWidth();
      stipple = Line::StipplePattern(static_cast<EDrawStyle>(level->LineDrawStyle()));
      ApplyLineFormat(stipple, width, level->Color());
    }
    const auto& starts = lines.PolylineStarts();
    const auto vertices = [&](std::size_t begin, std::size_t end) {
      const CLine& first = lines.Item(begin);
      double last[3] = {map.NormalisedToCubeX(first.x1), map.NormalisedToCubeY(first.y1), map.NormalisedToCubeZ(first.z1)};
      glVertex3dv(last);
      for (std::size_t i = begin; i < end; ++i) {
        const CLine& l = lines.Item(i);
        const double next[3] = {map.NormalisedToCubeX(l.x2), map.NormalisedToCubeY(l.y2), map.NormalisedToCubeZ(l.z2)};
        // At a level of detail, a vertex closer than `step` to the last drawn is passed
        // over (the line's last is always drawn): pieces shorter than a pixel each
        // rasterise to nothing, and a chain of them would show as dots.
        if (i + 1 < end && step > 0.0 &&
            std::fabs(next[0] - last[0]) + std::fabs(next[1] - last[1]) + std::fabs(next[2] - last[2]) < step) {
          continue;
        }
        glVertex3dv(next);
        std::copy(next, next + 3, last);
      }
    };
    // A wide line is a chain of separate quads: a solid one gets a dot of its width at
    // each vertex too, which fills the notches where the quads meet.
    const bool joins = width > 1 && stipple == 0xFFFF;
    if (joins) glPointSize(static_cast<GLfloat>(width));
    for (std::size_t p = 0; p < starts.size(); ++p) {
      const auto begin = static_cast<std::size_t>(starts[p]);
      const std::size_t end = p + 1 < starts.size() ? static_cast<std::size_t>(starts[p + 1]) : lines.Count();
      glBegin(GL_LINE_STRIP);
      vertices(begin, end);
      glEnd();
      if (joins) {
        glBegin(GL_POINTS);
        vertices(begin, end);
        glEnd();
      }
    }
  }
  glPopAttrib();
}

// Every edge of the mesh once.
void DrawMesh(const MeshGeometry& mesh, const View& view, const CCoordMapper& map) {
  const Line& line = view.MeshLine();
  if (line.Width() == 0) return;
  const std::size_t triangles = mesh.TriangleCount();
  if (triangles == 0) return;
  glPushAttrib(GL_CURRENT_BIT | GL_LINE_BIT | GL_ENABLE_BIT);
  glDisable(GL_LIGHTING);
  glEnable(GL_LINE_STIPPLE);
  ApplyLineFormat(line);
  auto vertex = [&](std::size_t k) {
    glVertex3d(map.NormalisedToCubeX(mesh.X(k)), map.NormalisedToCubeY(mesh.Y(k)), map.NormalisedToCubeZ(mesh.z[k]));
  };
  glBegin(GL_LINES);
  for (std::size_t t = 0; t < triangles; ++t) {
    std::size_t v[3];
    mesh.Corners(t, v);
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
      if (!draw || std::isnan(mesh.z[v[e]] + mesh.z[v[(e + 1) % 3]])) continue;
      vertex(v[e]);
      vertex(v[(e + 1) % 3]);
    }
  }
  glEnd();
  glPopAttrib();
}

// The solid block under a 3-D surface: a wall from every boundary edge of the mesh down
// to the cube's floor, in the view's base colour. Lit, the walls take the light like the
// surface; unlit, walls facing X are shaded darker than those facing Y, so that the
// block reads as a solid. Edges with a corner of no height (blanked cells) get no wall.
void DrawBase(const DataSetState& s, const View& view, const CCoordMapper& map, const ViewContext& context) {
  const MeshGeometry mesh = Mesh(s);
  const std::size_t triangles = mesh.TriangleCount();
  if (triangles == 0) return;
  std::vector<std::array<std::size_t, 2>> edges;
  if (mesh.gridY > 0) {
    const std::size_t nx = mesh.gridX, ny = mesh.gridY;
    for (std::size_t i = 0; i + 1 < nx; ++i) {
      edges.push_back({i * ny, (i + 1) * ny});                    // y minimum
      edges.push_back({(i + 1) * ny + ny - 1, i * ny + ny - 1});  // y maximum
    }
    for (std::size_t j = 0; j + 1 < ny; ++j) {
      edges.push_back({j + 1, j});                                // x minimum
      edges.push_back({(nx - 1) * ny + j, (nx - 1) * ny + j + 1});  // x maximum
    }
  } else {
    for (std::size_t t = 0; t < triangles; ++t) {
      std::size_t v[3];
      mesh.Corners(t, v);
      for (std::size_t e = 0; e < 3; ++e) {
        if (mesh.neighbours[3 * t + e] < 0) edges.push_back({v[e], v[(e + 1) % 3]});
      }
    }
  }
  const Color base = view.BaseColor();
  const double red = base & 0xFF, green = (base >> 8) & 0xFF, blue = (base >> 16) & 0xFF;
  const GLubyte alpha = Alpha(view);
  glPushAttrib(GL_CURRENT_BIT | GL_ENABLE_BIT | GL_POLYGON_BIT | GL_LIGHTING_BIT);
  glPolygonMode(GL_FRONT_AND_BACK, GL_FILL);
  glShadeModel(GL_SMOOTH);  // the other model first: a list may drop a repeated one
  glShadeModel(GL_FLAT);
  if (context.lightingOn) {
    // Matt walls: no highlight to tell them from the surface's sheen.
    const GLfloat black[4] = {0.0F, 0.0F, 0.0F, 1.0F};
    glMaterialfv(GL_FRONT_AND_BACK, GL_SPECULAR, black);
    glEnable(GL_LIGHTING);
  } else {
    glDisable(GL_LIGHTING);
  }
  glDisable(GL_TEXTURE_1D);
  glBegin(GL_QUADS);
  for (const auto& [a, b] : edges) {
    if (!std::isfinite(mesh.z[a]) || !std::isfinite(mesh.z[b])) continue;
    const double xa = map.NormalisedToCubeX(mesh.X(a)), ya = map.NormalisedToCubeY(mesh.Y(a));
    const double xb = map.NormalisedToCubeX(mesh.X(b)), yb = map.NormalisedToCubeY(mesh.Y(b));
    const double dx = xb - xa, dy = yb - ya, length = std::hypot(dx, dy);
    if (!(length > 0.0)) continue;
    const double shade = context.lightingOn ? 1.0 : 0.7 + 0.3 * std::fabs(dx) / length;
    glNormal3d(dy / length, -dx / length, 0.0);
    glColor4ub(static_cast<GLubyte>(std::lround(red * shade)), static_cast<GLubyte>(std::lround(green * shade)),
               static_cast<GLubyte>(std::lround(blue * shade)), alpha);
    glVertex3d(xa, ya, map.NormalisedToCubeZ(mesh.z[a]));
    glVertex3d(xb, yb, map.NormalisedToCubeZ(mesh.z[b]));
    glVertex3d(xb, yb, 0.0);
    glVertex3d(xa, ya, 0.0);
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

void DrawHulls(const DataSetState& s, const View& view, const CCoordMapper& map, bool is3D) {
  const bool data = view.DataHullVisible() && view.DataHullLine().Width() > 0 && s.dataHullX.size() >= 2;
  const std::size_t userCount = std::min(s.UserHullCount(), s.userHullX.size());
  const bool user = view.UserHullVisible() && view.UserHullLine().Width() > 0 && userCount >= 2;
  if (!data && !user) return;
  glPushAttrib(GL_CURRENT_BIT | GL_LINE_BIT | GL_DEPTH_BUFFER_BIT | GL_ENABLE_BIT);
  glEnable(GL_LINE_STIPPLE);
  glDepthMask(GL_FALSE);
  if (!is3D) glDisable(GL_DEPTH_TEST);
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
    if (std::isnan(s.inputZ[k])) continue;  // a blank cell: no data to mark
    glPushMatrix();
    glTranslated(map.DataToCubeX(s.PointX(k)), map.DataToCubeY(s.PointY(k)), map.DataToCubeZ(s.inputZ[k]));
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

std::size_t DetailLevel(DataSet& data, std::size_t pixels) {
  return LevelOf(Mesh(DataSetAccess::State(data)), pixels);
}

void DrawView(DataSet& data, const View& view, const ViewContext& context) {
  DataSetState& s = DataSetAccess::State(data);
  CCoordMapper map;
  map.Init(data, context.axes);
  if (view.DataMarkersMaster().Visible() && context.is3D) DrawMarkers(s, view.DataMarkersMaster(), map, context);
  const bool drawsMesh = view.ContourFillVisible() || view.MeshVisible();
  const MeshGeometry mesh = drawsMesh ? DrawnMesh(s, context) : MeshGeometry{};
  if (view.ContourFillVisible()) DrawFill(s, mesh, view, map, context);
  if (view.BaseVisible() && context.is3D && ViewAccess::PlotPosition(view) == kPlotMain) DrawBase(s, view, map, context);
  if (view.ContourLinesVisible()) DrawContourLines(s, view, map, context);
  if (view.MeshVisible()) DrawMesh(mesh, view, map);
  if (context.is3D) DrawHulls(s, view, map, true);
}

void DrawOverlays(DataSet& data, const View& view, const ViewContext& context) {
  const DataSetState& s = DataSetAccess::State(data);
  CCoordMapper map;
  map.Init(data, context.axes);
  DrawHulls(s, view, map, false);
  if (!view.DataMarkersMaster().Visible()) return;
  glPushAttrib(GL_ENABLE_BIT);
  glDisable(GL_DEPTH_TEST);
  DrawMarkers(s, view.DataMarkersMaster(), map, context);
  glPopAttrib();
}

}  // namespace orvane::detail
