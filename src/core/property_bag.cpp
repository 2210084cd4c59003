// PropertyBag: typed values under keys, and their CBOR form.
//
// Contents layout: one flat CBOR array
//   [ "Orvane.PropertyBag", 1, key0, type0, value0, key1, type1, value1, ... ]
// where type is the PropertyType number (0 Long ... 6 DoubleArray) and the value is a
// CBOR integer (Long, Integer, Currency), boolean, float (Double), text string, or byte
// string of little-endian IEEE doubles (DoubleArray). Reading
// goes through a SAX handler that accepts exactly this shape: no nested containers, so
// corrupt input can neither recurse deeply nor make the reader reserve memory for
// lengths it claims, and any deviation fails the whole read.

#include "orvane/core/property_bag.h"

#include <bit>
#include <charconv>
#include <cmath>
#include <limits>
#include <stdexcept>
#include <system_error>

#include <nlohmann/json.hpp>

#include "orvane/core/color.h"
#include "orvane/core/error.h"

namespace orvane {

namespace {

constexpr const char* kSource = "PropertyBag";
constexpr const char* kMagic = "Orvane.PropertyBag";
constexpr std::int64_t kLayoutVersion = 1;

const char* TypeName(PropertyType type) {
  switch (type) {
    case PropertyType::Long: return "Long";
    case PropertyType::Integer: return "Integer";
    case PropertyType::Boolean: return "Boolean";
    case PropertyType::Double: return "Double";
    case PropertyType::String: return "String";
    case PropertyType::Currency: return "Currency";
    case PropertyType::DoubleArray: return "DoubleArray";
  }
  return "?";
}

PropertyType TypeOfValue(const PropertyValue& value) {
  return static_cast<PropertyType>(value.index());
}

std::string ShortestText(double value) {
  if (std::isnan(value)) return "NaN";
  if (std::isinf(value)) return value > 0 ? "Infinity" : "-Infinity";
  char buffer[64];
  const auto result = std::to_chars(buffer, buffer + sizeof buffer, value);
  return std::string(buffer, result.ptr);
}

std::string ToText(const PropertyValue& value) {
  switch (TypeOfValue(value)) {
    case PropertyType::Long: return std::to_string(std::get<std::int32_t>(value));
    case PropertyType::Integer: return std::to_string(std::get<std::int16_t>(value));
    case PropertyType::Boolean: return std::get<bool>(value) ? "True" : "False";
    case PropertyType::Double: return ShortestText(std::get<double>(value));
    case PropertyType::String: return std::get<std::string>(value);
    case PropertyType::Currency: return std::get<Currency>(value).ToString();
    case PropertyType::DoubleArray:
      return "(" + std::to_string(std::get<std::vector<double>>(value).size()) + " values)";
  }
  return {};
}

[[noreturn]] void Mismatch(const std::string& key, const PropertyValue& value,
                           PropertyType wanted) {
  throw Error(13, kSource,
              "Type mismatch: property \"" + key + "\" holds the " +
                  TypeName(TypeOfValue(value)) + " \"" + ToText(value) +
                  "\", which cannot be read as a " + TypeName(wanted) + ".");
}

[[noreturn]] void Overflow(const std::string& key, const PropertyValue& value,
                           PropertyType wanted) {
  throw Error(6, kSource,
              "Overflow: property \"" + key + "\" holds " + ToText(value) +
                  ", which does not fit a " + TypeName(wanted) + ".");
}

std::string Trim(const std::string& text) {
  const auto first = text.find_first_not_of(" \t");
  if (first == std::string::npos) return {};
  const auto last = text.find_last_not_of(" \t");
  return text.substr(first, last - first + 1);
}

// A numeric string in invariant notation; nothing but the number and outer blanks.
std::optional<double> ParseNumber(const std::string& text) {
  const std::string trimmed = Trim(text);
  if (trimmed.empty()) return std::nullopt;
  const char* begin = trimmed.data();
  if (*begin == '+') ++begin;
  double value = 0.0;
  const auto result = std::from_chars(begin, trimmed.data() + trimmed.size(), value);
  if (result.ec != std::errc() || result.ptr != trimmed.data() + trimmed.size()) {
    return std::nullopt;
  }
  return value;
}

bool EqualsIgnoringCase(const std::string& a, const char* b) {
  std::size_t i = 0;
  for (; i < a.size() && b[i] != '\0'; ++i) {
    const auto lower = [](char c) { return (c >= 'A' && c <= 'Z') ? char(c - 'A' + 'a') : c; };
    if (lower(a[i]) != lower(b[i])) return false;
  }
  return i == a.size() && b[i] == '\0';
}

// The stored value as a double, for the numeric conversions. Strings must parse.
double NumericValue(const std::string& key, const PropertyValue& value, PropertyType wanted) {
  switch (TypeOfValue(value)) {
    case PropertyType::Long: return std::get<std::int32_t>(value);
    case PropertyType::Integer: return std::get<std::int16_t>(value);
    case PropertyType::Boolean: return std::get<bool>(value) ? -1.0 : 0.0;
    case PropertyType::Double: return std::get<double>(value);
    case PropertyType::Currency: return std::get<Currency>(value).ToDouble();
    case PropertyType::String: {
      const std::string& text = std::get<std::string>(value);
      if (EqualsIgnoringCase(Trim(text), "True")) return -1.0;
      if (EqualsIgnoringCase(Trim(text), "False")) return 0.0;
      if (auto number = ParseNumber(text)) return *number;
      Mismatch(key, value, wanted);
    }
    case PropertyType::DoubleArray: Mismatch(key, value, wanted);
  }
  Mismatch(key, value, wanted);
}

template <class Int>
Int ToInteger(const std::string& key, const PropertyValue& value, PropertyType wanted) {
  if (const auto* currency = std::get_if<Currency>(&value)) {
    // Exact: divide the scaled integer, rounding half to even.
    const std::int64_t q = currency->scaled / 10000;
    const std::int64_t r = currency->scaled % 10000;
    std::int64_t rounded = q;
    if (r > 5000 || (r == 5000 && q % 2 != 0)) rounded = q + 1;
    if (r < -5000 || (r == -5000 && q % 2 != 0)) rounded = q - 1;
    if (rounded < std::numeric_limits<Int>::min() || rounded > std::numeric_limits<Int>::max()) {
      Overflow(key, value, wanted);
    }
    return static_cast<Int>(rounded);
  }
  const double rounded = RoundHalfEven(NumericValue(key, value, wanted));
  if (!(rounded >= std::numeric_limits<Int>::min() && rounded <= std::numeric_limits<Int>::max())) {
    Overflow(key, value, wanted);
  }
  return static_cast<Int>(rounded);
}

}  // namespace

void PropertyBag::WriteProperty(const std::string& key, PropertyValue value) {
  if (auto it = index_.find(key); it != index_.end()) {
    items_[it->second].second = std::move(value);
    return;
  }
  index_.emplace(key, items_.size());
  items_.emplace_back(key, std::move(value));
}

const PropertyValue* PropertyBag::Find(const std::string& key) const {
  auto it = index_.find(key);
  return it == index_.end() ? nullptr : &items_[it->second].second;
}

std::optional<PropertyType> PropertyBag::TypeOf(const std::string& key) const {
  if (const PropertyValue* value = Find(key)) return TypeOfValue(*value);
  return std::nullopt;
}

void PropertyBag::Clear() noexcept {
  items_.clear();
  index_.clear();
}

std::int32_t PropertyBag::ReadProperty(const std::string& key, std::int32_t fallback) const {
  const PropertyValue* value = Find(key);
  if (value == nullptr) return fallback;
  return ToInteger<std::int32_t>(key, *value, PropertyType::Long);
}

std::int16_t PropertyBag::ReadProperty(const std::string& key, std::int16_t fallback) const {
  const PropertyValue* value = Find(key);
  if (value == nullptr) return fallback;
  return ToInteger<std::int16_t>(key, *value, PropertyType::Integer);
}

bool PropertyBag::ReadProperty(const std::string& key, bool fallback) const {
  const PropertyValue* value = Find(key);
  if (value == nullptr) return fallback;
  if (const auto* b = std::get_if<bool>(value)) return *b;
  if (const auto* c = std::get_if<Currency>(value)) return c->scaled != 0;
  const double number = NumericValue(key, *value, PropertyType::Boolean);
  if (std::isnan(number)) Mismatch(key, *value, PropertyType::Boolean);
  return number != 0.0;
}

double PropertyBag::ReadProperty(const std::string& key, double fallback) const {
  const PropertyValue* value = Find(key);
  if (value == nullptr) return fallback;
  return NumericValue(key, *value, PropertyType::Double);
}

std::string PropertyBag::ReadProperty(const std::string& key, const std::string& fallback) const {
  const PropertyValue* value = Find(key);
  if (value == nullptr) return fallback;
  if (value->index() == static_cast<std::size_t>(PropertyType::DoubleArray)) {
    Mismatch(key, *value, PropertyType::String);
  }
  return ToText(*value);
}

std::vector<double> PropertyBag::ReadProperty(const std::string& key,
                                              const std::vector<double>& fallback) const {
  const PropertyValue* value = Find(key);
  if (value == nullptr) return fallback;
  if (const auto* values = std::get_if<std::vector<double>>(value)) return *values;
  Mismatch(key, *value, PropertyType::DoubleArray);
}

std::string PropertyBag::ReadProperty(const std::string& key, const char* fallback) const {
  return ReadProperty(key, std::string(fallback));
}

Currency PropertyBag::ReadProperty(const std::string& key, Currency fallback) const {
  const PropertyValue* value = Find(key);
  if (value == nullptr) return fallback;
  if (const auto* c = std::get_if<Currency>(value)) return *c;
  if (const auto* l = std::get_if<std::int32_t>(value)) return Currency{std::int64_t{*l} * 10000};
  if (const auto* i = std::get_if<std::int16_t>(value)) return Currency{std::int64_t{*i} * 10000};
  const double number = NumericValue(key, *value, PropertyType::Currency);
  if (!std::isfinite(number)) Overflow(key, *value, PropertyType::Currency);
  try {
    return Currency::FromDouble(number);
  } catch (const Error&) {
    Overflow(key, *value, PropertyType::Currency);
  }
}

// ---------------------------------------------------------------------------------------
// CBOR form

namespace {

// Doubles as little-endian IEEE 754 bytes, whatever the machine's byte order.
std::vector<std::uint8_t> EncodeDoubles(const std::vector<double>& values) {
  std::vector<std::uint8_t> bytes(values.size() * 8);
  for (std::size_t i = 0; i < values.size(); ++i) {
    const auto bits = std::bit_cast<std::uint64_t>(values[i]);
    for (std::size_t b = 0; b < 8; ++b) bytes[i * 8 + b] = static_cast<std::uint8_t>(bits >> (8 * b));
  }
  return bytes;
}

std::vector<double> DecodeDoubles(const std::vector<std::uint8_t>& bytes) {
  std::vector<double> values(bytes.size() / 8);
  for (std::size_t i = 0; i < values.size(); ++i) {
    std::uint64_t bits = 0;
    for (std::size_t b = 0; b < 8; ++b) bits |= std::uint64_t{bytes[i * 8 + b]} << (8 * b);
    values[i] = std::bit_cast<double>(bits);
  }
  return values;
}

}  // namespace

std::vector<std::uint8_t> PropertyBag::Contents() const {
  nlohmann::json flat = nlohmann::json::array();
  flat.push_back(kMagic);
  flat.push_back(kLayoutVersion);
  for (const auto& [key, value] : items_) {
    flat.push_back(key);
    flat.push_back(static_cast<int>(value.index()));
    std::visit(
        [&flat](const auto& v) {
          using T = std::decay_t<decltype(v)>;
          if constexpr (std::is_same_v<T, Currency>) {
            flat.push_back(v.scaled);
          } else if constexpr (std::is_same_v<T, std::vector<double>>) {
            flat.push_back(nlohmann::json::binary(EncodeDoubles(v)));
          } else {
            flat.push_back(v);
          }
        },
        value);
  }
  return nlohmann::json::to_cbor(flat);
}

namespace {

// Accepts exactly the flat array that Contents() writes and collects its items.
class BagReader {
 public:
  using json = nlohmann::json;

  std::vector<std::pair<std::string, PropertyValue>> items;
  std::unordered_map<std::string, std::size_t> index;
  std::string problem;
  bool finished = false;

  bool null() { return Fail("a null value"); }
  bool boolean(bool value) {
    if (step_ != Step::Value || type_ != PropertyType::Boolean) return Fail("a stray Boolean");
    return Store(value);
  }
  bool number_integer(json::number_integer_t value) { return Integer(value, value < 0); }
  bool number_unsigned(json::number_unsigned_t value) {
    if (value > static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max())) {
      return Fail("an integer beyond 64 bits");
    }
    return Integer(static_cast<std::int64_t>(value), false);
  }
  bool number_float(json::number_float_t value, const json::string_t&) {
    if (step_ != Step::Value || type_ != PropertyType::Double) return Fail("a stray Double");
    return Store(value);
  }
  bool string(json::string_t& text) {
    switch (step_) {
      case Step::Magic:
        if (text != kMagic) return Fail("an unknown header");
        step_ = Step::Version;
        return true;
      case Step::Key:
        if (index.contains(text)) return Fail("the key \"" + text + "\" twice");
        key_ = text;
        step_ = Step::Type;
        return true;
      case Step::Value:
        if (type_ != PropertyType::String) return Fail("a stray String");
        return Store(std::move(text));
      default: return Fail("a stray string");
    }
  }
  bool binary(json::binary_t& bytes) {
    if (step_ != Step::Value || type_ != PropertyType::DoubleArray) return Fail("binary data");
    if (bytes.size() % 8 != 0) return Fail("an array of Doubles with a partial value");
    return Store(DecodeDoubles(bytes));
  }
  bool start_object(std::size_t) { return Fail("a map"); }
  bool key(json::string_t&) { return Fail("a map key"); }
  bool end_object() { return Fail("a map end"); }
  bool start_array(std::size_t) {
    if (step_ != Step::Start) return Fail("a nested array");
    step_ = Step::Magic;
    return true;
  }
  bool end_array() {
    if (step_ != Step::Key) return Fail("an incomplete entry");
    step_ = Step::Done;
    finished = true;
    return true;
  }
  bool parse_error(std::size_t position, const std::string&, const nlohmann::detail::exception&) {
    if (problem.empty()) problem = "unreadable CBOR at byte " + std::to_string(position);
    return false;
  }

 private:
  enum class Step { Start, Magic, Version, Key, Type, Value, Done };

  bool Fail(const std::string& what) {
    if (problem.empty()) problem = what == "" ? "unexpected data" : "unexpected " + what;
    return false;
  }

  bool Integer(std::int64_t value, bool negative) {
    switch (step_) {
      case Step::Version:
        if (value != kLayoutVersion) return Fail("layout version " + std::to_string(value));
        step_ = Step::Key;
        return true;
      case Step::Type:
        if (negative || value > static_cast<std::int64_t>(PropertyType::DoubleArray)) {
          return Fail("type code " + std::to_string(value));
        }
        type_ = static_cast<PropertyType>(value);
        step_ = Step::Value;
        return true;
      case Step::Value:
        switch (type_) {
          case PropertyType::Long:
            if (value < INT32_MIN || value > INT32_MAX) return Fail("a Long out of range");
            return Store(static_cast<std::int32_t>(value));
          case PropertyType::Integer:
            if (value < INT16_MIN || value > INT16_MAX) return Fail("an Integer out of range");
            return Store(static_cast<std::int16_t>(value));
          case PropertyType::Currency: return Store(Currency{value});
          default: return Fail("an integer where a " + std::string(TypeName(type_)) + " belongs");
        }
      default: return Fail("a stray integer");
    }
  }

  bool Store(PropertyValue value) {
    index.emplace(key_, items.size());
    items.emplace_back(std::move(key_), std::move(value));
    key_.clear();
    step_ = Step::Key;
    return true;
  }

  Step step_ = Step::Start;
  PropertyType type_ = PropertyType::Long;
  std::string key_;
};

}  // namespace

void PropertyBag::SetContents(const std::vector<std::uint8_t>& bytes) {
  BagReader reader;
  bool ok = false;
  try {
    ok = nlohmann::json::sax_parse(bytes.begin(), bytes.end(), &reader,
                                   nlohmann::json::input_format_t::cbor, true);
  } catch (const std::exception& e) {
    // The reader reports through parse_error; this catches what it raises regardless.
    if (reader.problem.empty()) reader.problem = e.what();
    ok = false;
  }
  if (!ok || !reader.finished) {
    if (reader.problem.empty()) reader.problem = "truncated data";
    throw Error(5, kSource, "The property bag contents cannot be read: " + reader.problem + ".");
  }
  items_ = std::move(reader.items);
  index_ = std::move(reader.index);
}

}  // namespace orvane
