#include "control/fitting_zoom.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "control/surface_state.h"
#include "orvane/control/surface.h"

namespace orvane::detail {

double FittingZoom(Surface& surface, int width, int height) {
  SurfaceState& s = SurfaceAccess::State(surface);
  const std::array<double, 3> lengths = Renderer::CubeLengths(s.axes);
  const bool is3D = surface.PlotType() == orvPlotType3D;
  double m[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
  if (is3D) {
    s.Trackball().GetRotationMatrix(m);
  } else {
    m[5] = m[10] = -1.0;  // -180 degrees about X
  }
  double halfX = 0.0, halfY = 0.0;
  for (int corner = 0; corner < 8; ++corner) {
    const double c[3] = {((corner & 1) - 0.5) * lengths[0], -(((corner >> 1) & 1) - 0.5) * lengths[1],
                         (((corner >> 2) & 1) - 0.5) * lengths[2]};
    halfX = std::max(halfX, std::fabs(m[0] * c[0] + m[4] * c[1] + m[8] * c[2]));
    halfY = std::max(halfY, std::fabs(m[1] * c[0] + m[5] * c[1] + m[9] * c[2]));
  }
  if (!(halfX > 0.0) || !(halfY > 0.0)) return 1.0;
  const double aspect = static_cast<double>(width) / height;
  const double extentX = aspect > 1.0 ? aspect : 1.0, extentY = aspect > 1.0 ? 1.0 : 1.0 / aspect;
  const double legend = s.passes->LegendRoom(width, height), band = s.passes->CaptionBand(width, height);
  const double plotW = std::max(width - legend, 1.0), plotH = std::max(height - band, 1.0);
  // The share of the plot area the cube may span: the rest is for the labels and titles.
  // A flat map has them on two sides only, and the Y title, written across, needs more
  // room than the X title below.
  const bool flatFitted = !is3D && surface.FitPlotArea();
  const double fill = 0.72, fillX = flatFitted ? 0.68 : fill, fillY = flatFitted ? 0.80 : fill;
  double zoom = 0.0;
  if (is3D || surface.FitPlotArea()) {
    const double shrink = std::min(plotW / width, plotH / height);
    zoom = std::min(fillX * plotW / width * extentX / (halfX * shrink), fillY * plotH / height * extentY / (halfY * shrink));
  } else {
    // Centred on the control: as far as the nearer of the legend's edge and the band's.
    const double right = 2.0 * plotW / width - 1.0, top = 1.0 - 2.0 * band / height;
    zoom = std::min(fill * right * extentX / halfX, fill * top * extentY / halfY);
  }
  return std::isfinite(zoom) && zoom > 0.0 ? zoom : 1.0;
}

}  // namespace orvane::detail
