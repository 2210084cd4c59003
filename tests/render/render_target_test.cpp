// The off-screen render target, drawn into for real (EGL, Mesa's llvmpipe where there is
// no GPU), and the ImageDC device context. A machine without an OpenGL context fails
// these tests: nothing is skipped.
//
// Contents
//   1. Helpers
//   2. Bitmap layout
//   3. Drawing through the compatibility profile
//   4. Sizes, release and re-creation
//   5. Several targets
//   6. ImageDC and PNG output

#define EGL_NO_X11 1
#define MESA_EGL_NO_X11_HEADERS 1
#include <EGL/egl.h>
#include <GL/gl.h>
#include <GL/glext.h>
#include <gtest/gtest.h>
#include <png.h>

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "orvane/core/color.h"
#include "orvane/render/device_context.h"
#include "render/render_target.h"
#include "support/expect_error.h"

namespace orvane::detail {
namespace {

// ---------------------------------------------------------------------------------------
// 1. Helpers

constexpr Color kRed = Rgb(255, 0, 0);
constexpr Color kGreen = Rgb(0, 255, 0);
constexpr Color kBlue = Rgb(0, 0, 255);
constexpr Color kWhite = Rgb(255, 255, 255);
constexpr Color kBlack = Rgb(0, 0, 0);

void ClearTo(Color color) {
  const ColorBytes c = SplitColor(color);
  glClearColor(static_cast<float>(c.red) / 255.0f, static_cast<float>(c.green) / 255.0f,
               static_cast<float>(c.blue) / 255.0f, 1.0f);
  glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT | GL_STENCIL_BUFFER_BIT);
}

// One pixel is one unit, origin at the bottom-left as OpenGL has it.
void PixelProjection(int width, int height) {
  glViewport(0, 0, width, height);
  glMatrixMode(GL_PROJECTION);
  glLoadIdentity();
  glOrtho(0.0, width, 0.0, height, -1.0, 1.0);
  glMatrixMode(GL_MODELVIEW);
  glLoadIdentity();
}

void FillRect(Color color, double x0, double y0, double x1, double y1, double z = 0.0) {
  const ColorBytes c = SplitColor(color);
  glColor3ub(c.red, c.green, c.blue);
  glBegin(GL_QUADS);
  glVertex3d(x0, y0, z);
  glVertex3d(x1, y0, z);
  glVertex3d(x1, y1, z);
  glVertex3d(x0, y1, z);
  glEnd();
}

// Creates the target and insists on a context: without one every rendering test fails.
void CreateWithContext(RenderTarget& target, int width, int height) {
  target.Create(width, height);
  ASSERT_TRUE(target.HasContext()) << target.FailureReason();
}

// Makes the target current, draws, reads the picture back and lets the context go.
template <class Draw>
void DrawAndRead(RenderTarget& target, Draw draw) {
  ASSERT_TRUE(target.MakeCurrent());
  draw();
  target.ReadBack();
  EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
  target.ReleaseCurrent();
}

void Paint(RenderTarget& target, Color color) {
  DrawAndRead(target, [color] { ClearTo(color); });
}

::testing::AssertionResult AllPixelsAre(const Bitmap& image, Color color) {
  for (int y = 0; y < image.header.biHeight; ++y) {
    for (int x = 0; x < image.header.biWidth; ++x) {
      if (image.Pixel(x, y) != color) {
        return ::testing::AssertionFailure() << "pixel (" << x << ", " << y << ") is 0x"
                                             << std::hex << image.Pixel(x, y);
      }
    }
  }
  return ::testing::AssertionSuccess();
}

// Puts back normal building whatever a test does.
struct FailPointGuard {
  explicit FailPointGuard(RenderTarget::FailPoint point) { RenderTarget::FailAtForTesting(point); }
  ~FailPointGuard() { RenderTarget::FailAtForTesting(RenderTarget::FailPoint::kNone); }
};

// ---------------------------------------------------------------------------------------
// 2. Bitmap layout

TEST(RenderTarget, HeaderDescribesABottomUpBitmapWithPaddedRows) {
  RenderTarget target;
  target.Create(37, 23);
  BitmapInfoHeader expected;  // its defaults are pinned by the serialisation below
  expected.biWidth = 37;
  expected.biHeight = 23;
  expected.biSizeImage = 37u * 23u * 3u;  // unpadded: advisory only
  EXPECT_EQ(target.Image().header, expected);
  EXPECT_EQ(target.Image().Stride(), 112u);  // 111 bytes of pixels, padded to 112
  EXPECT_EQ(target.Image().bits.size(), 112u * 23u);
  EXPECT_EQ(target.Width(), 37);
  EXPECT_EQ(target.Height(), 23);
}

TEST(RenderTarget, HeaderSerialisesAsFortyLittleEndianBytes) {
  BitmapInfoHeader h;
  h.biWidth = 800;
  h.biHeight = 600;
  h.biSizeImage = 800 * 600 * 3;
  h.biXPelsPerMeter = -2;
  h.biClrImportant = 0x01020304;
  const std::array<std::uint8_t, 40> expected = {
      40, 0, 0, 0,                 // biSize
      0x20, 0x03, 0, 0,            // biWidth 800
      0x58, 0x02, 0, 0,            // biHeight 600
      1, 0,                        // biPlanes
      24, 0,                       // biBitCount
      0, 0, 0, 0,                  // biCompression
      0x00, 0xF9, 0x15, 0x00,      // biSizeImage 1440000 = 0x15F900
      0xFE, 0xFF, 0xFF, 0xFF,      // biXPelsPerMeter -2
      0, 0, 0, 0,                  // biYPelsPerMeter
      0, 0, 0, 0,                  // biClrUsed
      0x04, 0x03, 0x02, 0x01};     // biClrImportant
  EXPECT_EQ(SerializeBitmapInfoHeader(h), expected);
}

TEST(RenderTarget, PixelsAreReadBackAsBgrBytesBottomRowFirst) {
  RenderTarget target;
  CreateWithContext(target, 37, 30);
  const Color orange = Rgb(255, 128, 0);
  DrawAndRead(target, [&] {
    PixelProjection(37, 30);
    ClearTo(orange);
    FillRect(kGreen, 0, 15, 37, 30);  // the upper half in OpenGL's coordinates
  });
  const Bitmap& image = target.Image();
  // In memory the bottom row comes first: blue, green, red; its padding byte is not
  // pixel data and the next row starts after it. The top row comes last.
  const std::pair<std::size_t, int> bytes[] = {{0, 0},   {1, 128},   {2, 255},   {111, 0},
                                                {112, 0}, {113, 128}, {114, 255}, {29 * image.Stride() + 1, 255}};
  for (const auto& [at, value] : bytes) EXPECT_EQ(image.bits[at], value) << at;
  // Pixel() counts rows from the top of the drawing.
  for (int x : {0, 17, 36}) {
    EXPECT_EQ(image.Pixel(x, 0), kGreen) << x;
    EXPECT_EQ(image.Pixel(x, 14), kGreen) << x;
    EXPECT_EQ(image.Pixel(x, 15), orange) << x;
    EXPECT_EQ(image.Pixel(x, 29), orange) << x;
  }
  ::testing::Test::RecordProperty("platform", RenderTarget::PlatformDescription());
  std::printf("rendering through %s\n", RenderTarget::PlatformDescription().c_str());
}

TEST(RenderTarget, PixelOutsideTheBitmapIsRefused) {
  RenderTarget target;
  target.Create(4, 3);
  EXPECT_ORVANE_ERROR(target.Image().Pixel(4, 0), 9, "Orvada.Surface",
                      "The pixel (4, 0) lies outside the 4 x 3 bitmap.");
  EXPECT_ORVANE_ERROR(target.Image().Pixel(0, -1), 9, "Orvada.Surface");
}

// ---------------------------------------------------------------------------------------
// 3. Drawing through the compatibility profile

TEST(RenderTarget, CompatibilityContextWithAFullViewportDisplayListsAndClipPlanes) {
  RenderTarget target;
  CreateWithContext(target, 40, 32);
  DrawAndRead(target, [] {
    GLint viewport[4] = {};
    glGetIntegerv(GL_VIEWPORT, viewport);  // a new context's covers the target
    EXPECT_EQ(std::vector<GLint>(viewport, viewport + 4), (std::vector<GLint>{0, 0, 40, 32}));
    GLint major = 0, minor = 0;
    glGetIntegerv(GL_MAJOR_VERSION, &major);
    glGetIntegerv(GL_MINOR_VERSION, &minor);
    if (major > 3 || (major == 3 && minor >= 2)) {
      GLint profile = 0;
      glGetIntegerv(GL_CONTEXT_PROFILE_MASK, &profile);
      EXPECT_NE(profile & GL_CONTEXT_COMPATIBILITY_PROFILE_BIT, 0);
    }
    PixelProjection(40, 32);
    ClearTo(kWhite);
    const GLuint list = glGenLists(1);
    ASSERT_NE(list, 0u);
    glNewList(list, GL_COMPILE);
    FillRect(kBlue, 0, 0, 16, 32);
    glEndList();
    glPushAttrib(GL_ALL_ATTRIB_BITS);  // attribute stacks: a core profile refuses them
    glEnable(GL_LIGHTING);
    glPopAttrib();
    EXPECT_FALSE(glIsEnabled(GL_LIGHTING));
    glCallList(list);
    glDeleteLists(list, 1);
    // A clip plane keeps x >= 24 of a green strip over the whole width.
    const GLdouble plane[4] = {1.0, 0.0, 0.0, -24.0};
    glClipPlane(GL_CLIP_PLANE0, plane);
    glEnable(GL_CLIP_PLANE0);
    FillRect(kGreen, 0, 0, 40, 8);
    glDisable(GL_CLIP_PLANE0);
  });
  const Bitmap& image = target.Image();
  EXPECT_EQ(image.Pixel(3, 10), kBlue);
  EXPECT_EQ(image.Pixel(15, 31), kBlue);
  EXPECT_EQ(image.Pixel(16, 10), kWhite);
  EXPECT_EQ(image.Pixel(20, 28), kWhite);  // clipped away
  EXPECT_EQ(image.Pixel(3, 28), kBlue);    // clipped away, the list's blue shows
  EXPECT_EQ(image.Pixel(26, 28), kGreen);
}

TEST(RenderTarget, FramebufferHasWorkingDepthAndStencil) {
  RenderTarget target;
  CreateWithContext(target, 32, 32);
  DrawAndRead(target, [&target] {
    GLint depthBits = 0, stencilBits = 0;
    glGetIntegerv(GL_DEPTH_BITS, &depthBits);
    glGetIntegerv(GL_STENCIL_BITS, &stencilBits);
    EXPECT_GE(depthBits, 24);
    EXPECT_GE(stencilBits, 8);
    EXPECT_EQ(target.DepthBits(), depthBits);
    EXPECT_EQ(target.StencilBits(), stencilBits);
    PixelProjection(32, 32);
    ClearTo(kWhite);
    // Depth: with the usual depth range, the nearer red square (z = 0.5 is depth 0.25)
    // hides the blue one drawn after it.
    glEnable(GL_DEPTH_TEST);
    glDepthFunc(GL_LESS);
    FillRect(kRed, 0, 0, 32, 32, 0.5);
    FillRect(kBlue, 0, 0, 16, 32, -0.5);
    glDisable(GL_DEPTH_TEST);
    // Stencil: mark the bottom half, then green paints only where the mark is.
    glEnable(GL_STENCIL_TEST);
    glStencilFunc(GL_ALWAYS, 1, 0xFF);
    glStencilOp(GL_KEEP, GL_KEEP, GL_REPLACE);
    glColorMask(GL_FALSE, GL_FALSE, GL_FALSE, GL_FALSE);
    FillRect(kBlack, 0, 0, 32, 16);
    glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);
    glStencilFunc(GL_EQUAL, 1, 0xFF);
    glStencilOp(GL_KEEP, GL_KEEP, GL_KEEP);
    FillRect(kGreen, 24, 0, 32, 32);
    glDisable(GL_STENCIL_TEST);
  });
  const Bitmap& image = target.Image();
  EXPECT_EQ(image.Pixel(4, 4), kRed);     // the far blue square lost the depth test
  EXPECT_EQ(image.Pixel(28, 4), kRed);    // top half has no stencil mark
  EXPECT_EQ(image.Pixel(28, 28), kGreen);  // bottom half has it
  EXPECT_EQ(image.Pixel(20, 28), kRed);
}

// ---------------------------------------------------------------------------------------
// 4. Sizes, release and re-creation

TEST(RenderTarget, EmptyTargetsRenderAndReadBackNothing) {
  for (const auto& size : {std::pair{0, 0}, std::pair{200, 0}, std::pair{0, 50}}) {
    SCOPED_TRACE(std::to_string(size.first) + " x " + std::to_string(size.second));
    RenderTarget target;
    CreateWithContext(target, size.first, size.second);
    EXPECT_EQ(target.Width(), size.first);
    EXPECT_EQ(target.Height(), size.second);
    EXPECT_EQ(target.Image().header.biSizeImage, 0u);
    Paint(target, kRed);
    EXPECT_TRUE(target.Image().bits.empty());
    ImageDC dc(4, 4);
    target.CopyTo(dc, 0, 0);
    EXPECT_EQ(dc.Pixel(0, 0), kWhite);
  }
}

TEST(RenderTarget, RefusedSizesKeepTheTargetAsItWasAndTheLargestSideIsTaken) {
  RenderTarget target;
  CreateWithContext(target, 16, 8);
  Paint(target, kRed);
  const std::vector<std::uint8_t> before = target.Image().bits;

  const std::string negative = " is invalid: a side is negative.";
  const std::string large = " is too large: each side may be at most 16384 pixels.";
  const std::tuple<int, int, std::string> refused[] = {
      {-1, 10, negative}, {10, -2147483647 - 1, negative}, {70000, 70000, large}, {16385, 1, large},
      {2147483647, 2147483647, large}};
  for (const auto& size : refused) {
    const int w = std::get<0>(size), h = std::get<1>(size);
    EXPECT_ORVANE_ERROR(target.Create(w, h), 5, "Orvada.Surface",
                        "The drawing size " + std::to_string(w) + " x " + std::to_string(h) + std::get<2>(size));
  }

  EXPECT_EQ(target.Width(), 16);
  EXPECT_EQ(target.Height(), 8);
  EXPECT_EQ(target.Image().bits, before);
  ASSERT_TRUE(target.HasContext());
  Paint(target, kGreen);
  EXPECT_TRUE(AllPixelsAre(target.Image(), kGreen));

  CreateWithContext(target, RenderTarget::kMaxSide, 2);
  Paint(target, kBlue);
  EXPECT_EQ(target.Image().Pixel(RenderTarget::kMaxSide - 1, 1), kBlue);
}

TEST(RenderTarget, ReleaseIsSafeAgainAndOnATargetNeverBuilt) {
  RenderTarget never;
  never.Release();
  never.Release();
  EXPECT_FALSE(never.HasContext());
  EXPECT_FALSE(never.MakeCurrent());
  never.ReadBack();

  RenderTarget target;
  CreateWithContext(target, 8, 8);
  ASSERT_TRUE(target.MakeCurrent());  // released while current
  target.Release();
  EXPECT_EQ(eglGetCurrentContext(), EGL_NO_CONTEXT);
  target.Release();
  EXPECT_FALSE(target.HasContext());
  EXPECT_FALSE(target.MakeCurrent());
  EXPECT_EQ(target.Width(), 0);
  EXPECT_EQ(target.Height(), 0);
  EXPECT_TRUE(target.Image().bits.empty());
  target.ReadBack();
  target.ReleaseCurrent();

  CreateWithContext(target, 8, 8);
  Paint(target, kBlue);
  EXPECT_TRUE(AllPixelsAre(target.Image(), kBlue));
}

TEST(RenderTarget, RecreatingTakesTheNewSize) {
  RenderTarget target;
  CreateWithContext(target, 32, 16);
  Paint(target, kRed);
  CreateWithContext(target, 21, 40);
  EXPECT_EQ(target.Width(), 21);
  EXPECT_EQ(target.Height(), 40);
  EXPECT_EQ(target.Image().header.biSizeImage, 21u * 40u * 3u);
  EXPECT_EQ(target.Image().bits.size(), 64u * 40u);
  DrawAndRead(target, [] {
    PixelProjection(21, 40);
    ClearTo(kWhite);
    FillRect(kBlue, 20, 0, 21, 1);  // only the bottom-right pixel
  });
  EXPECT_EQ(target.Image().Pixel(20, 39), kBlue);
  EXPECT_EQ(target.Image().Pixel(19, 39), kWhite);
  EXPECT_EQ(target.Image().Pixel(20, 38), kWhite);
}

TEST(RenderTarget, WithoutAContextTheBitmapStaysAsItWas) {
  for (const auto& [point, reason] : {std::pair{RenderTarget::FailPoint::kContext, "context"},
                                      std::pair{RenderTarget::FailPoint::kFramebuffer, "framebuffer"}}) {
    RenderTarget target;
    {
      const FailPointGuard fail(point);
      target.Create(10, 6);
    }
    EXPECT_FALSE(target.HasContext());
    EXPECT_NE(target.FailureReason().find(reason), std::string::npos) << target.FailureReason();
    EXPECT_EQ(eglGetCurrentContext(), EGL_NO_CONTEXT);
    EXPECT_EQ(target.Width(), 10);
    EXPECT_EQ(target.Height(), 6);
    EXPECT_EQ(target.DepthBits(), 0);
    EXPECT_FALSE(target.MakeCurrent());
    target.ReadBack();
    EXPECT_TRUE(AllPixelsAre(target.Image(), kBlack));
    ImageDC dc(10, 6);
    target.CopyTo(dc, 0, 0);
    EXPECT_EQ(dc.Pixel(9, 5), kBlack);
    target.Release();
    target.Release();

    CreateWithContext(target, 10, 6);
    EXPECT_TRUE(target.FailureReason().empty());
  }
}

// ---------------------------------------------------------------------------------------
// 5. Several targets

TEST(RenderTarget, TwoTargetsKeepTheirOwnContextsAndImages) {
  RenderTarget a;
  RenderTarget b;
  CreateWithContext(a, 16, 16);
  CreateWithContext(b, 24, 8);

  ASSERT_TRUE(a.MakeCurrent());
  ClearTo(kRed);
  const GLuint list = glGenLists(1);
  glNewList(list, GL_COMPILE);
  glEndList();
  ASSERT_TRUE(b.MakeCurrent());
  EXPECT_FALSE(glIsList(list));  // display lists are not shared
  ClearTo(kBlue);
  a.ReadBack();  // not current: made current for the read, then b again
  EXPECT_NE(eglGetCurrentContext(), EGL_NO_CONTEXT);
  ClearTo(kGreen);  // still draws into b
  b.ReadBack();
  b.ReleaseCurrent();
  EXPECT_EQ(eglGetCurrentContext(), EGL_NO_CONTEXT);

  EXPECT_TRUE(AllPixelsAre(a.Image(), kRed));
  EXPECT_TRUE(AllPixelsAre(b.Image(), kGreen));
  a.ReadBack();  // nothing current: a's framebuffer still holds red, and none is left current
  EXPECT_EQ(eglGetCurrentContext(), EGL_NO_CONTEXT);
  EXPECT_TRUE(AllPixelsAre(a.Image(), kRed));

  // Releasing the other target leaves the current context current.
  ASSERT_TRUE(a.MakeCurrent());
  const EGLContext current = eglGetCurrentContext();
  b.ReleaseCurrent();
  b.Release();
  EXPECT_EQ(eglGetCurrentContext(), current);
  ClearTo(kBlue);
  a.ReadBack();
  a.ReleaseCurrent();
  EXPECT_TRUE(AllPixelsAre(a.Image(), kBlue));
}

// ---------------------------------------------------------------------------------------
// 6. ImageDC and PNG output

// A bitmap built by hand, row layout and all, from rows given top to bottom.
Bitmap HandMade(const std::vector<std::vector<Color>>& rowsTopDown) {
  Bitmap bitmap;
  bitmap.header.biWidth = static_cast<std::int32_t>(rowsTopDown[0].size());
  bitmap.header.biHeight = static_cast<std::int32_t>(rowsTopDown.size());
  const std::size_t stride = bitmap.Stride();
  bitmap.bits.assign(stride * rowsTopDown.size(), 0xEE);  // padding bytes are junk
  for (std::size_t r = 0; r < rowsTopDown.size(); ++r) {
    std::uint8_t* row = bitmap.bits.data() + (rowsTopDown.size() - 1 - r) * stride;
    for (std::size_t x = 0; x < rowsTopDown[r].size(); ++x) {
      const ColorBytes c = SplitColor(rowsTopDown[r][x]);
      row[3 * x] = c.blue;
      row[3 * x + 1] = c.green;
      row[3 * x + 2] = c.red;
    }
  }
  return bitmap;
}

// Every pixel of an image against rows given top to bottom.
void ExpectPixels(const ImageDC& dc, const std::vector<std::vector<Color>>& rowsTopDown) {
  ASSERT_EQ(dc.Height(), static_cast<int>(rowsTopDown.size()));
  for (int y = 0; y < dc.Height(); ++y) {
    const std::vector<Color>& row = rowsTopDown[static_cast<std::size_t>(y)];
    ASSERT_EQ(dc.Width(), static_cast<int>(row.size()));
    for (int x = 0; x < dc.Width(); ++x) EXPECT_EQ(dc.Pixel(x, y), row[static_cast<std::size_t>(x)]) << x << ", " << y;
  }
}

TEST(ImageDC, NewImageIsWhiteAndRefusesAbsurdSizes) {
  const ImageDC dc(3, 2);
  EXPECT_EQ(dc.Width(), 3);
  EXPECT_EQ(dc.Height(), 2);
  EXPECT_EQ(dc.Rgb(), std::vector<std::uint8_t>(18, 0xFF));
  EXPECT_ORVANE_ERROR(ImageDC(0, 10), 5, "Orvada.ImageDC",
                      "The image size 0 x 10 is invalid: each side must be 1 to 16384 pixels.");
  EXPECT_ORVANE_ERROR(ImageDC(10, -1), 5, "Orvada.ImageDC");
  EXPECT_ORVANE_ERROR(ImageDC(16385, 16385), 5, "Orvada.ImageDC");
  EXPECT_ORVANE_ERROR(dc.Pixel(3, 0), 9, "Orvada.ImageDC",
                      "The pixel (3, 0) lies outside the 3 x 2 image.");
}

TEST(ImageDC, RenderedTargetCopiesExactly) {
  RenderTarget target;
  CreateWithContext(target, 37, 23);
  DrawAndRead(target, [] {
    PixelProjection(37, 23);
    ClearTo(Rgb(10, 20, 30));
    glBegin(GL_TRIANGLES);
    glColor3ub(255, 0, 0);
    glVertex2d(0, 0);
    glColor3ub(0, 255, 0);
    glVertex2d(37, 0);
    glColor3ub(0, 0, 255);
    glVertex2d(18, 23);
    glEnd();
  });
  ImageDC dc(37, 23);
  target.CopyTo(dc, 0, 0);
  for (int y = 0; y < 23; ++y) {
    for (int x = 0; x < 37; ++x) {
      ASSERT_EQ(dc.Pixel(x, y), target.Image().Pixel(x, y)) << x << ", " << y;
    }
  }
  const Color corner = dc.Pixel(0, 22);
  EXPECT_EQ(dc.Rgb()[22 * 37 * 3], static_cast<std::uint8_t>(corner));  // red byte first
}

TEST(ImageDC, CopyIsClippedToTheImage) {
  const Bitmap bitmap = HandMade({{kRed, kGreen, kBlue}, {kBlack, kRed, kGreen}});
  ImageDC dc(4, 3);
  dc.StretchDIBits(-1, 2, 3, 2, 0, 0, 3, 2, bitmap.bits.data(), bitmap.header);
  const std::vector<Color> white(4, kWhite);
  // Only the source's top row lands on row 2, shifted left by one.
  ExpectPixels(dc, {white, white, {kGreen, kBlue, kWhite, kWhite}});
  // A source rectangle reaching past the bitmap copies only what the bitmap has.
  ImageDC part(4, 3);
  part.StretchDIBits(0, 0, 3, 2, 1, 1, 3, 2, bitmap.bits.data(), bitmap.header);
  ExpectPixels(part, {{kRed, kGreen, kWhite, kWhite}, white, white});
}

TEST(ImageDC, StretchRepeatsAndSamplesPixels) {
  const Bitmap bitmap = HandMade({{kRed, kGreen}, {kBlue, kBlack}});
  ImageDC dc(4, 4);
  dc.StretchDIBits(0, 0, 4, 4, 0, 0, 2, 2, bitmap.bits.data(), bitmap.header);
  ExpectPixels(dc, {{kRed, kRed, kGreen, kGreen},
                    {kRed, kRed, kGreen, kGreen},
                    {kBlue, kBlue, kBlack, kBlack},
                    {kBlue, kBlue, kBlack, kBlack}});
  // Shrinking 4 x 4 to 2 x 2 takes the pixel under each destination centre.
  const Bitmap big = HandMade({{kRed, kRed, kRed, kRed},
                               {kRed, kBlue, kRed, kGreen},
                               {kRed, kRed, kRed, kRed},
                               {kRed, kBlack, kRed, kWhite}});
  ImageDC small(2, 2);
  small.StretchDIBits(0, 0, 2, 2, 0, 0, 4, 4, big.bits.data(), big.header);
  ExpectPixels(small, {{kBlue, kGreen}, {kBlack, kWhite}});
}

TEST(ImageDC, TopDownBitmapsAreReadTopRowFirst) {
  Bitmap bitmap = HandMade({{kRed}, {kBlue}});
  std::swap_ranges(bitmap.bits.begin(), bitmap.bits.begin() + 4, bitmap.bits.begin() + 4);
  bitmap.header.biHeight = -2;
  ImageDC dc(1, 2);
  dc.StretchDIBits(0, 0, 1, 2, 0, 0, 1, 2, bitmap.bits.data(), bitmap.header);
  ExpectPixels(dc, {{kRed}, {kBlue}});
}

TEST(ImageDC, BadCopiesAreRefusedAndChangeNothing) {
  Bitmap bitmap = HandMade({{kRed, kRed}, {kRed, kRed}});
  ImageDC dc(2, 2);
  EXPECT_ORVANE_ERROR(dc.StretchDIBits(0, 0, -2, 2, 0, 0, 2, 2, bitmap.bits.data(), bitmap.header),
                      5, "Orvada.ImageDC", "A copy rectangle has a negative width or height.");
  EXPECT_ORVANE_ERROR(dc.StretchDIBits(0, 0, 2, 2, 0, 0, 2, 2, nullptr, bitmap.header), 5,
                      "Orvada.ImageDC", "The bitmap has no pixel data.");
  bitmap.header.biBitCount = 32;
  EXPECT_ORVANE_ERROR(dc.StretchDIBits(0, 0, 2, 2, 0, 0, 2, 2, bitmap.bits.data(), bitmap.header),
                      5, "Orvada.ImageDC", "The bitmap is not a 24-bit uncompressed bitmap.");
  EXPECT_EQ(dc.Rgb(), std::vector<std::uint8_t>(12, 0xFF));
}

class ImageFile : public ::testing::Test {
 protected:
  void SetUp() override {
    dir_ = std::filesystem::temp_directory_path() /
           ("orvane_image_dc_" + std::to_string(::getpid()) + "_" +
            ::testing::UnitTest::GetInstance()->current_test_info()->name());
    std::filesystem::create_directories(dir_);
  }
  void TearDown() override { std::filesystem::remove_all(dir_); }
  std::filesystem::path dir_;
};

TEST_F(ImageFile, PngHoldsTheSamePixels) {
  const Bitmap bitmap = HandMade({{kRed, kGreen, Rgb(1, 2, 3)}, {kBlue, kWhite, Rgb(200, 100, 50)}});
  ImageDC dc(3, 2);
  dc.StretchDIBits(0, 0, 3, 2, 0, 0, 3, 2, bitmap.bits.data(), bitmap.header);
  const std::string path = (dir_ / "out.png").string();
  dc.SavePng(path);

  png_image image{};
  image.version = PNG_IMAGE_VERSION;
  ASSERT_NE(png_image_begin_read_from_file(&image, path.c_str()), 0) << image.message;
  EXPECT_EQ(image.width, 3u);
  EXPECT_EQ(image.height, 2u);
  image.format = PNG_FORMAT_RGB;
  std::vector<std::uint8_t> pixels(PNG_IMAGE_SIZE(image));
  ASSERT_NE(png_image_finish_read(&image, nullptr, pixels.data(), 0, nullptr), 0) << image.message;
  EXPECT_EQ(pixels, dc.Rgb());
  EXPECT_EQ(pixels, (std::vector<std::uint8_t>{255, 0, 0, 0, 255, 0, 1, 2, 3,  //
                                               0, 0, 255, 255, 255, 255, 200, 100, 50}));
}

TEST_F(ImageFile, UnwritablePathIsRefusedByName) {
  const ImageDC dc(2, 2);
  const std::string missing = (dir_ / "no such folder" / "out.png").string();
  EXPECT_ORVANE_ERROR(dc.SavePng(missing), 5, "Orvada.ImageDC",
                      "Cannot write the image file \"" + missing + "\": No such file or directory.");
  const std::string folder = dir_.string();
  EXPECT_ORVANE_ERROR(dc.SavePng(folder), 5, "Orvada.ImageDC",
                      "Cannot write the image file \"" + folder + "\": Is a directory.");
  EXPECT_TRUE(std::filesystem::is_directory(dir_));
}

}  // namespace
}  // namespace orvane::detail
