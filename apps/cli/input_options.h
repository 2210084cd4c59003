#pragma once

// How the commands read data files: through the library's one reader, with the text
// options (columns, invalid rows), the vector options (the Z field) and the no-data value.

#include <optional>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "orvane/data/data_file.h"

namespace orvane::cli {

// The help text of a data FILE argument.
inline constexpr const char* kDataFileHelp =
    "Text (X Y Z per line, .xyz/.csv/.txt), a DSAA grid, any raster GDAL reads (GeoTIFF, NetCDF as FILE.nc:VAR, "
    "ESRI ASCII, ...) or vector points (GeoPackage, Shapefile, GeoJSON; --z-field)";

struct InputOptions {
  std::vector<int> columns;  // --columns X,Y,Z (1-based); empty: 1,2,3
  bool skipInvalid = false;  // --skip-invalid
  std::string zField;        // --z-field NAME
  std::optional<double> noData;  // --nodata V
};

// Registers --columns, --skip-invalid, --z-field and --nodata.
void AddInputOptions(CLI::App& command, InputOptions& o);

// Reads file as the options say. Skipped rows, points dropped as no data and merged
// duplicates are reported on standard error; a refusal names the option that helps.
DataFile ReadData(const std::string& file, const InputOptions& o);

// The points a file gives: its scattered points, or a grid's nodes that are not blank.
XyzPoints PointsOf(const DataFile& file);

}  // namespace orvane::cli
