// orvane info, triangulate and contour: load an XYZ file as a scattered data set.

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "commands.h"
#include "input_options.h"
#include "level_options.h"
#include "numbers.h"
#include "orvane/contour/contouring.h"
#include "orvane/core/error.h"
#include "orvane/data/data_sets.h"
#include "orvane/data/data_file.h"
#include "orvane/data/xyz_file.h"
#include "output_file.h"

namespace orvane::cli {

namespace {

// Loads the file's points into a data set; returns how many it holds.
std::size_t Load(const std::string& path, const InputOptions& input, DataSet& data) {
  const XyzPoints points = PointsOf(ReadData(path, input));
  data.DataAsSparseGridSet(points.x, points.y, points.z);
  return points.x.size();
}

struct InfoOptions {
  std::string file;
  InputOptions input;
  bool json = false;
};

// The size, extent, Z range and blank cells of a grid file.
void InfoOfGrid(const InfoOptions& options, const DataFile& file) {
  DataSet data;
  ShowDataFile(file, data);
  const std::size_t blanks = file.BlankCount();
  const std::string epsg = CrsEpsgCode(file.crs);
  const std::string crs = !epsg.empty() ? epsg : file.crs.empty() ? "" : "(WKT)";
  const bool empty = blanks == file.grid.z.size();
  if (options.json) {
    nlohmann::json facts = {{"format", file.format},
                            {"columns", file.grid.x.size()}, {"rows", file.grid.y.size()},
                            {"blanks", blanks},
                            {"xmin", RoundedValue(data.XMin())}, {"xmax", RoundedValue(data.XMax())},
                            {"ymin", RoundedValue(data.YMin())}, {"ymax", RoundedValue(data.YMax())}};
    facts["zmin"] = empty ? nlohmann::json() : nlohmann::json(RoundedValue(data.ZMin()));
    facts["zmax"] = empty ? nlohmann::json() : nlohmann::json(RoundedValue(data.ZMax()));
    facts["crs"] = file.crs.empty() ? nlohmann::json() : nlohmann::json(file.crs);
    std::cout << facts.dump() << "\n";
    return;
  }
  std::cout << "file       " << options.file << "\n"
            << "format     " << file.format << "\n"
            << "grid       " << file.grid.x.size() << " x " << file.grid.y.size() << " nodes\n"
            << "x          " << Rounded(data.XMin()) << " .. " << Rounded(data.XMax()) << "\n"
            << "y          " << Rounded(data.YMin()) << " .. " << Rounded(data.YMax()) << "\n"
            << "z          " << (empty ? std::string("none (every cell is blank)") : Rounded(data.ZMin()) + " .. " + Rounded(data.ZMax())) << "\n"
            << "blank      " << blanks << (blanks == 1 ? " cell" : " cells") << "\n";
  if (!crs.empty()) std::cout << "crs        " << crs << "\n";
}

void RunInfo(const InfoOptions& options) {
  const DataFile file = ReadData(options.file, options.input);
  if (file.isGrid) {
    InfoOfGrid(options, file);
    return;
  }
  DataSets sets;
  DataSet& data = sets.Item(0);
  ShowDataFile(file, data);
  const std::size_t points = file.points.x.size();
  const std::size_t triangles = data.MeshTriangleVertices().size() / 3;
  std::int32_t hullCount = 0;
  Array hullX, hullY;
  data.DataHullGet(hullCount, hullX, hullY);

  if (options.json) {
    nlohmann::json hull = nlohmann::json::array();
    for (std::int32_t k = 0; k < hullCount; ++k) {
      hull.push_back({RoundedValue(hullX.At(k)), RoundedValue(hullY.At(k))});
    }
    const nlohmann::json facts = {{"points", points},      {"triangles", triangles},
                                  {"xmin", RoundedValue(data.XMin())}, {"xmax", RoundedValue(data.XMax())},
                                  {"ymin", RoundedValue(data.YMin())}, {"ymax", RoundedValue(data.YMax())},
                                  {"zmin", RoundedValue(data.ZMin())}, {"zmax", RoundedValue(data.ZMax())},
                                  {"hull", hull}};
    std::cout << facts.dump() << "\n";
    return;
  }
  std::cout << "file       " << options.file << "\n"
            << "points     " << points << "\n"
            << "x          " << Rounded(data.XMin()) << " .. " << Rounded(data.XMax()) << "\n"
            << "y          " << Rounded(data.YMin()) << " .. " << Rounded(data.YMax()) << "\n"
            << "z          " << Rounded(data.ZMin()) << " .. " << Rounded(data.ZMax()) << "\n"
            << "triangles  " << triangles << "\n"
            << "hull       " << hullCount << " vertices, counter-clockwise\n";
  for (std::int32_t k = 0; k < hullCount; ++k) {
    std::cout << "  " << Rounded(hullX.At(k)) << " " << Rounded(hullY.At(k)) << "\n";
  }
  const std::string epsg = CrsEpsgCode(file.crs);
  if (!file.crs.empty()) std::cout << "crs        " << (epsg.empty() ? "(WKT)" : epsg) << "\n";
}

struct TriangulateOptions {
  std::string file;
  InputOptions input;
  std::string output;
};

void RunTriangulate(const TriangulateOptions& options) {
  OutputFile file(options.output);
  DataSet data;
  Load(options.file, options.input, data);
  std::ostream& out = file.Stream();
  const std::vector<std::int32_t> v = data.MeshTriangleVertices();
  std::string line;
  for (std::size_t i = 0; i + 2 < v.size(); i += 3) {
    line.clear();
    line += std::to_string(v[i]);
    line += ',';
    line += std::to_string(v[i + 1]);
    line += ',';
    line += std::to_string(v[i + 2]);
    line += '\n';
    out << line;
  }
  file.Commit();
}

struct ContourOptions {
  std::string file;
  InputOptions input;
  std::string crs;  // --crs: the coordinates' system, when the file names none or another
  LevelOptions level;
  bool bands = false;
  std::string ties = "above";  // how heights on a level are traced
  std::string output;
};

// Writes GeoJSON text straight to a stream, numbers in shortest round-trip form.
class GeoJsonWriter {
 public:
  explicit GeoJsonWriter(std::ostream& out) : out_(out) {}
  void Point(double x, double y) { out_ << '[' << Number(x) << ',' << Number(y) << ']'; }
  // A line as its points; a ring closed by its first point again.
  void Points(const Polyline& line, bool close) {
    out_ << '[';
    for (std::size_t i = 0; i < line.x.size(); ++i) {
      if (i > 0) out_ << ',';
      Point(line.x[i], line.y[i]);
    }
    if (close && !line.x.empty()) {
      out_ << ',';
      Point(line.x.front(), line.y.front());
    }
    out_ << ']';
  }
  std::ostream& Raw() { return out_; }

 private:
  std::ostream& out_;
};

std::string JsonNumberOrNull(bool present, double v) { return present ? Number(v) : "null"; }

void RunContour(const ContourOptions& options) {
  if (options.ties != "above" && options.ties != "exact") throw Error(5, "orvane", "--ties must be above or exact");
  const std::string extension = std::filesystem::path(options.output).extension().string();
  if (!IsStreamed(options.output) && extension != ".geojson" && extension != ".json") {
    throw Error(5, "orvane", options.output + ": cannot write " +
                                 (extension.empty() ? std::string("a file without an extension") : extension + " files") +
                                 "; orvane contour writes .geojson or .json");
  }
  const std::string givenCrs = CrsAsWkt(options.crs);  // refused before any work
  OutputFile file(options.output);
  DataSet data;
  const DataFile source = ReadData(options.file, options.input);
  ShowDataFile(source, data);
  const std::string crs = !givenCrs.empty() ? givenCrs : source.crs;
  const std::string epsg = CrsEpsgCode(crs);
  const std::vector<double> levels = Levels(options.level, data.ZMin(), data.ZMax());
  const bool tiesAbove = options.ties == "above";
  const std::vector<std::vector<Polyline>> lines = data.ContourLines(levels, tiesAbove);

  GeoJsonWriter json(file.Stream());
  json.Raw() << "{\"type\":\"FeatureCollection\",";
  // The system in the crs member GDAL reads: by its EPSG name, or any other as WKT.
  if (!crs.empty()) {
    const std::string name = !epsg.empty() ? "urn:ogc:def:crs:EPSG::" + epsg.substr(5) : CrsAsWkt(crs, "WKT1");
    json.Raw() << "\"crs\":{\"type\":\"name\",\"properties\":{\"name\":" << nlohmann::json(name).dump() << "}},";
  }
  json.Raw() << "\"features\":[";
  bool firstFeature = true;
  auto beginFeature = [&]() {
    json.Raw() << (firstFeature ? "\n" : ",\n");
    firstFeature = false;
  };
  for (std::size_t k = 0; k < levels.size(); ++k) {
    beginFeature();
    json.Raw() << "{\"type\":\"Feature\",\"properties\":{\"level\":" << Number(levels[k])
               << "},\"geometry\":{\"type\":\"MultiLineString\",\"coordinates\":[";
    for (std::size_t p = 0; p < lines[k].size(); ++p) {
      if (p > 0) json.Raw() << ',';
      json.Points(lines[k][p], false);
    }
    json.Raw() << "]}}";
  }
  if (options.bands) {
    const std::vector<std::vector<Polygon>> bands = data.ContourBands(levels, tiesAbove);
    for (std::size_t k = 0; k < bands.size(); ++k) {
      if (bands[k].empty()) continue;  // a band the data do not reach
      beginFeature();
      json.Raw() << "{\"type\":\"Feature\",\"properties\":{\"lower\":"
                 << JsonNumberOrNull(k > 0, k > 0 ? levels[k - 1] : 0.0) << ",\"upper\":"
                 << JsonNumberOrNull(k < levels.size(), k < levels.size() ? levels[k] : 0.0)
                 << "},\"geometry\":{\"type\":\"MultiPolygon\",\"coordinates\":[";
      for (std::size_t p = 0; p < bands[k].size(); ++p) {
        json.Raw() << (p == 0 ? "[" : ",[");
        const std::vector<Polyline>& rings = bands[k][p].rings;
        for (std::size_t r = 0; r < rings.size(); ++r) {
          if (r > 0) json.Raw() << ',';
          json.Points(rings[r], true);
        }
        json.Raw() << ']';
      }
      json.Raw() << "]}}";
    }
  }
  json.Raw() << "\n]}\n";
  file.Commit();
}

}  // namespace

void AddInfoCommand(CLI::App& app) {
  auto options = std::make_shared<InfoOptions>();
  CLI::App* info = app.add_subcommand(
      "info", "Report a data file: a grid's size, extent, Z range and blank cells, or scattered points' "
              "count, limits, triangles and data hull");
  info->add_option("FILE", options->file, kDataFileHelp)->required();
  AddInputOptions(*info, options->input);
  info->add_flag("--json", options->json, "Print one JSON object instead of text");
  info->callback([options] { RunInfo(*options); });
}

void AddContourCommand(CLI::App& app) {
  auto options = std::make_shared<ContourOptions>();
  CLI::App* contour = app.add_subcommand(
      "contour", "Trace contour lines (and with --bands filled bands) of a data file into GeoJSON");
  contour->add_option("FILE", options->file, kDataFileHelp)->required();
  AddInputOptions(*contour, options->input);
  contour->add_option("--crs", options->crs,
                      "The coordinates' reference system (EPSG:n, WKT or PROJ), written into the GeoJSON; "
                      "default: the file's own");
  AddLevelOptions(*contour, options->level, "--count", false);
  contour->add_flag("--bands", options->bands, "Also write one MultiPolygon per band between levels");
  contour->add_option("--ties", options->ties,
                      "above (default: a height equal to a level counts as above it; whole contours) or exact "
                      "(exact signs: a level along mesh edges is traced twice)");
  contour->add_option("-o,--output", options->output, "GeoJSON file to write (.geojson or .json; - for standard output)")->required();
  contour->callback([options] { RunContour(*options); });
}

void AddTriangulateCommand(CLI::App& app) {
  auto options = std::make_shared<TriangulateOptions>();
  CLI::App* triangulate = app.add_subcommand(
      "triangulate",
      "Write the Delaunay triangles of a data file's points (a grid's nodes that are not blank), one per "
      "line as three zero-based point indices (points after duplicates are merged)");
  triangulate->add_option("FILE", options->file, kDataFileHelp)->required();
  AddInputOptions(*triangulate, options->input);
  triangulate->add_option("-o,--output", options->output, "CSV file to write")->required();
  triangulate->callback([options] { RunTriangulate(*options); });
}

}  // namespace orvane::cli
