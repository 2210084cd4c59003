// The decimated meshes drawn in place of meshes of far more triangles than pixels.

#include "render/level_of_detail.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <vector>

namespace orvane::detail {
namespace {

const double kNaN = std::nan("");

TEST(LevelOfDetail, StrideStartsAboveFourTrianglesAPixelAndAimsAtOne) {
  EXPECT_EQ(DetailStride(1000, 250), 1U);  // exactly four a pixel: drawn whole
  EXPECT_EQ(DetailStride(1001, 250), 3U);  // 2 would leave 250.25 a pixel
  EXPECT_EQ(DetailStride(5000, 0), 1U);    // no pixels: nothing to fit
  // 1000 x 1000 nodes at 800 x 600; 10,000 x 10,000 at 1024 x 768 (15 would leave 888,711).
  EXPECT_EQ(DetailStride(2 * 999 * 999, 800 * 600), 3U);
  EXPECT_EQ(DetailStride(std::size_t{2} * 9999 * 9999, 1024 * 768), 16U);
  EXPECT_EQ(ClusterCells(1000, 250), 0U);
  EXPECT_EQ(ClusterCells(20'000'000, 800 * 600), 692U);  // a cell a pixel
  EXPECT_EQ(ClusterCells(std::size_t{1} << 40, std::size_t{1} << 30), 1448U);
}

TEST(LevelOfDetail, KeptNodesAreEveryStrideThAndTheLast) {
  EXPECT_EQ(KeptNodes(10, 3), (std::vector<std::size_t>{0, 3, 6, 9}));
  EXPECT_EQ(KeptNodes(11, 3), (std::vector<std::size_t>{0, 3, 6, 9, 10}));
  EXPECT_EQ(KeptNodes(3, 1), (std::vector<std::size_t>{0, 1, 2}));
  EXPECT_EQ(KeptNodes(2, 5), (std::vector<std::size_t>{0, 1}));
}

// z[i * n + j] over an n x n grid.
std::vector<double> Grid(std::size_t n, double (*f)(std::size_t, std::size_t)) {
  std::vector<double> z(n * n);
  for (std::size_t i = 0; i < n; ++i) {
    for (std::size_t j = 0; j < n; ++j) z[i * n + j] = f(i, j);
  }
  return z;
}

TEST(LevelOfDetail, APlaneKeepsItsHeightsAndASpikeOrPitMovesToTheNodeOfItsBlock) {
  // A plane: every kept node keeps its own height, corners included.
  const auto plane = Grid(9, [](std::size_t i, std::size_t j) { return 2.0 * static_cast<double>(i) - static_cast<double>(j); });
  const ReducedGrid r = ReduceGrid(plane, 9, 9, 3);
  ASSERT_EQ(r.columns, (std::vector<std::size_t>{0, 3, 6, 8}));
  ASSERT_EQ(r.rows, r.columns);
  for (std::size_t a = 0; a < 4; ++a) {
    for (std::size_t b = 0; b < 4; ++b) EXPECT_EQ(r.z[a * 4 + b], plane[r.columns[a] * 9 + r.rows[b]]) << a << "," << b;
  }
  // On flat ground a spike at (4, 5) lies in the block of node (3, 6), a pit at (7, 1)
  // in that of (6, 0); blocks tile the axis as [0, 1], [2, 4], [5, 7], [8, 8].
  std::vector<double> z(81, 1.0);
  z[4 * 9 + 5] = 7.0;
  z[7 * 9 + 1] = -5.0;
  z[8 * 9 + 8] = kNaN;  // a blank kept node stays blank
  z[2 * 9 + 2] = kNaN;  // a blank elsewhere is passed over
  const ReducedGrid s = ReduceGrid(z, 9, 9, 3);
  std::vector<double> expected(16, 1.0);
  expected[1 * 4 + 2] = 7.0;
  expected[2 * 4 + 0] = -5.0;
  for (std::size_t k = 0; k < 15; ++k) EXPECT_EQ(s.z[k], expected[k]) << k;
  EXPECT_TRUE(std::isnan(s.z[15]));
  // A spike beside a pit in one block: the one further from the node's own height.
  z.assign(81, 1.0);
  z[3 * 9 + 2] = 4.0;
  z[4 * 9 + 4] = -6.0;
  EXPECT_EQ(ReduceGrid(z, 9, 9, 3).z[1 * 4 + 1], -6.0);
}

TEST(LevelOfDetail, ClusteringKeepsThePointNearestEachCellsMeanAndEachTriangleOnce) {
  // Cells of a 2 x 2 grid: A (lower left) holds points 0, 1 and 2, B 3, C 4, D 5.
  const std::vector<double> x{0.1, 0.2, 0.3, 0.9, 0.1, 0.9}, y{0.1, 0.2, 0.3, 0.1, 0.9, 0.9};
  const std::vector<std::int32_t> triangles{
      0, 3, 1,  // A B A: collapses
      1, 3, 5,  // A B D
      2, 3, 5,  // A B D again
      5, 2, 3,  // D A B: the same triangle turned
      2, 5, 4,  // A D C
  };
  const ClusteredMesh m = ClusterTriangulation(x, y, triangles, 2);
  EXPECT_EQ(m.kept, (std::vector<std::int32_t>{1, 3, 4, 5}));  // A's mean is point 1
  EXPECT_EQ(m.triangles, (std::vector<std::int32_t>{0, 1, 3, 0, 3, 2}));  // windings kept
}

}  // namespace
}  // namespace orvane::detail
