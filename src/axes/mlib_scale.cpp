#include "mlib_scale.h"

#include <cmath>
#include <limits>

#include "orvane/core/color.h"
#include "orvane/core/error.h"

namespace orvane::MLibScale {

namespace {

double Sign(double v) { return v > 0 ? 1.0 : (v < 0 ? -1.0 : 0.0); }

}  // namespace

double Log10(double value) { return std::log(value) / std::log(10.0); }

double Ceiling(double value) {
  const double truncated = std::trunc(value);
  return truncated < value ? truncated + 1.0 : truncated;
}

bool IsProductSafe(double a, double b) {
  if (std::fabs(b) <= 1.0) return true;
  return std::fabs(a) <= kLargestDouble / std::fabs(b);
}

double SafeProduct(double a, double b) {
  if (IsProductSafe(a, b)) return a * b;
  return kLargestDouble * Sign(a) * Sign(b);
}

double RelativeEpsilon(double value) { return std::fabs(value) * kRelativeEpsilon; }

void ScaleIndexBounds(double min, double max, double interval, double& lowIndex,
                      double& highIndex) {
  const double q = min / interval;
  lowIndex = std::trunc(q);
  if (min < 0) lowIndex -= 1.0;
  if (std::fabs(lowIndex + 1.0 - q) < kIndexTolerance) lowIndex += 1.0;

  const double r = max / interval;
  highIndex = std::trunc(r + 1.0);
  if (r < -1.0) highIndex -= 1.0;
  if (std::fabs(r + 1.0 - highIndex) < kIndexTolerance) highIndex -= 1.0;
}

void RoundRangeToInterval(double min, double max, double interval, double& roundedMin,
                          double& roundedMax) {
  double low = 0.0;
  double high = 0.0;
  ScaleIndexBounds(min, max, interval, low, high);
  roundedMin = SafeProduct(low, interval);
  roundedMax = SafeProduct(high, interval);
}

void WidenDegenerateRange(double& min, double& max) {
  // A range wholly among the subnormal numbers has no interval that can be written: a
  // tenth of it underflows to 0 (and the scale to NaN). It counts as no width at 0.
  const double smallest = std::numeric_limits<double>::min();
  const bool subnormal = std::fabs(min) < smallest && std::fabs(max) < smallest;
  const double range = max - min;
  if (!subnormal && range != 0.0 && !(std::fabs(range) < RelativeEpsilon(max))) return;
  double e = max == 0.0 || subnormal ? 0.0 : std::trunc(Log10(std::fabs(max)));
  e -= 1.0;
  const double h = std::pow(10.0, e) / 2.0;
  if (!(kLargestDouble - h > max)) {
    min -= 2.0 * h;  // widening upward would overflow
  } else {
    max += h;
    min -= h;
  }
}

void AutoRangeAndInterval(double min, double max, std::int32_t intervalCount,
                          bool keepNaturalCount, bool addMarginIntervals, double& roundedMin,
                          double& roundedMax, double& interval) {
  WidenDegenerateRange(min, max);
  const double tolerance = (max - min) * kMarginToleranceFactor;
  const double rough = (max - min) / intervalCount;
  double exponent = Ceiling(rough) == 0.0 ? 1.0 : std::trunc(Log10(rough));
  if (rough < 1.0) exponent -= 1.0;

  double low = 0.0;
  double high = 0.0;
  double n = 0.0;
  for (std::size_t i = 0;; ++i) {
    if (i >= std::size(kMultipliers)) throw Error(9, kRuntimeSource);
    interval = SafeProduct(std::pow(10.0, exponent), kMultipliers[i]);
    ScaleIndexBounds(min, max, interval, low, high);
    n = RoundHalfEven(high - low);
    if (!(n > intervalCount)) break;
  }
  roundedMin = SafeProduct(low, interval);
  roundedMax = SafeProduct(high, interval);

  if (!keepNaturalCount) {
    // Stretch to exactly intervalCount intervals, the spare ones split evenly with a
    // half going to the even neighbour (one spare interval goes to the top).
    const double extra = intervalCount - n;
    const double shift = RoundHalfEven(extra / 2.0);
    roundedMin = roundedMin - shift * interval;
    roundedMax = roundedMin + intervalCount * interval;
  }
  if (addMarginIntervals) {
    if (std::fabs(roundedMin - min) < tolerance) roundedMin -= interval;
    if (std::fabs(roundedMax - max) < tolerance) roundedMax += interval;
  }
  if (roundedMin > min) roundedMin = min;
  if (roundedMax < max) roundedMax = max;
}

}  // namespace orvane::MLibScale
