#include "orvane/render/legend.h"

#include <tuple>

#include "core/property_table.h"
#include "orvane/core/property_bag.h"

namespace orvane {

struct Legend::Properties {
  static constexpr detail::Property<Legend, bool> kVisible{"Visible", &Legend::visible_, true};
  static constexpr detail::Property<Legend, bool> kEvenBands{"EvenBands", &Legend::evenBands_, false};
  static constexpr auto kStored = std::tuple{kVisible, kEvenBands};
};

void Legend::SetVisible(bool value) { Properties::kVisible.Let(*this, value); }
void Legend::SetEvenBands(bool value) { Properties::kEvenBands.Let(*this, value); }

void Legend::WriteProperties(PropertyBag& bag, const std::string& prefix) const {
  detail::WriteAll(bag, prefix, *this, Properties::kStored);
}

void Legend::ReadProperties(const PropertyBag& bag, const std::string& prefix) {
  detail::ReadAll(bag, prefix, *this, Properties::kStored);
}

}  // namespace orvane
