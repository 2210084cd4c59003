// A data set fed hostile points (NaN, infinities, huge and subnormal values, duplicates,
// collinear runs) as scattered points, a rectangular grid or a blanked grid; then
// triangulated, contoured, resampled by the resampler and settings the input picks, and
// drawn at 64 x 48 in 2-D or 3-D. Refused data leave the control's State as it was.

#include <fuzzer/FuzzedDataProvider.h>

#include <array>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

#include "fuzz_support.h"
#include "orvane/control/surface.h"
#include "orvane/host/headless_host.h"
#include "orvane/resample/resampling.h"

using orvane::fuzz::Accepted;
using orvane::fuzz::CheckSame;

namespace {

// A value of the kind the input picks.
double Hostile(FuzzedDataProvider& fuzz, const std::vector<double>& earlier) {
  constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
  constexpr double kInf = std::numeric_limits<double>::infinity();
  switch (fuzz.ConsumeIntegralInRange(0, 9)) {
    case 0: return kNaN;
    case 1: return fuzz.ConsumeBool() ? kInf : -kInf;
    case 2: return (fuzz.ConsumeBool() ? 1 : -1) * std::numeric_limits<double>::max() / (1 + fuzz.ConsumeIntegral<std::uint8_t>());
    case 3: return std::numeric_limits<double>::denorm_min() * fuzz.ConsumeIntegral<std::uint8_t>();
    case 4: return earlier.empty() ? 0.0 : earlier[fuzz.ConsumeIntegralInRange<std::size_t>(0, earlier.size() - 1)];
    case 5: return std::bit_cast<double>(fuzz.ConsumeIntegral<std::uint64_t>());
    case 6: return 1e15 + fuzz.ConsumeIntegral<std::uint8_t>() * 1e-3;  // far from 0, close together
    default: return fuzz.ConsumeIntegralInRange(-1000, 1000) / 8.0;
  }
}

std::vector<double> Values(FuzzedDataProvider& fuzz, std::size_t count) {
  std::vector<double> v;
  for (std::size_t i = 0; i < count; ++i) v.push_back(Hostile(fuzz, v));
  return v;
}

// Scattered points; some repeat an earlier point or lie on the line through the first two.
void Points(FuzzedDataProvider& fuzz, std::vector<double>& x, std::vector<double>& y) {
  const std::size_t n = fuzz.ConsumeIntegralInRange<std::size_t>(0, 200);
  for (std::size_t i = 0; i < n; ++i) {
    const int how = fuzz.ConsumeIntegralInRange(0, 3);
    if (how == 1 && i > 0) {
      const std::size_t k = fuzz.ConsumeIntegralInRange<std::size_t>(0, i - 1);
      x.push_back(x[k]);
      y.push_back(y[k]);
    } else if (how == 2 && i > 1) {
      const double t = fuzz.ConsumeIntegralInRange(-64, 64) / 4.0;
      x.push_back(x[0] + t * (x[1] - x[0]));
      y.push_back(y[0] + t * (y[1] - y[0]));
    } else {
      x.push_back(Hostile(fuzz, x));
      y.push_back(Hostile(fuzz, y));
    }
  }
}

void Settle(orvane::Surface& s, FuzzedDataProvider& fuzz) {
  auto& r = s.DataSets().Item(0).Resampling();
  Accepted([&] { r.SetResamplerType(fuzz.ConsumeIntegralInRange(0, 4)); });
  Accepted([&] { r.SetIntervalCount(fuzz.ConsumeIntegralInRange(-1, 24)); });
  if (fuzz.ConsumeBool()) {
    Accepted([&] { r.SetAutoRange(false); });
    Accepted([&] { r.SetXMin(Hostile(fuzz, {})); });
    Accepted([&] { r.SetXMax(Hostile(fuzz, {})); });
    Accepted([&] { r.SetYMin(Hostile(fuzz, {})); });
    Accepted([&] { r.SetYMax(Hostile(fuzz, {})); });
  }
  Accepted([&] { r.SetBlankOutsideHull(fuzz.ConsumeBool()); });
  Accepted([&] { r.InverseDistance().SetWeightingPower(Hostile(fuzz, {})); });
  Accepted([&] { r.InverseDistance().SetMaxPoints(fuzz.ConsumeIntegralInRange(-1, 40)); });
  Accepted([&] { r.InverseDistance().SetRadius(Hostile(fuzz, {})); });
  auto& k = r.Kriging();
  Accepted([&] { k.SetAutoSetRange(fuzz.ConsumeBool()); });
  Accepted([&] { k.SetBlockMode(fuzz.ConsumeBool()); });
  Accepted([&] { k.SetModelSemiVariogram(fuzz.ConsumeIntegralInRange(-1, 4)); });
  Accepted([&] { k.SetNugget(Hostile(fuzz, {})); });
  Accepted([&] { k.SetSill(Hostile(fuzz, {})); });
  Accepted([&] { k.SetRange(Hostile(fuzz, {})); });
  Accepted([&] { r.NNGridR().SetTaughtness(Hostile(fuzz, {})); });
  Accepted([&] { r.NNGridR().SetUseGradients(fuzz.ConsumeBool()); });
  Accepted([&] { s.Contouring().SetAutoSetIntervalCount(fuzz.ConsumeIntegralInRange(-1, 40)); });
  Accepted([&] { s.SetPlotType(fuzz.ConsumeIntegralInRange(0, 1)); });
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  orvane::fuzz::Control c(false);
  FuzzedDataProvider fuzz(data, size);
  orvane::Surface& s = c.surface;
  orvane::DataSet& set = s.DataSets().Item(0);

  Settle(s, fuzz);
  const auto before = s.State(orvane::orvStateTypeFormattingAndData);
  const int shape = fuzz.ConsumeIntegralInRange(0, 2);
  bool taken = false;
  if (shape == 0) {
    std::vector<double> x, y;
    Points(fuzz, x, y);
    const auto z = Values(fuzz, x.size());
    taken = Accepted([&] { set.DataAsSparseGridSet(x, y, z); });
  } else {
    const auto x = Values(fuzz, fuzz.ConsumeIntegralInRange<std::size_t>(0, 24));
    const auto y = Values(fuzz, fuzz.ConsumeIntegralInRange<std::size_t>(0, 24));
    const auto z = Values(fuzz, x.size() * y.size());
    taken = Accepted([&] {
      if (shape == 1) {
        set.DataAsRectangularGridSet(x, y, z);
      } else {
        set.DataAsBlankedGridSet(x, y, z);
      }
    });
  }
  if (!taken) {
    CheckSame(before, s.State(orvane::orvStateTypeFormattingAndData), "refused data changed the control");
    return 0;
  }

  Accepted([&] { s.Refresh(); });
  const auto levels = Values(fuzz, fuzz.ConsumeIntegralInRange<std::size_t>(0, 6));
  Accepted([&] { set.ContourLines(levels, fuzz.ConsumeBool()); });
  Accepted([&] { set.ContourBands(levels, fuzz.ConsumeBool()); });
  Accepted([&] { set.MeshTriangles(); });
  Accepted([&] { set.ResampledGrid(); });
  double z = 0;
  const double px = Hostile(fuzz, {});
  const double py = Hostile(fuzz, {});
  Accepted([&] { set.ZValueInterpolate(px, py, z); });

  // The control's own State: kriging's Sill reads back as 2, which a Nugget above 2 refuses
  // when the grid is made; refused, the control must be as it was, and taken, as the
  // State says.
  const auto state = s.State(orvane::orvStateTypeFormattingAndData);
  const bool took = Accepted([&] { s.SetState(state, orvane::orvStateTypeFormattingAndData); });
  if (!took) {
    CheckSame(state, s.State(orvane::orvStateTypeFormattingAndData), "a refused State changed the control");
  } else if (!orvane::fuzz::Krigs(state)) {
    CheckSame(orvane::fuzz::AsReadBack(state), s.State(orvane::orvStateTypeFormattingAndData),
              "the State did not read back to the same bytes");
  }
  return 0;
}
