#include "orvane/core/currency.h"

#include <cmath>
#include <cstdlib>

#include "orvane/core/color.h"
#include "orvane/core/error.h"

namespace orvane {

Currency Currency::FromDouble(double value) {
  if (!std::isfinite(value)) {
    throw Error(5, kRuntimeSource, "A currency value must be a finite number.");
  }
  const double scaled = RoundHalfEven(value * 10000.0);
  // 2^63 is exactly representable; anything at or beyond it does not fit.
  if (!(scaled >= -9223372036854775808.0 && scaled < 9223372036854775808.0)) {
    throw Error(6, kRuntimeSource);
  }
  return Currency{static_cast<std::int64_t>(scaled)};
}

std::string Currency::ToString() const {
  const bool negative = scaled < 0;
  // Work on the unsigned magnitude so that the smallest value does not overflow.
  const std::uint64_t magnitude =
      negative ? ~static_cast<std::uint64_t>(scaled) + 1 : static_cast<std::uint64_t>(scaled);
  std::string text;
  if (negative) text.push_back('-');
  text.append(std::to_string(magnitude / 10000));
  std::uint64_t fraction = magnitude % 10000;
  if (fraction != 0) {
    std::string digits = std::to_string(fraction);
    digits.insert(0, 4 - digits.size(), '0');
    while (digits.back() == '0') digits.pop_back();
    text.push_back('.');
    text.append(digits);
  }
  return text;
}

}  // namespace orvane
