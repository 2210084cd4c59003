#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "orvane/core/event.h"

namespace orvane {

class PropertyBag;

/// Which resampler replaces a data set's points by a regular grid.
enum EResamplerType : std::int32_t {
  orvResamplerTypeNone = 0,             ///< no resampling: the points are drawn as they are
  orvResamplerTypeInverseDistance = 1,  ///< inverse-distance weighting
  orvResamplerTypeKriging = 2,          ///< ordinary kriging
  orvResamplerTypeNNGridR = 3,          ///< natural-neighbour interpolation
};

/// The parameter of the inverse-distance resampler.
class InverseDistance {
 public:
  /// "Returns or sets the power used to weight values." Applied to the squared distance,
  /// so the weight of a point at distance r is 1 / r^(2 * WeightingPower). Default 2.
  double WeightingPower() const noexcept { return weightingPower_; }
  /// Lets it; below -2.22044604925031e-16 (or NaN) raises error 5 (source
  /// "Orvada.InverseDistance"). Raises "Weighting".
  void SetWeightingPower(double value);
  /// Back to the default power 2.
  void Reset() noexcept { weightingPower_ = 2.0; }

  /// Writes "Weighting" under prefix.
  void WriteProperties(PropertyBag& bag, const std::string& prefix) const;
  /// Reads "Weighting" (default 2) through the let.
  void ReadProperties(const PropertyBag& bag, const std::string& prefix);

  /// Raised with "Weighting" after a change.
  Event<const std::string&> PropertyChanged;

 private:
  double weightingPower_ = 2.0;
};

/// The grid layout of a data set's resampling and the choice of resampler. Its limits
/// follow the data while AutoRange is True; the grid has IntervalCount + 1 points along
/// X and along Y, built from the minimums by repeated addition of the intervals.
class Resampling {
 public:
  /// Automatic range, 10 intervals, no resampler.
  Resampling();
  Resampling(const Resampling&) = delete;
  Resampling& operator=(const Resampling&) = delete;

  /// "Returns or sets whether the X and Y limits of the resampled grid will be set automatically."
  bool AutoRange() const noexcept { return autoRange_; }
  /// Lets it, applies the automatic range and the intervals; raises "AutoRange".
  void SetAutoRange(bool value);
  /// "Returns or sets the number of intervals in the resampled grid."
  std::int32_t IntervalCount() const noexcept { return intervalCount_; }
  /// Lets it (at least 1; otherwise error 5, source "Resampling"); raises "IntervalCount".
  void SetIntervalCount(std::int32_t value);
  /// "Returns or sets which type of resampling scheme, if any, will be applied to the input data."
  std::int32_t ResamplerType() const noexcept { return resamplerType_; }
  /// Lets it (not checked); raises "ResamperType", the name hosts and saved files use.
  void SetResamplerType(std::int32_t value);
  /// "Returns the interval between points along the X axis of the resampled grid."
  double XInterval() const noexcept { return xInterval_; }
  /// "Returns the interval between points along the Y axis of the resampled grid."
  double YInterval() const noexcept { return yInterval_; }
  /// "Returns or sets the maximum value along the X axis of the resampled grid."
  double XMax() const noexcept { return xMax_; }
  /// Lets it (finite); overwritten at once by the data while AutoRange. Raises "XMax".
  void SetXMax(double value);
  /// Minimum along X of the grid.
  double XMin() const noexcept { return xMin_; }
  /// Lets it (finite); as SetXMax. Raises "XMin".
  void SetXMin(double value);
  /// Maximum along Y of the grid.
  double YMax() const noexcept { return yMax_; }
  /// Lets it (finite); as SetXMax. Raises "YMax".
  void SetYMax(double value);
  /// Minimum along Y of the grid.
  double YMin() const noexcept { return yMin_; }
  /// Lets it (finite); as SetXMax. Raises "YMin".
  void SetYMin(double value);

  /// "Returns a reference to the InverseDistance resampler associated with this object."
  orvane::InverseDistance& InverseDistance() noexcept { return inverseDistance_; }
  /// The same, read-only.
  const orvane::InverseDistance& InverseDistance() const noexcept { return inverseDistance_; }

  /// True when a resampler is selected.
  bool ResamplerSelected() const noexcept { return resamplerType_ != orvResamplerTypeNone; }
  /// Takes the data set's X and Y limits and applies the automatic range; raises "Limits".
  void SetDataLimits(double xMin, double xMax, double yMin, double yMax);
  /// The defaults, with the data limits emptied.
  void Reset();
  /// The grid's X values (IntervalCount + 1 of them, from XMin by repeated addition).
  std::vector<double> GridX() const;
  /// The grid's Y values, likewise.
  std::vector<double> GridY() const;

  /// Writes "AutoRange", "IntervalCount", "ResamperType", "XMax", "XMin", "YMax", "YMin",
  /// then the resamplers' parameters under prefix + "InverseDistance.".
  void WriteProperties(PropertyBag& bag, const std::string& prefix) const;
  /// Reads them with the defaults; a bad bag changes nothing.
  void ReadProperties(const PropertyBag& bag, const std::string& prefix);

  /// Raised with the property's name; a parameter object's change comes prefixed
  /// ("InverseDistance.Weighting").
  Event<const std::string&> PropertyChanged;

 private:
  void ApplyAutoRange();
  void ComputeIntervals();
  template <class T>
  void LimitLet(T& field, T value, const char* name);

  bool autoRange_ = true;
  std::int32_t intervalCount_ = 10;
  std::int32_t resamplerType_ = orvResamplerTypeNone;
  double xMax_ = 0.0, xMin_ = 0.0, yMax_ = 0.0, yMin_ = 0.0;
  double xInterval_ = 0.0, yInterval_ = 0.0;
  // The data's limits; empty (minimums above maximums) until a data set hands them over.
  std::array<double, 4> dataLimits_;
  orvane::InverseDistance inverseDistance_;
  Connection inverseDistanceChanged_;
};

}  // namespace orvane
