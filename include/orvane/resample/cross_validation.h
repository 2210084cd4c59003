#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <vector>

namespace orvane {

class Resampling;

/// One point's leave-one-out result.
struct CrossValidationPoint {
  double x = 0.0, y = 0.0;
  double observed = 0.0;   ///< the point's own Z
  double predicted = 0.0;  ///< the estimate from the other points; NaN where the method gives none
  double variance = 0.0;   ///< kriging: the estimation variance there; NaN for the other methods
  /// observed - predicted.
  double Residual() const noexcept { return observed - predicted; }
};

/// How well the left-out points were predicted, over those with an estimate.
struct CrossValidationSummary {
  std::int64_t count = 0;    ///< points with an estimate
  std::int64_t skipped = 0;  ///< points without one (outside the others' hull, or out of range)
  double me = 0.0;     ///< mean error: the mean residual (observed - predicted)
  double rmse = 0.0;   ///< root mean squared residual
  double mae = 0.0;    ///< mean absolute residual
  double medae = 0.0;  ///< median absolute residual
  double msdr = 0.0;   ///< kriging: mean of residual^2 / variance (near 1 for a sound model); NaN otherwise
};

/// Leave-one-out cross-validation.
struct CrossValidation {
  std::vector<CrossValidationPoint> points;  ///< in input order
  CrossValidationSummary summary;
};

/// Estimates each point from the others with the resampler settings select and its
/// current settings (the grid limits follow the points while AutoRange, as in
/// ResampleGrid); with BlankOutsideHull the points on the hull get no estimate. progress
/// counts points; returning false stops the run with error 18. Lists of different
/// lengths, fewer than two points or no resampler selected raise error 5 (source
/// "Resampling"), values that are not finite error 5 (source "IInterpolator"); the
/// resampler's own errors pass through. Points at one place make global kriging singular
/// and give each other's values: merge them first (MergeDuplicatePoints).
CrossValidation CrossValidate(Resampling& settings, std::span<const double> x, std::span<const double> y,
                              std::span<const double> z,
                              const std::function<bool(std::int64_t done, std::int64_t total)>& progress = {});

/// The summary of points' results (msdr from their variances when every counted one has
/// a variance above 0, else NaN).
CrossValidationSummary SummariseCrossValidation(std::span<const CrossValidationPoint> points);

}  // namespace orvane
