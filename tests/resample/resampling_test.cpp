#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <vector>

#include "orvane/core/property_bag.h"
#include "orvane/resample/resampling.h"
#include "resample/interpolator.h"
#include "support/event_recorder.h"
#include "support/expect_error.h"

namespace orvane {
namespace {

using testing::EventRecorder;

TEST(Resampling, AutomaticRangeFollowsTheDataAndOverwritesLets) {
  Resampling r;
  EventRecorder events(r.PropertyChanged);
  r.SetDataLimits(0, 1, -2, 2);
  EXPECT_EQ(r.XMax(), 1);
  EXPECT_EQ(r.YMin(), -2);
  EXPECT_EQ(r.XInterval(), 0.1);
  EXPECT_EQ(r.YInterval(), 0.4);
  r.SetXMax(5);  // overwritten at once by the data's maximum, yet announced
  EXPECT_EQ(r.XMax(), 1);
  r.SetAutoRange(false);
  r.SetXMax(5);
  EXPECT_EQ(r.XMax(), 5);
  EXPECT_EQ(r.XInterval(), 0.5);
  r.SetResamplerType(orvResamplerTypeInverseDistance);
  EXPECT_EQ(events.names, (std::vector<std::string>{"Limits", "XMax", "AutoRange", "XMax", "ResamperType"}));
}

TEST(Resampling, IntervalCountValidationAndTheGrid) {
  Resampling r;
  r.SetDataLimits(0, 1, 0, 1);
  EventRecorder events(r.PropertyChanged);
  r.SetIntervalCount(10);
  EXPECT_TRUE(events.names.empty());
  EXPECT_ORVANE_ERROR(r.SetIntervalCount(0), 5, "Resampling", "Invalid procedure call or argument");
  EXPECT_EQ(r.IntervalCount(), 10);
  const std::vector<double> x = r.GridX();
  ASSERT_EQ(x.size(), 11u);
  EXPECT_EQ(x[0], 0.0);
  EXPECT_EQ(x[1], 0.1);
  EXPECT_EQ(x[3], 0.1 + 0.1 + 0.1);  // by repeated addition: 0.30000000000000004
  EXPECT_NEAR(x[10], 1.0, 1e-15);
  EXPECT_ORVANE_ERROR(r.SetXMin(NAN), 5, "Resampling");
}

TEST(Resampling, PersistedFormAndDefaults) {
  Resampling r;
  r.SetAutoRange(false);
  r.SetXMin(-3);
  r.SetXMax(3);
  r.SetIntervalCount(20);
  r.SetResamplerType(orvResamplerTypeKriging);
  r.InverseDistance().SetWeightingPower(1.5);
  PropertyBag bag;
  r.WriteProperties(bag, "Resampling.");
  EXPECT_EQ(bag.ReadProperty("Resampling.ResamperType", std::int32_t{0}), 2);
  EXPECT_EQ(bag.ReadProperty("Resampling.InverseDistance.Weighting", 0.0), 1.5);
  Resampling copy;
  copy.ReadProperties(bag, "Resampling.");
  EXPECT_FALSE(copy.AutoRange());
  EXPECT_EQ(copy.XMin(), -3);
  EXPECT_EQ(copy.XMax(), 3);
  EXPECT_EQ(copy.IntervalCount(), 20);
  EXPECT_EQ(copy.XInterval(), 0.3);
  EXPECT_EQ(copy.ResamplerType(), orvResamplerTypeKriging);
  EXPECT_EQ(copy.InverseDistance().WeightingPower(), 1.5);
  copy.ReadProperties(PropertyBag(), "Resampling.");
  EXPECT_TRUE(copy.AutoRange());
  EXPECT_EQ(copy.IntervalCount(), 10);
  EXPECT_EQ(copy.InverseDistance().WeightingPower(), 2.0);
  PropertyBag bad;
  bad.WriteProperty("R.IntervalCount", std::int32_t{0});
  bad.WriteProperty("R.ResamperType", std::int32_t{1});
  EXPECT_ORVANE_ERROR(copy.ReadProperties(bad, "R."), 5, "Resampling");
  EXPECT_EQ(copy.ResamplerType(), 0);
}

TEST(InverseDistance, WeightingPowerValidation) {
  InverseDistance idw;
  EventRecorder events(idw.PropertyChanged);
  EXPECT_ORVANE_ERROR(idw.SetWeightingPower(-1), 5, "Orvada.InverseDistance",
                      "Weighting power must be greater than or equal to 0");
  const char* const finite = "Weighting power must be a finite number.";
  for (double power : {NAN, INFINITY, -INFINITY}) {
    EXPECT_ORVANE_ERROR(idw.SetWeightingPower(power), 5, "Orvada.InverseDistance", finite);
  }
  // Stored settings are checked alike, before anything changes.
  Resampling r;
  PropertyBag bag;
  bag.WriteProperty("R.InverseDistance.Weighting", std::numeric_limits<double>::quiet_NaN());
  bag.WriteProperty("R.IntervalCount", std::int32_t{4});
  EXPECT_ORVANE_ERROR(r.ReadProperties(bag, "R."), 5, "Orvada.InverseDistance", finite);
  EXPECT_EQ(r.IntervalCount(), 10);
  EXPECT_EQ(idw.WeightingPower(), 2.0);
  idw.SetWeightingPower(-1e-17);
  EXPECT_EQ(idw.WeightingPower(), -1e-17);
  idw.SetWeightingPower(-1e-17);
  EXPECT_EQ(events.names, std::vector<std::string>{"Weighting"});
}

TEST(InverseDistance, EstimatesFollowTheRule) {
  const std::vector<double> x{0, 2, 0}, y{0, 0, 2}, z{3, 6, 9};
  // Power 0: every weight is 1, the plain mean.
  EXPECT_EQ(InverseDistanceResampler::EstimateAt(1, 1, x, y, z, 0), 6);
  // Power 1 weights by the inverse squared distance: from (1, 0) the distances squared are
  // 1, 1 and 5.
  const double expected = (3 / 1.0 + 6 / 1.0 + 9 / 5.0) / (1 + 1 + 1 / 5.0);
  EXPECT_EQ(InverseDistanceResampler::EstimateAt(1, 0, x, y, z, 1), expected);
  // An exact hit returns that point's Z; the first of two coincident points wins.
  EXPECT_EQ(InverseDistanceResampler::EstimateAt(2, 1e-15, x, y, z, 2), 6);
  const std::vector<double> x2{5, 5}, y2{5, 5}, z2{1, 2};
  EXPECT_EQ(InverseDistanceResampler::EstimateAt(5, 5, x2, y2, z2, 2), 1);
  // Weights that vanish (huge distances to a huge power) give 0.
  EXPECT_EQ(InverseDistanceResampler::EstimateAt(1e5, 1e5, x, y, z, 200), 0);
}

bool SameBits(double a, double b) { return std::memcmp(&a, &b, sizeof a) == 0; }

TEST(InverseDistance, ParallelGridIsBitwiseTheSerialRule) {
  std::mt19937 random(5);
  std::uniform_real_distribution<double> unit(0, 1);
  std::vector<double> x, y, z;
  for (int i = 0; i < 700; ++i) {
    x.push_back(unit(random));
    y.push_back(unit(random));
    z.push_back(unit(random) * 100 - 50);
  }
  // Grid points on data points (exact hits) and a duplicated point.
  x.insert(x.end(), {0.25, 0.25});
  y.insert(y.end(), {0.5, 0.5});
  z.insert(z.end(), {42, -42});
  std::vector<double> gx, gy;
  for (int i = 0; i <= 20; ++i) gx.push_back(i * 0.05);
  for (int j = 0; j <= 16; ++j) gy.push_back(j * 0.0625);
  for (double power : {0.0, 1.0, 2.0, 1.5, 3.0}) {
    const std::vector<double> grid = InverseDistanceResampler::Grid(gx, gy, x, y, z, power);
    for (std::size_t i = 0; i < gx.size(); ++i) {
      for (std::size_t j = 0; j < gy.size(); ++j) {
        const double serial = InverseDistanceResampler::EstimateAt(gx[i], gy[j], x, y, z, power);
        ASSERT_TRUE(SameBits(grid[i * gy.size() + j], serial))
            << "power " << power << " at " << gx[i] << "," << gy[j];
      }
    }
    EXPECT_EQ(grid[5 * gy.size() + 8], 42);  // (0.25, 0.5)
  }
}

TEST(InverseDistance, ResamplerKeepsItsInputAndRefreshesWhenStale) {
  Resampling settings;
  settings.SetDataLimits(0, 2, 0, 2);
  settings.SetIntervalCount(2);
  InverseDistanceResampler idw(settings);
  EXPECT_ORVANE_ERROR(idw.SetInputData(0, std::vector<double>{}, std::vector<double>{}, std::vector<double>{}),
                      5, "IInterpolator", "Invalid procedure call or argument");
  idw.SetInputData(2, std::vector<double>{0, 2, 9}, std::vector<double>{0, 2, 9}, std::vector<double>{1, 3, 9});
  std::int32_t count = 0;
  std::vector<double> ix, iy, iz;
  idw.GetInputData(count, ix, iy, iz);
  EXPECT_EQ(count, 2);
  EXPECT_EQ(iz, (std::vector<double>{1, 3}));
  std::vector<double> gx, gy, gz;
  idw.GetOutputData(gx, gy, gz);
  EXPECT_EQ(gx, (std::vector<double>{0, 1, 2}));
  ASSERT_EQ(gz.size(), 9u);
  EXPECT_EQ(gz[0], 1);  // exact hits at the corners
  EXPECT_EQ(gz[8], 3);
  EXPECT_EQ(gz[4], 2);  // the centre is equally far from both
}

TEST(Kriging, DefaultsEventsAndTheRangeAndSillReadingAsymmetry) {
  Kriging k;
  EXPECT_TRUE(k.AutoSetRange());
  EXPECT_TRUE(k.BlockMode());
  EXPECT_EQ(k.ModelSemiVariogram(), orvKrigingMSVLinear);
  EXPECT_EQ(k.Nugget(), 1.0);
  EXPECT_EQ(k.Sill(), 2.0);
  EXPECT_EQ(k.Range(), 1.0);
  testing::EventRecorder events(k.PropertyChanged);
  k.SetRange(7);
  k.SetSill(9);
  k.SetSill(9);
  k.SetModelSemiVariogram(orvKrigingMSVGaussian);
  EXPECT_EQ(events.names, (std::vector<std::string>{"Range", "Sill", "ModelSemiVariogram"}));
  PropertyBag bag;
  k.WriteProperties(bag, "Kriging.");
  EXPECT_EQ(bag.ReadProperty("Kriging.Range", 0.0), 7);
  Kriging copy;
  copy.SetRange(3);
  copy.ReadProperties(bag, "Kriging.");
  EXPECT_EQ(copy.Range(), 1.0);  // read under the key "1"
  EXPECT_EQ(copy.Sill(), 2.0);   // read under the key "2"
  EXPECT_EQ(copy.ModelSemiVariogram(), orvKrigingMSVGaussian);
  bag.WriteProperty("Kriging.1", 4.5);
  copy.ReadProperties(bag, "Kriging.");
  EXPECT_EQ(copy.Range(), 4.5);
}

TEST(NNGridR, PublicParametersAndTheirGluedKeys) {
  Resampling r;
  testing::EventRecorder events(r.PropertyChanged);
  r.NNGridR().SetTautness(3);  // the alias the command's --tautness matches
  r.NNGridR().SetUseGradients(true);
  r.Kriging().SetNugget(0.5);
  EXPECT_EQ(events.names, (std::vector<std::string>{"NNGridR.Taughtness", "NNGridR.UseGradients",
                                                    "Kriging.Nugget"}));
  EXPECT_EQ(r.NNGridR().Taughtness(), 3);
  EXPECT_ORVANE_ERROR(r.NNGridR().SetTaughtness(-1), 5, "Orvada.NNGridR");
  EXPECT_ORVANE_ERROR(r.NNGridR().SetTautness(-1), 5, "Orvada.NNGridR");
  PropertyBag bag;
  r.WriteProperties(bag, "Resampling.");
  EXPECT_EQ(bag.ReadProperty("Resampling.NNGridrBI", 0.0), 3);
  EXPECT_EQ(bag.ReadProperty("Resampling.NNGridrIGrad", false), true);
  EXPECT_TRUE(bag.Contains("Resampling.Kriging.BlockMode"));
  Resampling copy;
  copy.ReadProperties(bag, "Resampling.");
  EXPECT_EQ(copy.NNGridR().Taughtness(), 3);
  EXPECT_TRUE(copy.NNGridR().UseGradients());
  EXPECT_EQ(copy.Kriging().Nugget(), 0.5);
}

}  // namespace
}  // namespace orvane
