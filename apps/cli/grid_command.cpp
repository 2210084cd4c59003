// orvane grid: resample an XYZ file onto a regular grid by inverse distance, kriging or
// natural neighbour, through a data set's Resampling settings, and write it as CSV or as
// a Golden Software ASCII grid (DSAA). Cells outside the data's convex hull can be left
// blank: natural neighbour blanks them unless asked to extrapolate.

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <iostream>
#include <memory>
#include <string>

#include "commands.h"
#include "input_options.h"
#include "numbers.h"
#include "orvane/core/error.h"
#include "orvane/data/data_set.h"
#include "orvane/data/grid_file.h"
#include "orvane/data/xyz_file.h"
#include "orvane/resample/resampling.h"
#include "output_file.h"
#include "resample_options.h"

namespace orvane::cli {

namespace {

struct GridOptions {
  std::string file;
  std::string output;
  InputOptions input;
  ResampleOptions resample;
  bool blankOutsideHull = false;
  bool extrapolate = false;
};

void Refuse(const std::string& text) { throw Error(5, "orvane", text); }

bool Blank(double z) { return !(std::fabs(z) < kDsaaBlank); }

void WriteCsv(std::ostream& out, const GridFile& g) {
  std::string line;
  const std::size_t ny = g.y.size();
  for (std::size_t i = 0; i < g.x.size(); ++i) {
    for (std::size_t j = 0; j < ny; ++j) {
      const double z = g.z[i * ny + j];
      line = Number(g.x[i]);
      line += ',';
      line += Number(g.y[j]);
      line += ',';
      if (!Blank(z)) line += Number(z);  // a blank cell has an empty Z
      line += '\n';
      out << line;
    }
  }
}

// Golden Software ASCII grid: "DSAA", the counts, the X, Y and Z ranges (of the values
// that are not blank), then one line per grid row from the lowest Y up, X increasing
// along the line; blank cells hold 1.70141e+38.
void WriteDsaa(std::ostream& out, const GridFile& g) {
  double z0 = kDsaaBlank, z1 = kDsaaBlank;
  bool any = false;
  for (double z : g.z) {
    if (Blank(z)) continue;
    z0 = any ? std::min(z0, z) : z;
    z1 = any ? std::max(z1, z) : z;
    any = true;
  }
  out << "DSAA\n" << g.x.size() << ' ' << g.y.size() << '\n'
      << Rounded(g.x.front()) << ' ' << Rounded(g.x.back()) << '\n'
      << Rounded(g.y.front()) << ' ' << Rounded(g.y.back()) << '\n'
      << Rounded(z0) << ' ' << Rounded(z1) << '\n';
  std::string line;
  const std::size_t ny = g.y.size();
  for (std::size_t j = 0; j < ny; ++j) {
    line.clear();
    for (std::size_t i = 0; i < g.x.size(); ++i) {
      if (i > 0) line += ' ';
      const double z = g.z[i * ny + j];
      line += Number(Blank(z) ? kDsaaBlank : z);
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
  if (options.extrapolate && options.blankOutsideHull) Refuse("--extrapolate and --blank-outside-hull contradict each other.");
  OutputFile file(options.output);  // a target that cannot be replaced is refused up front
  const XyzPoints points = ReadPoints(options.file, options.input);
  DataSet data;
  ConfigureResampling(options.resample, options.file, points, data.Resampling());
  const bool natural = options.resample.method == "nn";
  data.Resampling().SetBlankOutsideHull(options.blankOutsideHull || (natural && !options.extrapolate));
  data.DataAsSparseGridSet(points.x, points.y, points.z);

  GridFile grid;
  {
    InterruptGuard guard;
    ProgressBar bar;
    data.SetResamplingProgress([&bar](std::int64_t done, std::int64_t total) { return bar.Update(done, total); });
    grid = data.ResampledGrid();
    data.SetResamplingProgress(nullptr);
  }
  if (extension == ".csv") {
    WriteCsv(file.Stream(), grid);
  } else {
    WriteDsaa(file.Stream(), grid);
  }
  file.Commit();
}

}  // namespace

void AddGridCommand(CLI::App& app) {
  auto o = std::make_shared<GridOptions>();
  CLI::App* grid = app.add_subcommand(
      "grid", "Resample an XYZ file onto a regular grid and write it as CSV or as a DSAA .grd grid");
  grid->add_option("FILE", o->file, "XYZ text file")->required();
  AddInputOptions(*grid, o->input);
  AddResampleOptions(*grid, o->resample, "--method", true);
  grid->add_flag("--blank-outside-hull", o->blankOutsideHull,
                 "Leave cells outside the data's convex hull blank (the default for nn; also for idw and kriging)");
  grid->add_flag("--extrapolate", o->extrapolate, "nn: fill the cells outside the data's hull too (extrapolated)");
  grid->add_option("-o,--output", o->output, "OUT.csv or OUT.grd (blank cells: an empty Z, or 1.70141e+38)")->required();
  grid->callback([o] { RunGrid(*o); });
}

}  // namespace orvane::cli
