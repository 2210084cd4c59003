// orvane cv: leave-one-out cross-validation of a resampling method on a data file's
// points: each point estimated from the others with the method's settings, summarised
// as text or JSON, and the residuals written per point on request.

#include <cmath>
#include <cstdio>
#include <iostream>
#include <memory>
#include <string>

#include <nlohmann/json.hpp>

#include "commands.h"
#include "input_options.h"
#include "numbers.h"
#include "orvane/core/error.h"
#include "orvane/resample/cross_validation.h"
#include "orvane/resample/resampling.h"
#include "output_file.h"
#include "resample_options.h"

namespace orvane::cli {

namespace {

struct CvOptions {
  std::string file;
  InputOptions input;
  ResampleOptions resample;
  bool extrapolate = false;
  std::string output;
  bool json = false;
};

// x,y,observed,predicted,residual (and variance,zscore for kriging) per point; a point
// without an estimate leaves its estimate's fields empty.
void WriteResiduals(const std::string& target, const CrossValidation& cv, bool kriging) {
  OutputFile out(target);
  std::ostream& s = out.Stream();
  s << "x,y,observed,predicted,residual" << (kriging ? ",variance,zscore" : "") << "\n";
  for (const CrossValidationPoint& p : cv.points) {
    s << Number(p.x) << "," << Number(p.y) << "," << Number(p.observed);
    if (std::isnan(p.predicted)) {
      s << ",," << (kriging ? ",," : "") << "\n";
      continue;
    }
    s << "," << Number(p.predicted) << "," << Number(p.Residual());
    if (kriging) s << "," << Number(p.variance) << "," << Number(p.Residual() / std::sqrt(p.variance));
    s << "\n";
  }
  out.Commit();
}

void RunCv(const CvOptions& o) {
  const bool natural = o.resample.method == "nn";
  const bool kriging = o.resample.method == "kriging";
  if (o.extrapolate && !natural) throw Error(5, "orvane", "--extrapolate applies to --method nn only");
  if (!o.output.empty() && o.output != "-") OutputFile(o.output);  // refused up front if it cannot be replaced
  const XyzPoints points = PointsOf(ReadData(o.file, o.input));
  Resampling settings;
  ConfigureResampling(o.resample, o.file, points, settings);
  // As in orvane grid: natural neighbour gives nothing outside the data's hull.
  settings.SetBlankOutsideHull(natural && !o.extrapolate);
  CrossValidation cv;
  {
    InterruptGuard guard;
    ProgressBar bar;
    cv = CrossValidate(settings, points.x, points.y, points.z,
                       [&bar](std::int64_t done, std::int64_t total) { return bar.Update(done, total); });
  }
  if (cv.summary.count == 0) {
    throw Error(5, "orvane", "no point could be estimated from the others" +
                                 std::string(natural ? " (every point lies on the data's hull)" : " (no other point in range)"));
  }
  if (!o.output.empty()) WriteResiduals(o.output, cv, kriging);
  if (o.output == "-") return;
  const CrossValidationSummary& s = cv.summary;
  if (o.json) {
    nlohmann::json out = {{"method", o.resample.method}, {"points", s.count}, {"skipped", s.skipped},
                          {"me", s.me}, {"rmse", s.rmse}, {"mae", s.mae}, {"medae", s.medae}};
    if (kriging) out["msdr"] = s.msdr;
    std::cout << out.dump() << "\n";
    return;
  }
  const char* names[] = {"inverse distance", "kriging", "natural neighbour"};
  const char* name = names[settings.ResamplerType() - orvResamplerTypeInverseDistance];
  std::cout << "leave-one-out cross-validation by " << name << " of " << cv.points.size() << " points\n";
  if (s.skipped > 0) {
    std::cout << s.skipped << (s.skipped == 1 ? " point has" : " points have")
              << " no estimate (" << (natural ? "outside the others' hull" : "no other point in range")
              << "), " << s.count << " counted\n";
  }
  char line[96];
  const auto row = [&](const char* label, double value) {
    std::snprintf(line, sizeof line, "%-30s %.6g\n", label, value);
    std::cout << line;
  };
  row("mean error", s.me);
  row("root mean squared error", s.rmse);
  row("mean absolute error", s.mae);
  row("median absolute error", s.medae);
  if (kriging) row("mean squared deviation ratio", s.msdr);
}

}  // namespace

void AddCvCommand(CLI::App& app) {
  auto o = std::make_shared<CvOptions>();
  CLI::App* command = app.add_subcommand(
      "cv", "Leave-one-out cross-validation: each point estimated from the others by a resampling method");
  command->add_option("FILE", o->file, kDataFileHelp)->required();
  AddInputOptions(*command, o->input);
  AddResampleOptions(*command, o->resample, "--method", true, false);
  command->add_flag("--extrapolate", o->extrapolate,
                    "nn: estimate the points on the data's hull too (extrapolated from the others)");
  command->add_option("-o,--output", o->output,
                      "Write each point's x, y, observed, predicted and residual (and kriging's variance and "
                      "z-score) as CSV; - for standard output");
  command->add_flag("--json", o->json,
                    "Print the summary as JSON: points, skipped, me, rmse, mae, medae and, for kriging, msdr");
  command->callback([o] { RunCv(*o); });
}

}  // namespace orvane::cli
