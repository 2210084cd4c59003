#pragma once

// IInterpolator: what every resampler offers the data set, and the shared base that
// keeps the input points. Internal header.

#include <cstdint>
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

// The input points and the grid, shared by the resamplers.
class InterpolatorBase : public IInterpolator {
 public:
  explicit InterpolatorBase(const Resampling& settings) : settings_(settings) {}
  void GetInputData(std::int32_t& count, std::vector<double>& x, std::vector<double>& y,
                    std::vector<double>& z) const override;
  void GetOutputData(std::vector<double>& x, std::vector<double>& y, std::vector<double>& z) override;
  void SetInputData(std::int32_t count, const Array& x, const Array& y, const Array& z) override;

 protected:
  const Resampling& settings_;
  std::vector<double> x_, y_, z_;           // the input points
  std::vector<double> gridX_, gridY_, gridZ_;  // the last grid
  bool stale_ = true;
};

// Inverse-distance weighting: each grid value is the mean of every input Z weighted by
// 1 / (dx^2 + dy^2)^p; a grid point within 2.2204460492503102e-14 of an input point in
// both X and Y takes that point's Z (the first such in input order); no weight gives 0.
class InverseDistanceResampler : public InterpolatorBase {
 public:
  using InterpolatorBase::InterpolatorBase;
  void RefreshGrid() override;

  // The estimate at one point, exactly as the rule reads, point by point in input order:
  // the reference the grid computation must match bit for bit.
  static double EstimateAt(double x, double y, const std::vector<double>& xs,
                           const std::vector<double>& ys, const std::vector<double>& zs, double power);
  // s^p: s and s * s for the powers 1 and 2 (exact single operations), pow otherwise.
  static double Power(double s, double p);
  // The grid values (X index outer) for the given axes, computed in parallel.
  static std::vector<double> Grid(const std::vector<double>& gridX, const std::vector<double>& gridY,
                                  const std::vector<double>& xs, const std::vector<double>& ys,
                                  const std::vector<double>& zs, double power);
};

}  // namespace orvane
