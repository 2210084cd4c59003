// The control's bitmaps (24-bit BGR rows, padded, bottom-up or top-down) as QImage, and
// PainterDC's copies: exact, stretched, clipped, offset and at a device pixel ratio.

#include <gtest/gtest.h>

#include <QColor>
#include <QImage>
#include <QPainter>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <tuple>
#include <vector>

#include "orvane/core/error.h"
#include "orvane/qt/painter_dc.h"

namespace orvane::qt {
namespace {

const QRgb kRed = qRgb(255, 0, 0), kGreen = qRgb(0, 255, 0), kBlue = qRgb(0, 0, 255);
const QRgb kWhite = qRgb(255, 255, 255), kBlack = qRgb(0, 0, 0), kOdd = qRgb(10, 20, 30);
const QRgb kGrey = qRgb(128, 128, 128);

// A 3 x 2 picture: red, green, blue over white, black, (10, 20, 30). Rows of 9 bytes
// padded to 12, in memory bottom row first unless topDown.
struct Sample {
  BitmapInfoHeader header;
  std::vector<std::uint8_t> bits;

  explicit Sample(bool topDown = false) {
    header.biWidth = 3;
    header.biHeight = topDown ? -2 : 2;
    const QRgb rows[2][3] = {{kRed, kGreen, kBlue}, {kWhite, kBlack, kOdd}};
    for (int r = 0; r < 2; ++r) {
      const QRgb* row = rows[topDown ? r : 1 - r];
      for (int x = 0; x < 3; ++x) {
        bits.push_back(static_cast<std::uint8_t>(qBlue(row[x])));
        bits.push_back(static_cast<std::uint8_t>(qGreen(row[x])));
        bits.push_back(static_cast<std::uint8_t>(qRed(row[x])));
      }
      bits.insert(bits.end(), {0xEE, 0xEE, 0xEE});  // padding, never a pixel
    }
  }
  std::vector<std::uint8_t> Block() const {
    const auto head = SerializeBitmapInfoHeader(header);
    std::vector<std::uint8_t> block(head.size() + bits.size());
    std::copy(head.begin(), head.end(), block.begin());
    std::copy(bits.begin(), bits.end(), block.begin() + static_cast<std::ptrdiff_t>(head.size()));
    return block;
  }
};

void ExpectSamplePicture(const QImage& image) {
  ASSERT_EQ(image.size(), QSize(3, 2));
  const QRgb expected[2][3] = {{kRed, kGreen, kBlue}, {kWhite, kBlack, kOdd}};
  for (int y = 0; y < 2; ++y) {
    for (int x = 0; x < 3; ++x) EXPECT_EQ(image.pixel(x, y), expected[y][x]) << x << ", " << y;
  }
}

QImage Canvas(int width, int height) {
  QImage canvas(width, height, QImage::Format_RGB32);
  canvas.fill(kGrey);
  return canvas;
}

TEST(BitmapImages, BottomUpAndTopDownRowsGiveThePictureAsSeenWithoutThePadding) {
  const Sample bottomUp, topDown(true);
  ExpectSamplePicture(ImageFromBitmap(bottomUp.header, bottomUp.bits.data()));
  ExpectSamplePicture(ImageFromBitmap(topDown.header, topDown.bits.data()));
  ExpectSamplePicture(ImageFromBitmapBlock(bottomUp.Block()));
  ExpectSamplePicture(ImageFromBitmapBlock(topDown.Block()));
}

TEST(BitmapImages, AnythingButAWhole24BitBitmapIsRefused) {
  Sample s;
  std::vector<std::uint8_t> block = s.Block();
  block.pop_back();  // one byte short of the last row's padding
  EXPECT_TRUE(ImageFromBitmapBlock(block).isNull());
  EXPECT_TRUE(ImageFromBitmapBlock(std::vector<std::uint8_t>(39, 0)).isNull());
  s.header.biBitCount = 32;
  EXPECT_TRUE(ImageFromBitmapBlock(s.Block()).isNull());
  try {
    (void)ImageFromBitmap(s.header, s.bits.data());
    ADD_FAILURE() << "a 32-bit header was taken";
  } catch (const Error& e) {
    EXPECT_EQ(e.Number(), 5);
  }
  s.header.biBitCount = 24;
  EXPECT_THROW((void)ImageFromBitmap(s.header, nullptr), Error);
  s.header.biWidth = 0;
  EXPECT_TRUE(ImageFromBitmap(s.header, nullptr).isNull());  // empty: nothing to read
}

TEST(PainterDC, CopiesExactlyStretchesByRepeatingPixelsAndClipsToTheBitmap) {
  const Sample s;
  QImage canvas = Canvas(10, 8);
  {
    QPainter painter(&canvas);
    PainterDC dc(painter);
    dc.StretchDIBits(0, 0, 3, 2, 0, 0, 3, 2, s.bits.data(), s.header);
    dc.StretchDIBits(2, 3, 6, 4, 0, 0, 3, 2, s.bits.data(), s.header);  // twice the size
    dc.StretchDIBits(8, 0, 2, 2, 2, 1, 2, 2, s.bits.data(), s.header);  // half outside
  }
  ExpectSamplePicture(canvas.copy(0, 0, 3, 2));
  EXPECT_EQ(canvas.pixel(3, 0), kGrey);
  EXPECT_EQ(canvas.pixel(8, 0), kOdd);  // source pixels beyond the bitmap are skipped
  EXPECT_EQ(canvas.pixel(9, 0), kGrey);
  EXPECT_EQ(canvas.pixel(8, 1), kGrey);
  for (const auto& [x, y, colour] : {std::tuple{2, 3, kRed}, std::tuple{3, 4, kRed}, std::tuple{4, 3, kGreen},
                                     std::tuple{7, 4, kBlue}, std::tuple{2, 5, kWhite}, std::tuple{5, 6, kBlack},
                                     std::tuple{7, 6, kOdd}, std::tuple{1, 3, kGrey}, std::tuple{8, 3, kGrey},
                                     std::tuple{4, 7, kGrey}}) {
    EXPECT_EQ(canvas.pixel(x, y), colour) << x << ", " << y;
  }
}

TEST(PainterDC, AnOriginAndAPixelRatioPutEachBitmapPixelOnOneDevicePixel) {
  const Sample s;
  QImage canvas = Canvas(12, 10);
  canvas.setDevicePixelRatio(2.0);  // the painter works in halves of the canvas's pixels
  {
    QPainter painter(&canvas);
    PainterDC dc(painter, QPointF(1.5, 2.0), 2.0);
    dc.StretchDIBits(1, 0, 3, 2, 0, 0, 3, 2, s.bits.data(), s.header);
  }
  // The origin is device pixel (3, 4); destination pixel 1 lies one device pixel right.
  for (const auto& [x, y, colour] : {std::tuple{3, 4, kGrey}, std::tuple{4, 4, kRed}, std::tuple{5, 4, kGreen},
                                     std::tuple{6, 4, kBlue}, std::tuple{7, 4, kGrey}, std::tuple{4, 5, kWhite},
                                     std::tuple{6, 5, kOdd}, std::tuple{4, 6, kGrey}}) {
    EXPECT_EQ(canvas.pixel(x, y), colour) << x << ", " << y;
  }
}

TEST(PainterDC, RefusesWhatImageDCRefusesAndLeavesThePictureAlone) {
  Sample s;
  QImage canvas = Canvas(4, 4);
  QPainter painter(&canvas);
  PainterDC dc(painter);
  EXPECT_THROW(dc.StretchDIBits(0, 0, -1, 2, 0, 0, 3, 2, s.bits.data(), s.header), Error);
  EXPECT_THROW(dc.StretchDIBits(0, 0, 3, 2, 0, 0, 3, 2, nullptr, s.header), Error);
  s.header.biCompression = 1;
  EXPECT_THROW(dc.StretchDIBits(0, 0, 3, 2, 0, 0, 3, 2, s.bits.data(), s.header), Error);
  painter.end();
  EXPECT_EQ(canvas, Canvas(4, 4));
}

}  // namespace
}  // namespace orvane::qt
