#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>

namespace orvane {

/// Runtime errors raised by the library's own helpers carry this source.
inline constexpr const char* kRuntimeSource = "Orvada";

/// Base of the object-defined error numbers (domain errors add a small number to it).
inline constexpr std::int32_t kObjectErrorBase = -2147221504;

/// The error every failing call raises: a number, the object that raised it and a text.
class Error : public std::runtime_error {
 public:
  /// An empty description takes the standard text of the number, where there is one.
  Error(std::int32_t number, std::string source, std::string description = {});

  /// The error number (5 invalid argument, 6 overflow, 9 subscript, 13 type mismatch, ...).
  std::int32_t Number() const noexcept { return number_; }
  /// The raising object, such as "Orvada.Line" or "Orvadis.Dataset".
  const std::string& Source() const noexcept { return source_; }
  /// The human-readable text.
  const std::string& Description() const noexcept { return description_; }

  /// The standard text of a runtime error number; empty when there is none.
  static std::string StandardDescription(std::int32_t number);

 private:
  std::int32_t number_;
  std::string source_;
  std::string description_;
};

}  // namespace orvane
