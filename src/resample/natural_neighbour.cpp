// Natural-neighbour interpolation: the mesh, the gradients, Sibson coordinates by
// triangle pieces, the C1 blend, the hull rules and the resampler built on them.

#include "natural_neighbour.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>
#include <mutex>
#include <numeric>
#include <tuple>

#include "data/triangulate.h"
#include "orvane/core/error.h"
#include "orvane/resample/resampling.h"

namespace orvane {
namespace detail {

namespace {

constexpr const char* kSource = "Orvada.NNGridR";
constexpr std::int32_t kNone = -1;
// In working coordinates (the unit square): a query this close to a data point takes
// its value, and this close to a hull edge lies on it.
constexpr double kSnap = 1e-13;

inline std::size_t U(std::int32_t v) { return static_cast<std::size_t>(v); }
inline int Next(int k) { return k == 2 ? 0 : k + 1; }
inline int Prev(int k) { return k == 0 ? 2 : k - 1; }

// Twice the signed area of (a, b, p); positive when p lies left of a -> b.
inline double Cross(double ax, double ay, double bx, double by, double px, double py) {
  return (bx - ax) * (py - ay) - (by - ay) * (px - ax);
}

}  // namespace

// ---------------------------------------------------------------------------------------
// Building

NaturalNeighbour::NaturalNeighbour(std::span<const double> x, std::span<const double> y,
                                   std::span<const double> z, double magX, double magY) {
  const std::size_t n = x.size();
  if (n < 3) {
    throw Error(5, kSource, "Natural-neighbour interpolation needs at least three points.");
  }
  const auto [x0, x1] = std::minmax_element(x.begin(), x.end());
  const auto [y0, y1] = std::minmax_element(y.begin(), y.end());
  const double xRange = *x1 - *x0;
  const double yRange = *y1 - *y0;
  const char* const kOnALine = "Natural-neighbour interpolation needs points that do not all lie on one line.";
  if (!(xRange > 0.0 && yRange > 0.0)) throw Error(5, kSource, kOnALine);
  xMin_ = *x0;
  yMin_ = *y0;
  xScale_ = magX / xRange;
  yScale_ = magY / yRange;

  // Canonical order (by working X, then Y, then Z) so that the result does not depend on
  // the input order; exact duplicates merge into their mean.
  std::vector<std::size_t> order(n);
  std::iota(order.begin(), order.end(), 0);
  std::vector<double> wx(n), wy(n);
  for (std::size_t k = 0; k < n; ++k) {
    wx[k] = (x[k] - xMin_) * xScale_;
    wy[k] = (y[k] - yMin_) * yScale_;
  }
  std::sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) {
    if (wx[a] != wx[b]) return wx[a] < wx[b];
    if (wy[a] != wy[b]) return wy[a] < wy[b];
    return z[a] < z[b];
  });
  for (std::size_t k = 0; k < n;) {
    std::size_t end = k + 1;
    double sum = z[order[k]];
    while (end < n && wx[order[end]] == wx[order[k]] && wy[order[end]] == wy[order[k]]) {
      sum += z[order[end]];
      ++end;
    }
    px_.push_back(wx[order[k]]);
    py_.push_back(wy[order[k]]);
    pz_.push_back(sum / static_cast<double>(end - k));
    k = end;
  }

  // Not all on one line: some point lies well off the line through the first point and
  // the point farthest from it.
  const std::size_t m = px_.size();
  std::size_t far = 0;
  double farthest = 0.0;
  for (std::size_t k = 1; k < m; ++k) {
    const double d = (px_[k] - px_[0]) * (px_[k] - px_[0]) + (py_[k] - py_[0]) * (py_[k] - py_[0]);
    if (d > farthest) {
      farthest = d;
      far = k;
    }
  }
  double offLine = 0.0;
  for (std::size_t k = 0; k < m; ++k) {
    offLine = std::max(offLine, std::fabs(Cross(px_[0], py_[0], px_[far], py_[far], px_[k], py_[k])));
  }
  if (m < 3 || !(offLine > 1e-12 * farthest)) throw Error(5, kSource, kOnALine);

  CTriangulate mesh;
  mesh.Triangulate(px_, py_, pz_);
  tri_ = mesh.TriangleVertices();
  nb_ = mesh.TriangleNeighbours();
  if (tri_.empty()) throw Error(5, kSource, kOnALine);
  MakeHullConvex();
  MakeDelaunay();
  ComputeCircles();
  ComputeGradients();
}

double NaturalNeighbour::Orient(std::int32_t a, std::int32_t b, double x, double y) const {
  return Cross(px_[U(a)], py_[U(a)], px_[U(b)], py_[U(b)], x, y);
}

void NaturalNeighbour::MakeHullConvex() {
  // The boundary as a ring: each point's outgoing boundary edge and its owner.
  const std::size_t m = px_.size();
  std::vector<std::int32_t> next(m, kNone), prev(m, kNone), owner(m, kNone);
  std::vector<std::int8_t> ownerEdge(m, 0);
  for (std::size_t t = 0; t < tri_.size() / 3; ++t) {
    for (int k = 0; k < 3; ++k) {
      if (nb_[3 * t + U(k)] != kNone) continue;
      const std::int32_t a = tri_[3 * t + U(k)];
      const std::int32_t b = tri_[3 * t + U(Next(k))];
      next[U(a)] = b;
      prev[U(b)] = a;
      owner[U(a)] = static_cast<std::int32_t>(t);
      ownerEdge[U(a)] = static_cast<std::int8_t>(k);
    }
  }
  std::int32_t start = kNone;
  for (std::size_t v = 0; v < m && start == kNone; ++v) {
    if (next[v] != kNone) start = static_cast<std::int32_t>(v);
  }
  // The ring must close on itself through every boundary point once.
  std::size_t ringLength = 0;
  for (std::int32_t v = start; start != kNone;) {
    if (prev[U(next[U(v)])] != v || ++ringLength > m) {
      throw Error(5, kSource, "The points could not be triangulated for natural-neighbour interpolation.");
    }
    v = next[U(v)];
    if (v == start) break;
  }
  // Clip ears of the pockets between the mesh and its convex hull: a boundary point b
  // where the boundary turns right (a, b, c) with no other boundary point in the
  // triangle (a, c, b) gets that triangle, and leaves the boundary.
  bool clipped = true;
  while (clipped && start != kNone) {
    clipped = false;
    std::int32_t b = start;
    do {
      const std::int32_t a = prev[U(b)];
      const std::int32_t c = next[U(b)];
      const double turn = Orient(a, b, px_[U(c)], py_[U(c)]);
      const double span = (px_[U(c)] - px_[U(a)]) * (px_[U(c)] - px_[U(a)]) +
                          (py_[U(c)] - py_[U(a)]) * (py_[U(c)] - py_[U(a)]);
      bool ear = a != c && turn < -1e-14 * span;
      for (std::int32_t v = next[U(c)]; ear && v != a; v = next[U(v)]) {
        const double vx = px_[U(v)];
        const double vy = py_[U(v)];
        ear = !(Orient(a, c, vx, vy) <= 0.0 && Orient(c, b, vx, vy) <= 0.0 && Orient(b, a, vx, vy) <= 0.0);
      }
      if (!ear) {
        b = c;
        continue;
      }
      const auto t = static_cast<std::int32_t>(tri_.size() / 3);
      const std::int32_t tab = owner[U(a)];
      const std::int32_t tbc = owner[U(b)];
      tri_.insert(tri_.end(), {a, c, b});
      nb_.insert(nb_.end(), {kNone, tbc, tab});
      nb_[3 * U(tab) + U(ownerEdge[U(a)])] = t;
      nb_[3 * U(tbc) + U(ownerEdge[U(b)])] = t;
      next[U(a)] = c;
      prev[U(c)] = a;
      next[U(b)] = prev[U(b)] = kNone;
      owner[U(a)] = t;
      ownerEdge[U(a)] = 0;
      if (start == b) start = a;
      clipped = true;
      b = c;
    } while (b != start);
  }
  hull_.clear();
  hullPosition_.assign(m, kNone);
  if (start == kNone) return;
  std::int32_t v = start;
  do {
    hullPosition_[U(v)] = static_cast<std::int32_t>(hull_.size());
    hull_.push_back(v);
    v = next[U(v)];
  } while (v != start && hull_.size() <= m);
}

void NaturalNeighbour::MakeDelaunay() {
  // Lawson's flips: an edge whose far point lies clearly inside the circumcircle of the
  // near triangle is swapped for the other diagonal. Points on or nearly on a circle are
  // left alone, as either diagonal gives the same Voronoi cells.
  const std::size_t triangles = tri_.size() / 3;
  std::vector<std::pair<std::int32_t, int>> stack;
  for (std::size_t t = 0; t < triangles; ++t) {
    for (int k = 0; k < 3; ++k) {
      if (nb_[3 * t + U(k)] > static_cast<std::int32_t>(t)) stack.emplace_back(static_cast<std::int32_t>(t), k);
    }
  }
  std::size_t budget = 64 * triangles + 1000;
  while (!stack.empty() && budget-- > 0) {
    const auto [t, k] = stack.back();
    stack.pop_back();
    const std::int32_t u = nb_[3 * U(t) + U(k)];
    if (u == kNone) continue;
    const std::int32_t p0 = tri_[3 * U(t) + U(k)];
    const std::int32_t p1 = tri_[3 * U(t) + U(Next(k))];
    const std::int32_t p2 = tri_[3 * U(t) + U(Prev(k))];
    int m = 0;
    while (m < 3 && nb_[3 * U(u) + U(m)] != t) ++m;
    if (m == 3) continue;
    const std::int32_t d = tri_[3 * U(u) + U(Prev(m))];
    // In-circle determinant of d against (p0, p1, p2), relative to d, with its error scale.
    const double ax = px_[U(p0)] - px_[U(d)], ay = py_[U(p0)] - py_[U(d)];
    const double bx = px_[U(p1)] - px_[U(d)], by = py_[U(p1)] - py_[U(d)];
    const double cx = px_[U(p2)] - px_[U(d)], cy = py_[U(p2)] - py_[U(d)];
    const double a2 = ax * ax + ay * ay, b2 = bx * bx + by * by, c2 = cx * cx + cy * cy;
    const double det = a2 * (bx * cy - cx * by) + b2 * (cx * ay - ax * cy) + c2 * (ax * by - bx * ay);
    const double scale = a2 * (std::fabs(bx * cy) + std::fabs(cx * by)) +
                         b2 * (std::fabs(cx * ay) + std::fabs(ax * cy)) +
                         c2 * (std::fabs(ax * by) + std::fabs(bx * ay));
    if (!(det > 1e-12 * scale)) continue;
    if (!(Orient(p2, p0, px_[U(d)], py_[U(d)]) > 0.0 && Orient(d, p1, px_[U(p2)], py_[U(p2)]) > 0.0)) continue;
    const std::int32_t A = nb_[3 * U(t) + U(Next(k))];   // across (p1, p2)
    const std::int32_t B = nb_[3 * U(t) + U(Prev(k))];   // across (p2, p0)
    const std::int32_t C = nb_[3 * U(u) + U(Next(m))];   // across (p0, d)
    const std::int32_t D = nb_[3 * U(u) + U(Prev(m))];   // across (d, p1)
    // t becomes (p2, p0, d) and u becomes (d, p1, p2).
    const std::int32_t tv[3] = {p2, p0, d};
    const std::int32_t tn[3] = {B, C, u};
    const std::int32_t uv[3] = {d, p1, p2};
    const std::int32_t un[3] = {D, A, t};
    for (int j = 0; j < 3; ++j) {
      tri_[3 * U(t) + U(j)] = tv[j];
      nb_[3 * U(t) + U(j)] = tn[j];
      tri_[3 * U(u) + U(j)] = uv[j];
      nb_[3 * U(u) + U(j)] = un[j];
    }
    auto repoint = [this](std::int32_t outer, std::int32_t from, std::int32_t to) {
      if (outer == kNone) return;
      for (int j = 0; j < 3; ++j) {
        if (nb_[3 * U(outer) + U(j)] == from) nb_[3 * U(outer) + U(j)] = to;
      }
    };
    repoint(A, t, u);
    repoint(C, u, t);
    stack.emplace_back(t, 0);
    stack.emplace_back(t, 1);
    stack.emplace_back(u, 0);
    stack.emplace_back(u, 1);
  }
}

void NaturalNeighbour::ComputeCircles() {
  const std::size_t triangles = tri_.size() / 3;
  cx_.resize(triangles);
  cy_.resize(triangles);
  r2_.resize(triangles);
  for (std::size_t t = 0; t < triangles; ++t) {
    const auto a = U(tri_[3 * t]), b = U(tri_[3 * t + 1]), c = U(tri_[3 * t + 2]);
    const Circle circle = CircleThrough(px_[a], py_[a], px_[b], py_[b], px_[c], py_[c]);
    cx_[t] = circle.x;
    cy_[t] = circle.y;
    r2_[t] = circle.r2;
  }
}

void NaturalNeighbour::ComputeGradients() {
  // Sums of the weighted normal equations, each Delaunay edge adding to both its ends.
  const std::size_t m = px_.size();
  std::vector<double> sxx(m, 0.0), sxy(m, 0.0), syy(m, 0.0), sxz(m, 0.0), syz(m, 0.0);
  const std::size_t triangles = tri_.size() / 3;
  for (std::size_t t = 0; t < triangles; ++t) {
    for (int k = 0; k < 3; ++k) {
      const std::int32_t other = nb_[3 * t + U(k)];
      if (other != kNone && other < static_cast<std::int32_t>(t)) continue;  // once per edge
      const auto a = U(tri_[3 * t + U(k)]);
      const auto b = U(tri_[3 * t + U(Next(k))]);
      const double dx = px_[b] - px_[a];
      const double dy = py_[b] - py_[a];
      const double dz = pz_[b] - pz_[a];
      const double w = 1.0 / (dx * dx + dy * dy);
      for (const std::size_t v : {a, b}) {
        sxx[v] += w * dx * dx;
        sxy[v] += w * dx * dy;
        syy[v] += w * dy * dy;
        sxz[v] += w * dx * dz;
        syz[v] += w * dy * dz;
      }
    }
  }
  gx_.assign(m, 0.0);
  gy_.assign(m, 0.0);
  for (std::size_t v = 0; v < m; ++v) {
    const double det = sxx[v] * syy[v] - sxy[v] * sxy[v];
    if (!(std::fabs(det) > 1e-12 * (sxx[v] * syy[v]))) continue;  // neighbours on a line
    gx_[v] = (syy[v] * sxz[v] - sxy[v] * syz[v]) / det;
    gy_[v] = (sxx[v] * syz[v] - sxy[v] * sxz[v]) / det;
  }
}

bool NaturalNeighbour::IsDelaunay() const {
  const std::size_t triangles = tri_.size() / 3;
  for (std::size_t t = 0; t < triangles; ++t) {
    for (std::size_t v = 0; v < px_.size(); ++v) {
      if (U(tri_[3 * t]) == v || U(tri_[3 * t + 1]) == v || U(tri_[3 * t + 2]) == v) continue;
      const double dx = px_[v] - cx_[t];
      const double dy = py_[v] - cy_[t];
      if (r2_[t] - (dx * dx + dy * dy) > 1e-9 * r2_[t]) return false;
    }
  }
  return true;
}

// ---------------------------------------------------------------------------------------
// Queries

void NaturalNeighbour::Prepare(Cursor& cursor) const {
  if (cursor.triangleMark.size() != tri_.size() / 3) {
    cursor.triangleMark.assign(tri_.size() / 3, 0);
    cursor.pointMark.assign(px_.size(), 0);
    cursor.slotOf.assign(px_.size(), 0);
    cursor.stamp = 0;
    cursor.triangle = 0;
  }
  if (++cursor.stamp == 0) {  // wrapped: clear the marks
    std::fill(cursor.triangleMark.begin(), cursor.triangleMark.end(), 0);
    std::fill(cursor.pointMark.begin(), cursor.pointMark.end(), 0);
    cursor.stamp = 1;
  }
}

double NaturalNeighbour::DistanceToSegment(std::int32_t a, std::int32_t b, double x, double y,
                                           double& t) const {
  const double ex = px_[U(b)] - px_[U(a)];
  const double ey = py_[U(b)] - py_[U(a)];
  t = std::clamp(((x - px_[U(a)]) * ex + (y - py_[U(a)]) * ey) / (ex * ex + ey * ey), 0.0, 1.0);
  const double dx = x - (px_[U(a)] + t * ex);
  const double dy = y - (py_[U(a)] + t * ey);
  return dx * dx + dy * dy;
}

NaturalNeighbour::Location NaturalNeighbour::NearestOnHull(double x, double y) const {
  Location best{Location::kOutside, kNone, hull_[0], hull_[0], 0.0};
  double bestD2 = INFINITY;
  for (std::size_t k = 0; k < hull_.size(); ++k) {
    const std::int32_t a = hull_[k];
    const std::int32_t b = hull_[(k + 1) % hull_.size()];
    double t = 0.0;
    const double d2 = DistanceToSegment(a, b, x, y, t);
    if (d2 < bestD2) {
      bestD2 = d2;
      best.a = a;
      best.b = b;
      best.t = t;
    }
  }
  return best;
}

NaturalNeighbour::Location NaturalNeighbour::Locate(double x, double y, Cursor& cursor) const {
  const auto triangles = static_cast<std::int32_t>(tri_.size() / 3);
  std::int32_t t = std::clamp(cursor.triangle, 0, triangles - 1);
  const std::size_t limit = tri_.size() + 3;
  bool found = false;
  bool left = false;
  // The first edge tried at each step is drawn at random (a stochastic walk, which
  // cannot go round in circles for ever as one in a fixed turn can), from a generator
  // seeded by the query, so that a query always walks alike.
  std::uint64_t seed = 0;
  std::memcpy(&seed, &x, sizeof seed);
  std::uint64_t other = 0;
  std::memcpy(&other, &y, sizeof other);
  seed = (seed ^ (other * 0x9E3779B97F4A7C15ULL)) | 1;  // never 0, which xorshift keeps
  for (std::size_t step = 0; step < limit; ++step) {
    seed ^= seed << 13;
    seed ^= seed >> 7;
    seed ^= seed << 17;
    const int first = static_cast<int>(seed % 3);
    std::int32_t next = t;
    for (int j = 0; j < 3; ++j) {
      const int k = (first + j) % 3;
      if (Orient(tri_[3 * U(t) + U(k)], tri_[3 * U(t) + U(Next(k))], x, y) < 0.0) {
        next = nb_[3 * U(t) + U(k)];
        break;
      }
    }
    if (next == t) {
      found = true;
      break;
    }
    if (next == kNone) {  // left the mesh: outside, or beside a hull edge
      left = true;
      break;
    }
    t = next;
  }
  if (!found && !left) {
    // The walk went round in circles (rounding): look through every triangle.
    for (std::int32_t c = 0; c < triangles && !found; ++c) {
      found = Orient(tri_[3 * U(c)], tri_[3 * U(c) + 1], x, y) >= 0.0 &&
              Orient(tri_[3 * U(c) + 1], tri_[3 * U(c) + 2], x, y) >= 0.0 &&
              Orient(tri_[3 * U(c) + 2], tri_[3 * U(c)], x, y) >= 0.0;
      if (found) t = c;
    }
  }
  if (!found) {
    // Outside, or on the hull beside the walk's last triangle: the nearest hull point decides.
    Location out = NearestOnHull(x, y);
    const double qx = px_[U(out.a)] + out.t * (px_[U(out.b)] - px_[U(out.a)]);
    const double qy = py_[U(out.a)] + out.t * (py_[U(out.b)] - py_[U(out.a)]);
    const double gap2 = (x - qx) * (x - qx) + (y - qy) * (y - qy);
    out.kind = gap2 <= kSnap * kSnap ? Location::kOnHullEdge : Location::kOutside;
    return out;
  }
  cursor.triangle = t;
  for (int k = 0; k < 3; ++k) {
    const std::int32_t v = tri_[3 * U(t) + U(k)];
    if (std::fabs(px_[U(v)] - x) <= kSnap && std::fabs(py_[U(v)] - y) <= kSnap) {
      return {Location::kOnVertex, t, v, v, 0.0};
    }
  }
  // A point this near the hull lies in a triangle with a corner on it: test that
  // corner's two hull edges.
  const auto h = static_cast<std::int32_t>(hull_.size());
  for (int k = 0; k < 3; ++k) {
    const std::int32_t pos = hullPosition_[U(tri_[3 * U(t) + U(k)])];
    if (pos == kNone) continue;
    for (const std::int32_t first : {pos, (pos + h - 1) % h}) {
      const std::int32_t a = hull_[U(first)];
      const std::int32_t b = hull_[U((first + 1) % h)];
      double along = 0.0;
      if (DistanceToSegment(a, b, x, y, along) <= kSnap * kSnap) {
        return {Location::kOnHullEdge, t, a, b, along};
      }
    }
  }
  return {Location::kInside, t, kNone, kNone, 0.0};
}

void NaturalNeighbour::Sibson(double x, double y, std::int32_t start, Cursor& cursor) const {
  // The triangles whose circumcircle holds the point, connected to the holder.
  const std::uint32_t stamp = cursor.stamp;
  cursor.cavity.clear();
  cursor.stack.assign(1, start);
  cursor.triangleMark[U(start)] = stamp;
  while (!cursor.stack.empty()) {
    const std::int32_t t = cursor.stack.back();
    cursor.stack.pop_back();
    cursor.cavity.push_back(t);
    for (int k = 0; k < 3; ++k) {
      const std::int32_t n = nb_[3 * U(t) + U(k)];
      if (n == kNone || cursor.triangleMark[U(n)] == stamp) continue;
      const double dx = x - cx_[U(n)];
      const double dy = y - cy_[U(n)];
      if (r2_[U(n)] - (dx * dx + dy * dy) > 0.0) {
        cursor.triangleMark[U(n)] = stamp;
        cursor.stack.push_back(n);
      }
    }
  }

  // Each cavity triangle (n, u, w) gives its corner n the piece between the bisector of
  // p and n and the triangle's old Voronoi vertex C: the polygon X, A, C, B with X the
  // midpoint of p and n, A on the bisector of n and u (where it meets the bisector of p
  // and n if the edge n-u bounds the cavity; the edge's midpoint otherwise, the pieces
  // of the two triangles sharing an inner edge then cancelling there) and B likewise
  // for the edge n-w. All coordinates relative to p.
  cursor.neighbours.clear();
  cursor.weights.clear();
  auto bisectorPoint = [&](std::int32_t t, int edge, std::int32_t n, std::int32_t u, double& ox,
                           double& oy) {
    const double nx = px_[U(n)] - x, ny = py_[U(n)] - y;
    const double ux = px_[U(u)] - x, uy = py_[U(u)] - y;
    const std::int32_t across = nb_[3 * U(t) + U(edge)];
    if (across != kNone && cursor.triangleMark[U(across)] == stamp) {
      ox = 0.5 * (nx + ux);
      oy = 0.5 * (ny + uy);
      return;
    }
    // The circumcentre of (p, n, u), p at the origin.
    const double d = 2.0 * (nx * uy - ny * ux);
    const double n2 = nx * nx + ny * ny;
    const double u2 = ux * ux + uy * uy;
    ox = (uy * n2 - ny * u2) / d;
    oy = (nx * u2 - ux * n2) / d;
  };
  double total = 0.0;
  for (const std::int32_t t : cursor.cavity) {
    const double cx = cx_[U(t)] - x;
    const double cy = cy_[U(t)] - y;
    for (int k = 0; k < 3; ++k) {
      const std::int32_t n = tri_[3 * U(t) + U(k)];
      const std::int32_t u = tri_[3 * U(t) + U(Next(k))];
      const std::int32_t w = tri_[3 * U(t) + U(Prev(k))];
      double ax, ay, bx, by;
      bisectorPoint(t, k, n, u, ax, ay);
      bisectorPoint(t, Prev(k), n, w, bx, by);
      const double mx = 0.5 * (px_[U(n)] - x);
      const double my = 0.5 * (py_[U(n)] - y);
      const double piece = 0.5 * (Cross(mx, my, ax, ay, cx, cy) + Cross(mx, my, cx, cy, bx, by));
      if (cursor.pointMark[U(n)] != stamp) {
        cursor.pointMark[U(n)] = stamp;
        cursor.slotOf[U(n)] = static_cast<std::int32_t>(cursor.neighbours.size());
        cursor.neighbours.push_back(n);
        cursor.weights.push_back(0.0);
      }
      cursor.weights[U(cursor.slotOf[U(n)])] += piece;
      total += piece;
    }
  }
  for (double& w : cursor.weights) w /= total;
  if (std::all_of(cursor.weights.begin(), cursor.weights.end(), [](double w) { return std::isfinite(w); })) {
    return;
  }
  // Rounding made a piece meaningless (a cavity edge in line with the point): fall back
  // on linear interpolation in the holding triangle.
  cursor.neighbours.assign(tri_.begin() + 3 * start, tri_.begin() + 3 * start + 3);
  const auto [a, b, c] = std::tuple{cursor.neighbours[0], cursor.neighbours[1], cursor.neighbours[2]};
  const double area = Orient(a, b, px_[U(c)], py_[U(c)]);
  cursor.weights.assign({Orient(b, c, x, y) / area, Orient(c, a, x, y) / area, Orient(a, b, x, y) / area});
}

double NaturalNeighbour::Blend(double x, double y, const NaturalNeighbourOptions& options,
                               const Cursor& cursor) const {
  double z0 = 0.0;
  for (std::size_t k = 0; k < cursor.neighbours.size(); ++k) {
    z0 += cursor.weights[k] * pz_[U(cursor.neighbours[k])];
  }
  if (!options.gradients) return z0;
  double s1 = 0.0, sxi = 0.0, sr = 0.0, beta = 0.0;
  for (std::size_t k = 0; k < cursor.neighbours.size(); ++k) {
    const auto v = U(cursor.neighbours[k]);
    const double lambda = cursor.weights[k];
    if (lambda == 0.0) continue;
    const double dx = x - px_[v];
    const double dy = y - py_[v];
    const double r = std::sqrt(dx * dx + dy * dy);
    if (r == 0.0) return pz_[v];
    const double xi = pz_[v] + gx_[v] * dx + gy_[v] * dy;
    s1 += lambda / r;
    sxi += lambda / r * xi;
    sr += lambda * r;
    beta += lambda * r * r;
  }
  const double xi = sxi / s1;
  const double alpha = sr / s1;
  const double ta = options.tautness * alpha;
  return ta + beta > 0.0 ? (ta * z0 + beta * xi) / (ta + beta) : z0;
}

double NaturalNeighbour::OnEdge(double x, double y, std::int32_t a, std::int32_t b, double t,
                                const NaturalNeighbourOptions& options, Cursor& cursor) const {
  cursor.neighbours.assign({a, b});
  cursor.weights.assign({1.0 - t, t});
  const double qx = px_[U(a)] + t * (px_[U(b)] - px_[U(a)]);
  const double qy = py_[U(a)] + t * (py_[U(b)] - py_[U(a)]);
  const double value = Blend(qx, qy, options, cursor);
  const double gx = (1.0 - t) * gx_[U(a)] + t * gx_[U(b)];
  const double gy = (1.0 - t) * gy_[U(a)] + t * gy_[U(b)];
  return value + gx * (x - qx) + gy * (y - qy);
}

double NaturalNeighbour::ValueAt(double x, double y, const NaturalNeighbourOptions& options,
                                 Cursor& cursor) const {
  Prepare(cursor);
  const double wx = (x - xMin_) * xScale_;
  const double wy = (y - yMin_) * yScale_;
  const Location at = Locate(wx, wy, cursor);
  double value = 0.0;
  switch (at.kind) {
    case Location::kOnVertex: value = pz_[U(at.a)]; break;
    case Location::kOnHullEdge: value = OnEdge(wx, wy, at.a, at.b, at.t, options, cursor); break;
    case Location::kOutside:
      if (!options.extrapolate) return options.nullValue;
      value = OnEdge(wx, wy, at.a, at.b, at.t, options, cursor);
      break;
    case Location::kInside:
      Sibson(wx, wy, at.triangle, cursor);
      value = Blend(wx, wy, options, cursor);
      break;
  }
  if (options.nonNegative && value < 0.0) value = 0.0;
  if (options.clipToFloor && value < options.floor) value = options.floor;
  return value;
}

bool NaturalNeighbour::Coordinates(double x, double y, std::vector<std::int32_t>& points,
                                   std::vector<double>& weights) const {
  Cursor cursor;
  Prepare(cursor);
  const double wx = (x - xMin_) * xScale_;
  const double wy = (y - yMin_) * yScale_;
  const Location at = Locate(wx, wy, cursor);
  if (at.kind == Location::kOnVertex) {
    points.assign(1, at.a);
    weights.assign(1, 1.0);
    return true;
  }
  if (at.kind != Location::kInside) return false;
  Sibson(wx, wy, at.triangle, cursor);
  points = cursor.neighbours;
  weights = cursor.weights;
  return true;
}

std::vector<double> NaturalNeighbour::Grid(const std::vector<double>& gridX,
                                           const std::vector<double>& gridY,
                                           const NaturalNeighbourOptions& options,
                                           RunProgress& progress) const {
  const std::size_t ny = gridY.size();
  std::vector<double> z(gridX.size() * ny);
  // A cursor's marks are as long as the mesh's lists: each thread takes one from a pool
  // for a column and gives it back, rather than making (and clearing) one a column.
  std::mutex poolLock;
  std::vector<std::unique_ptr<Cursor>> pool;
  ParallelFor(gridX.size(), static_cast<std::int64_t>(ny), progress, [&](std::size_t i) {
    std::unique_ptr<Cursor> cursor;
    {
      const std::lock_guard<std::mutex> lock(poolLock);
      if (!pool.empty()) {
        cursor = std::move(pool.back());
        pool.pop_back();
      }
    }
    if (!cursor) cursor = std::make_unique<Cursor>();
    for (std::size_t j = 0; j < ny; ++j) z[i * ny + j] = ValueAt(gridX[i], gridY[j], options, *cursor);
    const std::lock_guard<std::mutex> lock(poolLock);
    pool.push_back(std::move(cursor));
  });
  return z;
}

}  // namespace detail

// ---------------------------------------------------------------------------------------
// The resampler

namespace {

detail::NaturalNeighbourOptions OptionsOf(const orvane::NNGridR& p) {
  detail::NaturalNeighbourOptions options;
  options.gradients = p.UseGradients();
  options.tautness = p.Taughtness();
  options.extrapolate = p.Parameter("Extrap") != 0.0;
  options.nullValue = p.Parameter("Nuldat");
  options.nonNegative = p.Parameter("NonNeg") != 0.0;
  options.clipToFloor = p.Parameter("ClipToFloor") != 0.0;
  options.floor = p.Parameter("Floor");
  return options;
}

}  // namespace

void NaturalNeighbourResampler::RefreshGrid() {
  CheckExtent("Orvada.NNGridR", false);
  const orvane::NNGridR& p = settings_.NNGridR();
  const detail::NaturalNeighbourOptions options = OptionsOf(p);
  std::vector<double> gridX, gridY;
  GridAxes(gridX, gridY);
  const detail::NaturalNeighbour method(x_, y_, z_, p.Parameter("MagX"), p.Parameter("MagY"));
  RunProgress progress(progress_, static_cast<std::int64_t>(gridX.size() * gridY.size()));
  std::vector<double> z = method.Grid(gridX, gridY, options, progress);
  progress.ThrowIfCancelled();
  gridX_ = std::move(gridX);
  gridY_ = std::move(gridY);
  gridZ_ = std::move(z);
  stale_ = false;
}

void NaturalNeighbourResampler::LeaveOneOut(std::vector<double>& estimates, std::vector<double>& variances) {
  CheckExtent("Orvada.NNGridR", false);
  const orvane::NNGridR& p = settings_.NNGridR();
  detail::NaturalNeighbourOptions options = OptionsOf(p);
  options.nullValue = std::numeric_limits<double>::quiet_NaN();  // outside without extrapolation: no estimate
  const std::size_t n = x_.size();
  estimates.assign(n, std::numeric_limits<double>::quiet_NaN());
  variances.clear();
  RunProgress run(progress_, static_cast<std::int64_t>(n));
  ParallelFor(n, 1, run, [&](std::size_t i) {
    std::vector<double> xs(x_), ys(y_), zs(z_);
    xs.erase(xs.begin() + static_cast<std::ptrdiff_t>(i));
    ys.erase(ys.begin() + static_cast<std::ptrdiff_t>(i));
    zs.erase(zs.begin() + static_cast<std::ptrdiff_t>(i));
    try {
      const detail::NaturalNeighbour method(xs, ys, zs, p.Parameter("MagX"), p.Parameter("MagY"));
      detail::NaturalNeighbour::Cursor cursor;
      estimates[i] = method.ValueAt(x_[i], y_[i], options, cursor);
    } catch (const Error&) {
      // The others alone have no triangles (collinear, or fewer than three): no estimate.
    }
  });
  run.ThrowIfCancelled();
}

}  // namespace orvane
