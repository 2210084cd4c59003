#pragma once

#include <istream>
#include <string>
#include <vector>

namespace orvane {

/// The value a DSAA grid holds in a blank cell (no data there), and anything above it.
inline constexpr double kDsaaBlank = 1.70141e38;

/// A regular grid read from a Golden Software ASCII grid ("DSAA").
struct GridFile {
  std::vector<double> x;  ///< the column positions, ascending
  std::vector<double> y;  ///< the row positions, ascending
  std::vector<double> z;  ///< z[i * y.size() + j] at (x[i], y[j]), as DataAsRectangularGridSet takes it
};

/// Reads DSAA text: "DSAA", the column and row counts, the X, Y and Z ranges, then the
/// values row by row from the lowest Y up, X increasing along a row (rows may wrap over
/// several lines). Errors raise error 5 (source "GridFile") naming `name`: a missing
/// "DSAA" tag, counts outside 2..10001, ranges that are not finite or not increasing, a
/// value that is not a number, too few or too many values, and blank cells (1.70141e38
/// and above), which the control cannot show.
GridFile ReadDsaaText(std::istream& in, const std::string& name);

/// Reads a DSAA file; a file that cannot be opened raises error 5 as well.
GridFile ReadDsaaFile(const std::string& path);

}  // namespace orvane
