#pragma once

// The resampling options shared by the commands that grid scattered data (grid, render),
// and the progress bar they show while a run goes on.

#include <unistd.h>

#include <chrono>
#include <cstdint>
#include <iostream>
#include <map>
#include <string>

#include <CLI/CLI.hpp>

#include "interrupt.h"
#include "orvane/data/xyz_file.h"
#include "orvane/resample/resampling.h"

namespace orvane::cli {

// Most intervals a grid takes each way (a grid of 10,001 by 10,001 values).
inline constexpr std::int64_t kMostIntervals = 10000;

struct ResampleOptions {
  std::string flag;    // the option that names the method: "--method" or "--resample"
  std::string method;  // idw, kriging or nn; empty when none was asked for
  std::int64_t intervals = 10;
  double xMin = 0, xMax = 0, yMin = 0, yMax = 0;
  double power = 2.0;
  std::int64_t maxPoints = 0;  // idw: the nearest points weighed, 0 for all
  double radius = 0.0;         // idw: the search radius, 0 for none
  std::string model = "linear";
  double nugget = 1.0, sill = 2.0, range = 1.0;
  bool noBlock = false;
  bool gradients = false;
  double tautness = 1.0;
  // Which options were given (those not registered never are).
  std::map<std::string, CLI::Option*> given;
  bool Given(const std::string& name) const {
    const auto found = given.find(name);
    return found != given.end() && found->second->count() > 0;
  }
};

// Registers the method option (under flag, required or not), the method's settings and,
// with grid, the grid's intervals and limits.
void AddResampleOptions(CLI::App& command, ResampleOptions& o, const std::string& flag, bool required,
                        bool grid = true);

// The settings the options describe for the points of file, on top of the data's limits;
// refuses options that belong to another method, bad limits and data without extent.
void ConfigureResampling(const ResampleOptions& o, const std::string& file, const XyzPoints& points,
                         Resampling& settings);

// A progress bar on standard error, redrawn at most ten times a second, only when
// standard error is a terminal.
class ProgressBar {
 public:
  ProgressBar() : show_(::isatty(STDERR_FILENO) == 1) {}
  ~ProgressBar() {
    if (drawn_) std::cerr << "\r" << std::string(60, ' ') << "\r" << std::flush;
  }
  ProgressBar(const ProgressBar&) = delete;
  ProgressBar& operator=(const ProgressBar&) = delete;

  // Shows done of total; false once Ctrl-C asked to stop.
  bool Update(std::int64_t done, std::int64_t total) {
    if (Interrupted()) return false;
    if (!show_ || total <= 0) return true;
    const auto now = std::chrono::steady_clock::now();
    if (drawn_ && now - last_ < std::chrono::milliseconds(100) && done < total) return true;
    last_ = now;
    drawn_ = true;
    const auto width = 40;
    const auto filled = static_cast<int>(done * width / total);
    std::cerr << "\rresampling [" << std::string(static_cast<std::size_t>(filled), '#')
              << std::string(static_cast<std::size_t>(width - filled), ' ') << "] "
              << done * 100 / total << "%" << std::flush;
    return true;
  }

 private:
  bool show_;
  bool drawn_ = false;
  std::chrono::steady_clock::time_point last_{};
};

}  // namespace orvane::cli
