#include "orvane/render/cursor.h"

#include <cmath>

#include "orvane/core/error.h"
#include "orvane/core/property_bag.h"

namespace orvane {

namespace {

constexpr const char* kSource = "Orvada.Cursor";

void CheckMode(std::int32_t value) {
  if (value < orvCursorModeManual || value > orvCursorModeTrackMouse) throw Error(5, kSource);
}

void CheckFinite(double value, const char* name) {
  if (!std::isfinite(value)) {
    throw Error(5, kSource, std::string(name) + " must be a finite number.");
  }
}

}  // namespace

Cursor::Cursor()
    : lineChanged_(line_.PropertyChanged.Connect(
          [this](const std::string& name) { PropertyChanged.Raise("Line." + name); })) {}

void Cursor::SetMode(std::int32_t value) {
  if (value == mode_) return;
  CheckMode(value);
  mode_ = static_cast<ECursorMode>(value);
  PropertyChanged.Raise("Mode");
}

void Cursor::SetVisible(bool value) {
  if (value == visible_) return;
  visible_ = value;
  PropertyChanged.Raise("Visible");
}

void Cursor::SetValue(double& field, double value, const char* name) {
  if (value == field) return;
  CheckFinite(value, name);
  field = value;
  PropertyChanged.Raise(name);
}

void Cursor::SetXValue(double value) { SetValue(x_, value, "XValue"); }
void Cursor::SetYValue(double value) { SetValue(y_, value, "YValue"); }
void Cursor::SetZValue(double value) { SetValue(z_, value, "ZValue"); }

void Cursor::WriteProperties(PropertyBag& bag, const std::string& prefix) const {
  bag.WriteProperty(prefix + "Mode", static_cast<std::int32_t>(mode_));
  bag.WriteProperty(prefix + "Visible", visible_);
  bag.WriteProperty("XValue", x_);
  bag.WriteProperty("YValue", y_);
  bag.WriteProperty("ZValue", z_);
  line_.WriteProperties(bag, prefix + "Line.");
}

void Cursor::ReadProperties(const PropertyBag& bag, const std::string& prefix) {
  const std::int32_t mode = bag.ReadProperty(prefix + "Mode", std::int32_t{orvCursorModeTrackMouse});
  const bool visible = bag.ReadProperty(prefix + "Visible", false);
  const double x = bag.ReadProperty("XValue", 0.0);
  const double y = bag.ReadProperty("YValue", 0.0);
  const double z = bag.ReadProperty("ZValue", 0.0);
  orvane::Line line;
  line.ReadProperties(bag, prefix + "Line.");
  CheckMode(mode);
  CheckFinite(x, "XValue");
  CheckFinite(y, "YValue");
  CheckFinite(z, "ZValue");
  SetMode(mode);
  SetVisible(visible);
  SetXValue(x);
  SetYValue(y);
  SetZValue(z);
  line_.CopyFrom(line);
}

}  // namespace orvane
