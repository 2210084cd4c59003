#pragma once

#include <QImage>
#include <QPointF>

#include <cstdint>
#include <vector>

#include "orvane/render/device_context.h"

class QPainter;

namespace orvane::qt {

/// A device context that draws through a QPainter: destination pixels map to painter
/// coordinates as origin + pixel / pixelRatio, so with the paint device's device pixel
/// ratio every bitmap pixel lands on one device pixel.
class PainterDC : public orvane::DeviceContext {
 public:
  /// Draws with painter (which must outlive the context).
  explicit PainterDC(QPainter& painter, QPointF origin = {}, double pixelRatio = 1.0);

  /// Nearest-neighbour copy through the painter; the same checks as ImageDC (error 5).
  void StretchDIBits(int destLeft, int destTop, int destWidth, int destHeight, int srcLeft,
                     int srcTop, int srcWidth, int srcHeight, const std::uint8_t* bits,
                     const BitmapInfoHeader& header) override;

 private:
  QPainter& painter_;
  QPointF origin_;
  double pixelRatio_;
};

/// The picture a 24-bit bitmap shows, top row first, as an RGB32 image (null for an
/// empty bitmap). Raises error 5 for any other kind of bitmap or null bits.
QImage ImageFromBitmap(const BitmapInfoHeader& header, const std::uint8_t* bits);

/// The picture of a bitmap block as a clipboard holds it (the 40-byte header, then the
/// rows); a null image when the block is not a whole 24-bit bitmap.
QImage ImageFromBitmapBlock(const std::vector<std::uint8_t>& block);

}  // namespace orvane::qt
