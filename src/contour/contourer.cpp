// Tracing contour lines and filled bands over a triangle mesh.
//
// Per triangle: the segments at the boundaries within its Z range (the others cannot be
// crossed), then for every band it reaches the nodes of its part in the band: the
// segment ends at the band's two boundaries and the vertices within the band. The part
// is convex and its nodes all lie on the triangle's perimeter, so ordering them by
// perimeter position gives the polygon's boundary; coincident neighbours are dropped and
// the polygon is fanned from its first node.
//
// Ties. By default the signs against a level are exact and a vertex lying on a boundary
// (within the point tolerance) belongs to the bands on both sides. Counting only vertices
// strictly inside would drop a vertex that touches a level while the rest of its
// triangle lies on one side (no segment is made there), and leave a hole in the fill
// wherever data heights meet level values. A part lying wholly on its
// band's top boundary (a triangle flat at a level) is left to the band above, which holds
// the level's own colour, so that it is filled once.
//
// With ties above, a height equal to a level counts as above it: a level is then the
// boundary of the region at or above it, every segment joins two crossings (a crossing
// at an upper corner lying on the level is that corner), and band k holds the heights
// from bk up to, not including, bk+1. A crossing is worked out from its edge's lower
// corner to its upper one whichever triangle asks, so the two triangles of an edge give
// the same point to the last bit and their segments chain exactly. A segment of no
// length (a corner on the level with the rest below) is no line, though its point still
// closes a band's polygon; an edge on the level with ground below on both sides is
// traced by both triangles, and the caller drops such pairs (CLineList::DropDoubled).
//
// Speed. Most triangles of a fine grid lie wholly inside one band, mostly the band of the
// triangle before, so that band is tried first and the searches over the boundaries are
// skipped. Each band's room is counted from the heights before tracing (exact for such
// triangles, a bound for the rest) and its pages are mapped in one call. A grid is traced
// in two passes on two threads when they are allowed, each pass making about half of the
// band triangles (whole bands, shared out by their room) and the levels at those bands'
// lower boundaries; each list still holds its items in triangle order, so the result is
// the one pass's result.

#include "contourer.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "core/parallel.h"
#include "orvane/core/color.h"

namespace orvane {

namespace {

using detail::ReserveHuge;
using detail::RunTasks;

// Stands for minus and plus infinity at the outer boundaries.
constexpr double kBelowAll = -1.79769313486231e+308;
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

// With ties above: the crossing on side a-b, from the side's lower corner to its upper
// one, or the upper corner itself when it lies on the level. Its perimeter position is
// that of Crossing.
Node CrossingTiesAbove(double z, int a, const double (&x)[3], const double (&y)[3], const double (&zs)[3]) {
  const int b = (a + 1) % 3;
  const double position = a + (z - zs[a]) / (zs[b] - zs[a]);
  const int lo = zs[a] < zs[b] ? a : b;
  const int hi = lo == a ? b : a;
  if (zs[hi] == z) return {x[hi], y[hi], z, hi == a ? static_cast<double>(a) : a + 1.0};
  const double t = (z - zs[lo]) / (zs[hi] - zs[lo]);
  return {x[lo] + (x[hi] - x[lo]) * t, y[lo] + (y[hi] - y[lo]) * t, z, position};
}

// The bands (and the levels at their lower boundaries) one pass makes: those whose
// owner is the pass; with no owner table, all of them. Each band's triangles and each
// level's segments come in triangle order whichever pass makes them, so passes on
// several threads give what one pass does.
struct Share {
  std::size_t pass = 0;
  const std::vector<std::size_t>* owner = nullptr;
  bool Owns(std::size_t band) const { return owner == nullptr || (*owner)[band] == pass; }
};

// Per-thread scratch of one triangle's work.
struct TriangleWork {
  std::vector<CContourer::Segment> segments;  // at boundaries kFirst .. kLast
  std::vector<bool> has;
  std::vector<Node> nodes;
  std::size_t lastBand = 0;  // the band the last triangle lay wholly inside: tried first
  bool tiesAbove = false;     // a height on a level counts as above it
};

// Appends one triangle's nine values to the band.
void AppendTriangle(BandTriangles& band, const double (&values)[9]) {
  band.insert(band.end(), std::begin(values), std::end(values));
}

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
      AppendTriangle(band, {a.x, a.y, a.z, b.x, b.y, b.z, c.x, c.y, c.z});
    }
  }
}

// True when z[0..2] lie in band k clear of both its boundaries (by more than the point
// tolerance): the triangle is then the band's part whole and crosses no level.
bool WhollyInside(std::span<const double> b, std::size_t k, double zMin, double zMax) {
  const std::size_t n = b.size() - 1;
  const double hi = k < n ? b[k + 1] : kAboveAll;
  return zMin - b[k] > kPointTolerance && hi - zMax > kPointTolerance;
}

// The bands a triangle reaches: from the one just below zMin (its top may hold a
// segment) to the one holding zMax.
std::pair<std::size_t, std::size_t> BandRange(std::span<const double> b, double zMin, double zMax) {
  const auto firstAbove = std::upper_bound(b.begin(), b.end(), zMax);
  const std::size_t kLast = static_cast<std::size_t>(firstAbove - b.begin()) - 1;
  const auto firstReaching = std::lower_bound(b.begin(), b.end(), zMin);
  const std::size_t kFirst = firstReaching == b.begin()
                                 ? 0
                                 : static_cast<std::size_t>(firstReaching - b.begin()) - 1;
  return {kFirst, kLast};
}

// One triangle against the sorted boundaries.
void TraceTriangle(const double (&x)[3], const double (&y)[3], const double (&z)[3],
                   std::span<const double> b, ContourTrace& out, TriangleWork& work,
                   const TriangleClip& clip, bool withBands, Share share = {}) {
  const std::size_t n = b.size() - 1;  // number of levels
  const double zMin = std::min({z[0], z[1], z[2]});
  const double zMax = std::max({z[0], z[1], z[2]});
  // Neighbouring triangles mostly lie in the same band. Wholly inside band k, the
  // searches below would find kFirst = kLast = k and take the same branch.
  if (WhollyInside(b, work.lastBand, zMin, zMax)) {
    if (withBands && share.Owns(work.lastBand)) {
      if (clip) {
        work.nodes.assign({{x[0], y[0], z[0], 0.0}, {x[1], y[1], z[1], 1.0}, {x[2], y[2], z[2], 2.0}});
        Fan(work.nodes, out.bands[work.lastBand], clip);
      } else {
        AppendTriangle(out.bands[work.lastBand], {x[0], y[0], z[0], x[1], y[1], z[1], x[2], y[2], z[2]});
      }
    }
    return;
  }
  const auto [kFirst, kLast] = BandRange(b, zMin, zMax);
  // Wholly inside one band, clear of both its boundaries: the triangle itself, and no line.
  if (kFirst == kLast) {
    if (WhollyInside(b, kFirst, zMin, zMax)) {
      work.lastBand = kFirst;
      if (withBands && share.Owns(kFirst)) {
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
    if (CContourer::Trace(b[k], x, y, z, work.segments[slot], work.tiesAbove)) {
      work.has[slot] = true;
      const CLine& line = work.segments[slot].line;
      const bool point = work.tiesAbove && line.x1 == line.x2 && line.y1 == line.y2;
      if (share.Owns(k) && !point) out.levelLines[k - 1].Append(line);
    }
  }
  if (!withBands) return;
  for (std::size_t k = kFirst; k <= kLast; ++k) {
    if (!share.Owns(k)) continue;
    std::vector<Node>& nodes = work.nodes;
    nodes.clear();
    const double lo = b[k];
    const double hi = k < n ? b[k + 1] : kAboveAll;
    bool belowTop = false;  // some node lies below the band's top boundary
    for (std::size_t edge : {k, k + 1}) {
      if (edge > n || !work.has[edge - kFirst]) continue;
      const CContourer::Segment& s = work.segments[edge - kFirst];
      nodes.push_back({s.line.x1, s.line.y1, s.line.z1, s.position1});
      nodes.push_back({s.line.x2, s.line.y2, s.line.z2, s.position2});
      belowTop = belowTop || edge == k;
    }
    for (int i = 0; i < 3; ++i) {
      const bool inside = work.tiesAbove ? z[i] >= lo && z[i] < hi
                                         : z[i] - lo > -kPointTolerance && hi - z[i] > -kPointTolerance;
      if (inside) {
        nodes.push_back({x[i], y[i], z[i], static_cast<double>(i)});
        // With ties above a corner inside the band lies below its top, however near.
        belowTop = belowTop || work.tiesAbove || hi - z[i] > kPointTolerance;
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
  for (BandTriangles& band : out.bands) detail::ReserveHuge(band, 9 * static_cast<std::size_t>(perBand));
  return out;
}

}  // namespace

int CContourer::Case(int s0, int s1, int s2) { return kCases[s2 + 1][s1 + 1][s0 + 1]; }

bool CContourer::Trace(double z, const double (&x)[3], const double (&y)[3], const double (&zs)[3],
                       Segment& out, bool tiesAbove) {
  Node p, q;
  if (tiesAbove) {
    // Signs of +1 or -1 only: the table's crossing cases 7, 8 and 9, or none.
    const auto side = [z](double v) { return v >= z ? 1 : -1; };
    const int c = Case(side(zs[0]), side(zs[1]), side(zs[2]));
    if (c == 0) return false;
    const int first = c == 7 ? 0 : (c == 8 ? 1 : 2);
    p = CrossingTiesAbove(z, first, x, y, zs);
    q = CrossingTiesAbove(z, (first + 1) % 3, x, y, zs);
    out.line = {p.x, p.y, z, q.x, q.y, z};
    out.position1 = p.position;
    out.position2 = q.position;
    return true;
  }
  const int c = Case(Sign(zs[0] - z), Sign(zs[1] - z), Sign(zs[2] - z));
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

std::vector<double> CContourer::Boundaries(std::span<const double> levels) {
  std::vector<double> b{kBelowAll};
  b.insert(b.end(), levels.begin(), levels.end());
  return b;
}

ContourTrace CContourer::TraceMesh(
    std::size_t triangleCount,
    const std::function<void(std::size_t, double (&)[3], double (&)[3], double (&)[3])>& triangle,
    std::span<const double> boundaries, const TriangleClip& clip, bool withBands, bool tiesAbove) {
  ContourTrace out = EmptyTrace(boundaries.size(), triangleCount, withBands);
  TriangleWork work;
  work.tiesAbove = tiesAbove;
  double x[3], y[3], z[3];
  for (std::size_t t = 0; t < triangleCount; ++t) {
    triangle(t, x, y, z);
    TraceTriangle(x, y, z, boundaries, out, work, clip, withBands);
  }
  return out;
}

ContourTrace CContourer::TraceGrid(std::span<const double> gx, std::span<const double> gy,
                                   std::span<const double> gz, std::span<const double> boundaries,
                                   const TriangleClip& clip, bool withBands, bool tiesAbove) {
  const std::size_t nx = gx.size();
  const std::size_t ny = gy.size();
  const std::size_t rows = nx > 1 && ny > 1 ? nx - 1 : 0;  // cell rows, one per x step
  auto forEachTriangle = [&](std::size_t rowBegin, std::size_t rowEnd, auto visit) {
    for (std::size_t i = rowBegin; i < rowEnd; ++i) {
      for (std::size_t j = 0; j + 1 < ny; ++j) {
        const double z00 = gz[i * ny + j], z10 = gz[(i + 1) * ny + j];
        const double z01 = gz[i * ny + j + 1], z11 = gz[(i + 1) * ny + j + 1];
        const double xa[3] = {gx[i], gx[i + 1], gx[i + 1]};
        const double ya[3] = {gy[j], gy[j], gy[j + 1]};
        // A triangle with a blank (NaN) corner has no surface: lines end at its edge.
        const double za[3] = {z00, z10, z11};
        if (!std::isnan(z00 + z10 + z11)) visit(xa, ya, za);
        const double xb[3] = {gx[i], gx[i + 1], gx[i]};
        const double yb[3] = {gy[j], gy[j + 1], gy[j + 1]};
        const double zb[3] = {z00, z11, z01};
        if (!std::isnan(z00 + z11 + z01)) visit(xb, yb, zb);
      }
    }
  };
  ContourTrace out = EmptyTrace(boundaries.size(), 0, false);
  const std::size_t bands = boundaries.size();
  // Room for each band, from a quick look at the heights of two halves of the grid: one
  // triangle for a triangle wholly inside the band, at most five for one that reaches it
  // across a level (up to seven nodes). A clip may add more; the band then grows.
  std::vector<std::vector<std::size_t>> room(2, std::vector<std::size_t>(bands, 0));
  if (withBands) {
    RunTasks(2, [&](std::size_t half) {
      std::vector<std::size_t>& count = room[half];
      std::size_t last = 0;
      forEachTriangle(half * (rows / 2), half == 0 ? rows / 2 : rows,
                      [&](const double (&)[3], const double (&)[3], const double (&z)[3]) {
        const double zMin = std::min({z[0], z[1], z[2]});
        const double zMax = std::max({z[0], z[1], z[2]});
        if (WhollyInside(boundaries, last, zMin, zMax)) {
          ++count[last];
          return;
        }
        const auto [kFirst, kLast] = BandRange(boundaries, zMin, zMax);
        if (kFirst == kLast && WhollyInside(boundaries, kFirst, zMin, zMax)) {
          last = kFirst;
          ++count[kFirst];
          return;
        }
        for (std::size_t k = kFirst; k <= kLast; ++k) count[k] += 5;
      });
    });
    for (std::size_t k = 0; k < bands; ++k) room[0][k] += room[1][k];
  }
  // One pass per thread, up to two, each making its share of the bands: the largest band
  // first, each to the pass with the least room so far. A clip is the caller's code,
  // which need not be safe to run on two threads at once.
  const std::size_t passes = clip || detail::ThreadCount() < 2 ? 1 : 2;
  std::vector<std::size_t> owner(bands, 0);
  if (passes == 2) {
    std::vector<std::size_t> bySize(bands);
    for (std::size_t k = 0; k < bands; ++k) bySize[k] = k;
    std::stable_sort(bySize.begin(), bySize.end(),
                     [&room](std::size_t a, std::size_t b) { return room[0][a] > room[0][b]; });
    std::size_t load[2] = {0, 0};
    for (std::size_t k : bySize) {
      owner[k] = load[1] < load[0] ? 1 : 0;
      load[owner[k]] += room[0][k] + 1;  // + 1: a band without triangles may hold a level's lines
    }
  }
  RunTasks(passes, [&](std::size_t pass) {
    const Share share{pass, &owner};
    for (std::size_t k = 0; k < bands && withBands; ++k) {
      if (share.Owns(k)) detail::ReservePrefaulted(out.bands[k], 9 * room[0][k]);
    }
    TriangleWork work;
    work.tiesAbove = tiesAbove;
    forEachTriangle(0, rows, [&](const double (&x)[3], const double (&y)[3], const double (&z)[3]) {
      TraceTriangle(x, y, z, boundaries, out, work, clip, withBands, share);
    });
  });
  return out;
}

}  // namespace orvane
