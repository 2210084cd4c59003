// Output outside the window's paint: the clipboard, drawing into a caller's device
// context at any size, and the sample data.

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "orvane/control/surface.h"
#include "surface_state.h"

namespace orvane {

bool Surface::CopyToClipboard() noexcept {
  try {
    // The last picture drawn, as it is: header, then the rows.
    const detail::Bitmap& image = state_->target.Image();
    if (image.bits.empty()) return false;
    const auto header = SerializeBitmapInfoHeader(image.header);
    std::vector<std::uint8_t> block(header.size() + image.bits.size());
    std::copy(header.begin(), header.end(), block.begin());
    std::copy(image.bits.begin(), image.bits.end(), block.begin() + static_cast<std::ptrdiff_t>(header.size()));
    return host_.SetClipboardBitmap(block);
  } catch (...) {
    return false;
  }
}

void Surface::DrawToDC(DeviceContext& dc, std::int32_t left, std::int32_t top, std::int32_t width,
                       std::int32_t height) {
  detail::SurfaceState& s = *state_;
  // The drawing context of the asked size comes first, so that a refused size changes
  // nothing.
  detail::RenderTarget drawing;
  drawing.Create(width, height, s.samples);
  // Fonts and display lists belong to the control's context; the new one needs its own.
  s.redrawRequired = true;
  InvalidateFonts();
  s.renderer.ReleaseLists(s.target);
  InvalidatePlots();
  PaintStep(drawing, &dc, left, top);
  s.renderer.ReleaseLists(drawing);
  drawing.Release();
  // Back to the control's own context and size.
  InvalidateFonts();
  InvalidatePlots();
  Refresh();
}

void Surface::ShowSampleData() {
  // A 30 x 30 grid over 0..4 x 0..4. The surface is 0.3 sin(X Y), while the caption has
  // always read "sin(X + Y)": both are kept as they are.
  constexpr int kSide = 30;
  std::vector<double> x(kSide), y(kSide), z(static_cast<std::size_t>(kSide * kSide));
  for (int i = 0; i < kSide; ++i) {
    x[static_cast<std::size_t>(i)] = i * 4.0 / 29.0;
    y[static_cast<std::size_t>(i)] = i * 4.0 / 29.0;
  }
  for (std::size_t i = 0; i < x.size(); ++i) {
    for (std::size_t j = 0; j < y.size(); ++j) z[i * y.size() + j] = 0.3 * std::sin(x[i] * y[j]);
  }
  // A concave user hull cutting two corners.
  const std::vector<double> hullX{0, 3, 2.2, 4, 4, 2.6, 0.8, 0};
  const std::vector<double> hullY{0, 0, 0.8, 2.6, 4, 4, 2.2, 3};

  Reset();

  orvane::Axes& axes = state_->axes;
  axes.XAxis().SetTitle("X");
  axes.YAxis().SetTitle("Y");
  axes.ZAxis().SetTitle("Z");
  axes.ZAxis().SetAutoRangeType(orvAutoRangeRounded);
  axes.ZAxis().SetMajorInterval(10);

  // Reset left one empty data set: the sample fills it.
  state_->dataSets.SetCount(1);
  DataSet& data = state_->dataSets.Item(0);
  data.DataAsRectangularGridSet(x, kSide, y, kSide, Array2D(z, kSide, kSide));
  data.UserHullSet(static_cast<std::int32_t>(hullX.size()), hullX, hullY);
  state_->contouring.SetInterpolateColors(true);
  axes.ZAxis().SetZoom(0.3);

  state_->header.SetText("Z = 0.3 * sin(X + Y)");
  Refresh();
}

}  // namespace orvane
