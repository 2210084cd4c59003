// The XYZ text reader on any bytes: with the default options and with invalid rows
// skipped, then duplicate points merged.

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <sstream>
#include <string>

#include "fuzz_support.h"
#include "orvane/data/xyz_file.h"

using orvane::fuzz::Accepted;
using orvane::fuzz::Check;

namespace {

void CheckShape(const orvane::XyzPoints& p) {
  Check(p.x.size() == p.y.size() && p.y.size() == p.z.size(), "X, Y and Z differ in length");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);

  orvane::XyzPoints strict;
  const bool accepted = Accepted([&] {
    std::istringstream in(text);
    strict = orvane::ReadXyzText(in, "fuzz.xyz");
  });

  orvane::XyzReadOptions options;
  options.skipInvalid = true;
  orvane::XyzPoints lenient;
  const bool lenientAccepted = Accepted([&] {
    std::istringstream in(text);
    lenient = orvane::ReadXyzText(in, "fuzz.xyz", options);
  });

  if (accepted) {
    CheckShape(strict);
    Check(strict.skipped == 0, "the strict read skipped rows");
    // Text the strict reader takes has no invalid row, so skipping changes nothing.
    Check(lenientAccepted, "skipping invalid rows refused text the strict read took");
    Check(lenient.x == strict.x && lenient.y == strict.y && lenient.skipped == 0,
          "skipping invalid rows changed text the strict read took");
  }
  if (lenientAccepted) {
    CheckShape(lenient);
    for (std::size_t i = 0; i < lenient.x.size(); ++i) {
      Check(std::isfinite(lenient.x[i]) && std::isfinite(lenient.y[i]), "a kept row has a bad X or Y");
    }
    const std::size_t before = lenient.x.size();
    const std::size_t removed = orvane::MergeDuplicatePoints(lenient);
    CheckShape(lenient);
    Check(lenient.x.size() + removed == before, "merging lost count of the points");
  }
  return 0;
}
