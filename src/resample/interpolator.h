#pragma once

// IInterpolator: what every resampler offers the data set, and the shared base that
// keeps the input points. Internal header.

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

#include "orvane/core/array.h"

namespace orvane {

class Resampling;

class IInterpolator {
 public:
  virtual ~IInterpolator() = default;
  // Copies of the stored input points.
  virtual void GetInputData(std::int32_t& count, std::vector<double>& x, std::vector<double>& y,
                            std::vector<double>& z) const = 0;
  // The grid (X values, Y values, Z with the X index first), refreshed first when the
  // input changed since the last run.
  virtual void GetOutputData(std::vector<double>& x, std::vector<double>& y,
                             std::vector<double>& z) = 0;
  // Computes the grid from the stored points and the Resampling settings.
  virtual void RefreshGrid() = 0;
  // Stores copies of elements 0..count-1 and marks the grid out of date; a count below 1
  // raises error 5 (source "IInterpolator").
  virtual void SetInputData(std::int32_t count, const Array& x, const Array& y, const Array& z) = 0;
};

// Told how far a run has come (grid values done out of the total); returning false
// stops the run, which then raises error 18 (source "IInterpolator").
using ProgressCallback = std::function<bool(std::int64_t done, std::int64_t total)>;

// The progress of one run, shared by its worker threads. The callback is called by one
// thread at a time.
class RunProgress {
 public:
  RunProgress(const ProgressCallback& callback, std::int64_t total)
      : callback_(callback), total_(total) {}
  // Adds work done and reports it; false once the run is to stop.
  bool Advance(std::int64_t done);
  // Reports done out of the total (for work counted elsewhere); false once the run is to stop.
  bool Report(std::int64_t done);
  bool Cancelled() const noexcept { return cancelled_.load(); }
  // Raises error 18 when the run was stopped.
  void ThrowIfCancelled() const;

 private:
  const ProgressCallback& callback_;
  std::int64_t total_;
  std::atomic<std::int64_t> done_{0};
  std::atomic<bool> cancelled_{false};
  std::mutex mutex_;
};

// Runs body(i) for i = 0 .. count - 1 on all cores, each index once, advancing progress
// by perItem after each; stops early once the run is cancelled. An exception from body
// is raised again on the calling thread.
void ParallelFor(std::size_t count, std::int64_t perItem, RunProgress& progress,
                 const std::function<void(std::size_t)>& body);

// The input points and the grid, shared by the resamplers.
class InterpolatorBase : public IInterpolator {
 public:
  explicit InterpolatorBase(Resampling& settings) : settings_(settings) {}
  void GetInputData(std::int32_t& count, std::vector<double>& x, std::vector<double>& y,
                    std::vector<double>& z) const override;
  void GetOutputData(std::vector<double>& x, std::vector<double>& y, std::vector<double>& z) override;
  void SetInputData(std::int32_t count, const Array& x, const Array& y, const Array& z) override;
  // Where the runs report their progress (none by default).
  void SetProgressCallback(ProgressCallback callback) { progress_ = std::move(callback); }
  // Asks the next run for the estimation variance of each grid value too (kriging only).
  void SetWantVariance(bool want) { wantVariance_ = want; }
  // Grids onto these nodes from now on instead of the settings' grid.
  void SetNodes(std::vector<double> x, std::vector<double> y) {
    nodesX_ = std::move(x);
    nodesY_ = std::move(y);
    stale_ = true;
  }
  // The variances of the last run (X index outer), when asked for and given; else empty.
  const std::vector<double>& Variance() const noexcept { return gridVariance_; }
  // Leave-one-out cross-validation with the current settings: each input point's estimate
  // from the other points (NaN where the method gives none) and, for kriging, its
  // estimation variance (otherwise cleared). Progress counts points.
  virtual void LeaveOneOut(std::vector<double>& estimates, std::vector<double>& variances) = 0;
  // Most grid values a run makes: 10,001 x 10,001.
  static constexpr std::int64_t kMaxGridValues = 10001LL * 10001LL;

 protected:
  // The grid's X and Y values; a grid of more than kMaxGridValues values raises error 7,
  // limits too far apart for finite intervals error 5 (source "IInterpolator").
  void GridAxes(std::vector<double>& x, std::vector<double>& y) const;
  // Raises error 5 from source, "The points have no extent along X." (or Y), when every
  // input point has the same X (or the same Y): a single point, or points on a line
  // parallel to an axis. With gridToo only when the grid limits have no extent along
  // that axis either (as when they follow the points), so that a method that can reach
  // off the line still grids such points over limits set by hand.
  void CheckExtent(const char* source, bool gridToo) const;
  Resampling& settings_;
  ProgressCallback progress_;
  std::vector<double> x_, y_, z_;           // the input points
  std::vector<double> gridX_, gridY_, gridZ_;  // the last grid
  std::vector<double> gridVariance_;           // its variances, when asked for
  std::vector<double> nodesX_, nodesY_;        // the nodes set, when set
  bool wantVariance_ = false;
  bool stale_ = true;
};

// Inverse-distance weighting: each grid value is the mean of every input Z weighted by
// 1 / (dx^2 + dy^2)^p; a grid point within 2.2204460492503102e-14 of an input point in
// both X and Y takes that point's Z (the first such in input order); no weight gives 0.
class InverseDistanceResampler : public InterpolatorBase {
 public:
  using InterpolatorBase::InterpolatorBase;
  void RefreshGrid() override;
  void LeaveOneOut(std::vector<double>& estimates, std::vector<double>& variances) override;

  // The estimate at one point, exactly as the rule reads, point by point in input order
  // (the point numbered skip left out): the reference the grid computation must match
  // bit for bit.
  static double EstimateAt(double x, double y, const std::vector<double>& xs,
                           const std::vector<double>& ys, const std::vector<double>& zs, double power,
                           std::size_t skip = static_cast<std::size_t>(-1));
  // s^p: s and s * s for the powers 1 and 2 (exact single operations), pow otherwise.
  static double Power(double s, double p);
  // The grid values (X index outer) for the given axes, computed in parallel.
  static std::vector<double> Grid(const std::vector<double>& gridX, const std::vector<double>& gridY,
                                  const std::vector<double>& xs, const std::vector<double>& ys,
                                  const std::vector<double>& zs, double power,
                                  const ProgressCallback& progress = {});
  // The same from a search neighbourhood: at each node the maxPoints nearest points (all
  // when 0) within radius (no limit when 0), found in a k-d tree, weighed by the rule
  // above from the nearest out. A node with no point in range is NaN (blank).
  static std::vector<double> LocalGrid(const std::vector<double>& gridX, const std::vector<double>& gridY,
                                       const std::vector<double>& xs, const std::vector<double>& ys,
                                       const std::vector<double>& zs, double power, std::int32_t maxPoints,
                                       double radius, const ProgressCallback& progress = {});
};

// Ordinary kriging through the orvane_kriging engine: one engine handle per run, always
// released. Points without extent along X or Y over a grid without it either are refused
// first (CheckExtent): the grid and the automatic range would collapse. With
// Kriging.AutoSetRange the range is then set to the diagonal of the grid limits (through
// the let, so "Range" is raised). Engine failures raise error 5 (source "Orvada.Kriging")
// with the engine's description.
class KrigingResampler : public InterpolatorBase {
 public:
  using InterpolatorBase::InterpolatorBase;
  void RefreshGrid() override;
  void LeaveOneOut(std::vector<double>& estimates, std::vector<double>& variances) override;
};

// Natural-neighbour interpolation (see natural_neighbour.h for the method); points
// without extent along X or Y, which have no triangles, are refused first (CheckExtent).
class NaturalNeighbourResampler : public InterpolatorBase {
 public:
  using InterpolatorBase::InterpolatorBase;
  void RefreshGrid() override;
  // Rebuilds the mesh without each point in turn (n meshes, spread over the cores).
  void LeaveOneOut(std::vector<double>& estimates, std::vector<double>& variances) override;
};

// The resampler that settings.ResamplerType() selects, or none for orvResamplerTypeNone
// (an unknown type raises error 5, source "Resampling").
std::unique_ptr<InterpolatorBase> CreateInterpolator(Resampling& settings);

}  // namespace orvane
