#pragma once

#include <compare>
#include <cstdint>
#include <string>

namespace orvane {

/// A fixed-point value with four decimal places, stored as a 64-bit integer scaled by
/// 10,000 (font sizes are kept this way).
struct Currency {
  std::int64_t scaled = 0;  ///< the value times 10,000

  /// The value rounded half to even to four decimals; error 5 for NaN or infinity,
  /// error 6 when it does not fit.
  static Currency FromDouble(double value);
  /// The value as a double.
  double ToDouble() const noexcept { return static_cast<double>(scaled) / 10000.0; }
  /// The value in plain decimal notation with at most four decimals ("10", "8.25").
  std::string ToString() const;

  friend auto operator<=>(const Currency&, const Currency&) = default;
};

}  // namespace orvane
