#include "input_options.h"

#include <cmath>
#include <cstdlib>
#include <iostream>

#include "orvane/core/error.h"

namespace orvane::cli {

namespace {

// The option that helps with a file the readers refused, added to their message.
std::string Hint(const Error& e) {
  const std::string& text = e.Description();
  // "...: expected 3 numbers (X, Y, Z), found 4 fields"
  const std::size_t found = text.rfind(", found ");
  if (e.Source() == "XyzFile" && found != std::string::npos && text.find(" fields", found) != std::string::npos) {
    return std::atoi(text.c_str() + found + 8) > 3 ? "; pick the X, Y and Z columns with --columns X,Y,Z"
                                                    : "; leave out rows with missing values with --skip-invalid";
  }
  if (e.Source() == "XyzFile" && (text.find("is not three numbers") != std::string::npos ||
                                  text.find("must be finite numbers") != std::string::npos)) {
    return "; leave out such rows with --skip-invalid";
  }
  if (e.Source() == "DataFile" && text.find("name the field that holds it") != std::string::npos) {
    return "; give it with --z-field NAME";
  }
  return "";
}

}  // namespace

void AddInputOptions(CLI::App& command, InputOptions& o) {
  command.add_option("--columns", o.columns, "1-based columns of X, Y and Z in wider text files (default 1,2,3)")
      ->delimiter(',')
      ->expected(3);
  command.add_flag("--skip-invalid", o.skipInvalid,
                   "Skip text rows with missing, non-numeric, NaN or infinite values (counted on stderr)");
  command.add_option("--z-field", o.zField,
                     "The field that holds Z: a vector layer's (GeoPackage, Shapefile, GeoJSON) or a text "
                     "header's (X and Y then from fields named x/y, lon/lat or easting/northing)");
  command.add_option("--nodata", o.noData, "A Z value that means no data: such points are left out, such cells blank");
}

DataFile ReadData(const std::string& file, const InputOptions& o) {
  DataReadOptions options;
  if (!o.columns.empty()) {
    if (o.columns.size() != 3) throw Error(5, "orvane", "--columns takes three column numbers: X,Y,Z");
    for (std::size_t k = 0; k < 3; ++k) {
      if (o.columns[k] < 1) throw Error(5, "orvane", "--columns are numbered from 1");
      options.columns[k] = o.columns[k];
    }
  }
  if (!o.columns.empty() && !o.zField.empty()) throw Error(5, "orvane", "give --columns or --z-field, not both");
  if (o.noData && !std::isfinite(*o.noData)) throw Error(5, "orvane", "--nodata must be a finite number");
  options.skipInvalid = o.skipInvalid;
  options.zField = o.zField;
  options.noData = o.noData;
  DataFile data;
  try {
    data = ReadDataFile(file, options);
  } catch (const Error& e) {
    throw Error(e.Number(), e.Source(), e.Description() + Hint(e));
  }
  const auto report = [&file](std::size_t n, const char* one, const char* many, const std::string& what) {
    if (n > 0) std::cerr << "orvane: " << file << ": " << what << " " << n << " " << (n == 1 ? one : many) << "\n";
  };
  report(data.points.skipped, "row with missing or invalid values", "rows with missing or invalid values", "skipped");
  report(data.dropped, "point with no data", "points with no data", "left out");
  if (data.merged > 0) {
    std::cerr << "orvane: " << file << ": merged " << data.merged << " duplicate"
              << (data.merged == 1 ? " point" : " points") << " (same X and Y) into the mean Z of each place\n";
  }
  return data;
}

XyzPoints PointsOf(const DataFile& file) {
  if (!file.isGrid) return file.points;
  XyzPoints points;
  const GridFile& g = file.grid;
  const std::size_t ny = g.y.size();
  for (std::size_t i = 0; i < g.x.size(); ++i) {
    for (std::size_t j = 0; j < ny; ++j) {
      const double z = g.z[i * ny + j];
      if (std::isnan(z)) continue;
      points.x.push_back(g.x[i]);
      points.y.push_back(g.y[j]);
      points.z.push_back(z);
    }
  }
  if (points.x.empty()) throw Error(5, "orvane", file.name + ": every cell of the grid is blank");
  return points;
}

}  // namespace orvane::cli
