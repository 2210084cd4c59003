// Tuned tracing and chaining against their verbatim baselines, and tracing on 1, 2 and 3
// threads against itself: every segment, band value and polyline the same bit for bit.

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "contour/baseline_contour.h"
#include "contour/contourer.h"
#include "contour/line_list.h"
#include "core/parallel.h"
#include "support/thread_count_scope.h"

namespace orvane {
namespace {

struct Field {
  std::string name;
  std::vector<double> x, y, z, boundaries;
};

// Fields that reach every path: smooth with many levels, heights landing exactly on the
// levels (vertices on a level, flat cells at a level), plateaus, noise, a single row of
// cells, and levels outside the data.
std::vector<Field> Fields() {
  const auto axis = [](std::size_t n, double scale) {
    std::vector<double> a(n);
    for (std::size_t i = 0; i < n; ++i) a[i] = scale * static_cast<double>(i) / static_cast<double>(n - 1);
    return a;
  };
  const auto levels = [](double lo, double hi, int count) {
    std::vector<double> values;
    for (int k = 0; k < count; ++k) values.push_back(lo + (hi - lo) * k / (count - 1));
    return CContourer::Boundaries(values);
  };
  // Heights h(x, y, i, j) at the nodes of an nx by ny grid over [0, scale] x [0, scale].
  const auto grid = [&axis](std::string name, std::size_t nx, std::size_t ny, double scale, const auto& h,
                            std::vector<double> boundaries) {
    Field f{std::move(name), axis(nx, scale), axis(ny, scale), {}, std::move(boundaries)};
    for (std::size_t i = 0; i < nx; ++i) {
      for (std::size_t j = 0; j < ny; ++j) f.z.push_back(h(f.x[i], f.y[j], i, j));
    }
    return f;
  };
  std::mt19937_64 random(3);
  std::uniform_real_distribution<double> unit(0.0, 1.0);
  return {grid("smooth 160 x 140, 21 levels", 160, 140, 4,
               [](double x, double y, std::size_t, std::size_t) { return std::sin(3 * x) * std::cos(3 * y) + 0.3 * x * y; },
               levels(-1, 5.5, 21)),
          grid("integer heights on the levels, plateaus", 90, 75, 1,
               [](double, double, std::size_t i, std::size_t j) { return std::floor(static_cast<double>((i * j) % 37) / 6.0); },
               levels(0, 6, 7)),
          grid("noise", 120, 130, 1, [&](double, double, std::size_t, std::size_t) { return unit(random); },
               levels(0.05, 0.95, 9)),
          grid("one row of cells, levels beyond the data", 2, 50, 1,
               [](double x, double y, std::size_t, std::size_t) { return x + 10 * y; }, levels(-5, 20, 11))};
}

template <class T>
bool SameBits(const std::vector<T>& a, const std::vector<T>& b) {
  return a.size() == b.size() && (a.empty() || std::memcmp(a.data(), b.data(), a.size() * sizeof(T)) == 0);
}

void ExpectSameTrace(const ContourTrace& a, const ContourTrace& b) {
  ASSERT_EQ(a.levelLines.size(), b.levelLines.size());
  ASSERT_EQ(a.bands.size(), b.bands.size());
  for (std::size_t k = 0; k < a.levelLines.size(); ++k) {
    EXPECT_TRUE(SameBits(a.levelLines[k].Lines(), b.levelLines[k].Lines())) << "level " << k;
  }
  for (std::size_t k = 0; k < a.bands.size(); ++k) EXPECT_TRUE(SameBits(a.bands[k], b.bands[k])) << "band " << k;
}

// A clip that keeps the left half of each triangle's bounding box, by halving X.
void HalveX(const double (&x)[3], const double (&y)[3], const double (&z)[3], BandTriangles& band) {
  band.insert(band.end(), {x[0] / 2, y[0], z[0], x[1] / 2, y[1], z[1], x[2] / 2, y[2], z[2]});
}

using testing::ThreadCountScope;

TEST(CContourerBaseline, GridTracesAreBitIdenticalToTheBaseline) {
  const ThreadCountScope threads(2);
  for (const Field& f : Fields()) {
    SCOPED_TRACE(f.name);
    ExpectSameTrace(CContourer::TraceGrid(f.x, f.y, f.z, f.boundaries),
                    testing::baseline::TraceGrid(f.x, f.y, f.z, f.boundaries));
    ExpectSameTrace(CContourer::TraceGrid(f.x, f.y, f.z, f.boundaries, HalveX),
                    testing::baseline::TraceGrid(f.x, f.y, f.z, f.boundaries, HalveX));
    ExpectSameTrace(CContourer::TraceGrid(f.x, f.y, f.z, f.boundaries, {}, false),
                    testing::baseline::TraceGrid(f.x, f.y, f.z, f.boundaries, {}, false));
  }
}

TEST(CContourerBaseline, MeshTracesAreBitIdenticalToTheBaseline) {
  for (const Field& f : Fields()) {
    SCOPED_TRACE(f.name);
    // The grid's cells as a mesh, each cell's triangles listed the other way round.
    const std::size_t ny = f.y.size();
    const std::size_t count = 2 * (f.x.size() - 1) * (ny - 1);
    auto triangle = [&](std::size_t t, double (&x)[3], double (&y)[3], double (&z)[3]) {
      const std::size_t cell = t / 2;
      const std::size_t i = cell / (ny - 1);
      const std::size_t j = cell % (ny - 1);
      const std::size_t di[2][3] = {{0, 1, 0}, {0, 1, 1}};
      const std::size_t dj[2][3] = {{0, 1, 1}, {0, 0, 1}};
      for (std::size_t k = 0; k < 3; ++k) {
        const std::size_t a = i + di[t % 2][k];
        const std::size_t b = j + dj[t % 2][k];
        x[k] = f.x[a];
        y[k] = f.y[b];
        z[k] = f.z[a * ny + b];
      }
    };
    ExpectSameTrace(CContourer::TraceMesh(count, triangle, f.boundaries),
                    testing::baseline::TraceMesh(count, triangle, f.boundaries));
  }
}

TEST(CContourerBaseline, OneTwoAndThreeThreadsTraceTheSame) {
  for (const Field& f : Fields()) {
    SCOPED_TRACE(f.name);
    ContourTrace one;
    {
      const ThreadCountScope threads(1);
      one = CContourer::TraceGrid(f.x, f.y, f.z, f.boundaries);
    }
    for (unsigned count : {2u, 3u}) {
      const ThreadCountScope threads(count);
      ExpectSameTrace(CContourer::TraceGrid(f.x, f.y, f.z, f.boundaries), one);
      const std::vector<CLineList> chained = CLineList::ChainAll(one.levelLines);
      ASSERT_EQ(chained.size(), one.levelLines.size());
      for (std::size_t k = 0; k < chained.size(); ++k) {
        const CLineList expected = testing::baseline::Chain(one.levelLines[k]);
        EXPECT_TRUE(SameBits(chained[k].Lines(), expected.Lines())) << "level " << k;
        EXPECT_EQ(chained[k].PolylineStarts(), expected.PolylineStarts()) << "level " << k;
      }
    }
  }
}

}  // namespace
}  // namespace orvane
