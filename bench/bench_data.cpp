// Triangulation of uniformly random points, as a data set does on DataAsSparseGridSet.
// The peak resident memory of the process is reported alongside.

#include <benchmark/benchmark.h>
#include <sys/resource.h>

#include <vector>

#include "bench_points.h"
#include "data/triangulate.h"

namespace {

double PeakMegabytes() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return static_cast<double>(usage.ru_maxrss) / 1024.0;  // ru_maxrss is in KiB
}

void BM_Triangulate(benchmark::State& state) {
  const auto p = orvane::bench::RandomPoints(static_cast<std::size_t>(state.range(0)), 42);
  for (auto _ : state) {
    orvane::CTriangulate mesh;
    mesh.Triangulate(p.x, p.y, p.z);
    benchmark::DoNotOptimize(mesh.TriangleCount());
  }
  state.counters["peak_MB"] = PeakMegabytes();
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_Triangulate)->Arg(10000)->Arg(100000)->Arg(1000000)->Unit(benchmark::kMillisecond);

}  // namespace
