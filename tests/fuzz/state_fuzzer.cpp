// Surface::SetState in both forms on a control that holds the sample data and draws at
// 64 x 48: a refused State leaves the control's State as it was, and an accepted one
// reads back to the same bytes.

#include <cstddef>
#include <cstdint>
#include <vector>

#include "fuzz_support.h"
#include "orvane/control/surface.h"
#include "orvane/host/headless_host.h"

using orvane::fuzz::Accepted;
using orvane::fuzz::CheckSame;

namespace {

void Try(orvane::Surface& surface, const std::vector<std::uint8_t>& bytes, std::int32_t type) {
  const auto before = surface.State(orvane::orvStateTypeFormattingAndData);
  if (!Accepted([&] { surface.SetState(bytes, type); })) {
    CheckSame(before, surface.State(orvane::orvStateTypeFormattingAndData), "a refused State changed the control");
    return;
  }
  const std::int32_t form = type == orvane::orvStateTypeFormattingAndData ? type : orvane::orvStateTypeFormatting;
  const auto taken = surface.State(form);
  // Its own State may be refused only as any other: kriging's Sill reads back as 2, which
  // a Nugget above 2 refuses when the grid is made, and then nothing changes.
  const auto now = surface.State(orvane::orvStateTypeFormattingAndData);
  if (Accepted([&] { surface.SetState(taken, form); })) {
    if (!orvane::fuzz::Krigs(taken)) {
      CheckSame(orvane::fuzz::AsReadBack(taken), surface.State(form), "an accepted State did not read back to the same bytes");
    }
  } else {
    CheckSame(now, surface.State(orvane::orvStateTypeFormattingAndData), "a refused State changed the control");
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  orvane::fuzz::Control c(true);
  const std::vector<std::uint8_t> bytes(data, data + size);
  Try(c.surface, bytes, orvane::orvStateTypeFormattingAndData);
  Try(c.surface, bytes, orvane::orvStateTypeFormatting);
  return 0;
}
