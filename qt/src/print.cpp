#include "orvane/qt/print.h"

#include <QPagedPaintDevice>
#include <QPainter>

#include <algorithm>
#include <cmath>

#include "orvane/control/surface.h"
#include "orvane/core/error.h"
#include "orvane/qt/painter_dc.h"

namespace orvane::qt {

namespace {

// The drawing target's largest side.
constexpr double kMostPixels = 16384.0;
constexpr double kMostDpi = 300.0;

}  // namespace

QRectF PrintSurface(Surface& surface, QPagedPaintDevice& device) {
  QPainter painter;
  if (!painter.begin(&device)) throw Error(5, "Orvada.Surface", "The printer or file cannot be drawn on.");
  // The page's printable area in device pixels, and the size of a device pixel in inches.
  const QRectF page(0.0, 0.0, device.width(), device.height());
  const double dpi = std::max(1, device.logicalDpiX());
  // The plot takes the widest 4:3 box the page holds, centred on it.
  constexpr double aspect = 4.0 / 3.0;
  QRectF target = page;
  if (page.width() / page.height() > aspect) {
    target.setWidth(page.height() * aspect);
  } else {
    target.setHeight(page.width() / aspect);
  }
  target.moveCenter(page.center());
  // Rendered at the device's resolution, at most 300 dpi and within the target's limit;
  // the painter scales the picture onto the page.
  const double scale = std::min({1.0, kMostDpi / dpi, kMostPixels / target.width(), kMostPixels / target.height()});
  const int width = std::max(1, static_cast<int>(std::lround(target.width() * scale)));
  const int height = std::max(1, static_cast<int>(std::lround(target.height() * scale)));
  painter.setRenderHint(QPainter::SmoothPixmapTransform, true);
  PainterDC dc(painter, target.topLeft(), scale);
  try {
    surface.DrawToDC(dc, 0, 0, width, height);
  } catch (...) {
    painter.end();
    throw;
  }
  painter.end();
  return target;
}

}  // namespace orvane::qt
