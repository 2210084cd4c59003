// Contour lines, filled bands and chaining over a 1000 x 1000 grid of
// z = sin(3x) cos(3y) + 0.3 x y on [0, 4]^2 with 20 automatic intervals (21 levels).

#include <benchmark/benchmark.h>

#include <cmath>
#include <vector>

#include "contour/contourer.h"
#include "core/parallel.h"
#include "orvane/contour/contouring.h"

namespace {

struct Grid {
  std::vector<double> x, y, z, levels;
};

Grid MakeGrid(std::size_t n) {
  Grid g;
  g.x.resize(n);
  g.y.resize(n);
  for (std::size_t i = 0; i < n; ++i) g.x[i] = g.y[i] = 4.0 * static_cast<double>(i) / static_cast<double>(n - 1);
  g.z.resize(n * n);
  double zMin = INFINITY, zMax = -INFINITY;
  for (std::size_t i = 0; i < n; ++i) {
    for (std::size_t j = 0; j < n; ++j) {
      const double z = std::sin(3 * g.x[i]) * std::cos(3 * g.y[j]) + 0.3 * g.x[i] * g.y[j];
      g.z[i * n + j] = z;
      zMin = std::min(zMin, z);
      zMax = std::max(zMax, z);
    }
  }
  orvane::Contouring contouring;
  contouring.SetAutoSetIntervalCount(20);
  contouring.AutoSetContours(zMin, zMax);
  for (std::int32_t i = 0; i < contouring.Contours().Count(); ++i) {
    g.levels.push_back(contouring.Contours().Item(i)->Value());
  }
  return g;
}

// threads: the thread count to allow (0: the machine's cores).
void RunContourGrid(benchmark::State& state, unsigned threads) {
  orvane::detail::SetThreadCount(threads);
  const Grid g = MakeGrid(static_cast<std::size_t>(state.range(0)));
  const std::vector<double> boundaries = orvane::CContourer::Boundaries(g.levels);
  std::size_t segments = 0;
  for (auto _ : state) {
    orvane::ContourTrace trace = orvane::CContourer::TraceGrid(g.x, g.y, g.z, boundaries);
    segments = 0;
    for (const orvane::CLineList& chained : orvane::CLineList::ChainAll(trace.levelLines)) {
      segments += chained.Count();
    }
    benchmark::DoNotOptimize(trace.bands.data());
  }
  state.counters["segments"] = static_cast<double>(segments);
  orvane::detail::SetThreadCount(0);
}
void BM_ContourGrid(benchmark::State& state) { RunContourGrid(state, 0); }
BENCHMARK(BM_ContourGrid)->Arg(1000)->Unit(benchmark::kMillisecond);

// The same with one and with two threads.
void BM_ContourGridThreads(benchmark::State& state) {
  RunContourGrid(state, static_cast<unsigned>(state.range(1)));
}
BENCHMARK(BM_ContourGridThreads)->Args({1000, 1})->Args({1000, 2})->ArgNames({"", "threads"})->Unit(benchmark::kMillisecond);

}  // namespace
