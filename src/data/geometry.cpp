#include "geometry.h"

#include <algorithm>
#include <cmath>

namespace orvane::detail {

namespace {

double DistanceToSegment(double x, double y, double ax, double ay, double bx, double by) {
  const double dx = bx - ax;
  const double dy = by - ay;
  const double length2 = dx * dx + dy * dy;
  double t = 0.0;
  if (length2 > 0.0) t = std::clamp(((x - ax) * dx + (y - ay) * dy) / length2, 0.0, 1.0);
  return std::hypot(x - (ax + t * dx), y - (ay + t * dy));
}

}  // namespace

bool IsPointInPolygonInclusive(double x, double y, std::span<const double> px,
                               std::span<const double> py) {
  const std::size_t n = std::min(px.size(), py.size());
  if (n == 0) return false;
  bool inside = false;
  for (std::size_t i = 0, j = n - 1; i < n; j = i++) {
    if (DistanceToSegment(x, y, px[j], py[j], px[i], py[i]) <= kOnEdgeTolerance) return true;
    // Crossing number: count edges that straddle the horizontal through y to the right.
    if ((py[i] > y) != (py[j] > y)) {
      const double crossX = px[j] + (y - py[j]) * (px[i] - px[j]) / (py[i] - py[j]);
      if (x < crossX) inside = !inside;
    }
  }
  return inside;
}

}  // namespace orvane::detail
