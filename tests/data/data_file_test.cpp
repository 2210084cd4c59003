// Data files in and out: every grid format written is read back by GDAL itself (size,
// geotransform, no-data, CRS) and by ReadDataFile; DSAA text read by Orvane's own reader
// exactly as GDAL's driver reads it; NetCDF variables, vector points, text with decimal
// commas, blank rows and named columns; and the refusals, word for word.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <memory>
#include <filesystem>
#include <fstream>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include <gdal.h>
#include <gdal_priv.h>
#include <ogr_srs_api.h>

#include "orvane/data/data_file.h"
#include "orvane/data/data_set.h"
#include "support/expect_error.h"

namespace orvane {
namespace {

namespace fs = std::filesystem;
constexpr double kBlank = std::numeric_limits<double>::quiet_NaN();

class DataFileTest : public ::testing::Test {
 protected:
  void SetUp() override {
    dir_ = fs::temp_directory_path() / ("orvane_data_file_" + std::to_string(::getpid()) + "_" +
                                        ::testing::UnitTest::GetInstance()->current_test_info()->name());
    fs::remove_all(dir_);
    fs::create_directories(dir_);
    GDALAllRegister();
  }
  void TearDown() override { fs::remove_all(dir_); }
  std::string Path(const std::string& name) const { return (dir_ / name).string(); }
  std::string Write(const std::string& name, const std::string& text) const {
    std::ofstream(dir_ / name, std::ios::binary) << text;
    return Path(name);
  }
  fs::path dir_;
};

// 5 x 4 nodes at X 100..140 and Y 200..230, values with all their digits, one blank.
GridFile Sample() {
  GridFile g{{100, 110, 120, 130, 140}, {200, 210, 220, 230}, {}};
  for (int i = 0; i < 5; ++i) {
    for (int j = 0; j < 4; ++j) g.z.push_back(i == 1 && j == 2 ? kBlank : 1.0 / 3.0 + i * 10 + j * 0.1);
  }
  return g;
}

TEST_F(DataFileTest, EveryGridFormatReadsBackThroughGdalAndThroughReadDataFile) {
  const GridFile grid = Sample();
  OGRSpatialReferenceH rd = OSRNewSpatialReference(nullptr);
  OSRImportFromEPSG(rd, 28992);
  const std::vector<std::pair<std::string, double>> formats = {
      {".tif", kBlank}, {".nc", 9.969209968386869e36}, {".asc", -9999.0}, {".grd", kDsaaBlank}};
  for (const auto& [extension, noData] : formats) {
    SCOPED_TRACE(extension);
    const std::string path = Path("g" + extension);
    WriteGridFile(path, extension, grid, "EPSG:28992");
    GDALDatasetH raster = GDALOpen(path.c_str(), GA_ReadOnly);
    ASSERT_NE(raster, nullptr);
    EXPECT_EQ(std::pair(GDALGetRasterXSize(raster), GDALGetRasterYSize(raster)), std::pair(5, 4));
    double gt[6] = {};
    ASSERT_EQ(GDALGetGeoTransform(raster, gt), CE_None);
    // Cells centred on the nodes, north up.
    for (const auto& [k, value] : {std::pair{0, 95.0}, {1, 10.0}, {2, 0.0}, {3, 235.0}, {4, 0.0}, {5, -10.0}}) {
      EXPECT_NEAR(gt[k], value, 1e-9) << k;
    }
    GDALRasterBandH band = GDALGetRasterBand(raster, 1);
    int has = 0;
    const double written = GDALGetRasterNoDataValue(band, &has);
    EXPECT_TRUE(has);
    EXPECT_TRUE(std::isnan(noData) ? std::isnan(written) : std::fabs(written - noData) <= 1e-9 * std::fabs(noData)) << written;
    double cell = 0.0;  // node (1, 2): column 1, row 1 from the top
    ASSERT_EQ(GDALRasterIO(band, GF_Read, 1, 1, 1, 1, &cell, 1, 1, GDT_Float64, 0, 0), CE_None);
    EXPECT_TRUE(std::isnan(noData) ? std::isnan(cell) : cell == written) << cell;
    const OGRSpatialReferenceH crs = GDALGetSpatialRef(raster);
    EXPECT_TRUE(crs != nullptr && OSRIsSame(crs, rd));
    GDALClose(raster);

    const DataFile back = ReadDataFile(path);
    ASSERT_TRUE(back.isGrid);
    EXPECT_EQ(back.grid.x, grid.x);
    EXPECT_EQ(back.grid.y, grid.y);
    for (std::size_t k = 0; k < grid.z.size(); ++k) {
      if (std::isnan(grid.z[k])) {
        EXPECT_TRUE(std::isnan(back.grid.z[k])) << k;
      } else {
        // Every digit, but in DSAA, where GDAL writes 14 significant digits.
        EXPECT_NEAR(back.grid.z[k], grid.z[k], extension == ".grd" ? 1e-13 * std::fabs(grid.z[k]) : 0.0) << k;
      }
    }
    EXPECT_EQ(back.BlankCount(), 1U);
    // ESRI ASCII keeps its CRS as ESRI WKT in a .prj, which names no EPSG code.
    if (extension != ".asc") {
      EXPECT_EQ(CrsEpsgCode(back.crs), "EPSG:28992");
    }
  }
  OSRDestroySpatialReference(rd);
  // CSV: x,y,z lines with an empty Z, read back as the lattice they fill.
  WriteGridFile(Path("g.csv"), ".csv", grid);
  const DataFile csv = ReadDataFile(Path("g.csv"));
  ASSERT_TRUE(csv.isGrid);
  EXPECT_EQ(csv.grid.x, grid.x);
  EXPECT_EQ(csv.BlankCount(), 1U);
  EXPECT_TRUE(std::isnan(csv.grid.z[1 * 4 + 2]));
  EXPECT_EQ(csv.grid.z[0], grid.z[0]);
}

// The grid GDAL's DSAA driver gives for a file, laid out as ReadDataFile lays out a
// raster: node i at gt0 + (i + 0.5) gt1, X and Y ascending, cells holding the no-data
// value or NaN blank, and the others through the band's scale and offset (1 and 0,
// which makes -0 into 0).
GridFile ThroughGdal(const std::string& path) {
  GridFile g;
  GDALDatasetH raster = GDALOpen(path.c_str(), GA_ReadOnly);
  EXPECT_NE(raster, nullptr) << path;
  if (raster == nullptr) return g;
  EXPECT_STREQ(GDALGetDriverShortName(GDALGetDatasetDriver(raster)), "GSAG");
  const int nx = GDALGetRasterXSize(raster), ny = GDALGetRasterYSize(raster);
  double gt[6] = {};
  EXPECT_EQ(GDALGetGeoTransform(raster, gt), CE_None);
  const auto column = [&](int c) { return gt[1] > 0 ? c : nx - 1 - c; };
  const auto row = [&](int r) { return gt[5] < 0 ? ny - 1 - r : r; };
  for (int i = 0; i < nx; ++i) g.x.push_back(gt[0] + (column(i) + 0.5) * gt[1]);
  for (int j = 0; j < ny; ++j) g.y.push_back(gt[3] + (row(j) + 0.5) * gt[5]);
  GDALRasterBandH band = GDALGetRasterBand(raster, 1);
  const double noData = GDALGetRasterNoDataValue(band, nullptr);
  g.z.assign(static_cast<std::size_t>(nx) * static_cast<std::size_t>(ny), kBlank);
  std::vector<double> line(static_cast<std::size_t>(nx));
  for (int r = 0; r < ny; ++r) {
    EXPECT_EQ(GDALRasterIO(band, GF_Read, 0, r, nx, 1, line.data(), nx, 1, GDT_Float64, 0, 0), CE_None);
    for (int c = 0; c < nx; ++c) {
      const double v = line[static_cast<std::size_t>(c)];
      if (!std::isnan(v) && v != noData) g.z[static_cast<std::size_t>(column(c) * ny + row(r))] = v * 1.0 + 0.0;
    }
  }
  GDALClose(raster);
  return g;
}

std::vector<std::uint64_t> Bits(const std::vector<double>& values) {
  std::vector<std::uint64_t> bits(values.size());
  if (!values.empty()) std::memcpy(bits.data(), values.data(), values.size() * sizeof(double));
  return bits;
}

TEST_F(DataFileTest, DsaaTextReadsBitForBitAsGdalReadsIt) {
  // Rows wrapped anyhow, CRLF, exponents, blanks written three ways, values just beside
  // the blank, -0, +5, a subnormal and an underflow; limits falling in X and in Y; limits
  // whose nodes, as GDAL places them, differ in the last bit from xlo + i dx.
  std::vector<std::string> files = {
      Write("wrapped.grd", "DSAA\r\n4 3\r\n-2.5 7.3\r\n1e3 1.5E+3\r\n-1 9\r\n1.5 -0 +5\r\n2.5e-3 1.70141e38\r\n"
                           "1.70141E+038 170141000000000000000000000000000000000 1.70142e38 1.7014100091878e+38\r\n\r\n"
                           "4.9e-324 1e-400\t -7.25\r\n"),
      Write("falling.grd", "DSAA\n4 3\n10.1 9.2\n5 -1\n0 1\n1 2 3 4\n5 6 7 1.70141e38\n9 10 11 12\n"),
      Write("tenths.grd", "DSAA\n7 2\n0.1 0.7\n0.3 1.2\n0 1\n1 2 3 4 5 6 7 8 9 10 11 12 13 14\n")};
  // And a larger grid, over several of the reader's blocks, with a blank now and then.
  std::mt19937 random(11);
  std::uniform_real_distribution<double> value(-1e5, 1e5);
  std::string text = "DSAA\n300 200\n-1234.5 987.25\n0.001 0.002\n-1e5 1e5\n";
  char number[32];
  for (int k = 0; k < 300 * 200; ++k) {
    std::snprintf(number, sizeof number, "%.17g", value(random));
    text += k % 97 == 0 ? "1.70141e+38" : number;
    text += k % 13 == 12 ? "\n" : " ";
  }
  files.push_back(Write("large.grd", text));
  for (const std::string& path : files) {
    SCOPED_TRACE(path);
    const GridFile gdal = ThroughGdal(path);
    const DataFile file = ReadDataFile(path);
    EXPECT_EQ(file.format, "DSAA");
    ASSERT_TRUE(file.isGrid);
    EXPECT_EQ(file.grid.x, gdal.x);
    EXPECT_EQ(file.grid.y, gdal.y);
    EXPECT_EQ(Bits(file.grid.z), Bits(gdal.z));
    EXPECT_TRUE(file.crs.empty());
  }
  const DataFile wrapped = ReadDataFile(files[0]);
  EXPECT_EQ(wrapped.BlankCount(), 3U);
  EXPECT_EQ(Bits({wrapped.grid.z[1 * 3 + 0]}), Bits({0.0}));  // "-0"
  EXPECT_EQ(wrapped.grid.z[0 * 3 + 2], 1.7014100091878e+38);  // not quite the blank: a value
  // X falls, Y rises: the last row's last value is at the lowest X and Y.
  const DataFile falling = ReadDataFile(files[1]);
  EXPECT_EQ(falling.grid.z[0], 12.0);
  EXPECT_TRUE(std::isnan(falling.grid.z[0 * 3 + 1]));
  EXPECT_EQ(falling.grid.x[2], 9.8);  // not xlo + dx, 9.799999999999999
  EXPECT_EQ(ReadDataFile(files[2]).grid.x[3], 0.39999999999999997);  // not 0.4
  // NaN is blank too, and so is the no-data value asked for.
  DataReadOptions options;
  options.noData = 4.0;
  const DataFile blanks = ReadDataFile(Write("nan.grd", "DSAA\n2 2\n0 1\n0 1\n0 1\nnan 4\n-NaN 5\n"), options);
  EXPECT_EQ(blanks.BlankCount(), 3U);
  EXPECT_EQ(blanks.grid.z[1 * 2 + 1], 5.0);
}

TEST_F(DataFileTest, MalformedDsaaTextIsRefusedByNameAndLine) {
  const std::pair<std::string, std::string> cases[] = {
      {"DSAA 2 2\n0 1\n0 1\n0 1\n1 2 3 4\n", "not a DSAA grid (the first line is not \"DSAA\")"},
      {"DSAA\n2 2\n0 1\n0 1\n", "the DSAA header ends before its lowest Z"},
      {"DSAA\n2.5 2\n0 1\n0 1\n0 1\n1 2 3 4\n", "line 2: the number of columns in the DSAA header is not a whole number (\"2.5\")"},
      {"DSAA\r\n2 2\r\n0 1\r\n0 one\r\n", "line 4: the highest Y in the DSAA header is not a number (\"one\")"},
      {"DSAA\n1 5\n0 1\n0 1\n0 1\n1 2 3 4 5\n", "a grid needs at least 2 by 2 cells, not 1 by 5"},
      {"DSAA\n20000 20000\n0 1\n0 1\n0 1\n",
       "the raster has 400000000 cells, more than the 268435456 a grid may hold; cut or thin it first (gdal_translate -srcwin or -outsize)"},
      {"DSAA\n2 2\n3 3\n0 1\n0 1\n1 2 3 4\n", "the raster's cells have no size"},
      {"DSAA\n2 2\n0 1e300\n0 1\n0 1\n1 2 3 4\n", "the last column's X is not a finite number below 1e300"},
      {"DSAA\n3 2\n0 1\n0 1\n0 1\n1 2 3\n4 5\n", "the file holds 5 values, fewer than the 3 by 2 its header gives"},
      {"DSAA\n3 2\n0 1\n0 1\n0 1\n1 2 3\n4 5 6\n\n7\n", "line 9: more values than the 3 by 2 the header gives (\"7\")"},
      {"DSAA\n3 2\n0 1\n0 1\n0 1\n1 2,5 3\n4 5 6\n", "line 6: \"2,5\" is not a number"},
      {"DSAA\n3 2\n0 1\n0 1\n0 1\n1 2 3\n4 5 \x1b[2J\n", "line 7: \"\\x1b[2J\" is not a number"},
      // The first bad cell in the order GDAL's rows run, from the top (the file's last row).
      {"DSAA\n3 2\n0 1\n0 1\n0 1\ninf 2 3\n4 5 -1e400\n", "the cell in column 3, row 1 is not a finite number below 1e300"},
      {"DSAA\n3 2\n0 1\n0 1\n0 1\n1 2e300 3\n4 5 6\n", "the cell in column 2, row 2 is not a finite number below 1e300"}};
  for (const auto& [text, message] : cases) {
    const std::string path = Write("bad.grd", text);
    EXPECT_ORVANE_ERROR(ReadDataFile(path), 5, "DataFile", path + ": " + message) << text;
  }
}

TEST_F(DataFileTest, NetcdfVariablesAreNamedAfterTheFile) {
  // Two variables in one file, written through GDAL's multidimensional netCDF writer.
  const std::string path = Path("two.nc");
  {
    GDALDriver* driver = GetGDALDriverManager()->GetDriverByName("netCDF");
    std::unique_ptr<GDALDataset> file(driver->CreateMultiDimensional(path.c_str(), nullptr, nullptr));
    ASSERT_TRUE(file);
    const std::shared_ptr<GDALGroup> root = file->GetRootGroup();
    const std::vector<std::shared_ptr<GDALDimension>> dimensions{root->CreateDimension("y", "", "", 2),
                                                                 root->CreateDimension("x", "", "", 3)};
    for (const char* name : {"depth", "temp"}) {
      const auto type = GDALExtendedDataType::Create(GDT_Float64);
      const std::shared_ptr<GDALMDArray> array = root->CreateMDArray(name, dimensions, type);
      double values[6] = {1, 2, 3, 4, 5, 6};
      if (std::string(name) == "temp") values[0] = 40;
      const GUInt64 start[2] = {0, 0};
      const std::size_t count[2] = {2, 3};
      ASSERT_TRUE(array->Write(start, count, nullptr, nullptr, type, values));
    }
  }
  EXPECT_ORVANE_ERROR(ReadDataFile(path), 5, "DataFile",
                      path + ": the file holds several variables; name one as " + path + ":VARIABLE (depth, temp)");
  const DataFile temp = ReadDataFile(path + ":temp");
  ASSERT_TRUE(temp.isGrid);
  EXPECT_EQ(temp.format, "netCDF");
  EXPECT_EQ(temp.grid.x.size(), 3U);
  EXPECT_EQ(temp.grid.y.size(), 2U);
  EXPECT_NE(std::find(temp.grid.z.begin(), temp.grid.z.end(), 40.0), temp.grid.z.end());
  EXPECT_ORVANE_ERROR(ReadDataFile(path + ":salinity"), 5, "DataFile",
                      path + ":salinity: cannot open the variable (GDAL: NETCDF:\"" + path +
                          "\":salinity is a netCDF file, but salinity is not a variable.)");
}

TEST_F(DataFileTest, VectorPointsTakeZFromAFieldOrTheirGeometry) {
  const std::string flat = Write("p.geojson", R"({"type":"FeatureCollection",
    "crs":{"type":"name","properties":{"name":"urn:ogc:def:crs:EPSG::28992"}},"features":[
    {"type":"Feature","properties":{"zinc":1022,"name":"a"},"geometry":{"type":"Point","coordinates":[181072,333611]}},
    {"type":"Feature","properties":{"zinc":null,"name":"b"},"geometry":{"type":"Point","coordinates":[181025,333558]}},
    {"type":"Feature","properties":{"zinc":640,"name":"c"},"geometry":{"type":"MultiPoint","coordinates":[[181165,333537],[181298,333484]]}}]})");
  DataReadOptions options;
  options.zField = "zinc";
  const DataFile points = ReadDataFile(flat, options);
  ASSERT_FALSE(points.isGrid);
  EXPECT_EQ(points.format, "GeoJSON");
  EXPECT_EQ(points.points.x, (std::vector<double>{181072, 181165, 181298}));
  EXPECT_EQ(points.points.z, (std::vector<double>{1022, 640, 640}));
  EXPECT_EQ(points.dropped, 1U);  // the feature whose zinc is null
  EXPECT_EQ(CrsEpsgCode(points.crs), "EPSG:28992");
  EXPECT_ORVANE_ERROR(ReadDataFile(flat), 5, "DataFile", flat + ": the points have no Z; name the field that holds it (one of zinc)");
  options.zField = "lead";
  EXPECT_ORVANE_ERROR(ReadDataFile(flat, options), 5, "DataFile", flat + ": no field is named \"lead\" (its numeric fields: zinc)");
  options.zField = "name";
  EXPECT_ORVANE_ERROR(ReadDataFile(flat, options), 5, "DataFile",
                      flat + ": the field \"name\" does not hold numbers (its numeric fields: zinc)");
  // Points with a Z of their own need no field.
  const std::string solid = Write("z.geojson", R"({"type":"FeatureCollection","features":[
    {"type":"Feature","properties":{},"geometry":{"type":"Point","coordinates":[0,0,5]}},
    {"type":"Feature","properties":{},"geometry":{"type":"Point","coordinates":[1,0,-9999]}},
    {"type":"Feature","properties":{},"geometry":{"type":"LineString","coordinates":[[0,1,7],[1,1,8]]}}]})");
  DataReadOptions noData;
  noData.noData = -9999.0;
  const DataFile z = ReadDataFile(solid, noData);
  EXPECT_EQ(z.points.z, (std::vector<double>{5, 7, 8}));
  EXPECT_EQ(z.dropped, 1U);
}

TEST_F(DataFileTest, TextTakesDecimalCommasBlankRowsNoDataAndNamedColumns) {
  const DataFile comma = ReadDataFile(Write("c.csv", "x;y;z\n1;2;3\n1,5;2,5;3,25\n0\t1\t-0,5\n"));
  EXPECT_EQ(comma.points.x, (std::vector<double>{1, 1.5, 0}));
  EXPECT_EQ(comma.points.z, (std::vector<double>{3, 3.25, -0.5}));
  const std::string mixed = Write("m.csv", "1,5;2,5;3\n1.5;2;3\n");
  EXPECT_ORVANE_ERROR(ReadDataFile(mixed), 5, "XyzFile",
                      mixed + ":2: \"1.5;2;3\" has a decimal point, but the file writes its decimals with commas");
  // Rows without Z that do not fill a lattice are left out and counted.
  const DataFile gaps = ReadDataFile(Write("g.csv", "0,0,1\n1,0,\n0,1,3\n2,2,4\n"));
  ASSERT_FALSE(gaps.isGrid);
  EXPECT_EQ(gaps.points.x.size(), 3U);
  EXPECT_EQ(gaps.dropped, 1U);
  DataReadOptions options;
  options.noData = -9999.0;
  const DataFile noData = ReadDataFile(Write("n.xyz", "0 0 1\n1 0 -9999\n0 1 3\n1 1 4\n"), options);
  ASSERT_TRUE(noData.isGrid);  // with the no-data point the four fill a lattice
  EXPECT_TRUE(std::isnan(noData.grid.z[2]));
  options.zField = "ZINC";  // field names match in any case
  const DataFile meuse = ReadDataFile(Write("meuse.csv", "x,y,cadmium,zinc\n181072,333611,11.7,1022\n181025,333558,8.6,1141\n"
                                                        "181165,333537,6.5,640\n"),
                                      options);
  EXPECT_EQ(meuse.points.z, (std::vector<double>{1022, 1141, 640}));
  options.zField = "lead";
  EXPECT_ORVANE_ERROR(ReadDataFile(Path("meuse.csv"), options), 5, "DataFile",
                      Path("meuse.csv") + ": no field is named \"lead\" (the header has x, y, cadmium, zinc)");
}

TEST_F(DataFileTest, WhatIsNoDataOrCannotBeWrittenIsRefusedByName) {
  const std::pair<std::string, std::string> empty[] = {
      {"", ": no points were found (no line holds X, Y and Z numbers)"},
      {"hello world\n", ": no points were found (no line holds X, Y and Z numbers)"},
      {"x,y,z\n1,2,\n", ": no points were found (1 had no data)"}};
  for (const auto& entry : empty) {
    const std::string path = Write("e.txt", entry.first);
    EXPECT_ORVANE_ERROR(ReadDataFile(path), 5, "DataFile", path + entry.second) << entry.first;
  }
  EXPECT_ORVANE_ERROR(ReadDataFile(Path("absent.tif")), 5, "DataFile",
                      Path("absent.tif") + ": cannot open the file (No such file or directory)");
  const GridFile grid = Sample();
  EXPECT_ORVANE_ERROR(WriteGridFile(Path("g.png"), ".png", grid), 5, "DataFile",
                      Path("g.png") + ": cannot write .png files; the grid formats are .tif, .nc, .asc, .grd, .csv");
  EXPECT_ORVANE_ERROR(WriteGridFile("-", ".tif", grid), 5, "DataFile",
                      "GeoTIFF cannot be written to standard output; name a file");
  GridFile uneven = grid;
  uneven.x[2] = 121;
  EXPECT_ORVANE_ERROR(WriteGridFile(Path("u.tif"), ".tif", uneven), 5, "DataFile",
                      "the grid's X nodes are not evenly spaced; only .csv holds such a grid");
  EXPECT_FALSE(fs::exists(Path("u.tif")));
  EXPECT_EQ(std::distance(fs::directory_iterator(dir_), fs::directory_iterator()), 1);  // e.txt alone
  EXPECT_ORVANE_ERROR(CrsAsWkt("EPSG:0"), 5, "DataFile",
                      "the coordinate reference system \"EPSG:0\" is not known (give EPSG:n, WKT or a PROJ string)" +
                          std::string(" (GDAL: PROJ: proj_create_from_database: crs not found)"));
}

TEST_F(DataFileTest, AGeoTiffWithAHoleLoadsIntoADataSet) {
  WriteGridFile(Path("h.tif"), ".tif", Sample(), "EPSG:4326");
  const DataFile file = ReadDataFile(Path("h.tif"));
  DataSet data;
  ShowDataFile(file, data);
  EXPECT_EQ(data.BlankCount(), 1);
  EXPECT_EQ(data.XMin(), 100.0);
  EXPECT_EQ(data.YMax(), 230.0);
  EXPECT_DOUBLE_EQ(data.ZMax(), 1.0 / 3.0 + 40.3);
  // 24 cell triangles, less the 6 that touch the blank node.
  EXPECT_EQ(data.MeshTriangles().size() / 9, 24U - 6U);
}

}  // namespace
}  // namespace orvane
