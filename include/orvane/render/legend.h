#pragma once

#include <string>

#include "orvane/core/event.h"

namespace orvane {

class PropertyBag;

/// The colour key of the contour levels beside the plot.
class Legend {
 public:
  /// "Returns or sets whether the Legend is visible." (True when new)
  bool Visible() const noexcept { return visible_; }
  /// Lets it; raises "Visible".
  void SetVisible(bool value);
  /// Whether every band takes the same height on the bar, as for levels spaced by a log
  /// or by hand (False when new: heights in proportion to Z).
  bool EvenBands() const noexcept { return evenBands_; }
  /// Lets it; raises "EvenBands".
  void SetEvenBands(bool value);

  /// Writes "Visible" and "EvenBands" under prefix.
  void WriteProperties(PropertyBag& bag, const std::string& prefix) const;
  /// Reads them (defaults True and False).
  void ReadProperties(const PropertyBag& bag, const std::string& prefix);

  /// Raised with "Visible" or "EvenBands" after a change.
  Event<const std::string&> PropertyChanged;

 private:
  struct Properties;
  bool visible_ = true;
  bool evenBands_ = false;
};

}  // namespace orvane
