// orvane grid: resample an XYZ file onto a regular grid by inverse distance, kriging or
// natural neighbour, through the same Resampling settings a data set uses, and write it
// as CSV or as a Golden Software ASCII grid (DSAA).

#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cmath>
#include <filesystem>
#include <iostream>
#include <map>
#include <memory>
#include <string>

#include "commands.h"
#include "orvane/core/error.h"
#include "orvane/data/xyz_file.h"
#include "orvane/resample/resampling.h"
#include "output_file.h"
#include "resample/interpolator.h"

namespace orvane::cli {

namespace {

// A progress bar on standard error, redrawn at most ten times a second, only when
// standard error is a terminal.
class ProgressBar {
 public:
  ProgressBar() : show_(::isatty(STDERR_FILENO) == 1) {}
  ~ProgressBar() {
    if (drawn_) std::cerr << "\r" << std::string(60, ' ') << "\r" << std::flush;
  }
  ProgressBar(const ProgressBar&) = delete;
  ProgressBar& operator=(const ProgressBar&) = delete;

  bool Update(std::int64_t done, std::int64_t total) {
    if (Interrupted()) return false;
    if (!show_ || total <= 0) return true;
    const auto now = std::chrono::steady_clock::now();
    if (drawn_ && now - last_ < std::chrono::milliseconds(100) && done < total) return true;
    last_ = now;
    drawn_ = true;
    const auto width = 40;
    const auto filled = static_cast<int>(done * width / total);
    std::cerr << "\rresampling [" << std::string(static_cast<std::size_t>(filled), '#')
              << std::string(static_cast<std::size_t>(width - filled), ' ') << "] "
              << done * 100 / total << "%" << std::flush;
    return true;
  }

 private:
  bool show_;
  bool drawn_ = false;
  std::chrono::steady_clock::time_point last_{};
};

std::string Number(double v) {
  char buffer[32];
  const auto result = std::to_chars(buffer, buffer + sizeof buffer, v);
  return std::string(buffer, result.ptr);
}

struct GridOptions {
  std::string file;
  std::string method;
  std::int64_t intervals = 10;
  double xMin = 0, xMax = 0, yMin = 0, yMax = 0;
  double power = 2.0;
  std::string model = "linear";
  double nugget = 1.0, sill = 2.0, range = 1.0;
  bool noBlock = false;
  bool gradients = false;
  double tautness = 1.0;
  std::string output;
  // Which options were given.
  std::map<std::string, CLI::Option*> given;
  bool Given(const std::string& name) const { return given.at(name)->count() > 0; }
};

void Refuse(const std::string& text) { throw Error(5, "orvane", text); }

// Most intervals a grid takes each way (a grid of 10,001 by 10,001 values).
constexpr std::int64_t kMostIntervals = 10000;

// The settings the options describe, on top of the data's limits.
void Configure(const GridOptions& o, const XyzPoints& points, Resampling& settings) {
  static const std::map<std::string, std::int32_t> kMethods{
      {"idw", orvResamplerTypeInverseDistance}, {"kriging", orvResamplerTypeKriging}, {"nn", orvResamplerTypeNNGridR}};
  static const std::map<std::string, std::int32_t> kModels{
      {"linear", orvKrigingMSVLinear}, {"spherical", orvKrigingMSVSpherical},
      {"exponential", orvKrigingMSVExponential}, {"gaussian", orvKrigingMSVGaussian}};
  const std::map<std::string, std::string> belongsTo{
      {"--power", "idw"}, {"--model", "kriging"}, {"--nugget", "kriging"}, {"--sill", "kriging"},
      {"--range", "kriging"}, {"--no-block", "kriging"}, {"--gradients", "nn"}, {"--tautness", "nn"}};
  for (const auto& [option, method] : belongsTo) {
    if (o.Given(option) && method != o.method) Refuse(option + " applies to --method " + method + " only.");
  }
  if (o.intervals < 1 || o.intervals > kMostIntervals) {
    Refuse("--intervals must be between 1 and " + std::to_string(kMostIntervals));
  }
  const std::pair<const char*, double> limits[] = {
      {"--xmin", o.xMin}, {"--xmax", o.xMax}, {"--ymin", o.yMin}, {"--ymax", o.yMax}};
  for (const auto& [name, value] : limits) {
    if (o.Given(name) && !std::isfinite(value)) Refuse(std::string(name) + " must be a finite number");
  }
  if (points.x.empty()) Refuse(o.file + ": the file holds no points.");

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
    Refuse(o.file + ": the points have no extent along X; give --xmin and --xmax for the grid.");
  }
  if (!(settings.YMin() < settings.YMax())) {
    Refuse(o.file + ": the points have no extent along Y; give --ymin and --ymax for the grid.");
  }
  settings.InverseDistance().SetWeightingPower(o.power);
  Kriging& kriging = settings.Kriging();
  kriging.SetModelSemiVariogram(kModels.at(o.model));
  kriging.SetNugget(o.nugget);
  kriging.SetSill(o.sill);
  if (o.Given("--range")) {
    kriging.SetAutoSetRange(false);
    kriging.SetRange(o.range);
  }
  kriging.SetBlockMode(!o.noBlock);
  settings.NNGridR().SetUseGradients(o.gradients);
  settings.NNGridR().SetTaughtness(o.tautness);
}

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
  Configure(options, points, settings);
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
  grid->add_option("--method", o->method, "idw (inverse distance), kriging or nn (natural neighbour)")
      ->required()
      ->check(CLI::IsMember({"idw", "kriging", "nn"}));
  o->given["--intervals"] = grid->add_option("--intervals", o->intervals, "Intervals along X and Y (1 to 10000, default 10)");
  o->given["--xmin"] = grid->add_option("--xmin", o->xMin, "Grid X minimum (default: the data's)");
  o->given["--xmax"] = grid->add_option("--xmax", o->xMax, "Grid X maximum");
  o->given["--ymin"] = grid->add_option("--ymin", o->yMin, "Grid Y minimum");
  o->given["--ymax"] = grid->add_option("--ymax", o->yMax, "Grid Y maximum");
  o->given["--power"] = grid->add_option("--power", o->power, "idw: weighting power on the squared distance (default 2)");
  o->given["--model"] = grid->add_option("--model", o->model, "kriging: linear, spherical, exponential or gaussian")
                            ->check(CLI::IsMember({"linear", "spherical", "exponential", "gaussian"}));
  o->given["--nugget"] = grid->add_option("--nugget", o->nugget, "kriging: nugget (default 1)");
  o->given["--sill"] = grid->add_option("--sill", o->sill, "kriging: total sill (default 2)");
  o->given["--range"] = grid->add_option("--range", o->range, "kriging: range (default: the grid's diagonal)");
  o->given["--no-block"] = grid->add_flag("--no-block", o->noBlock, "kriging: one global system instead of 32-point neighbourhoods");
  o->given["--gradients"] = grid->add_flag("--gradients", o->gradients, "nn: gradient-blended (C1) surface");
  o->given["--tautness"] = grid->add_option("--tautness", o->tautness, "nn: pull toward the linear surface (default 1)");
  grid->add_option("-o,--output", o->output, "OUT.csv or OUT.grd")->required();
  grid->callback([o] { RunGrid(*o); });
}

}  // namespace orvane::cli
