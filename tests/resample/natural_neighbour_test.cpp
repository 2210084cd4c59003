#include "resample/natural_neighbour.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

#include "support/expect_error.h"

namespace orvane::detail {
namespace {

struct Points {
  std::vector<double> x, y, z;
};

Points Random(std::size_t n, unsigned seed, double (*f)(double, double)) {
  std::mt19937_64 rng(seed);
  std::uniform_real_distribution<double> u(0.0, 1.0);
  Points p;
  for (std::size_t k = 0; k < n; ++k) {
    p.x.push_back(u(rng));
    p.y.push_back(u(rng));
    p.z.push_back(f(p.x.back(), p.y.back()));
  }
  return p;
}

// A regular lattice of (n + 1)^2 points over [0, 2] x [10, 11].
Points Lattice(int n, double (*f)(double, double)) {
  Points p;
  for (int i = 0; i <= n; ++i) {
    for (int j = 0; j <= n; ++j) {
      p.x.push_back(2.0 * i / n);
      p.y.push_back(10.0 + 1.0 * j / n);
      p.z.push_back(f(p.x.back(), p.y.back()));
    }
  }
  return p;
}

double Plane(double x, double y) { return 3.0 - 2.0 * x + 0.5 * y; }
double Bump(double x, double y) { return std::sin(3.0 * x) * std::cos(2.0 * y); }

NaturalNeighbourOptions Gradients(double tautness = 1.0) {
  NaturalNeighbourOptions o;
  o.gradients = true;
  o.tautness = tautness;
  return o;
}

TEST(NaturalNeighbour, DataPointsGiveTheirValuesExactly) {
  const Points p = Random(300, 1, Bump);
  const NaturalNeighbour nn(p.x, p.y, p.z);
  NaturalNeighbour::Cursor cursor;
  for (const NaturalNeighbourOptions& o : {NaturalNeighbourOptions{}, Gradients(), Gradients(3.0)}) {
    for (std::size_t k = 0; k < p.x.size(); ++k) {
      EXPECT_EQ(nn.ValueAt(p.x[k], p.y[k], o, cursor), p.z[k]) << k;
    }
  }
}

TEST(NaturalNeighbour, LinearFieldsAreReproducedInsideOnAndBeyondTheHull) {
  std::mt19937_64 rng(7);
  std::uniform_real_distribution<double> u(-0.2, 1.2);
  for (const Points& p : {Random(500, 2, Plane), Lattice(12, Plane)}) {
    const NaturalNeighbour nn(p.x, p.y, p.z);
    const auto [x0, x1] = std::minmax_element(p.x.begin(), p.x.end());
    const auto [y0, y1] = std::minmax_element(p.y.begin(), p.y.end());
    NaturalNeighbour::Cursor cursor;
    double worst = 0.0;
    for (int k = 0; k < 5000; ++k) {
      const double x = *x0 + u(rng) * (*x1 - *x0);
      const double y = *y0 + u(rng) * (*y1 - *y0);
      for (const NaturalNeighbourOptions& o : {NaturalNeighbourOptions{}, Gradients()}) {
        worst = std::max(worst, std::fabs(nn.ValueAt(x, y, o, cursor) - Plane(x, y)));
      }
    }
    // Grid lines through the lattice's points and along its border.
    for (int i = 0; i <= 48; ++i) {
      for (int j = 0; j <= 48; ++j) {
        const double x = *x0 + (*x1 - *x0) * i / 48;
        const double y = *y0 + (*y1 - *y0) * j / 48;
        worst = std::max(worst, std::fabs(nn.ValueAt(x, y, {}, cursor) - Plane(x, y)));
      }
    }
    EXPECT_LT(worst, 1e-12);
  }
}

TEST(NaturalNeighbour, SibsonCoordinatesAreLocalCoordinates) {
  const Points p = Random(400, 3, Bump);
  const NaturalNeighbour nn(p.x, p.y, p.z);
  // Merged points are sorted by X: recover their coordinates to check sum lambda x = p.
  std::vector<std::size_t> order(p.x.size());
  for (std::size_t k = 0; k < order.size(); ++k) order[k] = k;
  std::sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) { return p.x[a] < p.x[b]; });
  std::mt19937_64 rng(4);
  std::uniform_real_distribution<double> u(0.2, 0.8);
  std::vector<std::int32_t> points;
  std::vector<double> weights;
  for (int k = 0; k < 2000; ++k) {
    const double x = u(rng);
    const double y = u(rng);
    ASSERT_TRUE(nn.Coordinates(x, y, points, weights));
    double sum = 0.0, sx = 0.0, sy = 0.0;
    for (std::size_t m = 0; m < points.size(); ++m) {
      EXPECT_GE(weights[m], -1e-14);
      sum += weights[m];
      sx += weights[m] * p.x[order[static_cast<std::size_t>(points[m])]];
      sy += weights[m] * p.y[order[static_cast<std::size_t>(points[m])]];
    }
    EXPECT_NEAR(sum, 1.0, 1e-13);
    EXPECT_NEAR(sx, x, 1e-13);
    EXPECT_NEAR(sy, y, 1e-13);
  }
}

TEST(NaturalNeighbour, KnownCoordinates) {
  std::vector<std::int32_t> points;
  std::vector<double> weights;
  // Three points: the only local coordinates are the barycentric ones.
  const NaturalNeighbour three(std::vector<double>{0, 4, 1}, std::vector<double>{0, 0, 3},
                               std::vector<double>{1, 2, 3});
  ASSERT_TRUE(three.Coordinates(1.5, 1.0, points, weights));
  ASSERT_EQ(points.size(), 3u);
  // Merged points are numbered by working X: (0, 0), (1, 3), (4, 0). Barycentric
  // coordinates do not change with the scaling of the axes.
  const double expected[3] = {3.0 / 8.0, 1.0 / 3.0, 7.0 / 24.0};
  for (std::size_t m = 0; m < 3; ++m) EXPECT_NEAR(weights[m], expected[points[m]], 1e-15);
  // A lattice cell's centre takes a quarter of each corner (cocircular corners).
  const Points lattice = Lattice(4, Bump);
  const NaturalNeighbour nn(lattice.x, lattice.y, lattice.z);
  NaturalNeighbour::Cursor cursor;
  const double mean = (Bump(0.5, 10.25) + Bump(1.0, 10.25) + Bump(0.5, 10.5) + Bump(1.0, 10.5)) / 4;
  EXPECT_NEAR(nn.ValueAt(0.75, 10.375, {}, cursor), mean, 1e-15);
  // On a hull edge: linear between its ends.
  EXPECT_NEAR(nn.ValueAt(0.2, 10.0, {}, cursor), 0.6 * Bump(0.0, 10.0) + 0.4 * Bump(0.5, 10.0), 1e-15);
}

TEST(NaturalNeighbour, MeshIsDelaunayAndOrderDoesNotMatter) {
  const Points p = Random(600, 5, Bump);
  Points wide = p;  // very different ranges on the two axes
  for (double& x : wide.x) x *= 1e6;
  for (const Points& q : {p, wide, Lattice(10, Bump)}) EXPECT_TRUE(NaturalNeighbour(q.x, q.y, q.z).IsDelaunay());

  Points reversed = p;
  for (std::vector<double>* v : {&reversed.x, &reversed.y, &reversed.z}) std::reverse(v->begin(), v->end());
  std::vector<double> gx, gy;
  for (int k = 0; k <= 30; ++k) {
    gx.push_back(-0.1 + 1.2 * k / 30);
    gy.push_back(-0.1 + 1.2 * k / 30);
  }
  ProgressCallback none;
  for (const NaturalNeighbourOptions& o : {NaturalNeighbourOptions{}, Gradients()}) {
    RunProgress a(none, 0), b(none, 0);
    EXPECT_EQ(NaturalNeighbour(p.x, p.y, p.z).Grid(gx, gy, o, a),
              NaturalNeighbour(reversed.x, reversed.y, reversed.z).Grid(gx, gy, o, b));
  }
}

TEST(NaturalNeighbour, SurfaceIsContinuous) {
  const Points p = Random(200, 8, Bump);
  const NaturalNeighbour nn(p.x, p.y, p.z);
  NaturalNeighbour::Cursor cursor;
  // Along a fine line the values never jump: steps stay within a slope bound.
  for (const NaturalNeighbourOptions& o : {NaturalNeighbourOptions{}, Gradients(), Gradients(0.0)}) {
    double previous = nn.ValueAt(-0.05, 0.3, o, cursor);
    double worst = 0.0;
    const int steps = 200000;
    for (int k = 1; k <= steps; ++k) {
      const double t = static_cast<double>(k) / steps;
      const double value = nn.ValueAt(-0.05 + 1.1 * t, 0.3 + 0.4 * t, o, cursor);
      worst = std::max(worst, std::fabs(value - previous));
      previous = value;
    }
    EXPECT_LT(worst, 2e-3);  // a slope of at most about 170 over steps of 1.2e-5
  }
}

TEST(NaturalNeighbour, TautnessMovesTheBlendTowardTheLinearSurface) {
  const Points p = Random(150, 10, Bump);
  const NaturalNeighbour nn(p.x, p.y, p.z);
  NaturalNeighbour::Cursor cursor;
  double gradientGap = 0.0;
  for (int k = 0; k < 200; ++k) {
    const double x = 0.3 + 0.002 * k;
    const double y = 0.6 - 0.001 * k;
    const double linear = nn.ValueAt(x, y, {}, cursor);
    const double c1 = nn.ValueAt(x, y, Gradients(1.0), cursor);
    const double taut = nn.ValueAt(x, y, Gradients(1e12), cursor);
    EXPECT_NEAR(taut, linear, 1e-9);
    EXPECT_LE(std::fabs(nn.ValueAt(x, y, Gradients(10.0), cursor) - linear),
              std::fabs(c1 - linear) + 1e-15);
    gradientGap = std::max(gradientGap, std::fabs(c1 - linear));
  }
  EXPECT_GT(gradientGap, 1e-4);  // the blend is a different surface
  // The C1 surface follows a smooth field better than the linear one.
  double linearError = 0.0, c1Error = 0.0;
  for (int k = 0; k < 400; ++k) {
    const double x = 0.25 + 0.5 * ((k * 37) % 400) / 400.0;
    const double y = 0.25 + 0.5 * ((k * 91) % 400) / 400.0;
    linearError += std::fabs(nn.ValueAt(x, y, {}, cursor) - Bump(x, y));
    c1Error += std::fabs(nn.ValueAt(x, y, Gradients(), cursor) - Bump(x, y));
  }
  EXPECT_LT(c1Error, 0.5 * linearError);
}

TEST(NaturalNeighbour, OutsideTheHullAndClipping) {
  const NaturalNeighbour nn(std::vector<double>{0, 1, 0, 1, 0.5}, std::vector<double>{0, 0, 1, 1, 0.5},
                            std::vector<double>{-1, -1, -1, -1, 2});
  NaturalNeighbour::Cursor cursor;
  NaturalNeighbourOptions o;
  o.extrapolate = false;
  o.nullValue = -99.0;
  EXPECT_EQ(nn.ValueAt(1.5, 0.5, o, cursor), -99.0);
  EXPECT_EQ(nn.ValueAt(1.0, 0.5, o, cursor), -1.0);  // on the hull: inside
  o.extrapolate = true;
  o.nonNegative = true;
  EXPECT_EQ(nn.ValueAt(0.1, 0.1, o, cursor), 0.0);
  EXPECT_EQ(nn.ValueAt(0.5, 0.5, o, cursor), 2.0);
  o.nonNegative = false;
  o.clipToFloor = true;
  o.floor = -0.5;
  EXPECT_EQ(nn.ValueAt(0.1, 0.1, o, cursor), -0.5);
}

TEST(NaturalNeighbour, DuplicatesMergeAndDegenerateInputIsRefused) {
  const NaturalNeighbour nn(std::vector<double>{0, 1, 0, 1, 1}, std::vector<double>{0, 0, 1, 1, 1},
                            std::vector<double>{0, 0, 0, 2, 4});
  EXPECT_EQ(nn.PointCount(), 4);
  NaturalNeighbour::Cursor cursor;
  EXPECT_EQ(nn.ValueAt(1, 1, {}, cursor), 3.0);
  const char* line = "Natural-neighbour interpolation needs points that do not all lie on one line.";
  struct Case {
    std::vector<double> x, y, z;
    const char* message;
  };
  for (const Case& c : {Case{{0, 1}, {0, 1}, {0, 1}, "Natural-neighbour interpolation needs at least three points."},
                        Case{{0, 1, 2, 3}, {1, 2, 3, 4}, {0, 1, 2, 3}, line}, Case{{0, 1, 2}, {5, 5, 5}, {0, 1, 2}, line},
                        Case{{0, 0, 0}, {0, 0, 0}, {0, 1, 2}, line}}) {
    EXPECT_ORVANE_ERROR(NaturalNeighbour(c.x, c.y, c.z), 5, "Orvada.NNGridR", c.message);
  }
}

}  // namespace
}  // namespace orvane::detail
