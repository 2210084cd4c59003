#pragma once

// How the commands read XYZ files: which columns, whether bad rows are skipped, and the
// merging of points given more than once.

#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "orvane/data/xyz_file.h"

namespace orvane::cli {

struct InputOptions {
  std::vector<int> columns;  // --columns X,Y,Z (1-based); empty: 1,2,3
  bool skipInvalid = false;  // --skip-invalid
};

// Registers --columns and --skip-invalid.
void AddInputOptions(CLI::App& command, InputOptions& o);

// Reads the points of file as the options say, then merges exact duplicates into their
// mean Z. Skipped rows and merged points are reported on standard error.
XyzPoints ReadPoints(const std::string& file, const InputOptions& o);

}  // namespace orvane::cli
