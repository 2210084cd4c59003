#pragma once

// CContourer: contour segments and filled bands, triangle by triangle. Internal header.
//
// Boundaries b0 .. bn of a data set: b0 stands for minus infinity, bk (k >= 1) is level
// k - 1 in the data set's normalised Z, and the top of band n stands for plus infinity.
// Band k lies between bk and bk+1. Each triangle gives at most one segment per boundary
// (the case table below) and, per band it reaches, the convex polygon where it lies in
// the band, fanned into triangles.

#include <cstdint>
#include <functional>
#include <span>
#include <vector>

#include "line_list.h"

namespace orvane {

// Filled triangles of one band: nine doubles per triangle (x, y, z of each corner).
using BandTriangles = std::vector<double>;

// What tracing a mesh gives: the segments of each level (unchained) and the triangles
// of each band.
struct ContourTrace {
  std::vector<CLineList> levelLines;  // one per level (boundary k + 1)
  std::vector<BandTriangles> bands;   // one per band, n + 1 of them
};

// Clips one fan triangle against the hulls; appends what remains to the band.
using TriangleClip = std::function<void(const double (&x)[3], const double (&y)[3],
                                        const double (&z)[3], BandTriangles& band)>;

class CContourer {
 public:
  // Where a segment end lies on the triangle's perimeter: vertex i at i, a crossing on
  // side i-(i+1) at i + t (t from vertex i), so that sorting by it walks the boundary.
  struct Segment {
    CLine line;
    double position1, position2;
  };

  // The case for the signs (-1, 0, +1) of the three vertex heights against a level.
  static int Case(int s0, int s1, int s2);
  // The segment where the triangle crosses level z, if there is one. With tiesAbove a
  // height equal to z counts as above it (the segment may then have no length).
  static bool Trace(double z, const double (&x)[3], const double (&y)[3], const double (&zs)[3],
                    Segment& out, bool tiesAbove = false);

  // The boundaries for levels given in normalised Z (sorted ascending).
  static std::vector<double> Boundaries(std::span<const double> levels);

  // Traces triangleCount triangles; triangle(t, x, y, z) fills triangle t's corners.
  // clip, when set, takes each fan triangle instead of appending it to its band. Without
  // withBands only the lines are traced and every band is left empty. With tiesAbove a
  // height on a level counts as above it, and no segment of no length is kept.
  static ContourTrace TraceMesh(
      std::size_t triangleCount,
      const std::function<void(std::size_t, double (&)[3], double (&)[3], double (&)[3])>& triangle,
      std::span<const double> boundaries, const TriangleClip& clip = {}, bool withBands = true,
      bool tiesAbove = false);

  // The same over a regular grid (two triangles per cell, split from (i, j) to
  // (i + 1, j + 1)), with z[i * ny + j] at (x[i], y[j]); a specialised loop.
  static ContourTrace TraceGrid(std::span<const double> x, std::span<const double> y,
                                std::span<const double> z, std::span<const double> boundaries,
                                const TriangleClip& clip = {}, bool withBands = true,
                                bool tiesAbove = false);
};

}  // namespace orvane
