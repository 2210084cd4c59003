// A data set's resampling: the run during the mesh rebuild, the resampled grid, the
// relayed settings changes and failures.

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

#include "data/data_set_state.h"
#include "orvane/data/data_set.h"
#include "orvane/resample/resampling.h"
#include "resample/interpolator.h"
#include "support/event_recorder.h"
#include "support/expect_error.h"

namespace orvane {
namespace {

using detail::DataSetAccess;

struct Scatter {
  std::vector<double> x, y, z;
  std::int32_t Count() const { return static_cast<std::int32_t>(x.size()); }
};

// Random points over [0, 3] x [0, 4], corners included, with z = x^2 - y.
Scatter Points(int n) {
  Scatter s{{0, 3, 0, 3}, {0, 0, 4, 4}, {0, 9, -4, 5}};
  std::mt19937 random(5);
  std::uniform_real_distribution<double> ux(0, 3), uy(0, 4);
  for (int i = 0; i < n; ++i) {
    s.x.push_back(ux(random));
    s.y.push_back(uy(random));
    s.z.push_back(s.x.back() * s.x.back() - s.y.back());
  }
  return s;
}

void Grid(const DataSet& d, std::vector<double>& x, std::vector<double>& y, Array2D& z) {
  Array ax, ay;
  std::int32_t nx = 0, ny = 0;
  d.ResampledDataAsRectangularGridGet(ax, nx, ay, ny, z);
  x = ax.Values();
  y = ay.Values();
  EXPECT_EQ(static_cast<std::size_t>(nx), x.size());
  EXPECT_EQ(static_cast<std::size_t>(ny), y.size());
}

TEST(DataSetResampling, NoResamplerNoGrid) {
  DataSet d;
  Array x, y;
  Array2D z;
  std::int32_t nx = 0, ny = 0;
  EXPECT_ORVANE_ERROR(d.ResampledDataAsRectangularGridGet(x, nx, y, ny, z), 5, "Orvadis.Dataset",
                      "No resampler was selected.");
  d.Resampling().SetResamplerType(orvResamplerTypeInverseDistance);
  EXPECT_ORVANE_ERROR(d.ResampledDataAsRectangularGridGet(x, nx, y, ny, z), 5, "Orvadis.Dataset",
                      "The data set holds no data to resample.");
}

TEST(DataSetResampling, TheRebuildDrawsTheResampledGrid) {
  DataSet d;
  const Scatter p = Points(60);
  d.DataAsSparseGridSet(p.Count(), p.x, p.y, p.z);
  testing::EventRecorder events(d.PropertyChanged);
  d.Resampling().SetIntervalCount(4);
  d.Resampling().SetResamplerType(orvResamplerTypeInverseDistance);
  EXPECT_EQ(events.names, (std::vector<std::string>{"Resampling.IntervalCount", "Resampling.ResamperType"}));

  std::int32_t count = 0;
  Array hx, hy;
  d.DataHullGet(count, hx, hy);
  const std::vector<double> hull = hx.Values();
  auto& s = DataSetAccess::State(d);
  s.PrepareForDrawing();
  EXPECT_EQ(s.meshType, detail::kGridMesh);
  EXPECT_EQ(events.names.back(), "Resampling.Limits");  // the data's limits handed over
  std::vector<double> gx, gy;
  Array2D gz;
  Grid(d, gx, gy, gz);
  EXPECT_EQ(gx, (std::vector<double>{0, 0.75, 1.5, 2.25, 3}));
  EXPECT_EQ(gy, (std::vector<double>{0, 1, 2, 3, 4}));
  for (std::size_t i = 0; i < 5; ++i) {
    for (std::size_t j = 0; j < 5; ++j) {
      EXPECT_EQ(gz.At(static_cast<std::int32_t>(i), static_cast<std::int32_t>(j)),
                InverseDistanceResampler::EstimateAt(gx[i], gy[j], p.x, p.y, p.z, 2.0));
    }
  }
  // Limits now describe the grid; the mesh is the grid, normalised.
  EXPECT_EQ(d.ZMax(), *std::max_element(gz.Values().begin(), gz.Values().end()));
  EXPECT_EQ(s.meshX.size(), 5u);  // the grid's columns
  EXPECT_EQ(s.meshZ.size(), 25u);
  EXPECT_EQ(s.meshZ[6], (gz.At(1, 1) - d.ZMin()) / (d.ZMax() - d.ZMin()));
  double z = 0;
  ASSERT_TRUE(d.ZValueInterpolate(0.75, 3, z));
  EXPECT_EQ(z, gz.At(1, 3));
  // The hull still comes back in data units, on the input points.
  d.DataHullGet(count, hx, hy);
  EXPECT_EQ(hx.Values(), hull);

  // A settings change marks the mesh for rebuild; back to no resampler, the points return.
  d.Resampling().InverseDistance().SetWeightingPower(1);
  EXPECT_TRUE(s.needsRebuild);
  EXPECT_EQ(events.names.back(), "Resampling.InverseDistance.Weighting");
  d.Resampling().SetResamplerType(orvResamplerTypeNone);
  s.PrepareForDrawing();
  EXPECT_EQ(s.meshType, detail::kTriangleMesh);
  EXPECT_EQ(d.ZMax(), 9.0);
  d.DataHullGet(count, hx, hy);
  EXPECT_EQ(hx.Values(), hull);
  EXPECT_FALSE(s.resampled);
}

TEST(DataSetResampling, NaturalNeighbourOnAGridInput) {
  DataSet d;
  const std::vector<double> x{0, 1, 2}, y{0, 1};
  Array2D z(std::vector<double>{0, 1, 2, 3, 4, 5}, 3, 2);  // z = 2x + y
  d.DataAsRectangularGridSet(x, 3, y, 2, z);
  d.Resampling().SetResamplerType(orvResamplerTypeNNGridR);
  d.Resampling().SetIntervalCount(8);
  std::vector<double> gx, gy;
  Array2D gz;
  Grid(d, gx, gy, gz);
  for (std::size_t i = 0; i < gx.size(); ++i) {
    for (std::size_t j = 0; j < gy.size(); ++j) {
      EXPECT_NEAR(gz.At(static_cast<std::int32_t>(i), static_cast<std::int32_t>(j)), 2 * gx[i] + gy[j], 1e-12);
    }
  }
}

TEST(DataSetResampling, AFailedRunPassesItsErrorAndChangesNothing) {
  DataSet d;
  const std::vector<double> x{0, 1, 2, 3}, y{0, 1, 2, 3}, z{1, 2, 3, 4};
  d.DataAsSparseGridSet(4, x, y, z);  // all on one line
  auto& s = DataSetAccess::State(d);
  s.PrepareForDrawing();
  const std::vector<double> meshZ = s.meshZ;
  d.Resampling().SetResamplerType(orvResamplerTypeNNGridR);
  EXPECT_ORVANE_ERROR(s.RebuildMeshIfNeeded(), 5, "Orvada.NNGridR",
                      "Natural-neighbour interpolation needs points that do not all lie on one line.");
  EXPECT_TRUE(s.needsRebuild);
  EXPECT_EQ(s.meshType, detail::kTriangleMesh);
  EXPECT_EQ(s.meshZ, meshZ);
  EXPECT_EQ(d.ZMax(), 4.0);
  // The same data resamples fine by inverse distance.
  d.Resampling().SetResamplerType(orvResamplerTypeInverseDistance);
  s.RebuildMeshIfNeeded();
  EXPECT_EQ(s.meshType, detail::kGridMesh);
}

TEST(DataSetResampling, AFailedRunAfterAGoodOneKeepsTheGoodGridAndItsLimits) {
  DataSet d;
  Scatter p = Points(40);
  p.x.push_back(1.1);  // a spike between the grid's nodes
  p.y.push_back(1.3);
  p.z.push_back(100);
  d.DataAsSparseGridSet(p.Count(), p.x, p.y, p.z);
  d.Resampling().SetIntervalCount(6);
  d.Resampling().SetResamplerType(orvResamplerTypeInverseDistance);
  auto& s = DataSetAccess::State(d);
  std::vector<double> gx, gy;
  Array2D gz;
  Grid(d, gx, gy, gz);
  // The inverse-distance grid does not reach the spike, so limits put back to the
  // input's would show.
  const std::array<double, 3> min = s.min, max = s.max, range = s.range;
  ASSERT_LT(max[2], 99.0);
  const std::vector<double> meshX = s.meshX, meshY = s.meshY, meshZ = s.meshZ;

  d.Resampling().Kriging().SetModelSemiVariogram(7);
  const char* const refusal = "ModelSemiVariogram must be 0 (linear), 1 (spherical), 2 (exponential) or 3 (Gaussian).";
  EXPECT_NO_THROW(s.PrepareForDrawing());  // still inverse distance
  EXPECT_EQ(s.meshZ, meshZ);
  d.Resampling().SetResamplerType(orvResamplerTypeKriging);
  EXPECT_ORVANE_ERROR(s.PrepareForDrawing(), 5, "Orvada.Kriging", refusal);
  EXPECT_EQ(s.min, min);
  EXPECT_EQ(s.max, max);
  EXPECT_EQ(s.range, range);
  EXPECT_EQ(d.ZMin(), min[2]);
  EXPECT_EQ(s.meshType, detail::kGridMesh);
  EXPECT_TRUE(s.resampled);
  EXPECT_EQ(s.meshX, meshX);
  EXPECT_EQ(s.meshY, meshY);
  EXPECT_EQ(s.meshZ, meshZ);
  EXPECT_EQ(s.gridX, gx);
  EXPECT_EQ(s.gridY, gy);
  EXPECT_EQ(s.resampledZ, gz.Values());
  EXPECT_TRUE(s.needsRebuild);  // the next drawing tries again
  // Asked for the grid, the data set runs the selected resampler, which fails again and
  // leaves the arguments as they were passed.
  Array ax{1.0}, ay;
  Array2D az;
  std::int32_t nx = -1, ny = -1;
  EXPECT_ORVANE_ERROR(d.ResampledDataAsRectangularGridGet(ax, nx, ay, ny, az), 5, "Orvada.Kriging",
                      refusal);
  EXPECT_EQ(nx, -1);
  EXPECT_EQ(ax.Values(), std::vector<double>{1.0});
  EXPECT_EQ(s.meshZ, meshZ);
  // Put right, the run succeeds and replaces grid and limits.
  d.Resampling().Kriging().SetModelSemiVariogram(orvKrigingMSVSpherical);
  Grid(d, gx, gy, gz);
  EXPECT_FALSE(s.needsRebuild);
  EXPECT_NE(s.meshZ, meshZ);
  EXPECT_EQ(d.ZMax(), *std::max_element(gz.Values().begin(), gz.Values().end()));
}

}  // namespace
}  // namespace orvane
