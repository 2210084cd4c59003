#pragma once

// CLine and CLineList: line segments and their chaining into polylines. Internal header.

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

  // Builds a chained list from its parts (used by Chain and by the tests' reference).
  static CLineList FromPolylines(std::vector<CLine> lines, std::vector<std::int32_t> starts);

 private:
  std::vector<CLine> lines_;
  std::vector<std::int32_t> starts_;
};

// True when the two points coincide within kPointTolerance on every axis.
inline bool Coincide(double ax, double ay, double az, double bx, double by, double bz) {
  const auto close = [](double a, double b) { return (a > b ? a - b : b - a) < kPointTolerance; };
  return close(ax, bx) && close(ay, by) && close(az, bz);
}

}  // namespace orvane
