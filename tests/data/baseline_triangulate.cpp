// A verbatim copy of the triangulation before its insertion was tuned (see
// baseline_triangulate.h); only the namespace and the locating functions differ.

#include "data/baseline_triangulate.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <tuple>

#include "orvane/core/error.h"

namespace orvane::testing::baseline {

namespace detail {

double JitterRandom::Next() noexcept {
  std::uint64_t z = (state_ += 0x9E3779B97F4A7C15ull);
  z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
  z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
  z ^= z >> 31;
  return static_cast<double>(z >> 11) * 0x1.0p-53;
}

WorkPoints PrepareWorkPoints(std::span<const double> x, std::span<const double> y) {
  const std::size_t n = x.size();
  JitterRandom random;
  random.Reset();
  double xMin = std::numeric_limits<double>::max();
  double xMax = -xMin;
  double yMin = xMin;
  double yMax = -xMin;
  for (std::size_t i = 0; i < n; ++i) {
    xMin = std::min(xMin, x[i]);
    xMax = std::max(xMax, x[i]);
    yMin = std::min(yMin, y[i]);
    yMax = std::max(yMax, y[i]);
  }
  const double xRange = xMax - xMin;
  const double yRange = yMax - yMin;
  WorkPoints w;
  w.x.resize(n + 3);
  w.y.resize(n + 3);
  for (std::size_t i = 0; i < n; ++i) {
    const double jx = x[i] + (random.Next() - 0.5) * xRange / 100000.0;
    const double jy = y[i] + (random.Next() - 0.5) * yRange / 100000.0;
    w.x[i] = (jx - xMin) / xRange;
    w.y[i] = (jy - yMin) / yRange;
  }
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
std::vector<std::int32_t> InsertionOrder(const WorkPoints& w, std::size_t n) {
  std::vector<std::uint64_t> packed(n);
  for (std::size_t i = 0; i < n; ++i) {
    packed[i] = (std::uint64_t{HilbertKey(w.x[i], w.y[i])} << 32) | i;
  }
  std::vector<std::uint64_t> scratch(n);
  for (int shift = 32; shift < 64; shift += 16) {
    std::vector<std::size_t> start(65537, 0);
    for (std::uint64_t p : packed) ++start[((p >> shift) & 0xFFFFu) + 1];
    for (std::size_t b = 1; b < start.size(); ++b) start[b] += start[b - 1];
    for (std::uint64_t p : packed) scratch[start[(p >> shift) & 0xFFFFu]++] = p;
    packed.swap(scratch);
  }
  std::vector<std::int32_t> order(n);
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
  struct Slot {
    std::int32_t v[3];
    std::int32_t nb[3];     // across edge (v[k], v[k+1])
    std::uint32_t mark;     // stamp_: deleted by this point; stamp_ + 1: tested, kept
    std::uint32_t dead;
    detail::Circle circle;
  };

  Inserter(const WorkPoints& w, const std::vector<std::int32_t>& order)
      : n_(order.size()), input_(order) {
    x_.resize(n_ + 3);
    y_.resize(n_ + 3);
    for (std::size_t i = 0; i < n_; ++i) {
      x_[i] = w.x[static_cast<std::size_t>(order[i])];
      y_[i] = w.y[static_cast<std::size_t>(order[i])];
    }
    for (std::size_t k = n_; k < n_ + 3; ++k) {
      x_[k] = w.x[k];
      y_[k] = w.y[k];
      input_.push_back(static_cast<std::int32_t>(k));
    }
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

  const std::vector<Slot>& Slots() const { return slots_; }
  // Working number -> input number, for the first n points; leaves the inserter empty.
  std::vector<std::int32_t> TakeInputNumbers() {
    input_.resize(n_);
    return std::move(input_);
  }
  // The input number of a working point.
  std::int32_t Input(std::int32_t p) const { return input_[static_cast<std::size_t>(p)]; }

 private:
  struct BoundaryEdge {
    std::int32_t a, b, outside;
  };

  Slot& At(std::int32_t t) { return slots_[static_cast<std::size_t>(t)]; }
  double Orient(std::int32_t a, std::int32_t b, double px, double py) const {
    const auto ia = static_cast<std::size_t>(a);
    const auto ib = static_cast<std::size_t>(b);
    return (x_[ib] - x_[ia]) * (py - y_[ia]) - (y_[ib] - y_[ia]) * (px - x_[ia]);
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
    const auto pa = static_cast<std::size_t>(a);
    const auto pb = static_cast<std::size_t>(b);
    const auto pc = static_cast<std::size_t>(c);
    return detail::CircleThrough(x_[pa], y_[pa], x_[pb], y_[pb], x_[pc], y_[pc]);
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
    const double px = x_[static_cast<std::size_t>(p)];
    const double py = y_[static_cast<std::size_t>(p)];
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
  std::vector<std::int32_t> input_;
  std::vector<double> x_, y_;
  std::vector<Slot> slots_;
  std::vector<std::int32_t> free_;
  std::vector<std::uint32_t> vertexMark_;
  std::vector<std::int32_t> vertexSlot_;  // new triangle whose boundary edge starts here
  std::uint32_t stamp_ = 1;
  std::uint32_t vertexStamp_ = 0;
  std::int32_t last_ = 0;
  std::vector<std::int32_t> cavity_, stack_, made_;
  std::vector<BoundaryEdge> boundary_;
};

}  // namespace detail

using detail::Inserter;

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
  pointX_.assign(x.begin(), x.end());
  pointY_.assign(y.begin(), y.end());
  pointZ_.assign(z.begin(), z.end());
  work_ = detail::PrepareWorkPoints(x, y);
  // Points without extent along an axis enclose no area (and normalise to NaN).
  const bool flat = n == 0 || !std::isfinite(work_.x[0]) || !std::isfinite(work_.y[0]);
  if (!flat) {
    std::vector<std::int32_t> input;
    {
      Inserter inserter(work_, InsertionOrder(work_, n));
      inserter.Run();
      input = Finish(inserter);
    }  // the working mesh goes before the corner arrays come
    FillCorners(input);
  }
}

std::vector<std::int32_t> CTriangulate::Finish(detail::Inserter& inserter) {
  const auto n = static_cast<std::int32_t>(pointX_.size());
  const std::vector<Inserter::Slot>& slots = inserter.Slots();
  std::vector<std::int32_t> kept(slots.size(), kNone);
  std::int32_t count = 0;
  std::vector<std::pair<std::int32_t, std::int32_t>> hullEdges;
  for (std::size_t t = 0; t < slots.size(); ++t) {
    if (slots[t].dead) continue;
    const std::int32_t* v = slots[t].v;
    const int supers = (v[0] >= n) + (v[1] >= n) + (v[2] >= n);
    if (supers == 0) {
      kept[t] = count++;
    } else if (supers == 1) {
      // With the super corner at s, the edge opposite runs v[s+1] -> v[s+2] with the
      // corner on its left; the hull runs the other way, keeping the mesh on its left.
      const int s = v[0] >= n ? 0 : (v[1] >= n ? 1 : 2);
      hullEdges.emplace_back(inserter.Input(v[(s + 2) % 3]), inserter.Input(v[(s + 1) % 3]));
    }
  }
  // Vertices stay in working numbers until the corners are filled.
  vertices_.resize(3 * static_cast<std::size_t>(count));
  neighbours_.resize(3 * static_cast<std::size_t>(count));
  for (std::size_t t = 0; t < slots.size(); ++t) {
    if (kept[t] == kNone) continue;
    const std::size_t out = 3 * static_cast<std::size_t>(kept[t]);
    for (std::size_t k = 0; k < 3; ++k) {
      vertices_[out + k] = slots[t].v[k];
      const std::int32_t nb = slots[t].nb[k];
      neighbours_[out + k] = nb == kNone ? kNone : kept[static_cast<std::size_t>(nb)];
    }
  }
  hull_ = detail::ChainHull(std::move(hullEdges));
  return inserter.TakeInputNumbers();
}

void CTriangulate::FillCorners(const std::vector<std::int32_t>& input) {
  // Corners are read from a copy of the points in working order, which triangles near
  // each other in the list visit together; then the vertices take their input numbers.
  const std::size_t n = pointX_.size();
  std::vector<double> local(3 * n);
  for (std::size_t p = 0; p < n; ++p) {
    const auto i = static_cast<std::size_t>(input[p]);
    local[3 * p] = pointX_[i];
    local[3 * p + 1] = pointY_[i];
    local[3 * p + 2] = pointZ_[i];
  }
  const std::size_t corners = vertices_.size();
  cornerX_.resize(corners);
  cornerY_.resize(corners);
  cornerZ_.resize(corners);
  for (std::size_t c = 0; c < corners; ++c) {
    const auto p = static_cast<std::size_t>(vertices_[c]);
    cornerX_[c] = local[3 * p];
    cornerY_[c] = local[3 * p + 1];
    cornerZ_[c] = local[3 * p + 2];
    vertices_[c] = input[p];
  }
}

}  // namespace orvane::testing::baseline
