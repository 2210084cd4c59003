// PropertyBag::SetContents on any bytes, every typed read of what it took, and the whole
// control reading the bag: a refusal changes nothing, and what is taken writes back
// bytes that read back to themselves.

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "fuzz_support.h"
#include "orvane/control/surface.h"
#include "orvane/core/property_bag.h"
#include "orvane/host/headless_host.h"

using orvane::PropertyBag;
using orvane::fuzz::Accepted;
using orvane::fuzz::Check;
using orvane::fuzz::CheckSame;
using orvane::fuzz::MustAccept;

namespace {

std::vector<std::uint8_t> Written(const orvane::Surface& surface) {
  PropertyBag bag;
  surface.WriteProperties(bag);
  return bag.Contents();
}

void ReadEveryWay(const PropertyBag& bag) {
  for (const auto& item : bag.Items()) {
    const std::string& key = item.first;
    Accepted([&] { bag.ReadProperty(key, std::int32_t{0}); });
    Accepted([&] { bag.ReadProperty(key, std::int16_t{0}); });
    Accepted([&] { bag.ReadProperty(key, false); });
    Accepted([&] { bag.ReadProperty(key, 0.0); });
    Accepted([&] { bag.ReadProperty(key, std::string()); });
    Accepted([&] { bag.ReadProperty(key, orvane::Currency{}); });
    Accepted([&] { bag.ReadProperty(key, std::vector<double>{}); });
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::vector<std::uint8_t> bytes(data, data + size);

  PropertyBag bag;
  bag.WriteProperty("Kept", std::string("as it was"));
  const auto before = bag.Contents();
  if (!Accepted([&] { bag.SetContents(bytes); })) {
    Check(bag.Contents() == before, "a refused SetContents changed the bag");
    return 0;
  }
  const auto contents = bag.Contents();
  PropertyBag again;
  MustAccept("a bag refused its own contents", [&] { again.SetContents(contents); });
  Check(again.Contents() == contents, "a bag's contents did not read back to themselves");
  ReadEveryWay(bag);

  orvane::HeadlessHost host;
  orvane::Surface surface(host);
  surface.InitProperties();
  const auto defaults = Written(surface);
  if (!Accepted([&] { surface.ReadProperties(bag); })) {
    CheckSame(defaults, Written(surface), "a refused bag changed the control");
    return 0;
  }
  const auto taken = Written(surface);
  PropertyBag written;
  written.SetContents(taken);
  orvane::Surface other(host);
  other.InitProperties();
  MustAccept("a control refused what another wrote", [&] { other.ReadProperties(written); });
  CheckSame(orvane::fuzz::AsReadBack(taken), Written(other), "what a control wrote read back to different bytes");
  return 0;
}
