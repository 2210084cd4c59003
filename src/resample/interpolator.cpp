// The input storage shared by the resamplers, progress reporting, the parallel loop over
// grid columns and the choice of resampler.

#include "interpolator.h"

#include <algorithm>
#include <cmath>

#include "core/parallel.h"
#include "orvane/core/error.h"
#include "orvane/resample/resampling.h"

namespace orvane {

bool RunProgress::Advance(std::int64_t done) { return Report(done_.fetch_add(done) + done); }

bool RunProgress::Report(std::int64_t done) {
  if (cancelled_.load()) return false;
  if (!callback_) return true;
  // A thread that finds the callback busy skips this report; a later one catches up.
  std::unique_lock lock(mutex_, std::try_to_lock);
  if (lock.owns_lock() && !callback_(std::min(done, total_), total_)) cancelled_ = true;
  return !cancelled_.load();
}

void RunProgress::ThrowIfCancelled() const {
  if (cancelled_.load()) throw Error(18, "IInterpolator", "The resampling was interrupted.");
}

void ParallelFor(std::size_t count, std::int64_t perItem, RunProgress& progress,
                 const std::function<void(std::size_t)>& body) {
  // Once a report is refused, the items not yet started are skipped.
  std::atomic<bool> stopped{false};
  detail::RunTasks(count, [&](std::size_t i) {
    if (stopped.load()) return;
    body(i);
    if (!progress.Advance(perItem)) stopped = true;
  });
}

void InterpolatorBase::GetInputData(std::int32_t& count, std::vector<double>& x,
                                    std::vector<double>& y, std::vector<double>& z) const {
  count = static_cast<std::int32_t>(x_.size());
  x = x_;
  y = y_;
  z = z_;
}

void InterpolatorBase::GetOutputData(std::vector<double>& x, std::vector<double>& y,
                                     std::vector<double>& z) {
  if (stale_) RefreshGrid();
  x = gridX_;
  y = gridY_;
  z = gridZ_;
}

void InterpolatorBase::SetInputData(std::int32_t count, const Array& x, const Array& y, const Array& z) {
  if (count < 1) throw Error(5, "IInterpolator");
  for (const Array* a : {&x, &y, &z}) {
    if (a->LowerBound() != 0 || a->UpperBound() < count - 1) {
      throw Error(5, "IInterpolator", "The input arrays must hold elements 0 to Count - 1.");
    }
  }
  const auto n = static_cast<std::ptrdiff_t>(count);
  for (const Array* a : {&x, &y, &z}) {
    if (!std::all_of(a->Values().begin(), a->Values().begin() + n,
                     [](double v) { return std::isfinite(v); })) {
      throw Error(5, "IInterpolator", "The input points must be finite numbers.");
    }
  }
  x_.assign(x.Values().begin(), x.Values().begin() + n);
  y_.assign(y.Values().begin(), y.Values().begin() + n);
  z_.assign(z.Values().begin(), z.Values().begin() + n);
  stale_ = true;
}

void InterpolatorBase::GridAxes(std::vector<double>& x, std::vector<double>& y) const {
  if (!nodesX_.empty()) {
    x = nodesX_;
    y = nodesY_;
    return;
  }
  const std::int64_t side = std::int64_t{settings_.IntervalCount()} + 1;
  if (side * side > kMaxGridValues) {
    throw Error(7, "IInterpolator", "A grid of " + std::to_string(side) + " by " + std::to_string(side) +
                                        " values is too large (at most 10001 by 10001).");
  }
  if (!std::isfinite(settings_.XInterval()) || !std::isfinite(settings_.YInterval())) {
    throw Error(5, "IInterpolator", "The grid limits are too far apart.");
  }
  x = settings_.GridX();
  y = settings_.GridY();
}

void InterpolatorBase::CheckExtent(const char* source, bool gridToo) const {
  const auto flat = [](const std::vector<double>& v) {
    return std::all_of(v.begin(), v.end(), [&v](double a) { return a == v.front(); });
  };
  if (flat(x_) && (!gridToo || settings_.XMin() == settings_.XMax())) {
    throw Error(5, source, "The points have no extent along X.");
  }
  if (flat(y_) && (!gridToo || settings_.YMin() == settings_.YMax())) {
    throw Error(5, source, "The points have no extent along Y.");
  }
}

std::unique_ptr<InterpolatorBase> CreateInterpolator(Resampling& settings) {
  switch (settings.ResamplerType()) {
    case orvResamplerTypeNone: return nullptr;
    case orvResamplerTypeInverseDistance: return std::make_unique<InverseDistanceResampler>(settings);
    case orvResamplerTypeKriging: return std::make_unique<KrigingResampler>(settings);
    case orvResamplerTypeNNGridR: return std::make_unique<NaturalNeighbourResampler>(settings);
    default:
      throw Error(5, "Resampling", "ResamplerType " + std::to_string(settings.ResamplerType()) +
                                       " is not a resampler (0 to 3).");
  }
}

}  // namespace orvane
