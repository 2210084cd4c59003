// Merging a band's triangles into outline rings.
//
// 1. Corners are welded: a sort on grid cells much wider than the point tolerance finds
//    the corners that coincide, and each group becomes one vertex.
// 2. Each triangle contributes its three directed edges. An edge and its reverse cancel
//    (they are shared by two triangles of the band), so what is left is the boundary,
//    with the band on its left.
// 3. The boundary edges chain into rings. Where several rings meet at a vertex, the walk
//    keeps to the sector of band it came along: it leaves by the first edge clockwise
//    from the one it arrived by.
// 4. A ring that still passes a vertex twice (a hole touching its outer ring, say) is
//    split there, so that every ring is simple; rings of no width are dropped. Counter-
//    clockwise rings are outer rings, clockwise ones holes.
// 5. Each hole belongs to the outer ring of the band just below its lowest vertex: the
//    first ring edge straight below it is either that outer ring's or another hole's of
//    the same polygon. Edges are bucketed by X columns for that search.

#include "band_outline.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <numbers>
#include <numeric>
#include <tuple>

#include "line_list.h"
#include "orvane/core/error.h"

namespace orvane {

namespace {

constexpr std::uint32_t kNone = std::numeric_limits<std::uint32_t>::max();

// Union-find over corner numbers; a group's root is its lowest member.
class Groups {
 public:
  explicit Groups(std::size_t n) : parent_(n) { std::iota(parent_.begin(), parent_.end(), 0u); }
  std::uint32_t Find(std::uint32_t a) {
    while (parent_[a] != a) {
      parent_[a] = parent_[parent_[a]];
      a = parent_[a];
    }
    return a;
  }
  void Join(std::uint32_t a, std::uint32_t b) {
    a = Find(a);
    b = Find(b);
    if (a != b) parent_[std::max(a, b)] = std::min(a, b);
  }

 private:
  std::vector<std::uint32_t> parent_;
};

struct Welded {
  std::vector<std::uint32_t> vertexOf;  // per corner
  std::vector<double> x, y;             // per vertex
};

Welded Weld(std::span<const double> t) {
  const std::size_t n = t.size() / 9 * 3;
  if (n >= std::size_t{1} << 31) throw Error(7, "Orvada", "The band has too many triangles to outline.");
  double largest = 0.0;
  for (std::size_t c = 0; c < n; ++c) largest = std::max({largest, std::fabs(t[3 * c]), std::fabs(t[3 * c + 1])});
  const CoincidenceGrid grid(n, largest, [&](std::size_t c) { return std::pair{t[3 * c], t[3 * c + 1]}; });
  const auto& entries = grid.Entries();
  auto key = [&grid](double v) { return grid.Key(v); };

  Groups groups(n);
  auto coincide = [&](std::uint32_t a, std::uint32_t b) {
    return std::fabs(t[3 * a] - t[3 * b]) < kPointTolerance && std::fabs(t[3 * a + 1] - t[3 * b + 1]) < kPointTolerance;
  };
  for (std::size_t i = 0; i < n;) {
    std::size_t j = i + 1;
    while (j < n && entries[j].cx == entries[i].cx && entries[j].cy == entries[i].cy) ++j;
    for (std::size_t a = i; a < j; ++a) {
      const std::uint32_t p = entries[a].id;
      for (std::size_t b = a + 1; b < j; ++b) {
        if (coincide(p, entries[b].id)) groups.Join(p, entries[b].id);
      }
      // Neighbouring cells within the tolerance, each pair looked at from the lower cell.
      const double px = t[3 * p], py = t[3 * p + 1];
      for (std::int64_t cx = key(px - kPointTolerance); cx <= key(px + kPointTolerance); ++cx) {
        for (std::int64_t cy = key(py - kPointTolerance); cy <= key(py + kPointTolerance); ++cy) {
          if (std::tie(cx, cy) <= std::tie(entries[i].cx, entries[i].cy)) continue;
          auto it = grid.Find(cx, cy);
          for (; it != entries.end() && it->cx == cx && it->cy == cy; ++it) {
            if (coincide(p, it->id)) groups.Join(p, it->id);
          }
        }
      }
    }
    i = j;
  }

  Welded w;
  w.vertexOf.assign(n, kNone);
  for (std::uint32_t c = 0; c < n; ++c) {
    const std::uint32_t root = groups.Find(c);
    if (w.vertexOf[root] == kNone) {
      w.vertexOf[root] = static_cast<std::uint32_t>(w.x.size());
      w.x.push_back(t[3 * root]);
      w.y.push_back(t[3 * root + 1]);
    }
    w.vertexOf[c] = w.vertexOf[root];
  }
  return w;
}

struct Edge {
  std::uint32_t from, to;
};

// The directed edges used once: each edge less its reverses.
std::vector<Edge> BoundaryEdges(const std::vector<std::uint32_t>& vertexOf) {
  // Key: lower vertex, higher vertex, then 1 when the edge runs from lower to higher.
  std::vector<std::uint64_t> keys;
  keys.reserve(vertexOf.size());
  for (std::size_t c = 0; c + 2 < vertexOf.size(); c += 3) {
    for (int k = 0; k < 3; ++k) {
      const std::uint32_t a = vertexOf[c + static_cast<std::size_t>(k)];
      const std::uint32_t b = vertexOf[c + static_cast<std::size_t>((k + 1) % 3)];
      if (a == b) continue;
      const std::uint64_t lo = std::min(a, b), hi = std::max(a, b);
      keys.push_back(lo << 32 | hi << 1 | (a < b ? 1u : 0u));
    }
  }
  std::sort(keys.begin(), keys.end());
  std::vector<Edge> edges;
  for (std::size_t i = 0; i < keys.size();) {
    std::size_t j = i;
    std::int64_t net = 0;
    for (; j < keys.size() && keys[j] >> 1 == keys[i] >> 1; ++j) net += (keys[j] & 1u) != 0 ? 1 : -1;
    const auto lo = static_cast<std::uint32_t>(keys[i] >> 32);
    const auto hi = static_cast<std::uint32_t>((keys[i] >> 1) & 0x7fffffffu);
    for (; net > 0; --net) edges.push_back({lo, hi});
    for (; net < 0; ++net) edges.push_back({hi, lo});
    i = j;
  }
  return edges;
}

double TwiceArea(std::span<const double> x, std::span<const double> y) {
  // About the first vertex, for accuracy far from the origin.
  double sum = 0.0;
  for (std::size_t i = 1; i + 1 < x.size(); ++i) {
    sum += (x[i] - x[0]) * (y[i + 1] - y[0]) - (x[i + 1] - x[0]) * (y[i] - y[0]);
  }
  return sum;
}

struct Ring {
  std::vector<std::uint32_t> vertices;
  double twiceArea;
};

class RingBuilder {
 public:
  RingBuilder(const Welded& w, std::vector<Edge> edges) : w_(w), edges_(std::move(edges)) {
    std::sort(edges_.begin(), edges_.end(),
              [](const Edge& a, const Edge& b) { return std::tie(a.from, a.to) < std::tie(b.from, b.to); });
    first_.assign(w.x.size() + 1, 0);
    for (const Edge& e : edges_) ++first_[e.from + 1];
    for (std::size_t v = 0; v < w.x.size(); ++v) first_[v + 1] += first_[v];
    used_.assign(edges_.size(), false);
    where_.assign(w.x.size(), kNone);
  }

  std::vector<Ring> Build() {
    std::vector<Ring> rings;
    std::vector<std::uint32_t> walk;
    for (std::size_t e0 = 0; e0 < edges_.size(); ++e0) {
      if (used_[e0]) continue;
      walk.clear();
      const std::uint32_t start = edges_[e0].from;
      walk.push_back(start);
      used_[e0] = true;
      std::size_t current = e0;
      bool closed = false;
      while (true) {
        const std::uint32_t v = edges_[current].to;
        if (v == start) {
          closed = true;
          break;
        }
        walk.push_back(v);
        const std::size_t next = NextEdge(current);
        if (next == edges_.size()) break;  // an open end: never from a consistent band
        used_[next] = true;
        current = next;
      }
      if (closed) Split(walk, rings);
    }
    return rings;
  }

 private:
  // The unused edge leaving the end of edge `in`: the first clockwise from `in` reversed.
  std::size_t NextEdge(std::size_t in) {
    const std::uint32_t v = edges_[in].to;
    std::size_t best = edges_.size();
    std::size_t candidates = 0;
    for (std::uint32_t k = first_[v]; k < first_[v + 1]; ++k) {
      if (!used_[k]) {
        best = k;
        ++candidates;
      }
    }
    if (candidates < 2) return best;
    const double rx = w_.x[edges_[in].from] - w_.x[v];
    const double ry = w_.y[edges_[in].from] - w_.y[v];
    double bestAngle = 0.0;
    best = edges_.size();
    for (std::uint32_t k = first_[v]; k < first_[v + 1]; ++k) {
      if (used_[k]) continue;
      const double cx = w_.x[edges_[k].to] - w_.x[v];
      const double cy = w_.y[edges_[k].to] - w_.y[v];
      // Clockwise angle from r to c, in (0, 2 pi].
      double angle = -std::atan2(rx * cy - ry * cx, rx * cx + ry * cy);
      if (angle <= 0.0) angle += 2.0 * std::numbers::pi;
      if (best == edges_.size() || angle < bestAngle) {
        best = k;
        bestAngle = angle;
      }
    }
    return best;
  }

  // Splits a closed walk into simple rings wherever it passes a vertex again.
  void Split(const std::vector<std::uint32_t>& walk, std::vector<Ring>& rings) {
    std::vector<std::uint32_t>& stack = stack_;
    stack.clear();
    for (std::uint32_t v : walk) {
      if (where_[v] != kNone) {
        const std::size_t at = where_[v];
        Emit(std::span<const std::uint32_t>(stack).subspan(at), rings);
        for (std::size_t i = at + 1; i < stack.size(); ++i) where_[stack[i]] = kNone;
        stack.resize(at + 1);
      } else {
        where_[v] = static_cast<std::uint32_t>(stack.size());
        stack.push_back(v);
      }
    }
    Emit(stack, rings);
    for (std::uint32_t v : stack) where_[v] = kNone;
  }

  void Emit(std::span<const std::uint32_t> loop, std::vector<Ring>& rings) {
    if (loop.size() < 3) return;
    xs_.clear();
    ys_.clear();
    double perimeter = 0.0;
    for (std::size_t i = 0; i < loop.size(); ++i) {
      xs_.push_back(w_.x[loop[i]]);
      ys_.push_back(w_.y[loop[i]]);
      const std::uint32_t next = loop[(i + 1) % loop.size()];
      perimeter += std::hypot(w_.x[next] - w_.x[loop[i]], w_.y[next] - w_.y[loop[i]]);
    }
    const double twiceArea = TwiceArea(xs_, ys_);
    // No wider than the point tolerance anywhere: a collapsed sliver, not a ring.
    if (std::fabs(twiceArea) <= kPointTolerance * perimeter) return;
    rings.push_back({std::vector<std::uint32_t>(loop.begin(), loop.end()), twiceArea});
  }

  const Welded& w_;
  std::vector<Edge> edges_;
  std::vector<std::uint32_t> first_;
  std::vector<bool> used_;
  std::vector<std::uint32_t> where_;
  std::vector<std::uint32_t> stack_;
  std::vector<double> xs_, ys_;
};

// For each hole, the outer ring it belongs to (kNone when none lies below it).
std::vector<std::uint32_t> AssignHoles(const Welded& w, const std::vector<Ring>& rings) {
  std::vector<std::uint32_t> owner(rings.size(), kNone);
  std::vector<std::uint32_t> holes;
  for (std::uint32_t r = 0; r < rings.size(); ++r) {
    if (rings[r].twiceArea > 0) {
      owner[r] = r;
    } else {
      holes.push_back(r);
    }
  }
  if (holes.empty()) return owner;

  // Every ring edge, bucketed by the X columns its half-open span [xmin, xmax) covers.
  struct RingEdge {
    std::uint32_t ring, a, b;
  };
  std::vector<RingEdge> all;
  double x0 = std::numeric_limits<double>::infinity(), x1 = -x0;
  for (std::uint32_t r = 0; r < rings.size(); ++r) {
    const auto& v = rings[r].vertices;
    for (std::size_t i = 0; i < v.size(); ++i) {
      const std::uint32_t a = v[i], b = v[(i + 1) % v.size()];
      if (w.x[a] == w.x[b]) continue;  // vertical: never straight below a point
      all.push_back({r, a, b});
      x0 = std::min(x0, w.x[a]);
      x1 = std::max(x1, w.x[a]);
    }
  }
  const std::size_t columns = std::clamp<std::size_t>(static_cast<std::size_t>(std::sqrt(static_cast<double>(all.size()))), 1, 1 << 16);
  const double width = (x1 - x0) / static_cast<double>(columns);
  auto column = [&](double x) {
    if (!(width > 0)) return std::size_t{0};
    const double c = std::floor((x - x0) / width);
    return static_cast<std::size_t>(std::clamp(c, 0.0, static_cast<double>(columns - 1)));
  };
  std::vector<std::uint32_t> start(columns + 1, 0);
  for (const RingEdge& e : all) {
    for (std::size_t c = column(std::min(w.x[e.a], w.x[e.b])); c <= column(std::max(w.x[e.a], w.x[e.b])); ++c) ++start[c + 1];
  }
  for (std::size_t c = 0; c < columns; ++c) start[c + 1] += start[c];
  std::vector<std::uint32_t> bucket(start.back());
  {
    std::vector<std::uint32_t> fill(start.begin(), start.end() - 1);
    for (std::uint32_t i = 0; i < all.size(); ++i) {
      const RingEdge& e = all[i];
      for (std::size_t c = column(std::min(w.x[e.a], w.x[e.b])); c <= column(std::max(w.x[e.a], w.x[e.b])); ++c) {
        bucket[fill[c]++] = i;
      }
    }
  }

  // Holes from the lowest up, so that a hole below is settled before the ones above it.
  auto lowest = [&](std::uint32_t r) {
    std::uint32_t best = rings[r].vertices[0];
    for (std::uint32_t v : rings[r].vertices) {
      if (std::tie(w.y[v], w.x[v]) < std::tie(w.y[best], w.x[best])) best = v;
    }
    return best;
  };
  std::vector<std::pair<std::uint32_t, std::uint32_t>> order;  // (lowest vertex, hole)
  for (std::uint32_t h : holes) order.emplace_back(lowest(h), h);
  std::sort(order.begin(), order.end(), [&](const auto& p, const auto& q) {
    return std::tie(w.y[p.first], w.x[p.first], p.second) < std::tie(w.y[q.first], w.x[q.first], q.second);
  });
  for (const auto& [v, h] : order) {
    const double px = w.x[v], py = w.y[v];
    std::uint32_t below = kNone;
    double belowY = -std::numeric_limits<double>::infinity();
    const std::size_t c = column(px);
    for (std::uint32_t k = start[c]; k < start[c + 1]; ++k) {
      const RingEdge& e = all[bucket[k]];
      if (e.ring == h) continue;
      const double ax = w.x[e.a], bx = w.x[e.b];
      if (!(std::min(ax, bx) <= px && px < std::max(ax, bx))) continue;
      const double y = e.a == v || e.b == v ? py
                                            : w.y[e.a] + (w.y[e.b] - w.y[e.a]) * ((px - ax) / (bx - ax));
      if (y > py || y < belowY) continue;
      // At equal heights prefer an edge with the band above it (running towards +X).
      if (y == belowY && below != kNone && !(bx > ax)) continue;
      below = e.ring;
      belowY = y;
    }
    if (below != kNone) owner[h] = owner[below];
  }
  return owner;
}

}  // namespace

double BandOutline::TwiceSignedArea(std::size_t r) const {
  const std::size_t a = ringStarts[r], b = ringStarts[r + 1];
  return TwiceArea(std::span<const double>(x).subspan(a, b - a), std::span<const double>(y).subspan(a, b - a));
}

BandOutline OutlineBand(std::span<const double> triangles) {
  BandOutline out;
  out.ringStarts.push_back(0);
  out.polygonStarts.push_back(0);
  if (triangles.size() < 9) return out;
  const Welded w = Weld(triangles);
  std::vector<Ring> rings;
  {
    RingBuilder builder(w, BoundaryEdges(w.vertexOf));
    rings = builder.Build();
  }
  const std::vector<std::uint32_t> owner = AssignHoles(w, rings);
  // Holes grouped after their outer ring, both in the order they were found.
  std::vector<std::vector<std::uint32_t>> holesOf(rings.size());
  for (std::uint32_t r = 0; r < rings.size(); ++r) {
    if (rings[r].twiceArea < 0 && owner[r] != kNone) holesOf[owner[r]].push_back(r);
  }
  auto append = [&](std::uint32_t r) {
    for (std::uint32_t v : rings[r].vertices) {
      out.x.push_back(w.x[v]);
      out.y.push_back(w.y[v]);
    }
    out.ringStarts.push_back(out.x.size());
  };
  for (std::uint32_t r = 0; r < rings.size(); ++r) {
    if (rings[r].twiceArea <= 0) continue;
    append(r);
    for (std::uint32_t h : holesOf[r]) append(h);
    out.polygonStarts.push_back(out.ringStarts.size() - 1);
  }
  return out;
}

}  // namespace orvane
