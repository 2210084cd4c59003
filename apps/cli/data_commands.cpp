// orvane info, triangulate and contour: load an XYZ file as a scattered data set.

#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <memory>
#include <string>

#include <nlohmann/json.hpp>

#include "commands.h"
#include "contour/band_outline.h"
#include "data/data_set_state.h"
#include "orvane/contour/contouring.h"
#include "orvane/core/error.h"
#include "orvane/data/data_sets.h"
#include "orvane/data/xyz_file.h"
#include "output_file.h"

namespace orvane::cli {

namespace {

// Shortest text that reads back as the same double.
std::string Number(double v) {
  char buffer[32];
  const auto result = std::to_chars(buffer, buffer + sizeof buffer, v);
  return std::string(buffer, result.ptr);
}

// The value rounded to 15 significant digits, in shortest round-trip form: what the file
// said, without the last-bit noise of the trip through normalised units.
std::string Rounded(double v) {
  char buffer[32];
  std::snprintf(buffer, sizeof buffer, "%.15g", v);
  return Number(std::strtod(buffer, nullptr));
}

double RoundedValue(double v) { return std::strtod(Rounded(v).c_str(), nullptr); }

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
    for (std::int32_t k = 0; k < hullCount; ++k) {
      hull.push_back({RoundedValue(hullX.At(k)), RoundedValue(hullY.At(k))});
    }
    const nlohmann::json facts = {{"points", state.pointCount},      {"triangles", triangles},
                                  {"xmin", RoundedValue(data.XMin())}, {"xmax", RoundedValue(data.XMax())},
                                  {"ymin", RoundedValue(data.YMin())}, {"ymax", RoundedValue(data.YMax())},
                                  {"zmin", RoundedValue(data.ZMin())}, {"zmax", RoundedValue(data.ZMax())},
                                  {"hull", hull}};
    std::cout << facts.dump() << "\n";
    return;
  }
  std::cout << "file       " << options.file << "\n"
            << "points     " << state.pointCount << "\n"
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
  std::string output;
};

void RunTriangulate(const TriangulateOptions& options) {
  OutputFile file(options.output);
  DataSet data;
  Load(options.file, data);
  const auto& state = detail::DataSetAccess::State(data);
  std::ostream& out = file.Stream();
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
  file.Commit();
}

struct ContourOptions {
  std::string file;
  std::int64_t count = 10;
  double interval = 0.0;
  std::vector<double> levels;
  bool bands = false;
  std::string output;
  CLI::Option* countOption = nullptr;
  CLI::Option* intervalOption = nullptr;
};

// Most levels a contour map takes, however they are asked for.
constexpr std::int64_t kMostLevels = 10000;

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

// The levels the options ask for, refused before any work when they make no sense.
void SetLevels(const ContourOptions& options, const DataSet& data, Contouring& contouring) {
  if (!options.levels.empty()) {
    if (static_cast<std::int64_t>(options.levels.size()) > kMostLevels) {
      throw Error(5, "orvane", "--levels takes at most " + std::to_string(kMostLevels) + " levels");
    }
    for (double v : options.levels) {
      if (!std::isfinite(v)) throw Error(5, "orvane", "--levels: the level " + Number(v) + " is not a finite number");
    }
    contouring.SetAutoSetContoursType(orvAutoSetOff);
    for (double v : options.levels) contouring.Contours().Add(v);
  } else if (options.intervalOption->count() > 0) {
    if (!(std::isfinite(options.interval) && options.interval > 0.0)) {
      throw Error(5, "orvane", "--interval must be a finite number above 0");
    }
    if ((data.ZMax() - data.ZMin()) / options.interval > static_cast<double>(kMostLevels)) {
      throw Error(5, "orvane", "--interval " + Number(options.interval) + " gives more than " +
                                   std::to_string(kMostLevels) + " levels between the Z limits");
    }
    contouring.SetAutoSetContoursType(orvAutoSetByInterval);
    contouring.SetAutoSetInterval(options.interval);
  } else {
    if (options.count < 1 || options.count > kMostLevels) {
      throw Error(5, "orvane", "--count must be between 1 and " + std::to_string(kMostLevels));
    }
    contouring.SetAutoSetIntervalCount(static_cast<std::int32_t>(options.count));
  }
  contouring.AutoSetContours(data.ZMin(), data.ZMax());
}

void RunContour(const ContourOptions& options) {
  OutputFile file(options.output);
  DataSet data;
  Load(options.file, data);
  Contouring contouring;
  SetLevels(options, data, contouring);
  std::vector<double> levels;
  for (std::int32_t i = 0; i < contouring.Contours().Count(); ++i) {
    levels.push_back(contouring.Contours().Item(i)->Value());
  }
  auto& state = detail::DataSetAccess::State(data);
  state.contoursStale = true;
  state.traceBands = true;
  state.PrepareForDrawing(levels);

  GeoJsonWriter json(file.Stream());
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
    // Band by band: each outline is written and dropped, with the band's triangles,
    // before the next is made.
    for (std::size_t k = 0; k < state.bandTriangles.size(); ++k) {
      const BandOutline outline = OutlineBand(state.bandTriangles[k]);
      BandTriangles().swap(state.bandTriangles[k]);
      beginFeature();
      json.Raw() << "{\"type\":\"Feature\",\"properties\":{\"lower\":"
                 << JsonNumberOrNull(k > 0, k > 0 ? levels[k - 1] : 0.0) << ",\"upper\":"
                 << JsonNumberOrNull(k < levels.size(), k < levels.size() ? levels[k] : 0.0)
                 << "},\"geometry\":{\"type\":\"MultiPolygon\",\"coordinates\":[";
      for (std::size_t p = 0; p < outline.PolygonCount(); ++p) {
        json.Raw() << (p == 0 ? "[" : ",[");
        for (std::size_t r = outline.polygonStarts[p]; r < outline.polygonStarts[p + 1]; ++r) {
          // A closed ring: its vertices and the first again.
          const std::size_t first = outline.ringStarts[r], last = outline.ringStarts[r + 1];
          json.Raw() << (r == outline.polygonStarts[p] ? "[" : ",[");
          for (std::size_t i = first; i < last; ++i) {
            point(outline.x[i], outline.y[i]);
            json.Raw() << ',';
          }
          point(outline.x[first], outline.y[first]);
          json.Raw() << ']';
        }
        json.Raw() << ']';
      }
      json.Raw() << "]}}";
    }
    state.contoursStale = true;  // the band triangles are gone
  }
  json.Raw() << "\n]}\n";
  file.Commit();
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
  CLI::Option* count = contour->add_option("--count", options->count,
                                           "Number of equal intervals between the Z limits (1 to 10000, default 10)");
  CLI::Option* interval = contour->add_option("--interval", options->interval,
                                              "Level spacing above 0, from the Z minimum up (at most 10000 levels)");
  options->countOption = count;
  options->intervalOption = interval;
  CLI::Option* levels = contour->add_option("--levels", options->levels, "Levels given one by one: a,b,c (at most 10000)")
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
