// The kriging resampler: hands the points, the grid and the model to the kriging engine,
// lets it calculate on its worker thread, reports its progress while waiting, and
// collects the values. The engine handle is released on every path out.

#include <charconv>
#include <chrono>
#include <cmath>
#include <string>
#include <thread>

#include "interpolator.h"
#include "orvane/core/error.h"
#include "orvane/resample/resampling.h"
#include "orvane_kriging/kriging.h"

namespace orvane {

namespace {

constexpr const char* kSource = "Orvada.Kriging";

// Owns one engine handle.
class EngineHandle {
 public:
  EngineHandle() : handle_(KrigingCreate()) {
    if (handle_ == nullptr) throw Error(7, kSource, "The kriging engine could not be created.");
  }
  ~EngineHandle() { KrigingDelete(handle_); }
  EngineHandle(const EngineHandle&) = delete;
  EngineHandle& operator=(const EngineHandle&) = delete;

  // Raises a refused setting as error 5 with the rule it broke.
  static void Check(std::int32_t status, const char* rule) {
    if (status != kKrigingOk) throw Error(5, kSource, rule);
  }
  // Raises a failed calculation as error 5 with the engine's description.
  void CheckRun(std::int32_t status) const {
    if (status != kKrigingOk) throw Error(5, kSource, KrigingGetLastError(handle_));
  }
  KrigingHandle get() const noexcept { return handle_; }

 private:
  KrigingHandle handle_;
};

// Shortest text that reads back as the same double.
std::string ShortNumber(double v) {
  char buffer[32];
  const auto result = std::to_chars(buffer, buffer + sizeof buffer, v);
  return std::string(buffer, result.ptr);
}

// Hands the points and the model to the engine: the range first follows the grid limits
// with AutoSetRange, and a nugget below 0 or above the sill is refused.
void Configure(const EngineHandle& engine, orvane::Kriging& kriging, const Resampling& settings,
               const std::vector<double>& x, const std::vector<double>& y, const std::vector<double>& z) {
  if (kriging.AutoSetRange()) {
    const double dx = settings.XMax() - settings.XMin();
    const double dy = settings.YMax() - settings.YMin();
    kriging.SetRange(std::sqrt(dx * dx + dy * dy));
  }
  KrigingHandle h = engine.get();
  engine.Check(KrigingSetData(h, static_cast<std::int32_t>(x.size()), x.data(), y.data(), z.data()),
               "The kriging engine refused the points.");
  engine.Check(KrigingSetBlockKriging(h, kriging.BlockMode()), "The kriging engine refused the block mode.");
  engine.Check(KrigingSetModel(h, kriging.ModelSemiVariogram()), "ModelSemiVariogram must be 0 (linear), 1 (spherical), 2 (exponential) or 3 (Gaussian).");
  engine.Check(KrigingSetRange(h, kriging.Range()), "Range must be a finite number above 0.");
  engine.Check(KrigingSetSill(h, kriging.Nugget(), kriging.Sill()), "Nugget and Sill must be finite numbers.");
  // A semi-variogram is a variance: it starts at the nugget, not below 0, and rises to the sill.
  if (kriging.Nugget() < 0.0) {
    throw Error(5, kSource, "Nugget must not be negative, not " + ShortNumber(kriging.Nugget()) + ".");
  }
  if (kriging.Sill() < kriging.Nugget()) {
    throw Error(5, kSource, "Sill (" + ShortNumber(kriging.Sill()) + ") must not be below Nugget (" +
                                ShortNumber(kriging.Nugget()) + ").");
  }
}

// Runs the engine on its worker thread, waiting (polling more slowly as the run goes on)
// and passing its progress on; a refused report cancels it (error 18). The values, and
// the variances when wanted (else cleared), of total estimates are returned.
std::vector<double> Calculate(const EngineHandle& engine, const ProgressCallback& callback, std::int64_t total,
                              bool wantVariance, std::vector<double>& variances) {
  KrigingHandle h = engine.get();
  engine.CheckRun(KrigingCalculateInThread(h));
  RunProgress progress(callback, total);
  auto pause = std::chrono::microseconds(100);
  while (!KrigingIsFinish(h)) {
    if (!progress.Report(KrigingGetCurrentProgress(h))) KrigingCancel(h);
    std::this_thread::sleep_for(pause);
    pause = std::min(pause * 2, std::chrono::microseconds(20000));
  }
  progress.ThrowIfCancelled();
  engine.CheckRun(KrigingGetLastStatus(h));
  std::vector<double> values(static_cast<std::size_t>(total));
  engine.Check(KrigingGetValues(h, values.data()), "The kriging engine has no values.");
  progress.Report(total);
  variances.clear();
  if (wantVariance) {
    variances.resize(static_cast<std::size_t>(total));
    engine.CheckRun(KrigingGetEstimation(h, variances.data()));
  }
  return values;
}

}  // namespace

void KrigingResampler::RefreshGrid() {
  CheckExtent(kSource, true);
  std::vector<double> gridX, gridY;
  GridAxes(gridX, gridY);
  const EngineHandle engine;
  Configure(engine, settings_.Kriging(), settings_, x_, y_, z_);
  const auto nx = static_cast<std::int32_t>(gridX.size());
  const auto ny = static_cast<std::int32_t>(gridY.size());
  engine.Check(KrigingSetGridCoordinate(engine.get(), nx, gridX.data(), ny, gridY.data()),
               "The kriging engine refused the grid.");
  gridZ_ = Calculate(engine, progress_, std::int64_t{nx} * ny, wantVariance_, gridVariance_);
  gridX_ = std::move(gridX);
  gridY_ = std::move(gridY);
  stale_ = false;
}

void KrigingResampler::LeaveOneOut(std::vector<double>& estimates, std::vector<double>& variances) {
  CheckExtent(kSource, true);
  const EngineHandle engine;
  Configure(engine, settings_.Kriging(), settings_, x_, y_, z_);
  engine.Check(KrigingSetCrossValidation(engine.get(), true), "The kriging engine refused cross-validation.");
  estimates = Calculate(engine, progress_, static_cast<std::int64_t>(x_.size()), true, variances);
}

}  // namespace orvane
