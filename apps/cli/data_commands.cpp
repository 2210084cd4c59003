// orvane info, triangulate and contour: load an XYZ file as a scattered data set.

#include <charconv>
#include <fstream>
#include <iostream>
#include <memory>
#include <string>

#include <nlohmann/json.hpp>

#include "commands.h"
#include "data/data_set_state.h"
#include "orvane/contour/contouring.h"
#include "orvane/core/error.h"
#include "orvane/data/data_sets.h"
#include "orvane/data/xyz_file.h"

namespace orvane::cli {

namespace {

// Shortest text that reads back as the same double.
std::string Number(double v) {
  char buffer[32];
  const auto result = std::to_chars(buffer, buffer + sizeof buffer, v);
  return std::string(buffer, result.ptr);
}

// Loads the file into a data set of its own.
void Load(const std::string& path, DataSet& data) {
  XyzPoints points = ReadXyzFile(path);
  const auto count = static_cast<std::int32_t>(points.x.size());
  data.DataAsSparseGridSet(count, std::move(points.x), std::move(points.y), std::move(points.z));
}

struct InfoOptions {
  std::string file;
  bool json = false;
};

void RunInfo(const InfoOptions& options) {
  DataSets sets;
  DataSet& data = sets.Item(0);
  Load(options.file, data);
  const auto& state = detail::DataSetAccess::State(data);
  const std::int32_t triangles = state.triangulation ? state.triangulation->TriangleCount() : 0;
  std::int32_t hullCount = 0;
  Array hullX, hullY;
  data.DataHullGet(hullCount, hullX, hullY);

  if (options.json) {
    nlohmann::json hull = nlohmann::json::array();
    for (std::int32_t k = 0; k < hullCount; ++k) hull.push_back({hullX.At(k), hullY.At(k)});
    const nlohmann::json facts = {
        {"points", state.pointCount}, {"triangles", triangles}, {"xmin", data.XMin()},
        {"xmax", data.XMax()},        {"ymin", data.YMin()},    {"ymax", data.YMax()},
        {"zmin", data.ZMin()},        {"zmax", data.ZMax()},    {"hull", hull}};
    std::cout << facts.dump() << "\n";
    return;
  }
  std::cout << "file       " << options.file << "\n"
            << "points     " << state.pointCount << "\n"
            << "x          " << Number(data.XMin()) << " .. " << Number(data.XMax()) << "\n"
            << "y          " << Number(data.YMin()) << " .. " << Number(data.YMax()) << "\n"
            << "z          " << Number(data.ZMin()) << " .. " << Number(data.ZMax()) << "\n"
            << "triangles  " << triangles << "\n"
            << "hull       " << hullCount << " vertices, counter-clockwise\n";
  for (std::int32_t k = 0; k < hullCount; ++k) {
    std::cout << "  " << Number(hullX.At(k)) << " " << Number(hullY.At(k)) << "\n";
  }
}

struct TriangulateOptions {
  std::string file;
  std::string output;
};

void RunTriangulate(const TriangulateOptions& options) {
  DataSet data;
  Load(options.file, data);
  const auto& state = detail::DataSetAccess::State(data);
  std::ofstream out(options.output, std::ios::binary);
  if (!out) throw Error(5, "orvane", options.output + ": cannot create the file");
  if (state.triangulation) {
    const std::vector<std::int32_t>& v = state.triangulation->TriangleVertices();
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
  }
  out.flush();
  if (!out) throw Error(5, "orvane", options.output + ": writing failed");
}

struct ContourOptions {
  std::string file;
  std::int32_t count = 0;
  double interval = 0.0;
  std::vector<double> levels;
  bool bands = false;
  std::string output;
};

// Writes GeoJSON text straight to a stream, numbers in shortest round-trip form.
class GeoJsonWriter {
 public:
  explicit GeoJsonWriter(std::ostream& out) : out_(out) {}
  void Point(double x, double y) { out_ << '[' << Number(x) << ',' << Number(y) << ']'; }
  std::ostream& Raw() { return out_; }

 private:
  std::ostream& out_;
};

std::string JsonNumberOrNull(bool present, double v) { return present ? Number(v) : "null"; }

void RunContour(const ContourOptions& options) {
  DataSet data;
  Load(options.file, data);
  Contouring contouring;
  if (!options.levels.empty()) {
    contouring.SetAutoSetContoursType(orvAutoSetOff);
    for (double v : options.levels) contouring.Contours().Add(v);
  } else if (options.interval > 0.0) {
    contouring.SetAutoSetContoursType(orvAutoSetByInterval);
    contouring.SetAutoSetInterval(options.interval);
  } else if (options.count > 0) {
    contouring.SetAutoSetIntervalCount(options.count);
  }
  contouring.AutoSetContours(data.ZMin(), data.ZMax());
  std::vector<double> levels;
  for (std::int32_t i = 0; i < contouring.Contours().Count(); ++i) {
    levels.push_back(contouring.Contours().Item(i)->Value());
  }
  auto& state = detail::DataSetAccess::State(data);
  state.contoursStale = true;
  state.PrepareForDrawing(levels);

  std::ofstream file(options.output, std::ios::binary);
  if (!file) throw Error(5, "orvane", options.output + ": cannot create the file");
  GeoJsonWriter json(file);
  auto point = [&](double nx, double ny) {
    json.Point(state.Denormalise(0, nx), state.Denormalise(1, ny));
  };
  json.Raw() << "{\"type\":\"FeatureCollection\",\"features\":[";
  bool firstFeature = true;
  auto beginFeature = [&]() {
    json.Raw() << (firstFeature ? "\n" : ",\n");
    firstFeature = false;
  };
  for (std::size_t k = 0; k < levels.size() && k < state.contourLines.size(); ++k) {
    const CLineList& lines = state.contourLines[k];
    beginFeature();
    json.Raw() << "{\"type\":\"Feature\",\"properties\":{\"level\":" << Number(levels[k])
               << "},\"geometry\":{\"type\":\"MultiLineString\",\"coordinates\":[";
    const auto& starts = lines.PolylineStarts();
    for (std::size_t p = 0; p < starts.size(); ++p) {
      const auto begin = static_cast<std::size_t>(starts[p]);
      const std::size_t end = p + 1 < starts.size() ? static_cast<std::size_t>(starts[p + 1]) : lines.Count();
      json.Raw() << (p == 0 ? "[" : ",[");
      point(lines.Item(begin).x1, lines.Item(begin).y1);
      for (std::size_t s = begin; s < end; ++s) {
        json.Raw() << ',';
        point(lines.Item(s).x2, lines.Item(s).y2);
      }
      json.Raw() << ']';
    }
    json.Raw() << "]}}";
  }
  if (options.bands) {
    for (std::size_t k = 0; k < state.bandTriangles.size(); ++k) {
      const BandTriangles& band = state.bandTriangles[k];
      beginFeature();
      json.Raw() << "{\"type\":\"Feature\",\"properties\":{\"lower\":"
                 << JsonNumberOrNull(k > 0, k > 0 ? levels[k - 1] : 0.0) << ",\"upper\":"
                 << JsonNumberOrNull(k < levels.size(), k < levels.size() ? levels[k] : 0.0)
                 << "},\"geometry\":{\"type\":\"MultiPolygon\",\"coordinates\":[";
      for (std::size_t i = 0; i + 8 < band.size(); i += 9) {
        // One closed ring per triangle: its three corners and the first again.
        json.Raw() << (i == 0 ? "[[" : ",[[");
        for (std::size_t corner : {0u, 3u, 6u}) {
          point(band[i + corner], band[i + corner + 1]);
          json.Raw() << ',';
        }
        point(band[i], band[i + 1]);
        json.Raw() << "]]";
      }
      json.Raw() << "]}}";
    }
  }
  json.Raw() << "\n]}\n";
  file.flush();
  if (!file) throw Error(5, "orvane", options.output + ": writing failed");
}

}  // namespace

void AddInfoCommand(CLI::App& app) {
  auto options = std::make_shared<InfoOptions>();
  CLI::App* info = app.add_subcommand(
      "info", "Load an XYZ file as scattered points and report its size, limits, triangles and data hull");
  info->add_option("FILE", options->file, "XYZ text: one point per line, X Y Z separated by commas, tabs or spaces")
      ->required();
  info->add_flag("--json", options->json, "Print one JSON object instead of text");
  info->callback([options] { RunInfo(*options); });
}

void AddContourCommand(CLI::App& app) {
  auto options = std::make_shared<ContourOptions>();
  CLI::App* contour = app.add_subcommand(
      "contour", "Trace contour lines (and with --bands filled bands) of an XYZ file into GeoJSON");
  contour->add_option("FILE", options->file, "XYZ text file")->required();
  CLI::Option* count = contour->add_option("--count", options->count, "Number of equal intervals between the Z limits (default 10)")
                           ->check(CLI::PositiveNumber);
  CLI::Option* interval = contour->add_option("--interval", options->interval, "Level spacing, from the Z minimum up")
                              ->check(CLI::PositiveNumber);
  CLI::Option* levels = contour->add_option("--levels", options->levels, "Levels given one by one: a,b,c")
                            ->delimiter(',');
  count->excludes(interval)->excludes(levels);
  interval->excludes(levels);
  contour->add_flag("--bands", options->bands, "Also write one MultiPolygon per band between levels");
  contour->add_option("-o,--output", options->output, "GeoJSON file to write")->required();
  contour->callback([options] { RunContour(*options); });
}

void AddTriangulateCommand(CLI::App& app) {
  auto options = std::make_shared<TriangulateOptions>();
  CLI::App* triangulate = app.add_subcommand(
      "triangulate", "Write the Delaunay triangles of an XYZ file, one per line as three zero-based point indices");
  triangulate->add_option("FILE", options->file, "XYZ text file")->required();
  triangulate->add_option("-o,--output", options->output, "CSV file to write")->required();
  triangulate->callback([options] { RunTriangulate(*options); });
}

}  // namespace orvane::cli
