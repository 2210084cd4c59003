// Inverse-distance and kriging grids of random points onto a 101 x 101 grid.

#include <benchmark/benchmark.h>

#include <cmath>
#include <random>
#include <vector>

#include "orvane_kriging/kriging.h"
#include "resample/interpolator.h"

namespace {

void BM_InverseDistance(benchmark::State& state) {
  const auto n = static_cast<std::size_t>(state.range(0));
  const double power = static_cast<double>(state.range(1));
  std::mt19937_64 random(11);
  std::uniform_real_distribution<double> unit(0.0, 1.0);
  std::vector<double> x(n), y(n), z(n);
  for (std::size_t i = 0; i < n; ++i) {
    x[i] = unit(random);
    y[i] = unit(random);
    z[i] = unit(random);
  }
  std::vector<double> grid(101);
  for (std::size_t i = 0; i < grid.size(); ++i) grid[i] = static_cast<double>(i) / 100.0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(orvane::InverseDistanceResampler::Grid(grid, grid, x, y, z, power));
  }
}
// Power 2 is the default (weights 1 / r^4); power 1 weights by 1 / r^2.
BENCHMARK(BM_InverseDistance)->Args({100000, 2})->Args({100000, 1})->Unit(benchmark::kMillisecond);

}  // namespace

// Ordinary kriging onto a 101 x 101 grid: spherical model, nugget 1, sill 2, range 1.

namespace {

void RunKriging(benchmark::State& state, bool block) {
  const auto n = static_cast<std::size_t>(state.range(0));
  std::mt19937_64 random(13);
  std::uniform_real_distribution<double> unit(0.0, 1.0);
  std::vector<double> x(n), y(n), z(n);
  for (std::size_t i = 0; i < n; ++i) {
    x[i] = unit(random);
    y[i] = unit(random);
    z[i] = std::sin(5 * x[i]) * y[i];
  }
  std::vector<double> grid(101);
  for (std::size_t i = 0; i < grid.size(); ++i) grid[i] = static_cast<double>(i) / 100.0;
  std::vector<double> values(grid.size() * grid.size());
  for (auto _ : state) {
    KrigingHandle h = KrigingCreate();
    KrigingSetData(h, static_cast<std::int32_t>(n), x.data(), y.data(), z.data());
    KrigingSetGridCoordinate(h, 101, grid.data(), 101, grid.data());
    KrigingSetBlockKriging(h, block);
    KrigingSetModel(h, 1);
    KrigingSetSill(h, 1.0, 2.0);
    KrigingSetRange(h, 1.0);
    if (KrigingCalculate(h) != kKrigingOk) state.SkipWithError(KrigingGetLastError(h));
    KrigingGetValues(h, values.data());
    KrigingDelete(h);
  }
}

void BM_KrigingGlobal(benchmark::State& state) { RunKriging(state, false); }
void BM_KrigingBlock(benchmark::State& state) { RunKriging(state, true); }
BENCHMARK(BM_KrigingGlobal)->Arg(2000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_KrigingBlock)->Arg(100000)->Unit(benchmark::kMillisecond);

}  // namespace
