#pragma once

// CTriangulate: Delaunay triangulation of a data set's scattered points.
// Internal header: no compatibility promise.

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "core/parallel.h"

namespace orvane {

namespace detail {

// Repeatable uniform numbers on [0, 1) for the jitter (SplitMix64). Reset() puts the
// generator into the same state at the start of every triangulation.
class JitterRandom {
 public:
  void Reset() noexcept { state_ = kSeed; }
  double Next() noexcept;
  // Moves on as if Next had been called draws times.
  void Skip(std::uint64_t draws) noexcept;

 private:
  static constexpr std::uint64_t kSeed = 0x0123456789ABCDEFull;
  static constexpr std::uint64_t kStep = 0x9E3779B97F4A7C15ull;
  std::uint64_t state_ = kSeed;
};

// The working points: the input jittered by at most half of 1/100000 of its range along
// each axis and renormalised by the unjittered limits, followed by the three corners of
// the super-triangle, (-1, -1), (5, -1) and (-1, 5), at indices n, n + 1 and n + 2.
// An axis with no extent yields NaN coordinates, as the formula does.
struct WorkPoints {
  std::vector<double> x;
  std::vector<double> y;
};
// Points per block when the preparation is shared among threads.
inline constexpr std::size_t kPrepareBlock = 1 << 16;
WorkPoints PrepareWorkPoints(std::span<const double> x, std::span<const double> y);

// A circumcircle: centre and squared radius.
struct Circle {
  double x;
  double y;
  double r2;
};

// The circumcircle of triangle (a, b, c) of the working points. The vertices are first
// rotated so that the lowest index comes first (orientation kept), so a triangle gets
// bit-identical values however and whenever it was created. Three collinear points give
// an infinite radius, so that every later point deletes the triangle.
Circle CircleOf(const WorkPoints& w, std::int32_t a, std::int32_t b, std::int32_t c) noexcept;
// The circle through three points, taken in the order given.
Circle CircleThrough(double ax, double ay, double bx, double by, double cx, double cy) noexcept;

// The centre and radius that make the super-triangle hold every point.
inline constexpr Circle kSuperCircle{0.0, 0.0, 1e37};

// True when point p deletes a triangle of circle c: on or inside the circle.
inline bool InCircle(const Circle& c, double px, double py) noexcept {
  const double dx = px - c.x;
  const double dy = py - c.y;
  return c.r2 - dx * dx - dy * dy >= 0.0;
}

// Orders directed boundary edges (mesh on their left) into one closed polygon: the
// longest closed walk through them, starting at its lowest vertex; each vertex listed
// once per visit, the first not repeated at the end.
std::vector<std::int32_t> ChainHull(std::vector<std::pair<std::int32_t, std::int32_t>> edges);

}  // namespace detail

// The triangulation of one data set: the triangles whose three corners are input points,
// each counter-clockwise, with its neighbours across each edge, the data hull and the
// corner coordinates for drawing and tracing. Point numbers are zero-based input indices.
namespace detail {
class Inserter;

// One triangle of the working mesh: everything the insertion reads about it.
struct InserterSlot {
  std::int32_t v[3];
  std::int32_t nb[3];  // across edge (v[k], v[k+1])
  std::uint32_t mark;  // the inserter's stamp: deleted by this point; stamp + 1: tested, kept
  std::uint32_t dead;
  Circle circle;
};
}  // namespace detail

class CTriangulate {
 public:
  static constexpr std::int32_t kNoNeighbour = -1;

  // Builds the mesh of the normalised points x, y, z (equal sizes, finite values;
  // error 5 otherwise). Points with no extent along X or along Y give an empty mesh.
  void Triangulate(std::span<const double> x, std::span<const double> y,
                   std::span<const double> z);
  // Empties the mesh.
  void Reset();

  std::int32_t PointCount() const noexcept { return static_cast<std::int32_t>(pointX_.size()); }
  std::int32_t TriangleCount() const noexcept {
    return static_cast<std::int32_t>(vertices_.size() / 3);
  }
  // Three point numbers per triangle, counter-clockwise.
  const std::vector<std::int32_t>& TriangleVertices() const noexcept { return vertices_; }
  // Three entries per triangle: the triangle across edge (v0, v1), (v1, v2), (v2, v0),
  // or kNoNeighbour on the data hull.
  const std::vector<std::int32_t>& TriangleNeighbours() const noexcept { return neighbours_; }
  // The data hull: point numbers in counter-clockwise order, first not repeated.
  const std::vector<std::int32_t>& HullVertices() const noexcept { return hull_; }
  // Corner coordinates, three per triangle in vertex order (normalised).
  const std::vector<double>& CornerX() const noexcept { return cornerX_; }
  const std::vector<double>& CornerY() const noexcept { return cornerY_; }
  const std::vector<double>& CornerZ() const noexcept { return cornerZ_; }
  // The points as handed in, and the jittered working points with the super-triangle.
  const std::vector<double>& PointX() const noexcept { return pointX_; }
  const std::vector<double>& PointY() const noexcept { return pointY_; }
  const std::vector<double>& PointZ() const noexcept { return pointZ_; }
  const detail::WorkPoints& Work() const noexcept { return work_; }

  // Finds the triangle that holds (x, y) (normalised; edges and corners count as inside)
  // and interpolates Z linearly in it. False when no triangle holds the point.
  bool LocateAndInterpolate(double x, double y, double& z) const;
  // The triangle that holds (x, y), or -1.
  std::int32_t Locate(double x, double y) const;

  // Area of a triangle over the area of the equilateral triangle inscribed in a circle of
  // the given squared radius (1.29904 r^2).
  double Quality(std::int32_t triangle, double radiusSquared) const;
  // Quality formatted as "0.000%".
  std::string QualityText(std::int32_t triangle, double radiusSquared) const;

 private:
  // Slots per block when finishing the mesh is shared among threads.
  static constexpr std::size_t kFinishBlock = 1 << 16;
  // Keeps the finished triangles (in working numbers) and chains the hull.
  void Finish(const detail::PageVector<detail::InserterSlot>& slots,
              const detail::PageVector<std::int32_t>& order);
  // Fills the corners from local (X and Y of the points in working order, pairwise) and
  // pointZ_, and gives the vertices their input numbers.
  void FillCorners(const detail::PageVector<std::int32_t>& order, detail::PageVector<double> local);

  std::vector<double> pointX_, pointY_, pointZ_;
  detail::WorkPoints work_;
  std::vector<std::int32_t> vertices_;
  std::vector<std::int32_t> neighbours_;
  std::vector<std::int32_t> hull_;
  std::vector<double> cornerX_, cornerY_, cornerZ_;
  mutable std::int32_t lastFound_ = 0;  // where the next Locate starts walking
};

}  // namespace orvane
