// The resamplers behind IInterpolator: choice, kriging through the engine, progress and
// interruption, natural neighbour with its parameter set.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

#include "orvane/core/property_bag.h"
#include "orvane/resample/resampling.h"
#include "orvane_kriging/kriging.h"
#include "resample/interpolator.h"
#include "support/event_recorder.h"
#include "support/expect_error.h"

namespace orvane {
namespace {

struct Scatter {
  std::vector<double> x, y, z;
  std::int32_t Count() const { return static_cast<std::int32_t>(x.size()); }
};

// n random points over [0, 3] x [0, 4] with corners included, so the limits are exact.
Scatter Points(int n, unsigned seed) {
  Scatter s{{0, 3, 0, 3}, {0, 0, 4, 4}, {1, 2, 3, 4}};
  std::mt19937 random(seed);
  std::uniform_real_distribution<double> ux(0, 3), uy(0, 4);
  for (int i = 0; i < n; ++i) {
    s.x.push_back(ux(random));
    s.y.push_back(uy(random));
    s.z.push_back(std::sin(s.x.back()) + 0.25 * s.y.back());
  }
  return s;
}

std::vector<double> Resample(InterpolatorBase& r, const Scatter& s) {
  r.SetInputData(s.Count(), s.x, s.y, s.z);
  std::vector<double> x, y, z;
  r.GetOutputData(x, y, z);
  return z;
}

TEST(Resamplers, TheTypeChoosesTheResampler) {
  Resampling settings;
  EXPECT_EQ(CreateInterpolator(settings), nullptr);
  settings.SetResamplerType(orvResamplerTypeInverseDistance);
  EXPECT_NE(dynamic_cast<InverseDistanceResampler*>(CreateInterpolator(settings).get()), nullptr);
  settings.SetResamplerType(orvResamplerTypeKriging);
  EXPECT_NE(dynamic_cast<KrigingResampler*>(CreateInterpolator(settings).get()), nullptr);
  settings.SetResamplerType(orvResamplerTypeNNGridR);
  EXPECT_NE(dynamic_cast<NaturalNeighbourResampler*>(CreateInterpolator(settings).get()), nullptr);
  settings.SetResamplerType(7);  // stored unchecked, refused when a run needs it
  EXPECT_ORVANE_ERROR(CreateInterpolator(settings), 5, "Resampling",
                      "ResamplerType 7 is not a resampler (0 to 3).");
  InverseDistanceResampler idw(settings);
  EXPECT_ORVANE_ERROR(idw.SetInputData(1, std::vector<double>{NAN}, std::vector<double>{0}, std::vector<double>{0}),
                      5, "IInterpolator", "The input points must be finite numbers.");
}

TEST(Resamplers, KrigingSetsTheRangeFromTheGridAndMatchesTheEngine) {
  const Scatter s = Points(40, 1);
  Resampling settings;
  settings.SetDataLimits(0, 3, 0, 4);
  settings.SetIntervalCount(6);
  settings.Kriging().SetModelSemiVariogram(orvKrigingMSVSpherical);
  settings.Kriging().SetNugget(0.0);
  settings.Kriging().SetBlockMode(false);
  testing::EventRecorder events(settings.PropertyChanged);
  KrigingResampler kriging(settings);
  const std::vector<double> z = Resample(kriging, s);
  EXPECT_EQ(settings.Kriging().Range(), 5.0);  // the diagonal of 3 by 4
  EXPECT_EQ(events.names, (std::vector<std::string>{"Kriging.Range"}));

  // The same run made directly on the engine gives the same values.
  const std::vector<double> gx = settings.GridX(), gy = settings.GridY();
  KrigingHandle h = KrigingCreate();
  KrigingSetData(h, s.Count(), s.x.data(), s.y.data(), s.z.data());
  KrigingSetGridCoordinate(h, 7, gx.data(), 7, gy.data());
  KrigingSetBlockKriging(h, false);
  KrigingSetModel(h, orvKrigingMSVSpherical);
  KrigingSetRange(h, 5.0);
  KrigingSetSill(h, 0.0, 2.0);
  ASSERT_EQ(KrigingCalculate(h), kKrigingOk);
  std::vector<double> direct(49);
  KrigingGetValues(h, direct.data());
  KrigingDelete(h);
  EXPECT_EQ(z, direct);
  EXPECT_NEAR(z[0], 1.0, 1e-12);  // the grid's corners are data points: exact without a nugget
  EXPECT_NEAR(z[48], 4.0, 1e-12);

  // Without AutoSetRange the stored range is used as it is, and checked by the engine.
  settings.Kriging().SetAutoSetRange(false);
  settings.Kriging().SetRange(0.0);
  EXPECT_ORVANE_ERROR(Resample(kriging, s), 5, "Orvada.Kriging", "Range must be a finite number above 0.");
  EXPECT_EQ(settings.Kriging().Range(), 0.0);
}

TEST(Resamplers, KrigingPassesTheEnginesFailures) {
  Resampling settings;
  settings.SetDataLimits(0, 1, 0, 1);
  settings.Kriging().SetBlockMode(false);
  settings.Kriging().SetNugget(0.0);
  KrigingResampler kriging(settings);
  // Two points at one place with different values and no nugget: a singular system.
  const Scatter twins{{0.5, 0.5, 0.0}, {0.5, 0.5, 1.0}, {1.0, 2.0, 0.0}};
  try {
    Resample(kriging, twins);
    FAIL() << "no error";
  } catch (const Error& e) {
    EXPECT_EQ(e.Number(), 5);
    EXPECT_EQ(e.Source(), "Orvada.Kriging");
    EXPECT_EQ(e.Description().rfind("The kriging system is singular", 0), 0u) << e.Description();
  }
}

TEST(Resamplers, ProgressReachesTheTotalAndStopsOnRequest) {
  const Scatter s = Points(3000, 2);
  Resampling settings;
  settings.SetDataLimits(0, 3, 0, 4);
  settings.SetIntervalCount(60);
  for (const std::int32_t type : {orvResamplerTypeInverseDistance, orvResamplerTypeKriging,
                                  orvResamplerTypeNNGridR}) {
    settings.SetResamplerType(type);
    std::unique_ptr<InterpolatorBase> r = CreateInterpolator(settings);
    std::int64_t last = -1, total = 0;
    bool ordered = true;
    r->SetProgressCallback([&](std::int64_t done, std::int64_t all) {
      ordered = ordered && done <= all;
      last = done;
      total = all;
      return true;
    });
    EXPECT_EQ(Resample(*r, s).size(), 61u * 61u);
    EXPECT_TRUE(ordered);
    EXPECT_EQ(total, 61 * 61) << type;
    EXPECT_EQ(last, total) << type;

    // Asking to stop ends the run with error 18 and leaves no grid behind.
    r->SetProgressCallback([](std::int64_t done, std::int64_t) { return done == 0; });
    EXPECT_ORVANE_ERROR(Resample(*r, s), 18, "IInterpolator", "The resampling was interrupted.");
    r->SetProgressCallback({});
    EXPECT_EQ(Resample(*r, s).size(), 61u * 61u);
  }
}

TEST(Resamplers, NaturalNeighbourReadsItsParameters) {
  // Z = 2x - y on a square with a dent: the hull is the square.
  const Scatter s{{0, 1, 0, 1, 0.4}, {0, 0, 1, 1, 0.6}, {0, 2, -1, 1, 0.2}};
  Resampling settings;
  settings.SetAutoRange(false);
  settings.SetXMin(-1);
  settings.SetXMax(2);
  settings.SetYMax(1);
  settings.SetIntervalCount(3);
  NaturalNeighbourResampler nn(settings);
  std::vector<double> z = Resample(nn, s);
  ASSERT_EQ(z.size(), 16u);
  // X = -1, 0, 1, 2 by Y = 0, 1/3, 2/3, 1: linear data, extrapolated too.
  EXPECT_NEAR(z[0], -2.0, 1e-12);
  EXPECT_EQ(z[4 * 1 + 0], 0.0);
  EXPECT_EQ(z[4 * 2 + 3], 1.0);
  EXPECT_NEAR(z[4 * 3 + 3], 3.0, 1e-12);
  settings.NNGridR().SetParameter("Extrap", 0);
  settings.NNGridR().SetParameter("Nuldat", -99);
  z = Resample(nn, s);
  EXPECT_EQ(z[0], -99.0);
  EXPECT_EQ(z[4 * 3 + 3], -99.0);
  EXPECT_NEAR(z[4 * 1 + 1], -1.0 / 3.0, 1e-12);
  settings.NNGridR().SetParameter("NonNeg", 1);
  z = Resample(nn, s);
  EXPECT_EQ(z[4 * 1 + 1], 0.0);
  EXPECT_EQ(z[0], -99.0);  // the null value is not clipped
}

TEST(Resamplers, AbsurdGridsAreRefusedBeforeAnyWork) {
  const Scatter s = Points(10, 3);
  Resampling settings;
  settings.SetDataLimits(0, 3, 0, 4);
  settings.SetIntervalCount(10001);  // 10002 x 10002 values
  for (const std::int32_t type : {orvResamplerTypeInverseDistance, orvResamplerTypeKriging,
                                  orvResamplerTypeNNGridR}) {
    settings.SetResamplerType(type);
    std::unique_ptr<InterpolatorBase> r = CreateInterpolator(settings);
    EXPECT_ORVANE_ERROR(Resample(*r, s), 7, "IInterpolator",
                        "A grid of 10002 by 10002 values is too large (at most 10001 by 10001).");
  }
  settings.SetIntervalCount(2);
  settings.SetAutoRange(false);
  settings.SetXMin(-1.7e308);
  settings.SetXMax(1.7e308);
  InverseDistanceResampler idw(settings);
  EXPECT_ORVANE_ERROR(Resample(idw, s), 5, "IInterpolator", "The grid limits are too far apart.");
}

TEST(Resamplers, PointsWithoutExtentAreRefusedByKrigingAndNaturalNeighbour) {
  struct Case {
    Scatter points;
    const char* message;
  };
  const Case cases[] = {
      {{{2}, {3}, {4}}, "The points have no extent along X."},                    // one point
      {{{2, 2}, {3, 3}, {4, 5}}, "The points have no extent along X."},           // one place
      {{{1, 1, 1, 1}, {0, 1, 2, 3}, {1, 2, 3, 1}}, "The points have no extent along X."},
      {{{0, 1, 2}, {5, 5, 5}, {1, 2, 3}}, "The points have no extent along Y."},
  };
  for (const Case& c : cases) {
    for (const bool autoSetRange : {true, false}) {
      Resampling settings;
      settings.SetDataLimits(std::ranges::min(c.points.x), std::ranges::max(c.points.x), std::ranges::min(c.points.y),
                             std::ranges::max(c.points.y));
      settings.Kriging().SetAutoSetRange(autoSetRange);
      testing::EventRecorder events(settings.PropertyChanged);
      KrigingResampler kriging(settings);
      EXPECT_ORVANE_ERROR(Resample(kriging, c.points), 5, "Orvada.Kriging", c.message);
      EXPECT_TRUE(events.names.empty());  // refused before the range is touched
      EXPECT_EQ(settings.Kriging().Range(), 1.0);
      NaturalNeighbourResampler nn(settings);
      EXPECT_ORVANE_ERROR(Resample(nn, c.points), 5, "Orvada.NNGridR", c.message);
    }
  }
  // Over grid limits set by hand kriging reaches off the line; natural neighbour, which
  // needs triangles, still refuses.
  {
    const Scatter line{{1, 1, 1, 1}, {0, 1, 2, 3}, {1, 2, 3, 1}};
    Resampling settings;
    settings.SetDataLimits(1, 1, 0, 3);
    settings.SetAutoRange(false);
    settings.SetXMin(0);
    settings.SetXMax(2);
    settings.SetIntervalCount(2);
    KrigingResampler kriging(settings);
    const std::vector<double> z = Resample(kriging, line);
    ASSERT_EQ(z.size(), 9u);
    for (double v : z) EXPECT_TRUE(std::isfinite(v));
    EXPECT_EQ(settings.Kriging().Range(), std::sqrt(4.0 + 9.0));
    NaturalNeighbourResampler nn(settings);
    EXPECT_ORVANE_ERROR(Resample(nn, line), 5, "Orvada.NNGridR", "The points have no extent along X.");
  }
  // Inverse distance has a value everywhere, a constant one here.
  Resampling settings;
  settings.SetDataLimits(2, 2, 3, 3);
  InverseDistanceResampler idw(settings);
  const std::vector<double> z = Resample(idw, {{2}, {3}, {4}});
  EXPECT_EQ(z, std::vector<double>(121, 4.0));
  // Extent along both axes, on one line: natural neighbour's own refusal.
  settings.SetDataLimits(0, 2, 0, 2);
  NaturalNeighbourResampler nn(settings);
  EXPECT_ORVANE_ERROR(Resample(nn, {{0, 1, 2}, {0, 1, 2}, {1, 2, 3}}), 5, "Orvada.NNGridR",
                      "Natural-neighbour interpolation needs points that do not all lie on one line.");
}

// Local inverse distance against the rule applied by hand to the points a search would
// keep: the nearest N, within R, at every node; nodes with none in range blank.
TEST(Resamplers, LocalInverseDistanceEqualsTheRuleOverTheNearestPointsInRange) {
  std::mt19937 random(30);
  std::uniform_real_distribution<double> unit(0.0, 1.0);
  std::vector<double> xs, ys, zs;
  for (int k = 0; k < 2000; ++k) {
    xs.push_back(100 * unit(random));
    ys.push_back(100 * unit(random) * (k % 10 == 0 ? 1.0 : 0.5));  // sparse above Y = 50
    zs.push_back(std::sin(xs.back() / 9) + ys.back() / 40);
  }
  std::vector<double> gx, gy;
  for (int k = 0; k <= 40; ++k) {
    gx.push_back(2.5 * k);
    gy.push_back(2.5 * k);
  }
  gx[3] = xs[17];  // a node on a point takes its Z
  gy[5] = ys[17];
  struct Case {
    std::int32_t maxPoints;
    double radius;
  };
  for (const Case c : {Case{32, 0.0}, Case{32, 4.0}, Case{0, 3.0}}) {
    const std::vector<double> z = InverseDistanceResampler::LocalGrid(gx, gy, xs, ys, zs, 2.0, c.maxPoints, c.radius);
    int blanks = 0;
    for (std::size_t i = 0; i < gx.size(); ++i) {
      for (std::size_t j = 0; j < gy.size(); ++j) {
        // The points the search should keep, by brute force.
        std::vector<std::pair<double, std::size_t>> near;
        for (std::size_t p = 0; p < xs.size(); ++p) {
          const double d2 = (xs[p] - gx[i]) * (xs[p] - gx[i]) + (ys[p] - gy[j]) * (ys[p] - gy[j]);
          if (c.radius == 0.0 || d2 <= c.radius * c.radius) near.emplace_back(d2, p);
        }
        std::sort(near.begin(), near.end());
        if (c.maxPoints > 0 && near.size() > static_cast<std::size_t>(c.maxPoints)) near.resize(static_cast<std::size_t>(c.maxPoints));
        const double value = z[i * gy.size() + j];
        if (near.empty()) {
          EXPECT_TRUE(std::isnan(value)) << i << "," << j;
          ++blanks;
          continue;
        }
        std::vector<double> kx, ky, kz;
        for (const auto& [d2, p] : near) {
          kx.push_back(xs[p]);
          ky.push_back(ys[p]);
          kz.push_back(zs[p]);
        }
        const double expected = InverseDistanceResampler::EstimateAt(gx[i], gy[j], kx, ky, kz, 2.0);
        EXPECT_NEAR(value, expected, 1e-12 * std::max(1.0, std::fabs(expected))) << i << "," << j;
      }
    }
    EXPECT_EQ(z[3 * gy.size() + 5], zs[17]);
    if (c.radius == 3.0) {
      EXPECT_GT(blanks, 50);  // the sparse upper half leaves gaps
    } else if (c.radius == 0.0) {
      EXPECT_EQ(blanks, 0);
    }
  }
  // The settings, through the resampling: refused values, and stored only when set.
  Resampling r;
  EXPECT_ORVANE_ERROR(r.InverseDistance().SetMaxPoints(-1), 5, "Orvada.InverseDistance",
                      "MaxPoints must be 0 (all points) or more.");
  EXPECT_ORVANE_ERROR(r.InverseDistance().SetRadius(NAN), 5, "Orvada.InverseDistance",
                      "Radius must be a finite distance of 0 (no limit) or more.");
  PropertyBag plain;
  r.WriteProperties(plain, "R.");
  EXPECT_FALSE(plain.Contains("R.InverseDistance.MaxPoints"));
  r.InverseDistance().SetMaxPoints(32);
  r.InverseDistance().SetRadius(20.0);
  PropertyBag bag;
  r.WriteProperties(bag, "R.");
  Resampling back;
  back.ReadProperties(bag, "R.");
  EXPECT_EQ(back.InverseDistance().MaxPoints(), 32);
  EXPECT_EQ(back.InverseDistance().Radius(), 20.0);
}

TEST(NNGridR, EveryParameterByNameWithDefaultsAndChecks) {
  NNGridR p;
  ASSERT_EQ(NNGridR::ParameterNames().size(), 19u);
  EXPECT_EQ(NNGridR::ParameterNames().front(), "BI");
  EXPECT_EQ(NNGridR::ParameterNames().back(), "VertLap");
  for (const auto& [name, value] : {std::pair{"BI", 1.0}, {"Extrap", 1.0}, {"MagX", 1.0}, {"Nuldat", 0.0}}) {
    EXPECT_EQ(p.Parameter(name), value) << name;
  }
  EXPECT_FALSE(p.UseGradients());
  testing::EventRecorder events(p.PropertyChanged);
  p.SetParameter("IGrad", 5);  // any non-zero value is True
  p.SetParameter("BI", 2.5);
  p.SetParameter("Nuldat", -1);
  p.SetParameter("Nuldat", -1);
  EXPECT_EQ(events.names, (std::vector<std::string>{"UseGradients", "Taughtness", "Nuldat"}));
  EXPECT_EQ(p.Parameter("IGrad"), 1.0);
  EXPECT_EQ(p.Taughtness(), 2.5);
  EXPECT_ORVANE_ERROR(p.Parameter("Tension"), 5, "Orvada.NNGridR",
                      "\"Tension\" is not a parameter of the natural-neighbour resampler.");
  EXPECT_ORVANE_ERROR(p.SetParameter("MagY", 0), 5, "Orvada.NNGridR", "MagY must be a finite number above 0.");
  EXPECT_ORVANE_ERROR(p.SetParameter("Floor", INFINITY), 5, "Orvada.NNGridR", "Floor must be a finite number.");
  EXPECT_ORVANE_ERROR(p.SetTaughtness(NAN), 5, "Orvada.NNGridR", "Taughtness must be a finite number not below 0.");
  EXPECT_EQ(p.Parameter("MagY"), 1.0);
  p.Reset();
  EXPECT_EQ(p.Taughtness(), 1.0);
  EXPECT_EQ(p.Parameter("Nuldat"), 0.0);
}

}  // namespace
}  // namespace orvane
