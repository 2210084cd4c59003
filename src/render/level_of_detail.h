#pragma once

// The level of detail the views draw at: a mesh of many more triangles than the plot
// has pixels is drawn, fill and mesh lines, from a decimated copy. A grid is thinned to
// every s-th node, each kept node taking the height of a peak or pit in its block so
// that single-node spikes survive; a triangulation is simplified by clustering its
// vertices on a grid of about one cell per pixel. Contour lines and labels are always
// traced from the full mesh. Internal header.

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace orvane::detail {

// A mesh is decimated when it has more than this many triangles per plot pixel...
inline constexpr double kDetailTrianglesPerPixel = 4.0;
// ...a grid then to at most this many (a cell about a pixel and a half across, whose
// band edges the contour lines cover), so that a turn of a 10,000 x 10,000 grid at
// 1024 x 768 redraws in well under 150 ms on llvmpipe.
inline constexpr double kDetailTargetPerPixel = 1.0;

// The grid stride for a mesh of `triangles` drawn over `pixels`: 1 (draw it all) unless
// triangles > 4 * pixels; then the smallest s with triangles / s^2 <= pixels.
std::size_t DetailStride(std::size_t triangles, std::size_t pixels);

// The nodes kept along an axis of `count` nodes at stride s: 0, s, 2s, ... and the last.
std::vector<std::size_t> KeptNodes(std::size_t count, std::size_t stride);

// A grid reduced to its kept columns and rows, z[I * rows.size() + J] at (columns[I], rows[J]).
struct ReducedGrid {
  std::vector<std::size_t> columns, rows;
  std::vector<double> z;
};

// Thins the grid z (z[i * ny + j], NaN blank) to every stride-th node. Each kept node
// stands for the block of nodes round it (the blocks tile the grid): it takes the block's
// highest height when that is above every node in the ring just outside the block (a
// peak), the lowest when below the whole ring (a pit), the one further from its own
// height when both; otherwise its own height, so that slopes and ridges keep their
// shape. A blank kept node stays blank.
ReducedGrid ReduceGrid(std::span<const double> z, std::size_t nx, std::size_t ny, std::size_t stride);

// The cells per side of the clustering grid for a triangulation of `triangles` drawn over
// `pixels`: 0 (draw it all) unless triangles > 4 * pixels; else about a cell a pixel
// (some 2 triangles a pixel: coarser clusters move the band edges visibly).
std::size_t ClusterCells(std::size_t triangles, std::size_t pixels);

// A triangulation simplified by vertex clustering: the points kept (indices into the
// input) and triangles over them (indices into kept, three a triangle, the input's winding).
struct ClusteredMesh {
  std::vector<std::int32_t> kept;
  std::vector<std::int32_t> triangles;
};

// Clusters the points (x, y in [0, 1]) on a cells x cells grid. Each occupied cell keeps
// the point nearest the mean of its points; a triangle whose corners fall in three
// different cells becomes one over their kept points, each such triangle once.
ClusteredMesh ClusterTriangulation(std::span<const double> x, std::span<const double> y,
                                   std::span<const std::int32_t> triangles, std::size_t cells);

}  // namespace orvane::detail
