#include "resample_options.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <iostream>
#include <vector>

#include "numbers.h"
#include "orvane/core/error.h"
#include "orvane/resample/variogram.h"

namespace orvane::cli {

namespace {

void Refuse(const std::string& text) { throw Error(5, "orvane", text); }

// Kriging's model, nugget, sill and range: those given, the others fitted to the data's
// variogram (of at most 5,000 of the points): the given model's fit, or the best model's.
// Told on standard error.
void FitKriging(const ResampleOptions& o, const std::string& file, const XyzPoints& points, Kriging& kriging) {
  const bool model = o.Given("--model"), nugget = o.Given("--nugget"), sill = o.Given("--sill"), range = o.Given("--range");
  VariogramModel fit;
  try {
    fit = BestVariogramModel(points.x, points.y, points.z, 5000, model ? VariogramModelNumber(o.model) : -1);
  } catch (const Error& e) {
    if (kriging.Sill() < kriging.Nugget()) {
      Refuse("--" + std::string(sill ? "sill" : "nugget") + " " + Number(sill ? kriging.Sill() : kriging.Nugget()) +
             " does not go with the default " + (sill ? "nugget " : "sill ") +
             Number(sill ? kriging.Nugget() : kriging.Sill()) + " (no variogram could be fitted: " + e.Description() +
             "); give --nugget and --sill");
    }
    std::cerr << "orvane: " << file << ": no variogram could be fitted (" << e.Description() << "); kriging with "
              << (model ? o.model : std::string("the linear")) << " model, nugget " << Number(kriging.Nugget())
              << " and sill " << Number(kriging.Sill()) << "\n";
    return;
  }
  kriging.SetModelSemiVariogram(fit.model);
  if (!nugget) kriging.SetNugget(fit.nugget);
  if (!sill) kriging.SetSill(fit.nugget + fit.psill);
  if (!range) {
    kriging.SetAutoSetRange(false);
    kriging.SetRange(fit.range);
  }
  if (kriging.Sill() < kriging.Nugget()) {
    char sillText[32];
    std::snprintf(sillText, sizeof sillText, "%.6g", kriging.Sill());
    Refuse("--nugget " + Number(kriging.Nugget()) + " is above the fitted sill " + sillText + "; give --sill too.");
  }
  char text[200];
  if (!model && !nugget && !sill && !range) {
    std::snprintf(text, sizeof text, "the fitted %s model: nugget %.6g, sill %.6g, range %.6g", fit.Name(),
                  kriging.Nugget(), kriging.Sill(), kriging.Range());
  } else {
    const auto mark = [](bool given) { return given ? "" : " (fitted)"; };
    std::snprintf(text, sizeof text, "the %s model: nugget %.6g%s, sill %.6g%s, range %.6g%s", fit.Name(),
                  kriging.Nugget(), mark(nugget), kriging.Sill(), mark(sill), kriging.Range(), mark(range));
  }
  std::cerr << "orvane: kriging with " << text << " (orvane variogram " << file << " shows the fit)\n";
}

}  // namespace

void AddResampleOptions(CLI::App& command, ResampleOptions& o, const std::string& flag, bool required, bool grid) {
  o.flag = flag;
  CLI::Option* method = command.add_option(flag, o.method, "idw (inverse distance), kriging or nn (natural neighbour)")
                            ->check(CLI::IsMember({"idw", "kriging", "nn"}));
  if (required) method->required();
  o.given[flag] = method;
  if (grid) {
    o.given["--intervals"] = command.add_option("--intervals", o.intervals, "Intervals along X and Y (1 to 10000, default 10)");
    o.given["--xmin"] = command.add_option("--xmin", o.xMin, "Grid X minimum (default: the data's)");
    o.given["--xmax"] = command.add_option("--xmax", o.xMax, "Grid X maximum");
    o.given["--ymin"] = command.add_option("--ymin", o.yMin, "Grid Y minimum");
    o.given["--ymax"] = command.add_option("--ymax", o.yMax, "Grid Y maximum");
  }
  o.given["--power"] = command.add_option("--power", o.power, "idw: power P of the squared distance: weights 1 / d^(2P), so the default 2 weighs by the "
                                                   "distance to the fourth (gdal_grid's power=4)");
  o.given["--max-points"] = command.add_option("--max-points", o.maxPoints,
                                               "idw: weigh only the N nearest points (found in a k-d tree; default: all)");
  o.given["--radius"] = command.add_option("--radius", o.radius,
                                           "idw: weigh only points within R; a node with none is blank (default: no limit)");
  o.given["--model"] = command.add_option("--model", o.model,
                                          "kriging: linear, spherical, exponential or gaussian (default: the model the data's "
                                          "variogram fits best); the nugget, sill and range not given are fitted too")
                           ->check(CLI::IsMember({"linear", "spherical", "exponential", "gaussian"}));
  o.given["--nugget"] = command.add_option("--nugget", o.nugget, "kriging: nugget, 0 or more (default: fitted)");
  o.given["--sill"] = command.add_option("--sill", o.sill, "kriging: total sill, not below the nugget (default: fitted)");
  o.given["--range"] = command.add_option("--range", o.range, "kriging: range (default: fitted)");
  o.given["--no-block"] = command.add_flag("--no-block", o.noBlock, "kriging: one global system instead of 32-point neighbourhoods");
  o.given["--gradients"] = command.add_flag("--gradients", o.gradients, "nn: gradient-blended (C1) surface");
  o.given["--tautness"] = command.add_option("--tautness", o.tautness, "nn: pull toward the linear surface (default 1)");
}

void ConfigureResampling(const ResampleOptions& o, const std::string& file, const XyzPoints& points,
                         Resampling& settings) {
  static const std::map<std::string, std::int32_t> kMethods{
      {"idw", orvResamplerTypeInverseDistance}, {"kriging", orvResamplerTypeKriging}, {"nn", orvResamplerTypeNNGridR}};
  const std::map<std::string, std::string> belongsTo{
      {"--power", "idw"}, {"--max-points", "idw"}, {"--radius", "idw"}, {"--model", "kriging"}, {"--nugget", "kriging"}, {"--sill", "kriging"},
      {"--range", "kriging"}, {"--no-block", "kriging"}, {"--gradients", "nn"}, {"--tautness", "nn"}};
  for (const auto& [option, method] : belongsTo) {
    if (o.Given(option) && method != o.method) Refuse(option + " applies to " + o.flag + " " + method + " only.");
  }
  if (o.intervals < 1 || o.intervals > kMostIntervals) {
    Refuse("--intervals must be between 1 and " + std::to_string(kMostIntervals));
  }
  const std::pair<const char*, double> limits[] = {
      {"--xmin", o.xMin}, {"--xmax", o.xMax}, {"--ymin", o.yMin}, {"--ymax", o.yMax}};
  for (const auto& [name, value] : limits) {
    if (o.Given(name) && !std::isfinite(value)) Refuse(std::string(name) + " must be a finite number");
  }
  if (points.x.empty()) Refuse(file + ": the file holds no points.");

  settings.SetResamplerType(kMethods.at(o.method));
  settings.SetIntervalCount(static_cast<std::int32_t>(o.intervals));
  const auto [x0, x1] = std::minmax_element(points.x.begin(), points.x.end());
  const auto [y0, y1] = std::minmax_element(points.y.begin(), points.y.end());
  settings.SetDataLimits(*x0, *x1, *y0, *y1);
  if (o.Given("--xmin") || o.Given("--xmax") || o.Given("--ymin") || o.Given("--ymax")) {
    settings.SetAutoRange(false);  // the limits not given stay at the data's
    if (o.Given("--xmin")) settings.SetXMin(o.xMin);
    if (o.Given("--xmax")) settings.SetXMax(o.xMax);
    if (o.Given("--ymin")) settings.SetYMin(o.yMin);
    if (o.Given("--ymax")) settings.SetYMax(o.yMax);
    if (!(settings.XMin() < settings.XMax())) Refuse("The grid's X minimum must lie below its maximum.");
    if (!(settings.YMin() < settings.YMax())) Refuse("The grid's Y minimum must lie below its maximum.");
  }
  // A grid needs an area: points along one line give none unless the limits are given.
  if (!(settings.XMin() < settings.XMax())) {
    Refuse(file + ": the points have no extent along X; give --xmin and --xmax for the grid.");
  }
  if (!(settings.YMin() < settings.YMax())) {
    Refuse(file + ": the points have no extent along Y; give --ymin and --ymax for the grid.");
  }
  if (o.method == "kriging") {
    // The semi-variogram starts at the nugget (a variance, so not below 0) and rises to the sill.
    if (!(std::isfinite(o.nugget) && o.nugget >= 0.0)) {
      Refuse("--nugget must be a finite number of 0 or more, not " + Number(o.nugget) + ".");
    }
    if (!std::isfinite(o.sill) || (o.Given("--sill") && o.Given("--nugget") && o.sill < o.nugget)) {
      Refuse("--sill (" + Number(o.sill) + ") must be a finite number not below --nugget (" +
             Number(o.nugget) + "): the sill is the total variance, the nugget included.");
    }
  }
  settings.InverseDistance().SetWeightingPower(o.power);
  if (o.maxPoints < 0 || o.maxPoints > 100000000) Refuse("--max-points must be between 0 (all) and 100000000");
  if (!(std::isfinite(o.radius) && o.radius >= 0.0)) Refuse("--radius must be a finite distance of 0 (no limit) or more");
  settings.InverseDistance().SetMaxPoints(static_cast<std::int32_t>(o.maxPoints));
  settings.InverseDistance().SetRadius(o.radius);
  Kriging& kriging = settings.Kriging();
  kriging.SetModelSemiVariogram(VariogramModelNumber(o.model));
  kriging.SetNugget(o.nugget);
  kriging.SetSill(o.sill);
  if (o.Given("--range")) {
    kriging.SetAutoSetRange(false);
    kriging.SetRange(o.range);
  }
  if (o.method == "kriging" && !(o.Given("--model") && o.Given("--nugget") && o.Given("--sill") && o.Given("--range"))) {
    FitKriging(o, file, points, kriging);
  }
  kriging.SetBlockMode(!o.noBlock);
  settings.NNGridR().SetUseGradients(o.gradients);
  settings.NNGridR().SetTautness(o.tautness);
}

}  // namespace orvane::cli
