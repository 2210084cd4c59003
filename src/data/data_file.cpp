// Reading and writing data files: Orvane's own readers for plain text and DSAA grids,
// GDAL for every other raster and vector source, and for the grid formats written (CSV
// aside).
//
// GDAL's rasters are areas: a cell's value belongs to its centre, which is where the
// grid node goes, so a raster of nx by ny cells is a grid of nx by ny nodes. Rows come
// from the top (north) down in a raster and from the lowest Y up in a grid.

#include "orvane/data/data_file.h"

#include <stdlib.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <cctype>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <limits>
#include <memory>
#include <mutex>
#include <set>
#include <sstream>
#include <string_view>
#include <utility>

#include <cpl_conv.h>
#include <cpl_error.h>
#include <cpl_string.h>
#include <gdal_priv.h>
#include <ogr_spatialref.h>
#include <ogrsf_frmts.h>

#include "data/dsaa_file.h"
#include "orvane/core/error.h"
#include "orvane/data/data_set.h"
#include "orvane/resample/resampling.h"

namespace orvane {

namespace {

namespace fs = std::filesystem;

constexpr const char* kSource = "DataFile";
// The control refuses coordinates and heights of this size or more.
constexpr double kLargest = detail::kLargestValue;
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

[[noreturn]] void Fail(const std::string& text) { throw Error(5, kSource, text); }

void RegisterGdal() {
  static std::once_flag once;
  std::call_once(once, [] { GDALAllRegister(); });
}

// GDAL's messages are kept from the terminal while it works; the last is read back for
// an error of our own.
class QuietGdal {
 public:
  QuietGdal() {
    RegisterGdal();
    CPLPushErrorHandler(CPLQuietErrorHandler);
    CPLErrorReset();
  }
  ~QuietGdal() { CPLPopErrorHandler(); }
  QuietGdal(const QuietGdal&) = delete;
  QuietGdal& operator=(const QuietGdal&) = delete;
  // " (GDAL: ...)" with GDAL's last error, or nothing.
  static std::string Why() {
    std::string text = CPLGetLastErrorMsg() != nullptr ? CPLGetLastErrorMsg() : "";
    while (!text.empty() && std::isspace(static_cast<unsigned char>(text.back()))) text.pop_back();
    return text.empty() ? text : " (GDAL: " + text + ")";
  }
};

std::string Lower(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return text;
}

std::string Joined(const std::vector<std::string>& items) {
  std::string out;
  for (const std::string& item : items) out += (out.empty() ? "" : ", ") + item;
  return out;
}

bool IsTextExtension(const std::string& extension) {
  static const std::set<std::string> text{"", ".xyz", ".csv", ".txt", ".dat", ".tsv", ".xy"};
  return text.count(Lower(extension)) > 0;
}

bool StartsWith(const std::string& path, std::string_view tag) {
  std::ifstream in(path, std::ios::binary);
  std::string head(tag.size(), '\0');
  return in.read(head.data(), static_cast<std::streamsize>(head.size())) && head == tag;
}

void CheckFinite(double v, const std::string& name, const std::string& where) {
  if (!std::isfinite(v) || std::fabs(v) >= kLargest) {
    Fail(name + ": " + where + " is not a finite number below 1e300");
  }
}

OGRSpatialReference ParseCrs(const std::string& text) {
  OGRSpatialReference srs;
  const char* options[] = {"ALLOW_NETWORK_ACCESS=NO", "ALLOW_FILE_ACCESS=NO", nullptr};
  QuietGdal quiet;
  if (srs.SetFromUserInput(text.c_str(), options) != OGRERR_NONE) {
    Fail("the coordinate reference system \"" + text.substr(0, 80) +
         "\" is not known (give EPSG:n, WKT or a PROJ string)" + QuietGdal::Why());
  }
  srs.SetAxisMappingStrategy(OAMS_TRADITIONAL_GIS_ORDER);
  return srs;
}

std::string Wkt(const OGRSpatialReference* srs, const char* format = "WKT2_2019") {
  if (srs == nullptr || srs->IsEmpty()) return {};
  char* text = nullptr;
  const char* options[] = {nullptr, nullptr};
  const std::string option = std::string("FORMAT=") + format;
  options[0] = option.c_str();
  std::string out;
  if (srs->exportToWkt(&text, options) == OGRERR_NONE && text != nullptr) out = text;
  CPLFree(text);
  return out;
}

// ---------------------------------------------------------------------------------------
// Text

// The fields of a header line, split as the text reader splits its lines.
std::vector<std::string> HeaderFields(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  if (!in) Fail(path + ": cannot open the file (" + std::strerror(errno) + ")");
  std::string line;
  while (line.empty() || line.front() == '#') {
    line.assign(4096, '\0');
    if (!in.getline(line.data(), static_cast<std::streamsize>(line.size()))) {
      if (in.gcount() == 0) return {};
    }
    line.resize(static_cast<std::size_t>(std::max<std::streamsize>(in.gcount() - 1, 0)));
    if (line.size() >= 3 && line.compare(0, 3, "\xEF\xBB\xBF") == 0) line.erase(0, 3);
    while (!line.empty() && (line.back() == '\r' || line.back() == '\n')) line.pop_back();
  }
  std::vector<std::string> fields;
  std::string field;
  for (char c : line + ",") {
    if (c == ',' || c == ';' || c == '\t' || c == ' ') {
      if (!field.empty()) fields.push_back(field);
      field.clear();
    } else if (c != '"') {
      field += c;
    }
  }
  return fields;
}

// The columns of X, Y and zField in a text file's header.
std::array<int, 3> ColumnsByName(const std::string& path, const std::string& zField) {
  const std::vector<std::string> fields = HeaderFields(path);
  const auto find = [&fields](const std::set<std::string>& names) {
    for (std::size_t k = 0; k < fields.size(); ++k) {
      if (names.count(Lower(fields[k])) > 0) return static_cast<int>(k) + 1;
    }
    return 0;
  };
  const int z = find({Lower(zField)});
  if (z == 0) Fail(path + ": no field is named \"" + zField + "\" (the header has " + Joined(fields) + ")");
  const int x = find({"x", "lon", "long", "longitude", "easting", "east", "e"});
  const int y = find({"y", "lat", "latitude", "northing", "north", "n"});
  if (x == 0 || y == 0) {
    Fail(path + ": the header names no X and Y fields (such as x and y, lon and lat, or easting and northing); it has " +
         Joined(fields));
  }
  return {x, y, z};
}

// Points with an empty or no-data Z made a grid when, with the others, they fill a
// regular lattice: every X with every Y, once.
bool AsLattice(const XyzPoints& points, GridFile& grid) {
  std::vector<double> xs(points.x), ys(points.y);
  std::sort(xs.begin(), xs.end());
  std::sort(ys.begin(), ys.end());
  xs.erase(std::unique(xs.begin(), xs.end()), xs.end());
  ys.erase(std::unique(ys.begin(), ys.end()), ys.end());
  if (xs.size() < 2 || ys.size() < 2 || xs.size() * ys.size() != points.x.size()) return false;
  std::vector<double> z(points.x.size(), kNan);
  std::vector<bool> seen(points.x.size(), false);
  for (std::size_t k = 0; k < points.x.size(); ++k) {
    const auto i = static_cast<std::size_t>(std::lower_bound(xs.begin(), xs.end(), points.x[k]) - xs.begin());
    const auto j = static_cast<std::size_t>(std::lower_bound(ys.begin(), ys.end(), points.y[k]) - ys.begin());
    const std::size_t at = i * ys.size() + j;
    if (seen[at]) return false;
    seen[at] = true;
    z[at] = points.z[k];
  }
  grid = GridFile{std::move(xs), std::move(ys), std::move(z)};
  return true;
}

void ReadText(const std::string& path, const DataReadOptions& options, DataFile& file) {
  XyzReadOptions text;
  text.columns = options.zField.empty() ? options.columns : ColumnsByName(path, options.zField);
  text.skipInvalid = options.skipInvalid;
  XyzPoints points = ReadXyzFile(path, text);
  file.format = "XYZ";
  std::size_t blank = 0;
  for (double& z : points.z) {
    if (options.noData && z == *options.noData) z = kNan;
    if (std::isnan(z)) ++blank;
  }
  if (blank > 0 && AsLattice(points, file.grid)) {
    file.isGrid = true;
    return;
  }
  if (blank > 0) {
    XyzPoints kept;
    kept.skipped = points.skipped;
    for (std::size_t k = 0; k < points.x.size(); ++k) {
      if (std::isnan(points.z[k])) continue;
      kept.x.push_back(points.x[k]);
      kept.y.push_back(points.y[k]);
      kept.z.push_back(points.z[k]);
    }
    points = std::move(kept);
    file.dropped = blank;
  }
  file.points = std::move(points);
}

// ---------------------------------------------------------------------------------------
// GDAL sources

// "file.nc:variable" names a NetCDF variable in GDAL's own form; other names go as given.
std::string GdalName(const std::string& name) {
  if (fs::exists(name)) return name;
  const std::size_t colon = name.rfind(':');
  if (colon == std::string::npos || colon == 0) return name;
  const std::string path = name.substr(0, colon), variable = name.substr(colon + 1);
  const std::string extension = Lower(fs::path(path).extension().string());
  if ((extension == ".nc" || extension == ".nc4" || extension == ".cdf") && fs::exists(path) && !variable.empty()) {
    return "NETCDF:\"" + path + "\":" + variable;
  }
  return name;
}

void ReadRaster(GDALDataset& source, const std::string& name, const DataReadOptions& options, DataFile& file) {
  const int nx = source.GetRasterXSize(), ny = source.GetRasterYSize();
  detail::CheckRasterSize(name, nx, ny);
  double gt[6] = {0.0, 1.0, 0.0, 0.0, 0.0, 1.0};
  if (source.GetGeoTransform(gt) != CE_None) {
    gt[0] = 0.0, gt[1] = 1.0, gt[2] = 0.0, gt[3] = 0.0, gt[4] = 0.0, gt[5] = 1.0;
  }
  GridFile& grid = file.grid;
  const auto cols = static_cast<std::size_t>(nx), rows = static_cast<std::size_t>(ny);
  const detail::RasterLayout layout(gt, cols, rows, name, grid);
  GDALRasterBand* band = source.GetRasterBand(1);
  int hasNoData = 0;
  const double noData = band->GetNoDataValue(&hasNoData);
  int hasScale = 0, hasOffset = 0;
  const double scale = band->GetScale(&hasScale), offset = band->GetOffset(&hasOffset);
  grid.z.assign(cols * rows, kNan);
  std::vector<double> line(cols);
  for (std::size_t r = 0; r < rows; ++r) {
    if (band->RasterIO(GF_Read, 0, static_cast<int>(r), nx, 1, line.data(), nx, 1, GDT_Float64, 0, 0) != CE_None) {
      Fail(name + ": row " + std::to_string(r + 1) + " could not be read" + QuietGdal::Why());
    }
    for (std::size_t c = 0; c < cols; ++c) {
      double v = line[c];
      if (std::isnan(v) || (hasNoData && v == noData) || (options.noData && v == *options.noData)) continue;
      v = v * (hasScale ? scale : 1.0) + (hasOffset ? offset : 0.0);
      if (!std::isfinite(v) || std::fabs(v) >= kLargest) detail::FailCell(name, c, r);
      grid.z[layout.Index(c, r)] = v;
    }
  }
  file.isGrid = true;
  file.crs = Wkt(source.GetSpatialRef());
}

// A DSAA grid, read by Orvane's own reader as GDAL's driver reads it. GDAL is asked only
// when a sidecar it reads lies beside the file (".aux.xml", or an ".aux"), for what that
// may add: a CRS, a geotransform, a scale and an offset.
void ReadDsaa(const std::string& name, const DataReadOptions& options, DataFile& file) {
  std::error_code ignored;
  const bool sidecar = fs::exists(name + ".aux.xml", ignored) || fs::exists(name + ".aux", ignored) ||
                       fs::exists(fs::path(name).replace_extension(".aux"), ignored);
  std::optional<detail::RasterGeoreference> georeference;
  if (sidecar) {
    QuietGdal quiet;
    GDALDatasetUniquePtr source(GDALDataset::Open(name.c_str(), GDAL_OF_RASTER | GDAL_OF_READONLY, nullptr, nullptr, nullptr));
    if (source && source->GetRasterCount() > 0) {
      georeference.emplace();
      if (source->GetGeoTransform(georeference->gt) != CE_None) georeference.emplace();
      GDALRasterBand* band = source->GetRasterBand(1);
      int hasScale = 0, hasOffset = 0;
      const double scale = band->GetScale(&hasScale), offset = band->GetOffset(&hasOffset);
      georeference->scale = hasScale ? scale : 1.0;
      georeference->offset = hasOffset ? offset : 0.0;
      file.crs = Wkt(source->GetSpatialRef());
    }
  }
  detail::ReadDsaaFile(name, name, options.noData, georeference ? &*georeference : nullptr, file.grid);
  file.format = "DSAA";
  file.isGrid = true;
}

// Every vertex of a geometry, collections and rings included.
void Vertices(const OGRGeometry* g, std::vector<std::array<double, 3>>& out) {
  if (g == nullptr) return;
  const OGRwkbGeometryType type = wkbFlatten(g->getGeometryType());
  if (type == wkbPoint) {
    const auto* p = g->toPoint();
    if (!p->IsEmpty()) out.push_back({p->getX(), p->getY(), p->Is3D() ? p->getZ() : kNan});
  } else if (OGR_GT_IsSubClassOf(type, wkbCurve) && type != wkbCircularString && type != wkbCompoundCurve) {
    const auto* line = g->toSimpleCurve();
    for (int k = 0; k < line->getNumPoints(); ++k) {
      out.push_back({line->getX(k), line->getY(k), line->Is3D() ? line->getZ(k) : kNan});
    }
  } else if (type == wkbPolygon) {
    for (const OGRLinearRing* ring : *g->toPolygon()) Vertices(ring, out);
  } else if (OGR_GT_IsSubClassOf(type, wkbGeometryCollection)) {
    for (const OGRGeometry* part : *g->toGeometryCollection()) Vertices(part, out);
  } else {
    std::unique_ptr<OGRGeometry> linear(g->getLinearGeometry());
    if (linear && wkbFlatten(linear->getGeometryType()) != type) Vertices(linear.get(), out);
  }
}

void ReadVector(GDALDataset& source, const std::string& name, const DataReadOptions& options, DataFile& file) {
  OGRLayer* layer = source.GetLayer(0);
  OGRFeatureDefn* fields = layer->GetLayerDefn();
  std::vector<std::string> numeric;
  for (int k = 0; k < fields->GetFieldCount(); ++k) {
    const OGRFieldType type = fields->GetFieldDefn(k)->GetType();
    if (type == OFTInteger || type == OFTInteger64 || type == OFTReal) numeric.push_back(fields->GetFieldDefn(k)->GetNameRef());
  }
  int zIndex = -1;
  if (!options.zField.empty()) {
    zIndex = fields->GetFieldIndex(options.zField.c_str());
    if (zIndex < 0) Fail(name + ": no field is named \"" + options.zField + "\" (its numeric fields: " + Joined(numeric) + ")");
    const OGRFieldType type = fields->GetFieldDefn(zIndex)->GetType();
    if (type != OFTInteger && type != OFTInteger64 && type != OFTReal) {
      Fail(name + ": the field \"" + options.zField + "\" does not hold numbers (its numeric fields: " + Joined(numeric) + ")");
    }
  }
  XyzPoints& points = file.points;
  std::vector<std::array<double, 3>> vertices;
  std::int64_t featureNumber = 0;
  layer->ResetReading();
  for (auto& feature : *layer) {
    ++featureNumber;
    vertices.clear();
    Vertices(feature->GetGeometryRef(), vertices);
    if (vertices.empty()) continue;
    double fieldZ = kNan;
    if (zIndex >= 0) {
      if (!feature->IsFieldSetAndNotNull(zIndex)) {
        file.dropped += vertices.size();
        continue;
      }
      fieldZ = feature->GetFieldAsDouble(zIndex);
    }
    for (const auto& v : vertices) {
      const double z = zIndex >= 0 ? fieldZ : v[2];
      if (std::isnan(z) && zIndex < 0) {
        Fail(name + ": the points have no Z; name the field that holds it" +
             (numeric.empty() ? std::string(" (the layer has no numeric fields)") : " (one of " + Joined(numeric) + ")"));
      }
      if (options.noData && z == *options.noData) {
        ++file.dropped;
        continue;
      }
      const std::string where = "feature " + std::to_string(featureNumber);
      CheckFinite(v[0], name, where + "'s X");
      CheckFinite(v[1], name, where + "'s Y");
      CheckFinite(z, name, where + "'s Z");
      points.x.push_back(v[0]);
      points.y.push_back(v[1]);
      points.z.push_back(z);
    }
  }
  file.crs = Wkt(layer->GetSpatialRef());
}

// Opens name with GDAL; false when GDAL does not know it.
bool ReadGdal(const std::string& name, const DataReadOptions& options, DataFile& file) {
  QuietGdal quiet;
  // ESRI ASCII grids read as 32-bit floats unless asked: their digits are kept whole.
  CPLSetThreadLocalConfigOption("AAIGRID_DATATYPE", "Float64");
  const std::string gdalName = GdalName(name);
  GDALDatasetUniquePtr source(
      GDALDataset::Open(gdalName.c_str(), GDAL_OF_RASTER | GDAL_OF_VECTOR | GDAL_OF_READONLY, nullptr, nullptr, nullptr));
  if (!source) {
    if (gdalName != name) Fail(name + ": cannot open the variable" + QuietGdal::Why());
    return false;
  }
  file.format = source->GetDriver() != nullptr ? source->GetDriver()->GetDescription() : "GDAL";
  if (source->GetRasterCount() > 0) {
    ReadRaster(*source, name, options, file);
    return true;
  }
  if (source->GetLayerCount() > 0) {
    ReadVector(*source, name, options, file);
    return true;
  }
  // A NetCDF file of several variables opens with none: its variables are subdatasets.
  std::vector<std::string> variables;
  if (char** list = source->GetMetadata("SUBDATASETS")) {
    for (int k = 0; list[k] != nullptr; ++k) {
      const std::string entry = list[k];
      const std::size_t eq = entry.find('=');
      if (entry.find("_NAME=") == std::string::npos || eq == std::string::npos) continue;
      const std::string value = entry.substr(eq + 1);
      variables.push_back(value.substr(value.rfind(':') + 1));
    }
  }
  if (!variables.empty()) {
    Fail(name + ": the file holds several variables; name one as " + name + ":VARIABLE (" + Joined(variables) + ")");
  }
  Fail(name + ": the file holds neither a raster nor features");
}

// ---------------------------------------------------------------------------------------
// Writing

// Shortest text that reads back as the same double.
std::string ShortestText(double v) {
  char buffer[32];
  const auto result = std::to_chars(buffer, buffer + sizeof buffer, v);
  return std::string(buffer, result.ptr);
}

struct Spacing {
  double first = 0.0, step = 0.0;
};

Spacing EvenSpacing(const std::vector<double>& v, const char* axis) {
  if (v.size() < 2) Fail(std::string("a grid needs at least two ") + axis + " nodes");
  const double span = v.back() - v.front();
  const double step = span / static_cast<double>(v.size() - 1);
  for (std::size_t k = 0; k < v.size(); ++k) {
    if (std::fabs(v[k] - (v.front() + static_cast<double>(k) * step)) > 1e-9 * std::fabs(span)) {
      Fail(std::string("the grid's ") + axis + " nodes are not evenly spaced; only .csv holds such a grid");
    }
  }
  if (!(step > 0.0)) Fail(std::string("the grid's ") + axis + " nodes must ascend");
  return {v.front(), step};
}

void WriteCsv(std::ostream& out, const GridFile& g) {
  std::string line;
  const std::size_t ny = g.y.size();
  for (std::size_t i = 0; i < g.x.size(); ++i) {
    for (std::size_t j = 0; j < ny; ++j) {
      const double z = g.z[i * ny + j];
      line = ShortestText(g.x[i]);
      line += ',';
      line += ShortestText(g.y[j]);
      line += ',';
      if (!std::isnan(z)) line += ShortestText(z);  // a blank cell has an empty Z
      line += '\n';
      out << line;
    }
  }
}

// A folder beside target for the files of one write; removed with what is left in it.
class Staging {
 public:
  explicit Staging(const fs::path& folder, const std::string& stem) {
    std::string pattern = (folder / ("." + stem + ".XXXXXX")).string();
    if (::mkdtemp(pattern.data()) == nullptr) {
      Fail((folder / stem).string() + ": cannot create the file (" + std::strerror(errno) + ")");
    }
    path_ = pattern;
  }
  ~Staging() {
    std::error_code ignored;
    fs::remove_all(path_, ignored);
  }
  Staging(const Staging&) = delete;
  Staging& operator=(const Staging&) = delete;
  const fs::path& Path() const { return path_; }

 private:
  fs::path path_;
};

// Writes the grid with GDAL's driver into file; messages name path.
void WriteRaster(const std::string& file, const std::string& path, const std::string& extension, const GridFile& grid,
                 const std::string& crs) {
  const Spacing sx = EvenSpacing(grid.x, "X"), sy = EvenSpacing(grid.y, "Y");
  const std::size_t nx = grid.x.size(), ny = grid.y.size();
  if (nx > static_cast<std::size_t>(std::numeric_limits<int>::max()) || ny > static_cast<std::size_t>(std::numeric_limits<int>::max())) {
    Fail(path + ": the grid is too large for a raster");
  }
  QuietGdal quiet;
  const char* driverName = extension == ".tif" ? "GTiff" : extension == ".nc" ? "netCDF" : extension == ".asc" ? "AAIGrid" : "GSAG";
  GDALDriver* driver = GetGDALDriverManager()->GetDriverByName(driverName);
  GDALDriver* memory = GetGDALDriverManager()->GetDriverByName("MEM");
  if (driver == nullptr || memory == nullptr) Fail(path + ": GDAL has no " + driverName + " driver");
  GDALDatasetUniquePtr mem(memory->Create("", static_cast<int>(nx), static_cast<int>(ny), 1, GDT_Float64, nullptr));
  if (!mem) Fail(path + ": cannot make the raster" + QuietGdal::Why());
  double gt[6] = {sx.first - sx.step / 2, sx.step, 0.0, grid.y.back() + sy.step / 2, 0.0, -sy.step};
  mem->SetGeoTransform(gt);
  if (!crs.empty()) {
    const OGRSpatialReference srs = ParseCrs(crs);
    mem->SetSpatialRef(&srs);
  }
  // The no-data value: NaN in GeoTIFF, the NetCDF default fill, and -9999 in ESRI
  // ASCII unless the data hold it; the DSAA writer puts its own blank for any.
  double noData = kNan;
  if (extension == ".nc") noData = 9.969209968386869e36;
  if (extension == ".asc" || extension == ".grd") {
    noData = -9999.0;
    while (std::find(grid.z.begin(), grid.z.end(), noData) != grid.z.end()) noData = noData * 10.0 - 9.0;
  }
  GDALRasterBand* band = mem->GetRasterBand(1);
  band->SetNoDataValue(noData);
  std::vector<double> line(nx);
  for (std::size_t r = 0; r < ny; ++r) {
    const std::size_t j = ny - 1 - r;
    for (std::size_t i = 0; i < nx; ++i) {
      const double z = grid.z[i * ny + j];
      line[i] = std::isnan(z) ? noData : z;
    }
    if (band->RasterIO(GF_Write, 0, static_cast<int>(r), static_cast<int>(nx), 1, line.data(), static_cast<int>(nx), 1,
                       GDT_Float64, 0, 0) != CE_None) {
      Fail(path + ": cannot make the raster" + QuietGdal::Why());
    }
  }
  CPLStringList options;
  if (extension == ".tif") {
    options.AddString("COMPRESS=DEFLATE");
    options.AddString("PREDICTOR=3");
  } else if (extension == ".asc") {
    options.AddString("SIGNIFICANT_DIGITS=17");
  } else if (extension == ".nc") {
    options.AddString("FORMAT=NC4");
    options.AddString("COMPRESS=DEFLATE");
  }
  GDALDatasetUniquePtr out(driver->CreateCopy(file.c_str(), mem.get(), FALSE, options.List(), nullptr, nullptr));
  if (!out) Fail(path + ": cannot write the file" + QuietGdal::Why());
  out.reset();  // closes and flushes the file
  if (CPLGetLastErrorType() == CE_Failure) Fail(path + ": cannot write the file" + QuietGdal::Why());
}

}  // namespace

std::size_t DataFile::BlankCount() const {
  if (!isGrid) return 0;
  return static_cast<std::size_t>(std::count_if(grid.z.begin(), grid.z.end(), [](double z) { return std::isnan(z); }));
}

std::string DataFile::Summary() const {
  if (isGrid) return std::to_string(grid.x.size()) + " x " + std::to_string(grid.y.size()) + " grid";
  std::string digits = std::to_string(points.x.size());
  for (std::ptrdiff_t at = static_cast<std::ptrdiff_t>(digits.size()) - 3; at > 0; at -= 3) {
    digits.insert(static_cast<std::size_t>(at), ",");
  }
  return digits + (points.x.size() == 1 ? " point" : " points");
}

DataFile ReadDataFile(const std::string& name, const DataReadOptions& options) {
  if (options.noData && !std::isfinite(*options.noData)) Fail("the no-data value must be a finite number");
  DataFile file;
  file.name = name;
  const std::string extension = fs::path(name).extension().string();
  const bool exists = fs::exists(name);
  if (exists && fs::is_directory(name)) {
    if (!ReadGdal(name, options, file)) Fail(name + ": cannot open a folder as data");
  } else if (exists && StartsWith(name, "DSAA")) {
    ReadDsaa(name, options, file);
  } else if (exists && IsTextExtension(extension)) {
    ReadText(name, options, file);
  } else if (!ReadGdal(name, options, file)) {
    if (!exists) Fail(name + ": cannot open the file (" + std::strerror(ENOENT) + ")");
    ReadText(name, options, file);
  }
  // What the control would refuse is refused here, before a data set is touched.
  const auto drawable = [&name](const std::vector<double>& values, const char* axis, const char* item) {
    for (std::size_t k = 0; k < values.size(); ++k) {
      if (std::fabs(values[k]) >= kLargest) {
        Fail(name + ": the " + axis + " of " + item + " " + std::to_string(k + 1) +
             " is too large to draw (the limit is 1e300)");
      }
    }
  };
  if (file.isGrid) {
    drawable(file.grid.x, "X", "column");
    drawable(file.grid.y, "Y", "row");
    drawable(file.grid.z, "Z", "node");
  } else {
    drawable(file.points.x, "X", "point");
    drawable(file.points.y, "Y", "point");
    drawable(file.points.z, "Z", "point");
  }
  if (!file.isGrid) {
    if (file.points.x.empty()) {
      Fail(name + ": no points were found (" +
           (file.dropped > 0 ? std::to_string(file.dropped) + " had no data)" : std::string("no line holds X, Y and Z numbers)")));
    }
    file.merged = MergeDuplicatePoints(file.points);
  }
  return file;
}

void ShowDataFile(const DataFile& file, DataSet& data) {
  if (file.isGrid) {
    data.Resampling().SetResamplerType(orvResamplerTypeNone);
    data.DataAsBlankedGridSet(file.grid.x, file.grid.y, file.grid.z);
  } else {
    data.DataAsSparseGridSet(file.points.x, file.points.y, file.points.z);
  }
}

const std::vector<std::string>& GridFileExtensions() {
  static const std::vector<std::string> extensions{".tif", ".nc", ".asc", ".grd", ".csv"};
  return extensions;
}

void WriteGridFile(const std::string& path, const std::string& extension, const GridFile& grid, const std::string& crs) {
  const std::vector<std::string>& known = GridFileExtensions();
  if (std::find(known.begin(), known.end(), extension) == known.end()) {
    Fail(path + ": cannot write " + (extension.empty() ? std::string("a file without an extension") : extension + " files") +
         "; the grid formats are " + Joined(known));
  }
  if (grid.x.size() * grid.y.size() != grid.z.size()) Fail(path + ": the grid's Z values do not fill its nodes");
  const bool toOutput = path == "-";
  if (toOutput && (extension == ".tif" || extension == ".nc")) {
    Fail(std::string(extension == ".tif" ? "GeoTIFF" : "NetCDF") + " cannot be written to standard output; name a file");
  }
  const fs::path target = toOutput ? fs::temp_directory_path() / "grid" : fs::path(path);
  fs::path folder = target.parent_path();
  if (folder.empty()) folder = ".";
  if (!toOutput && fs::is_directory(target)) Fail(path + ": cannot replace the file (it is a folder)");
  Staging staging(folder, target.filename().string());
  const fs::path staged = staging.Path() / target.filename();
  if (extension == ".csv") {
    std::ofstream out(staged, std::ios::binary);
    WriteCsv(out, grid);
    out.close();
    if (!out) Fail(path + ": cannot write the file (" + std::strerror(errno) + ")");
  } else {
    WriteRaster(staged.string(), path, extension, grid, crs);
  }
  if (toOutput) {
    std::ifstream in(staged, std::ios::binary);
    std::cout << in.rdbuf();
    std::cout.flush();
    if (!std::cout) Fail("cannot write to standard output");
    return;
  }
  // What an earlier write left beside the target describes that file, not this one.
  std::error_code ignored;
  fs::remove(fs::path(path + ".aux.xml"), ignored);
  if (extension == ".asc") fs::remove(fs::path(target).replace_extension(".prj"), ignored);
  for (const auto& entry : fs::directory_iterator(staging.Path())) {
    std::error_code error;
    fs::rename(entry.path(), folder / entry.path().filename(), error);
    if (error) Fail(path + ": cannot replace the file (" + error.message() + ")");
  }
}

std::string CrsAsWkt(const std::string& crs, const std::string& version) {
  if (crs.empty()) return {};
  if (version != "WKT2_2019" && version != "WKT1" && version != "WKT1_ESRI") {
    Fail("WKT comes as WKT2_2019, WKT1 or WKT1_ESRI, not " + version);
  }
  const OGRSpatialReference srs = ParseCrs(crs);
  return Wkt(&srs, version.c_str());
}

std::string CrsEpsgCode(const std::string& crs) {
  if (crs.empty()) return {};
  OGRSpatialReference srs = ParseCrs(crs);
  QuietGdal quiet;
  if (srs.GetAuthorityName(nullptr) == nullptr) srs.AutoIdentifyEPSG();
  const char* authority = srs.GetAuthorityName(nullptr);
  const char* code = srs.GetAuthorityCode(nullptr);
  if (authority == nullptr || code == nullptr || !EQUAL(authority, "EPSG")) return {};
  return std::string("EPSG:") + code;
}

}  // namespace orvane
