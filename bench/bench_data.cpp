// Triangulation of uniformly random points, as a data set does on DataAsSparseGridSet,
// and reading a grid's text (XYZ and DSAA) from a file. The peak resident memory of the
// process is reported alongside.

#include <benchmark/benchmark.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cmath>
#include <cstdio>
#include <fstream>
#include <string>
#include <vector>

#include "bench_points.h"
#include "core/parallel.h"
#include "data/triangulate.h"
#include "orvane/data/data_file.h"
#include "orvane/data/xyz_file.h"

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

// A side x side grid of a smooth surface as text, written once per format: XYZ lines
// ("x y z", 17 significant digits as a program writes them) or a DSAA grid.
std::string GridText(int side, bool dsaa) {
  const std::string path = "/tmp/orvane-bench-" + std::to_string(getpid()) + (dsaa ? ".grd" : ".xyz");
  std::ofstream out(path);
  auto z = [](int i, int j) { return 100 + 30 * std::sin(0.01 * i) * std::cos(0.013 * j) + i * 1e-3; };
  char line[96];
  if (dsaa) {
    out << "DSAA\n" << side << ' ' << side << "\n0 " << side - 1 << "\n0 " << side - 1 << "\n70 130\n";
    for (int j = 0; j < side; ++j) {
      for (int i = 0; i < side; ++i) {
        std::snprintf(line, sizeof line, "%.17g%c", z(i, j), i + 1 < side ? ' ' : '\n');
        out << line;
      }
    }
  } else {
    for (int j = 0; j < side; ++j) {
      for (int i = 0; i < side; ++i) {
        std::snprintf(line, sizeof line, "%d %d %.17g\n", i, j, z(i, j));
        out << line;
      }
    }
  }
  return path;
}

// Reading a 1000 x 1000 grid's text: arg 0 reads XYZ with the text reader, arg 1 DSAA
// through ReadDataFile. Bytes per second is the figure to watch.
void BM_ReadGridText(benchmark::State& state) {
  const bool dsaa = state.range(0) == 1;
  const std::string path = GridText(1000, dsaa);
  std::ifstream size(path, std::ios::binary | std::ios::ate);
  const auto bytes = static_cast<std::int64_t>(size.tellg());
  for (auto _ : state) {
    if (dsaa) {
      benchmark::DoNotOptimize(orvane::ReadDataFile(path).grid.z.size());
    } else {
      benchmark::DoNotOptimize(orvane::ReadXyzFile(path).z.size());
    }
  }
  std::remove(path.c_str());
  state.SetBytesProcessed(state.iterations() * bytes);
  state.counters["peak_MB"] = PeakMegabytes();
}
BENCHMARK(BM_ReadGridText)->ArgName("dsaa")->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

}  // namespace
