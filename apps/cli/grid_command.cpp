// orvane grid: resample a data file's points onto a regular grid by inverse distance,
// kriging or natural neighbour, through a data set's Resampling settings, and write it in
// the format its extension names. Cells outside the data's convex hull can be left
// blank: natural neighbour blanks them unless asked to extrapolate.

#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <memory>
#include <string>

#include "commands.h"
#include "input_options.h"
#include "numbers.h"
#include "orvane/core/error.h"
#include "orvane/data/data_set.h"
#include "orvane/data/data_file.h"
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
  std::string crs;
  std::string format;  // with -o -: csv, asc or grd
  std::string variance;  // kriging: where its variance grid goes
};

void Refuse(const std::string& text) { throw Error(5, "orvane", text); }

void RunGrid(const GridOptions& options) {
  const bool toOutput = IsStreamed(options.output);  // standard output, a device or a pipe
  const std::string extension =
      toOutput ? "." + (options.format.empty() ? std::string("csv") : options.format) : std::filesystem::path(options.output).extension().string();
  const std::vector<std::string>& known = GridFileExtensions();
  std::string names;
  for (const std::string& name : known) names += (names.empty() ? "" : ", ") + name;
  if (!toOutput && !options.format.empty()) Refuse("--format applies to -o - (standard output) only");
  if (std::find(known.begin(), known.end(), extension) == known.end()) {
    Refuse(toOutput ? "--format must be csv, asc or grd for standard output"
                    : options.output + ": cannot write " +
                          (extension.empty() ? std::string("a file without an extension") : extension + " files") +
                          "; the grid formats are " + names);
  }
  if (options.extrapolate && options.blankOutsideHull) Refuse("--extrapolate and --blank-outside-hull contradict each other.");
  if (!options.variance.empty()) {
    if (options.resample.method != "kriging") Refuse("--variance applies to --method kriging only.");
    if (std::filesystem::path(options.variance).extension().string() != extension || toOutput) {
      Refuse("--variance " + options.variance + " must be a file of the grid's own format (" + extension + ")");
    }
    if (std::filesystem::weakly_canonical(options.variance) == std::filesystem::weakly_canonical(options.output)) {
      Refuse("--variance must name another file than -o");
    }
    OutputFile(options.variance);  // refused up front if it cannot be replaced
  }
  const std::string givenCrs = CrsAsWkt(options.crs);  // refused before any work
  // A target that cannot be replaced is refused up front; the file is written later.
  if (!toOutput) OutputFile(options.output);
  const DataFile source = ReadData(options.file, options.input);
  const XyzPoints points = PointsOf(source);
  Resampling settings;
  ConfigureResampling(options.resample, options.file, points, settings);
  const bool natural = options.resample.method == "nn";
  settings.SetBlankOutsideHull(options.blankOutsideHull || (natural && !options.extrapolate));

  GridFile grid, variance;
  {
    InterruptGuard guard;
    ProgressBar bar;
    // The points go straight to the resampler: no data set, so no triangulation of them.
    grid = ResampleGrid(settings, points.x, points.y, points.z,
                        [&bar](std::int64_t done, std::int64_t total) { return bar.Update(done, total); },
                        options.variance.empty() ? nullptr : &variance);
  }
  const std::string& crs = !givenCrs.empty() ? givenCrs : source.crs;
  if (toOutput && options.output != "-") {
    // A device or a pipe: the grid goes into a folder of its own first, then through.
    const std::filesystem::path folder =
        std::filesystem::temp_directory_path() / ("orvane-grid-" + std::to_string(::getpid()));
    std::filesystem::create_directories(folder);
    struct Remove {
      std::filesystem::path path;
      ~Remove() {
        std::error_code ignored;
        std::filesystem::remove_all(path, ignored);
      }
    } cleanup{folder};
    const std::filesystem::path staged = folder / ("grid" + extension);
    WriteGridFile(staged.string(), extension, grid, crs);
    OutputFile out(options.output);
    std::ifstream in(staged, std::ios::binary);
    out.Stream() << in.rdbuf();
    out.Commit();
  } else {
    WriteGridFile(options.output, extension, grid, crs);
  }
  if (!options.variance.empty()) WriteGridFile(options.variance, extension, variance, crs);
}

}  // namespace

void AddGridCommand(CLI::App& app) {
  auto o = std::make_shared<GridOptions>();
  CLI::App* grid = app.add_subcommand(
      "grid", "Resample a data file's points onto a regular grid and write it as GeoTIFF, NetCDF, ESRI ASCII, "
              "DSAA or CSV");
  grid->add_option("FILE", o->file, kDataFileHelp)->required();
  AddInputOptions(*grid, o->input);
  AddResampleOptions(*grid, o->resample, "--method", true);
  grid->add_flag("--blank-outside-hull", o->blankOutsideHull,
                 "Leave cells outside the data's convex hull blank (the default for nn; also for idw and kriging)");
  grid->add_flag("--extrapolate", o->extrapolate, "nn: fill the cells outside the data's hull too (extrapolated)");
  grid->add_option("--crs", o->crs,
                   "The coordinates' reference system (EPSG:n, WKT or PROJ), written into GeoTIFF, NetCDF, ESRI "
                   "ASCII (.prj) and DSAA (.aux.xml); default: the input's own");
  grid->add_option("-o,--output", o->output,
                   "OUT.tif (GeoTIFF, deflate), OUT.nc (NetCDF), OUT.asc (ESRI ASCII), OUT.grd (DSAA) or OUT.csv "
                   "(x,y,z lines); - for standard output (--format); blank cells take the format's no-data value")
      ->required();
  grid->add_option("--format", o->format, "With -o -: csv (default), asc or grd");
  grid->add_option("--variance", o->variance,
                   "kriging: also write the estimation variance of each node to this file, in the grid's format");
  grid->callback([o] { RunGrid(*o); });
}

}  // namespace orvane::cli
