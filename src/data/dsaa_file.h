#pragma once

// DSAA grids (Golden Software ASCII), read by Orvane's own reader, and the layout of a
// raster's cells in a grid, which that reader shares with the rasters GDAL reads.
// Internal header: no compatibility promise.

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "orvane/data/grid_file.h"

namespace orvane::detail {

// The most cells of a raster read whole into a grid: 16384 x 16384. The control keeps
// two 8-byte copies of Z (as given and normalised) and the file a third while it is
// handed over, so such a grid takes about 6.5 GB.
inline constexpr std::int64_t kMostGridCells = std::int64_t{16384} * 16384;
// The control refuses coordinates and heights of this size or more.
inline constexpr double kLargestValue = 1e300;

// Refuses a raster of fewer than 2 by 2 cells or of more than kMostGridCells (error 5,
// source "DataFile", naming name); columns and rows each at most INT_MAX.
void CheckRasterSize(const std::string& name, std::int64_t columns, std::int64_t rows);

// A raster's value in column c, row r (both from 0, rows from the top) that is not a
// finite number below 1e300: error 5 naming name and the cell, counted from 1.
[[noreturn]] void FailCell(const std::string& name, std::size_t c, std::size_t r);

// Where a raster's cells go in a grid. A cell's value belongs to its centre, which is
// where the node goes: column c at gt[0] + (c + 0.5) gt[1], row r at gt[3] + (r + 0.5)
// gt[5]. Columns and rows are put in ascending X and Y whichever way the raster runs;
// raster rows count from the top, as GDAL counts them.
class RasterLayout {
 public:
  // Sets grid.x and grid.y; refuses (error 5, naming name) a rotated raster, cells of no
  // size and outer nodes that are not finite numbers below 1e300.
  RasterLayout(const double (&gt)[6], std::size_t columns, std::size_t rows, const std::string& name, GridFile& grid);

  // The grid column of raster column c, and the grid row of raster row r.
  std::size_t Column(std::size_t c) const { return reversedX_ ? columns_ - 1 - c : c; }
  std::size_t Row(std::size_t r) const { return topDown_ ? rows_ - 1 - r : r; }
  // Where raster cell (c, r) goes in grid.z.
  std::size_t Index(std::size_t c, std::size_t r) const { return Column(c) * rows_ + Row(r); }

 private:
  std::size_t columns_;
  std::size_t rows_;
  bool reversedX_;  // X falls from column to column
  bool topDown_;    // Y falls from row to row, as in a north-up raster
};

// What a sidecar file adds to a DSAA grid, as GDAL reads it (see ReadDsaaFile).
struct RasterGeoreference {
  double gt[6] = {0.0, 1.0, 0.0, 0.0, 0.0, 1.0};  // GDAL's geotransform
  double scale = 1.0;   // applied to every value that is not blank ...
  double offset = 0.0;  // ... then this added
};

// Reads the DSAA grid at path into grid, exactly as GDAL's GSAG driver read through a
// raster's layout (above) gives it: the header's X and Y limits are the outer cells'
// centres, blank cells (1.70141e38, NaN, or noData when given) are NaN. georeference,
// when given, stands for the header's limits: GDAL's geotransform, scale and offset
// when a sidecar (".aux.xml") holds them. Values are separated by any whitespace and
// rows may wrap across lines. The first line must be "DSAA" alone; every malformed
// header, a value that is not a number, too few or too many values and a value that is
// not a finite number below 1e300 raise error 5 (source "DataFile") naming name.
void ReadDsaaFile(const std::string& path, const std::string& name, std::optional<double> noData,
                  const RasterGeoreference* georeference, GridFile& grid);

}  // namespace orvane::detail
