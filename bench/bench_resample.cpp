// Inverse-distance gridding of 100,000 random points onto a 101 x 101 grid.

#include <benchmark/benchmark.h>

#include <random>
#include <vector>

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
