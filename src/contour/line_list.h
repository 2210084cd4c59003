#pragma once

// CLine and CLineList: line segments and their chaining into polylines. Internal header.

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

namespace orvane {

// One segment from (x1, y1, z1) to (x2, y2, z2).
struct CLine {
  double x1, y1, z1, x2, y2, z2;
  friend bool operator==(const CLine&, const CLine&) = default;
};

// Two points coincide when X, Y and Z each differ by less than this (absolute).
inline constexpr double kPointTolerance = 2.2204460492503102e-14;

// An ordered list of segments. After Chain, consecutive segments form polylines and
// PolylineStarts() tells where each polyline begins.
class CLineList {
 public:
  void Append(const CLine& line) { lines_.push_back(line); }
  // Appends the segments of another list (unchained).
  void Append(const CLineList& other) { lines_.insert(lines_.end(), other.lines_.begin(), other.lines_.end()); }
  std::size_t Count() const noexcept { return lines_.size(); }
  const CLine& Item(std::size_t i) const { return lines_[i]; }
  void Remove(std::size_t i) { lines_.erase(lines_.begin() + static_cast<std::ptrdiff_t>(i)); }
  void Clear() noexcept {
    lines_.clear();
    starts_.clear();
  }
  const std::vector<CLine>& Lines() const noexcept { return lines_; }
  // Index of the first segment of each polyline (empty until chained).
  const std::vector<std::int32_t>& PolylineStarts() const noexcept { return starts_; }

  // The segments in polyline order. A polyline starts with the first segment left over;
  // each step takes the first remaining segment (in list order) that touches the
  // polyline's end (at its first, then its second point) or its start (at its second,
  // then its first point), turned round as the join needs. Near-linear: the points that
  // coincide with each end point are found once, up front, through a sorted grid.
  CLineList Chain() const;
  // Chain() of every list, the lists shared among up to detail::ThreadCount() threads.
  static std::vector<CLineList> ChainAll(const std::vector<CLineList>& lists);

  // Removes, before chaining, every segment that comes twice (the same two end points
  // exactly, either way round): a level lying along an edge with ground below it on both
  // sides, which is no boundary of the region above the level. Keeps the others' order.
  void DropDoubled();

  // Builds a chained list from its parts (used by Chain and by the tests' reference).
  static CLineList FromPolylines(std::vector<CLine> lines, std::vector<std::int32_t> starts);

 private:
  std::vector<CLine> lines_;
  std::vector<std::int32_t> starts_;
};

// Points sorted into square cells much wider than the point tolerance, so that a point's
// window of coincidence nearly always lies in its own cell (one look-up), yet far finer
// than real point spacing, and coarse enough that the cell numbers fit 62 bits. Finding
// the points that coincide with one is a look at the cells its window touches.
class CoincidenceGrid {
 public:
  struct Entry {
    std::int64_t cx, cy;
    std::uint32_t id;
    bool operator<(const Entry& o) const {
      return cx != o.cx ? cx < o.cx : (cy != o.cy ? cy < o.cy : id < o.id);
    }
  };

  // Points 0..n-1, point(i) giving {x, y}; largest is the largest |x| or |y| among them.
  template <class Point>
  CoincidenceGrid(std::size_t n, double largest, Point point)
      : cell_(std::max(1024.0 * kPointTolerance, largest * 0x1.0p-60)), entries_(n) {
    for (std::size_t i = 0; i < n; ++i) {
      const auto [x, y] = point(i);
      entries_[i] = {Key(x), Key(y), static_cast<std::uint32_t>(i)};
    }
    std::sort(entries_.begin(), entries_.end());
  }

  std::int64_t Key(double v) const { return static_cast<std::int64_t>(std::floor(v / cell_)); }
  // The entries, sorted by cell and then by point number.
  const std::vector<Entry>& Entries() const noexcept { return entries_; }
  // The first entry of cell (cx, cy), or the end when the cell is empty.
  std::vector<Entry>::const_iterator Find(std::int64_t cx, std::int64_t cy) const {
    return std::lower_bound(entries_.begin(), entries_.end(), Entry{cx, cy, 0});
  }

 private:
  double cell_;
  std::vector<Entry> entries_;
};

// True when the two points coincide within kPointTolerance on every axis.
inline bool Coincide(double ax, double ay, double az, double bx, double by, double bz) {
  const auto close = [](double a, double b) { return (a > b ? a - b : b - a) < kPointTolerance; };
  return close(ax, bx) && close(ay, by) && close(az, bz);
}

}  // namespace orvane
