// The orvane command end to end: a 1000 x 1000 DSAA grid rendered to an 800 x 600 PNG
// with 20 contour intervals (read, mesh, contours, frame, PNG), one process per run as a
// user would start it. The command's --timings line gives the stages of the last run.

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

namespace {

std::filesystem::path GridFile() {
  static const std::filesystem::path path = [] {
    const std::filesystem::path p = std::filesystem::temp_directory_path() / "orvane_bench_grid_1000.grd";
    std::ofstream out(p);
    const int n = 1000;
    out << "DSAA\n" << n << ' ' << n << "\n0 4\n0 4\n-2 5\n";
    char buffer[32];
    for (int j = 0; j < n; ++j) {
      for (int i = 0; i < n; ++i) {
        const double x = 4.0 * i / (n - 1), y = 4.0 * j / (n - 1);
        std::snprintf(buffer, sizeof buffer, "%.9g", std::sin(3 * x) * std::cos(3 * y) + 0.3 * x * y);
        out << buffer << (i + 1 < n ? ' ' : '\n');
      }
    }
    return p;
  }();
  return path;
}

void BM_RenderGridPng(benchmark::State& state) {
  const std::filesystem::path grid = GridFile();
  const std::filesystem::path png = std::filesystem::temp_directory_path() / "orvane_bench_grid.png";
  const std::string command = std::string(ORVANE_CLI_PATH) + " render " + grid.string() +
                              " --contours 20 --size 800x600 --timings -o " + png.string() + " 2>" +
                              (std::filesystem::temp_directory_path() / "orvane_bench_timings.txt").string();
  for (auto _ : state) {
    if (std::system(command.c_str()) != 0) state.SkipWithError("orvane render failed");
  }
}
BENCHMARK(BM_RenderGridPng)->Unit(benchmark::kMillisecond)->Iterations(5);

}  // namespace
