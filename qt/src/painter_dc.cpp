// PainterDC and the conversion of the control's bitmaps (24-bit BGR rows, bottom-up or
// top-down, padded to 4 bytes) into QImage.

#include "orvane/qt/painter_dc.h"

#include <QPainter>
#include <QRect>
#include <QRectF>

#include <climits>
#include <cstddef>
#include <cstdint>

#include "orvane/core/error.h"

namespace orvane::qt {

namespace {

constexpr const char* kSource = "Orvada.PainterDC";

std::uint32_t ReadLittleEndian(const std::uint8_t* p, std::size_t bytes) {
  std::uint32_t value = 0;
  for (std::size_t i = bytes; i-- > 0;) value = (value << 8) | std::uint32_t{p[i]};
  return value;
}

bool IsPlainBitmap(const BitmapInfoHeader& header) noexcept {
  return header.biSize == 40 && header.biPlanes == 1 && header.biBitCount == 24 &&
         header.biCompression == 0 && header.biWidth >= 0 && header.biHeight != INT32_MIN;
}

std::int64_t StrideOf(std::int64_t width) noexcept { return (width * 3 + 3) / 4 * 4; }

}  // namespace

QImage ImageFromBitmap(const BitmapInfoHeader& header, const std::uint8_t* bits) {
  if (!IsPlainBitmap(header)) throw Error(5, kSource, "The bitmap is not a 24-bit uncompressed bitmap.");
  const bool bottomUp = header.biHeight > 0;
  const std::int64_t width = header.biWidth;
  const std::int64_t height = bottomUp ? header.biHeight : -std::int64_t{header.biHeight};
  if (width == 0 || height == 0) return {};
  if (bits == nullptr) throw Error(5, kSource, "The bitmap has no pixel data.");
  QImage image(static_cast<int>(width), static_cast<int>(height), QImage::Format_RGB32);
  if (image.isNull()) {
    throw Error(7, kSource, "There is not enough memory for a picture of " + std::to_string(width) +
                                " x " + std::to_string(height) + " pixels.");
  }
  const std::int64_t stride = StrideOf(width);
  for (std::int64_t y = 0; y < height; ++y) {
    const std::uint8_t* in = bits + (bottomUp ? height - 1 - y : y) * stride;
    auto* out = reinterpret_cast<QRgb*>(image.scanLine(static_cast<int>(y)));
    for (std::int64_t x = 0; x < width; ++x, in += 3) *out++ = qRgb(in[2], in[1], in[0]);
  }
  return image;
}

QImage ImageFromBitmapBlock(const std::vector<std::uint8_t>& block) {
  if (block.size() < 40) return {};
  const std::uint8_t* p = block.data();
  BitmapInfoHeader header;
  header.biSize = ReadLittleEndian(p, 4);
  header.biWidth = static_cast<std::int32_t>(ReadLittleEndian(p + 4, 4));
  header.biHeight = static_cast<std::int32_t>(ReadLittleEndian(p + 8, 4));
  header.biPlanes = static_cast<std::uint16_t>(ReadLittleEndian(p + 12, 2));
  header.biBitCount = static_cast<std::uint16_t>(ReadLittleEndian(p + 14, 2));
  header.biCompression = ReadLittleEndian(p + 16, 4);
  if (!IsPlainBitmap(header)) return {};
  const std::int64_t rows = header.biHeight > 0 ? header.biHeight : -std::int64_t{header.biHeight};
  const std::int64_t needed = StrideOf(header.biWidth) * rows;
  if (static_cast<std::int64_t>(block.size()) - 40 < needed) return {};
  try {
    return ImageFromBitmap(header, p + 40);
  } catch (const Error&) {
    return {};
  }
}

PainterDC::PainterDC(QPainter& painter, QPointF origin, double pixelRatio)
    : painter_(painter), origin_(origin), pixelRatio_(pixelRatio > 0.0 ? pixelRatio : 1.0) {}

void PainterDC::StretchDIBits(int destLeft, int destTop, int destWidth, int destHeight, int srcLeft,
                              int srcTop, int srcWidth, int srcHeight, const std::uint8_t* bits,
                              const BitmapInfoHeader& header) {
  if (!IsPlainBitmap(header)) throw Error(5, kSource, "The bitmap is not a 24-bit uncompressed bitmap.");
  if (destWidth < 0 || destHeight < 0 || srcWidth < 0 || srcHeight < 0) {
    throw Error(5, kSource, "A copy rectangle has a negative width or height.");
  }
  if (destWidth == 0 || destHeight == 0 || srcWidth == 0 || srcHeight == 0) return;
  const QImage image = ImageFromBitmap(header, bits);
  if (image.isNull()) return;
  // Only the part of the source inside the bitmap is copied, onto the matching part of
  // the destination.
  const QRect source(srcLeft, srcTop, srcWidth, srcHeight);
  const QRect inside = source & image.rect();
  if (inside.isEmpty()) return;
  const double sx = static_cast<double>(destWidth) / srcWidth;
  const double sy = static_cast<double>(destHeight) / srcHeight;
  const QRectF target(origin_.x() + (destLeft + (inside.left() - srcLeft) * sx) / pixelRatio_,
                      origin_.y() + (destTop + (inside.top() - srcTop) * sy) / pixelRatio_,
                      inside.width() * sx / pixelRatio_, inside.height() * sy / pixelRatio_);
  painter_.save();
  painter_.setRenderHint(QPainter::SmoothPixmapTransform, false);
  painter_.drawImage(target, image, QRectF(inside));
  painter_.restore();
}

}  // namespace orvane::qt
