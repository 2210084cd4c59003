#include "orvane/render/legend.h"

#include "orvane/core/property_bag.h"

namespace orvane {

void Legend::SetVisible(bool value) {
  if (value == visible_) return;
  visible_ = value;
  PropertyChanged.Raise("Visible");
}

void Legend::WriteProperties(PropertyBag& bag, const std::string& prefix) const {
  bag.WriteProperty(prefix + "Visible", visible_);
}

void Legend::ReadProperties(const PropertyBag& bag, const std::string& prefix) {
  SetVisible(bag.ReadProperty(prefix + "Visible", true));
}

}  // namespace orvane
