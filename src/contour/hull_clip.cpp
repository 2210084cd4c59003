// Clipping band triangles against the user hull: Boost.Geometry intersects the triangle
// with the hull polygon, and each piece (concave where the hull is) is ear-clipped back
// into triangles, their Z taken from the original triangle's plane.

#include "hull_clip.h"

#include <algorithm>
#include <cmath>

#include <boost/geometry.hpp>
#include <boost/geometry/geometries/point_xy.hpp>
#include <boost/geometry/geometries/polygon.hpp>

namespace orvane {

namespace bg = boost::geometry;
using BPoint = bg::model::d2::point_xy<double>;
using BPolygon = bg::model::polygon<BPoint>;
using BMultiPolygon = bg::model::multi_polygon<BPolygon>;
using BBox = bg::model::box<BPoint>;

struct HullClipper::Impl {
  BPolygon hull;
  BBox bounds;
};

HullClipper::HullClipper(std::span<const double> x, std::span<const double> y)
    : impl_(std::make_unique<Impl>()) {
  const std::size_t n = std::min(x.size(), y.size());
  for (std::size_t i = 0; i < n; ++i) bg::append(impl_->hull.outer(), BPoint(x[i], y[i]));
  bg::correct(impl_->hull);  // closes the ring and fixes its orientation
  bg::envelope(impl_->hull, impl_->bounds);
}

HullClipper::~HullClipper() = default;

namespace {

double Cross(double ax, double ay, double bx, double by, double cx, double cy) {
  return (bx - ax) * (cy - ay) - (by - ay) * (cx - ax);
}

// Z at (px, py) on the plane of the triangle (the mean when it has no area).
double PlaneZ(const double (&x)[3], const double (&y)[3], const double (&z)[3], double px, double py) {
  const double area = Cross(x[0], y[0], x[1], y[1], x[2], y[2]);
  if (area == 0.0) return (z[0] + z[1] + z[2]) / 3.0;
  const double w0 = Cross(x[1], y[1], x[2], y[2], px, py) / area;
  const double w1 = Cross(x[2], y[2], x[0], y[0], px, py) / area;
  const double w2 = Cross(x[0], y[0], x[1], y[1], px, py) / area;
  return w0 * z[0] + w1 * z[1] + w2 * z[2];
}

}  // namespace

void EarClip(std::span<const double> x, std::span<const double> y, std::vector<std::size_t>& out) {
  const std::size_t n = std::min(x.size(), y.size());
  if (n < 3) return;
  std::vector<std::size_t> ring(n);
  double twiceArea = 0;
  for (std::size_t i = 0; i < n; ++i) {
    ring[i] = i;
    twiceArea += x[i] * y[(i + 1) % n] - x[(i + 1) % n] * y[i];
  }
  if (twiceArea < 0) std::reverse(ring.begin(), ring.end());  // work counter-clockwise
  auto inside = [&](std::size_t p, std::size_t a, std::size_t b, std::size_t c) {
    return Cross(x[a], y[a], x[b], y[b], x[p], y[p]) >= 0 && Cross(x[b], y[b], x[c], y[c], x[p], y[p]) >= 0 &&
           Cross(x[c], y[c], x[a], y[a], x[p], y[p]) >= 0;
  };
  std::size_t guard = 0;
  while (ring.size() > 3 && guard < 2 * n * n) {
    bool clipped = false;
    for (std::size_t i = 0; i < ring.size() && !clipped; ++i, ++guard) {
      const std::size_t a = ring[(i + ring.size() - 1) % ring.size()];
      const std::size_t b = ring[i];
      const std::size_t c = ring[(i + 1) % ring.size()];
      if (Cross(x[a], y[a], x[b], y[b], x[c], y[c]) <= 0) continue;  // reflex or flat
      bool ear = true;
      for (std::size_t p : ring) {
        if (p != a && p != b && p != c && inside(p, a, b, c)) {
          ear = false;
          break;
        }
      }
      if (!ear) continue;
      out.insert(out.end(), {a, b, c});
      ring.erase(ring.begin() + static_cast<std::ptrdiff_t>(i));
      clipped = true;
    }
    if (!clipped) break;  // degenerate remains: nothing with area is left to cut
  }
  if (ring.size() == 3) out.insert(out.end(), {ring[0], ring[1], ring[2]});
}

void HullClipper::Clip(const double (&x)[3], const double (&y)[3], const double (&z)[3],
                       BandTriangles& band) const {
  BPolygon triangle;
  for (int k = 0; k < 3; ++k) bg::append(triangle.outer(), BPoint(x[k], y[k]));
  bg::correct(triangle);
  BBox box;
  bg::envelope(triangle, box);
  if (bg::disjoint(box, impl_->bounds)) return;
  if (bg::within(triangle, impl_->hull)) {
    band.insert(band.end(), {x[0], y[0], z[0], x[1], y[1], z[1], x[2], y[2], z[2]});
    return;
  }
  BMultiPolygon pieces;
  bg::intersection(triangle, impl_->hull, pieces);
  std::vector<double> px, py;
  std::vector<std::size_t> ears;
  for (const BPolygon& piece : pieces) {
    px.clear();
    py.clear();
    const auto& outer = piece.outer();
    for (std::size_t i = 0; i + 1 < outer.size(); ++i) {  // the ring repeats its first point
      px.push_back(outer[i].x());
      py.push_back(outer[i].y());
    }
    ears.clear();
    EarClip(px, py, ears);
    for (std::size_t e : ears) {
      band.insert(band.end(), {px[e], py[e], PlaneZ(x, y, z, px[e], py[e])});
    }
  }
}

}  // namespace orvane
