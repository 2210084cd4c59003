#include "input_options.h"

#include <iostream>

#include "orvane/core/error.h"

namespace orvane::cli {

void AddInputOptions(CLI::App& command, InputOptions& o) {
  command.add_option("--columns", o.columns, "1-based columns of X, Y and Z in wider files (default 1,2,3)")
      ->delimiter(',')
      ->expected(3);
  command.add_flag("--skip-invalid", o.skipInvalid,
                   "Skip rows with missing, non-numeric, NaN or infinite values (counted on stderr)");
}

XyzPoints ReadPoints(const std::string& file, const InputOptions& o) {
  XyzReadOptions options;
  if (!o.columns.empty()) {
    if (o.columns.size() != 3) throw Error(5, "orvane", "--columns takes three column numbers: X,Y,Z");
    for (std::size_t k = 0; k < 3; ++k) {
      if (o.columns[k] < 1) throw Error(5, "orvane", "--columns are numbered from 1");
      options.columns[k] = o.columns[k];
    }
  }
  options.skipInvalid = o.skipInvalid;
  XyzPoints points = ReadXyzFile(file, options);
  if (points.skipped > 0) {
    std::cerr << "orvane: " << file << ": skipped " << points.skipped
              << (points.skipped == 1 ? " row" : " rows") << " with missing or invalid values\n";
  }
  const std::size_t merged = MergeDuplicatePoints(points);
  if (merged > 0) {
    std::cerr << "orvane: " << file << ": merged " << merged << " duplicate"
              << (merged == 1 ? " point" : " points") << " (same X and Y) into the mean Z of each place\n";
  }
  return points;
}

}  // namespace orvane::cli
