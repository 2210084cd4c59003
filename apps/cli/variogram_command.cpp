// orvane variogram: the experimental semi-variogram of a data file's points and the
// models fitted to it, best first, as text or JSON.

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <iostream>
#include <memory>
#include <string>

#include <nlohmann/json.hpp>

#include "commands.h"
#include "input_options.h"
#include "numbers.h"
#include "orvane/core/error.h"
#include "orvane/resample/variogram.h"
#include "variogram_plot.h"

namespace orvane::cli {

namespace {

struct VariogramCommandOptions {
  std::string file;
  InputOptions input;
  double cutoff = 0.0;
  std::int32_t bins = 15;
  CLI::Option* direction = nullptr;
  double azimuth = 0.0;
  double tolerance = 22.5;
  CLI::Option* toleranceOption = nullptr;
  CLI::Option* sizeOption = nullptr;
  bool json = false;
  std::string plot;  // a PNG of the bins and the curves
  std::string size = "720x600";
};

void RunVariogram(const VariogramCommandOptions& o) {
  if (o.toleranceOption->count() > 0 && o.direction->count() == 0) throw Error(5, "orvane", "--tolerance applies with --direction only");
  if (o.sizeOption->count() > 0 && o.plot.empty()) throw Error(5, "orvane", "--size applies with --plot only");
  int width = 0, height = 0;
  if (!o.plot.empty()) {
    const std::string extension = std::filesystem::path(o.plot).extension().string();
    if (o.plot != "-" && extension != ".png") {
      throw Error(5, "orvane", o.plot + ": --plot writes .png (or - for standard output)");
    }
    char x = 0, extra = 0;
    if (std::sscanf(o.size.c_str(), "%d%c%d%c", &width, &x, &height, &extra) != 3 || (x != 'x' && x != 'X') ||
        width < 16 || height < 16 || width > 16384 || height > 16384) {
      throw Error(5, "orvane", "--size must be WIDTHxHEIGHT with each side from 16 to 16384, as in 800x600");
    }
  }
  const XyzPoints points = PointsOf(ReadData(o.file, o.input));
  VariogramOptions options;
  options.cutoff = o.cutoff;
  options.bins = o.bins;
  options.directional = o.direction->count() > 0;
  options.direction = o.azimuth;
  options.tolerance = o.tolerance;
  const std::vector<VariogramBin> bins = ExperimentalVariogram(points.x, points.y, points.z, options);
  std::vector<VariogramModel> models;
  std::string unfitted;  // why no model was fitted
  try {
    models = FitVariograms(bins);
  } catch (const Error& e) {
    unfitted = e.Description();
  }
  if (!o.plot.empty()) {
    double cutoff = o.cutoff;
    if (cutoff <= 0.0) {
      // The bins' own default: a third of the bounding box's diagonal.
      const auto [x0, x1] = std::minmax_element(points.x.begin(), points.x.end());
      const auto [y0, y1] = std::minmax_element(points.y.begin(), points.y.end());
      cutoff = std::hypot(*x1 - *x0, *y1 - *y0) / 3.0;
    }
    PlotVariogram(std::filesystem::path(o.file).filename().string(), bins, models, cutoff, width, height, o.plot);
    if (o.plot == "-") return;
  }
  if (o.json) {
    nlohmann::json out = {{"bins", nlohmann::json::array()}, {"models", nlohmann::json::array()}};
    for (const VariogramBin& b : bins) out["bins"].push_back({{"distance", b.distance}, {"gamma", b.gamma}, {"pairs", b.pairs}});
    for (const VariogramModel& m : models) {
      out["models"].push_back(
          {{"model", m.Name()}, {"nugget", m.nugget}, {"psill", m.psill}, {"range", m.range}, {"sse", m.sse}});
    }
    std::cout << out.dump() << "\n";
    return;
  }
  // Six significant digits in columns; --json gives every digit.
  char line[160];
  std::cout << "distance      semivariance  pairs\n";
  for (const VariogramBin& b : bins) {
    std::snprintf(line, sizeof line, "%-13.6g %-13.6g %lld\n", b.distance, b.gamma, static_cast<long long>(b.pairs));
    std::cout << line;
  }
  if (!models.empty()) std::cout << "\nmodel        nugget        partial sill  range         weighted SSE\n";
  for (const VariogramModel& m : models) {
    std::snprintf(line, sizeof line, "%-12s %-13.6g %-13.6g %-13.6g %.6g\n", m.Name(), m.nugget, m.psill, m.range, m.sse);
    std::cout << line;
  }
  if (!unfitted.empty()) std::cerr << "orvane: no model was fitted: " << unfitted << "\n";
}

}  // namespace

void AddVariogramCommand(CLI::App& app) {
  auto o = std::make_shared<VariogramCommandOptions>();
  CLI::App* command = app.add_subcommand(
      "variogram", "The experimental semi-variogram of a data file's points and the models fitted to it (best first)");
  command->add_option("FILE", o->file, kDataFileHelp)->required();
  AddInputOptions(*command, o->input);
  command->add_option("--cutoff", o->cutoff, "Largest pair distance (default: a third of the bounding box's diagonal)");
  command->add_option("--bins", o->bins, "Distance classes, 1 to 1000 (default 15)");
  o->direction = command->add_option("--direction", o->azimuth,
                                     "Only pairs along this azimuth, degrees clockwise from north (+Y)");
  o->toleranceOption = command->add_option("--tolerance", o->tolerance, "With --direction: degrees either side (default 22.5)");
  command->add_flag("--json", o->json,
                    "Print JSON: bins (distance, gamma, pairs) and models (model, nugget, psill, range, sse), best first");
  command->add_option("--plot", o->plot,
                      "Also draw the semivariances and the fitted curves (the best thickest) to OUT.png; - for "
                      "standard output");
  o->sizeOption = command->add_option("--size", o->size, "With --plot: WIDTHxHEIGHT in pixels (default 720x600)");
  command->callback([o] { RunVariogram(*o); });
}

}  // namespace orvane::cli
