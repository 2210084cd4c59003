#include "data_file.h"

#include <cmath>
#include <cstdio>
#include <fstream>

#include "orvane/control/surface.h"
#include "orvane/core/array.h"
#include "orvane/core/error.h"
#include "orvane/data/data_set.h"
#include "orvane/data/data_sets.h"
#include "orvane/resample/resampling.h"

namespace orvane::viewer {

namespace {

constexpr const char* kSource = "orvane-viewer";
// The control refuses coordinates of this size or more.
constexpr double kLargest = 1e300;

bool StartsWithDsaa(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  char head[4] = {};
  return in.read(head, 4) && std::string(head, 4) == "DSAA";
}

// Raises for the first value the control would refuse, so that it is refused before
// the data set is cleared.
void CheckDrawable(const std::vector<double>& values, const std::string& path, const char* what) {
  for (std::size_t k = 0; k < values.size(); ++k) {
    if (!std::isfinite(values[k]) || std::fabs(values[k]) >= kLargest) {
      throw Error(5, kSource,
                  path + ": " + what + " value " + std::to_string(k + 1) +
                      " is too large to draw (the limit is 1e300).");
    }
  }
}

std::string WithThousands(std::size_t n) {
  std::string digits = std::to_string(n);
  for (std::ptrdiff_t at = static_cast<std::ptrdiff_t>(digits.size()) - 3; at > 0; at -= 3) {
    digits.insert(static_cast<std::size_t>(at), ",");
  }
  return digits;
}

}  // namespace

std::string DataFile::Summary() const {
  if (isGrid) return std::to_string(grid.x.size()) + " x " + std::to_string(grid.y.size()) + " grid";
  return WithThousands(points.x.size()) + (points.x.size() == 1 ? " point" : " points");
}

DataFile ReadDataFile(const std::string& path) {
  DataFile file;
  file.path = path;
  if (StartsWithDsaa(path)) {
    file.isGrid = true;
    file.grid = ReadDsaaFile(path);
    CheckDrawable(file.grid.x, path, "an X");
    CheckDrawable(file.grid.y, path, "a Y");
    CheckDrawable(file.grid.z, path, "a Z");
    return file;
  }
  file.points = ReadXyzFile(path);
  if (file.points.x.empty()) throw Error(5, kSource, path + ": the file holds no points.");
  CheckDrawable(file.points.x, path, "an X");
  CheckDrawable(file.points.y, path, "a Y");
  CheckDrawable(file.points.z, path, "a Z");
  file.merged = MergeDuplicatePoints(file.points);
  return file;
}

void ShowDataFile(const DataFile& file, Surface& surface) {
  DataSet& data = surface.DataSets().Item(0);
  // A hull drawn for the data shown before would cut the new data.
  data.UserHullClear();
  if (file.isGrid) {
    data.Resampling().SetResamplerType(orvResamplerTypeNone);
    data.DataAsRectangularGridSet(file.grid.x, file.grid.y, file.grid.z);
  } else {
    data.DataAsSparseGridSet(file.points.x, file.points.y, file.points.z);
  }
}

}  // namespace orvane::viewer
