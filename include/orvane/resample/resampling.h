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
  /// Lets it; raises error 5 (source "Orvada.InverseDistance") for NaN or an infinity
  /// ("Weighting power must be a finite number.") and below -2.22044604925031e-16
  /// ("Weighting power must be greater than or equal to 0"). Raises "Weighting".
  void SetWeightingPower(double value);
  /// The most points that weigh into a grid value, the nearest; 0 (the default): all.
  std::int32_t MaxPoints() const noexcept { return maxPoints_; }
  /// Lets it (0 or more; otherwise error 5, "MaxPoints must be 0 (all points) or more."); raises "MaxPoints".
  void SetMaxPoints(std::int32_t value);
  /// The search radius: only points this near weigh in, and a grid value with none is
  /// blank (NaN); 0 (the default): no limit.
  double Radius() const noexcept { return radius_; }
  /// Lets it (finite, 0 or more; otherwise error 5); raises "Radius".
  void SetRadius(double value);
  /// Back to the defaults: power 2, every point, no radius.
  void Reset() noexcept {
    weightingPower_ = 2.0;
    maxPoints_ = 0;
    radius_ = 0.0;
  }

  /// Writes "Weighting" under prefix, and "MaxPoints" and "Radius" when they are set.
  void WriteProperties(PropertyBag& bag, const std::string& prefix) const;
  /// Reads "Weighting" (default 2), "MaxPoints" and "Radius" (default 0) through the lets.
  void ReadProperties(const PropertyBag& bag, const std::string& prefix);

  /// Raised with "Weighting", "MaxPoints" or "Radius" after a change.
  Event<const std::string&> PropertyChanged;

 private:
  struct Properties;
  double weightingPower_ = 2.0;
  std::int32_t maxPoints_ = 0;
  double radius_ = 0.0;
};

/// The semi-variogram model of the kriging resampler.
enum EKrigingModelSemiVariogramType : std::int32_t {
  orvKrigingMSVLinear = 0,       ///< c0 + (C - c0) min(h / a, 1)
  orvKrigingMSVSpherical = 1,    ///< c0 + (C - c0) (1.5 t - 0.5 t^3), t = h / a, up to a
  orvKrigingMSVExponential = 2,  ///< c0 + (C - c0) (1 - exp(-3 h / a))
  orvKrigingMSVGaussian = 3,     ///< c0 + (C - c0) (1 - exp(-3 (h / a)^2))
};

/// The parameters of the kriging resampler. Lets store without validation and raise
/// the property's name.
class Kriging {
 public:
  /// "Returns or sets whether the Range property is automatically calculated." (True)
  bool AutoSetRange() const noexcept { return autoSetRange_; }
  /// Lets it; raises "AutoSetRange".
  void SetAutoSetRange(bool value);
  /// "Returns or sets whether the Kriging will be carried out on automatically determined
  /// sub-regions." (True)
  bool BlockMode() const noexcept { return blockMode_; }
  /// Lets it; raises "BlockMode".
  void SetBlockMode(bool value);
  /// "Returns or sets the model semi-variogram that will be used." (linear)
  std::int32_t ModelSemiVariogram() const noexcept { return model_; }
  /// Lets it; raises "ModelSemiVariogram".
  void SetModelSemiVariogram(std::int32_t value);
  /// "Returns or sets the nugget value for the model semi-variogram." (1)
  double Nugget() const noexcept { return nugget_; }
  /// Lets it; raises "Nugget".
  void SetNugget(double value);
  /// "Returns or sets the range value for the model semi-variogram." (1)
  double Range() const noexcept { return range_; }
  /// Lets it; raises "Range".
  void SetRange(double value);
  /// "Returns or sets the sill value for the model semi-variogram." (2, the total sill)
  double Sill() const noexcept { return sill_; }
  /// Lets it; raises "Sill".
  void SetSill(double value);
  /// The defaults above.
  void Reset();

  /// Writes "AutoSetRange", "BlockMode", "ModelSemiVariogram", "Nugget", "Range", "Sill".
  void WriteProperties(PropertyBag& bag, const std::string& prefix) const;
  /// Reads them, except that Range and Sill are looked up under the keys "1" and "2" (as
  /// stored property sets have always been read), so they come back as 1 and 2 unless the
  /// bag holds those keys.
  void ReadProperties(const PropertyBag& bag, const std::string& prefix);

  /// Raised with the property's name after a change.
  Event<const std::string&> PropertyChanged;

 private:
  struct Properties;

  bool autoSetRange_ = true;
  bool blockMode_ = true;
  std::int32_t model_ = orvKrigingMSVLinear;
  double nugget_ = 1.0;
  double sill_ = 2.0;
  double range_ = 1.0;
};

/// The parameters of the natural-neighbour resampler, one per parameter name of the
/// gridding method ("BI", "BJ", "Densi", "Extrap", "Floor", "ClipToFloor", "HoriLap",
/// "IChoro", "IGrad", "MagX", "MagY", "MagZ", "NonNeg", "Nuldat", "Optim", "Rads", "SDip",
/// "Updir", "VertLap"); two of them are public properties. The resampler reads "BI",
/// "IGrad", "Extrap" (1: extrapolate outside the data hull, 0: give "Nuldat" there),
/// "Nuldat" (0), "NonNeg" (1: negative values become 0), "ClipToFloor" with "Floor" (values
/// below Floor become Floor) and "MagX"/"MagY" (stretch of each axis, 1); the others are
/// kept for saved parameter sets and do not change the grid.
class NNGridR {
 public:
  /// Every parameter at its default.
  NNGridR();

  /// "Returns or sets the taughtness parameter applied to the implicit surface." ("BI", 1)
  double Taughtness() const noexcept;
  /// Lets it (finite, not below 0); raises "Taughtness".
  void SetTaughtness(double value);
  /// Taughtness under the name the command's --tautness uses.
  double Tautness() const noexcept { return Taughtness(); }
  /// SetTaughtness under that name (the same checks, the same "Taughtness" event).
  void SetTautness(double value) { SetTaughtness(value); }
  /// "Returns or sets whether blended gradients will be used." ("IGrad", False)
  bool UseGradients() const noexcept;
  /// Lets it; raises "UseGradients".
  void SetUseGradients(bool value);

  /// The names of the parameters, in the order above.
  static const std::vector<std::string>& ParameterNames();
  /// A parameter by name (Booleans are 0 or 1); an unknown name raises error 5.
  double Parameter(const std::string& name) const;
  /// Sets a parameter by name: finite; "BI" not below 0, "MagX"/"MagY" above 0. Raises the
  /// public property's name for "BI" and "IGrad", the parameter's name otherwise.
  void SetParameter(const std::string& name, double value);
  /// Every parameter back to its default.
  void Reset();

  /// Writes "BI" and "IGrad" under prefix (glued: "NNGridrBI").
  void WriteProperties(PropertyBag& bag, const std::string& prefix) const;
  /// Reads them (defaults 1 and False).
  void ReadProperties(const PropertyBag& bag, const std::string& prefix);

  /// Raised with "Taughtness", "UseGradients" or a parameter's name after a change.
  Event<const std::string&> PropertyChanged;

 private:
  std::size_t IndexOf(const std::string& name) const;
  std::vector<double> values_;
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

  /// Whether the resampled grid's nodes outside the convex hull of the data are blank
  /// (NaN, not drawn) rather than extrapolated. False by default.
  bool BlankOutsideHull() const noexcept { return blankOutsideHull_; }
  /// Lets it; raises "BlankOutsideHull".
  void SetBlankOutsideHull(bool value);

  /// "Returns a reference to the InverseDistance resampler associated with this object."
  orvane::InverseDistance& InverseDistance() noexcept { return inverseDistance_; }
  /// The same, read-only.
  const orvane::InverseDistance& InverseDistance() const noexcept { return inverseDistance_; }
  /// "Returns a reference to the Kriging resampler associated with this object."
  orvane::Kriging& Kriging() noexcept { return kriging_; }
  /// The same, read-only.
  const orvane::Kriging& Kriging() const noexcept { return kriging_; }
  /// "Returns a reference to the NNGridR resampler associated with this object."
  orvane::NNGridR& NNGridR() noexcept { return nnGridR_; }
  /// The same, read-only.
  const orvane::NNGridR& NNGridR() const noexcept { return nnGridR_; }

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
  /// "BlankOutsideHull" (only when true), then the resamplers' parameters under "Kriging.", "InverseDistance." and "NNGridr".
  void WriteProperties(PropertyBag& bag, const std::string& prefix) const;
  /// Reads them with the defaults; a bad bag changes nothing.
  void ReadProperties(const PropertyBag& bag, const std::string& prefix);

  /// Raised with the property's name; a parameter object's change comes prefixed
  /// ("InverseDistance.Weighting", "Kriging.Sill", "NNGridR.Taughtness").
  Event<const std::string&> PropertyChanged;

 private:
  struct Properties;
  void ApplyAutoRange();
  void ComputeIntervals();
  // ApplyAutoRange, then ComputeIntervals: after a limit or AutoRange changes.
  void UpdateGrid();

  bool autoRange_ = true;
  std::int32_t intervalCount_ = 10;
  std::int32_t resamplerType_ = orvResamplerTypeNone;
  bool blankOutsideHull_ = false;
  double xMax_ = 0.0, xMin_ = 0.0, yMax_ = 0.0, yMin_ = 0.0;
  double xInterval_ = 0.0, yInterval_ = 0.0;
  // The data's limits; empty (minimums above maximums) until a data set hands them over.
  std::array<double, 4> dataLimits_;
  orvane::InverseDistance inverseDistance_;
  orvane::Kriging kriging_;
  orvane::NNGridR nnGridR_;
  std::vector<Connection> connections_;
};

}  // namespace orvane
