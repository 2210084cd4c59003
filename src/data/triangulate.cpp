// CTriangulate: Delaunay triangulation by incremental insertion into a super-triangle.
//
// Notation. n input points, already normalised into the unit square, numbered 0..n-1;
// the working copy is jittered by at most 0.5/100000 of the range per axis so that four
// co-circular or three collinear inputs do not tie. The super-triangle corners are
// points n, n+1, n+2 at (-1,-1), (5,-1), (-1,5). Triangles are stored counter-clockwise
// as three point numbers in a slot; neighbour k of a slot lies across edge (v[k], v[k+1]).
//
// The rule. A point deletes every triangle whose circumcircle holds it, boundary included
// (d = r^2 - |p - centre|^2 >= 0); the edges of the deleted region that are not shared by
// two deleted triangles are joined to the point. The finished mesh keeps the triangles
// whose three corners are input points; a triangle with exactly one super corner gives
// its opposite edge to the data hull, and the hull edges are chained into one polygon.
//
// Why it is fast. Once the super-triangle is placed, the result is the Delaunay
// triangulation of the input plus the three corners, which in general position (the
// jitter's job) does not depend on the order of insertion, nor on how the deleted
// triangles are found. So the points are inserted in the order of a Hilbert curve over
// the square, each point's triangle is found by walking from the last triangle made, and
// the deleted region grows from that triangle through the neighbours instead of testing
// every live triangle. Circles are computed from a canonical vertex rotation, so a given
// triangle gets the same circle whenever it is made. The tests keep the literal
// procedure (every live triangle tested for every point, in input order) as an oracle
// and compare triangle sets and hulls.
//
// Memory and threads. At a million points the time goes as much to memory the kernel
// maps for the first time as to the insertion, so the large buffers ask for huge pages
// and are mapped in one call each (the slots on a second thread while the first inserts);
// scratch comes straight from the kernel and goes straight back, keeping the peak of the
// next run where it was. A point's coordinates sit beside its input number, which the
// canonical rotation needs. The insertion is sequential; the jitter (the generator is
// reached at any draw), the curve keys, the numbering of the kept triangles and the
// corners are worked out in fixed blocks that threads share, and none of it depends on
// how many threads there are. The tests also keep the code as it was before this tuning
// and compare every list bit for bit.
//
// Robustness. Should rounding make the deleted region not star-shaped around the point
// (an edge of it that the point does not see, or a vertex on its boundary twice), the
// offending triangles are given back to the mesh until it is; the walk falls back to a
// scan if it does not end. Neither happens on jittered input in practice.

#include "triangulate.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <tuple>

#include "core/parallel.h"
#include "orvane/core/error.h"
#include "orvane/core/format.h"

namespace orvane {

namespace detail {

double JitterRandom::Next() noexcept {
  std::uint64_t z = (state_ += kStep);
  z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
  z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
  z ^= z >> 31;
  return static_cast<double>(z >> 11) * 0x1.0p-53;
}

void JitterRandom::Skip(std::uint64_t draws) noexcept { state_ += draws * kStep; }

WorkPoints PrepareWorkPoints(std::span<const double> x, std::span<const double> y) {
  const std::size_t n = x.size();
  // The limits and the jitter are worked out in fixed blocks, on as many threads as are
  // allowed: min and max do not depend on the order they are taken in, and point i takes
  // draws 2i and 2i + 1 of the generator, which Skip reaches directly.
  const std::size_t blocks = (n + kPrepareBlock - 1) / kPrepareBlock;
  std::vector<std::array<double, 4>> limits(blocks);
  RunTasks(blocks, [&](std::size_t b) {
    double xLo = std::numeric_limits<double>::max();
    double xHi = -xLo;
    double yLo = xLo;
    double yHi = -xLo;
    for (std::size_t i = b * kPrepareBlock, end = std::min(n, i + kPrepareBlock); i < end; ++i) {
      xLo = std::min(xLo, x[i]);
      xHi = std::max(xHi, x[i]);
      yLo = std::min(yLo, y[i]);
      yHi = std::max(yHi, y[i]);
    }
    limits[b] = {xLo, xHi, yLo, yHi};
  });
  double xMin = std::numeric_limits<double>::max();
  double xMax = -xMin;
  double yMin = xMin;
  double yMax = -xMin;
  for (const auto& l : limits) {
    xMin = std::min(xMin, l[0]);
    xMax = std::max(xMax, l[1]);
    yMin = std::min(yMin, l[2]);
    yMax = std::max(yMax, l[3]);
  }
  const double xRange = xMax - xMin;
  const double yRange = yMax - yMin;
  WorkPoints w;
  ReservePrefaulted(w.x, n + 3, true);
  ReservePrefaulted(w.y, n + 3, true);
  w.x.resize(n + 3);
  w.y.resize(n + 3);
  RunTasks(blocks, [&](std::size_t b) {
    JitterRandom random;
    random.Reset();
    random.Skip(2 * b * kPrepareBlock);
    for (std::size_t i = b * kPrepareBlock, end = std::min(n, i + kPrepareBlock); i < end; ++i) {
      const double jx = x[i] + (random.Next() - 0.5) * xRange / 100000.0;
      const double jy = y[i] + (random.Next() - 0.5) * yRange / 100000.0;
      w.x[i] = (jx - xMin) / xRange;
      w.y[i] = (jy - yMin) / yRange;
    }
  });
  w.x[n] = -1.0;
  w.y[n] = -1.0;
  w.x[n + 1] = 5.0;
  w.y[n + 1] = -1.0;
  w.x[n + 2] = -1.0;
  w.y[n + 2] = 5.0;
  return w;
}

Circle CircleOf(const WorkPoints& w, std::int32_t a, std::int32_t b, std::int32_t c) noexcept {
  if (b < a && b < c) {
    std::tie(a, b, c) = std::make_tuple(b, c, a);
  } else if (c < a && c < b) {
    std::tie(a, b, c) = std::make_tuple(c, a, b);
  }
  const auto ia = static_cast<std::size_t>(a);
  const auto ib = static_cast<std::size_t>(b);
  const auto ic = static_cast<std::size_t>(c);
  return CircleThrough(w.x[ia], w.y[ia], w.x[ib], w.y[ib], w.x[ic], w.y[ic]);
}

Circle CircleThrough(double ax, double ay, double bx, double by, double cx, double cy) noexcept {
  // The bisectors of ab and ac meet at a + u, with u solved relative to a.
  bx -= ax;
  by -= ay;
  cx -= ax;
  cy -= ay;
  const double d = 2.0 * (bx * cy - by * cx);
  if (d == 0.0) return {0.0, 0.0, std::numeric_limits<double>::infinity()};
  const double b2 = bx * bx + by * by;
  const double c2 = cx * cx + cy * cy;
  const double ux = (cy * b2 - by * c2) / d;
  const double uy = (bx * c2 - cx * b2) / d;
  return {ax + ux, ay + uy, ux * ux + uy * uy};
}

std::vector<std::int32_t> ChainHull(std::vector<std::pair<std::int32_t, std::int32_t>> edges) {
  if (edges.empty()) return {};
  std::sort(edges.begin(), edges.end());
  // Outgoing edges of each start vertex form a run of the sorted list.
  std::vector<bool> used(edges.size(), false);
  auto firstOut = [&edges](std::int32_t v) {
    return static_cast<std::size_t>(
        std::lower_bound(edges.begin(), edges.end(), std::make_pair(v, INT32_MIN)) -
        edges.begin());
  };
  std::vector<std::int32_t> best;
  std::vector<std::size_t> cursor;  // per walk: next edge to try at each stack entry
  for (std::size_t seed = 0; seed < edges.size(); ++seed) {
    if (used[seed]) continue;
    // Hierholzer's walk: the closed walk through every edge reachable from the seed.
    std::vector<std::int32_t> stack{edges[seed].first};
    std::vector<std::int32_t> circuit;
    while (!stack.empty()) {
      const std::int32_t v = stack.back();
      std::size_t e = firstOut(v);
      while (e < edges.size() && edges[e].first == v && used[e]) ++e;
      if (e < edges.size() && edges[e].first == v) {
        used[e] = true;
        stack.push_back(edges[e].second);
      } else {
        circuit.push_back(v);
        stack.pop_back();
      }
    }
    std::reverse(circuit.begin(), circuit.end());
    circuit.pop_back();  // the closing vertex
    if (circuit.size() > best.size()) best = std::move(circuit);
  }
  std::rotate(best.begin(), std::min_element(best.begin(), best.end()), best.end());
  return best;
}

}  // namespace detail

namespace {

using detail::Circle;
using detail::ReserveHuge;
using detail::RunTasks;
using detail::WorkPoints;

constexpr std::int32_t kNone = CTriangulate::kNoNeighbour;

// Position of a point along a Hilbert curve over a 65536 x 65536 grid of the square.
std::uint32_t HilbertKey(double x, double y) {
  auto cell = [](double v) {
    const double scaled = std::clamp(v, 0.0, 1.0) * 65535.0;
    return static_cast<std::uint32_t>(scaled);
  };
  std::uint32_t hx = cell(x);
  std::uint32_t hy = cell(y);
  std::uint32_t key = 0;
  for (std::uint32_t s = 1u << 15; s > 0; s >>= 1) {
    const std::uint32_t rx = (hx & s) ? 1u : 0u;
    const std::uint32_t ry = (hy & s) ? 1u : 0u;
    key += s * s * ((3u * rx) ^ ry);
    if (ry == 0) {
      if (rx == 1) {
        hx = 65535u - hx;
        hy = 65535u - hy;
      }
      std::swap(hx, hy);
    }
  }
  return key;
}

// The input points in Hilbert order: (key, index) pairs packed into 64 bits and sorted
// by the key with two stable 16-bit radix passes.
detail::PageVector<std::int32_t> InsertionOrder(const WorkPoints& w, std::size_t n) {
  detail::PageVector<std::uint64_t> packed(n);
  RunTasks((n + detail::kPrepareBlock - 1) / detail::kPrepareBlock, [&](std::size_t b) {
    const std::size_t first = b * detail::kPrepareBlock;
    for (std::size_t i = first, end = std::min(n, first + detail::kPrepareBlock); i < end; ++i) {
      packed[i] = (std::uint64_t{HilbertKey(w.x[i], w.y[i])} << 32) | i;
    }
  });
  detail::PageVector<std::uint64_t> scratch(n);
  for (int shift = 32; shift < 64; shift += 16) {
    std::vector<std::size_t> start(65537, 0);
    for (std::uint64_t p : packed) ++start[((p >> shift) & 0xFFFFu) + 1];
    for (std::size_t b = 1; b < start.size(); ++b) start[b] += start[b - 1];
    for (std::uint64_t p : packed) scratch[start[(p >> shift) & 0xFFFFu]++] = p;
    packed.swap(scratch);
  }
  detail::PageVector<std::int32_t> order(n);
  for (std::size_t i = 0; i < n; ++i) order[i] = static_cast<std::int32_t>(packed[i] & 0xFFFFFFFFu);
  return order;
}

}  // namespace

namespace detail {

// The working mesh of one run. Points are numbered in insertion order here (the
// super-triangle keeps n, n+1, n+2) and copied into that order, so that triangles near
// each other in the plane sit near each other in memory; input numbers come back in
// Finish. One slot holds everything the insertion reads about a triangle.
class Inserter {
 public:
  using Slot = InserterSlot;

  Inserter(const WorkPoints& w, const PageVector<std::int32_t>& order) : n_(order.size()) {
    points_.resize(n_ + 3);
    for (std::size_t i = 0; i < n_; ++i) {
      const auto in = static_cast<std::size_t>(order[i]);
      points_[i] = {w.x[in], w.y[in], order[i]};
    }
    for (std::size_t k = n_; k < n_ + 3; ++k) points_[k] = {w.x[k], w.y[k], static_cast<std::int32_t>(k)};
    slots_.reserve(2 * n_ + 1);
    vertexMark_.assign(n_ + 3, 0);
    vertexSlot_.assign(n_ + 3, kNone);
    const auto s = static_cast<std::int32_t>(n_);
    NewSlot(s, s + 1, s + 2, detail::kSuperCircle);
  }

  // Inserts every point in order.
  void Run() {
    for (std::size_t p = 0; p < n_; ++p) Insert(static_cast<std::int32_t>(p));
  }

  const PageVector<Slot>& Slots() const { return slots_; }
  // The block reserved for the slots, which the insertion fills from the front.
  std::pair<const void*, std::size_t> SlotBlock() const {
    return {slots_.data(), slots_.capacity() * sizeof(Slot)};
  }
  // Frees what the finished mesh does not need: everything but the triangles.
  void ReleasePoints() {
    points_ = {};
    vertexMark_ = {};
    vertexSlot_ = {};
    free_ = {};
  }

 private:
  struct BoundaryEdge {
    std::int32_t a, b, outside;
  };

  // A working point: its coordinates and input number side by side, so that one cache
  // line serves the orientation tests and the circle's canonical rotation.
  struct Point {
    double x, y;
    std::int32_t input;
  };

  Slot& At(std::int32_t t) { return slots_[static_cast<std::size_t>(t)]; }
  const Point& P(std::int32_t p) const { return points_[static_cast<std::size_t>(p)]; }
  std::int32_t Input(std::int32_t p) const { return P(p).input; }
  double Orient(std::int32_t a, std::int32_t b, double px, double py) const {
    const Point& pa = P(a);
    const Point& pb = P(b);
    return (pb.x - pa.x) * (py - pa.y) - (pb.y - pa.y) * (px - pa.x);
  }
  bool IsBad(std::int32_t t) { return At(t).mark == stamp_; }
  bool WasTested(std::int32_t t) { return At(t).mark >= stamp_; }
  bool Deletes(std::int32_t t, double px, double py) {
    return detail::InCircle(At(t).circle, px, py);
  }

  // The circle of (a, b, c), rotated by input numbers as detail::CircleOf does, so that
  // it is bit for bit the circle the literal procedure computes for the same triangle.
  detail::Circle CircleOf(std::int32_t a, std::int32_t b, std::int32_t c) const {
    const std::int32_t ia = Input(a);
    const std::int32_t ib = Input(b);
    const std::int32_t ic = Input(c);
    if (ib < ia && ib < ic) {
      std::tie(a, b, c) = std::make_tuple(b, c, a);
    } else if (ic < ia && ic < ib) {
      std::tie(a, b, c) = std::make_tuple(c, a, b);
    }
    const Point& pa = P(a);
    const Point& pb = P(b);
    const Point& pc = P(c);
    return detail::CircleThrough(pa.x, pa.y, pb.x, pb.y, pc.x, pc.y);
  }

  std::int32_t NewSlot(std::int32_t a, std::int32_t b, std::int32_t c, const Circle& circle) {
    if (!free_.empty()) {
      const std::int32_t t = free_.back();
      free_.pop_back();
      Slot& s = At(t);
      s.v[0] = a;
      s.v[1] = b;
      s.v[2] = c;
      s.circle = circle;
      s.dead = 0;
      return t;
    }
    slots_.push_back(Slot{{a, b, c}, {kNone, kNone, kNone}, 0, 0, circle});
    return static_cast<std::int32_t>(slots_.size() - 1);
  }

  void Insert(std::int32_t p) {
    const double px = P(p).x;
    const double py = P(p).y;
    const std::int32_t seed = Seed(Walk(last_, px, py), px, py);
    if (seed == kNone) return;  // no circle holds the point: it deletes nothing
    stamp_ += 2;
    Grow(seed, px, py);
    MakeStarShaped(seed, px, py);
    Replace(p);
  }

  // The triangle holding (px, py), walking from t across edges that face away; -1 if the
  // walk leaves the mesh or does not end.
  std::int32_t Walk(std::int32_t t, double px, double py) {
    const std::size_t limit = slots_.size() + 3;
    for (std::size_t step = 0; step < limit; ++step) {
      const int first = static_cast<int>(step % 3);  // varying start edge avoids cycling
      const Slot& s = At(t);
      std::int32_t next = t;
      for (int k = 0; k < 3; ++k) {
        const int e = (first + k) % 3;
        if (Orient(s.v[e], s.v[(e + 1) % 3], px, py) < 0.0) {
          next = s.nb[e];
          break;
        }
      }
      if (next == t) return t;
      if (next == kNone) return kNone;
      t = next;
    }
    return kNone;
  }

  // A triangle the point deletes, to grow the region from: the one holding it, else a
  // neighbour of it, else the first found by a full scan; -1 if there is none.
  std::int32_t Seed(std::int32_t holder, double px, double py) {
    if (holder != kNone) {
      if (Deletes(holder, px, py)) return holder;
      for (int k = 0; k < 3; ++k) {
        const std::int32_t n = At(holder).nb[k];
        if (n != kNone && Deletes(n, px, py)) return n;
      }
    }
    for (std::size_t t = 0; t < slots_.size(); ++t) {
      const auto ti = static_cast<std::int32_t>(t);
      if (!slots_[t].dead && Deletes(ti, px, py)) return ti;
    }
    return kNone;
  }

  // Collects into cavity_ the triangles connected to seed through neighbours that joins(n)
  // admits; members are marked stamp_.
  template <class Joins>
  void Collect(std::int32_t seed, Joins joins) {
    cavity_.clear();
    stack_.assign(1, seed);
    At(seed).mark = stamp_;
    while (!stack_.empty()) {
      const std::int32_t t = stack_.back();
      stack_.pop_back();
      cavity_.push_back(t);
      for (int k = 0; k < 3; ++k) {
        const std::int32_t n = At(t).nb[k];
        if (n == kNone || At(n).mark == stamp_ || !joins(n)) continue;
        At(n).mark = stamp_;
        stack_.push_back(n);
      }
    }
  }

  // The connected triangles around seed that the point deletes.
  void Grow(std::int32_t seed, double px, double py) {
    Collect(seed, [&](std::int32_t n) {
      if (WasTested(n)) return false;
      if (Deletes(n, px, py)) return true;
      At(n).mark = stamp_ + 1;
      return false;
    });
  }

  // Fills boundary_ and returns a cavity triangle other than seed that spoils the star
  // shape (an edge the point does not see, or a repeated start vertex), or -1.
  std::int32_t CollectBoundary(std::int32_t seed, double px, double py) {
    boundary_.clear();
    ++vertexStamp_;
    for (std::int32_t t : cavity_) {
      const Slot& s = At(t);
      for (int k = 0; k < 3; ++k) {
        const std::int32_t n = s.nb[k];
        if (n != kNone && IsBad(n)) continue;
        const std::int32_t a = s.v[k];
        const std::int32_t b = s.v[(k + 1) % 3];
        const bool sees = Orient(a, b, px, py) > 0.0;
        const bool repeated = vertexMark_[static_cast<std::size_t>(a)] == vertexStamp_;
        if ((!sees || repeated) && t != seed) return t;
        vertexMark_[static_cast<std::size_t>(a)] = vertexStamp_;
        boundary_.push_back({a, b, n});
      }
    }
    return kNone;
  }

  void MakeStarShaped(std::int32_t seed, double px, double py) {
    for (std::int32_t spoiler; (spoiler = CollectBoundary(seed, px, py)) != kNone;) {
      // Give the spoiler back and keep what is still connected to the seed: the current
      // members carry the old stamp, the fresh stamp marks the new cavity.
      const std::uint32_t member = stamp_;
      stamp_ += 2;
      At(spoiler).mark = stamp_ + 1;
      Collect(seed, [&](std::int32_t n) { return At(n).mark == member; });
    }
  }

  // Deletes the cavity and joins each boundary edge to point p.
  void Replace(std::int32_t p) {
    for (std::int32_t t : cavity_) {
      At(t).dead = 1;
      free_.push_back(t);
    }
    ++vertexStamp_;
    made_.clear();
    for (const BoundaryEdge& e : boundary_) {
      const std::int32_t t = NewSlot(e.a, e.b, p, CircleOf(e.a, e.b, p));
      Slot& s = At(t);
      s.nb[0] = e.outside;
      s.nb[1] = kNone;
      s.nb[2] = kNone;
      if (e.outside != kNone) {
        Slot& o = At(e.outside);
        for (int k = 0; k < 3; ++k) {
          if (o.v[k] == e.b && o.v[(k + 1) % 3] == e.a) o.nb[k] = t;
        }
      }
      vertexMark_[static_cast<std::size_t>(e.a)] = vertexStamp_;
      vertexSlot_[static_cast<std::size_t>(e.a)] = t;
      made_.push_back(t);
    }
    for (std::int32_t t : made_) {
      const auto b = static_cast<std::size_t>(At(t).v[1]);
      if (vertexMark_[b] != vertexStamp_) continue;  // an open boundary: no partner
      const std::int32_t next = vertexSlot_[b];
      At(t).nb[1] = next;
      At(next).nb[2] = t;
    }
    if (!made_.empty()) last_ = made_.back();
  }

  std::size_t n_;
  PageVector<Point> points_;
  PageVector<Slot> slots_;
  std::vector<std::int32_t> free_;
  PageVector<std::uint32_t> vertexMark_;
  PageVector<std::int32_t> vertexSlot_;  // new triangle whose boundary edge starts here
  std::uint32_t stamp_ = 1;
  std::uint32_t vertexStamp_ = 0;
  std::int32_t last_ = 0;
  std::vector<std::int32_t> cavity_, stack_, made_;
  std::vector<BoundaryEdge> boundary_;
};

}  // namespace detail

using detail::Inserter;
using detail::ReserveHuge;
using detail::ReservePrefaulted;
using detail::RunTasks;

void CTriangulate::Reset() {
  pointX_ = {};
  pointY_ = {};
  pointZ_ = {};
  work_ = {};
  vertices_ = {};
  neighbours_ = {};
  hull_ = {};
  cornerX_ = {};
  cornerY_ = {};
  cornerZ_ = {};
  lastFound_ = 0;
}

void CTriangulate::Triangulate(std::span<const double> x, std::span<const double> y,
                               std::span<const double> z) {
  if (x.size() != y.size() || x.size() != z.size()) {
    throw Error(5, "CTriangulate", "The X, Y and Z lists must have the same length.");
  }
  // Point numbers, and 2n + 1 triangle slots, must fit 32-bit indices.
  if (x.size() > static_cast<std::size_t>(INT32_MAX / 4)) {
    throw Error(5, "CTriangulate", "Too many points to triangulate.");
  }
  for (std::span<const double> axis : {x, y, z}) {
    for (double v : axis) {
      if (!std::isfinite(v)) {
        throw Error(5, "CTriangulate", "Points to triangulate must be finite numbers.");
      }
    }
  }
  Reset();
  const std::size_t n = x.size();
  work_ = detail::PrepareWorkPoints(x, y);
  // Every large buffer is reserved on this thread, so that all come from one malloc arena
  // (a helper thread's arena can hold freed memory back); a helper only fills them.
  for (std::vector<double>* to : {&pointX_, &pointY_, &pointZ_}) ReserveHuge(*to, n);
  auto copyInput = [&] {
    pointX_.assign(x.begin(), x.end());
    pointY_.assign(y.begin(), y.end());
    pointZ_.assign(z.begin(), z.end());
  };
  // Points without extent along an axis enclose no area (and normalise to NaN).
  const bool flat = n == 0 || !std::isfinite(work_.x[0]) || !std::isfinite(work_.y[0]);
  if (flat) {
    copyInput();
    return;
  }
  // Working number -> input number.
  const detail::PageVector<std::int32_t> order = InsertionOrder(work_, n);
  // X and Y of the points in working order: what the corners are read from.
  detail::PageVector<double> local;
  local.reserve(2 * n);
  {
    Inserter inserter(work_, order);
    const auto [slotData, slotBytes] = inserter.SlotBlock();
    // The insertion is one sequential walk. Beside it the slots' pages are mapped before
    // the insertion reaches them, and the copies it does not need are made.
    RunTasks(2, [&, data = slotData, bytes = slotBytes](std::size_t task) {
      if (task == 0) {
        inserter.Run();
        return;
      }
      detail::PrefaultPages(data, bytes);
      copyInput();
      local.resize(2 * n);
      for (std::size_t p = 0; p < n; ++p) {
        const auto i = static_cast<std::size_t>(order[p]);
        local[2 * p] = x[i];
        local[2 * p + 1] = y[i];
      }
    });
    inserter.ReleasePoints();
    Finish(inserter.Slots(), order);
  }  // the working mesh goes before the corner arrays come
  FillCorners(order, std::move(local));
}

void CTriangulate::Finish(const detail::PageVector<detail::InserterSlot>& slots,
                          const detail::PageVector<std::int32_t>& order) {
  const auto n = static_cast<std::int32_t>(order.size());
  // Slots are numbered in blocks: each block counts its kept triangles, the counts give
  // each block its first number, and then the blocks fill their parts of the lists.
  const std::size_t blocks = (slots.size() + kFinishBlock - 1) / kFinishBlock;
  auto each = [&slots](std::size_t b, auto visit) {
    for (std::size_t t = b * kFinishBlock, end = std::min(slots.size(), t + kFinishBlock); t < end; ++t) {
      visit(t);
    }
  };
  detail::PageVector<std::int32_t> kept(slots.size());
  std::vector<std::int32_t> firsts(blocks + 1, 0);
  std::vector<std::vector<std::pair<std::int32_t, std::int32_t>>> hullParts(blocks);
  RunTasks(blocks, [&](std::size_t b) {
    std::int32_t count = 0;
    each(b, [&](std::size_t t) {
      kept[t] = kNone;
      if (slots[t].dead) return;
      const std::int32_t* v = slots[t].v;
      const int supers = (v[0] >= n) + (v[1] >= n) + (v[2] >= n);
      if (supers == 0) {
        kept[t] = count++;
      } else if (supers == 1) {
        // With the super corner at s, the edge opposite runs v[s+1] -> v[s+2] with the
        // corner on its left; the hull runs the other way, keeping the mesh on its left.
        const int s = v[0] >= n ? 0 : (v[1] >= n ? 1 : 2);
        hullParts[b].emplace_back(order[static_cast<std::size_t>(v[(s + 2) % 3])],
                                  order[static_cast<std::size_t>(v[(s + 1) % 3])]);
      }
    });
    firsts[b + 1] = count;
  });
  for (std::size_t b = 0; b < blocks; ++b) firsts[b + 1] += firsts[b];
  RunTasks(blocks, [&](std::size_t b) {
    each(b, [&](std::size_t t) {
      if (kept[t] != kNone) kept[t] += firsts[b];
    });
  });
  // Vertices stay in working numbers until the corners are filled.
  const auto count = static_cast<std::size_t>(firsts[blocks]);
  ReservePrefaulted(vertices_, 3 * count, true);
  ReservePrefaulted(neighbours_, 3 * count, true);
  vertices_.resize(3 * count);
  neighbours_.resize(3 * count);
  RunTasks(blocks, [&](std::size_t b) {
    each(b, [&](std::size_t t) {
      if (kept[t] == kNone) return;
      const std::size_t out = 3 * static_cast<std::size_t>(kept[t]);
      for (std::size_t k = 0; k < 3; ++k) {
        vertices_[out + k] = slots[t].v[k];
        const std::int32_t nb = slots[t].nb[k];
        neighbours_[out + k] = nb == kNone ? kNone : kept[static_cast<std::size_t>(nb)];
      }
    });
  });
  std::vector<std::pair<std::int32_t, std::int32_t>> hullEdges;
  for (const auto& part : hullParts) hullEdges.insert(hullEdges.end(), part.begin(), part.end());
  hull_ = detail::ChainHull(std::move(hullEdges));
}

void CTriangulate::FillCorners(const detail::PageVector<std::int32_t>& order,
                               detail::PageVector<double> local) {
  // Corners are read from copies of the points in working order, which triangles near
  // each other in the list visit together: X and Y first, then Z, each copy gone before
  // the next corner list comes (this is the run's peak); last the vertices take their
  // input numbers.
  const std::size_t corners = vertices_.size();
  const std::size_t blocks = (corners + 3 * kFinishBlock - 1) / (3 * kFinishBlock);
  auto eachCorner = [corners](std::size_t b, auto visit) {
    for (std::size_t c = 3 * kFinishBlock * b, end = std::min(corners, c + 3 * kFinishBlock); c < end; ++c) {
      visit(c);
    }
  };
  for (std::vector<double>* axis : {&cornerX_, &cornerY_}) {
    ReservePrefaulted(*axis, corners, true);
    axis->resize(corners);
  }
  RunTasks(blocks, [&](std::size_t b) {
    eachCorner(b, [&](std::size_t c) {
      const auto p = static_cast<std::size_t>(vertices_[c]);
      cornerX_[c] = local[2 * p];
      cornerY_[c] = local[2 * p + 1];
    });
  });
  const std::size_t n = order.size();
  local = {};
  local.resize(n);
  RunTasks((n + kFinishBlock - 1) / kFinishBlock, [&](std::size_t b) {
    for (std::size_t p = b * kFinishBlock, end = std::min(n, p + kFinishBlock); p < end; ++p) {
      local[p] = pointZ_[static_cast<std::size_t>(order[p])];
    }
  });
  ReservePrefaulted(cornerZ_, corners, true);
  cornerZ_.resize(corners);
  RunTasks(blocks, [&](std::size_t b) {
    eachCorner(b, [&](std::size_t c) {
      const auto p = static_cast<std::size_t>(vertices_[c]);
      cornerZ_[c] = local[p];
      vertices_[c] = order[p];
    });
  });
}

// ---------------------------------------------------------------------------------------
// Locating points in the finished mesh

namespace {

// Signed doubled area of (a, b, p) in the unjittered normalised points.
inline double Cross(const std::vector<double>& x, const std::vector<double>& y, std::int32_t a,
                    std::int32_t b, double px, double py) {
  const auto ia = static_cast<std::size_t>(a);
  const auto ib = static_cast<std::size_t>(b);
  return (x[ib] - x[ia]) * (py - y[ia]) - (y[ib] - y[ia]) * (px - x[ia]);
}

}  // namespace

std::int32_t CTriangulate::Locate(double x, double y) const {
  const std::int32_t count = TriangleCount();
  if (count == 0 || !std::isfinite(x) || !std::isfinite(y)) return kNone;
  // Weights of a point within a triangle, inclusive up to rounding of the area.
  auto holds = [&](std::int32_t t) {
    const std::int32_t* v = &vertices_[3 * static_cast<std::size_t>(t)];
    const double area = Cross(pointX_, pointY_, v[0], v[1], pointX_[static_cast<std::size_t>(v[2])],
                              pointY_[static_cast<std::size_t>(v[2])]);
    if (!(area > 0.0)) return false;
    const double tolerance = -1e-12 * area;
    return Cross(pointX_, pointY_, v[0], v[1], x, y) >= tolerance &&
           Cross(pointX_, pointY_, v[1], v[2], x, y) >= tolerance &&
           Cross(pointX_, pointY_, v[2], v[0], x, y) >= tolerance;
  };
  std::int32_t t = std::clamp(lastFound_, 0, count - 1);
  for (std::int32_t step = 0; step <= count; ++step) {
    const std::int32_t* v = &vertices_[3 * static_cast<std::size_t>(t)];
    std::int32_t next = kNone;
    bool outside = false;
    for (int k = 0; k < 3; ++k) {
      const int e = (step + k) % 3;
      if (Cross(pointX_, pointY_, v[e], v[(e + 1) % 3], x, y) < 0.0) {
        outside = true;
        next = neighbours_[3 * static_cast<std::size_t>(t) + static_cast<std::size_t>(e)];
        if (next != kNone) break;
      }
    }
    if (!outside || next == kNone) break;
    t = next;
  }
  if (holds(t)) {
    lastFound_ = t;
    return t;
  }
  // The walk left the mesh (a concave hull, or jitter-inverted slivers): scan.
  for (std::int32_t s = 0; s < count; ++s) {
    if (holds(s)) {
      lastFound_ = s;
      return s;
    }
  }
  return kNone;
}

bool CTriangulate::LocateAndInterpolate(double x, double y, double& z) const {
  const std::int32_t t = Locate(x, y);
  if (t == kNone) return false;
  const std::int32_t* v = &vertices_[3 * static_cast<std::size_t>(t)];
  const auto at = [](const std::vector<double>& a, std::int32_t i) {
    return a[static_cast<std::size_t>(i)];
  };
  const double area = Cross(pointX_, pointY_, v[0], v[1], at(pointX_, v[2]), at(pointY_, v[2]));
  const double w0 = Cross(pointX_, pointY_, v[1], v[2], x, y) / area;
  const double w1 = Cross(pointX_, pointY_, v[2], v[0], x, y) / area;
  const double w2 = Cross(pointX_, pointY_, v[0], v[1], x, y) / area;
  z = w0 * at(pointZ_, v[0]) + w1 * at(pointZ_, v[1]) + w2 * at(pointZ_, v[2]);
  return true;
}

double CTriangulate::Quality(std::int32_t triangle, double radiusSquared) const {
  if (triangle < 0 || triangle >= TriangleCount()) throw Error(9, kRuntimeSource);
  const std::int32_t* v = &vertices_[3 * static_cast<std::size_t>(triangle)];
  const double area = 0.5 * std::fabs(Cross(pointX_, pointY_, v[0], v[1],
                                            pointX_[static_cast<std::size_t>(v[2])],
                                            pointY_[static_cast<std::size_t>(v[2])]));
  return area / (1.29904 * radiusSquared);
}

std::string CTriangulate::QualityText(std::int32_t triangle, double radiusSquared) const {
  return FormatNumber(Quality(triangle, radiusSquared), "0.000%");
}

}  // namespace orvane
