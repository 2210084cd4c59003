// Inverse-distance and kriging grids of random points onto a 101 x 101 grid.

#include <benchmark/benchmark.h>

#include <cmath>
#include <random>
#include <vector>

#include "bench_points.h"
#include "orvane_kriging/kriging.h"
#include "orvane/core/array.h"
#include "orvane/resample/resampling.h"
#include "resample/interpolator.h"

namespace {

void BM_InverseDistance(benchmark::State& state) {
  const double power = static_cast<double>(state.range(1));
  const auto p = orvane::bench::RandomPoints(static_cast<std::size_t>(state.range(0)), 11);
  const std::vector<double> grid = orvane::bench::UnitAxis(101);
  for (auto _ : state) {
    benchmark::DoNotOptimize(orvane::InverseDistanceResampler::Grid(grid, grid, p.x, p.y, p.z, power));
  }
}
// Power 2 is the default (weights 1 / r^4); power 1 weights by 1 / r^2.
BENCHMARK(BM_InverseDistance)->Args({100000, 2})->Args({100000, 1})->Unit(benchmark::kMillisecond);

// Local inverse distance: 1,000,000 points in a 1000 x 1000 square onto 201 x 201 nodes,
// the 32 nearest within 20 (idw_vs_gdal_grid.sh times the command against gdal_grid).
void BM_InverseDistanceLocal(benchmark::State& state) {
  auto p = orvane::bench::RandomPoints(1000000, 11);
  for (double& v : p.x) v *= 1000.0;
  for (double& v : p.y) v *= 1000.0;
  std::vector<double> grid(201);
  for (std::size_t k = 0; k < grid.size(); ++k) grid[k] = 5.0 * static_cast<double>(k);
  for (auto _ : state) {
    benchmark::DoNotOptimize(orvane::InverseDistanceResampler::LocalGrid(grid, grid, p.x, p.y, p.z, 1.0, 32, 20.0));
  }
}
BENCHMARK(BM_InverseDistanceLocal)->Unit(benchmark::kMillisecond);

}  // namespace

// Ordinary kriging onto a 101 x 101 grid: spherical model, nugget 1, sill 2, range 1.

namespace {

void RunKriging(benchmark::State& state, bool block) {
  const auto n = static_cast<std::size_t>(state.range(0));
  auto p = orvane::bench::RandomPoints(n, 13);
  for (std::size_t i = 0; i < n; ++i) p.z[i] = std::sin(5 * p.x[i]) * p.y[i];
  const std::vector<double> grid = orvane::bench::UnitAxis(101);
  std::vector<double> values(grid.size() * grid.size());
  for (auto _ : state) {
    KrigingHandle h = KrigingCreate();
    KrigingSetData(h, static_cast<std::int32_t>(n), p.x.data(), p.y.data(), p.z.data());
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

// Natural-neighbour resampling of 100,000 random points onto a 201 x 201 grid, the whole
// run: triangulation, gradients (in gradient mode) and the grid. Arg 1 selects gradients.

namespace {

void BM_NaturalNeighbour(benchmark::State& state) {
  const auto n = static_cast<std::int32_t>(state.range(0));
  auto p = orvane::bench::RandomPoints(static_cast<std::size_t>(n), 17);
  for (std::size_t i = 0; i < p.x.size(); ++i) p.z[i] = std::sin(5 * p.x[i]) * p.y[i];
  orvane::Resampling settings;
  settings.SetAutoRange(false);
  settings.SetXMax(1.0);
  settings.SetYMax(1.0);
  settings.SetIntervalCount(200);
  settings.SetResamplerType(orvane::orvResamplerTypeNNGridR);
  settings.NNGridR().SetUseGradients(state.range(1) != 0);
  const orvane::Array x(p.x), y(p.y), z(p.z);
  orvane::NaturalNeighbourResampler resampler(settings);
  for (auto _ : state) {
    resampler.SetInputData(n, x, y, z);
    resampler.RefreshGrid();
  }
}
BENCHMARK(BM_NaturalNeighbour)->Args({100000, 0})->Args({100000, 1})->Unit(benchmark::kMillisecond);

}  // namespace
