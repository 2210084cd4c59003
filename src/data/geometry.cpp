#include "geometry.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

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

void ConvexHull(std::span<const double> x, std::span<const double> y, std::vector<double>& hx,
                std::vector<double>& hy) {
  hx.clear();
  hy.clear();
  const std::size_t count = std::min(x.size(), y.size());
  if (count == 0) return;
  std::vector<std::pair<double, double>> p;
  p.reserve(count);
  for (std::size_t i = 0; i < count; ++i) p.emplace_back(x[i], y[i]);
  std::sort(p.begin(), p.end());
  p.erase(std::unique(p.begin(), p.end()), p.end());
  const auto turn = [](const auto& o, const auto& a, const auto& b) {
    return (a.first - o.first) * (b.second - o.second) - (a.second - o.second) * (b.first - o.first);
  };
  // Andrew's monotone chain: the lower chain left to right, the upper one back.
  std::vector<std::pair<double, double>> h(2 * p.size());
  std::size_t k = 0;
  for (std::size_t i = 0; i < p.size(); ++i) {
    while (k >= 2 && turn(h[k - 2], h[k - 1], p[i]) <= 0) --k;
    h[k++] = p[i];
  }
  for (std::size_t i = p.size() - 1, lower = k + 1; i-- > 0;) {
    while (k >= lower && turn(h[k - 2], h[k - 1], p[i]) <= 0) --k;
    h[k++] = p[i];
  }
  h.resize(p.size() > 1 ? k - 1 : p.size());
  for (const auto& v : h) {
    hx.push_back(v.first);
    hy.push_back(v.second);
  }
}

void BlankOutside(std::span<const double> hx, std::span<const double> hy, std::span<const double> gx,
                  std::span<const double> gy, std::vector<double>& z) {
  if (gx.empty() || gy.empty()) return;
  const auto span = [](std::span<const double> v) {
    return v.empty() ? 0.0 : *std::max_element(v.begin(), v.end()) - *std::min_element(v.begin(), v.end());
  };
  const double tolerance = 1e-12 * std::max({span(gx), span(gy), span(hx), span(hy)});
  const std::size_t n = std::min(hx.size(), hy.size()), ny = gy.size();
  for (std::size_t i = 0; i < gx.size(); ++i) {
    for (std::size_t j = 0; j < ny; ++j) {
      const double x = gx[i], y = gy[j];
      bool inside = n > 0;
      if (n == 1) inside = std::hypot(x - hx[0], y - hy[0]) <= tolerance;
      for (std::size_t e = 0; inside && n > 1 && e < n; ++e) {
        const std::size_t f = (e + 1) % n;
        if (n == 2 && e == 1) break;  // a segment: one edge, and its ends
        const double ex = hx[f] - hx[e], ey = hy[f] - hy[e];
        const double length = std::hypot(ex, ey);
        const double side = (ex * (y - hy[e]) - ey * (x - hx[e])) / length;  // left of the edge: positive
        inside = n == 2 ? std::fabs(side) <= tolerance && (x - hx[e]) * ex + (y - hy[e]) * ey >= -tolerance * length &&
                              (x - hx[f]) * ex + (y - hy[f]) * ey <= tolerance * length
                        : side >= -tolerance;
      }
      if (!inside) z[i * ny + j] = std::numeric_limits<double>::quiet_NaN();
    }
  }
}

}  // namespace orvane::detail
