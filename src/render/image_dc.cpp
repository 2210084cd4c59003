// BitmapInfoHeader serialisation and ImageDC, the in-memory device context.

#include <png.h>

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <algorithm>
#include <string>

#include "orvane/core/error.h"
#include "orvane/render/device_context.h"

namespace orvane {

namespace {

constexpr const char* kImageSource = "Orvada.ImageDC";

template <class T>
std::uint8_t* PutLittleEndian(std::uint8_t* out, T value) {
  auto bits = static_cast<std::uint32_t>(value);
  for (std::size_t i = 0; i < sizeof(T); ++i) {
    *out++ = static_cast<std::uint8_t>(bits & 0xFFu);
    bits >>= 8;
  }
  return out;
}

}  // namespace

std::array<std::uint8_t, 40> SerializeBitmapInfoHeader(const BitmapInfoHeader& header) noexcept {
  std::array<std::uint8_t, 40> bytes{};
  std::uint8_t* out = bytes.data();
  out = PutLittleEndian(out, header.biSize);
  out = PutLittleEndian(out, header.biWidth);
  out = PutLittleEndian(out, header.biHeight);
  out = PutLittleEndian(out, header.biPlanes);
  out = PutLittleEndian(out, header.biBitCount);
  out = PutLittleEndian(out, header.biCompression);
  out = PutLittleEndian(out, header.biSizeImage);
  out = PutLittleEndian(out, header.biXPelsPerMeter);
  out = PutLittleEndian(out, header.biYPelsPerMeter);
  out = PutLittleEndian(out, header.biClrUsed);
  PutLittleEndian(out, header.biClrImportant);
  return bytes;
}

ImageDC::ImageDC(int width, int height) : width_(width), height_(height) {
  if (width < 1 || height < 1 || width > kMaxSide || height > kMaxSide) {
    throw Error(5, kImageSource,
                "The image size " + std::to_string(width) + " x " + std::to_string(height) +
                    " is invalid: each side must be 1 to " + std::to_string(kMaxSide) +
                    " pixels.");
  }
  rgb_.assign(static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 3u, 0xFF);
}

void ImageDC::StretchDIBits(int destLeft, int destTop, int destWidth, int destHeight,
                            int srcLeft, int srcTop, int srcWidth, int srcHeight,
                            const std::uint8_t* bits, const BitmapInfoHeader& header) {
  if (header.biSize != 40 || header.biPlanes != 1 || header.biBitCount != 24 ||
      header.biCompression != 0 || header.biWidth < 0 || header.biHeight == INT32_MIN) {
    throw Error(5, kImageSource, "The bitmap is not a 24-bit uncompressed bitmap.");
  }
  if (destWidth < 0 || destHeight < 0 || srcWidth < 0 || srcHeight < 0) {
    throw Error(5, kImageSource, "A copy rectangle has a negative width or height.");
  }
  if (destWidth == 0 || destHeight == 0 || srcWidth == 0 || srcHeight == 0) return;
  const std::int64_t bmpWidth = header.biWidth;
  const bool bottomUp = header.biHeight > 0;
  const std::int64_t bmpHeight = bottomUp ? header.biHeight : -std::int64_t{header.biHeight};
  if (bmpWidth == 0 || bmpHeight == 0) return;
  if (bits == nullptr) throw Error(5, kImageSource, "The bitmap has no pixel data.");
  const std::int64_t stride = (bmpWidth * 3 + 3) / 4 * 4;

  // Each destination pixel takes the source pixel under its centre, so equal sizes copy
  // exactly and integer zoom factors repeat every source pixel the same number of times.
  const std::int64_t x0 = std::max<std::int64_t>(destLeft, 0);
  const std::int64_t x1 = std::min<std::int64_t>(std::int64_t{destLeft} + destWidth, width_);
  const std::int64_t y0 = std::max<std::int64_t>(destTop, 0);
  const std::int64_t y1 = std::min<std::int64_t>(std::int64_t{destTop} + destHeight, height_);
  for (std::int64_t y = y0; y < y1; ++y) {
    const std::int64_t sy =
        srcTop + (2 * (y - destTop) + 1) * std::int64_t{srcHeight} / (2 * std::int64_t{destHeight});
    if (sy < 0 || sy >= bmpHeight) continue;
    const std::uint8_t* row = bits + (bottomUp ? bmpHeight - 1 - sy : sy) * stride;
    std::uint8_t* out = rgb_.data() + (y * width_ + x0) * 3;
    for (std::int64_t x = x0; x < x1; ++x, out += 3) {
      const std::int64_t sx =
          srcLeft + (2 * (x - destLeft) + 1) * std::int64_t{srcWidth} / (2 * std::int64_t{destWidth});
      if (sx < 0 || sx >= bmpWidth) continue;
      const std::uint8_t* bgr = row + sx * 3;
      out[0] = bgr[2];
      out[1] = bgr[1];
      out[2] = bgr[0];
    }
  }
}

Color ImageDC::Pixel(int x, int y) const {
  if (x < 0 || y < 0 || x >= width_ || y >= height_) {
    throw Error(9, kImageSource,
                "The pixel (" + std::to_string(x) + ", " + std::to_string(y) +
                    ") lies outside the " + std::to_string(width_) + " x " +
                    std::to_string(height_) + " image.");
  }
  const std::uint8_t* p =
      rgb_.data() + (static_cast<std::size_t>(y) * static_cast<std::size_t>(width_) +
                     static_cast<std::size_t>(x)) * 3u;
  return orvane::Rgb(p[0], p[1], p[2]);
}

void ImageDC::SavePng(const std::string& path) const {
  const auto fail = [&path](const std::string& reason) {
    return Error(5, kImageSource, "Cannot write the image file \"" + path + "\": " + reason + ".");
  };
  std::FILE* file = std::fopen(path.c_str(), "wb");
  if (file == nullptr) throw fail(std::strerror(errno));

  // libpng's simplified API reports its errors in the image record and never jumps
  // through our frames.
  png_image image{};
  image.version = PNG_IMAGE_VERSION;
  image.width = static_cast<png_uint_32>(width_);
  image.height = static_cast<png_uint_32>(height_);
  image.format = PNG_FORMAT_RGB;
  std::string reason;
  if (png_image_write_to_stdio(&image, file, 0, rgb_.data(), 0, nullptr) == 0) {
    reason = image.message;
    png_image_free(&image);
  }
  if (reason.empty() && std::fflush(file) != 0) reason = std::strerror(errno);
  if (std::fclose(file) != 0 && reason.empty()) reason = std::strerror(errno);
  if (!reason.empty()) {
    std::remove(path.c_str());
    throw fail(reason);
  }
}

std::vector<std::uint8_t> ImageDC::EncodePng() const {
  png_image image{};
  image.version = PNG_IMAGE_VERSION;
  image.width = static_cast<png_uint_32>(width_);
  image.height = static_cast<png_uint_32>(height_);
  image.format = PNG_FORMAT_RGB;
  png_alloc_size_t size = 0;
  // A first call measures, the second writes.
  if (png_image_write_to_memory(&image, nullptr, &size, 0, rgb_.data(), 0, nullptr) == 0) {
    const std::string reason = image.message;
    png_image_free(&image);
    throw Error(5, kImageSource, "The image could not be encoded as PNG: " + reason + ".");
  }
  std::vector<std::uint8_t> bytes(size);
  if (png_image_write_to_memory(&image, bytes.data(), &size, 0, rgb_.data(), 0, nullptr) == 0) {
    const std::string reason = image.message;
    png_image_free(&image);
    throw Error(5, kImageSource, "The image could not be encoded as PNG: " + reason + ".");
  }
  bytes.resize(size);
  return bytes;
}

}  // namespace orvane
