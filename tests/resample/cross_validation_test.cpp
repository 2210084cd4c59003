// Leave-one-out cross-validation: kriging against gstat's krige.cv for meuse, and each
// method's shortcut against the literal refit without the point.

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <limits>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "orvane/data/data_set.h"
#include "orvane/resample/cross_validation.h"
#include "orvane/resample/resampling.h"
#include "orvane_kriging/kriging.h"
#include "resample/interpolator.h"
#include "meuse.h"
#include "support/expect_error.h"

namespace orvane {
namespace {

using testing::Meuse;
using testing::Points;

void UseKriging(Resampling& settings, std::int32_t model, double nugget, double sill, double range, bool block) {
  settings.SetResamplerType(orvResamplerTypeKriging);
  settings.Kriging().SetAutoSetRange(false);
  settings.Kriging().SetModelSemiVariogram(model);
  settings.Kriging().SetSill(sill);
  settings.Kriging().SetNugget(nugget);
  settings.Kriging().SetRange(range);
  settings.Kriging().SetBlockMode(block);
}

// gstat's krige.cv(zinc ~ 1, meuse, model) with a global neighbourhood: me, rmse, mae,
// medae, msdr, then the predictions and kriging variances of points 1, 2 and 155.
struct GstatCv {
  const char* name;
  std::int32_t model;
  double range;  // the engine's: an exponential's practical range is 3 a
  double summary[5];
  double predicted[3], variance[3];
};
const GstatCv kGstatCv[] = {
    {"Sph", orvKrigingMSVSpherical, 1000,
     {1.6629864426985346, 226.80433110518095, 151.97333735670932, 80.039954218711273, 0.92982470293801156},
     {913.68928326725199, 879.49514531176385, 728.90704209868534},
     {53353.1908412829, 51529.584090546021, 139939.43244372899}},
    {"Exp", orvKrigingMSVExponential, 3 * 400,
     {2.3619532044043066, 227.44984793571322, 150.85151486150755, 88.904317633835035, 0.72622422855079349},
     {895.44226479176086, 856.85522123261512, 0}, {66224.58482444637, 65204.451911515775, 0}}};

double Summary(const CrossValidationSummary& s, int k) {
  const double values[] = {s.me, s.rmse, s.mae, s.medae, s.msdr};
  return values[k];
}

CrossValidation KrigeMeuse(const Points& meuse, const GstatCv& g) {
  Resampling settings;
  UseKriging(settings, g.model, 20000, 170000, g.range, false);  // vgm(150000, model, a, 20000)
  return CrossValidate(settings, meuse.x, meuse.y, meuse.z);
}

TEST(CrossValidation, MeuseKrigingEqualsGstatsKrigeCv) {
  const Points meuse = Meuse();
  for (const GstatCv& g : kGstatCv) {
    const CrossValidation cv = KrigeMeuse(meuse, g);
    ASSERT_EQ(cv.points.size(), 155U);
    EXPECT_EQ(cv.summary.count, 155);
    for (int k = 0; k < 5; ++k) EXPECT_NEAR(Summary(cv.summary, k), g.summary[k], 1e-9 * std::fabs(g.summary[k])) << g.name << k;
    const std::size_t at[] = {0, 1, 154};
    for (int k = 0; k < 3; ++k) {
      if (g.predicted[k] == 0) continue;
      EXPECT_NEAR(cv.points[at[k]].predicted, g.predicted[k], 1e-9 * g.predicted[k]) << g.name << k;
      EXPECT_NEAR(cv.points[at[k]].variance, g.variance[k], 1e-9 * g.variance[k]) << g.name << k;
    }
    EXPECT_EQ(cv.points[3].observed, meuse.z[3]);
  }
}

TEST(CrossValidation, TheStoredFiguresAreGstatsOwnForEveryPoint) {
  // Recomputed when R and gstat are here; the stored figures stand otherwise.
  ORVANE_GSTAT_MEUSE_OUTPUT(out);
  const Points meuse = Meuse();
  std::istringstream lines(out);
  std::string line;
  for (const GstatCv& g : kGstatCv) {
    while (std::getline(lines, line) && line.rfind("cv ", 0) != 0) {
    }
    std::istringstream head(line.substr(3));
    std::string name;
    head >> name;
    EXPECT_EQ(name, g.name);
    for (double stored : g.summary) {
      double value = 0;
      head >> value;
      EXPECT_NEAR(value, stored, 1e-12 * std::fabs(stored)) << name;
    }
    const CrossValidation cv = KrigeMeuse(meuse, g);
    for (const CrossValidationPoint& p : cv.points) {
      double predicted = 0, variance = 0;
      ASSERT_TRUE(std::getline(lines, line));
      ASSERT_EQ(std::sscanf(line.c_str(), "%lf %lf", &predicted, &variance), 2) << line;
      EXPECT_NEAR(p.predicted, predicted, 1e-9 * std::fabs(predicted)) << name;
      EXPECT_NEAR(p.variance, variance, 1e-9 * variance) << name;
    }
  }
}

Points Scattered(int count, unsigned seed) {
  std::mt19937 random(seed);
  std::uniform_real_distribution<double> unit(0.0, 1.0);
  Points p;
  for (int k = 0; k < count; ++k) {
    p.x.push_back(100 * unit(random));
    p.y.push_back(60 * unit(random));
    p.z.push_back(std::sin(p.x.back() / 17) * 40 + p.y.back() + 5 * unit(random));
  }
  return p;
}

Points Without(Points p, std::size_t i) {
  for (std::vector<double>* v : {&p.x, &p.y, &p.z}) v->erase(v->begin() + static_cast<std::ptrdiff_t>(i));
  return p;
}

TEST(CrossValidation, KrigingEqualsTheRefitWithoutEachPoint) {
  // The shortcut against the literal definition: the engine given every point but one,
  // asked for the value at that point. Block kriging (80 points) searches neighbourhoods.
  for (const bool block : {false, true}) {
    const Points p = Scattered(block ? 80 : 50, 7);
    Resampling settings;
    UseKriging(settings, orvKrigingMSVExponential, 3.0, 900.0, 45.0, block);
    const CrossValidation cv = CrossValidate(settings, p.x, p.y, p.z);
    for (std::size_t i = 0; i < p.x.size(); ++i) {
      const Points rest = Without(p, i);
      KrigingHandle h = KrigingCreate();
      ASSERT_EQ(KrigingSetData(h, static_cast<std::int32_t>(rest.x.size()), rest.x.data(), rest.y.data(), rest.z.data()), kKrigingOk);
      ASSERT_EQ(KrigingSetGridCoordinate(h, 1, &p.x[i], 1, &p.y[i]), kKrigingOk);
      KrigingSetBlockKriging(h, block);
      KrigingSetModel(h, orvKrigingMSVExponential);
      KrigingSetRange(h, 45.0);
      KrigingSetSill(h, 3.0, 900.0);
      ASSERT_EQ(KrigingCalculate(h), kKrigingOk);
      double value = 0, variance = 0;
      KrigingGetValues(h, &value);
      KrigingGetEstimation(h, &variance);
      KrigingDelete(h);
      EXPECT_NEAR(cv.points[i].predicted, value, 1e-9 * std::fabs(value)) << block << " " << i;
      EXPECT_NEAR(cv.points[i].variance, variance, 1e-9 * variance) << block << " " << i;
    }
  }
}

TEST(CrossValidation, InverseDistanceAndNaturalNeighbourLeaveEachPointOut) {
  const Points p = Scattered(40, 11);
  Resampling idw;
  idw.SetResamplerType(orvResamplerTypeInverseDistance);
  Resampling local;
  local.SetResamplerType(orvResamplerTypeInverseDistance);
  local.InverseDistance().SetMaxPoints(5);
  local.InverseDistance().SetRadius(12.0);
  Resampling nn;
  nn.SetResamplerType(orvResamplerTypeNNGridR);
  nn.NNGridR().SetParameter("Extrap", 0.0);
  const CrossValidation global = CrossValidate(idw, p.x, p.y, p.z);
  const CrossValidation near = CrossValidate(local, p.x, p.y, p.z);
  const CrossValidation natural = CrossValidate(nn, p.x, p.y, p.z);
  nn.SetBlankOutsideHull(true);  // for the grids of the others, below
  std::int64_t outside = 0, outOfRange = 0;
  for (std::size_t i = 0; i < p.x.size(); ++i) {
    const Points rest = Without(p, i);
    EXPECT_EQ(global.points[i].predicted, InverseDistanceResampler::EstimateAt(p.x[i], p.y[i], rest.x, rest.y, rest.z, 2.0));
    EXPECT_TRUE(std::isnan(global.points[i].variance));
    const std::vector<double> at = InverseDistanceResampler::LocalGrid({p.x[i]}, {p.y[i]}, rest.x, rest.y, rest.z, 2.0, 5, 12.0);
    if (std::isnan(at[0])) {
      ++outOfRange;
      EXPECT_TRUE(std::isnan(near.points[i].predicted));
    } else {
      EXPECT_NEAR(near.points[i].predicted, at[0], 1e-12 * std::fabs(at[0])) << i;
    }
    // The grid of the others at the point alone, blank outside their hull.
    const double value = ResampleOnto(nn, rest.x, rest.y, rest.z, std::vector<double>{p.x[i]}, std::vector<double>{p.y[i]}).z[0];
    if (std::isnan(value)) ++outside;
    EXPECT_EQ(std::isnan(natural.points[i].predicted), std::isnan(value)) << i;
    if (!std::isnan(value)) {
      EXPECT_NEAR(natural.points[i].predicted, value, 1e-12 * std::fabs(value)) << i;
    }
  }
  // Points outside the others' hull, or with no point in range, are counted apart.
  EXPECT_GT(outside, 0);
  EXPECT_EQ(natural.summary.skipped, outside);
  EXPECT_EQ(natural.summary.count, 40 - outside);
  EXPECT_GT(outOfRange, 0);
  EXPECT_EQ(near.summary.skipped, outOfRange);
  EXPECT_TRUE(std::isnan(global.summary.msdr));
}

TEST(CrossValidation, SummaryAndRefusals) {
  const CrossValidationPoint points[] = {{0, 0, 10, 9, 4},  {0, 0, 10, 12, 1}, {0, 0, 10, 7, 9},
                                         {0, 0, 10, 14, 4}, {0, 0, 10, std::numeric_limits<double>::quiet_NaN(), 1}};
  const CrossValidationSummary s = SummariseCrossValidation(points);  // residuals 1, -2, 3, -4
  EXPECT_EQ(s.count, 4);
  EXPECT_EQ(s.skipped, 1);
  EXPECT_EQ(s.me, -0.5);
  EXPECT_EQ(s.rmse, std::sqrt(7.5));
  EXPECT_EQ(s.mae, 2.5);
  EXPECT_EQ(s.medae, 2.5);
  EXPECT_EQ(s.msdr, (1.0 / 4 + 4.0 / 1 + 9.0 / 9 + 16.0 / 4) / 4);

  Resampling settings;
  const std::vector<double> two = {1, 2}, one = {1}, other = {3, 4};
  EXPECT_ORVANE_ERROR(CrossValidate(settings, two, two, two), 5, "Resampling",
                      "No resampler is selected: choose inverse distance, kriging or natural neighbour.");
  settings.SetResamplerType(orvResamplerTypeInverseDistance);
  EXPECT_ORVANE_ERROR(CrossValidate(settings, one, one, one), 5, "Resampling", "Cross-validation needs two points or more.");
  EXPECT_ORVANE_ERROR(CrossValidate(settings, two, one, two), 5, "Resampling", "X, Y and Z must hold the same number of values.");
  const std::vector<double> bad = {1, std::numeric_limits<double>::infinity()};
  EXPECT_ORVANE_ERROR(CrossValidate(settings, two, two, bad), 5, "IInterpolator", "The input points must be finite numbers.");
  // A nugget above the sill is refused before any work.
  UseKriging(settings, orvKrigingMSVSpherical, 5, 2, 1, false);
  EXPECT_ORVANE_ERROR(CrossValidate(settings, two, other, two), 5, "Orvada.Kriging", "Sill (2) must not be below Nugget (5).");
}

}  // namespace
}  // namespace orvane
