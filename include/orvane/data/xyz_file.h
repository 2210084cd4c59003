#pragma once

#include <array>
#include <cstddef>
#include <istream>
#include <string>
#include <vector>

namespace orvane {

/// Scattered points read from XYZ text.
struct XyzPoints {
  std::vector<double> x;  ///< X of each point, in file order
  std::vector<double> y;  ///< Y of each point
  std::vector<double> z;  ///< Z of each point
  std::size_t skipped = 0;  ///< rows left out by XyzReadOptions::skipInvalid
  std::size_t blanks = 0;   ///< rows with X and Y and an empty Z ("x,y,"), kept with a NaN Z
};

/// How XYZ text is read beyond the defaults.
struct XyzReadOptions {
  /// The 1-based columns of X, Y and Z; other columns may hold anything. Each at least 1.
  std::array<int, 3> columns{1, 2, 3};
  /// Leave out rows whose X, Y or Z is missing, not a number, NaN or infinite (counted in
  /// XyzPoints::skipped) instead of raising an error for the first of them.
  bool skipInvalid = false;
};

/// Reads XYZ text: one point per line as three numbers separated by commas, semicolons,
/// tabs or spaces; blank lines and lines starting with '#' are skipped, and a first line that is
/// not numeric is a header. A file whose first line with a comma separates its fields by
/// semicolons or tabs writes its decimals with commas ("1,5;2,5;3"), every line alike. A
/// line of X and Y whose Z field is empty ("1,2,") is a place with no data: NaN, counted
/// in XyzPoints::blanks. A UTF-8 byte-order mark at the start is skipped; lines end in
/// "\n", "\r\n" or "\r\r\n". A malformed line raises error 5 (source "XyzFile") naming
/// `name` and the line number, as in "data.xyz:7: expected 3 numbers (X, Y, Z), found 2
/// fields"; a quoted line is cut to 80 characters and its control characters escaped
/// ("\x1b"). A line longer than 1 MiB (1,048,576 bytes without its ending) is refused the
/// same way ("data.xyz:1: the line is longer than 1 MiB") before more of it is read, so
/// memory stays bounded whatever the input.
XyzPoints ReadXyzText(std::istream& in, const std::string& name);

/// The same with chosen columns: a line must hold at least the highest of them ("data.xyz:7:
/// expected at least 4 fields, found 3"), and with skipInvalid a line that does not is
/// counted and left out. A column below 1 raises error 5 before anything is read.
XyzPoints ReadXyzText(std::istream& in, const std::string& name, const XyzReadOptions& options);

/// Reads an XYZ file; a file that cannot be opened raises error 5 as well.
XyzPoints ReadXyzFile(const std::string& path);

/// The same with chosen columns and invalid rows skipped, as ReadXyzText.
XyzPoints ReadXyzFile(const std::string& path, const XyzReadOptions& options);

/// Merges points at exactly the same X and Y into one with the mean of their Z, kept at
/// the place of the first of them; the order of the others is kept. Returns how many
/// points were removed.
std::size_t MergeDuplicatePoints(XyzPoints& points);

}  // namespace orvane
