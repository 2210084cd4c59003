#pragma once

#include <cstdint>
#include <string>

#include "orvane/core/event.h"
#include "orvane/render/line.h"

namespace orvane {

class PropertyBag;

/// How the cursor is positioned.
enum ECursorMode : std::int32_t {
  orvCursorModeManual = 0,      ///< the host sets XValue, YValue, ZValue
  orvCursorModeTrackMouse = 1,  ///< the cursor follows the data point under the mouse
};

/// A crosshair marking one point in data units.
class Cursor {
 public:
  /// Hidden, tracking the mouse, at (0, 0, 0), drawn with a default line.
  Cursor();
  Cursor(const Cursor&) = delete;
  Cursor& operator=(const Cursor&) = delete;

  /// "Returns a Line object which defines the formatting for the line representing the
  /// cursor." Its changes raise "Line." and the property's name.
  orvane::Line& Line() noexcept { return line_; }
  /// "Returns or sets the way the cursor is positioned."
  ECursorMode Mode() const noexcept { return mode_; }
  /// Lets it (0 or 1; otherwise error 5, source "Orvada.Cursor"); raises "Mode".
  void SetMode(std::int32_t value);
  /// "Returns or sets whether the cursor will be visible."
  bool Visible() const noexcept { return visible_; }
  /// Lets it; raises "Visible".
  void SetVisible(bool value);
  /// "Returns or sets the X position of the cursor in the units of the XAxis."
  double XValue() const noexcept { return x_; }
  /// Lets it (finite); raises "XValue".
  void SetXValue(double value);
  /// "Returns or sets the Y position of the cursor in the units of the YAxis."
  double YValue() const noexcept { return y_; }
  /// Lets it (finite); raises "YValue".
  void SetYValue(double value);
  /// "Returns or sets the Z position of the cursor in the units of the ZAxis."
  double ZValue() const noexcept { return z_; }
  /// Lets it (finite); raises "ZValue".
  void SetZValue(double value);

  /// Writes "Mode" and "Visible" under prefix, "XValue", "YValue", "ZValue" as bare keys
  /// (without the prefix, as stored property sets have them), and the line under "Line.".
  void WriteProperties(PropertyBag& bag, const std::string& prefix) const;
  /// Reads them with the defaults; a bad value raises and changes nothing.
  void ReadProperties(const PropertyBag& bag, const std::string& prefix);

  /// Raised with the property's name after a change.
  Event<const std::string&> PropertyChanged;

 private:
  struct Properties;

  orvane::Line line_;
  ECursorMode mode_ = orvCursorModeTrackMouse;
  bool visible_ = false;
  double x_ = 0.0;
  double y_ = 0.0;
  double z_ = 0.0;
  Connection lineChanged_;
};

}  // namespace orvane
