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

  /// Writes "Visible" under prefix.
  void WriteProperties(PropertyBag& bag, const std::string& prefix) const;
  /// Reads "Visible" (default True).
  void ReadProperties(const PropertyBag& bag, const std::string& prefix);

  /// Raised with "Visible" after a change.
  Event<const std::string&> PropertyChanged;

 private:
  struct Properties;
  bool visible_ = true;
};

}  // namespace orvane
