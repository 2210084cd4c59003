// FormatNumber with any pattern and any double (NaN payloads and subnormals included),
// and the label pattern LabelFormatFor picks for any values. Neither ever throws.

#include <fuzzer/FuzzedDataProvider.h>

#include <bit>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "fuzz_support.h"
#include "orvane/core/format.h"

using orvane::fuzz::Check;
using orvane::fuzz::Fail;

namespace {

std::string Format(double value, const std::string& pattern) {
  try {
    return orvane::FormatNumber(value, pattern);
  } catch (const std::exception& e) {
    Fail(std::string("FormatNumber threw: ") + e.what());
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzedDataProvider fuzz(data, size);
  std::vector<double> values;
  const std::size_t count = fuzz.ConsumeIntegralInRange<std::size_t>(1, 8);
  for (std::size_t i = 0; i < count; ++i) values.push_back(std::bit_cast<double>(fuzz.ConsumeIntegral<std::uint64_t>()));
  const std::string pattern = fuzz.ConsumeRemainingBytesAsString();

  // A number has at most 309 integer digits and a pattern asks for at most its own
  // length in digits, separators and literal text; sections never add up.
  const std::size_t bound = 4 * pattern.size() + 1024;
  for (double v : values) Check(Format(v, pattern).size() <= bound, "FormatNumber's text is out of all proportion");

  std::string label;
  try {
    label = orvane::LabelFormatFor(values);
  } catch (const std::exception& e) {
    Fail(std::string("LabelFormatFor threw: ") + e.what());
  }
  for (double v : values) Check(!Format(v, label).empty(), "a label pattern gave no text");
  return 0;
}
