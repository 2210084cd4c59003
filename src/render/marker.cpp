// Marker: the format of the data-point markers.

#include "orvane/render/marker.h"

#include <cmath>
#include <tuple>

#include "core/property_table.h"
#include "orvane/core/error.h"
#include "orvane/core/property_bag.h"

namespace orvane {

namespace {

constexpr const char* kSource = "Orvada.Marker";
// Prefix under which one marker hands its properties to another.
constexpr const char* kCopyPrefix = "Orvada.Marker";

void CheckShape(const EDataMarkerShape& value, const char*) {
  switch (value) {
    case orvMarkerShape3DCube:
    case orvMarkerShape3DPyramid:
    case orvMarkerShape2DSquare:
    case orvMarkerShape2DTriangle:
    case orvMarkerShape2DCircle:
    case orvMarkerShape2DPlus:
    case orvMarkerShape2DCross:
      return;
  }
  throw Error(5, kSource);
}

void CheckSize(const double& value, const char*) {
  if (!(std::isfinite(value) && value >= 0.0)) {
    throw Error(5, kSource, "Size must be a finite number of 0 or more.");
  }
}

}  // namespace

// The marker's properties in the order they are stored.
struct Marker::Properties {
  template <class T>
  using P = detail::Property<Marker, T>;

  static constexpr P<Color> kFillColor{"FillColor", &Marker::fillColor_, 0x00FFFF};
  static constexpr P<bool> kEdgeVisible{"EdgeVisible", &Marker::edgeVisible_, true};
  static constexpr P<bool> kFillVisible{"FillVisible", &Marker::fillVisible_, true};
  static constexpr P<EDataMarkerShape> kShape{"Shape", &Marker::shape_, orvMarkerShape3DCube,
                                              CheckShape};
  static constexpr P<double> kSize{"Size", &Marker::size_, 3.0, CheckSize};
  static constexpr P<bool> kVisible{"Visible", &Marker::visible_, false};

  static constexpr auto kStored = std::tuple{
      kFillColor, kEdgeVisible, kFillVisible, kShape, kSize, kVisible,
      detail::SubObject<Marker, orvane::Line>{"EdgeLine.", &Marker::edgeLine_}};
};

Marker::Marker()
    : edgeLineChanged_(edgeLine_.PropertyChanged.Connect(
          [this](const std::string& name) { PropertyChanged.Raise("EdgeLine." + name); })) {}

void Marker::SetVisible(bool value) { Properties::kVisible.Let(*this, value); }
void Marker::SetShape(std::int32_t value) {
  Properties::kShape.Let(*this, static_cast<EDataMarkerShape>(value));
}
void Marker::SetSize(double value) { Properties::kSize.Let(*this, value); }
void Marker::SetFillVisible(bool value) { Properties::kFillVisible.Let(*this, value); }
void Marker::SetFillColor(Color value) { Properties::kFillColor.Let(*this, value); }
void Marker::SetEdgeVisible(bool value) { Properties::kEdgeVisible.Let(*this, value); }

void Marker::CopyFrom(const Marker& other) {
  PropertyBag bag;
  other.WriteProperties(bag, kCopyPrefix);
  ReadProperties(bag, kCopyPrefix);
}

void Marker::WriteProperties(PropertyBag& bag, const std::string& prefix) const {
  detail::WriteAll(bag, prefix, *this, Properties::kStored);
}

void Marker::ReadProperties(const PropertyBag& bag, const std::string& prefix) {
  detail::ReadAll(bag, prefix, *this, Properties::kStored);
}

}  // namespace orvane
