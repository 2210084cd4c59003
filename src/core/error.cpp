#include "orvane/core/error.h"

#include <utility>

namespace orvane {

namespace {

std::string DescriptionOrStandard(std::int32_t number, std::string description) {
  if (description.empty()) return Error::StandardDescription(number);
  return description;
}

}  // namespace

Error::Error(std::int32_t number, std::string source, std::string description)
    : std::runtime_error(DescriptionOrStandard(number, description)),
      number_(number),
      source_(std::move(source)),
      description_(DescriptionOrStandard(number, std::move(description))) {}

std::string Error::StandardDescription(std::int32_t number) {
  switch (number) {
    case 5: return "Invalid procedure call or argument";
    case 6: return "Overflow";
    case 7: return "Out of memory";
    case 9: return "Subscript out of range";
    case 13: return "Type mismatch";
    case 18: return "User interrupt occurred";
    case 380: return "Invalid property value";
    default: return {};
  }
}

}  // namespace orvane
