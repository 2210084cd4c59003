// Font maps and text drawing, drawn for real off-screen and checked by their pixels, their
// metrics and the OpenGL state they leave. A machine without a context fails these.
//
// Contents
//   1. Helpers
//   2. Faces and UTF-8
//   3. Metrics
//   4. Pixels: placement, alignment, crispness, tint, box, lines, rotation
//   5. OpenGL state and contexts
//   6. The manager
//   7. Hostile input and extreme sizes

#define EGL_NO_X11 1
#define MESA_EGL_NO_X11_HEADERS 1
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <climits>
#include <cmath>
#include <memory>
#include <string>
#include <vector>

#include "orvane/core/font.h"
#include "render/font_map.h"
#include "render/gl.h"
#include "render/render_target.h"
#include "render/text.h"
#include "support/expect_error.h"

namespace orvane::detail {
namespace {

// ---------------------------------------------------------------------------------------
// 1. Helpers

constexpr Color kWhite = 0xFFFFFF;
constexpr Color kBlack = 0x000000;

// A target made current for the test's lifetime, cleared to a colour; coordinates are
// OpenGL's (origin bottom-left).
struct Canvas {
  RenderTarget target;
  Color back;
  explicit Canvas(int w = 240, int h = 100, Color background = kWhite) : back(background) {
    target.Create(w, h);
    EXPECT_TRUE(target.HasContext()) << target.FailureReason();
    EXPECT_TRUE(target.MakeCurrent());
    Clear();
  }
  ~Canvas() { target.ReleaseCurrent(); }
  void Clear() const {
    const ColorBytes c = SplitColor(back);
    glClearColor(c.red / 255.0F, c.green / 255.0F, c.blue / 255.0F, 1.0F);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
  }
  const Bitmap& Read() {
    target.ReadBack();
    return target.Image();
  }
  Color At(int x, int y) const { return target.Image().Pixel(x, target.Height() - 1 - y); }
  // Bounding box {x0, y0, x1, y1} (inclusive) of every pixel that is not the background;
  // x0 > x1 when there is none.
  std::array<int, 4> Ink() {
    Read();
    std::array<int, 4> box{INT_MAX, INT_MAX, INT_MIN, INT_MIN};
    for (int y = 0; y < target.Height(); ++y) {
      for (int x = 0; x < target.Width(); ++x) {
        if (At(x, y) == back) continue;
        box = {std::min(box[0], x), std::min(box[1], y), std::max(box[2], x), std::max(box[3], y)};
      }
    }
    return box;
  }
  std::vector<Color> Pixels() {
    Read();
    std::vector<Color> out;
    for (int y = 0; y < target.Height(); ++y) {
      for (int x = 0; x < target.Width(); ++x) out.push_back(At(x, y));
    }
    return out;
  }
};

int Red(Color c) { return static_cast<int>(c & 0xFF); }

// Font objects cannot be copied: each test makes its own.
struct Arial : Font {
  explicit Arial(double points = 10.0, bool bold = false) : Font("Arial", points, bold) {}
};

// ---------------------------------------------------------------------------------------
// 2. Faces and UTF-8

TEST(FontFace, ArialIsLiberationSansAndUnknownNamesGetTheSansFace) {
  EXPECT_NE(ChooseFace("Arial", 400, false).path.find("LiberationSans-Regular"), std::string::npos);
  EXPECT_NE(ChooseFace("Arial", 700, false).path.find("LiberationSans-Bold"), std::string::npos);
  EXPECT_NE(ChooseFace("Arial", 400, true).path.find("LiberationSans-Italic"), std::string::npos);
  EXPECT_NE(ChooseFace("Arial", 0, false).path.find("LiberationSans-Regular"), std::string::npos);  // no preference
  const FaceChoice unknown = ChooseFace("No Such Face Qx", 400, false);
  EXPECT_FALSE(unknown.path.empty());
  EXPECT_EQ(unknown.path, ChooseFace("sans-serif", 400, false).path);
  CFontMap map(Font("No Such Face Qx", 10));
  EXPECT_EQ(map.Face().path, unknown.path);
  EXPECT_GT(map.Measure("abc").width, 10.0);
}

TEST(FontFace, NoLoadableFaceRaisesError5) {
  CFontMap::FailFaceLoadingForTesting(true);
  Arial font;
  EXPECT_ORVANE_ERROR(CFontMap map(font), 5, "Orvada.Surface");
  CFontMap::FailFaceLoadingForTesting(false);
  EXPECT_NO_THROW(CFontMap map(font));
}

TEST(FontFace, Utf8DecodingReplacesEachBadSequenceOnce) {
  EXPECT_EQ(DecodeUtf8("A\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80"), (std::u32string{U'A', 0xE9, 0x20AC, 0x1F600}));
  const char32_t r = 0xFFFD;
  EXPECT_EQ(DecodeUtf8("\xC0\xAF"), (std::u32string{r, r}));               // overlong lead, stray byte
  EXPECT_EQ(DecodeUtf8("\xE2\x82"), (std::u32string{r}));                  // truncated at the end
  EXPECT_EQ(DecodeUtf8("\xE2\x82x"), (std::u32string{r, U'x'}));           // truncated in the middle
  EXPECT_EQ(DecodeUtf8("\xED\xA0\x80"), (std::u32string{r, r, r}));        // surrogate
  EXPECT_EQ(DecodeUtf8("\xF4\x90\x80\x80"), (std::u32string{r, r, r, r}));  // above U+10FFFF
  EXPECT_EQ(DecodeUtf8("\xFF"), (std::u32string{r}));
}

TEST(FontFace, GreyIsQuantisedToSixtyFiveLevels) {
  std::vector<int> seen;
  for (int g = 0; g < 256; ++g) {
    const int v = CFontMap::QuantiseGrey(static_cast<std::uint8_t>(g));
    EXPECT_LE(std::abs(v - g), 2) << g;
    if (seen.empty() || seen.back() != v) seen.push_back(v);
  }
  EXPECT_EQ(seen.size(), 65u);  // monotone, so distinct runs are distinct values
  EXPECT_EQ(seen.front(), 0);
  EXPECT_EQ(seen.back(), 255);
  EXPECT_EQ(CFontMap::QuantiseGrey(4), 4);  // level 1 is round(255 / 64)
}

// ---------------------------------------------------------------------------------------
// 3. Metrics (no context needed)

TEST(FontMetrics, SizesFollowPointsAt96Dpi) {
  CFontMap map(Arial(10));
  EXPECT_DOUBLE_EQ(map.PixelSize(), 10.0 * 96.0 / 72.0);
  const TextMetrics m = map.Measure("Hg");
  // Liberation Sans has Arial's vertical metrics: 13 + 3 pixels at 10 points.
  EXPECT_EQ(m.ascent, 13.0);
  EXPECT_EQ(m.descent, 3.0);
  EXPECT_EQ(m.height, 16.0);
  EXPECT_GE(map.LineHeight(), m.height);
  EXPECT_EQ(map.Measure("").width, 0.0);
}

TEST(FontMetrics, WidthAddsAdvancesAndKerning) {
  CFontMap map(Arial(14));
  EXPECT_LT(map.Measure("Axis").width, map.Measure("Axis label").width);
  EXPECT_EQ(map.Measure("ii").width, 2 * map.Measure("i").width);
  ASSERT_TRUE(map.HasKerning());
  const double a = map.Measure("A").width, v = map.Measure("V").width, av = map.Measure("AV").width;
  EXPECT_LT(av, a + v);
  EXPECT_EQ(av, a + v + map.Kerning(U'A', U'V'));
  CFontMap boldMap(Arial(14, true));
  EXPECT_GT(boldMap.Measure("Contour 12.5").width, map.Measure("Contour 12.5").width);
  EXPECT_EQ(map.Measure("\x01\x1F").width, 0.0);  // control characters take no room
}

// ---------------------------------------------------------------------------------------
// 4. Pixels

void ExpectInside(const std::array<int, 4>& ink, double x0, double y0, double x1, double y1) {
  ASSERT_LE(ink[0], ink[2]) << "nothing drawn";
  EXPECT_GE(ink[0], x0);
  EXPECT_GE(ink[1], y0);
  EXPECT_LT(ink[2], x1);
  EXPECT_LT(ink[3], y1);
  // ... and fills it: letters start and end within a couple of pixels of the advance.
  EXPECT_LE(ink[0], x0 + 2);
  EXPECT_GE(ink[2], x1 - 3);
}

TEST(TextPixels, InkStaysInTheMeasuredBoxForEveryAlignment) {
  Canvas c(260, 100);
  CFontMap map(Arial(10));
  const std::string text = "Hello, AVAVA Wijk";
  const TextMetrics m = map.Measure(text);
  const double w = m.width, ax = 130;
  struct Case {
    TextAlignH h;
    TextAlignV v;
    double left, baseline;  // where the box's left edge and baseline must land
  };
  const Case cases[] = {{TextAlignH::kLeft, TextAlignV::kBaseline, ax, 50},
                        {TextAlignH::kCenter, TextAlignV::kBaseline, ax - std::round(w / 2), 50},
                        {TextAlignH::kRight, TextAlignV::kBaseline, ax - w, 50},
                        {TextAlignH::kLeft, TextAlignV::kTop, ax, 50 - m.ascent},
                        {TextAlignH::kLeft, TextAlignV::kBottom, ax, 50 + m.descent},
                        {TextAlignH::kLeft, TextAlignV::kCenter, ax, 50 - std::round((m.ascent - m.descent) / 2)}};
  for (const Case& k : cases) {
    c.Clear();
    DrawText(map, text, kBlack, TextAnchor{ax + 0.3, 49.8, -1.0, k.h, k.v, 0.0});
    SCOPED_TRACE(static_cast<int>(k.h) * 10 + static_cast<int>(k.v));
    const auto ink = c.Ink();
    ExpectInside(ink, k.left, k.baseline - m.descent, k.left + w, k.baseline + m.ascent);
    EXPECT_LT(ink[1], k.baseline);  // the descender of 'j' goes below the baseline
  }
}

TEST(TextPixels, EachTexelCoversOnePixelAndFaintEdgesAreDropped) {
  Canvas c;
  CFontMap map(Arial(14));
  DrawText(map, "R", kBlack, TextAnchor{20, 30});
  c.Read();
  const CFontMap::Glyph& g = map.GlyphOf(U'R');
  ASSERT_EQ(g.pieces.size(), 1u);
  const CFontMap::Piece& p = g.pieces[0];
  const auto& page = map.Pages()[static_cast<std::size_t>(p.page)];
  std::vector<std::uint8_t> texels(static_cast<std::size_t>(page.side) * static_cast<std::size_t>(page.side));
  glPushClientAttrib(GL_CLIENT_PIXEL_STORE_BIT);
  glPixelStorei(GL_PACK_ALIGNMENT, 1);
  glBindTexture(GL_TEXTURE_2D, page.texture);
  glGetTexImage(GL_TEXTURE_2D, 0, GL_LUMINANCE, GL_UNSIGNED_BYTE, texels.data());
  glBindTexture(GL_TEXTURE_2D, 0);
  glPopClientAttrib();
  int inked = 0;
  for (int r = 0; r < g.height; ++r) {
    for (int col = 0; col < g.width; ++col) {
      const int v = texels[static_cast<std::size_t>((p.y + r) * page.side + p.x + col)];
      // Black over white with alpha v: 255 - v, unless the alpha test drops it (level 4,
      // 16, is within a rounding of the 0.0625 reference: either is right).
      const int expected = v > 16 ? 255 - v : 255;
      const int red = Red(c.At(20 + g.left + col, 30 + g.top - 1 - r));
      if (v != 16) {
        EXPECT_NEAR(red, expected, 1) << col << "," << r;
      }
      inked += expected < 255;
    }
  }
  EXPECT_GT(inked, 40);
  // Nowhere a pixel lighter than the alpha threshold allows, nor ink outside the glyph.
  int outside = 0;
  for (int y = 0; y < c.target.Height(); ++y) {
    for (int x = 0; x < c.target.Width(); ++x) {
      const int red = Red(c.At(x, y));
      EXPECT_TRUE(red == 255 || red <= 255 - 16) << x << "," << y;
      const bool inGlyph = x >= 20 + g.left && x < 20 + g.left + g.width && y <= 30 + g.top - 1 &&
                           y > 30 + g.top - 1 - g.height;
      outside += red != 255 && !inGlyph;
    }
  }
  EXPECT_EQ(outside, 0);
}

TEST(TextPixels, ColourTintsTheGlyphsAndTheBoxHasItsBorder) {
  Canvas c;
  CFontMap map(Arial(12));
  Line border;
  border.SetColor(Rgb(0, 0, 255));
  const TextBox box{Rgb(255, 255, 0), &border, 3.0};
  const TextAnchor at{60, 40, -1.0, TextAlignH::kLeft, TextAlignV::kBaseline, 0.0};
  DrawText(map, "IIII", Rgb(255, 0, 0), at, &box);
  const TextQuad q = TextOutline(map, "IIII", at, 3.0);
  const auto ink = c.Ink();
  EXPECT_EQ(ink[0], q[0][0]);
  EXPECT_EQ(ink[1], q[0][1]);
  EXPECT_EQ(ink[2], q[2][0] - 1);
  EXPECT_EQ(ink[3], q[2][1] - 1);
  EXPECT_EQ(c.At(ink[0], ink[1]), Rgb(0, 0, 255));           // border corners
  EXPECT_EQ(c.At(ink[2], (ink[1] + ink[3]) / 2), Rgb(0, 0, 255));
  EXPECT_EQ(c.At(ink[0] + 1, ink[1] + 1), Rgb(255, 255, 0));  // fill inside the border
  // The stems of 'I' are fully covered: pure text colour; no pixel anywhere has blue
  // inside the border (text over yellow stays between yellow and red).
  int red = 0;
  for (int y = ink[1] + 1; y < ink[3]; ++y) {
    for (int x = ink[0] + 1; x < ink[2]; ++x) {
      const Color p = c.At(x, y);
      red += p == Rgb(255, 0, 0);
      EXPECT_EQ(SplitColor(p).blue, 0) << x << "," << y;
    }
  }
  EXPECT_GT(red, 20);
}

TEST(TextPixels, UnderlineAndStrikeoutAreFullRowsBelowAndAboveTheBaseline) {
  Canvas c;
  Font font("Arial", 12);
  font.SetUnderline(true);
  font.SetStrikethrough(true);
  CFontMap map(font);
  const double w = map.Measure("mum").width;
  DrawText(map, "mum", kBlack, TextAnchor{50, 50});
  c.Read();
  auto fullRow = [&](int y) {
    for (int x = 50; x < 50 + static_cast<int>(w); ++x) {
      if (c.At(x, y) != kBlack) return false;
    }
    return c.At(49, y) == kWhite && c.At(50 + static_cast<int>(w), y) == kWhite;
  };
  std::vector<int> rows;
  for (int y = 0; y < c.target.Height(); ++y) {
    if (fullRow(y)) rows.push_back(y);
  }
  // "mum" has no ink below the baseline: the rows there are the underline; the
  // strikeout crosses the letters' bodies above it.
  const int below = static_cast<int>(std::count_if(rows.begin(), rows.end(), [](int y) { return y < 50; }));
  EXPECT_EQ(below, static_cast<int>(map.UnderlineThickness()));
  EXPECT_EQ(static_cast<int>(rows.size()) - below, static_cast<int>(map.StrikeoutThickness()));
  EXPECT_GE(rows.front(), 50 - map.Descent());
  EXPECT_LT(rows.back(), 50 + map.Ascent() / 2 + 2);
  EXPECT_GE(rows.back(), 51);
}

// The image turned a quarter turn counter-clockwise about (cx, cy): pixel (x, y) goes to
// (cx - (y - cy) - 1, cy + (x - cx)).
TEST(TextPixels, QuarterTurnsAreExactAndOtherAnglesStayInTheirOutline) {
  const std::string text = "Level 42";
  Canvas flat(200, 200);
  CFontMap map(Arial(10));
  DrawText(map, text, kBlack, TextAnchor{100, 100});
  const std::vector<Color> before = flat.Pixels();
  for (const double angle : {90.0, -270.0}) {
    flat.Clear();
    const TextAnchor at{100, 100, -1.0, TextAlignH::kLeft, TextAlignV::kBaseline, angle};
    DrawText(map, text, kBlack, at);
    const std::vector<Color> turned = flat.Pixels();
    int mismatches = 0;
    for (int y = 0; y < 200; ++y) {
      for (int x = 0; x < 200; ++x) {
        const int tx = 100 - (y - 100) - 1, ty = 100 + (x - 100);
        if (tx < 0 || tx >= 200 || ty < 0 || ty >= 200) continue;
        mismatches += before[static_cast<std::size_t>(y * 200 + x)] != turned[static_cast<std::size_t>(ty * 200 + tx)];
      }
    }
    EXPECT_EQ(mismatches, 0) << angle;
    const auto ink = flat.Ink();  // tall and narrow
    EXPECT_GT(ink[3] - ink[1], 3 * (ink[2] - ink[0]));
  }
  flat.Clear();
  const TextAnchor tilted{100, 100, -1.0, TextAlignH::kCenter, TextAlignV::kCenter, 30.0};
  DrawText(map, text, kBlack, tilted);
  const TextQuad q = TextOutline(map, text, tilted);
  const auto ink = flat.Ink();
  double minX = 1e9, minY = 1e9, maxX = -1e9, maxY = -1e9;
  for (const auto& p : q) {
    minX = std::min(minX, p[0]), maxX = std::max(maxX, p[0]);
    minY = std::min(minY, p[1]), maxY = std::max(maxY, p[1]);
  }
  EXPECT_GE(ink[0], minX - 1);
  EXPECT_LE(ink[2], maxX);
  EXPECT_GE(ink[1], minY - 1);
  EXPECT_LE(ink[3], maxY);
  EXPECT_GT(ink[3] - ink[1], 20);  // it really rose
}

TEST(TextPixels, OutlinesOverlapOnlyWhenTheyShareArea) {
  CFontMap map(Arial(10));
  const TextQuad a = TextOutline(map, "123.5", TextAnchor{100, 100});
  const double w = map.Measure("123.5").width;
  EXPECT_TRUE(OutlinesOverlap(a, TextOutline(map, "7", TextAnchor{100 + w - 2, 100})));
  EXPECT_FALSE(OutlinesOverlap(a, TextOutline(map, "7", TextAnchor{100 + w + 1, 100})));
  // A turned label crossing the first one, and one clear of it above.
  EXPECT_TRUE(OutlinesOverlap(a, TextOutline(map, "9999", TextAnchor{110, 80, -1, {}, {}, 90})));
  EXPECT_FALSE(OutlinesOverlap(a, TextOutline(map, "9999", TextAnchor{110, 130, -1, {}, {}, 45})));
}

// ---------------------------------------------------------------------------------------
// 5. OpenGL state and contexts

// Every piece of OpenGL state the text might touch, as numbers.
std::vector<double> GlState() {
  std::vector<double> numbers;
  const auto add = [&numbers](GLenum name, int count) {
    std::array<GLdouble, 16> v{};
    glGetDoublev(name, v.data());
    numbers.insert(numbers.end(), v.begin(), v.begin() + count);
  };
  static const GLenum kEnables[] = {GL_BLEND,       GL_ALPHA_TEST, GL_TEXTURE_2D,   GL_LIGHTING,
                                    GL_CLIP_PLANE0, GL_DEPTH_TEST, GL_LINE_STIPPLE, GL_CULL_FACE};
  static const GLenum kValues[] = {GL_BLEND_SRC, GL_BLEND_DST, GL_ALPHA_TEST_FUNC, GL_ALPHA_TEST_REF, GL_TEXTURE_BINDING_2D,
                         GL_MATRIX_MODE, GL_DEPTH_WRITEMASK, GL_DEPTH_FUNC, GL_LINE_WIDTH, GL_LINE_STIPPLE_PATTERN,
                         GL_UNPACK_ALIGNMENT, GL_UNPACK_ROW_LENGTH, GL_UNPACK_SKIP_ROWS, GL_UNPACK_SKIP_PIXELS,
                         GL_UNPACK_SWAP_BYTES, GL_UNPACK_LSB_FIRST, GL_MODELVIEW_STACK_DEPTH,
                         GL_PROJECTION_STACK_DEPTH, GL_TEXTURE_STACK_DEPTH, GL_ATTRIB_STACK_DEPTH,
                         GL_CLIENT_ATTRIB_STACK_DEPTH, GL_ACTIVE_TEXTURE};
  static const GLenum kQuads[] = {GL_VIEWPORT, GL_CURRENT_COLOR};
  static const GLenum kMatrices[] = {GL_MODELVIEW_MATRIX, GL_PROJECTION_MATRIX, GL_TEXTURE_MATRIX};
  for (const GLenum e : kEnables) numbers.push_back(glIsEnabled(e));
  for (const GLenum e : kValues) add(e, 1);
  for (const GLenum e : kQuads) add(e, 4);
  for (const GLenum e : kMatrices) add(e, 16);
  GLint env = 0;
  glGetTexEnviv(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, &env);
  numbers.push_back(env);
  return numbers;
}

TEST(TextState, BuildingAndDrawingLeaveEveryStateAsItWas) {
  Canvas c;
  // A caller's state unlike anything the text uses.
  GLuint own = 0;
  glGenTextures(1, &own);
  glBindTexture(GL_TEXTURE_2D, own);
  glTexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_REPLACE);
  glEnable(GL_BLEND);
  glBlendFunc(GL_ONE, GL_ONE);
  glEnable(GL_LIGHTING);
  glEnable(GL_CLIP_PLANE0);
  glEnable(GL_DEPTH_TEST);
  glDepthFunc(GL_LEQUAL);
  glLineWidth(3.0F);
  glPixelStorei(GL_UNPACK_ALIGNMENT, 2);
  glPixelStorei(GL_UNPACK_ROW_LENGTH, 7);
  glViewport(10, 5, 150, 80);
  glColor4f(0.1F, 0.2F, 0.3F, 0.4F);
  glMatrixMode(GL_PROJECTION);
  glOrtho(-3, 5, -2, 7, -1, 9);
  glMatrixMode(GL_MODELVIEW);
  glRotated(33, 1, 2, 3);
  const std::vector<double> before = GlState();

  Font font("Arial", 11);
  font.SetUnderline(true);
  CFontMap map(font);  // textures made now, in the current context
  ASSERT_FALSE(map.Pages().empty());
  EXPECT_EQ(GlState(), before);
  Line border;
  const TextBox box{kWhite, &border, 2.0};
  DrawText(map, "State \xE2\x82\xAC \xE4\xB8\xAD", Rgb(10, 20, 30), TextAnchor{20, 20, 0.0, TextAlignH::kCenter,
                                                                               TextAlignV::kCenter, 15.0},
           &box);
  EXPECT_EQ(GlState(), before);
  EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
  glDeleteTextures(1, &own);
}

TEST(TextState, PlacementIgnoresTheCallersMatricesAndFollowsTheViewport) {
  Canvas c(200, 100);
  CFontMap map(Arial(10));
  DrawText(map, "Band", kBlack, TextAnchor{70, 40});
  const std::vector<Color> whole = c.Pixels();
  c.Clear();
  glViewport(50, 30, 100, 40);  // a band, with a projection nothing like pixels
  glMatrixMode(GL_PROJECTION);
  glFrustum(-1, 1, -1, 1, 1, 10);
  glMatrixMode(GL_MODELVIEW);
  glRotated(80, 0, 1, 0);
  DrawText(map, "Band", kBlack, TextAnchor{20, 10});
  EXPECT_EQ(c.Pixels(), whole);
}

TEST(TextState, ProjectedAnchorsAreDepthTested) {
  Canvas c(200, 100);
  CFontMap map(Arial(10));
  CapturedMatrices m;
  glMatrixMode(GL_PROJECTION);
  glOrtho(0, 200, 0, 100, -10, 10);
  glGetDoublev(GL_PROJECTION_MATRIX, m.projection.data());
  glGetDoublev(GL_MODELVIEW_MATRIX, m.modelView.data());
  glGetIntegerv(GL_VIEWPORT, m.viewport.data());
  const auto p = ProjectToWindow(m, 120.0, 60.0, 0.0);
  ASSERT_TRUE(p.has_value());
  EXPECT_NEAR(p->x, 120.0, 1e-4);  // GL keeps its matrices in single precision
  EXPECT_NEAR(p->y, 60.0, 1e-4);
  EXPECT_NEAR(p->depth, 0.0, 1e-6);
  // An opaque square at depth 0 (nearer is smaller): text behind it is hidden.
  glEnable(GL_DEPTH_TEST);
  glColor3ub(0, 255, 0);
  glRectd(100, 40, 160, 80);
  const std::vector<Color> square = c.Pixels();
  DrawText(map, "Hid", kBlack, AnchorAt(WindowPoint{p->x, p->y, 0.5}));
  EXPECT_EQ(c.Pixels(), square);
  DrawText(map, "Hid", kBlack, AnchorAt(WindowPoint{p->x, p->y, -0.5}));
  EXPECT_NE(c.Pixels(), square);
}

TEST(TextState, ReleaseDeletesOnlyInItsOwnContextAndForgottenMapsDrawAgain) {
  std::vector<Color> first;
  std::unique_ptr<CFontMap> map;
  GLuint page = 0;
  {
    Canvas a;
    map = std::make_unique<CFontMap>(Arial(10));
    page = map->Pages().at(0).texture;
    DrawText(*map, "Again", kBlack, TextAnchor{10, 10});
    first = a.Pixels();
    Canvas b;  // another context, current now, with a texture of the same name
    GLuint other = 0;
    glGenTextures(1, &other);
    glBindTexture(GL_TEXTURE_2D, other);
    ASSERT_EQ(other, page);
    map->Release();
    EXPECT_TRUE(glIsTexture(other));
    EXPECT_TRUE(map->Pages().empty());
    ASSERT_TRUE(a.target.MakeCurrent());
    EXPECT_TRUE(glIsTexture(page));  // forgotten, not deleted: the map had lost track
  }
  // The glyphs go into whatever context draws them next.
  Canvas fresh;
  DrawText(*map, "Again", kBlack, TextAnchor{10, 10});
  EXPECT_EQ(fresh.Pixels(), first);
  const GLuint now = map->Pages().at(0).texture;
  map->Release();
  EXPECT_FALSE(glIsTexture(now));
}

TEST(TextState, GlyphsLargerThanAPageAreCutIntoPieces) {
  Font font("Arial", 40);
  Canvas c(160, 100);
  std::vector<Color> whole;
  {
    CFontMap map(font);
    DrawText(map, "W@", kBlack, TextAnchor{10, 30});
    whole = c.Pixels();
  }
  c.Clear();
  CFontMap::LimitPageSideForTesting(16);
  CFontMap map(font);
  CFontMap::LimitPageSideForTesting(0);
  DrawText(map, "W@", kBlack, TextAnchor{10, 30});
  EXPECT_GT(map.GlyphOf(U'W').pieces.size(), 4u);
  EXPECT_GT(map.Pages().size(), 20u);
  for (const auto& page : map.Pages()) EXPECT_EQ(page.side, 16);
  EXPECT_EQ(c.Pixels(), whole);
}

// ---------------------------------------------------------------------------------------
// 6. The manager

TEST(FontMapManager, OneMapPerDistinctFont) {
  Canvas c;
  CFontMapManager fonts;
  Arial base(9);
  CFontMap& first = fonts.Get(base);
  EXPECT_EQ(&fonts.Get(Arial(9)), &first);
  using Change = void (*)(Font&);
  const Change changes[] = {
      [](Font& f) { f.SetName("Liberation Serif"); }, [](Font& f) { f.SetSize(9.5); },
      [](Font& f) { f.SetBold(true); },                [](Font& f) { f.SetItalic(true); },
      [](Font& f) { f.SetUnderline(true); },           [](Font& f) { f.SetStrikethrough(true); },
      [](Font& f) { f.SetWeight(300); }};
  for (const Change change : changes) {
    Arial other(9);
    change(other);
    EXPECT_NE(&fonts.Get(other), &first);
  }
  EXPECT_EQ(fonts.Size(), 8u);
  const GLuint texture = first.Pages().at(0).texture;
  EXPECT_TRUE(glIsTexture(texture));
  fonts.Clear();
  EXPECT_EQ(fonts.Size(), 0u);
  EXPECT_FALSE(glIsTexture(texture));

  const GLuint kept = fonts.Get(base).Pages().at(0).texture;
  c.target.ReleaseCurrent();
  fonts.Forget();  // no context: the names are dropped, nothing is called
  EXPECT_EQ(fonts.Size(), 0u);
  ASSERT_TRUE(c.target.MakeCurrent());
  EXPECT_TRUE(glIsTexture(kept));
}

// ---------------------------------------------------------------------------------------
// 7. Hostile input and extreme sizes

TEST(TextRobustness, ThousandsOfCodePointsAndBrokenUtf8NeverFail) {
  Canvas c(300, 60);
  CFontMap map(Arial(9));
  // 700 ideographs and 300 emoji the face lacks, filling page after page, with broken
  // sequences among them.
  std::string text;
  for (std::uint32_t cp = 0x4E00; cp < 0x4E00 + 700; ++cp) {
    text += {static_cast<char>(0xE0 | (cp >> 12)), static_cast<char>(0x80 | ((cp >> 6) & 0x3F)),
             static_cast<char>(0x80 | (cp & 0x3F))};
  }
  for (std::uint32_t cp = 0x1F600; cp < 0x1F600 + 300; ++cp) {
    text += {static_cast<char>(0xF0 | (cp >> 18)), static_cast<char>(0x80 | ((cp >> 12) & 0x3F)),
             static_cast<char>(0x80 | ((cp >> 6) & 0x3F)), static_cast<char>(0x80 | (cp & 0x3F))};
    if (cp % 16 == 0) text += "\xC0\xAF\xE2\x82\xED\xA0\x80\xF4\x90\x80\x80\xFF";
  }
  const TextMetrics m = map.Measure(text);
  EXPECT_TRUE(std::isfinite(m.width));
  EXPECT_GT(m.width, 0.0);
  for (std::size_t at = 0; at < text.size(); at += 997) {
    DrawText(map, std::string_view(text).substr(at, 997), kBlack, TextAnchor{0, 20, -1.0, {}, {}, static_cast<double>(at) * 7.0});
  }
  EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
  EXPECT_LE(c.Ink()[0], c.Ink()[2]);
}

TEST(TextRobustness, TinyAndHugeSizes) {
  Canvas c(400, 400);
  CFontMap small(Font("Arial", 0.5));
  DrawText(small, "tiny", kBlack, TextAnchor{10, 10});
  CFontMap big(Font("Arial", 1000));  // 1333 pixels to the em: magnified from the largest rendering
  EXPECT_GT(big.GlyphScale(), 1.0);
  EXPECT_EQ(big.GlyphCount(), 0u);  // nothing rendered before it is needed
  const TextMetrics m = big.Measure("l");
  EXPECT_NEAR(m.ascent, 0.905 * 1333.3, 10.0);
  DrawText(big, "l", kBlack, TextAnchor{150, -100});
  const auto ink = c.Ink();
  EXPECT_GT(ink[3] - ink[1], 350);  // the stem crosses the whole canvas
  EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
}

}  // namespace
}  // namespace orvane::detail
