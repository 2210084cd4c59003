#pragma once

#include <istream>
#include <string>
#include <vector>

namespace orvane {

/// Scattered points read from XYZ text.
struct XyzPoints {
  std::vector<double> x;  ///< X of each point, in file order
  std::vector<double> y;  ///< Y of each point
  std::vector<double> z;  ///< Z of each point
};

/// Reads XYZ text: one point per line as three numbers separated by commas, tabs or
/// spaces; blank lines and lines starting with '#' are skipped, and a first line that is
/// not numeric is a header. A malformed line raises error 5 (source "XyzFile") naming
/// `name` and the line number, as in "data.xyz:7: expected 3 numbers, found 2".
XyzPoints ReadXyzText(std::istream& in, const std::string& name);

/// Reads an XYZ file; a file that cannot be opened raises error 5 as well.
XyzPoints ReadXyzFile(const std::string& path);

}  // namespace orvane
