#include "orvane/render/caption.h"

#include <tuple>

#include "core/property_table.h"
#include "orvane/core/property_bag.h"

namespace orvane {

// The caption's properties in the order they are stored; the text is stored as "Caption"
// and the font's attributes are glued to "Font" without a dot.
struct Caption::Properties {
  static constexpr detail::Property<Caption, bool> kVisible{"Visible", &Caption::visible_, true};
  static inline const auto kText =
      detail::Property<Caption, std::string>{"Text", &Caption::text_, std::string()}.Key("Caption");
  static inline const auto kStored =
      std::tuple{kVisible, kText, detail::SubObject<Caption, orvane::Font>{"Font", &Caption::font_}};
};

Caption::Caption()
    : fontChanged_(font_.FontChanged.Connect([this](const std::string&) {
        PropertyChanged.Raise("Font");
      })) {}

void Caption::SetText(const std::string& value) { Properties::kText.Let(*this, value); }
void Caption::SetVisible(bool value) { Properties::kVisible.Let(*this, value); }

void Caption::WriteProperties(PropertyBag& bag, const std::string& prefix) const {
  detail::WriteAll(bag, prefix, *this, Properties::kStored);
}

void Caption::ReadProperties(const PropertyBag& bag, const std::string& prefix) {
  detail::ReadAll(bag, prefix, *this, Properties::kStored);
}

}  // namespace orvane
