// Output outside the window's paint: drawing into a caller's device context at another
// size, the clipboard block, and the sample data.

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <vector>

#include "control_fixture.h"
#include "support/expect_error.h"

namespace orvane {
namespace {

using testing::Control;

constexpr Color kWhite = 0xFFFFFF;

// Pixels of the rectangle (left, top, width, height) of an image that are not white.
int CountNotWhite(const ImageDC& image, int left, int top, int width, int height) {
  int n = 0;
  for (int y = top; y < top + height; ++y) {
    for (int x = left; x < left + width; ++x) n += image.Pixel(x, y) != kWhite;
  }
  return n;
}

// The bounding box of the pixels that are not white: left, top, right, bottom.
template <class Picture>
std::array<int, 4> DrawnBox(const Picture& picture, int width, int height) {
  std::array<int, 4> box{width, height, -1, -1};
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      if (picture.Pixel(x, y) == kWhite) continue;
      box = {std::min(box[0], x), std::min(box[1], y), std::max(box[2], x), std::max(box[3], y)};
    }
  }
  return box;
}
std::array<int, 4> DrawnBox(const ImageDC& image) { return DrawnBox(image, image.Width(), image.Height()); }
std::array<int, 4> DrawnBox(const detail::Bitmap& image) {
  return DrawnBox(image, image.header.biWidth, image.header.biHeight);
}

TEST(SurfaceOutput, DrawToDCDrawsAtItsOwnSizeAndLeavesTheControlsPictureAsItWas) {
  Control c;
  Surface& s = c.surface;
  s.ShowSampleData();
  const std::vector<std::uint8_t> picture = c.Image().bits;
  ASSERT_GT(testing::CountNot(c.Image(), kWhite), 500);
  const std::int64_t frames = c.Frames();

  ImageDC page(400, 300);
  s.DrawToDC(page, 30, 20, 300, 240);
  EXPECT_EQ(c.Frames(), frames + 2);  // the drawing, then the control again
  // Only the rectangle is painted, and the plot fills much more of it than the control's
  // 120 x 90 pixels would.
  EXPECT_EQ(CountNotWhite(page, 0, 0, 400, 20), 0);
  EXPECT_EQ(CountNotWhite(page, 0, 0, 30, 300), 0);
  EXPECT_EQ(CountNotWhite(page, 330, 0, 70, 300), 0);
  EXPECT_EQ(CountNotWhite(page, 0, 260, 400, 40), 0);
  const auto box = DrawnBox(page);
  EXPECT_GT(box[2] - box[0], 150);
  EXPECT_GT(box[3] - box[1], 100);
  EXPECT_GT(CountNotWhite(page, 30, 20, 300, 240), 3 * testing::CountNot(c.Image(), kWhite));

  EXPECT_EQ(c.Image().header.biWidth, 120);
  EXPECT_EQ(c.Image().header.biHeight, 90);
  EXPECT_EQ(c.Image().bits, picture);

  // Text keeps its size in pixels; without it the plot itself scales with the page: at
  // 2000 x 1500 the same plot, 2000 / 120 times as large, the whole of it, not a corner.
  s.Header().SetVisible(false);
  s.Legend().SetVisible(false);
  s.Axes().SetLabelsVisibleMaster(false);
  s.Axes().SetTitleVisibleMaster(false);
  s.Refresh();
  const std::vector<std::uint8_t> bare = c.Image().bits;
  const auto small = DrawnBox(c.Image());
  ImageDC poster(2000, 1500);
  s.DrawToDC(poster, 0, 0, 2000, 1500);
  const auto large = DrawnBox(poster);
  const double scale = 2000.0 / 120.0;
  EXPECT_NEAR((large[2] - large[0]) / scale, small[2] - small[0], 0.1 * (small[2] - small[0]));
  EXPECT_NEAR((large[3] - large[1]) / scale, small[3] - small[1], 0.1 * (small[3] - small[1]));
  EXPECT_NEAR((large[0] + large[2]) / 2.0 / scale, (small[0] + small[2]) / 2.0, 2.0);
  EXPECT_NEAR((large[1] + large[3]) / 2.0 / scale, (small[1] + small[3]) / 2.0, 2.0);
  EXPECT_EQ(c.Image().bits, bare);
}

TEST(SurfaceOutput, DrawToDCRefusesABadSizeBeforeChangingAnything) {
  Control c;
  Surface& s = c.surface;
  s.Refresh();
  const std::int64_t frames = c.Frames();
  ImageDC page(10, 10);
  EXPECT_ORVANE_ERROR(s.DrawToDC(page, 0, 0, -5, 10), 5, "Orvada.Surface",
                      "The drawing size -5 x 10 is invalid: a side is negative.");
  EXPECT_ORVANE_ERROR(s.DrawToDC(page, 0, 0, 16385, 10), 5, "Orvada.Surface");
  EXPECT_EQ(c.Frames(), frames);
  EXPECT_FALSE(c.State().fontsDirty);
}

// A host with a clipboard that keeps what it is given.
class ClipboardHost : public HeadlessHost {
 public:
  bool SetClipboardBitmap(const std::vector<std::uint8_t>& bitmap) override {
    clipboard = bitmap;
    return accept;
  }
  std::vector<std::uint8_t> clipboard;
  bool accept = true;
};

TEST(SurfaceOutput, CopyToClipboardHandsOverTheLastPictureAsHeaderAndRows) {
  ClipboardHost host;
  Surface s(host);
  s.InitProperties();
  EXPECT_FALSE(s.CopyToClipboard());  // no picture at all yet
  EXPECT_TRUE(host.clipboard.empty());
  s.OnResize(50, 30);
  s.SetBackColor(0x0080FF);
  s.Refresh();
  const detail::Bitmap& image = detail::SurfaceAccess::State(s).target.Image();
  const std::int64_t frames = detail::SurfaceAccess::State(s).renderer.FrameCount();
  ASSERT_TRUE(s.CopyToClipboard());
  EXPECT_EQ(detail::SurfaceAccess::State(s).renderer.FrameCount(), frames);  // nothing redrawn
  ASSERT_EQ(host.clipboard.size(), 40 + image.bits.size());
  std::int32_t width = 0, height = 0;
  std::uint16_t bits = 0;
  std::memcpy(&width, host.clipboard.data() + 4, 4);
  std::memcpy(&height, host.clipboard.data() + 8, 4);
  std::memcpy(&bits, host.clipboard.data() + 14, 2);
  EXPECT_EQ(host.clipboard[0], 40);
  EXPECT_EQ(width, 50);
  EXPECT_EQ(height, 30);
  EXPECT_EQ(bits, 24);
  EXPECT_TRUE(std::equal(image.bits.begin(), image.bits.end(), host.clipboard.begin() + 40));
  // The back colour 0x0080FF (red 0xFF, green 0x80, blue 0) as blue, green, red.
  EXPECT_EQ(host.clipboard[40], 0x00);
  EXPECT_EQ(host.clipboard[41], 0x80);
  EXPECT_EQ(host.clipboard[42], 0xFF);
  host.accept = false;
  EXPECT_FALSE(s.CopyToClipboard());
}

TEST(SurfaceOutput, CopyToClipboardOnTheHeadlessHostIsFalse) {
  Control c;
  c.surface.Refresh();
  EXPECT_FALSE(c.surface.CopyToClipboard());
}

TEST(SurfaceOutput, SampleDataReplacesWhatThereWasWithOneGridOf900Points) {
  Control c;
  Surface& s = c.surface;
  s.DataSets().SetCount(3);
  testing::Scatter(s.DataSets().Item(0));
  testing::Saddle(s.DataSets().Item(2));
  s.SetZoom(2);
  s.ShowSampleData();

  ASSERT_EQ(s.DataSets().Count(), 1);
  DataSet& data = s.DataSets().Item(0);
  Array x, y;
  Array2D z;
  std::int32_t nx = 0, ny = 0;
  data.DataAsRectangularGridGet(x, nx, y, ny, z);
  ASSERT_EQ(nx, 30);
  ASSERT_EQ(ny, 30);
  EXPECT_EQ(x.Values().front(), 0.0);
  EXPECT_EQ(x.Values().back(), 4.0);
  EXPECT_EQ(y.Values()[1], 4.0 / 29.0);
  // The product, not the sum the caption names.
  for (std::int32_t i = 0; i < 30; ++i) {
    for (std::int32_t j = 0; j < 30; ++j) {
      EXPECT_NEAR(z.At(i, j), 0.3 * std::sin((i * 4.0 / 29.0) * (j * 4.0 / 29.0)), 1e-12) << i << ", " << j;
    }
  }

  const detail::DataSetState& state = detail::DataSetAccess::State(data);
  EXPECT_EQ(state.userHullInputCount, 8);
  EXPECT_EQ(state.userHullInputX, (std::vector<double>{0, 3, 2.2, 4, 4, 2.6, 0.8, 0}));
  EXPECT_EQ(state.userHullInputY, (std::vector<double>{0, 0, 0.8, 2.6, 4, 4, 2.2, 3}));
  EXPECT_EQ(s.Header().Text(), "Z = 0.3 * sin(X + Y)");
  EXPECT_TRUE(s.Contouring().InterpolateColors());
  EXPECT_EQ(s.Axes().ZAxis().Zoom(), 0.3);
  EXPECT_EQ(s.Axes().ZAxis().AutoRangeType(), orvAutoRangeRounded);
  EXPECT_EQ(s.Axes().XAxis().Title(), "X");
  EXPECT_EQ(s.Axes().ZAxis().Title(), "Z");
  EXPECT_EQ(s.Zoom(), 1.0);  // reset
  // Drawn: the grid's fill shows, the background is still white at the corner.
  EXPECT_GT(testing::CountNot(c.Image(), kWhite), 1000);
  EXPECT_EQ(c.Image().Pixel(0, 0), kWhite);
  EXPECT_GT(s.Contouring().Contours().Count(), 1);
}

}  // namespace
}  // namespace orvane
