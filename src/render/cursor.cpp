#include "orvane/render/cursor.h"

#include <cmath>
#include <tuple>

#include "core/property_table.h"
#include "orvane/core/error.h"
#include "orvane/core/property_bag.h"

namespace orvane {

namespace {

constexpr const char* kSource = "Orvada.Cursor";

void CheckMode(const ECursorMode& value, const char*) {
  if (value < orvCursorModeManual || value > orvCursorModeTrackMouse) throw Error(5, kSource);
}

void CheckFinite(const double& value, const char* name) {
  if (!std::isfinite(value)) {
    throw Error(5, kSource, std::string(name) + " must be a finite number.");
  }
}

}  // namespace

// The cursor's properties in the order they are stored. The coordinates are stored as
// bare keys, without the caller's prefix, as stored property sets have them.
struct Cursor::Properties {
  template <class T>
  using P = detail::Property<Cursor, T>;
  static constexpr P<ECursorMode> kMode{"Mode", &Cursor::mode_, orvCursorModeTrackMouse,
                                        CheckMode};
  static constexpr P<bool> kVisible{"Visible", &Cursor::visible_, false};
  static constexpr auto kXValue = P<double>{"XValue", &Cursor::x_, 0.0, CheckFinite}.Bare();
  static constexpr auto kYValue = P<double>{"YValue", &Cursor::y_, 0.0, CheckFinite}.Bare();
  static constexpr auto kZValue = P<double>{"ZValue", &Cursor::z_, 0.0, CheckFinite}.Bare();
  static constexpr auto kStored =
      std::tuple{kMode, kVisible, kXValue, kYValue, kZValue,
                 detail::SubObject<Cursor, orvane::Line>{"Line.", &Cursor::line_}};
};

Cursor::Cursor()
    : lineChanged_(line_.PropertyChanged.Connect(
          [this](const std::string& name) { PropertyChanged.Raise("Line." + name); })) {}

void Cursor::SetMode(std::int32_t value) {
  Properties::kMode.Let(*this, static_cast<ECursorMode>(value));
}
void Cursor::SetVisible(bool value) { Properties::kVisible.Let(*this, value); }
void Cursor::SetXValue(double value) { Properties::kXValue.Let(*this, value); }
void Cursor::SetYValue(double value) { Properties::kYValue.Let(*this, value); }
void Cursor::SetZValue(double value) { Properties::kZValue.Let(*this, value); }

void Cursor::WriteProperties(PropertyBag& bag, const std::string& prefix) const {
  detail::WriteAll(bag, prefix, *this, Properties::kStored);
}

void Cursor::ReadProperties(const PropertyBag& bag, const std::string& prefix) {
  detail::ReadAll(bag, prefix, *this, Properties::kStored);
}

}  // namespace orvane
