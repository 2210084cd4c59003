#pragma once

#include <string>

#include "orvane/core/event.h"
#include "orvane/core/font.h"

namespace orvane {

class PropertyBag;

/// The title text drawn in a band across the top of the plot.
class Caption {
 public:
  /// Empty, visible, in Arial 10 point bold.
  Caption();
  Caption(const Caption&) = delete;
  Caption& operator=(const Caption&) = delete;

  /// "Returns or sets the caption text."
  const std::string& Text() const noexcept { return text_; }
  /// Lets it; raises "Text".
  void SetText(const std::string& value);
  /// "Returns or sets whether the caption will be visible."
  bool Visible() const noexcept { return visible_; }
  /// Lets it; raises "Visible".
  void SetVisible(bool value);
  /// "Returns a StdFont object that defines the formatting of the caption text." Its
  /// changes raise "Font".
  orvane::Font& Font() noexcept { return font_; }

  /// Writes "Visible", "Caption" (the text) and the font under "Font", all under prefix.
  void WriteProperties(PropertyBag& bag, const std::string& prefix) const;
  /// Reads them (visible, empty text, the font's current attributes by default).
  void ReadProperties(const PropertyBag& bag, const std::string& prefix);

  /// Raised with "Text", "Visible" or "Font" after a change.
  Event<const std::string&> PropertyChanged;

 private:
  struct Properties;

  std::string text_;
  bool visible_ = true;
  orvane::Font font_{"Arial", 10.0, true};
  Connection fontChanged_;
};

}  // namespace orvane
