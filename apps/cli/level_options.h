#pragma once

// The contour levels a command is asked for: a count of equal intervals, a spacing and
// offset, levels one by one, or levels spaced evenly in log10 of Z.

#include <CLI/CLI.hpp>

#include <cstdint>
#include <string>
#include <vector>

namespace orvane::cli {

// Most levels a contour map takes, however they are asked for.
inline constexpr std::int64_t kMostLevels = 10000;

struct LevelOptions {
  std::int64_t count = 10;
  double interval = 0.0;
  double offset = 0.0;
  std::vector<double> levels;
  std::int64_t logCount = 0;  // --levels-log N: 0 when not asked for
  CLI::Option* countOption = nullptr;
  CLI::Option* intervalOption = nullptr;
  CLI::Option* levelsOption = nullptr;
  CLI::Option* logOption = nullptr;

  // Whether the levels are given outright (spacing, list or log), not by a count.
  bool Explicit() const;
};

// Adds the level options to command: the count under countName ("--count" or
// "--contours"), --interval with --offset, --levels, and --levels-log when withLog.
void AddLevelOptions(CLI::App& command, LevelOptions& options, const std::string& countName, bool withLog);

// The levels the options ask for between the data's Z limits, refused before any work
// when they make no sense: ascending, each rounded to 15 significant digits, none at
// the Z minimum or maximum (a level there outlines nothing but the extreme points).
std::vector<double> Levels(const LevelOptions& options, double zMin, double zMax);

}  // namespace orvane::cli
