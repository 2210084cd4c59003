#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "data/reference_triangulate.h"
#include "data/triangulate.h"
#include "support/expect_error.h"

namespace orvane {
namespace {

struct Points {
  std::string name;
  std::vector<double> x, y, z;
  void Add(double px, double py, double pz = 0.0) {
    x.push_back(px);
    y.push_back(py);
    z.push_back(pz);
  }
};

Points Random(int n, unsigned seed) {
  Points p{"random" + std::to_string(n) + "_" + std::to_string(seed), {}, {}, {}};
  std::mt19937 random(seed);
  std::uniform_real_distribution<double> unit(0.0, 1.0);
  for (int i = 0; i < n; ++i) p.Add(unit(random), unit(random), unit(random));
  return p;
}

Points Grid(int nx, int ny) {
  Points p{"grid" + std::to_string(nx) + "x" + std::to_string(ny), {}, {}, {}};
  for (int i = 0; i < nx; ++i) {
    for (int j = 0; j < ny; ++j) p.Add(i / (nx - 1.0), j / (ny - 1.0), std::sin(i + j));
  }
  return p;
}

// Structural checks every triangulation must pass.
void Validate(const CTriangulate& t) {
  const auto& v = t.TriangleVertices();
  const auto& nb = t.TriangleNeighbours();
  const auto& w = t.Work();
  ASSERT_EQ(v.size(), nb.size());
  ASSERT_EQ(t.CornerX().size(), v.size());
  std::map<std::pair<int, int>, int> edgeUse;
  for (std::int32_t tri = 0; tri < t.TriangleCount(); ++tri) {
    const std::size_t i = 3 * static_cast<std::size_t>(tri);
    const auto X = [&](int k) { return w.x[static_cast<std::size_t>(v[i + static_cast<std::size_t>(k)])]; };
    const auto Y = [&](int k) { return w.y[static_cast<std::size_t>(v[i + static_cast<std::size_t>(k)])]; };
    EXPECT_GT((X(1) - X(0)) * (Y(2) - Y(0)) - (Y(1) - Y(0)) * (X(2) - X(0)), 0.0)
        << "triangle " << tri << " is not counter-clockwise";
    for (std::size_t k = 0; k < 3; ++k) {
      EXPECT_EQ(t.CornerX()[i + k], t.PointX()[static_cast<std::size_t>(v[i + k])]);
      const std::int32_t a = v[i + k];
      const std::int32_t b = v[i + (k + 1) % 3];
      ++edgeUse[{a, b}];
      const std::int32_t other = nb[i + k];
      if (other == CTriangulate::kNoNeighbour) continue;
      // The neighbour holds the same edge the other way round and points back.
      bool back = false;
      for (std::size_t m = 0; m < 3; ++m) {
        const std::size_t j = 3 * static_cast<std::size_t>(other);
        if (v[j + m] == b && v[j + (m + 1) % 3] == a) back = nb[j + m] == tri;
      }
      EXPECT_TRUE(back) << "triangle " << tri << " edge " << k;
    }
  }
  for (const auto& [edge, count] : edgeUse) EXPECT_EQ(count, 1) << "edge used twice";
}

void ExpectSameAsReference(const Points& p) {
  SCOPED_TRACE(p.name);
  CTriangulate fast;
  fast.Triangulate(p.x, p.y, p.z);
  const testing::ReferenceMesh reference = testing::ReferenceTriangulate(p.x, p.y);
  EXPECT_EQ(testing::TriangleSet(fast.TriangleVertices()), reference.triangles);
  EXPECT_EQ(fast.HullVertices(), reference.hull);
  Validate(fast);
}

TEST(CTriangulate, MatchesTheLiteralProcedureOnRandomSetsAndGrids) {
  for (int n : {4, 5, 10, 50, 200, 1000, 3000}) {
    for (unsigned seed : {1u, 2u, 3u}) ExpectSameAsReference(Random(n, seed));
  }
  // Every cell of a grid has four co-circular corners and every row is collinear.
  for (auto [nx, ny] : {std::pair{2, 2}, {3, 3}, {10, 10}, {31, 17}, {60, 60}, {2, 50}}) {
    ExpectSameAsReference(Grid(nx, ny));
  }
}

TEST(CTriangulate, MatchesTheLiteralProcedureOnDuplicatesFewPointsAndLines) {
  Points dup = Random(300, 9);
  for (std::size_t i = 0; i < 300; ++i) dup.Add(dup.x[i], dup.y[i]);
  dup.name = "each point twice";
  Points same{"twenty copies of three points", {}, {}, {}};
  Points diagonal{"diagonal", {}, {}, {}}, steep{"steep", {}, {}, {}}, level{"horizontal", {}, {}, {}};
  for (int i = 0; i < 40; ++i) {
    if (i < 20) {
      same.Add(0, 0);
      same.Add(1, 0);
      same.Add(0.3, 1);
    }
    diagonal.Add(i / 39.0, i / 39.0);
    steep.Add(i / 3900.0, i / 39.0);
    level.Add(i / 39.0, 0.25);
  }
  for (const Points& p : {dup, same, diagonal, steep, level, Points{"one point", {0.5}, {0.5}, {1}},
                          Points{"two points", {0, 1}, {0, 1}, {1, 2}},
                          Points{"three points", {0, 1, 0.5}, {0, 0, 1}, {1, 2, 3}},
                          Points{"square", {0, 1, 1, 0}, {0, 0, 1, 1}, {1, 2, 3, 4}}}) {
    ExpectSameAsReference(p);
  }
}

TEST(CTriangulate, AxisWithoutExtentGivesAnEmptyMesh) {
  CTriangulate t;
  t.Triangulate(std::vector<double>{0.5, 0.5, 0.5}, std::vector<double>{0, 0.5, 1},
                std::vector<double>{1, 2, 3});
  EXPECT_EQ(t.PointCount(), 3);
  EXPECT_EQ(t.TriangleCount(), 0);
  EXPECT_TRUE(t.HullVertices().empty());
  double z = -1;
  EXPECT_FALSE(t.LocateAndInterpolate(0.5, 0.5, z));
  EXPECT_EQ(z, -1);
}

TEST(CTriangulate, SameInputGivesTheSameMeshEveryRun) {
  const Points p = Random(2000, 5);
  CTriangulate a;
  CTriangulate b;
  a.Triangulate(p.x, p.y, p.z);
  b.Triangulate(p.x, p.y, p.z);
  a.Triangulate(p.x, p.y, p.z);  // a second run on the same object resets the jitter
  EXPECT_EQ(a.TriangleVertices(), b.TriangleVertices());
  EXPECT_EQ(a.Work().x, b.Work().x);
  EXPECT_EQ(a.HullVertices(), b.HullVertices());
}

TEST(CTriangulate, ChainHullFollowsEdgesFromTheLowestVertex) {
  using E = std::vector<std::pair<std::int32_t, std::int32_t>>;
  EXPECT_EQ(detail::ChainHull(E{{5, 2}, {2, 7}, {7, 5}}), (std::vector<std::int32_t>{2, 7, 5}));
  EXPECT_EQ(detail::ChainHull(E{{3, 4}, {4, 3}}), (std::vector<std::int32_t>{3, 4}));
  EXPECT_TRUE(detail::ChainHull(E{}).empty());
  // Two loops touching at vertex 0 make one closed walk through both.
  EXPECT_EQ(detail::ChainHull(E{{0, 1}, {1, 2}, {2, 0}, {0, 3}, {3, 4}, {4, 0}}),
            (std::vector<std::int32_t>{0, 1, 2, 0, 3, 4}));
  // Separate loops: the longer one.
  EXPECT_EQ(detail::ChainHull(E{{0, 1}, {1, 0}, {5, 6}, {6, 7}, {7, 5}}),
            (std::vector<std::int32_t>{5, 6, 7}));
}

TEST(CTriangulate, LinearFieldsAreInterpolatedExactly) {
  Points p = Random(500, 21);
  for (std::size_t i = 0; i < p.x.size(); ++i) p.z[i] = 2 * p.x[i] - 3 * p.y[i] + 0.5;
  CTriangulate t;
  t.Triangulate(p.x, p.y, p.z);
  std::mt19937 random(3);
  std::uniform_real_distribution<double> inner(0.2, 0.8);
  for (int i = 0; i < 500; ++i) {
    const double x = inner(random);
    const double y = inner(random);
    double z = 0;
    ASSERT_TRUE(t.LocateAndInterpolate(x, y, z)) << x << "," << y;
    EXPECT_NEAR(z, 2 * x - 3 * y + 0.5, 1e-12);
  }
  double z = 7;
  EXPECT_TRUE(t.LocateAndInterpolate(p.x[17], p.y[17], z));  // at a data point
  EXPECT_NEAR(z, p.z[17], 1e-12);
  z = 7;
  EXPECT_FALSE(t.LocateAndInterpolate(1.5, 0.5, z));
  // Inside the limits but outside the hull: the corner below the leftmost point.
  EXPECT_FALSE(t.LocateAndInterpolate(*std::min_element(p.x.begin(), p.x.end()),
                                      *std::min_element(p.y.begin(), p.y.end()), z));
  EXPECT_FALSE(t.LocateAndInterpolate(std::nan(""), 0.5, z));
  EXPECT_EQ(z, 7);
}

TEST(CTriangulate, QualityComparesWithTheEquilateralTriangle) {
  CTriangulate t;
  t.Triangulate(std::vector<double>{0, 1, 0.5}, std::vector<double>{0, 0, 1},
                std::vector<double>{0, 0, 0});
  ASSERT_EQ(t.TriangleCount(), 1);
  EXPECT_DOUBLE_EQ(t.Quality(0, 1.0), 0.5 / 1.29904);
  EXPECT_EQ(t.QualityText(0, 1.0), "38.490%");
  EXPECT_ORVANE_ERROR(t.Quality(1, 1.0), 9, "Orvada");
}

TEST(CTriangulate, RefusesNonFiniteAndMismatchedInput) {
  CTriangulate t;
  t.Triangulate(std::vector<double>{0, 1, 0.5}, std::vector<double>{0, 0, 1},
                std::vector<double>{0, 0, 0});
  EXPECT_ORVANE_ERROR(t.Triangulate(std::vector<double>{0, std::nan("")},
                                    std::vector<double>{0, 1}, std::vector<double>{0, 1}),
                      5, "CTriangulate");
  EXPECT_ORVANE_ERROR(t.Triangulate(std::vector<double>{0, 1}, std::vector<double>{0},
                                    std::vector<double>{0, 1}),
                      5, "CTriangulate");
  EXPECT_EQ(t.TriangleCount(), 1);  // the earlier mesh is kept
  t.Reset();
  EXPECT_EQ(t.TriangleCount(), 0);
  EXPECT_EQ(t.PointCount(), 0);
}

}  // namespace
}  // namespace orvane
