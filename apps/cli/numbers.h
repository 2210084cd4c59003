#pragma once

// How the commands write numbers.

#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace orvane::cli {

// Shortest text that reads back as the same double.
inline std::string Number(double v) {
  char buffer[32];
  const auto result = std::to_chars(buffer, buffer + sizeof buffer, v);
  return std::string(buffer, result.ptr);
}

// The value rounded to 15 significant digits, in shortest round-trip form: what a file
// said, or what a person typed, without the last-bit noise of arithmetic (114.2, not
// 114.19999999999999).
inline std::string Rounded(double v) {
  char buffer[32];
  std::snprintf(buffer, sizeof buffer, "%.15g", v);
  return Number(std::strtod(buffer, nullptr));
}

inline double RoundedValue(double v) { return std::strtod(Rounded(v).c_str(), nullptr); }

}  // namespace orvane::cli
