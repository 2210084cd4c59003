// A verbatim copy of grid and mesh tracing and of segment chaining before they were tuned
// (see baseline_contour.h); only the names around them differ.

#include "contour/baseline_contour.h"

#include <algorithm>
#include <cmath>
#include <deque>
#include <limits>
#include <tuple>
#include <utility>

#include "orvane/core/color.h"

namespace orvane::testing::baseline {

using Segment = CContourer::Segment;

bool Trace(double z, const double (&x)[3], const double (&y)[3], const double (&zs)[3],
           Segment& out);

namespace {

// Stands for plus infinity at the top boundary.
constexpr double kAboveAll = 1.79769313486231e+308;

int Sign(double v) { return v > 0.0 ? 1 : (v < 0.0 ? -1 : 0); }

// T(s0, s1, s2) as [s2 + 1][s1 + 1][s0 + 1].
constexpr int kCases[3][3][3] = {
    {{0, 0, 9}, {0, 1, 5}, {7, 4, 8}},
    {{0, 3, 6}, {2, 0, 2}, {6, 3, 0}},
    {{8, 4, 7}, {5, 1, 0}, {9, 0, 0}},
};

struct Node {
  double x, y, z, position;
};

// The crossing of level z on side a-b, at position a + t.
Node Crossing(double z, int a, const double (&x)[3], const double (&y)[3], const double (&zs)[3]) {
  const int b = (a + 1) % 3;
  const double t = (z - zs[a]) / (zs[b] - zs[a]);
  return {x[a] + (x[b] - x[a]) * t, y[a] + (y[b] - y[a]) * t, z, a + t};
}

Node Vertex(int i, double z, const double (&x)[3], const double (&y)[3]) {
  return {x[i], y[i], z, static_cast<double>(i)};
}

// Per-thread scratch of one triangle's work.
struct TriangleWork {
  std::vector<Segment> segments;  // at boundaries kFirst .. kLast
  std::vector<bool> has;
  std::vector<Node> nodes;
};

// Appends the fan of nodes[0..count) to the band, through the clip when there is one.
void Fan(const std::vector<Node>& nodes, BandTriangles& band, const TriangleClip& clip) {
  for (std::size_t i = 1; i + 1 < nodes.size(); ++i) {
    const Node& a = nodes[0];
    const Node& b = nodes[i];
    const Node& c = nodes[i + 1];
    if (clip) {
      const double x[3] = {a.x, b.x, c.x};
      const double y[3] = {a.y, b.y, c.y};
      const double z[3] = {a.z, b.z, c.z};
      clip(x, y, z, band);
    } else {
      band.insert(band.end(), {a.x, a.y, a.z, b.x, b.y, b.z, c.x, c.y, c.z});
    }
  }
}

// One triangle against the sorted boundaries.
void TraceTriangle(const double (&x)[3], const double (&y)[3], const double (&z)[3],
                   std::span<const double> b, ContourTrace& out, TriangleWork& work,
                   const TriangleClip& clip, bool withBands) {
  const std::size_t n = b.size() - 1;  // number of levels
  const double zMin = std::min({z[0], z[1], z[2]});
  const double zMax = std::max({z[0], z[1], z[2]});
  // Bands from the one just below zMin (its top may hold a segment) to the one holding zMax.
  const auto firstAbove = std::upper_bound(b.begin(), b.end(), zMax);
  const std::size_t kLast = static_cast<std::size_t>(firstAbove - b.begin()) - 1;
  const auto firstReaching = std::lower_bound(b.begin(), b.end(), zMin);
  const std::size_t kFirst = firstReaching == b.begin()
                                 ? 0
                                 : static_cast<std::size_t>(firstReaching - b.begin()) - 1;
  // Wholly inside one band, clear of both its boundaries: the triangle itself, and no line.
  if (kFirst == kLast) {
    const double lo = b[kFirst];
    const double hi = kFirst < n ? b[kFirst + 1] : kAboveAll;
    if (zMin - lo > kPointTolerance && hi - zMax > kPointTolerance) {
      if (withBands) {
        std::vector<Node>& nodes = work.nodes;
        nodes.assign({{x[0], y[0], z[0], 0.0}, {x[1], y[1], z[1], 1.0}, {x[2], y[2], z[2], 2.0}});
        Fan(nodes, out.bands[kFirst], clip);
      }
      return;
    }
  }
  // Segments at boundaries kFirst .. kLast + 1 (those outside the Z range give none).
  const std::size_t count = kLast - kFirst + 2;
  work.segments.resize(count);
  work.has.assign(count, false);
  for (std::size_t k = std::max<std::size_t>(kFirst, 1); k <= std::min(kLast + 1, n); ++k) {
    const std::size_t slot = k - kFirst;
    if (Trace(b[k], x, y, z, work.segments[slot])) {
      work.has[slot] = true;
      out.levelLines[k - 1].Append(work.segments[slot].line);
    }
  }
  if (!withBands) return;
  for (std::size_t k = kFirst; k <= kLast; ++k) {
    std::vector<Node>& nodes = work.nodes;
    nodes.clear();
    const double lo = b[k];
    const double hi = k < n ? b[k + 1] : kAboveAll;
    bool belowTop = false;  // some node lies below the band's top boundary
    for (std::size_t edge : {k, k + 1}) {
      if (edge > n || !work.has[edge - kFirst]) continue;
      const Segment& s = work.segments[edge - kFirst];
      nodes.push_back({s.line.x1, s.line.y1, s.line.z1, s.position1});
      nodes.push_back({s.line.x2, s.line.y2, s.line.z2, s.position2});
      belowTop = belowTop || edge == k;
    }
    for (int i = 0; i < 3; ++i) {
      if (z[i] - lo > -kPointTolerance && hi - z[i] > -kPointTolerance) {
        nodes.push_back({x[i], y[i], z[i], static_cast<double>(i)});
        belowTop = belowTop || hi - z[i] > kPointTolerance;
      }
    }
    if (nodes.size() < 3 || (!belowTop && k < n)) continue;
    std::sort(nodes.begin(), nodes.end(),
              [](const Node& p, const Node& q) { return p.position < q.position; });
    // Coincident neighbours along the boundary (and across its closing point) are one node.
    std::size_t kept = 1;
    for (std::size_t i = 1; i < nodes.size(); ++i) {
      const Node& prev = nodes[kept - 1];
      if (!Coincide(prev.x, prev.y, prev.z, nodes[i].x, nodes[i].y, nodes[i].z)) nodes[kept++] = nodes[i];
    }
    while (kept > 1 && Coincide(nodes[0].x, nodes[0].y, nodes[0].z, nodes[kept - 1].x,
                                nodes[kept - 1].y, nodes[kept - 1].z)) {
      --kept;
    }
    nodes.resize(kept);
    if (nodes.size() >= 3) Fan(nodes, out.bands[k], clip);
  }
}

// Room for T / (n / 2) triangles in each band (twice the average per level).
ContourTrace EmptyTrace(std::size_t boundaries, std::size_t triangles, bool withBands) {
  ContourTrace out;
  out.levelLines.resize(boundaries - 1);
  out.bands.resize(boundaries);
  if (!withBands) return out;
  const double levels = static_cast<double>(boundaries - 1);
  const double perBand = levels < 2 ? static_cast<double>(triangles)
                                    : RoundHalfEven(static_cast<double>(triangles) / RoundHalfEven(levels / 2));
  for (BandTriangles& band : out.bands) band.reserve(9 * static_cast<std::size_t>(perBand));
  return out;
}

}  // namespace

static int Case(int s0, int s1, int s2) { return kCases[s2 + 1][s1 + 1][s0 + 1]; }

bool Trace(double z, const double (&x)[3], const double (&y)[3], const double (&zs)[3],
                       Segment& out) {
  const int c = Case(Sign(zs[0] - z), Sign(zs[1] - z), Sign(zs[2] - z));
  Node p, q;
  switch (c) {
    case 0: return false;
    case 1: p = Vertex(0, z, x, y); q = Vertex(1, z, x, y); break;
    case 2: p = Vertex(1, z, x, y); q = Vertex(2, z, x, y); break;
    case 3: p = Vertex(2, z, x, y); q = Vertex(0, z, x, y); break;
    case 4: p = Vertex(0, z, x, y); q = Crossing(z, 1, x, y, zs); break;
    case 5: p = Vertex(1, z, x, y); q = Crossing(z, 2, x, y, zs); break;
    case 6: p = Vertex(2, z, x, y); q = Crossing(z, 0, x, y, zs); break;
    case 7: p = Crossing(z, 0, x, y, zs); q = Crossing(z, 1, x, y, zs); break;
    case 8: p = Crossing(z, 1, x, y, zs); q = Crossing(z, 2, x, y, zs); break;
    default: p = Crossing(z, 2, x, y, zs); q = Crossing(z, 0, x, y, zs); break;
  }
  out.line = {p.x, p.y, z, q.x, q.y, z};
  out.position1 = p.position;
  out.position2 = q.position;
  return true;
}

ContourTrace TraceMesh(
    std::size_t triangleCount,
    const std::function<void(std::size_t, double (&)[3], double (&)[3], double (&)[3])>& triangle,
    std::span<const double> boundaries, const TriangleClip& clip, bool withBands) {
  ContourTrace out = EmptyTrace(boundaries.size(), triangleCount, withBands);
  TriangleWork work;
  double x[3], y[3], z[3];
  for (std::size_t t = 0; t < triangleCount; ++t) {
    triangle(t, x, y, z);
    TraceTriangle(x, y, z, boundaries, out, work, clip, withBands);
  }
  return out;
}

ContourTrace TraceGrid(std::span<const double> gx, std::span<const double> gy,
                                   std::span<const double> gz, std::span<const double> boundaries,
                                   const TriangleClip& clip, bool withBands) {
  const std::size_t nx = gx.size();
  const std::size_t ny = gy.size();
  ContourTrace out =
      EmptyTrace(boundaries.size(), nx > 1 && ny > 1 ? 2 * (nx - 1) * (ny - 1) : 0, withBands);
  TriangleWork work;
  for (std::size_t i = 0; i + 1 < nx; ++i) {
    for (std::size_t j = 0; j + 1 < ny; ++j) {
      const double z00 = gz[i * ny + j], z10 = gz[(i + 1) * ny + j];
      const double z01 = gz[i * ny + j + 1], z11 = gz[(i + 1) * ny + j + 1];
      const double xa[3] = {gx[i], gx[i + 1], gx[i + 1]};
      const double ya[3] = {gy[j], gy[j], gy[j + 1]};
      const double za[3] = {z00, z10, z11};
      TraceTriangle(xa, ya, za, boundaries, out, work, clip, withBands);
      const double xb[3] = {gx[i], gx[i + 1], gx[i]};
      const double yb[3] = {gy[j], gy[j + 1], gy[j + 1]};
      const double zb[3] = {z00, z11, z01};
      TraceTriangle(xb, yb, zb, boundaries, out, work, clip, withBands);
    }
  }
  return out;
}

namespace {

struct EndPoint {
  double x, y, z;
};

EndPoint First(const CLine& l) { return {l.x1, l.y1, l.z1}; }
EndPoint Second(const CLine& l) { return {l.x2, l.y2, l.z2}; }
bool Same(const EndPoint& a, const EndPoint& b) { return Coincide(a.x, a.y, a.z, b.x, b.y, b.z); }
CLine Reversed(const CLine& l) { return {l.x2, l.y2, l.z2, l.x1, l.y1, l.z1}; }

// For every end point (2i: first of segment i, 2i + 1: its second) the end points that
// coincide with it, as compressed rows.
struct Neighbours {
  std::vector<std::int32_t> offsets;
  std::vector<std::int32_t> ids;
};

Neighbours FindCoincidentEnds(const std::vector<CLine>& lines) {
  const std::size_t m = 2 * lines.size();
  std::vector<EndPoint> points(m);
  double largest = 0.0;
  for (std::size_t i = 0; i < lines.size(); ++i) {
    points[2 * i] = First(lines[i]);
    points[2 * i + 1] = Second(lines[i]);
    for (const EndPoint& p : {points[2 * i], points[2 * i + 1]}) {
      largest = std::max({largest, std::fabs(p.x), std::fabs(p.y)});
    }
  }
  const CoincidenceGrid grid(m, largest, [&](std::size_t e) { return std::pair{points[e].x, points[e].y}; });
  const auto& entries = grid.Entries();
  auto key = [&grid](double v) { return grid.Key(v); };

  Neighbours result;
  result.offsets.assign(m + 1, 0);
  std::vector<std::pair<std::int32_t, std::int32_t>> pairs;
  for (std::size_t e = 0; e < m; ++e) {
    const EndPoint& p = points[e];
    for (std::int64_t cx = key(p.x - kPointTolerance); cx <= key(p.x + kPointTolerance); ++cx) {
      for (std::int64_t cy = key(p.y - kPointTolerance); cy <= key(p.y + kPointTolerance); ++cy) {
        auto it = grid.Find(cx, cy);
        for (; it != entries.end() && it->cx == cx && it->cy == cy; ++it) {
          if (static_cast<std::size_t>(it->id) != e &&
              Same(p, points[static_cast<std::size_t>(it->id)])) {
            pairs.emplace_back(static_cast<std::int32_t>(e), static_cast<std::int32_t>(it->id));
          }
        }
      }
    }
  }
  std::sort(pairs.begin(), pairs.end());
  result.ids.reserve(pairs.size());
  for (const auto& [from, to] : pairs) {
    ++result.offsets[static_cast<std::size_t>(from) + 1];
    result.ids.push_back(to);
  }
  for (std::size_t e = 0; e < m; ++e) result.offsets[e + 1] += result.offsets[e];
  return result;
}

}  // namespace

CLineList Chain(const CLineList& list) {
  const std::vector<CLine>& lines_ = list.Lines();
  const std::size_t n = lines_.size();
  const Neighbours near = FindCoincidentEnds(lines_);
  std::vector<bool> taken(n, false);
  std::vector<CLine> out;
  out.reserve(n);
  std::vector<std::int32_t> starts;
  std::size_t next = 0;  // first segment not yet taken

  // The lowest-numbered remaining segment with an end point coinciding with end point e.
  auto touching = [&](std::size_t e) {
    std::size_t best = n;
    for (auto k = near.offsets[e]; k < near.offsets[e + 1]; ++k) {
      const auto s = static_cast<std::size_t>(near.ids[static_cast<std::size_t>(k)]) / 2;
      if (!taken[s]) best = std::min(best, s);
    }
    return best;
  };

  while (true) {
    while (next < n && taken[next]) ++next;
    if (next == n) break;
    std::deque<CLine> polyline{lines_[next]};
    taken[next] = true;
    // End points of the original segments that are the polyline's start and end now.
    std::size_t startEnd = 2 * next;
    std::size_t endEnd = 2 * next + 1;
    while (true) {
      const std::size_t s = std::min(touching(endEnd), touching(startEnd));
      if (s == n) break;
      taken[s] = true;
      const CLine& seg = lines_[s];
      const EndPoint end = Second(polyline.back());
      const EndPoint start = First(polyline.front());
      if (Same(end, First(seg))) {
        polyline.push_back(seg);
        endEnd = 2 * s + 1;
      } else if (Same(end, Second(seg))) {
        polyline.push_back(Reversed(seg));
        endEnd = 2 * s;
      } else if (Same(start, Second(seg))) {
        polyline.push_front(seg);
        startEnd = 2 * s;
      } else {
        polyline.push_front(Reversed(seg));
        startEnd = 2 * s + 1;
      }
    }
    starts.push_back(static_cast<std::int32_t>(out.size()));
    out.insert(out.end(), polyline.begin(), polyline.end());
  }
  return CLineList::FromPolylines(std::move(out), std::move(starts));
}

}  // namespace orvane::testing::baseline
