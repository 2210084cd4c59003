#pragma once

// The triangulation as it stood before the insertion was tuned for speed, kept whole as
// the oracle the tuned CTriangulate must match bit for bit: vertex numbers and order,
// neighbours, hull, corners and working points.

#include <cstdint>
#include <span>
#include <utility>
#include <vector>

namespace orvane::testing::baseline {

namespace detail {

// Repeatable uniform numbers on [0, 1) for the jitter (SplitMix64). Reset() puts the
// generator into the same state at the start of every triangulation.
class JitterRandom {
 public:
  void Reset() noexcept { state_ = kSeed; }
  double Next() noexcept;

 private:
  static constexpr std::uint64_t kSeed = 0x0123456789ABCDEFull;
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
}

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


 private:
  // Keeps the finished triangles and chains the hull; returns working -> input numbers.
  std::vector<std::int32_t> Finish(detail::Inserter& inserter);
  void FillCorners(const std::vector<std::int32_t>& input);

  std::vector<double> pointX_, pointY_, pointZ_;
  detail::WorkPoints work_;
  std::vector<std::int32_t> vertices_;
  std::vector<std::int32_t> neighbours_;
  std::vector<std::int32_t> hull_;
  std::vector<double> cornerX_, cornerY_, cornerZ_;
};

}  // namespace orvane::testing::baseline
