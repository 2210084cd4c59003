#pragma once

// Planar geometry shared by the data sets and the renderer. Internal header.

#include <span>

namespace orvane::detail {

// Distance below which a point counts as lying on a polygon's edge (normalised units).
inline constexpr double kOnEdgeTolerance = 2.2204460492503102e-14;

// True when (x, y) lies inside the closed polygon (px, py), or on one of its edges or
// vertices (within kOnEdgeTolerance); otherwise the crossing number decides. The polygon
// is given without repeating its first vertex; fewer than one vertex holds nothing.
bool IsPointInPolygonInclusive(double x, double y, std::span<const double> px,
                               std::span<const double> py);

}  // namespace orvane::detail
