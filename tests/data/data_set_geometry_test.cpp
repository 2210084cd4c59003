// The mesh, contour lines, bands and resampled grid as the public API hands them out,
// and the span setters.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <span>
#include <vector>

#include "data/data_set_state.h"
#include "orvane/core/property_bag.h"
#include "orvane/data/data_set.h"
#include "orvane/resample/resampling.h"
#include "support/expect_error.h"

namespace orvane {
namespace {

const char* const kUpper = "Upper bounds of input data arrays must be consistent with data element counts";

double TwiceArea(const Polyline& ring) {
  double a = 0;
  for (std::size_t i = 0; i < ring.x.size(); ++i) {
    const std::size_t j = (i + 1) % ring.x.size();
    a += ring.x[i] * ring.y[j] - ring.x[j] * ring.y[i];
  }
  return a;
}

double TriangleTwiceArea(const std::vector<double>& t, std::size_t k) {
  const double* c = &t[9 * k];
  return (c[3] - c[0]) * (c[7] - c[1]) - (c[4] - c[1]) * (c[6] - c[0]);
}

// z = x on a 9 x 5 lattice over [0, 4] x [0, 2], as scattered points.
struct Plane {
  std::vector<double> x, y, z;
  Plane() {
    for (int i = 0; i <= 8; ++i) {
      for (int j = 0; j <= 4; ++j) {
        x.push_back(i * 0.5);
        y.push_back(j * 0.5);
        z.push_back(i * 0.5);
      }
    }
  }
};

TEST(DataSetGeometry, MeshTrianglesOfPointsGridsAndResampledGrids) {
  DataSet data;
  EXPECT_TRUE(data.MeshTriangles().empty());
  data.DataAsSparseGridSet(std::vector<double>{0, 2, 2, 0}, std::vector<double>{0, 0, 1, 1},
                           std::vector<double>{1, 2, 3, 4});
  const std::vector<double> t = data.MeshTriangles();
  const std::vector<std::int32_t> v = data.MeshTriangleVertices();
  ASSERT_EQ(t.size(), 18u);
  ASSERT_EQ(v.size(), 6u);
  double area = 0;
  for (std::size_t k = 0; k < 2; ++k) {
    EXPECT_GT(TriangleTwiceArea(t, k), 0) << "counter-clockwise";
    area += TriangleTwiceArea(t, k) / 2;
    for (std::size_t c = 0; c < 3; ++c) {  // the corners are the input points, exactly
      const std::vector<double> zs{1, 2, 3, 4};
      EXPECT_EQ(t[9 * k + 3 * c + 2], zs[static_cast<std::size_t>(v[3 * k + c])]);
    }
  }
  EXPECT_DOUBLE_EQ(area, 2.0);

  // A 3 x 2 grid: two cells, four triangles split from (i, j) to (i + 1, j + 1), with
  // descending X turned counter-clockwise all the same.
  data.DataAsRectangularGridSet(std::vector<double>{2, 1, 0}, std::vector<double>{0, 1},
                                std::vector<double>{5, 6, 3, 4, 1, 2});
  const std::vector<double> g = data.MeshTriangles();
  ASSERT_EQ(g.size(), 36u);
  EXPECT_TRUE(data.MeshTriangleVertices().empty());
  area = 0;
  for (std::size_t k = 0; k < 4; ++k) {
    EXPECT_GT(TriangleTwiceArea(g, k), 0);
    area += TriangleTwiceArea(g, k) / 2;
    for (std::size_t c = 0; c < 3; ++c) {  // z = 2 x + y + 1 at every corner
      EXPECT_EQ(g[9 * k + 3 * c + 2], 2 * g[9 * k + 3 * c] + g[9 * k + 3 * c + 1] + 1);
    }
  }
  EXPECT_DOUBLE_EQ(area, 2.0);

  // With a resampler the mesh is the resampled grid, and so are the limits.
  const Plane p;
  data.DataAsSparseGridSet(p.x, p.y, p.z);
  data.Resampling().SetResamplerType(orvResamplerTypeNNGridR);
  data.Resampling().SetIntervalCount(4);
  const GridFile grid = data.ResampledGrid();
  ASSERT_EQ(grid.x.size(), 5u);
  ASSERT_EQ(grid.z.size(), 25u);
  Array ax, ay;
  Array2D az;
  std::int32_t nx = 0, ny = 0;
  data.ResampledDataAsRectangularGridGet(ax, nx, ay, ny, az);
  EXPECT_EQ(grid.x, ax.Values());
  EXPECT_EQ(grid.y, ay.Values());
  EXPECT_EQ(grid.z, az.Values());
  EXPECT_EQ(data.MeshTriangles().size(), 4u * 4u * 2u * 9u);
  EXPECT_FALSE(data.MeshTriangleVertices().empty());  // the points' own triangles stay
  data.Resampling().SetResamplerType(orvResamplerTypeNone);
  EXPECT_ORVANE_ERROR(data.ResampledGrid(), 5, "Orvadis.Dataset", "No resampler was selected.");
}

TEST(DataSetGeometry, ContourLinesAndBandsInDataUnits) {
  const Plane p;
  DataSet data;
  data.DataAsSparseGridSet(p.x, p.y, p.z);
  const std::vector<double> levels{1.25, 3};
  const std::vector<std::vector<Polyline>> lines = data.ContourLines(levels);
  ASSERT_EQ(lines.size(), 2u);
  ASSERT_EQ(lines[0].size(), 1u);
  for (double x : lines[0][0].x) EXPECT_NEAR(x, 1.25, 1e-12);
  EXPECT_NEAR(std::fabs(lines[0][0].y.front() - lines[0][0].y.back()), 2.0, 1e-12);  // across the data

  const std::vector<std::vector<Polygon>> bands = data.ContourBands(levels);
  ASSERT_EQ(bands.size(), 3u);
  const double expected[] = {1.25 * 2, 1.75 * 2, 1.0 * 2};
  for (std::size_t k = 0; k < 3; ++k) {
    double area = 0;
    for (const Polygon& polygon : bands[k]) {
      ASSERT_FALSE(polygon.rings.empty());
      EXPECT_GT(TwiceArea(polygon.rings[0]), 0);  // outer ring counter-clockwise
      for (std::size_t r = 1; r < polygon.rings.size(); ++r) EXPECT_LT(TwiceArea(polygon.rings[r]), 0);
      for (const Polyline& ring : polygon.rings) area += TwiceArea(ring) / 2;
    }
    EXPECT_NEAR(area, expected[k], 1e-12) << "band " << k;
  }
  // A level the data never reach: an empty band and no lines.
  const std::vector<double> high{10};
  EXPECT_TRUE(data.ContourLines(high)[0].empty());
  EXPECT_TRUE(data.ContourBands(high)[1].empty());
  EXPECT_TRUE(data.ContourLines({}).empty());
  EXPECT_EQ(data.ContourBands({}).size(), 1u);

  const std::vector<double> unordered{3, 1};
  const std::vector<double> nan{1, std::nan("")};
  EXPECT_ORVANE_ERROR(data.ContourLines(unordered), 5, "Orvadis.Dataset", "The contour levels must be in ascending order.");
  EXPECT_ORVANE_ERROR(data.ContourBands(nan), 5, "Orvadis.Dataset", "The contour levels must be finite numbers.");
}

TEST(DataSetGeometry, WithTiesAboveAFlatDataSetLiesInTheBandOfItsHeight) {
  // A flat grid at z = 10 over 2 x 2: with ties above it fills the band from 10 up,
  // whatever levels lie round it, and draws no line; the exact signs put it on both
  // sides of a level at its height.
  DataSet data;
  const std::vector<double> x{0, 2};
  data.DataAsRectangularGridSet(x, 2, x, 2, Array2D(std::vector<double>{10, 10, 10, 10}, 2, 2));
  const std::vector<double> levels{5, 10, 15};
  const auto bands = data.ContourBands(levels, true);
  ASSERT_EQ(bands.size(), 4u);
  for (std::size_t k = 0; k < 4; ++k) EXPECT_EQ(bands[k].empty(), k != 2) << "band " << k;
  for (const auto& level : data.ContourLines(levels, true)) EXPECT_TRUE(level.empty());
  const std::vector<double> between{7, 12};
  const auto inside = data.ContourBands(between, true);
  EXPECT_TRUE(inside[0].empty());
  EXPECT_FALSE(inside[1].empty());
  EXPECT_TRUE(inside[2].empty());
}

TEST(DataSetGeometry, TracingApartLeavesWhatTheControlDraws) {
  const Plane p;
  DataSet data;
  data.DataAsSparseGridSet(p.x, p.y, p.z);
  auto& s = detail::DataSetAccess::State(data);
  const std::vector<double> drawn{2};
  s.PrepareForDrawing(drawn);
  const std::uint64_t generation = s.contourGeneration;
  ASSERT_EQ(s.contourLines.size(), 1u);
  const std::size_t segments = s.contourLines[0].Count();
  const std::vector<double> other{0.5, 1, 1.5};
  EXPECT_EQ(data.ContourBands(other).size(), 4u);
  EXPECT_EQ(s.contourGeneration, generation);
  ASSERT_EQ(s.contourLines.size(), 1u);
  EXPECT_EQ(s.contourLines[0].Count(), segments);
  EXPECT_FALSE(s.contoursStale);
  EXPECT_FALSE(s.traceBands);
  // A user hull outside the data hull is refused, and the drawn lines still stay.
  data.UserHullSet(std::vector<double>{-1, 9, 9}, std::vector<double>{-1, -1, 9});
  s.contoursStale = false;
  EXPECT_ORVANE_ERROR(data.ContourLines(other), -2147221304, "Orvadis.Dataset.DataAsSparseGridSet");
  EXPECT_EQ(s.contourGeneration, generation);
  EXPECT_EQ(s.contourLines[0].Count(), segments);
}

TEST(DataSetGeometry, SpanSettersMatchTheArraySetters) {
  std::mt19937 random(5);
  std::uniform_real_distribution<double> unit(-3, 3);
  std::vector<double> x(200), y(200), z(200);
  for (std::size_t k = 0; k < x.size(); ++k) {
    x[k] = unit(random);
    y[k] = unit(random);
    z[k] = x[k] * y[k];
  }
  DataSet a, b;
  a.DataAsSparseGridSet(static_cast<std::int32_t>(x.size()), Array(x), Array(y), Array(z));
  b.DataAsSparseGridSet(std::span<const double>(x), std::span<const double>(y), std::span<const double>(z));
  EXPECT_EQ(a.MeshTriangles(), b.MeshTriangles());
  EXPECT_EQ(a.ZMin(), b.ZMin());
  double za = 0, zb = 0;
  ASSERT_TRUE(a.ZValueInterpolate(0.1, 0.2, za));
  ASSERT_TRUE(b.ZValueInterpolate(0.1, 0.2, zb));
  EXPECT_EQ(za, zb);

  const std::vector<double> gx{0, 1, 2}, gy{0, 1}, gz{1, 2, 3, 4, 5, 6};
  a.DataAsRectangularGridSet(Array(gx), 3, Array(gy), 2, Array2D(gz, 3, 2));
  b.DataAsRectangularGridSet(gx, gy, gz);
  EXPECT_EQ(a.MeshTriangles(), b.MeshTriangles());
  Array rx, ry;
  Array2D rz;
  std::int32_t nx = 0, ny = 0;
  b.DataAsRectangularGridGet(rx, nx, ry, ny, rz);
  EXPECT_EQ(rz.At(2, 1), 6);

  // The same refusals, each leaving the data cleared.
  const std::vector<double> two{0, 1}, one{0}, withNan{0, std::nan("")};
  EXPECT_ORVANE_ERROR(b.DataAsSparseGridSet(two, one, two), 5, "Orvadis.Dataset", kUpper);
  EXPECT_TRUE(b.MeshTriangles().empty());
  EXPECT_ORVANE_ERROR(b.DataAsSparseGridSet(two, withNan, two), 5, "Orvadis.Dataset",
                      "The Y values contain NaN (not a number).");
  EXPECT_ORVANE_ERROR(b.DataAsRectangularGridSet(gx, gy, two), 5, "Orvadis.Dataset", kUpper);
  EXPECT_ORVANE_ERROR(b.DataAsRectangularGridSet(one, two, two), 5, "Orvadis.Dataset", kUpper);
  // A user hull is stored unchecked (it is checked when contours are traced), and one
  // that cannot be used is not written.
  b.UserHullSet(two, one);
  PropertyBag unusable;
  b.WriteContents(unusable, "D.");
  EXPECT_FALSE(unusable.Contains("D.UserHull.X"));
  b.UserHullSet(std::vector<double>{0.5, 1.5, 1}, std::vector<double>{0.2, 0.2, 0.8});
  PropertyBag bag;
  b.WriteContents(bag, "D.");
  EXPECT_EQ(bag.ReadProperty("D.UserHull.X", std::vector<double>{}), (std::vector<double>{0.5, 1.5, 1}));
}

TEST(DataSetGeometry, ResamplingProgressIsReportedAndCanStopTheRun) {
  const Plane p;
  DataSet data;
  data.DataAsSparseGridSet(p.x, p.y, p.z);
  data.Resampling().SetResamplerType(orvResamplerTypeInverseDistance);
  data.Resampling().SetIntervalCount(20);
  std::int64_t last = 0, total = 0;
  data.SetResamplingProgress([&](std::int64_t done, std::int64_t all) {
    last = std::max(last, done);
    total = all;
    return true;
  });
  EXPECT_EQ(data.ResampledGrid().z.size(), 441u);
  EXPECT_EQ(total, 441);
  EXPECT_EQ(last, 441);
  data.Resampling().SetIntervalCount(30);
  data.SetResamplingProgress([](std::int64_t, std::int64_t) { return false; });
  EXPECT_ORVANE_ERROR(data.ResampledGrid(), 18, "IInterpolator");
  data.SetResamplingProgress(nullptr);
  EXPECT_EQ(data.ResampledGrid().z.size(), 961u);
}

TEST(DataSetGeometry, KrigingRefusesANegativeNuggetAndASillBelowIt) {
  const Plane p;
  DataSet data;
  data.DataAsSparseGridSet(p.x, p.y, p.z);
  Kriging& kriging = data.Resampling().Kriging();
  data.Resampling().SetResamplerType(orvResamplerTypeKriging);
  data.Resampling().SetIntervalCount(2);
  kriging.SetNugget(-0.5);
  EXPECT_ORVANE_ERROR(data.ResampledGrid(), 5, "Orvada.Kriging", "Nugget must not be negative, not -0.5.");
  kriging.SetSill(-1.0);
  kriging.SetNugget(0.0);
  EXPECT_ORVANE_ERROR(data.ResampledGrid(), 5, "Orvada.Kriging", "Sill (-1) must not be below Nugget (0).");
  kriging.SetSill(1.5);
  kriging.SetNugget(0.5);
  EXPECT_EQ(data.ResampledGrid().z.size(), 9u);
}

}  // namespace
}  // namespace orvane
