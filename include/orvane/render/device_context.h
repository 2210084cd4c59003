#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "orvane/core/color.h"

namespace orvane {

/// The header of a device-independent bitmap, field for field the Windows
/// BITMAPINFOHEADER (40 bytes, no padding). The control's own bitmaps are 24-bit BGR,
/// uncompressed, bottom-up (positive biHeight), each row padded to a multiple of 4 bytes.
struct BitmapInfoHeader {
  std::uint32_t biSize = 40;         ///< size of this header in bytes
  std::int32_t biWidth = 0;          ///< width in pixels
  std::int32_t biHeight = 0;         ///< height in pixels; positive: the last row comes first
  std::uint16_t biPlanes = 1;        ///< always 1
  std::uint16_t biBitCount = 24;     ///< bits per pixel
  std::uint32_t biCompression = 0;   ///< 0 = BI_RGB, uncompressed
  std::uint32_t biSizeImage = 0;     ///< bytes of pixel data; advisory only
  std::int32_t biXPelsPerMeter = 0;  ///< horizontal resolution, 0 = unknown
  std::int32_t biYPelsPerMeter = 0;  ///< vertical resolution, 0 = unknown
  std::uint32_t biClrUsed = 0;       ///< palette entries; 0 for 24-bit bitmaps
  std::uint32_t biClrImportant = 0;  ///< palette entries that matter; 0 = all
  friend bool operator==(const BitmapInfoHeader&, const BitmapInfoHeader&) = default;
};
static_assert(sizeof(BitmapInfoHeader) == 40, "BitmapInfoHeader must match BITMAPINFOHEADER");

/// The header as 40 little-endian bytes, in field order: the form a bitmap takes on a
/// clipboard or in a file.
std::array<std::uint8_t, 40> SerializeBitmapInfoHeader(const BitmapInfoHeader& header) noexcept;

/// Where the control's pixels go: the host's window, a printer, an image. The control
/// only ever hands over a finished bitmap.
class DeviceContext {
 public:
  virtual ~DeviceContext() = default;

  /// Copies the source rectangle of a bitmap onto the destination rectangle, stretching
  /// when the sizes differ. Both rectangles are in pixels with the origin at the top-left
  /// corner of the picture as seen (whatever the row order of the bits). bits holds the
  /// rows as header describes them: 24-bit BGR, bottom-up for a positive biHeight and
  /// top-down for a negative one, each row padded to 4 bytes. A rectangle with a zero
  /// width or height copies nothing; pixels falling outside the bitmap or the device are
  /// skipped.
  virtual void StretchDIBits(int destLeft, int destTop, int destWidth, int destHeight,
                             int srcLeft, int srcTop, int srcWidth, int srcHeight,
                             const std::uint8_t* bits, const BitmapInfoHeader& header) = 0;

 protected:
  DeviceContext() = default;
  DeviceContext(const DeviceContext&) = default;
  DeviceContext& operator=(const DeviceContext&) = default;
};

/// A device context that is an RGB image in memory, white when made; for output to PNG
/// files and for tests.
class ImageDC : public DeviceContext {
 public:
  /// The largest width and height accepted, in pixels.
  static constexpr int kMaxSide = 16384;

  /// A white image of width x height pixels. Either side outside 1..kMaxSide raises
  /// error 5 (source "Orvada.ImageDC").
  ImageDC(int width, int height);

  /// Nearest-neighbour copy, clipped to the image; an exact copy when the sizes match.
  /// A header that is not 24-bit uncompressed, a negative rectangle size, or null bits
  /// for a non-empty copy raise error 5 and leave the image unchanged.
  void StretchDIBits(int destLeft, int destTop, int destWidth, int destHeight, int srcLeft,
                     int srcTop, int srcWidth, int srcHeight, const std::uint8_t* bits,
                     const BitmapInfoHeader& header) override;

  int Width() const noexcept { return width_; }
  int Height() const noexcept { return height_; }
  /// The colour of one pixel (0x00BBGGRR), origin at the top-left. A pixel outside the
  /// image raises error 9 (subscript out of range).
  Color Pixel(int x, int y) const;
  /// The pixels as R, G, B bytes, rows top to bottom, no padding.
  const std::vector<std::uint8_t>& Rgb() const noexcept { return rgb_; }

  /// Writes the image as an 8-bit RGB PNG file, replacing any file of that name. A file
  /// that cannot be written raises error 5 naming the file and the system's or libpng's
  /// reason; a partly written file is removed.
  void SavePng(const std::string& path) const;
  /// The image as the bytes of a PNG file (error 5 when libpng refuses it).
  std::vector<std::uint8_t> EncodePng() const;

 private:
  int width_;
  int height_;
  std::vector<std::uint8_t> rgb_;
};

}  // namespace orvane
