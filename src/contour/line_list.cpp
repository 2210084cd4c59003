// Chaining segments into polylines.
//
// The rule: start a polyline with the first remaining segment; repeatedly take the first
// remaining segment, in list order, that touches the polyline (tests in this order: the
// polyline's end against the segment's first point, then its second point; the
// polyline's start against the segment's second point, then its first point), turn it
// round where needed and attach it at that end; when none touches, start the next
// polyline. Done literally this is quadratic. Here every end point first learns which
// other end points coincide with it (a sort on grid cells at least the tolerance wide,
// then a look at the neighbouring cells), so a step only looks at the segments touching
// the polyline's two ends and takes the lowest-numbered one: the same choice, in time
// near-linear in the number of segments.

#include "line_list.h"

#include "core/parallel.h"

#include <algorithm>
#include <cmath>
#include <deque>
#include <limits>
#include <tuple>
#include <utility>

namespace orvane {

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

CLineList CLineList::FromPolylines(std::vector<CLine> lines, std::vector<std::int32_t> starts) {
  CLineList list;
  list.lines_ = std::move(lines);
  list.starts_ = std::move(starts);
  return list;
}

std::vector<CLineList> CLineList::ChainAll(const std::vector<CLineList>& lists) {
  std::vector<CLineList> chained(lists.size());
  detail::RunTasks(lists.size(), [&](std::size_t k) { chained[k] = lists[k].Chain(); });
  return chained;
}

CLineList CLineList::Chain() const {
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
  return FromPolylines(std::move(out), std::move(starts));
}

void CLineList::DropDoubled() {
  // Each segment's end points in a fixed order, sorted, so that doubles lie side by side.
  using Key = std::tuple<double, double, double, double>;
  auto key = [this](std::size_t i) {
    const CLine& l = lines_[i];
    const bool swap = std::pair{l.x2, l.y2} < std::pair{l.x1, l.y1};
    return swap ? Key{l.x2, l.y2, l.x1, l.y1} : Key{l.x1, l.y1, l.x2, l.y2};
  };
  std::vector<std::pair<Key, std::size_t>> order(lines_.size());
  for (std::size_t i = 0; i < lines_.size(); ++i) order[i] = {key(i), i};
  std::sort(order.begin(), order.end());
  std::vector<bool> drop(lines_.size(), false);
  for (std::size_t i = 0; i < order.size();) {
    std::size_t j = i + 1;
    while (j < order.size() && order[j].first == order[i].first) ++j;
    // An edge has two triangles, so a pair; should more come, pairs go and one stays.
    for (std::size_t k = i; k + 1 < j; k += 2) drop[order[k].second] = drop[order[k + 1].second] = true;
    i = j;
  }
  std::size_t kept = 0;
  for (std::size_t i = 0; i < lines_.size(); ++i) {
    if (!drop[i]) lines_[kept++] = lines_[i];
  }
  lines_.resize(kept);
  starts_.clear();
}

}  // namespace orvane
