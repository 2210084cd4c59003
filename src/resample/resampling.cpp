// Resampling and InverseDistance: the grid layout of a data set's resampling and the
// parameter of the inverse-distance resampler.

#include "orvane/resample/resampling.h"

#include <cmath>
#include <limits>

#include "orvane/core/error.h"
#include "orvane/core/property_bag.h"

namespace orvane {

namespace {

constexpr double kLargest = 1.79769313486231e+308;
constexpr std::array<double, 4> kNoDataLimits{kLargest, -kLargest, kLargest, -kLargest};

void CheckFinite(double value, const char* name) {
  if (!std::isfinite(value)) {
    throw Error(5, "Resampling", std::string(name) + " must be a finite number.");
  }
}

void CheckIntervalCount(std::int32_t value) {
  if (value < 1) throw Error(5, "Resampling");
}

void CheckWeightingPower(double value) {
  if (!(value >= -2.22044604925031e-16)) {
    throw Error(5, "Orvada.InverseDistance", "Weighting power must be greater than or equal to 0");
  }
}

}  // namespace

// ---------------------------------------------------------------------------------------
// InverseDistance

void InverseDistance::SetWeightingPower(double value) {
  if (value == weightingPower_) return;
  CheckWeightingPower(value);
  weightingPower_ = value;
  PropertyChanged.Raise("Weighting");
}

void InverseDistance::WriteProperties(PropertyBag& bag, const std::string& prefix) const {
  bag.WriteProperty(prefix + "Weighting", weightingPower_);
}

void InverseDistance::ReadProperties(const PropertyBag& bag, const std::string& prefix) {
  SetWeightingPower(bag.ReadProperty(prefix + "Weighting", 2.0));
}

// ---------------------------------------------------------------------------------------
// Resampling

Resampling::Resampling()
    : dataLimits_(kNoDataLimits),
      inverseDistanceChanged_(inverseDistance_.PropertyChanged.Connect(
          [this](const std::string& name) { PropertyChanged.Raise("InverseDistance." + name); })) {}

void Resampling::ApplyAutoRange() {
  if (!autoRange_) return;
  xMin_ = dataLimits_[0];
  xMax_ = dataLimits_[1];
  yMin_ = dataLimits_[2];
  yMax_ = dataLimits_[3];
}

void Resampling::ComputeIntervals() {
  if (intervalCount_ < 1) return;
  xInterval_ = (xMax_ - xMin_) / intervalCount_;
  yInterval_ = (yMax_ - yMin_) / intervalCount_;
}

void Resampling::SetAutoRange(bool value) {
  if (value == autoRange_) return;
  autoRange_ = value;
  ApplyAutoRange();
  ComputeIntervals();
  PropertyChanged.Raise("AutoRange");
}

void Resampling::SetIntervalCount(std::int32_t value) {
  if (value == intervalCount_) return;
  CheckIntervalCount(value);
  intervalCount_ = value;
  ComputeIntervals();
  PropertyChanged.Raise("IntervalCount");
}

void Resampling::SetResamplerType(std::int32_t value) {
  if (value == resamplerType_) return;
  resamplerType_ = value;
  PropertyChanged.Raise("ResamperType");
}

template <class T>
void Resampling::LimitLet(T& field, T value, const char* name) {
  if (value == field) return;
  CheckFinite(value, name);
  field = value;
  ApplyAutoRange();  // while AutoRange the data's limits win at once
  ComputeIntervals();
  PropertyChanged.Raise(name);
}

void Resampling::SetXMax(double value) { LimitLet(xMax_, value, "XMax"); }
void Resampling::SetXMin(double value) { LimitLet(xMin_, value, "XMin"); }
void Resampling::SetYMax(double value) { LimitLet(yMax_, value, "YMax"); }
void Resampling::SetYMin(double value) { LimitLet(yMin_, value, "YMin"); }

void Resampling::SetDataLimits(double xMin, double xMax, double yMin, double yMax) {
  dataLimits_ = {xMin, xMax, yMin, yMax};
  ApplyAutoRange();
  ComputeIntervals();
  PropertyChanged.Raise("Limits");
}

void Resampling::Reset() {
  autoRange_ = true;
  intervalCount_ = 10;
  resamplerType_ = orvResamplerTypeNone;
  xMax_ = xMin_ = yMax_ = yMin_ = 0.0;
  xInterval_ = yInterval_ = 0.0;
  dataLimits_ = kNoDataLimits;
  inverseDistance_.Reset();
}

namespace {

// count + 1 values from start by repeated addition of step.
std::vector<double> Axis(double start, double step, std::int32_t count) {
  std::vector<double> values(static_cast<std::size_t>(count) + 1);
  double v = start;
  for (double& value : values) {
    value = v;
    v += step;
  }
  return values;
}

}  // namespace

std::vector<double> Resampling::GridX() const { return Axis(xMin_, xInterval_, intervalCount_); }
std::vector<double> Resampling::GridY() const { return Axis(yMin_, yInterval_, intervalCount_); }

void Resampling::WriteProperties(PropertyBag& bag, const std::string& prefix) const {
  bag.WriteProperty(prefix + "AutoRange", autoRange_);
  bag.WriteProperty(prefix + "IntervalCount", intervalCount_);
  bag.WriteProperty(prefix + "ResamperType", resamplerType_);
  bag.WriteProperty(prefix + "XMax", xMax_);
  bag.WriteProperty(prefix + "XMin", xMin_);
  bag.WriteProperty(prefix + "YMax", yMax_);
  bag.WriteProperty(prefix + "YMin", yMin_);
  inverseDistance_.WriteProperties(bag, prefix + "InverseDistance.");
}

void Resampling::ReadProperties(const PropertyBag& bag, const std::string& prefix) {
  const bool autoRange = bag.ReadProperty(prefix + "AutoRange", true);
  const std::int32_t count = bag.ReadProperty(prefix + "IntervalCount", std::int32_t{10});
  const std::int32_t type = bag.ReadProperty(prefix + "ResamperType", std::int32_t{0});
  const double limits[4] = {bag.ReadProperty(prefix + "XMax", 0.0), bag.ReadProperty(prefix + "XMin", 0.0),
                            bag.ReadProperty(prefix + "YMax", 0.0), bag.ReadProperty(prefix + "YMin", 0.0)};
  const double power = bag.ReadProperty(prefix + "InverseDistance.Weighting", 2.0);
  CheckIntervalCount(count);
  for (double v : limits) CheckFinite(v, "A stored grid limit");
  CheckWeightingPower(power);
  // Limits first, with the automatic range held off, so that stored limits survive.
  const bool wasAutoRange = autoRange_;
  autoRange_ = false;
  SetXMax(limits[0]);
  SetXMin(limits[1]);
  SetYMax(limits[2]);
  SetYMin(limits[3]);
  SetIntervalCount(count);
  SetResamplerType(type);
  autoRange_ = autoRange;
  ApplyAutoRange();
  ComputeIntervals();
  if (autoRange != wasAutoRange) PropertyChanged.Raise("AutoRange");
  inverseDistance_.SetWeightingPower(power);
}

}  // namespace orvane
