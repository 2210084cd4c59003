// Contour levels: Contour, Contours and Contouring with automatic levels, colouring
// from the colour maps, and FindColor.

#include "orvane/contour/contouring.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <tuple>

#include "core/property_table.h"
#include "orvane/core/error.h"
#include "orvane/core/property_bag.h"

namespace orvane {

namespace {

// Absolute tolerance within which a Z value counts as lying on a level.
constexpr double kLevelTolerance = 2.2204460492503102e-14;

void CheckDrawStyle(std::int32_t value) {
  if (value < orvDrawStyleSolid || value > orvDrawStyleDashDotDot) {
    throw Error(5, "Orvada.Contour");
  }
}

// A colour argument of Add: negative means none (0); beyond 32 bits is refused.
Color ColorArgument(std::int64_t value) {
  if (value < 0) return 0;
  if (value > 0xFFFFFFFFll) {
    throw Error(5, "Orvada.Contours",
                "A colour must fit 32 bits, not " + std::to_string(value) + ".");
  }
  return static_cast<Color>(value);
}

// A double turned into a 32-bit integer, rounding half to even; none when out of range.
bool ToLong(double value, std::int32_t& out) {
  const double rounded = RoundHalfEven(value);
  if (!(rounded >= std::numeric_limits<std::int32_t>::min() &&
        rounded <= std::numeric_limits<std::int32_t>::max())) {
    return false;
  }
  out = static_cast<std::int32_t>(rounded);
  return true;
}

// The stops of each built-in map (web hex colours) and its stripes.
struct BuiltInMap {
  std::vector<std::pair<double, std::uint32_t>> stops;
  bool striped = false;
  std::uint32_t stripe = 0;
};

const std::vector<std::pair<double, std::uint32_t>> kRainbow = {
    {0.0, 0xEE82EE},  {0.14, 0x9400D3}, {0.28, 0x1E90FF}, {0.42, 0x32CD32},
    {0.56, 0xFFFF00}, {0.71, 0xFFA500}, {0.85, 0xFF0000}, {1.0, 0xCD5C5C}};

const BuiltInMap* BuiltIn(std::int32_t type) {
  static const BuiltInMap blueRed{{{0.0, 0x4169E1}, {0.5, 0xC71585}, {1.0, 0xFF0000}}};
  static const BuiltInMap redBlue{{{0.0, 0xFF0000}, {0.5, 0xC71585}, {1.0, 0x4169E1}}};
  static const BuiltInMap rainbow{kRainbow};
  // The reverse keeps the rainbow's positions and reverses only its colours.
  static const BuiltInMap rainbowReverse{{{0.0, 0xCD5C5C}, {0.14, 0xFF0000}, {0.28, 0xFFA500},
                                          {0.42, 0xFFFF00}, {0.56, 0x32CD32}, {0.71, 0x1E90FF},
                                          {0.85, 0x9400D3}, {1.0, 0xEE82EE}}};
  static const BuiltInMap rainbowStriped{kRainbow, true, 0xF5F5F5};
  static const BuiltInMap zebra{{{0.0, 0x000000}, {1.0, 0x000000}}, true, 0xF5F5F5};
  static const BuiltInMap landSeaDark{{{0.0, 0x00008B}, {0.5, 0xFFFFFF}, {1.0, 0x8B4513}}};
  static const BuiltInMap landSeaLight{{{0.0, 0x87CEFA}, {0.5, 0xFFFFFF}, {1.0, 0xFFDEAD}}};
  switch (type) {
    case orvColorMapBlueRed: return &blueRed;
    case orvColorMapRedBlue: return &redBlue;
    case orvColorMapRainbow: return &rainbow;
    case orvColorMapRainbowReverse: return &rainbowReverse;
    case orvColorMapRainbowStriped: return &rainbowStriped;
    case orvColorMapZebraStriped: return &zebra;
    case orvColorMapLandSeaDark: return &landSeaDark;
    case orvColorMapLandSeaLight: return &landSeaLight;
    default: return nullptr;
  }
}

}  // namespace

// ---------------------------------------------------------------------------------------
// Contour

void Contour::SetColor(orvane::Color value) {
  if (value == color_) return;
  color_ = value;
  PropertyChanged.Raise("Color");
}

void Contour::SetColorBelow(orvane::Color value) {
  if (value == colorBelow_) return;
  colorBelow_ = value;
  PropertyChanged.Raise("ColorBelow");
}

void Contour::SetLineDrawStyle(std::int32_t value) {
  if (value == lineDrawStyle_) return;
  lineDrawStyle_ = value;  // kept even when it is then refused
  CheckDrawStyle(value);
  PropertyChanged.Raise("LineDrawStyle");
}

void Contour::SetLineWidth(std::int32_t value) {
  if (value == lineWidth_) return;
  lineWidth_ = value;
  PropertyChanged.Raise("LineWidth");
}

void Contour::WriteProperties(PropertyBag& bag, const std::string& prefix) const {
  bag.WriteProperty(prefix + "Color", static_cast<std::int32_t>(color_));
  bag.WriteProperty(prefix + "ColorBelow", static_cast<std::int32_t>(colorBelow_));
  bag.WriteProperty(prefix + "LineDrawStyle", lineDrawStyle_);
  bag.WriteProperty(prefix + "LineWidth", lineWidth_);
  bag.WriteProperty(prefix + "Value", value_);
}

// ---------------------------------------------------------------------------------------
// Contours

std::size_t Contours::InsertionIndex(double value) const {
  if (ordered_) {
    // Ascending without NaN, "level > value" is false up to some index and true after
    // it; a NaN value is above nothing and goes last, as the scan below puts it.
    const auto above = std::upper_bound(
        items_.begin(), items_.end(), value,
        [](double v, const std::shared_ptr<Contour>& level) { return v < level->Value(); });
    return static_cast<std::size_t>(above - items_.begin());
  }
  std::size_t i = 0;
  while (i < items_.size() && !(items_[i]->Value() > value)) ++i;
  return i;
}

std::int32_t Contours::Add(double value, std::int64_t color, std::int64_t colorBelow) {
  const Color c = ColorArgument(color);
  const Color below = ColorArgument(colorBelow);
  const std::size_t i = InsertionIndex(value);
  items_.emplace_back();
  // Levels from i on move up one place as fresh copies of value and colours only.
  for (std::size_t k = items_.size() - 1; k > i; --k) {
    const Contour& old = *items_[k - 1];
    items_[k] = std::make_shared<Contour>(old.Value(), old.Color(), old.ColorBelow());
  }
  items_[i] = std::make_shared<Contour>(value, c, below);
  if (std::isnan(value)) ordered_ = false;
  Reconnect(i);
  return 0;
}

void Contours::AddLevels(std::span<const double> values) {
  const bool hasNaN = std::any_of(values.begin(), values.end(), [](double v) { return std::isnan(v); });
  if (!ordered_ || hasNaN) {
    // Where the order has no shortcut, one insertion after the other.
    for (double v : values) Add(v);
    return;
  }
  if (values.empty()) return;
  // Successive insertions, each after the levels of equal value, end in a stable merge:
  // the existing levels first among equals, then the new ones in the order given. An
  // existing level moves (and so comes back as a fresh copy) as soon as one new value
  // lies below it, that is when it lies above the smallest new value; a new level that
  // later moves is a fresh copy equal to itself.
  std::vector<double> added(values.begin(), values.end());
  std::stable_sort(added.begin(), added.end());
  const double lowest = added.front();
  std::vector<std::shared_ptr<Contour>> merged;
  merged.reserve(items_.size() + added.size());
  std::size_t a = 0;
  std::size_t b = 0;
  while (a < items_.size() || b < added.size()) {
    if (b == added.size() || (a < items_.size() && !(added[b] < items_[a]->Value()))) {
      const std::shared_ptr<Contour>& level = items_[a++];
      if (level->Value() > lowest) {
        merged.push_back(std::make_shared<Contour>(level->Value(), level->Color(), level->ColorBelow()));
      } else {
        merged.push_back(level);
      }
    } else {
      merged.push_back(std::make_shared<Contour>(added[b++]));
    }
  }
  items_ = std::move(merged);
  Reconnect();
}

std::shared_ptr<Contour> Contours::Item(std::int32_t index) const {
  if (index < 0 || index >= Count()) throw Error(9, kRuntimeSource);
  return items_[static_cast<std::size_t>(index)];
}

void Contours::Remove(std::int32_t index) {
  if (index < 0 || index >= Count()) throw Error(9, kRuntimeSource);
  items_.erase(items_.begin() + index);
  Reconnect(static_cast<std::size_t>(index));
}

Contours& Contours::operator=(Contours&& other) noexcept {
  items_ = std::move(other.items_);
  ordered_ = other.ordered_;
  other.items_.clear();
  other.relays_.clear();
  other.ordered_ = true;
  Reconnect();
  return *this;
}

void Contours::Reconnect(std::size_t from) {
  if (!relay_) return;
  relays_.resize(std::min(from, relays_.size()));
  for (std::size_t i = relays_.size(); i < items_.size(); ++i) {
    // The index is fixed here: every change of the order reconnects the levels it moved.
    relays_.push_back(items_[i]->PropertyChanged.Connect(
        [this, i](const std::string& name) { relay_(i, name); }));
  }
}

void Contours::WriteProperties(PropertyBag& bag, const std::string& prefix) const {
  bag.WriteProperty(prefix + "Count", Count());
  for (std::int32_t i = 0; i < Count(); ++i) {
    items_[static_cast<std::size_t>(i)]->WriteProperties(
        bag, prefix + "Contour" + std::to_string(i) + ".");
  }
}

void Contours::ReadProperties(const PropertyBag& bag, const std::string& prefix) {
  const std::int32_t count = bag.ReadProperty(prefix + "Count", std::int32_t{0});
  if (count < 0 || static_cast<std::size_t>(count) > bag.Count()) {
    throw Error(5, "Orvada.Contours", "The stored contour levels under \"" + prefix +
                                          "\" have an impossible count of " +
                                          std::to_string(count) + ".");
  }
  std::vector<std::shared_ptr<Contour>> items;
  for (std::int32_t i = 0; i < count; ++i) {
    const std::string p = prefix + "Contour" + std::to_string(i) + ".";
    auto item = std::make_shared<Contour>(
        bag.ReadProperty(p + "Value", 0.0),
        static_cast<Color>(bag.ReadProperty(p + "Color", std::int32_t{0})),
        static_cast<Color>(bag.ReadProperty(p + "ColorBelow", std::int32_t{0})));
    item->lineDrawStyle_ = bag.ReadProperty(p + "LineDrawStyle", std::int32_t{0});
    item->lineWidth_ = bag.ReadProperty(p + "LineWidth", std::int32_t{1});
    CheckDrawStyle(item->lineDrawStyle_);
    items.push_back(std::move(item));
  }
  items_ = std::move(items);
  Reconnect();
  ordered_ = std::is_sorted(items_.begin(), items_.end(),
                            [](const std::shared_ptr<Contour>& a, const std::shared_ptr<Contour>& b) {
                              return a->Value() < b->Value();
                            }) &&
             std::none_of(items_.begin(), items_.end(),
                          [](const std::shared_ptr<Contour>& c) { return std::isnan(c->Value()); });
}

// ---------------------------------------------------------------------------------------
// Contouring

Contouring::Contouring()
    : userMapChanged_(userMap_.PropertyChanged.Connect(
          [this](const std::string& name) { PropertyChanged.Raise("UserColorMap." + name); })) {
  contours_.relay_ = [this](std::size_t index, const std::string& name) {
    if (!recolouring_) PropertyChanged.Raise("Contours.Contour" + std::to_string(index) + "." + name);
  };
}

// The settings in the order they are stored; the lets store without checking. The map
// type is raised and stored as "ColorMap".
struct Contouring::Properties {
  template <class T>
  using P = detail::Property<Contouring, T>;
  static constexpr P<std::int32_t> kAutoSetContoursType{
      "AutoSetContoursType", &Contouring::autoSetContoursType_, orvAutoSetByIntervalCount};
  static constexpr P<double> kAutoSetInterval{"AutoSetInterval", &Contouring::autoSetInterval_, 1.0};
  static constexpr P<std::int32_t> kAutoSetIntervalCount{
      "AutoSetIntervalCount", &Contouring::autoSetIntervalCount_, 10};
  static constexpr P<std::int32_t> kColorMapType{"ColorMap", &Contouring::colorMapType_,
                                                 orvColorMapRainbow};
  static constexpr P<bool> kInterpolateColors{"InterpolateColors",
                                              &Contouring::interpolateColors_, false};
  // Beyond the described set; absent from a bag, they keep the described drawing.
  static constexpr P<bool> kExactBands{"ExactBands", &Contouring::exactBands_, false};
  static constexpr P<bool> kTiesAbove{"TiesAbove", &Contouring::tiesAbove_, false};
  static constexpr auto kStored = std::tuple{kAutoSetContoursType, kAutoSetInterval,
                                             kAutoSetIntervalCount, kColorMapType,
                                             kInterpolateColors, kExactBands, kTiesAbove};
};

void Contouring::SetAutoSetContoursType(std::int32_t value) {
  Properties::kAutoSetContoursType.Let(*this, value);
}
void Contouring::SetAutoSetInterval(double value) { Properties::kAutoSetInterval.Let(*this, value); }
void Contouring::SetAutoSetIntervalCount(std::int32_t value) {
  Properties::kAutoSetIntervalCount.Let(*this, value);
}
void Contouring::SetColorMapType(std::int32_t value) { Properties::kColorMapType.Let(*this, value); }
void Contouring::SetInterpolateColors(bool value) {
  Properties::kInterpolateColors.Let(*this, value);
}
void Contouring::SetExactBands(bool value) { Properties::kExactBands.Let(*this, value); }
void Contouring::SetTiesAbove(bool value) { Properties::kTiesAbove.Let(*this, value); }

Color Contouring::FindColor(double zValue, bool isColorBelow) const {
  const auto& items = contours_.items_;
  const std::size_t n = items.size();
  if (n == 0) return contours_.Item(-1)->Color();  // the host's subscript error
  // The walk from the first level only passes over levels that lie well below the value
  // (neither within the tolerance of it nor above it). While the levels are in order,
  // bisection finds where that stops holding; the walk then goes on from there, so every
  // result is the one the walk from the start gives. A NaN value starts at level 0.
  std::size_t i = 0;
  if (contours_.ordered_) {
    const double below = zValue - 4.0 * kLevelTolerance;
    i = static_cast<std::size_t>(
        std::partition_point(items.begin(), items.end(), [below](const auto& level) { return level->Value() < below; }) -
        items.begin());
  }
  const Contour* lower = i > 0 ? items[i - 1].get() : nullptr;
  const Contour* upper = nullptr;
  for (; i < n; ++i) {
    const Contour& level = *items[i];
    if (std::fabs(zValue - level.Value()) < kLevelTolerance) {
      return isColorBelow ? level.ColorBelow() : level.Color();
    }
    if (zValue < level.Value()) {
      upper = &level;
      break;
    }
    lower = &level;
  }
  if (upper == nullptr) return items[n - 1]->Color();  // above every level
  if (lower == nullptr) return upper->ColorBelow();    // below the first
  if (interpolateColors_) {
    const double t = (zValue - lower->Value()) / (upper->Value() - lower->Value());
    return InterpolateColor(lower->Color(), upper->ColorBelow(), t);
  }
  return lower->Color();
}

void Contouring::BuildColorMap() {
  if (colorMapType_ == orvColorMapUser) return;  // the user map is sampled directly
  workingMap_.RemoveAll();
  if (colorMapType_ == orvColorMapNone) {
    // From the levels themselves, each at its relative position with its own colour.
    const std::int32_t n = contours_.Count();
    if (n == 0) return;
    const double first = contours_.Item(0)->Value();
    const double last = contours_.Item(n - 1)->Value();
    if (!(last - first > 0.0)) return;
    for (std::int32_t i = 0; i < n; ++i) {
      const double z = contours_.Item(i)->Value();
      workingMap_.Add((z - first) / (last - first), FindColor(z, false));
    }
    return;
  }
  const BuiltInMap* map = BuiltIn(colorMapType_);
  if (map == nullptr) return;
  for (const auto& [value, hex] : map->stops) workingMap_.Add(value, FromHexRgb(hex));
  workingMap_.SetIsStriped(map->striped);
  if (map->striped) workingMap_.SetStripeColor(FromHexRgb(map->stripe));
}

void Contouring::ApplyColorMap() {
  // The colours follow from the map: a consequence of a change already announced.
  struct Recolouring {
    bool& flag;
    bool was;
    ~Recolouring() { flag = was; }
  } recolouring{recolouring_, recolouring_};
  recolouring_ = true;
  if (colorMapType_ == orvColorMapNone) {
    if (!mapCaptured_) return;  // the levels keep their colours
  } else if (colorMapType_ != orvColorMapUser) {
    BuildColorMap();
  }
  const ColorMap& map = colorMapType_ == orvColorMapUser ? userMap_ : workingMap_;
  const std::int32_t n = contours_.Count();
  if (n == 0) return;
  const double first = contours_.Item(0)->Value();
  const double range = contours_.Item(n - 1)->Value() - first;
  for (std::int32_t i = 0; i < n; ++i) {
    Contour& level = *contours_.Item(i);
    const double p = range == 0.0 ? 0.0 : (level.Value() - first) / range;
    const std::optional<Color> color = map.Sample(p);
    if (!color) continue;  // no stop reaches p: the level keeps its colours
    level.SetColor(*color);
    level.SetColorBelow(*color);
    if (map.IsStriped()) level.SetColorBelow(map.StripeColor());
  }
}

void Contouring::CaptureLevelColors() {
  if (colorMapType_ != orvColorMapNone) return;
  BuildColorMap();
  mapCaptured_ = true;
}

void Contouring::AutoSetContours(double zMin, double zMax) {
  const double span = zMax - zMin;
  double interval = 0.0;
  if (autoSetContoursType_ == orvAutoSetByInterval) {
    interval = autoSetInterval_;
  } else if (autoSetContoursType_ == orvAutoSetByIntervalCount) {
    if (autoSetIntervalCount_ >= 1) interval = span / autoSetIntervalCount_;
  } else {
    ApplyColorMap();
    return;
  }
  CaptureLevelColors();
  contours_.RemoveAll();
  std::int32_t n = 0;
  if (interval > 0.0 && ToLong(span / interval, n) && n >= 1) {
    std::vector<double> values;
    values.reserve(static_cast<std::size_t>(n) + 1);
    double z = zMin;  // advanced by repeated addition, as the levels always were
    for (std::int64_t i = 0; i <= n; ++i) {
      values.push_back(z);
      z += interval;
    }
    contours_.AddLevels(values);
  }
  ApplyColorMap();
}

void Contouring::ResetToDefaults() {
  autoSetContoursType_ = orvAutoSetByIntervalCount;
  autoSetInterval_ = 1.0;
  autoSetIntervalCount_ = 10;
  colorMapType_ = orvColorMapRainbow;
  interpolateColors_ = false;
  exactBands_ = false;
  tiesAbove_ = false;
  workingMap_.RemoveAll();
  contours_.RemoveAll();
}

void Contouring::WriteProperties(PropertyBag& bag, const std::string& prefix) const {
  detail::WriteAll(bag, prefix, *this, Properties::kStored);
  contours_.WriteProperties(bag, prefix + "Contours.");
  userMap_.WriteProperties(bag, prefix + "UserColorMap.");
}

void Contouring::ReadProperties(const PropertyBag& bag, const std::string& prefix) {
  const auto settings = detail::StageAll(bag, prefix, *this, Properties::kStored);
  orvane::Contours levels;
  levels.ReadProperties(bag, prefix + "Contours.");
  ColorMap scratch;  // finds a bad map before anything changes
  scratch.ReadProperties(bag, prefix + "UserColorMap.");
  detail::ApplyAll(*this, Properties::kStored, settings);
  contours_ = std::move(levels);
  userMap_.ReadProperties(bag, prefix + "UserColorMap.");
}

}  // namespace orvane
