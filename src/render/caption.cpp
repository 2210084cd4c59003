#include "orvane/render/caption.h"

#include "orvane/core/property_bag.h"

namespace orvane {

Caption::Caption()
    : fontChanged_(font_.FontChanged.Connect([this](const std::string&) {
        PropertyChanged.Raise("Font");
      })) {}

void Caption::SetText(const std::string& value) {
  if (value == text_) return;
  text_ = value;
  PropertyChanged.Raise("Text");
}

void Caption::SetVisible(bool value) {
  if (value == visible_) return;
  visible_ = value;
  PropertyChanged.Raise("Visible");
}

void Caption::WriteProperties(PropertyBag& bag, const std::string& prefix) const {
  bag.WriteProperty(prefix + "Visible", visible_);
  bag.WriteProperty(prefix + "Caption", text_);
  font_.WriteProperties(bag, prefix + "Font");
}

void Caption::ReadProperties(const PropertyBag& bag, const std::string& prefix) {
  const bool visible = bag.ReadProperty(prefix + "Visible", true);
  const std::string text = bag.ReadProperty(prefix + "Caption", "");
  font_.ReadProperties(bag, prefix + "Font");  // checks before it changes anything
  SetVisible(visible);
  SetText(text);
}

}  // namespace orvane
