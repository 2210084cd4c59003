#pragma once

// Outlines of filled contour bands. Internal header.
//
// A band is traced as triangles (nine doubles each: x, y, z of every corner, counter-
// clockwise). Its outline is the set of triangle edges used once: every edge shared by
// two triangles of the band cancels, the rest chain into closed rings. Outer rings run
// counter-clockwise and holes clockwise; each hole is given to the outer ring that
// encloses it most closely, so that every polygon is an outer ring and its holes.

#include <cstddef>
#include <span>
#include <vector>

namespace orvane {

struct BandOutline {
  std::vector<double> x, y;                // ring vertices, ring after ring; first not repeated
  std::vector<std::size_t> ringStarts;     // first vertex of each ring, then the vertex count
  std::vector<std::size_t> polygonStarts;  // first ring of each polygon, then the ring count;
                                           // a polygon's first ring is its outer ring

  std::size_t RingCount() const noexcept { return ringStarts.empty() ? 0 : ringStarts.size() - 1; }
  std::size_t PolygonCount() const noexcept { return polygonStarts.empty() ? 0 : polygonStarts.size() - 1; }
  // Twice the signed area of ring r (positive counter-clockwise).
  double TwiceSignedArea(std::size_t r) const;
};

// Merges a band's triangles into its outline. Corners that coincide within the point
// tolerance are one vertex; rings of no width (collapsed slivers) are left out.
BandOutline OutlineBand(std::span<const double> triangles);

}  // namespace orvane
