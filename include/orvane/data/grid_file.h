#pragma once

#include <vector>

namespace orvane {

/// The value a DSAA (Golden Software ASCII) grid holds in a blank cell, and anything above it.
inline constexpr double kDsaaBlank = 1.70141e38;

/// A regular grid: the nodes' X and Y, and a Z at each.
struct GridFile {
  std::vector<double> x;  ///< the column positions, ascending
  std::vector<double> y;  ///< the row positions, ascending
  std::vector<double> z;  ///< z[i * y.size() + j] at (x[i], y[j]), NaN in a blank cell
};

}  // namespace orvane
