// Resampling and InverseDistance: the grid layout of a data set's resampling and the
// parameter of the inverse-distance resampler.

#include "orvane/resample/resampling.h"

#include <cmath>
#include <limits>
#include <tuple>

#include "core/property_table.h"
#include "orvane/core/error.h"
#include "orvane/core/property_bag.h"

namespace orvane {

namespace {

constexpr double kLargest = 1.79769313486231e+308;
constexpr std::array<double, 4> kNoDataLimits{kLargest, -kLargest, kLargest, -kLargest};

void CheckFinite(const double& value, const char* name) {
  if (!std::isfinite(value)) {
    throw Error(5, "Resampling", std::string(name) + " must be a finite number.");
  }
}

void CheckIntervalCount(const std::int32_t& value, const char* = nullptr) {
  if (value < 1) throw Error(5, "Resampling");
}

void CheckWeightingPower(const double& value, const char* = nullptr) {
  if (!std::isfinite(value)) {
    throw Error(5, "Orvada.InverseDistance", "Weighting power must be a finite number.");
  }
  if (!(value >= -2.22044604925031e-16)) {
    throw Error(5, "Orvada.InverseDistance", "Weighting power must be greater than or equal to 0");
  }
}

struct NNParameter {
  const char* name;
  double defaultValue;
};

// The gridding method's parameters and their defaults.
constexpr NNParameter kNNParameters[] = {
    {"BI", 1.0},      {"BJ", 1.0},     {"Densi", 0.0},  {"Extrap", 1.0},  {"Floor", 0.0},
    {"ClipToFloor", 0.0}, {"HoriLap", -1.0}, {"IChoro", 0.0}, {"IGrad", 0.0}, {"MagX", 1.0},
    {"MagY", 1.0},    {"MagZ", 1.0},   {"NonNeg", 0.0}, {"Nuldat", 0.0},  {"Optim", 1.0},
    {"Rads", 0.0},    {"SDip", 0.0},   {"Updir", 0.0},  {"VertLap", -1.0}};
constexpr std::size_t kBI = 0;
constexpr std::size_t kIGrad = 8;

void CheckNNParameter(const std::string& name, double value) {
  if (name == "BI") {
    if (!(std::isfinite(value) && value >= 0.0)) {
      throw Error(5, "Orvada.NNGridR", "Taughtness must be a finite number not below 0.");
    }
  } else if (name == "MagX" || name == "MagY" || name == "MagZ") {
    if (!(std::isfinite(value) && value > 0.0)) {
      throw Error(5, "Orvada.NNGridR", name + " must be a finite number above 0.");
    }
  } else if (!std::isfinite(value)) {
    throw Error(5, "Orvada.NNGridR", name + " must be a finite number.");
  }
}

}  // namespace

// ---------------------------------------------------------------------------------------
// InverseDistance

// The power is raised and stored as "Weighting".
struct InverseDistance::Properties {
  static constexpr detail::Property<InverseDistance, double> kWeightingPower{
      "Weighting", &InverseDistance::weightingPower_, 2.0, CheckWeightingPower};
  static constexpr auto kStored = std::tuple{kWeightingPower};
};

void InverseDistance::SetWeightingPower(double value) {
  Properties::kWeightingPower.Let(*this, value);
}

void InverseDistance::SetMaxPoints(std::int32_t value) {
  if (value < 0) throw Error(5, "Orvada.InverseDistance", "MaxPoints must be 0 (all points) or more.");
  if (value == maxPoints_) return;
  maxPoints_ = value;
  PropertyChanged.Raise("MaxPoints");
}

void InverseDistance::SetRadius(double value) {
  if (!(std::isfinite(value) && value >= 0.0)) {
    throw Error(5, "Orvada.InverseDistance", "Radius must be a finite distance of 0 (no limit) or more.");
  }
  if (value == radius_) return;
  radius_ = value;
  PropertyChanged.Raise("Radius");
}

void InverseDistance::WriteProperties(PropertyBag& bag, const std::string& prefix) const {
  detail::WriteAll(bag, prefix, *this, Properties::kStored);
  // Absent means the global method: states saved before these existed read as they did.
  if (maxPoints_ != 0) bag.WriteProperty(prefix + "MaxPoints", maxPoints_);
  if (radius_ != 0.0) bag.WriteProperty(prefix + "Radius", radius_);
}

void InverseDistance::ReadProperties(const PropertyBag& bag, const std::string& prefix) {
  const std::int32_t maxPoints = bag.ReadProperty(prefix + "MaxPoints", std::int32_t{0});
  const double radius = bag.ReadProperty(prefix + "Radius", 0.0);
  if (maxPoints < 0 || !(std::isfinite(radius) && radius >= 0.0)) {
    throw Error(5, "Orvada.InverseDistance", "The stored MaxPoints or Radius is out of range.");
  }
  detail::ReadAll(bag, prefix, *this, Properties::kStored);
  SetMaxPoints(maxPoints);
  SetRadius(radius);
}

// ---------------------------------------------------------------------------------------
// Resampling

// The grid settings in the order they are stored, then the resamplers' parameters. The
// resampler type is raised and stored as "ResamperType". A limit or AutoRange let applies
// the automatic range at once (while AutoRange the data's limits win).
struct Resampling::Properties {
  template <class T>
  using P = detail::Property<Resampling, T>;
  static constexpr auto kAutoRange =
      P<bool>{"AutoRange", &Resampling::autoRange_, true}.Then(&Resampling::UpdateGrid);
  static constexpr auto kIntervalCount =
      P<std::int32_t>{"IntervalCount", &Resampling::intervalCount_, 10, CheckIntervalCount}.Then(
          &Resampling::ComputeIntervals);
  static constexpr P<std::int32_t> kResamplerType{"ResamperType", &Resampling::resamplerType_,
                                                  orvResamplerTypeNone};
  static constexpr auto kXMax =
      P<double>{"XMax", &Resampling::xMax_, 0.0, CheckFinite}.Then(&Resampling::UpdateGrid);
  static constexpr auto kXMin =
      P<double>{"XMin", &Resampling::xMin_, 0.0, CheckFinite}.Then(&Resampling::UpdateGrid);
  static constexpr auto kYMax =
      P<double>{"YMax", &Resampling::yMax_, 0.0, CheckFinite}.Then(&Resampling::UpdateGrid);
  static constexpr auto kYMin =
      P<double>{"YMin", &Resampling::yMin_, 0.0, CheckFinite}.Then(&Resampling::UpdateGrid);
  static constexpr auto kStored = std::tuple{
      kAutoRange, kIntervalCount, kResamplerType, kXMax, kXMin, kYMax, kYMin,
      detail::SubObject<Resampling, orvane::Kriging>{"Kriging.", &Resampling::kriging_},
      detail::SubObject<Resampling, orvane::InverseDistance>{"InverseDistance.",
                                                             &Resampling::inverseDistance_},
      detail::SubObject<Resampling, orvane::NNGridR>{"NNGridr", &Resampling::nnGridR_}};
};

Resampling::Resampling() : dataLimits_(kNoDataLimits) {
  const std::pair<Event<const std::string&>*, std::string> relays[] = {
      {&inverseDistance_.PropertyChanged, "InverseDistance."},
      {&kriging_.PropertyChanged, "Kriging."},
      {&nnGridR_.PropertyChanged, "NNGridR."}};
  for (const auto& [event, prefix] : relays) {
    connections_.push_back(event->Connect(
        [this, prefix = prefix](const std::string& name) { PropertyChanged.Raise(prefix + name); }));
  }
}

void Resampling::ApplyAutoRange() {
  // Until a data set hands its limits over there are none to follow: the limits keep
  // their values (0 when new, or what a State brought).
  if (!autoRange_ || dataLimits_[0] > dataLimits_[1]) return;
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

void Resampling::UpdateGrid() {
  ApplyAutoRange();
  ComputeIntervals();
}

void Resampling::SetAutoRange(bool value) { Properties::kAutoRange.Let(*this, value); }
void Resampling::SetIntervalCount(std::int32_t value) {
  Properties::kIntervalCount.Let(*this, value);
}
void Resampling::SetResamplerType(std::int32_t value) {
  Properties::kResamplerType.Let(*this, value);
}
void Resampling::SetBlankOutsideHull(bool value) {
  if (value == blankOutsideHull_) return;
  blankOutsideHull_ = value;
  PropertyChanged.Raise("BlankOutsideHull");
}
void Resampling::SetXMax(double value) { Properties::kXMax.Let(*this, value); }
void Resampling::SetXMin(double value) { Properties::kXMin.Let(*this, value); }
void Resampling::SetYMax(double value) { Properties::kYMax.Let(*this, value); }
void Resampling::SetYMin(double value) { Properties::kYMin.Let(*this, value); }

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
  blankOutsideHull_ = false;
  xMax_ = xMin_ = yMax_ = yMin_ = 0.0;
  xInterval_ = yInterval_ = 0.0;
  dataLimits_ = kNoDataLimits;
  inverseDistance_.Reset();
  kriging_.Reset();
  nnGridR_.Reset();
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
  detail::WriteAll(bag, prefix, *this, Properties::kStored);
  // Absent means false: states saved before it existed read as they did.
  if (blankOutsideHull_) bag.WriteProperty(prefix + "BlankOutsideHull", true);
}

void Resampling::ReadProperties(const PropertyBag& bag, const std::string& prefix) {
  const bool autoRange = bag.ReadProperty(prefix + "AutoRange", true);
  const std::int32_t count = bag.ReadProperty(prefix + "IntervalCount", std::int32_t{10});
  const std::int32_t type = bag.ReadProperty(prefix + "ResamperType", std::int32_t{0});
  const bool blankOutsideHull = bag.ReadProperty(prefix + "BlankOutsideHull", false);
  const double limits[4] = {bag.ReadProperty(prefix + "XMax", 0.0), bag.ReadProperty(prefix + "XMin", 0.0),
                            bag.ReadProperty(prefix + "YMax", 0.0), bag.ReadProperty(prefix + "YMin", 0.0)};
  const double power = bag.ReadProperty(prefix + "InverseDistance.Weighting", 2.0);
  const std::int32_t maxPoints = bag.ReadProperty(prefix + "InverseDistance.MaxPoints", std::int32_t{0});
  const double radius = bag.ReadProperty(prefix + "InverseDistance.Radius", 0.0);
  if (maxPoints < 0 || !(std::isfinite(radius) && radius >= 0.0)) {
    throw Error(5, "Orvada.InverseDistance", "The stored MaxPoints or Radius is out of range.");
  }
  const double taughtness = bag.ReadProperty(prefix + "NNGridrBI", 1.0);
  const bool gradients = bag.ReadProperty(prefix + "NNGridrIGrad", false);
  CheckIntervalCount(count);
  CheckNNParameter("BI", taughtness);
  for (double v : limits) CheckFinite(v, "A stored grid limit");
  CheckWeightingPower(power);
  // The kriging parameters read (and apply) before anything else changes; they cannot
  // be invalid, only unreadable.
  kriging_.ReadProperties(bag, prefix + "Kriging.");
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
  SetBlankOutsideHull(blankOutsideHull);
  inverseDistance_.SetWeightingPower(power);
  inverseDistance_.SetMaxPoints(maxPoints);
  inverseDistance_.SetRadius(radius);
  nnGridR_.SetTaughtness(taughtness);
  nnGridR_.SetUseGradients(gradients);
}

// ---------------------------------------------------------------------------------------
// Kriging

// The parameters in the order they are stored; the lets store without checking. Range
// and Sill are read back from the keys "1" and "2", as stored property sets always were.
struct Kriging::Properties {
  template <class T>
  using P = detail::Property<Kriging, T>;
  static constexpr P<bool> kAutoSetRange{"AutoSetRange", &Kriging::autoSetRange_, true};
  static constexpr P<bool> kBlockMode{"BlockMode", &Kriging::blockMode_, true};
  static constexpr P<std::int32_t> kModelSemiVariogram{"ModelSemiVariogram", &Kriging::model_,
                                                       orvKrigingMSVLinear};
  static constexpr P<double> kNugget{"Nugget", &Kriging::nugget_, 1.0};
  static constexpr auto kRange = P<double>{"Range", &Kriging::range_, 1.0}.ReadKey("1");
  static constexpr auto kSill = P<double>{"Sill", &Kriging::sill_, 2.0}.ReadKey("2");
  static constexpr auto kStored =
      std::tuple{kAutoSetRange, kBlockMode, kModelSemiVariogram, kNugget, kRange, kSill};
};

void Kriging::SetAutoSetRange(bool value) { Properties::kAutoSetRange.Let(*this, value); }
void Kriging::SetBlockMode(bool value) { Properties::kBlockMode.Let(*this, value); }
void Kriging::SetModelSemiVariogram(std::int32_t value) {
  Properties::kModelSemiVariogram.Let(*this, value);
}
void Kriging::SetNugget(double value) { Properties::kNugget.Let(*this, value); }
void Kriging::SetRange(double value) { Properties::kRange.Let(*this, value); }
void Kriging::SetSill(double value) { Properties::kSill.Let(*this, value); }

void Kriging::Reset() {
  autoSetRange_ = true;
  blockMode_ = true;
  model_ = orvKrigingMSVLinear;
  nugget_ = 1.0;
  sill_ = 2.0;
  range_ = 1.0;
}

void Kriging::WriteProperties(PropertyBag& bag, const std::string& prefix) const {
  detail::WriteAll(bag, prefix, *this, Properties::kStored);
}

void Kriging::ReadProperties(const PropertyBag& bag, const std::string& prefix) {
  detail::ReadAll(bag, prefix, *this, Properties::kStored);
}

// ---------------------------------------------------------------------------------------
// NNGridR


NNGridR::NNGridR() { Reset(); }

const std::vector<std::string>& NNGridR::ParameterNames() {
  static const std::vector<std::string> names = [] {
    std::vector<std::string> list;
    for (const NNParameter& p : kNNParameters) list.emplace_back(p.name);
    return list;
  }();
  return names;
}

std::size_t NNGridR::IndexOf(const std::string& name) const {
  const std::vector<std::string>& names = ParameterNames();
  for (std::size_t k = 0; k < names.size(); ++k) {
    if (names[k] == name) return k;
  }
  throw Error(5, "Orvada.NNGridR", "\"" + name + "\" is not a parameter of the natural-neighbour resampler.");
}

double NNGridR::Taughtness() const noexcept { return values_[kBI]; }
bool NNGridR::UseGradients() const noexcept { return values_[kIGrad] != 0.0; }

double NNGridR::Parameter(const std::string& name) const { return values_[IndexOf(name)]; }

void NNGridR::SetParameter(const std::string& name, double value) {
  const std::size_t k = IndexOf(name);
  CheckNNParameter(name, value);
  if (k == kIGrad) value = value != 0.0 ? 1.0 : 0.0;
  if (values_[k] == value) return;
  values_[k] = value;
  PropertyChanged.Raise(k == kBI ? "Taughtness" : k == kIGrad ? "UseGradients" : name);
}

void NNGridR::SetTaughtness(double value) { SetParameter("BI", value); }
void NNGridR::SetUseGradients(bool value) { SetParameter("IGrad", value ? 1.0 : 0.0); }

void NNGridR::Reset() {
  values_.clear();
  for (const NNParameter& p : kNNParameters) values_.push_back(p.defaultValue);
}

void NNGridR::WriteProperties(PropertyBag& bag, const std::string& prefix) const {
  bag.WriteProperty(prefix + "BI", Taughtness());
  bag.WriteProperty(prefix + "IGrad", UseGradients());
}

void NNGridR::ReadProperties(const PropertyBag& bag, const std::string& prefix) {
  const double taughtness = bag.ReadProperty(prefix + "BI", 1.0);
  const bool gradients = bag.ReadProperty(prefix + "IGrad", false);
  CheckNNParameter("BI", taughtness);
  SetTaughtness(taughtness);
  SetUseGradients(gradients);
}

}  // namespace orvane
