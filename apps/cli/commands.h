#pragma once

// Sub-commands of the orvane command. Each Add function registers one sub-command whose
// callback does the work; failures surface as orvane::Error and end with status 2.

#include <CLI/CLI.hpp>

namespace orvane::cli {

// orvane info FILE [--json]: facts about an XYZ file loaded as scattered data.
void AddInfoCommand(CLI::App& app);
// orvane triangulate FILE -o OUT.csv: the triangles of an XYZ file.
void AddTriangulateCommand(CLI::App& app);
// orvane contour FILE [--count N | --interval D | --levels a,b,c] [--bands] -o OUT.geojson.
void AddContourCommand(CLI::App& app);
// orvane grid FILE --method idw|kriging|nn [options] -o OUT.csv|OUT.grd: a resampled grid.
void AddGridCommand(CLI::App& app);
// orvane render [FILE | --sample] -o OUT.png [options]: a plot of the data as PNG.
void AddRenderCommand(CLI::App& app);
// orvane variogram FILE [--json]: the experimental semi-variogram and the fitted models.
void AddVariogramCommand(CLI::App& app);
// orvane cv FILE --method idw|kriging|nn [-o OUT.csv] [--json]: leave-one-out cross-validation.
void AddCvCommand(CLI::App& app);

}  // namespace orvane::cli
