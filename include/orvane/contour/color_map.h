#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "orvane/contour/named_colors.h"
#include "orvane/core/color.h"
#include "orvane/core/event.h"

namespace orvane {

class PropertyBag;

/// One colour stop of a colour map: a position on the map's scale and its colour.
class ColorLevel {
 public:
  /// A stop at value with colour (ColorBelow 0).
  ColorLevel(double value = 0.0, orvane::Color color = 0) : value_(value), color_(color) {}

  /// "Returns the color for this level value."
  orvane::Color Color() const noexcept { return color_; }
  /// "Returns or sets the numeric value associated with this level."
  double Value() const noexcept { return value_; }
  /// The colour kept with the stop for levels approached from below.
  orvane::Color ColorBelow() const noexcept { return colorBelow_; }
  /// Sets ColorBelow.
  void SetColorBelow(orvane::Color value) noexcept { colorBelow_ = value; }

  /// Writes "ColorBelow", "Color" and "Value" under prefix.
  void WriteProperties(PropertyBag& bag, const std::string& prefix) const;
  /// Reads them (defaults 0).
  void ReadProperties(const PropertyBag& bag, const std::string& prefix);

 private:
  double value_;
  orvane::Color color_;
  orvane::Color colorBelow_ = 0;
};

/// An ordered list of colour stops on a 0..1 scale, sampled to colour contour levels.
/// Stops are shared objects: a stop replaced or removed stays valid for whoever holds it.
class ColorMap {
 public:
  /// Silver (#C0C0C0) at 0 to white smoke (#F5F5F5) at 1, not striped.
  ColorMap();
  ColorMap(const ColorMap&) = delete;
  ColorMap& operator=(const ColorMap&) = delete;

  /// "Add a ColorLevel item to the collection." Inserted in Value order; a stop of an
  /// equal Value is replaced. Raises "Count"; returns the new stop.
  std::shared_ptr<ColorLevel> Add(double value, Color color);
  /// "Returns a count of the number of collection members."
  std::int32_t Count() const noexcept { return static_cast<std::int32_t>(levels_.size()); }
  /// "Returns the member of the collection identified by the Index parameter." Error 9
  /// outside 0..Count-1.
  std::shared_ptr<ColorLevel> Item(std::int32_t index) const;
  /// "Remove an item from the collection." Error 9 outside 0..Count-1. Raises "Count".
  void Remove(std::int32_t index);
  /// "Remove all items from the collection." Raises "Count".
  void RemoveAll();

  /// Whether levels coloured from this map take StripeColor as their ColorBelow.
  bool IsStriped() const noexcept { return isStriped_; }
  /// Sets it; raises "IsStriped" on a change.
  void SetIsStriped(bool value);
  /// The stripe colour.
  Color StripeColor() const noexcept { return stripeColor_; }
  /// Sets it; raises "StripeColor" on a change.
  void SetStripeColor(Color value);

  /// The colour at position p: sampled between the first stop j >= 1 whose Value is not
  /// less than p and the stop before it; none when there is no such stop.
  std::optional<Color> Sample(double p) const;

  /// Writes "Count" and each stop under prefix + "Color" + index + ".".
  void WriteProperties(PropertyBag& bag, const std::string& prefix) const;
  /// Reads them back in stored order (not re-sorted); a bad bag changes nothing.
  void ReadProperties(const PropertyBag& bag, const std::string& prefix);

  /// Raised with "Count", "IsStriped" or "StripeColor".
  Event<const std::string&> PropertyChanged;

 private:
  std::vector<std::shared_ptr<ColorLevel>> levels_;
  bool isStriped_ = false;
  Color stripeColor_ = 0;
};

}  // namespace orvane
