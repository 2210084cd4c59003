#pragma once

// Reading the files the viewer opens: DSAA grids and XYZ point lists, checked in full
// before the control is touched, so that a bad file never loses what is shown.

#include <cstdint>
#include <string>

#include "orvane/data/grid_file.h"
#include "orvane/data/xyz_file.h"

namespace orvane {
class Surface;
}

namespace orvane::viewer {

// A data file as read: either a grid or a list of scattered points.
struct DataFile {
  std::string path;
  bool isGrid = false;
  GridFile grid;      // when isGrid
  XyzPoints points;   // otherwise; exact duplicates merged into their mean Z
  std::size_t merged = 0;  // points merged away

  // "120 x 80 grid" or "1,234 points".
  std::string Summary() const;
};

// Reads path: a DSAA grid when the file starts with "DSAA", XYZ points otherwise. Raises
// orvane::Error (error 5) naming the file, and the line where there is one, for a file
// that cannot be read, holds no points, or holds values the control cannot draw.
DataFile ReadDataFile(const std::string& path);

// Gives the control's first data set the file's data. A grid is drawn as it is, so the
// resampler is switched off for it.
void ShowDataFile(const DataFile& file, Surface& surface);

}  // namespace orvane::viewer
