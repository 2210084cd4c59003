#include "level_options.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>

#include "numbers.h"
#include "orvane/contour/contouring.h"
#include "orvane/core/error.h"

namespace orvane::cli {

namespace {

[[noreturn]] void Refuse(const std::string& text) { throw Error(5, "orvane", text); }

}  // namespace

bool LevelOptions::Explicit() const {
  return intervalOption->count() > 0 || !levels.empty() || (logOption != nullptr && logOption->count() > 0);
}

void AddLevelOptions(CLI::App& command, LevelOptions& options, const std::string& countName, bool withLog) {
  options.countOption = command.add_option(countName, options.count,
                                           "Number of equal intervals between the Z limits (1 to 10000, default 10)");
  options.intervalOption = command.add_option(
      "--interval", options.interval, "Level spacing D above 0: levels at O + k D (see --offset), at most 10000");
  CLI::Option* offset = command.add_option("--offset", options.offset, "With --interval: the offset O (default 0)");
  offset->needs(options.intervalOption);
  options.levelsOption =
      command.add_option("--levels", options.levels, "Levels given one by one: a,b,c (at most 10000)")->delimiter(',');
  options.countOption->excludes(options.intervalOption)->excludes(options.levelsOption);
  options.intervalOption->excludes(options.levelsOption);
  if (withLog) {
    options.logOption = command.add_option(
        "--levels-log", options.logCount,
        "N levels spaced evenly in log10 of Z between its limits (Z above 0), coloured by their order");
    options.logOption->excludes(options.countOption)->excludes(options.intervalOption)->excludes(options.levelsOption);
  }
}

std::vector<double> Levels(const LevelOptions& options, double zMin, double zMax) {
  std::vector<double> raw;
  if (!options.levels.empty()) {
    if (static_cast<std::int64_t>(options.levels.size()) > kMostLevels) {
      Refuse("--levels takes at most " + std::to_string(kMostLevels) + " levels");
    }
    for (double v : options.levels) {
      if (!std::isfinite(v)) Refuse("--levels: the level " + Number(v) + " is not a finite number");
    }
    raw = options.levels;
  } else if (options.intervalOption->count() > 0) {
    const double d = options.interval, o = options.offset;
    if (!(std::isfinite(d) && d > 0.0)) Refuse("--interval must be a finite number above 0");
    if (!std::isfinite(o)) Refuse("--offset must be a finite number");
    // Every O + k D between the limits, as gdal_contour puts them.
    const double first = std::ceil((zMin - o) / d), last = std::floor((zMax - o) / d);
    if (!(last - first < static_cast<double>(kMostLevels))) {
      Refuse("--interval " + Number(d) + " gives more than " + std::to_string(kMostLevels) +
             " levels between the Z limits");
    }
    for (double k = first; k <= last; ++k) raw.push_back(o + k * d);
  } else if (options.logOption != nullptr && options.logOption->count() > 0) {
    const std::int64_t n = options.logCount;
    if (n < 1 || n > kMostLevels) Refuse("--levels-log must be between 1 and " + std::to_string(kMostLevels));
    if (!(zMin > 0.0)) Refuse("--levels-log needs Z above 0: the data's minimum is " + Number(zMin));
    // N levels inside the limits, splitting log10 Z into N + 1 equal steps, each with the
    // fewest significant digits (two at least) that keep them apart and inside.
    const double a = std::log10(zMin), b = std::log10(zMax);
    std::vector<double> exact;
    for (std::int64_t k = 1; k <= n; ++k) exact.push_back(std::pow(10.0, a + (b - a) * static_cast<double>(k) / static_cast<double>(n + 1)));
    for (int digits = 2; digits <= 15 && raw.empty(); ++digits) {
      std::vector<double> rounded;
      for (const double v : exact) {
        char text[32];
        std::snprintf(text, sizeof text, "%.*g", digits, v);
        const double r = std::strtod(text, nullptr);
        if (!(r > zMin && r < zMax) || (!rounded.empty() && !(r > rounded.back()))) break;
        rounded.push_back(r);
      }
      if (rounded.size() == exact.size() || digits == 15) raw = rounded.size() == exact.size() ? rounded : exact;
    }
  } else {
    if (options.count < 1 || options.count > kMostLevels) {
      Refuse(options.countOption->get_name() + " must be between 1 and " + std::to_string(kMostLevels));
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

}  // namespace orvane::cli
