// The tuned triangulation against its verbatim baseline, and against itself on 1, 2 and 3
// threads: every output list must be the same bit for bit.

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "core/parallel.h"
#include "data/baseline_triangulate.h"
#include "data/triangulate.h"
#include "support/thread_count_scope.h"

namespace orvane {
namespace {

struct Points {
  std::string name;
  std::vector<double> x, y, z;
  void Add(double px, double py, double pz) {
    x.push_back(px);
    y.push_back(py);
    z.push_back(pz);
  }
};

// Sets that reach every path: the prepare and finish blocks split (over 65536 points and
// slots), grids with four co-circular corners per cell, repeated points, and lines.
std::vector<Points> Sets() {
  std::vector<Points> sets;
  std::mt19937_64 random(17);
  std::uniform_real_distribution<double> unit(0.0, 1.0);
  Points uniform{"random 70000", {}, {}, {}};
  for (int i = 0; i < 70000; ++i) uniform.Add(unit(random), unit(random), unit(random));
  sets.push_back(uniform);
  Points scaled{"random 3000 at 1e9 scale", {}, {}, {}};
  for (int i = 0; i < 3000; ++i) scaled.Add(1e9 * unit(random), -1e9 * unit(random), unit(random));
  sets.push_back(scaled);
  Points grid{"grid 200 x 200", {}, {}, {}};
  for (int i = 0; i < 200; ++i) {
    for (int j = 0; j < 200; ++j) grid.Add(i, j, std::sin(i * j));
  }
  sets.push_back(grid);
  Points repeated{"each of 2000 points three times", {}, {}, {}};
  for (int i = 0; i < 2000; ++i) {
    const double px = unit(random);
    const double py = unit(random);
    for (int k = 0; k < 3; ++k) repeated.Add(px, py, k);
  }
  sets.push_back(repeated);
  Points lines{"three lines of 1000", {}, {}, {}};
  for (int i = 0; i < 1000; ++i) {
    lines.Add(i / 999.0, i / 999.0, 0);
    lines.Add(i / 999.0, 0.5, 1);
    lines.Add(0.25, i / 999.0, 2);
  }
  sets.push_back(lines);
  return sets;
}

template <class T>
bool SameBits(const std::vector<T>& a, const std::vector<T>& b) {
  return a.size() == b.size() && (a.empty() || std::memcmp(a.data(), b.data(), a.size() * sizeof(T)) == 0);
}

template <class Mesh>
void ExpectSameMesh(const CTriangulate& fast, const Mesh& other) {
  EXPECT_TRUE(SameBits(fast.TriangleVertices(), other.TriangleVertices()));
  EXPECT_TRUE(SameBits(fast.TriangleNeighbours(), other.TriangleNeighbours()));
  EXPECT_TRUE(SameBits(fast.HullVertices(), other.HullVertices()));
  EXPECT_TRUE(SameBits(fast.CornerX(), other.CornerX()));
  EXPECT_TRUE(SameBits(fast.CornerY(), other.CornerY()));
  EXPECT_TRUE(SameBits(fast.CornerZ(), other.CornerZ()));
  EXPECT_TRUE(SameBits(fast.PointZ(), other.PointZ()));
  EXPECT_TRUE(SameBits(fast.Work().x, other.Work().x));
  EXPECT_TRUE(SameBits(fast.Work().y, other.Work().y));
}

using testing::ThreadCountScope;

TEST(CTriangulateBaseline, EveryListIsBitIdenticalToTheBaseline) {
  const ThreadCountScope threads(2);
  for (const Points& p : Sets()) {
    SCOPED_TRACE(p.name);
    CTriangulate fast;
    fast.Triangulate(p.x, p.y, p.z);
    testing::baseline::CTriangulate baseline;
    baseline.Triangulate(p.x, p.y, p.z);
    ASSERT_GT(fast.TriangleCount(), 0);
    ExpectSameMesh(fast, baseline);
  }
}

TEST(CTriangulateBaseline, OneTwoAndThreeThreadsGiveTheSameMesh) {
  for (const Points& p : Sets()) {
    SCOPED_TRACE(p.name);
    CTriangulate one;
    {
      const ThreadCountScope threads(1);
      one.Triangulate(p.x, p.y, p.z);
    }
    for (unsigned count : {2u, 3u}) {
      const ThreadCountScope threads(count);
      CTriangulate more;
      more.Triangulate(p.x, p.y, p.z);
      ExpectSameMesh(more, one);
    }
  }
}

}  // namespace
}  // namespace orvane
