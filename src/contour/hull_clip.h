#pragma once

// Clipping fan triangles of the contour bands against a user hull, which may be concave.
// Internal header.

#include <memory>
#include <span>

#include "contourer.h"

namespace orvane {

class HullClipper {
 public:
  // The hull as a closed polygon (first vertex not repeated), in normalised units.
  HullClipper(std::span<const double> x, std::span<const double> y);
  ~HullClipper();
  HullClipper(const HullClipper&) = delete;
  HullClipper& operator=(const HullClipper&) = delete;

  // Appends the parts of triangle (x, y, z) inside the hull to band, as triangles whose Z
  // lies on the triangle's plane.
  void Clip(const double (&x)[3], const double (&y)[3], const double (&z)[3],
            BandTriangles& band) const;

 private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

// Splits a simple polygon (no repeated closing vertex) into triangles by ear clipping;
// appends index triples into the polygon to out.
void EarClip(std::span<const double> x, std::span<const double> y, std::vector<std::size_t>& out);

}  // namespace orvane
