#include "color_map_icons.h"

#include <QPainter>

#include "orvane/contour/contouring.h"
#include "orvane/core/color.h"

namespace orvane::viewer {

namespace {

constexpr int kBands = 24;

}  // namespace

QSize ColorMapIconSize() { return {72, 14}; }

QImage ColorMapPreview(std::int32_t type, QSize size) {
  QImage image(size, QImage::Format_RGB32);
  image.fill(QColor(96, 96, 96));
  // A scratch set of levels coloured by the map, exactly as the plot colours its bands.
  Contouring contouring;
  contouring.SetAutoSetContoursType(orvAutoSetByIntervalCount);
  contouring.SetAutoSetIntervalCount(kBands);
  contouring.SetColorMapType(type);
  contouring.AutoSetContours(0.0, 1.0);
  if (contouring.Contours().Count() == 0 || size.width() < 3 || size.height() < 3) return image;
  for (int x = 1; x < size.width() - 1; ++x) {
    const double z = (x - 0.5) / (size.width() - 2);
    const ColorBytes c = SplitColor(contouring.FindColor(z, false));
    const QRgb rgb = qRgb(c.red, c.green, c.blue);
    for (int y = 1; y < size.height() - 1; ++y) image.setPixel(x, y, rgb);
  }
  return image;
}

QIcon ColorMapIcon(std::int32_t type) {
  QIcon icon;
  const QSize size = ColorMapIconSize();
  icon.addPixmap(QPixmap::fromImage(ColorMapPreview(type, size)));
  icon.addPixmap(QPixmap::fromImage(ColorMapPreview(type, size * 2)));
  return icon;
}

}  // namespace orvane::viewer
