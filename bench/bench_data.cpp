// Triangulation of uniformly random points, as a data set does on DataAsSparseGridSet.
// The peak resident memory of the process is reported alongside.

#include <benchmark/benchmark.h>
#include <sys/resource.h>

#include <vector>

#include "bench_points.h"
#include "core/parallel.h"
#include "data/triangulate.h"

namespace {

double PeakMegabytes() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return static_cast<double>(usage.ru_maxrss) / 1024.0;  // ru_maxrss is in KiB
}

// threads: the thread count to allow (0: the machine's cores).
void RunTriangulate(benchmark::State& state, unsigned threads) {
  orvane::detail::SetThreadCount(threads);
  const auto p = orvane::bench::RandomPoints(static_cast<std::size_t>(state.range(0)), 42);
  for (auto _ : state) {
    orvane::CTriangulate mesh;
    mesh.Triangulate(p.x, p.y, p.z);
    benchmark::DoNotOptimize(mesh.TriangleCount());
  }
  state.counters["peak_MB"] = PeakMegabytes();
  state.SetItemsProcessed(state.iterations() * state.range(0));
  orvane::detail::SetThreadCount(0);
}
void BM_Triangulate(benchmark::State& state) { RunTriangulate(state, 0); }
BENCHMARK(BM_Triangulate)->Arg(10000)->Arg(100000)->Arg(1000000)->Unit(benchmark::kMillisecond);

// The same with one and with two threads.
void BM_TriangulateThreads(benchmark::State& state) {
  RunTriangulate(state, static_cast<unsigned>(state.range(1)));
}
BENCHMARK(BM_TriangulateThreads)->Args({1000000, 1})->Args({1000000, 2})->ArgNames({"", "threads"})->Unit(benchmark::kMillisecond);

}  // namespace
