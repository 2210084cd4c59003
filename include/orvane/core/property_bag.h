#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <unordered_map>
#include <utility>
#include <variant>
#include <vector>

#include "orvane/core/currency.h"

namespace orvane {

/// The types a property bag holds, in the order of PropertyValue's alternatives.
enum class PropertyType { Long, Integer, Boolean, Double, String, Currency, DoubleArray };

/// One stored value: Long (32-bit), Integer (16-bit), Boolean, Double, String, Currency,
/// or an array of Doubles (the data points of a data set).
using PropertyValue = std::variant<std::int32_t, std::int16_t, bool, double, std::string,
                                   Currency, std::vector<double>>;

/// Typed values under string keys, kept in the order first written; the store through
/// which every object saves and restores its properties. Contents() are CBOR bytes that
/// SetContents() reads back exactly.
class PropertyBag {
 public:
  /// Stores a value under a key; a key written again keeps its place and takes the value.
  void WriteProperty(const std::string& key, PropertyValue value);

  /// The value under key converted to Long, or fallback when absent. Conversions follow
  /// the automation rules: numbers round half to even (error 6 when out of range), True
  /// reads as -1, numeric strings parse; an unconvertible value raises error 13.
  std::int32_t ReadProperty(const std::string& key, std::int32_t fallback) const;
  /// The value as Integer (16-bit), or fallback when absent.
  std::int16_t ReadProperty(const std::string& key, std::int16_t fallback) const;
  /// The value as Boolean (non-zero numbers, "True"/"False"), or fallback when absent.
  bool ReadProperty(const std::string& key, bool fallback) const;
  /// The value as Double, or fallback when absent.
  double ReadProperty(const std::string& key, double fallback) const;
  /// The value as String ("True"/"False", shortest round-trip numbers), or fallback.
  std::string ReadProperty(const std::string& key, const std::string& fallback) const;
  /// The value as String, or fallback when absent.
  std::string ReadProperty(const std::string& key, const char* fallback) const;
  /// The value as Currency, or fallback when absent.
  Currency ReadProperty(const std::string& key, Currency fallback) const;
  /// The array of Doubles under key, or fallback when absent; any other type raises 13.
  std::vector<double> ReadProperty(const std::string& key,
                                   const std::vector<double>& fallback) const;

  /// True when a value is stored under key.
  bool Contains(const std::string& key) const { return index_.contains(key); }
  /// The stored type under key, if any.
  std::optional<PropertyType> TypeOf(const std::string& key) const;
  /// Number of keys.
  std::size_t Count() const noexcept { return items_.size(); }
  /// Every (key, value) in the order first written.
  const std::vector<std::pair<std::string, PropertyValue>>& Items() const noexcept {
    return items_;
  }
  /// Removes every key.
  void Clear() noexcept;

  /// The whole bag as CBOR (RFC 8949) bytes.
  std::vector<std::uint8_t> Contents() const;
  /// Replaces the bag with the bag that Contents() produced. Bytes that are not such a
  /// bag (corrupt, truncated, another layout) raise error 5 and leave the bag unchanged.
  void SetContents(const std::vector<std::uint8_t>& bytes);

 private:
  const PropertyValue* Find(const std::string& key) const;

  std::vector<std::pair<std::string, PropertyValue>> items_;
  std::unordered_map<std::string, std::size_t> index_;
};

}  // namespace orvane
