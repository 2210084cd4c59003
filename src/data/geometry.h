#pragma once

// Planar geometry shared by the data sets and the renderer. Internal header.

#include <span>
#include <vector>

namespace orvane::detail {

// Distance below which a point counts as lying on a polygon's edge (normalised units).
inline constexpr double kOnEdgeTolerance = 2.2204460492503102e-14;

// True when (x, y) lies inside the closed polygon (px, py), or on one of its edges or
// vertices (within kOnEdgeTolerance); otherwise the crossing number decides. The polygon
// is given without repeating its first vertex; fewer than one vertex holds nothing.
bool IsPointInPolygonInclusive(double x, double y, std::span<const double> px,
                               std::span<const double> py);

// The convex hull of the points (x, y), counter-clockwise, its first vertex not repeated:
// one vertex for a single place, two for points on a line.
void ConvexHull(std::span<const double> x, std::span<const double> y, std::vector<double>& hx,
                std::vector<double>& hy);

// Blanks (sets to NaN) the grid values z (X index outer) at the nodes (gx[i], gy[j])
// outside the hull (hx, hy): a node must lie on the inner side of every hull edge, or
// within 1e-12 of the larger span of it. A hull of two vertices keeps the nodes on its
// segment, one vertex the node at its place.
void BlankOutside(std::span<const double> hx, std::span<const double> hy, std::span<const double> gx,
                  std::span<const double> gy, std::vector<double>& z);

}  // namespace orvane::detail
