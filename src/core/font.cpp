#include "orvane/core/font.h"

#include <cmath>
#include <utility>

#include "orvane/core/error.h"
#include "orvane/core/property_bag.h"

namespace orvane {

namespace {

constexpr const char* kSource = "StdFont";
constexpr std::int16_t kWeightRegular = 400;
constexpr std::int16_t kWeightBold = 700;
// The largest size a font can be asked for, in points.
constexpr std::int64_t kMaxSizeScaled = std::int64_t{16384} * 10000;

void CheckName(const std::string& name) {
  if (name.empty()) throw Error(380, kSource, "A font name cannot be empty.");
}

void CheckSize(Currency size) {
  if (size.scaled <= 0 || size.scaled > kMaxSizeScaled) {
    throw Error(380, kSource,
                "A font size must be above 0 and at most 16384 points, not " + size.ToString() +
                    ".");
  }
}

void CheckWeight(std::int16_t weight) {
  if (weight < 0 || weight > 1000) {
    throw Error(380, kSource,
                "A font weight must lie between 0 and 1000, not " + std::to_string(weight) + ".");
  }
}

}  // namespace

Font::Font() : Font("Arial", 8.0, false) {}

Font::Font(std::string name, double size, bool bold)
    : name_(std::move(name)),
      size_(Currency::FromDouble(size)),
      weight_(bold ? kWeightBold : kWeightRegular) {
  CheckName(name_);
  CheckSize(size_);
}

void Font::SetName(const std::string& name) {
  if (name == name_) return;
  CheckName(name);
  name_ = name;
  FontChanged.Raise("Name");
}

void Font::SetSize(Currency size) {
  if (size == size_) return;
  CheckSize(size);
  size_ = size;
  FontChanged.Raise("Size");
}

void Font::SetSize(double points) {
  if (!std::isfinite(points)) {
    throw Error(380, kSource, "A font size must be a finite number of points.");
  }
  SetSize(Currency::FromDouble(points));
}

void Font::SetBold(bool bold) {
  const std::int16_t weight = bold ? kWeightBold : kWeightRegular;
  if (weight == weight_) return;
  weight_ = weight;
  FontChanged.Raise("Bold");
}

void Font::SetItalic(bool italic) {
  if (italic == italic_) return;
  italic_ = italic;
  FontChanged.Raise("Italic");
}

void Font::SetUnderline(bool underline) {
  if (underline == underline_) return;
  underline_ = underline;
  FontChanged.Raise("Underline");
}

void Font::SetStrikethrough(bool strikethrough) {
  if (strikethrough == strikethrough_) return;
  strikethrough_ = strikethrough;
  FontChanged.Raise("Strikethrough");
}

void Font::SetWeight(std::int16_t weight) {
  if (weight == weight_) return;
  CheckWeight(weight);
  weight_ = weight;
  FontChanged.Raise("Weight");
}

void Font::CopyFrom(const Font& other) {
  if (&other == this) return;
  SetName(other.name_);
  SetSize(other.size_);
  SetBold(other.Bold());
  SetItalic(other.italic_);
  SetUnderline(other.underline_);
  SetStrikethrough(other.strikethrough_);
  SetWeight(other.weight_);
}

void Font::WriteProperties(PropertyBag& bag, const std::string& prefix) const {
  bag.WriteProperty(prefix + "Name", name_);
  bag.WriteProperty(prefix + "Bold", Bold());
  bag.WriteProperty(prefix + "Italic", italic_);
  bag.WriteProperty(prefix + "Size", size_);
  bag.WriteProperty(prefix + "Strikethrough", strikethrough_);
  bag.WriteProperty(prefix + "Underline", underline_);
  bag.WriteProperty(prefix + "Weight", weight_);
}

void Font::ReadProperties(const PropertyBag& bag, const std::string& prefix) {
  // Read and check everything first, so that a bad bag leaves the font as it was.
  const std::string name = bag.ReadProperty(prefix + "Name", name_);
  const bool bold = bag.ReadProperty(prefix + "Bold", Bold());
  const bool italic = bag.ReadProperty(prefix + "Italic", italic_);
  const Currency size = bag.ReadProperty(prefix + "Size", size_);
  const bool strikethrough = bag.ReadProperty(prefix + "Strikethrough", strikethrough_);
  const bool underline = bag.ReadProperty(prefix + "Underline", underline_);
  // A bag without Weight keeps the weight that its Bold implies.
  const std::int16_t fallbackWeight =
      bold == Bold() ? weight_ : (bold ? kWeightBold : kWeightRegular);
  const std::int16_t weight = bag.ReadProperty(prefix + "Weight", fallbackWeight);
  CheckName(name);
  CheckSize(size);
  CheckWeight(weight);

  SetName(name);
  SetBold(bold);
  SetItalic(italic);
  SetSize(size);
  SetStrikethrough(strikethrough);
  SetUnderline(underline);
  SetWeight(weight);
}

}  // namespace orvane
