#include "data/reference_triangulate.h"

#include <algorithm>
#include <map>
#include <stdexcept>
#include <utility>

#include "data/triangulate.h"

namespace orvane::testing {

ReferenceMesh ReferenceTriangulate(std::span<const double> x, std::span<const double> y) {
  const auto n = static_cast<std::int32_t>(x.size());
  const detail::WorkPoints w = detail::PrepareWorkPoints(x, y);
  const std::size_t capacity = 4 * x.size() + 1;
  std::vector<std::array<std::int32_t, 3>> table(capacity);
  std::vector<detail::Circle> circles(capacity);
  std::vector<bool> live(capacity, false);
  std::vector<std::size_t> freeSlots;
  for (std::size_t s = capacity; s-- > 0;) freeSlots.push_back(s);  // slot 0 on top

  auto take = [&]() {
    if (freeSlots.empty()) throw std::runtime_error("triangle table full");
    const std::size_t s = freeSlots.back();
    freeSlots.pop_back();
    live[s] = true;
    return s;
  };
  const std::size_t first = take();
  table[first] = {n, n + 1, n + 2};
  circles[first] = detail::kSuperCircle;

  std::vector<std::pair<std::int32_t, std::int32_t>> edges;
  for (std::int32_t p = 0; p < n; ++p) {
    const double px = w.x[static_cast<std::size_t>(p)];
    const double py = w.y[static_cast<std::size_t>(p)];
    edges.clear();
    for (std::size_t t = 0; t < capacity; ++t) {
      if (!live[t] || !detail::InCircle(circles[t], px, py)) continue;
      live[t] = false;
      freeSlots.push_back(t);
      const auto& v = table[t];
      edges.emplace_back(v[0], v[1]);
      edges.emplace_back(v[1], v[2]);
      edges.emplace_back(v[2], v[0]);
    }
    std::map<std::pair<std::int32_t, std::int32_t>, int> uses;
    for (auto [a, b] : edges) ++uses[{std::min(a, b), std::max(a, b)}];
    for (auto [a, b] : edges) {
      if (uses[{std::min(a, b), std::max(a, b)}] != 1) continue;
      const std::size_t s = take();
      table[s] = {a, b, p};
      circles[s] = detail::CircleOf(w, a, b, p);
    }
  }

  ReferenceMesh mesh;
  std::vector<std::pair<std::int32_t, std::int32_t>> hullEdges;
  for (std::size_t t = 0; t < capacity; ++t) {
    if (!live[t]) continue;
    const auto& v = table[t];
    const int supers = (v[0] >= n) + (v[1] >= n) + (v[2] >= n);
    if (supers == 0) {
      auto sorted = v;
      std::sort(sorted.begin(), sorted.end());
      mesh.triangles.insert(sorted);
    } else if (supers == 1) {
      const int s = v[0] >= n ? 0 : (v[1] >= n ? 1 : 2);
      hullEdges.emplace_back(v[static_cast<std::size_t>((s + 2) % 3)],
                             v[static_cast<std::size_t>((s + 1) % 3)]);
    }
  }
  mesh.hull = detail::ChainHull(std::move(hullEdges));
  return mesh;
}

std::set<std::array<std::int32_t, 3>> TriangleSet(const std::vector<std::int32_t>& vertices) {
  std::set<std::array<std::int32_t, 3>> set;
  for (std::size_t i = 0; i + 2 < vertices.size(); i += 3) {
    std::array<std::int32_t, 3> t{vertices[i], vertices[i + 1], vertices[i + 2]};
    std::sort(t.begin(), t.end());
    set.insert(t);
  }
  return set;
}

}  // namespace orvane::testing
