#pragma once

// MLibScale: turning a data range into an axis scale. Rounded limits are whole
// multiples of a major interval taken from a short list of round multipliers of a power
// of ten, for a requested number of intervals or for a given interval. Stateless;
// results go to reference arguments. Internal header.

#include <cstdint>

namespace orvane::MLibScale {

// Interval multipliers, tried in this order.
inline constexpr double kMultipliers[9] = {1, 2, 3, 4, 5, 8, 10, 20, 30};
// Snaps a quotient within this distance of a whole number onto it.
inline constexpr double kIndexTolerance = 1.192092896e-7;
// A range below Max times this is degenerate.
inline constexpr double kRelativeEpsilon = 2.22044604925031e-16;
// A rounded limit within this fraction of the range counts as touching the data.
inline constexpr double kMarginToleranceFactor = 0.001;
// What a product that would overflow becomes.
inline constexpr double kLargestDouble = 1.79769313486231e308;

// The whole-number multiples of interval that enclose min..max (floor and ceiling of
// the quotients, snapped to an exact multiple within kIndexTolerance).
void ScaleIndexBounds(double min, double max, double interval, double& lowIndex,
                      double& highIndex);
// min..max widened outward to multiples of interval.
void RoundRangeToInterval(double min, double max, double interval, double& roundedMin,
                          double& roundedMax);
// Widens an empty or negligible range around max by a tenth of its decade (5..5 gives
// 4.95..5.05, 0..0 gives -0.05..0.05).
void WidenDegenerateRange(double& min, double& max);
// A rounded range and a round interval giving at most intervalCount intervals (exactly
// that many, centred, unless keepNaturalCount), with an extra interval where a limit
// touches the data when addMarginIntervals. Error 9 when no multiplier is coarse enough.
void AutoRangeAndInterval(double min, double max, std::int32_t intervalCount,
                          bool keepNaturalCount, bool addMarginIntervals, double& roundedMin,
                          double& roundedMax, double& interval);
// The smallest whole number not below value.
double Ceiling(double value);
// True when a * b cannot overflow a Double.
bool IsProductSafe(double a, double b);
// a * b, or the largest Double with the product's sign when that would overflow.
double SafeProduct(double a, double b);
// |value| times kRelativeEpsilon.
double RelativeEpsilon(double value);
// The decimal logarithm, computed as ln(x) / ln(10) so that results a hair below a whole
// number truncate as the tables expect.
double Log10(double value);

}  // namespace orvane::MLibScale
