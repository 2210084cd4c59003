#pragma once

#include <istream>
#include <string>
#include <vector>

namespace orvane {

/// The value a DSAA grid holds in a blank cell (no data there), and anything above it.
inline constexpr double kDsaaBlank = 1.70141e38;

/// A regular grid: the nodes' X and Y, and a Z at each.
struct GridFile {
  std::vector<double> x;  ///< the column positions, ascending
  std::vector<double> y;  ///< the row positions, ascending
  std::vector<double> z;  ///< z[i * y.size() + j] at (x[i], y[j]), NaN in a blank cell
};

/// Reads DSAA text: "DSAA", the column and row counts, the X, Y and Z ranges, then the
/// values row by row from the lowest Y up, X increasing along a row (rows may wrap over
/// several lines). Errors raise error 5 (source "GridFile") naming `name`: a missing
/// "DSAA" tag, counts outside 2..10001, ranges that are not finite or not increasing, a
/// value that is not a number, and too few or too many values. Blank cells (1.70141e38
/// and above) are NaN.
GridFile ReadDsaaText(std::istream& in, const std::string& name);

/// Reads a DSAA file; a file that cannot be opened raises error 5 as well.
GridFile ReadDsaaFile(const std::string& path);

}  // namespace orvane
