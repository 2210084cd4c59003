#pragma once

// Natural-neighbour interpolation of scattered points. Internal header.
//
// Geometry. The points are taken into the unit square of their own limits (each axis
// divided by its range, as the plot shows them), stretched by MagX and MagY, with exact
// duplicates merged into one point carrying the mean of their Z values. They are
// triangulated by CTriangulate, the hull is made convex and the mesh is made Delaunay
// for these exact coordinates by edge flips.
//
// Linear mode (Sibson). Inserting a point p into the Voronoi diagram gives p a cell made
// of pieces taken from the cells of its natural neighbours; the neighbour n's
// coordinate is lambda_n = area taken from n / area of p's cell, and the value is
// Z0 = sum lambda_n z_n. The pieces are summed triangle by triangle over the triangles
// whose circumcircle holds p, so no polygon has to be ordered.
//
// Gradient mode (Sibson's C1 blend). Each data point n gets a gradient g_n, the weighted
// least-squares plane through its Delaunay neighbours (weights 1 / distance^2). With
// r_n = |p - x_n| and the linear prediction xi_n = z_n + g_n . (p - x_n):
//   xi    = sum (lambda_n / r_n) xi_n / sum (lambda_n / r_n)
//   alpha = sum (lambda_n r_n) / sum (lambda_n / r_n)
//   beta  = sum lambda_n r_n^2
//   Z1    = (T alpha Z0 + beta xi) / (T alpha + beta),   T = Taughtness (BI)
// T = 1 is Sibson's C1 interpolant; as T grows the surface is pulled toward Z0, and
// T = 0 gives xi alone. At a data point the value is z_n and the slope is g_n for any T.
//
// On and outside the hull. On a hull edge from a to b, at p = (1 - t) a + t b, the
// coordinates are 1 - t and t (the limit of the Sibson coordinates from inside). Outside,
// p takes the value at its nearest hull point q plus the slope there times the step:
// Z(q) + ((1 - t) g_a + t g_b) . (p - q), which is continuous and extends linear data
// exactly. With extrapolation off, points outside take the null value instead.

#include <cstdint>
#include <span>
#include <vector>

#include "interpolator.h"

namespace orvane {
namespace detail {

struct NaturalNeighbourOptions {
  bool gradients = false;     // Sibson's C1 blend rather than the linear form
  double tautness = 1.0;      // T above
  bool extrapolate = true;    // beyond the hull: extrapolate, or give nullValue
  double nullValue = 0.0;
  bool nonNegative = false;   // negative values become 0
  bool clipToFloor = false;   // values below floor become floor
  double floor = 0.0;
};

class NaturalNeighbour {
 public:
  // Builds the mesh and the gradients of the points (data units). Fewer than three
  // distinct points, or points all on one line, raise error 5 (source "Orvada.NNGridR").
  NaturalNeighbour(std::span<const double> x, std::span<const double> y,
                   std::span<const double> z, double magX = 1.0, double magY = 1.0);

  // Where a query walk starts and its scratch space; one per thread.
  struct Cursor {
    std::int32_t triangle = 0;
    std::uint32_t stamp = 0;
    std::vector<std::uint32_t> triangleMark;  // == stamp: in the current cavity
    std::vector<std::int32_t> cavity, stack;
    std::vector<std::int32_t> slotOf;         // point -> slot in the neighbour list
    std::vector<std::uint32_t> pointMark;
    std::vector<std::int32_t> neighbours;
    std::vector<double> weights;
  };

  // The value at (x, y) in data units.
  double ValueAt(double x, double y, const NaturalNeighbourOptions& options, Cursor& cursor) const;
  // The Sibson coordinates at (x, y): the merged points' numbers and their weights
  // (summing to 1). False outside the hull or on it.
  bool Coordinates(double x, double y, std::vector<std::int32_t>& points,
                   std::vector<double>& weights) const;
  // The grid values (X index outer) at gridX x gridY, computed in parallel.
  std::vector<double> Grid(const std::vector<double>& gridX, const std::vector<double>& gridY,
                           const NaturalNeighbourOptions& options, RunProgress& progress) const;

  // The number of points after duplicates merged.
  std::int32_t PointCount() const noexcept { return static_cast<std::int32_t>(px_.size()); }
  // True when every triangle's circumcircle holds no other point (checked by brute force).
  bool IsDelaunay() const;

 private:
  struct Location {
    enum Kind { kInside, kOnVertex, kOnHullEdge, kOutside } kind;
    std::int32_t triangle;  // kInside: the holder
    std::int32_t a, b;      // kOnVertex: a; hull edge or nearest hull point: a, b
    double t;               // position along a -> b
  };

  void MakeHullConvex();
  void MakeDelaunay();
  void ComputeCircles();
  void ComputeGradients();
  double Orient(std::int32_t a, std::int32_t b, double x, double y) const;
  Location Locate(double x, double y, Cursor& cursor) const;
  Location NearestOnHull(double x, double y) const;
  // Squared distance from (x, y) to segment a-b; t receives the nearest point's position.
  double DistanceToSegment(std::int32_t a, std::int32_t b, double x, double y, double& t) const;
  // The Sibson coordinates of the point inside triangle `start` into cursor.neighbours
  // and cursor.weights.
  void Sibson(double x, double y, std::int32_t start, Cursor& cursor) const;
  // Z0 or Sibson's C1 blend for the coordinates in the cursor.
  double Blend(double x, double y, const NaturalNeighbourOptions& options, const Cursor& cursor) const;
  double OnEdge(double x, double y, std::int32_t a, std::int32_t b, double t,
                const NaturalNeighbourOptions& options, Cursor& cursor) const;
  void Prepare(Cursor& cursor) const;

  double xMin_ = 0.0, yMin_ = 0.0, xScale_ = 1.0, yScale_ = 1.0;
  std::vector<double> px_, py_, pz_;  // merged working points
  std::vector<double> gx_, gy_;       // gradients per point
  std::vector<std::int32_t> tri_;     // three points per triangle, counter-clockwise
  std::vector<std::int32_t> nb_;      // neighbour across (v0 v1), (v1 v2), (v2 v0); -1 on the hull
  std::vector<double> cx_, cy_, r2_;  // circumcircles
  std::vector<std::int32_t> hull_;    // counter-clockwise
  std::vector<std::int32_t> hullPosition_;  // point -> index in hull_, or -1
};

}  // namespace detail
}  // namespace orvane
