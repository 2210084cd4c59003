// Grids with blank cells: what is left out of the mesh, the limits, the contours and
// the stored contents, and the resampled grid blanked beyond the data's hull.

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "orvane/core/property_bag.h"
#include "orvane/data/data_set.h"
#include "orvane/resample/resampling.h"
#include "support/expect_error.h"

namespace orvane {
namespace {

constexpr double kBlank = std::numeric_limits<double>::quiet_NaN();

// The bag as its bytes read it back, NaN included.
PropertyBag Reread(const PropertyBag& bag) {
  PropertyBag out;
  out.SetContents(bag.Contents());
  return out;
}

// 21 x 21 nodes over [0, 20]^2 with z = x + y / 100, blank where 8 <= x, y <= 12.
struct Holed {
  std::vector<double> x, y, z;
  Holed() {
    for (int k = 0; k <= 20; ++k) {
      x.push_back(k);
      y.push_back(k);
    }
    for (int i = 0; i <= 20; ++i) {
      for (int j = 0; j <= 20; ++j) {
        const bool hole = i >= 8 && i <= 12 && j >= 8 && j <= 12;
        z.push_back(hole ? kBlank : i + j / 100.0);
      }
    }
  }
};

TEST(DataSetBlanks, HolesLeaveTheMeshTheLimitsAndTheInterpolation) {
  const Holed g;
  DataSet data;
  // The plain setter keeps refusing NaN; the blanked one takes it as no data.
  EXPECT_ORVANE_ERROR(data.DataAsRectangularGridSet(g.x, g.y, g.z), 5, "Orvadis.Dataset",
                      "The Z values contain NaN (not a number).");
  data.DataAsBlankedGridSet(g.x, g.y, g.z);
  EXPECT_EQ(data.BlankCount(), 25);
  EXPECT_EQ(data.ZMin(), 0.0);
  EXPECT_EQ(data.ZMax(), 20.2);
  // 800 triangles less those with a corner in the hole: the 6 x 6 cells round it, but
  // for a triangle in each of two corner cells that misses the hole.
  EXPECT_EQ(data.MeshTriangles().size() / 9, 800U - 70U);
  double z = -1.0;
  EXPECT_FALSE(data.ZValueInterpolate(10.0, 10.0, z));
  EXPECT_FALSE(data.ZValueInterpolate(7.5, 7.25, z));  // a cell with one blank corner
  EXPECT_EQ(z, -1.0);
  ASSERT_TRUE(data.ZValueInterpolate(13.5, 7.25, z));  // the lower triangle of a corner cell
  EXPECT_DOUBLE_EQ(z, 13.5 + 0.0725);
  // Infinity is still no blank.
  std::vector<double> bad = g.z;
  bad[0] = HUGE_VAL;
  EXPECT_ORVANE_ERROR(data.DataAsBlankedGridSet(g.x, g.y, bad), 5, "Orvadis.Dataset", "Data range exceeds maximum limit");
}

TEST(DataSetBlanks, ContourLinesEndAtTheHolesEdge) {
  const Holed g;
  DataSet data;
  data.DataAsBlankedGridSet(g.x, g.y, g.z);
  // x + y / 100 = 10.05 crosses the hole: two lines, below it and above it.
  const std::vector<std::vector<Polyline>> lines = data.ContourLines(std::vector<double>{10.05}, true);
  ASSERT_EQ(lines[0].size(), 2U);
  std::vector<std::pair<double, double>> ends;
  for (const Polyline& line : lines[0]) {
    for (const double y : line.y) EXPECT_FALSE(y > 7.0 && y < 13.0) << y;
    ends.emplace_back(std::min(line.y.front(), line.y.back()), std::max(line.y.front(), line.y.back()));
  }
  std::sort(ends.begin(), ends.end());
  EXPECT_EQ(ends[0], std::make_pair(0.0, 7.0));
  EXPECT_EQ(ends[1], std::make_pair(13.0, 20.0));
  // Bands leave the hole uncovered: their area is the grid's less those 70 triangles.
  double area = 0.0;
  for (const auto& band : data.ContourBands(std::vector<double>{5.0, 10.0, 15.0}, true)) {
    for (const Polygon& polygon : band) {
      for (std::size_t r = 0; r < polygon.rings.size(); ++r) {
        const Polyline& ring = polygon.rings[r];
        double twice = 0.0;
        for (std::size_t k = 0; k < ring.x.size(); ++k) {
          const std::size_t n = (k + 1) % ring.x.size();
          twice += ring.x[k] * ring.y[n] - ring.x[n] * ring.y[k];
        }
        area += twice / 2.0;  // holes run clockwise
      }
    }
  }
  EXPECT_NEAR(area, 400.0 - 35.0, 1e-9);
}

TEST(DataSetBlanks, AnAllBlankGridIsEmptyAndBlanksSurviveTheStoredContents) {
  DataSet data;
  const std::vector<double> x{0, 1}, y{0, 1}, none{kBlank, kBlank, kBlank, kBlank};
  data.DataAsBlankedGridSet(x, y, none);
  EXPECT_TRUE(data.MeshTriangles().empty());
  EXPECT_EQ(data.ZMin(), 0.0);
  EXPECT_EQ(data.ZMax(), 0.0);
  EXPECT_TRUE(data.ContourLines(std::vector<double>{0.5})[0].empty());

  const Holed g;
  data.DataAsBlankedGridSet(g.x, g.y, g.z);
  PropertyBag bag;
  data.WriteContents(bag, "D.");
  EXPECT_TRUE(bag.ReadProperty("D.Blanks", false));
  DataSet copy;
  copy.ReadContents(Reread(bag), "D.");
  EXPECT_EQ(copy.BlankCount(), 25);
  EXPECT_EQ(copy.MeshTriangles(), data.MeshTriangles());
  // Without the flag, NaN in a stored grid is refused as before.
  PropertyBag plain = Reread(bag);
  plain.WriteProperty("D.Blanks", false);
  DataSet other;
  EXPECT_ORVANE_ERROR(other.ReadContents(plain, "D."), 5, "Orvadis.Dataset", "The Z values contain NaN (not a number).");
}

TEST(DataSetBlanks, TheResampledGridIsBlankBeyondTheDataHull) {
  DataSet data;
  Resampling& r = data.Resampling();
  r.SetResamplerType(orvResamplerTypeInverseDistance);
  r.SetIntervalCount(4);
  // A right triangle over [0, 4]^2: nodes above the diagonal x + y = 4 lie outside it.
  data.DataAsSparseGridSet(std::vector<double>{0, 4, 0}, std::vector<double>{0, 0, 4}, std::vector<double>{1, 2, 3});
  EXPECT_EQ(data.BlankCount(), 0);
  r.SetBlankOutsideHull(true);
  const GridFile grid = data.ResampledGrid();
  for (std::size_t i = 0; i < 5; ++i) {
    for (std::size_t j = 0; j < 5; ++j) EXPECT_EQ(std::isnan(grid.z[i * 5 + j]), i + j > 4) << i << "," << j;
  }
  EXPECT_EQ(data.BlankCount(), 10);
  PropertyBag bag;
  r.WriteProperties(bag, "R.");
  Resampling back;
  back.ReadProperties(bag, "R.");
  EXPECT_TRUE(back.BlankOutsideHull());
  r.SetBlankOutsideHull(false);
  PropertyBag off;
  r.WriteProperties(off, "R.");
  EXPECT_FALSE(off.Contains("R.BlankOutsideHull"));  // absent: the grid extrapolates, as before
}

TEST(ResampleGrid, KrigingVarianceIsZeroAtTheDataWithoutANuggetAndBlankWhereTheGridIs) {
  // Points on the nodes (0, 0), (2, 0), (0, 2), (2, 2) and (1, 1) of a 3 x 3 grid.
  const std::vector<double> x{0, 2, 0, 2, 1}, y{0, 0, 2, 2, 1}, z{1, 3, 2, 5, 2.5};
  Resampling settings;
  settings.SetResamplerType(orvResamplerTypeKriging);
  settings.SetIntervalCount(2);
  settings.Kriging().SetModelSemiVariogram(orvKrigingMSVSpherical);
  settings.Kriging().SetNugget(0.0);
  settings.Kriging().SetSill(2.0);
  settings.Kriging().SetAutoSetRange(false);
  settings.Kriging().SetRange(5.0);
  settings.Kriging().SetBlockMode(false);
  GridFile variance;
  const GridFile grid = ResampleGrid(settings, x, y, z, {}, &variance);
  ASSERT_EQ(variance.z.size(), 9U);
  // Node i * 3 + j at (i, j): the corners and the centre hold the data.
  const std::pair<std::size_t, double> onData[] = {{0, 1.0}, {2, 2.0}, {4, 2.5}, {6, 3.0}, {8, 5.0}};
  for (const auto& [node, value] : onData) {
    EXPECT_NEAR(variance.z[node], 0.0, 1e-12) << node;
    EXPECT_NEAR(grid.z[node], value, 1e-12) << node;
  }
  for (const std::size_t node : {1U, 3U, 5U, 7U}) EXPECT_GT(variance.z[node], 0.01) << node;
  // Blank values have no variance; other resamplers have none at all.
  settings.SetBlankOutsideHull(true);
  const GridFile triangle = ResampleGrid(settings, std::vector<double>{0, 2, 0}, std::vector<double>{0, 0, 2},
                                         std::vector<double>{1, 3, 2}, {}, &variance);
  EXPECT_TRUE(std::isnan(triangle.z[8]));
  EXPECT_TRUE(std::isnan(variance.z[8]));
  settings.SetResamplerType(orvResamplerTypeInverseDistance);
  EXPECT_ORVANE_ERROR(ResampleGrid(settings, x, y, z, {}, &variance), 5, "Orvadis.Dataset",
                      "Only kriging gives an estimation variance.");
}

}  // namespace
}  // namespace orvane
