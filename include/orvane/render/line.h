#pragma once

#include <cstdint>
#include <string>

#include "orvane/core/color.h"
#include "orvane/core/event.h"

namespace orvane {

class PropertyBag;

/// How a line is dashed.
enum EDrawStyle : std::int32_t {
  orvDrawStyleSolid = 0,       ///< unbroken
  orvDrawStyleDash = 1,        ///< dashes
  orvDrawStyleDot = 2,         ///< dots
  orvDrawStyleDashDot = 3,     ///< dash, dot
  orvDrawStyleDashDotDot = 4,  ///< dash, dot, dot
};

/// The line format used by every line the control draws: colour, dash style, width.
class Line {
 public:
  /// Black, solid, 1 pixel.
  Line() = default;
  Line(const Line&) = delete;
  Line& operator=(const Line&) = delete;

  /// "Returns or sets the color of the line."
  orvane::Color Color() const noexcept { return color_; }
  /// Lets the colour (0x00BBGGRR).
  void SetColor(orvane::Color color);
  /// "Returns or sets the drawing style of the line."
  EDrawStyle DrawStyle() const noexcept { return drawStyle_; }
  /// Lets the style; anything but 0..4 raises error 5 (source "Orvada.Line") and keeps
  /// the old style.
  void SetDrawStyle(std::int32_t drawStyle);
  /// "Returns or sets the width of the line. A value of 0 will result in no line being
  /// drawn." In pixels; any value is accepted.
  std::int32_t Width() const noexcept { return width_; }
  /// Lets the width.
  void SetWidth(std::int32_t width);

  /// The 16-bit OpenGL stipple pattern (factor 1, lowest bit first) of this line's style.
  std::uint16_t StipplePattern() const noexcept { return StipplePattern(drawStyle_); }
  /// The stipple pattern of a style: solid 0xFFFF, dash 0xEEEE, dot 0xAAAA,
  /// dash-dot 0xD6B4, dash-dot-dot 0xEAEA.
  static std::uint16_t StipplePattern(EDrawStyle drawStyle) noexcept;

  /// Writes "Color", "DrawStyle", "Width" under prefix.
  void WriteProperties(PropertyBag& bag, const std::string& prefix) const;
  /// Reads them (defaults 0, 0, 1) through the lets. An invalid or unconvertible value
  /// raises its error and leaves the line unchanged.
  void ReadProperties(const PropertyBag& bag, const std::string& prefix);
  /// Takes the three properties of another line by way of a property bag.
  void CopyFrom(const Line& other);

  /// Raised with "Color", "DrawStyle" or "Width" after that property changes.
  Event<const std::string&> PropertyChanged;

 private:
  struct Properties;

  orvane::Color color_ = 0;
  EDrawStyle drawStyle_ = orvDrawStyleSolid;
  std::int32_t width_ = 1;
};

}  // namespace orvane
