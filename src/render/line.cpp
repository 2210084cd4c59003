#include "orvane/render/line.h"

#include <tuple>

#include "core/property_table.h"
#include "orvane/core/error.h"
#include "orvane/core/property_bag.h"

namespace orvane {

namespace {

constexpr const char* kSource = "Orvada.Line";
// Prefix under which one line hands its properties to another.
constexpr const char* kCopyPrefix = "Orvada.Line";

constexpr std::uint16_t kStipple[] = {0xFFFF, 0xEEEE, 0xAAAA, 0xD6B4, 0xEAEA};

void CheckDrawStyle(const EDrawStyle& drawStyle, const char*) {
  if (drawStyle < orvDrawStyleSolid || drawStyle > orvDrawStyleDashDotDot) {
    throw Error(5, kSource);
  }
}

}  // namespace

// The line's properties in the order they are stored.
struct Line::Properties {
  template <class T>
  using P = detail::Property<Line, T>;
  static constexpr P<orvane::Color> kColor{"Color", &Line::color_, 0};
  static constexpr P<EDrawStyle> kDrawStyle{"DrawStyle", &Line::drawStyle_, orvDrawStyleSolid,
                                            CheckDrawStyle};
  static constexpr P<std::int32_t> kWidth{"Width", &Line::width_, 1};
  static constexpr auto kStored = std::tuple{kColor, kDrawStyle, kWidth};
};

void Line::SetColor(orvane::Color color) { Properties::kColor.Let(*this, color); }
void Line::SetDrawStyle(std::int32_t drawStyle) {
  Properties::kDrawStyle.Let(*this, static_cast<EDrawStyle>(drawStyle));
}
void Line::SetWidth(std::int32_t width) { Properties::kWidth.Let(*this, width); }

std::uint16_t Line::StipplePattern(EDrawStyle drawStyle) noexcept {
  const auto index = static_cast<std::size_t>(drawStyle);
  return index < std::size(kStipple) ? kStipple[index] : kStipple[0];
}

void Line::WriteProperties(PropertyBag& bag, const std::string& prefix) const {
  detail::WriteAll(bag, prefix, *this, Properties::kStored);
}

void Line::ReadProperties(const PropertyBag& bag, const std::string& prefix) {
  detail::ReadAll(bag, prefix, *this, Properties::kStored);
}

void Line::CopyFrom(const Line& other) {
  PropertyBag bag;
  other.WriteProperties(bag, kCopyPrefix);
  ReadProperties(bag, kCopyPrefix);
}

}  // namespace orvane
