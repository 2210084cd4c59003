#pragma once

#include <cstdint>
#include <string>

#include "orvane/core/currency.h"
#include "orvane/core/event.h"

namespace orvane {

class PropertyBag;

/// A text font: the seven attributes of the host's standard font object. Bold and
/// Weight are one setting seen two ways: Bold is Weight above 550, and letting Bold
/// sets Weight to 700 or 400.
class Font {
 public:
  /// Arial, 8 points, regular.
  Font();
  /// A font of the given face name, size in points and boldness.
  Font(std::string name, double size, bool bold = false);
  Font(const Font&) = delete;
  Font& operator=(const Font&) = delete;

  /// Face name, such as "Arial".
  const std::string& Name() const noexcept { return name_; }
  /// Lets the face name; error 380 (source "StdFont") for an empty name.
  void SetName(const std::string& name);
  /// Size in points, four decimal places.
  Currency Size() const noexcept { return size_; }
  /// Size in points as a double.
  double SizePoints() const noexcept { return size_.ToDouble(); }
  /// Lets the size; error 380 unless 0 < size <= 16384 points.
  void SetSize(Currency size);
  /// Lets the size from points, rounded half to even to four decimals.
  void SetSize(double points);
  /// True when Weight is above 550.
  bool Bold() const noexcept { return weight_ > 550; }
  /// Sets Weight to 700 (true) or 400 (false).
  void SetBold(bool bold);
  /// Italic face.
  bool Italic() const noexcept { return italic_; }
  /// Lets Italic.
  void SetItalic(bool italic);
  /// Underlined text.
  bool Underline() const noexcept { return underline_; }
  /// Lets Underline.
  void SetUnderline(bool underline);
  /// Struck-through text.
  bool Strikethrough() const noexcept { return strikethrough_; }
  /// Lets Strikethrough.
  void SetStrikethrough(bool strikethrough);
  /// Stroke weight, 0..1000 (400 regular, 700 bold).
  std::int16_t Weight() const noexcept { return weight_; }
  /// Lets the weight; error 380 outside 0..1000.
  void SetWeight(std::int16_t weight);

  /// Copies the seven attributes of another font, each through its let (so each real
  /// change raises FontChanged).
  void CopyFrom(const Font& other);

  /// Writes "Name", "Bold", "Italic", "Size", "Strikethrough", "Underline", "Weight"
  /// under prefix.
  void WriteProperties(PropertyBag& bag, const std::string& prefix) const;
  /// Reads the seven keys under prefix, each defaulting to the current attribute. A bag
  /// value that cannot be converted or is invalid raises an error and changes nothing.
  void ReadProperties(const PropertyBag& bag, const std::string& prefix);

  /// Raised with the attribute's name ("Name", "Size", "Bold", ...) after it changes.
  Event<const std::string&> FontChanged;

 private:
  std::string name_;
  Currency size_;
  bool italic_ = false;
  bool underline_ = false;
  bool strikethrough_ = false;
  std::int16_t weight_ = 400;
};

}  // namespace orvane
