// Triangulation of uniformly random points, as a data set does on DataAsSparseGridSet.
// The peak resident memory of the process is reported alongside.

#include <benchmark/benchmark.h>
#include <sys/resource.h>

#include <random>
#include <vector>

#include "data/triangulate.h"

namespace {

double PeakMegabytes() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return static_cast<double>(usage.ru_maxrss) / 1024.0;  // ru_maxrss is in KiB
}

void BM_Triangulate(benchmark::State& state) {
  const auto n = static_cast<std::size_t>(state.range(0));
  std::mt19937_64 random(42);
  std::uniform_real_distribution<double> unit(0.0, 1.0);
  std::vector<double> x(n), y(n), z(n);
  for (std::size_t i = 0; i < n; ++i) {
    x[i] = unit(random);
    y[i] = unit(random);
    z[i] = unit(random);
  }
  for (auto _ : state) {
    orvane::CTriangulate mesh;
    mesh.Triangulate(x, y, z);
    benchmark::DoNotOptimize(mesh.TriangleCount());
  }
  state.counters["peak_MB"] = PeakMegabytes();
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_Triangulate)->Arg(10000)->Arg(100000)->Arg(1000000)->Unit(benchmark::kMillisecond);

}  // namespace
