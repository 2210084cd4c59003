// orvane variogram: the experimental semi-variogram of a data file's points and the
// models fitted to it, best first, as text or JSON.

#include <cstdio>
#include <iostream>
#include <memory>
#include <string>

#include <nlohmann/json.hpp>

#include "commands.h"
#include "input_options.h"
#include "numbers.h"
#include "orvane/core/error.h"
#include "orvane/resample/variogram.h"

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
  bool json = false;
};

void RunVariogram(const VariogramCommandOptions& o) {
  const XyzPoints points = PointsOf(ReadData(o.file, o.input));
  VariogramOptions options;
  options.cutoff = o.cutoff;
  options.bins = o.bins;
  options.directional = o.direction->count() > 0;
  options.direction = o.azimuth;
  options.tolerance = o.tolerance;
  const std::vector<VariogramBin> bins = ExperimentalVariogram(points.x, points.y, points.z, options);
  const std::vector<VariogramModel> models = FitVariograms(bins);
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
  std::cout << "\nmodel        nugget        partial sill  range         weighted SSE\n";
  for (const VariogramModel& m : models) {
    std::snprintf(line, sizeof line, "%-12s %-13.6g %-13.6g %-13.6g %.6g\n", m.Name(), m.nugget, m.psill, m.range, m.sse);
    std::cout << line;
  }
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
  command->add_option("--tolerance", o->tolerance, "With --direction: degrees either side (default 22.5)");
  command->add_flag("--json", o->json,
                    "Print JSON: bins (distance, gamma, pairs) and models (model, nugget, psill, range, sse), best first");
  command->callback([o] { RunVariogram(*o); });
}

}  // namespace orvane::cli
