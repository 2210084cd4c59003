// orvane info and orvane triangulate: load an XYZ file as a scattered data set.

#include <charconv>
#include <fstream>
#include <iostream>
#include <memory>
#include <string>

#include <nlohmann/json.hpp>

#include "commands.h"
#include "data/data_set_state.h"
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

void AddTriangulateCommand(CLI::App& app) {
  auto options = std::make_shared<TriangulateOptions>();
  CLI::App* triangulate = app.add_subcommand(
      "triangulate", "Write the Delaunay triangles of an XYZ file, one per line as three zero-based point indices");
  triangulate->add_option("FILE", options->file, "XYZ text file")->required();
  triangulate->add_option("-o,--output", options->output, "CSV file to write")->required();
  triangulate->callback([options] { RunTriangulate(*options); });
}

}  // namespace orvane::cli
