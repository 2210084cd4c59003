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
/// not numeric is a header. A UTF-8 byte-order mark at the start is skipped; lines end in
/// "\n", "\r\n" or "\r\r\n". A malformed line raises error 5 (source "XyzFile") naming
/// `name` and the line number, as in "data.xyz:7: expected 3 numbers (X, Y, Z), found 2
/// fields"; a quoted line is cut to 80 characters and its control characters escaped
/// ("\x1b"). A line longer than 1 MiB (1,048,576 bytes without its ending) is refused the
/// same way ("data.xyz:1: the line is longer than 1 MiB") before more of it is read, so
/// memory stays bounded whatever the input.
XyzPoints ReadXyzText(std::istream& in, const std::string& name);

/// Reads an XYZ file; a file that cannot be opened raises error 5 as well.
XyzPoints ReadXyzFile(const std::string& path);

}  // namespace orvane
