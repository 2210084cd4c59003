// orvane info, triangulate and contour: load an XYZ file as a scattered data set.

#include <algorithm>
#include <cmath>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "commands.h"
#include "input_options.h"
#include "numbers.h"
#include "orvane/contour/contouring.h"
#include "orvane/core/error.h"
#include "orvane/data/data_sets.h"
#include "orvane/data/xyz_file.h"
#include "output_file.h"

namespace orvane::cli {

namespace {

// Loads the file into a data set; returns the number of points it holds.
std::size_t Load(const std::string& path, const InputOptions& input, DataSet& data) {
  const XyzPoints points = ReadPoints(path, input);
  data.DataAsSparseGridSet(points.x, points.y, points.z);
  return points.x.size();
}

struct InfoOptions {
  std::string file;
  InputOptions input;
  bool json = false;
};

void RunInfo(const InfoOptions& options) {
  DataSets sets;
  DataSet& data = sets.Item(0);
  const std::size_t points = Load(options.file, options.input, data);
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
  std::int64_t count = 10;
  double interval = 0.0;
  double offset = 0.0;
  std::vector<double> levels;
  bool bands = false;
  std::string ties = "above";  // how heights on a level are traced
  std::string output;
  CLI::Option* intervalOption = nullptr;
};

// Most levels a contour map takes, however they are asked for.
constexpr std::int64_t kMostLevels = 10000;

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

// The levels the options ask for, refused before any work when they make no sense:
// ascending, each rounded to 15 significant digits, none at the Z minimum or maximum
// (a level there outlines nothing but the extreme points).
std::vector<double> Levels(const ContourOptions& options, double zMin, double zMax) {
  std::vector<double> raw;
  if (!options.levels.empty()) {
    if (static_cast<std::int64_t>(options.levels.size()) > kMostLevels) {
      throw Error(5, "orvane", "--levels takes at most " + std::to_string(kMostLevels) + " levels");
    }
    for (double v : options.levels) {
      if (!std::isfinite(v)) throw Error(5, "orvane", "--levels: the level " + Number(v) + " is not a finite number");
    }
    raw = options.levels;
  } else if (options.intervalOption->count() > 0) {
    const double d = options.interval, o = options.offset;
    if (!(std::isfinite(d) && d > 0.0)) throw Error(5, "orvane", "--interval must be a finite number above 0");
    if (!std::isfinite(o)) throw Error(5, "orvane", "--offset must be a finite number");
    // Every O + k D between the limits, as gdal_contour puts them.
    const double first = std::ceil((zMin - o) / d), last = std::floor((zMax - o) / d);
    if (!(last - first < static_cast<double>(kMostLevels))) {
      throw Error(5, "orvane", "--interval " + Number(d) + " gives more than " + std::to_string(kMostLevels) +
                                   " levels between the Z limits");
    }
    for (double k = first; k <= last; ++k) raw.push_back(o + k * d);
  } else {
    if (options.count < 1 || options.count > kMostLevels) {
      throw Error(5, "orvane", "--count must be between 1 and " + std::to_string(kMostLevels));
    }
    Contouring contouring;
    contouring.SetAutoSetIntervalCount(static_cast<std::int32_t>(options.count));
    contouring.AutoSetContours(zMin, zMax);
    for (std::int32_t i = 0; i < contouring.Contours().Count(); ++i) raw.push_back(contouring.Contours().Item(i)->Value());
  }
  std::vector<double> levels;
  for (double v : raw) {
    const double level = RoundedValue(v);
    if (level == zMin || level == zMax || level == RoundedValue(zMin) || level == RoundedValue(zMax)) continue;
    levels.push_back(level);
  }
  std::sort(levels.begin(), levels.end());
  levels.erase(std::unique(levels.begin(), levels.end()), levels.end());
  return levels;
}

void RunContour(const ContourOptions& options) {
  if (options.ties != "above" && options.ties != "exact") throw Error(5, "orvane", "--ties must be above or exact");
  OutputFile file(options.output);
  DataSet data;
  Load(options.file, options.input, data);
  const std::vector<double> levels = Levels(options, data.ZMin(), data.ZMax());
  const bool tiesAbove = options.ties == "above";
  const std::vector<std::vector<Polyline>> lines = data.ContourLines(levels, tiesAbove);

  GeoJsonWriter json(file.Stream());
  json.Raw() << "{\"type\":\"FeatureCollection\",\"features\":[";
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
      "info", "Load an XYZ file as scattered points and report its size, limits, triangles and data hull");
  info->add_option("FILE", options->file,
                   "XYZ text: one point per line, X Y Z separated by commas, semicolons, tabs or spaces")
      ->required();
  AddInputOptions(*info, options->input);
  info->add_flag("--json", options->json, "Print one JSON object instead of text");
  info->callback([options] { RunInfo(*options); });
}

void AddContourCommand(CLI::App& app) {
  auto options = std::make_shared<ContourOptions>();
  CLI::App* contour = app.add_subcommand(
      "contour", "Trace contour lines (and with --bands filled bands) of an XYZ file into GeoJSON");
  contour->add_option("FILE", options->file, "XYZ text file")->required();
  AddInputOptions(*contour, options->input);
  CLI::Option* count = contour->add_option("--count", options->count,
                                           "Number of equal intervals between the Z limits (1 to 10000, default 10)");
  CLI::Option* interval = contour->add_option(
      "--interval", options->interval, "Level spacing D above 0: levels at O + k D (see --offset), at most 10000");
  CLI::Option* offset = contour->add_option("--offset", options->offset, "With --interval: the offset O (default 0)");
  offset->needs(interval);
  options->intervalOption = interval;
  CLI::Option* levels = contour->add_option("--levels", options->levels, "Levels given one by one: a,b,c (at most 10000)")
                            ->delimiter(',');
  count->excludes(interval)->excludes(levels);
  interval->excludes(levels);
  contour->add_flag("--bands", options->bands, "Also write one MultiPolygon per band between levels");
  contour->add_option("--ties", options->ties,
                      "above (default: a height equal to a level counts as above it; whole contours) or exact "
                      "(exact signs: a level along mesh edges is traced twice)");
  contour->add_option("-o,--output", options->output, "GeoJSON file to write")->required();
  contour->callback([options] { RunContour(*options); });
}

void AddTriangulateCommand(CLI::App& app) {
  auto options = std::make_shared<TriangulateOptions>();
  CLI::App* triangulate = app.add_subcommand(
      "triangulate",
      "Write the Delaunay triangles of an XYZ file, one per line as three zero-based point indices "
      "(points after duplicates are merged)");
  triangulate->add_option("FILE", options->file, "XYZ text file")->required();
  AddInputOptions(*triangulate, options->input);
  triangulate->add_option("-o,--output", options->output, "CSV file to write")->required();
  triangulate->callback([options] { RunTriangulate(*options); });
}

}  // namespace orvane::cli
