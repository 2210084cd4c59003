#include "orvane/core/color.h"

#include <cmath>
#include <cstdint>

#include "orvane/core/error.h"

namespace orvane {

double RoundHalfEven(double x) noexcept {
  if (!std::isfinite(x)) return x;
  const double down = std::floor(x);
  // x - floor(x) is exact for every finite double, so the tie test is exact too.
  const double fraction = x - down;
  double rounded = down;
  if (fraction > 0.5 || (fraction == 0.5 && std::fmod(down, 2.0) != 0.0)) rounded = down + 1.0;
  // Keep the sign of a negative value that rounds to zero, as rint does.
  return std::copysign(rounded, x);
}

std::int16_t InterpolateChannel(double lo, double hi, double t) {
  if (std::isnan(t)) {
    throw Error(5, kRuntimeSource, "A colour cannot be interpolated at a NaN position.");
  }
  const double value = RoundHalfEven(lo + (hi - lo) * t);
  if (!(value >= -32768.0 && value <= 32767.0)) throw Error(6, kRuntimeSource);
  return static_cast<std::int16_t>(value);
}

Color InterpolateColor(Color lo, Color hi, double t) {
  const ColorBytes a = SplitColor(lo);
  const ColorBytes b = SplitColor(hi);
  const std::int64_t red = InterpolateChannel(a.red, b.red, t);
  const std::int64_t green = InterpolateChannel(a.green, b.green, t);
  const std::int64_t blue = InterpolateChannel(a.blue, b.blue, t);
  // The colour is a 32-bit signed sum; extrapolated channels that push it out of
  // range overflow instead of wrapping into an unrelated colour.
  const std::int64_t sum = red + 256 * green + 65536 * blue;
  if (sum < INT32_MIN || sum > INT32_MAX) throw Error(6, kRuntimeSource);
  return static_cast<Color>(static_cast<std::int32_t>(sum));
}

Color SampleColor(double vLo, Color cLo, double vHi, Color cHi, double p) {
  const double d = vHi - vLo;
  if (!(d > 0.0)) return cLo;
  return InterpolateColor(cLo, cHi, (p - vLo) / d);
}

}  // namespace orvane
