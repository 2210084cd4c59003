// orvane grid: resample an XYZ file onto a regular grid by inverse distance, kriging or
// natural neighbour, through the same Resampling settings a data set uses, and write it
// as CSV or as a Golden Software ASCII grid (DSAA).

#include <algorithm>
#include <charconv>
#include <cmath>
#include <filesystem>
#include <iostream>
#include <memory>
#include <string>

#include "commands.h"
#include "orvane/core/error.h"
#include "orvane/data/xyz_file.h"
#include "orvane/resample/resampling.h"
#include "output_file.h"
#include "resample_options.h"
#include "resample/interpolator.h"

namespace orvane::cli {

namespace {

std::string Number(double v) {
  char buffer[32];
  const auto result = std::to_chars(buffer, buffer + sizeof buffer, v);
  return std::string(buffer, result.ptr);
}

struct GridOptions {
  std::string file;
  std::string output;
  ResampleOptions resample;
};

void Refuse(const std::string& text) { throw Error(5, "orvane", text); }

void WriteCsv(std::ostream& out, const std::vector<double>& x, const std::vector<double>& y,
              const std::vector<double>& z) {
  std::string line;
  for (std::size_t i = 0; i < x.size(); ++i) {
    for (std::size_t j = 0; j < y.size(); ++j) {
      line = Number(x[i]);
      line += ',';
      line += Number(y[j]);
      line += ',';
      line += Number(z[i * y.size() + j]);
      line += '\n';
      out << line;
    }
  }
}

// Golden Software ASCII grid: "DSAA", the counts, the X, Y and Z ranges, then one line
// per grid row from the lowest Y up, X increasing along the line.
void WriteDsaa(std::ostream& out, const std::vector<double>& x, const std::vector<double>& y,
               const std::vector<double>& z) {
  const auto [z0, z1] = std::minmax_element(z.begin(), z.end());
  out << "DSAA\n" << x.size() << ' ' << y.size() << '\n'
      << Number(x.front()) << ' ' << Number(x.back()) << '\n'
      << Number(y.front()) << ' ' << Number(y.back()) << '\n'
      << Number(*z0) << ' ' << Number(*z1) << '\n';
  std::string line;
  for (std::size_t j = 0; j < y.size(); ++j) {
    line.clear();
    for (std::size_t i = 0; i < x.size(); ++i) {
      if (i > 0) line += ' ';
      line += Number(z[i * y.size() + j]);
    }
    line += '\n';
    out << line;
  }
}

void RunGrid(const GridOptions& options) {
  const std::filesystem::path output(options.output);
  const std::string extension = output.extension().string();
  if (extension != ".csv" && extension != ".grd") {
    Refuse(options.output + ": the output must end in .csv (x,y,z lines) or .grd (DSAA grid).");
  }
  OutputFile file(options.output);  // a target that cannot be replaced is refused up front
  XyzPoints points = ReadXyzFile(options.file);
  Resampling settings;
  ConfigureResampling(options.resample, options.file, points, settings);
  std::unique_ptr<InterpolatorBase> resampler = CreateInterpolator(settings);
  const auto count = static_cast<std::int32_t>(points.x.size());
  resampler->SetInputData(count, std::move(points.x), std::move(points.y), std::move(points.z));

  std::vector<double> x, y, z;
  {
    InterruptGuard guard;
    ProgressBar bar;
    resampler->SetProgressCallback([&bar](std::int64_t done, std::int64_t total) { return bar.Update(done, total); });
    resampler->GetOutputData(x, y, z);
  }
  if (extension == ".csv") {
    WriteCsv(file.Stream(), x, y, z);
  } else {
    WriteDsaa(file.Stream(), x, y, z);
  }
  file.Commit();
}

}  // namespace

void AddGridCommand(CLI::App& app) {
  auto o = std::make_shared<GridOptions>();
  CLI::App* grid = app.add_subcommand(
      "grid", "Resample an XYZ file onto a regular grid and write it as CSV or as a DSAA .grd grid");
  grid->add_option("FILE", o->file, "XYZ text file")->required();
  AddResampleOptions(*grid, o->resample, "--method", true);
  grid->add_option("-o,--output", o->output, "OUT.csv or OUT.grd")->required();
  grid->callback([o] { RunGrid(*o); });
}

}  // namespace orvane::cli
