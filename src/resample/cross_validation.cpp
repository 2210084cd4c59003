// Leave-one-out cross-validation: the resampler estimates each point from the others
// (see each resampler's LeaveOneOut), and the residuals are summarised.

#include "orvane/resample/cross_validation.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>

#include "data/geometry.h"
#include "interpolator.h"
#include "orvane/core/error.h"
#include "orvane/resample/resampling.h"

namespace orvane {

namespace {

constexpr const char* kSource = "Resampling";
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

}  // namespace

CrossValidationSummary SummariseCrossValidation(std::span<const CrossValidationPoint> points) {
  CrossValidationSummary s;
  std::vector<double> absolute;
  double sum = 0.0, squares = 0.0, ratio = 0.0;
  bool variances = true;
  for (const CrossValidationPoint& p : points) {
    if (std::isnan(p.predicted)) {
      ++s.skipped;
      continue;
    }
    const double r = p.Residual();
    sum += r;
    squares += r * r;
    absolute.push_back(std::fabs(r));
    if (p.variance > 0.0) {
      ratio += r * r / p.variance;
    } else {
      variances = false;
    }
  }
  s.count = static_cast<std::int64_t>(absolute.size());
  if (s.count == 0) {
    s.me = s.rmse = s.mae = s.medae = s.msdr = kNaN;
    return s;
  }
  const auto n = static_cast<double>(s.count);
  s.me = sum / n;
  s.rmse = std::sqrt(squares / n);
  double total = 0.0;
  for (double a : absolute) total += a;
  s.mae = total / n;
  const std::size_t middle = absolute.size() / 2;
  std::nth_element(absolute.begin(), absolute.begin() + static_cast<std::ptrdiff_t>(middle), absolute.end());
  s.medae = absolute[middle];
  if (absolute.size() % 2 == 0) {
    const double below = *std::max_element(absolute.begin(), absolute.begin() + static_cast<std::ptrdiff_t>(middle));
    s.medae = (s.medae + below) / 2.0;
  }
  s.msdr = variances ? ratio / n : kNaN;
  return s;
}

CrossValidation CrossValidate(Resampling& settings, std::span<const double> x, std::span<const double> y,
                              std::span<const double> z,
                              const std::function<bool(std::int64_t done, std::int64_t total)>& progress) {
  const std::size_t n = x.size();
  if (y.size() != n || z.size() != n) throw Error(5, kSource, "X, Y and Z must hold the same number of values.");
  if (n < 2) throw Error(5, kSource, "Cross-validation needs two points or more.");
  if (n > static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max())) {
    throw Error(5, kSource, "Too many points to cross-validate.");
  }
  std::unique_ptr<InterpolatorBase> resampler = CreateInterpolator(settings);
  if (!resampler) throw Error(5, kSource, "No resampler is selected: choose inverse distance, kriging or natural neighbour.");
  // Refused values leave the settings as they were.
  resampler->SetInputData(static_cast<std::int32_t>(n), std::vector<double>(x.begin(), x.end()),
                          std::vector<double>(y.begin(), y.end()), std::vector<double>(z.begin(), z.end()));
  const auto [x0, x1] = std::minmax_element(x.begin(), x.end());
  const auto [y0, y1] = std::minmax_element(y.begin(), y.end());
  settings.SetDataLimits(*x0, *x1, *y0, *y1);
  resampler->SetProgressCallback(progress);
  std::vector<double> estimates, variances;
  resampler->LeaveOneOut(estimates, variances);

  CrossValidation result;
  result.points.resize(n);
  for (std::size_t i = 0; i < n; ++i) {
    result.points[i] = {x[i], y[i], z[i], estimates[i], variances.empty() ? kNaN : variances[i]};
  }
  if (settings.BlankOutsideHull()) {
    // A hull vertex lies outside the hull of the others.
    std::vector<double> hx, hy;
    detail::ConvexHull(x, y, hx, hy);
    for (CrossValidationPoint& p : result.points) {
      for (std::size_t k = 0; k < hx.size(); ++k) {
        if (p.x == hx[k] && p.y == hy[k]) p.predicted = p.variance = kNaN;
      }
    }
  }
  result.summary = SummariseCrossValidation(result.points);
  return result;
}

}  // namespace orvane
