#include "orvane/render/line.h"

#include "orvane/core/error.h"
#include "orvane/core/property_bag.h"

namespace orvane {

namespace {

constexpr const char* kSource = "Orvada.Line";
// Prefix under which one line hands its properties to another.
constexpr const char* kCopyPrefix = "Orvada.Line";

constexpr std::uint16_t kStipple[] = {0xFFFF, 0xEEEE, 0xAAAA, 0xD6B4, 0xEAEA};

void CheckDrawStyle(std::int32_t drawStyle) {
  if (drawStyle < orvDrawStyleSolid || drawStyle > orvDrawStyleDashDotDot) {
    throw Error(5, kSource);
  }
}

}  // namespace

void Line::SetColor(orvane::Color color) {
  if (color == color_) return;
  color_ = color;
  PropertyChanged.Raise("Color");
}

void Line::SetDrawStyle(std::int32_t drawStyle) {
  if (drawStyle == drawStyle_) return;
  CheckDrawStyle(drawStyle);
  drawStyle_ = static_cast<EDrawStyle>(drawStyle);
  PropertyChanged.Raise("DrawStyle");
}

void Line::SetWidth(std::int32_t width) {
  if (width == width_) return;
  width_ = width;
  PropertyChanged.Raise("Width");
}

std::uint16_t Line::StipplePattern(EDrawStyle drawStyle) noexcept {
  const auto index = static_cast<std::size_t>(drawStyle);
  return index < std::size(kStipple) ? kStipple[index] : kStipple[0];
}

void Line::WriteProperties(PropertyBag& bag, const std::string& prefix) const {
  // Colours are stored as 32-bit integers; the cast keeps the bit pattern.
  bag.WriteProperty(prefix + "Color", static_cast<std::int32_t>(color_));
  bag.WriteProperty(prefix + "DrawStyle", static_cast<std::int32_t>(drawStyle_));
  bag.WriteProperty(prefix + "Width", width_);
}

void Line::ReadProperties(const PropertyBag& bag, const std::string& prefix) {
  const auto color = static_cast<orvane::Color>(bag.ReadProperty(prefix + "Color", std::int32_t{0}));
  const std::int32_t drawStyle = bag.ReadProperty(prefix + "DrawStyle", std::int32_t{0});
  const std::int32_t width = bag.ReadProperty(prefix + "Width", std::int32_t{1});
  CheckDrawStyle(drawStyle);
  SetColor(color);
  SetDrawStyle(drawStyle);
  SetWidth(width);
}

void Line::CopyFrom(const Line& other) {
  PropertyBag bag;
  other.WriteProperties(bag, kCopyPrefix);
  ReadProperties(bag, kCopyPrefix);
}

}  // namespace orvane
