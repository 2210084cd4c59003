// ColorMap and ColorLevel: ordered colour stops and their sampling.

#include "orvane/contour/color_map.h"

#include <string>

#include "orvane/core/error.h"
#include "orvane/core/property_bag.h"

namespace orvane {

namespace {
constexpr const char* kSource = "Orvada.ColorMap";
}  // namespace

void ColorLevel::WriteProperties(PropertyBag& bag, const std::string& prefix) const {
  bag.WriteProperty(prefix + "ColorBelow", static_cast<std::int32_t>(colorBelow_));
  bag.WriteProperty(prefix + "Color", static_cast<std::int32_t>(color_));
  bag.WriteProperty(prefix + "Value", value_);
}

void ColorLevel::ReadProperties(const PropertyBag& bag, const std::string& prefix) {
  const auto below = static_cast<orvane::Color>(bag.ReadProperty(prefix + "ColorBelow", std::int32_t{0}));
  const auto color = static_cast<orvane::Color>(bag.ReadProperty(prefix + "Color", std::int32_t{0}));
  const double value = bag.ReadProperty(prefix + "Value", 0.0);
  colorBelow_ = below;
  color_ = color;
  value_ = value;
}

ColorMap::ColorMap() {
  Add(0.0, FromHexRgb(0xC0C0C0));
  Add(1.0, FromHexRgb(0xF5F5F5));
  Add(1.0, FromHexRgb(0xF5F5F5));  // the second replaces the first: Count stays 2
}

std::shared_ptr<ColorLevel> ColorMap::Add(double value, Color color) {
  auto level = std::make_shared<ColorLevel>(value, color);
  std::size_t i = 0;
  while (i < levels_.size() && levels_[i]->Value() < value) ++i;
  if (i < levels_.size() && levels_[i]->Value() == value) {
    levels_[i] = level;
  } else {
    levels_.insert(levels_.begin() + static_cast<std::ptrdiff_t>(i), level);
  }
  PropertyChanged.Raise("Count");
  return level;
}

std::shared_ptr<ColorLevel> ColorMap::Item(std::int32_t index) const {
  if (index < 0 || index >= Count()) throw Error(9, kSource);
  return levels_[static_cast<std::size_t>(index)];
}

void ColorMap::Remove(std::int32_t index) {
  if (index < 0 || index >= Count()) throw Error(9, kSource);
  levels_.erase(levels_.begin() + index);
  PropertyChanged.Raise("Count");
}

void ColorMap::RemoveAll() {
  levels_.clear();
  PropertyChanged.Raise("Count");
}

void ColorMap::SetIsStriped(bool value) {
  if (value == isStriped_) return;
  isStriped_ = value;
  PropertyChanged.Raise("IsStriped");
}

void ColorMap::SetStripeColor(Color value) {
  if (value == stripeColor_) return;
  stripeColor_ = value;
  PropertyChanged.Raise("StripeColor");
}

std::optional<Color> ColorMap::Sample(double p) const {
  for (std::size_t j = 1; j < levels_.size(); ++j) {
    if (!(levels_[j]->Value() < p)) {
      const ColorLevel& lo = *levels_[j - 1];
      const ColorLevel& hi = *levels_[j];
      return SampleColor(lo.Value(), lo.Color(), hi.Value(), hi.Color(), p);
    }
  }
  return std::nullopt;
}

void ColorMap::WriteProperties(PropertyBag& bag, const std::string& prefix) const {
  bag.WriteProperty(prefix + "Count", Count());
  for (std::int32_t i = 0; i < Count(); ++i) {
    levels_[static_cast<std::size_t>(i)]->WriteProperties(bag, prefix + "Color" + std::to_string(i) + ".");
  }
}

void ColorMap::ReadProperties(const PropertyBag& bag, const std::string& prefix) {
  if (!bag.Contains(prefix + "Count")) {
    // Nothing stored: the map a new one starts with.
    levels_ = {std::make_shared<ColorLevel>(0.0, FromHexRgb(0xC0C0C0)),
               std::make_shared<ColorLevel>(1.0, FromHexRgb(0xF5F5F5))};
    PropertyChanged.Raise("Count");
    return;
  }
  const std::int32_t count = bag.ReadProperty(prefix + "Count", std::int32_t{0});
  if (count < 0 || static_cast<std::size_t>(count) > bag.Count()) {
    throw Error(5, kSource, "The stored colour map under \"" + prefix + "\" has an impossible count of " +
                                std::to_string(count) + " stops.");
  }
  std::vector<std::shared_ptr<ColorLevel>> levels;
  for (std::int32_t i = 0; i < count; ++i) {
    auto level = std::make_shared<ColorLevel>();
    level->ReadProperties(bag, prefix + "Color" + std::to_string(i) + ".");
    levels.push_back(std::move(level));
  }
  levels_ = std::move(levels);
  PropertyChanged.Raise("Count");
}

}  // namespace orvane
