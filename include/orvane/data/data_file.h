#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "orvane/data/grid_file.h"
#include "orvane/data/xyz_file.h"

namespace orvane {

class DataSet;

/// How ReadDataFile reads a source beyond the defaults.
struct DataReadOptions {
  std::array<int, 3> columns{1, 2, 3};  ///< text: the 1-based columns of X, Y and Z
  bool skipInvalid = false;             ///< text: leave out rows with missing or bad values
  std::string zField;                   ///< the field that holds Z: a vector layer's, or a text header's
  std::optional<double> noData;         ///< a Z that means no data: such points are dropped, such cells blank
};

/// Data read from a file: a grid, whose blank cells are NaN, or scattered points.
struct DataFile {
  std::string name;    ///< the source as given (a path, or "file.nc:variable")
  std::string format;  ///< what read it: "XYZ" or "DSAA" (Orvane's readers), or GDAL's driver ("GTiff", "netCDF", "GPKG", ...)
  bool isGrid = false;  ///< a grid (grid) or scattered points (points)
  GridFile grid;        ///< a grid's nodes, NaN in blank cells
  XyzPoints points;     ///< scattered points, exact duplicates merged into their mean Z
  std::string crs;      ///< the coordinate reference system as WKT; empty when the source names none
  std::size_t dropped = 0;  ///< points left out as no data (an empty Z, or the no-data value)
  std::size_t merged = 0;   ///< points merged into another at the same X and Y

  /// The blank cells of a grid (0 for points).
  std::size_t BlankCount() const;
  /// "120 x 80 grid" or "1,234 points".
  std::string Summary() const;
};

/// Reads a data file, the one way in for the command, the viewer and the bindings.
/// Plain text (.xyz, .csv, .txt, .dat, .tsv) is read by Orvane's XYZ reader, and a file that
/// starts with "DSAA" by Orvane's DSAA reader, which gives the very grid GDAL's driver
/// gives; any other raster GDAL opens (GeoTIFF, NetCDF with "file.nc:variable", ESRI
/// ASCII, ERDAS, ...) is
/// a grid, honouring its no-data value, scale, offset, geotransform and CRS; a vector source (GeoPackage, Shapefile, GeoJSON) gives its points, Z from
/// zField or the geometry. Text rows with an empty Z are no data; when they and the
/// others together fill a regular lattice the file is a grid with those cells blank.
/// Errors raise error 5, source "DataFile" (or the text reader's own), naming the file;
/// a source with no points raises "FILE: no points were found ...".
DataFile ReadDataFile(const std::string& name, const DataReadOptions& options = {});

/// Gives the data set the file's data: a grid through DataAsBlankedGridSet with the
/// resampler switched off, points through DataAsSparseGridSet.
void ShowDataFile(const DataFile& file, DataSet& data);

/// The grid formats WriteGridFile writes, by extension: ".tif" (GeoTIFF, deflate), ".nc"
/// (NetCDF), ".asc" (ESRI ASCII), ".grd" (DSAA) and ".csv" (x,y,z lines).
const std::vector<std::string>& GridFileExtensions();

/// Writes a grid (nodes evenly spaced; NaN blank) in the format of extension (one of
/// GridFileExtensions()) to path, or to standard output when path is "-" and the format
/// is text. Blank cells take the format's no-data value; crs (WKT, "EPSG:n" or a PROJ
/// string; empty for none) goes into the file or, for ESRI ASCII, its ".prj". The file
/// is written beside the target and renamed over it, so a failure leaves it as it was.
void WriteGridFile(const std::string& path, const std::string& extension, const GridFile& grid,
                   const std::string& crs = {});

/// The CRS given as "EPSG:n", WKT or a PROJ string, as WKT of the version named
/// ("WKT2_2019", "WKT1" or "WKT1_ESRI"); error 5 (source "DataFile") when GDAL does not
/// know it. Empty stays empty.
std::string CrsAsWkt(const std::string& crs, const std::string& version = "WKT2_2019");

/// The CRS's "EPSG:n" when it is one of EPSG's, otherwise empty.
std::string CrsEpsgCode(const std::string& crs);

}  // namespace orvane
