#include <gtest/gtest.h>

#include <Eigen/Dense>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <numeric>
#include <random>
#include <thread>
#include <vector>

#include "orvane_kriging/kriging.h"

namespace {

struct Points {
  std::vector<double> x, y, z;
};

Points Random(std::size_t n, unsigned seed) {
  Points p;
  std::mt19937 random(seed);
  std::uniform_real_distribution<double> unit(0, 1);
  for (std::size_t i = 0; i < n; ++i) {
    p.x.push_back(unit(random));
    p.y.push_back(unit(random));
    p.z.push_back(std::sin(4 * p.x.back()) + p.y.back() * p.y.back());
  }
  return p;
}

double Gamma(int model, double nugget, double sill, double range, double h) {
  if (h == 0) return 0;
  const double t = h / range;
  const double f = model == 1 ? (t < 1 ? 1.5 * t - 0.5 * t * t * t : 1.0)
                   : model == 2 ? 1 - std::exp(-3 * t)
                   : model == 3 ? 1 - std::exp(-3 * t * t)
                                : std::min(t, 1.0);
  return nugget + (sill - nugget) * f;
}

// The ordinary kriging equations of one point, solved directly over the given points.
double DirectEstimate(const Points& p, const std::vector<std::size_t>& use, int model, double nugget,
                      double sill, double range, double x0, double y0, double* variance = nullptr) {
  const auto n = static_cast<Eigen::Index>(use.size());
  Eigen::MatrixXd a(n + 1, n + 1);
  Eigen::VectorXd b(n + 1);
  for (Eigen::Index i = 0; i < n; ++i) {
    const std::size_t pi = use[static_cast<std::size_t>(i)];
    for (Eigen::Index j = 0; j < n; ++j) {
      const std::size_t pj = use[static_cast<std::size_t>(j)];
      a(i, j) = Gamma(model, nugget, sill, range, std::hypot(p.x[pi] - p.x[pj], p.y[pi] - p.y[pj]));
    }
    a(i, n) = a(n, i) = 1;
    b(i) = Gamma(model, nugget, sill, range, std::hypot(p.x[pi] - x0, p.y[pi] - y0));
  }
  a(n, n) = 0;
  b(n) = 1;
  const Eigen::VectorXd lambda = a.fullPivLu().solve(b);
  double estimate = 0;
  for (Eigen::Index i = 0; i < n; ++i) estimate += lambda(i) * p.z[use[static_cast<std::size_t>(i)]];
  if (variance != nullptr) *variance = lambda.dot(b);
  return estimate;
}

// An engine, given the points and the grid g by g when they are named.
struct Engine {
  KrigingHandle h = KrigingCreate();
  Engine() = default;
  Engine(const Points& p, const std::vector<double>& g) {
    EXPECT_EQ(KrigingSetData(h, static_cast<std::int32_t>(p.x.size()), p.x.data(), p.y.data(), p.z.data()), kKrigingOk);
    const auto n = static_cast<std::int32_t>(g.size());
    EXPECT_EQ(KrigingSetGridCoordinate(h, n, g.data(), n, g.data()), kKrigingOk);
  }
  ~Engine() { KrigingDelete(h); }
};

std::vector<double> Axis(std::size_t n) {
  std::vector<double> v(n);
  for (std::size_t i = 0; i < n; ++i) v[i] = static_cast<double>(i) / static_cast<double>(n - 1);
  return v;
}

TEST(KrigingEngine, GlobalEstimatesMatchADirectSolveForEveryModel) {
  const Points p = Random(150, 1);
  const std::vector<double> g = Axis(9);
  std::vector<std::size_t> all(p.x.size());
  std::iota(all.begin(), all.end(), 0);
  for (int model = 0; model <= 3; ++model) {
    Engine e(p, g);
    KrigingSetBlockKriging(e.h, false);
    KrigingSetModel(e.h, model);
    KrigingSetRange(e.h, 0.8);
    KrigingSetSill(e.h, 0.1, 2.0);
    ASSERT_EQ(KrigingCalculate(e.h), kKrigingOk) << KrigingGetLastError(e.h);
    std::vector<double> values(81), variances(81);
    ASSERT_EQ(KrigingGetValues(e.h, values.data()), kKrigingOk);
    ASSERT_EQ(KrigingGetEstimation(e.h, variances.data()), kKrigingOk);
    for (std::size_t i = 0; i < 9; ++i) {
      for (std::size_t j = 0; j < 9; ++j) {
        double variance = 0;
        const double direct = DirectEstimate(p, all, model, 0.1, 2.0, 0.8, g[i], g[j], &variance);
        EXPECT_NEAR(values[i * 9 + j], direct, 1e-9 * std::max(1.0, std::fabs(direct))) << "model " << model;
        EXPECT_NEAR(variances[i * 9 + j], variance, 1e-9 * std::max(1.0, std::fabs(variance)));
      }
    }
  }
}

TEST(KrigingEngine, ExactAtDataPointsAndBlockEqualsGlobalOnSmallInputs) {
  Points p = Random(20, 2);
  p.x[3] = 0.5;
  p.y[3] = 0.25;  // a data point on a grid node
  const std::vector<double> g = Axis(5);
  std::vector<double> global(25), block(25), variance(25);
  for (bool mode : {false, true}) {
    Engine e(p, g);
    KrigingSetBlockKriging(e.h, mode);
    KrigingSetModel(e.h, 1);
    ASSERT_EQ(KrigingCalculate(e.h), kKrigingOk);
    KrigingGetValues(e.h, mode ? block.data() : global.data());
    KrigingGetEstimation(e.h, variance.data());
  }
  EXPECT_EQ(global, block);
  EXPECT_NEAR(global[2 * 5 + 1], p.z[3], 1e-9);  // (0.5, 0.25)
  EXPECT_NEAR(variance[2 * 5 + 1], 0.0, 1e-9);
}

TEST(KrigingEngine, BlockModeUsesTheNearestThirtyTwoPoints) {
  const Points p = Random(400, 3);
  const std::vector<double> g = Axis(6);
  Engine e(p, g);
  KrigingSetModel(e.h, 2);
  ASSERT_EQ(KrigingCalculate(e.h), kKrigingOk);
  std::vector<double> values(36);
  KrigingGetValues(e.h, values.data());
  for (std::size_t i = 0; i < 6; ++i) {
    for (std::size_t j = 0; j < 6; ++j) {
      std::vector<std::size_t> order(400);
      std::iota(order.begin(), order.end(), 0);
      std::sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) {
        return std::hypot(p.x[a] - g[i], p.y[a] - g[j]) < std::hypot(p.x[b] - g[i], p.y[b] - g[j]);
      });
      order.resize(32);
      const double direct = DirectEstimate(p, order, 2, 1.0, 2.0, 1.0, g[i], g[j]);
      EXPECT_NEAR(values[i * 6 + j], direct, 1e-9 * std::max(1.0, std::fabs(direct)));
    }
  }
}

TEST(KrigingEngine, SingularAndOversizedSystemsAreRefused) {
  Points p = Random(10, 4);
  p.x[7] = p.x[2];
  p.y[7] = p.y[2];  // two points coincide
  const std::vector<double> g = Axis(3);
  Engine e(p, g);
  KrigingSetBlockKriging(e.h, false);
  EXPECT_EQ(KrigingCalculate(e.h), kKrigingSingular);
  EXPECT_NE(std::string(KrigingGetLastError(e.h)).find("singular"), std::string::npos);
  std::vector<double> values(9);
  EXPECT_EQ(KrigingGetValues(e.h, values.data()), kKrigingSingular);
  const Points many = Random(20000, 5);
  KrigingSetData(e.h, 20000, many.x.data(), many.y.data(), many.z.data());
  EXPECT_EQ(KrigingCalculate(e.h), kKrigingTooLarge);
  EXPECT_NE(std::string(KrigingGetLastError(e.h)).find("block kriging"), std::string::npos);
  // Bad arguments.
  EXPECT_EQ(KrigingSetModel(e.h, 4), kKrigingBadArgument);
  EXPECT_EQ(KrigingSetRange(e.h, 0), kKrigingBadArgument);
  const double nan = std::nan("");
  EXPECT_EQ(KrigingSetData(e.h, 1, &nan, &nan, &nan), kKrigingBadArgument);
  Engine fresh;
  EXPECT_EQ(KrigingGetValues(fresh.h, values.data()), kKrigingNotReady);
  EXPECT_EQ(KrigingCalculate(fresh.h), kKrigingNotReady);
}

TEST(KrigingEngine, ThreadedRunReportsProgressAndCanBeCancelled) {
  const Points p = Random(2000, 6);
  const std::vector<double> g = Axis(40);
  Engine e(p, g);
  ASSERT_EQ(KrigingCalculateInThread(e.h), kKrigingOk);
  while (!KrigingIsFinish(e.h)) std::this_thread::sleep_for(std::chrono::milliseconds(1));
  EXPECT_EQ(KrigingGetLastStatus(e.h), kKrigingOk);
  EXPECT_EQ(KrigingGetCurrentProgress(e.h), KrigingGetMaxProgressBar(e.h));
  EXPECT_EQ(KrigingGetMaxProgressBar(e.h), 1600);
  // A large grid, cancelled as soon as it has started.
  const std::vector<double> big = Axis(600);
  KrigingSetGridCoordinate(e.h, 600, big.data(), 600, big.data());
  ASSERT_EQ(KrigingCalculateInThread(e.h), kKrigingOk);
  EXPECT_EQ(KrigingSetModel(e.h, 1), kKrigingBusy);
  while (KrigingGetCurrentProgress(e.h) == 0 && !KrigingIsFinish(e.h)) {
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  KrigingCancel(e.h);
  const auto start = std::chrono::steady_clock::now();
  while (!KrigingIsFinish(e.h)) std::this_thread::sleep_for(std::chrono::milliseconds(1));
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(20));
  EXPECT_EQ(KrigingGetLastStatus(e.h), kKrigingCancelled);
  EXPECT_LT(KrigingGetCurrentProgress(e.h), KrigingGetMaxProgressBar(e.h));
}

}  // namespace
