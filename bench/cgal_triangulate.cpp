// The peer of BM_Triangulate: CGAL's Delaunay_triangulation_2 (exact predicates, inexact
// constructions) inserting the very same random points, as one range, which CGAL sorts
// along a Hilbert curve before inserting. Built only when CGAL is installed
// (scripts/install-deps.sh --bench).

#include <benchmark/benchmark.h>
#include <sys/resource.h>

#include <CGAL/Delaunay_triangulation_2.h>
#include <CGAL/Exact_predicates_inexact_constructions_kernel.h>

#include <vector>

#include "bench_points.h"

namespace {

using Kernel = CGAL::Exact_predicates_inexact_constructions_kernel;
using Delaunay = CGAL::Delaunay_triangulation_2<Kernel>;

void BM_CgalTriangulate(benchmark::State& state) {
  const auto p = orvane::bench::RandomPoints(static_cast<std::size_t>(state.range(0)), 42);
  std::vector<Kernel::Point_2> points;
  points.reserve(p.x.size());
  for (std::size_t i = 0; i < p.x.size(); ++i) points.emplace_back(p.x[i], p.y[i]);
  for (auto _ : state) {
    Delaunay mesh;
    mesh.insert(points.begin(), points.end());
    benchmark::DoNotOptimize(mesh.number_of_faces());
  }
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  state.counters["peak_MB"] = static_cast<double>(usage.ru_maxrss) / 1024.0;
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_CgalTriangulate)->Arg(10000)->Arg(100000)->Arg(1000000)->Unit(benchmark::kMillisecond);

}  // namespace
