// Contour labels, drawn for real off-screen: the rotation routine's numbers, where labels
// go along the lines, the visibility testers (results and the buffers they leave), the
// pass that draws labels (centring, turning, overlaps) and whole frames with labels on.
// A machine without a context fails these.
//
// Contents
//   1. Rotation and angles
//   2. Places
//   3. Visibility testers
//   4. Drawing a pass
//   5. Frames

#define EGL_NO_X11 1
#define MESA_EGL_NO_X11_HEADERS 1
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <memory>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "control/trackball.h"
#include "data/data_set_state.h"
#include "orvane/axes/axes.h"
#include "orvane/contour/contouring.h"
#include "orvane/data/data_sets.h"
#include "orvane/render/caption.h"
#include "orvane/render/cursor.h"
#include "orvane/render/faces.h"
#include "orvane/render/legend.h"
#include "orvane/render/view.h"
#include "render/annotations.h"
#include "render/contour_labels.h"
#include "render/gl.h"
#include "render/render_target.h"

namespace orvane::detail {
namespace {

// ---------------------------------------------------------------------------------------
// 1. Rotation and angles

TEST(LabelRotation, MatrixUsesTheShortPiAndRzRyRxOrder) {
  // 90 degrees is 1.5707963 radians: cos is not 0 and sin is not 1.
  EXPECT_EQ(kDegreesToRadians, 3.1415926 / 180.0);
  const Matrix3 z90 = RotationMatrix(0, 0, 90);
  EXPECT_EQ(z90[0][0], 2.6794896585028633e-08);
  EXPECT_EQ(z90[0][1], -0.9999999999999997);
  EXPECT_EQ(z90[1][0], 0.9999999999999997);
  EXPECT_EQ(z90[2][2], 1.0);
  // Every element of a general rotation, against the products of Rz Ry Rx written out
  // (X first, then Y, then Z).
  const Matrix3 r = RotationMatrix(30, 45, 60);
  const double cx = std::cos(30 * 0.017453292222222222), sx = std::sin(30 * 0.017453292222222222);
  const double cy = std::cos(45 * 0.017453292222222222), sy = std::sin(45 * 0.017453292222222222);
  const double cz = std::cos(60 * 0.017453292222222222), sz = std::sin(60 * 0.017453292222222222);
  EXPECT_EQ(r[0][1], cz * sy * sx - sz * cx);
  EXPECT_EQ(r[1][2], sz * sy * cx - cz * sx);
  EXPECT_DOUBLE_EQ(r[2][0], -sy);
  EXPECT_EQ(r[2][1], sx * cy);
  const auto p = Rotate(r, 1, 2, 3);
  EXPECT_EQ(p[1], r[1][0] * 1 + r[1][1] * 2 + r[1][2] * 3);
}

TEST(LabelRotation, OutlineIsTheCentredRectangleTurned) {
  EXPECT_EQ(LabelOutline(100, 50, 20, 6, 0), (TextQuad{{{80, 44}, {120, 44}, {120, 56}, {80, 56}}}));
  // A quarter turn: the bottom-right corner (20, -6) goes to about (6, 20), by the short
  // pi's cosine and sine.
  const TextQuad up = LabelOutline(100, 50, 20, 6, 90);
  const double c = 2.6794896585028633e-08, s = 0.9999999999999997;
  EXPECT_EQ(up[1][0], 100 + (c * 20 - s * -6));
  EXPECT_EQ(up[1][1], 50 + (s * 20 + c * -6));
}

TEST(LabelRotation, AnglesAreNeverUpsideDown) {
  for (int degrees = -360; degrees <= 360; ++degrees) {
    const double r = degrees * 3.14159265358979323846 / 180.0;
    const double dx = std::cos(r), dy = std::sin(r);
    const double a = LabelAngle(10, 20, 10 + 30 * dx, 20 + 30 * dy);
    EXPECT_GT(a, -90.0) << degrees;
    EXPECT_LE(a, 90.0) << degrees;
    // Along the line, one way or the other.
    const double ar = a * 3.14159265358979323846 / 180.0;
    EXPECT_NEAR(std::fabs(std::cos(ar) * dx + std::sin(ar) * dy), 1.0, 1e-9) << degrees;
  }
  EXPECT_EQ(LabelAngle(0, 0, -5, 0), 0.0);   // leftwards reads left to right
  EXPECT_EQ(LabelAngle(0, 0, 0, -5), 90.0);  // downwards reads bottom to top
  EXPECT_EQ(LabelAngle(0, 0, 0, 5), 90.0);
  EXPECT_EQ(LabelAngle(3, 3, 3, 3), 0.0);
}

// ---------------------------------------------------------------------------------------
// 2. Places

// Levels of straight polylines along X at heights y, each from x0 to x1 (normalised),
// one polyline per level, cut into segments of 0.05.
std::vector<CLineList> StraightLevels(int count, double x0 = 0.0, double x1 = 1.0) {
  std::vector<CLineList> levels;
  for (int k = 0; k < count; ++k) {
    const double y = (k + 0.5) / count;
    std::vector<CLine> lines;
    for (double x = x0; x < x1 - 1e-12; x += 0.05) {
      lines.push_back(CLine{x, y, 0.1 * k, std::min(x + 0.05, x1), y, 0.1 * k});
    }
    levels.push_back(CLineList::FromPolylines(std::move(lines), {0}));
  }
  return levels;
}

TEST(LabelPlaces, DensityGivesLabelsPerLengthAtLeastOneOnALongEnoughLine) {
  const auto levels = StraightLevels(1);
  for (const std::int32_t density : {0, 1, 4, 9}) {
    const LevelLabels places = PlaceLabels(levels, density, 0);
    ASSERT_EQ(places.size(), 1u);
    EXPECT_EQ(places[0].size(), static_cast<std::size_t>(std::max(density, 1))) << density;
    for (const CLabel& l : places[0]) {
      // On the line, the second point kAheadLength further along it.
      EXPECT_DOUBLE_EQ(l.anchor[1], 0.5);
      EXPECT_DOUBLE_EQ(l.ahead[1], 0.5);
      EXPECT_NEAR(l.ahead[0] - l.anchor[0], kAheadLength, 1e-12);
      EXPECT_GT(l.anchor[0], 0.0);
      EXPECT_LT(l.ahead[0], 1.0);
    }
    // One in each equal stretch.
    for (std::size_t i = 0; i < places[0].size(); ++i) {
      const double stretch = 1.0 / static_cast<double>(places[0].size());
      EXPECT_GE(places[0][i].anchor[0], stretch * static_cast<double>(i)) << density;
      EXPECT_LT(places[0][i].anchor[0], stretch * static_cast<double>(i + 1)) << density;
    }
  }
  // Half the length, half the labels; too short a line, none.
  EXPECT_EQ(PlaceLabels(StraightLevels(1, 0.0, 0.5), 8, 0)[0].size(), 4u);
  EXPECT_EQ(PlaceLabels(StraightLevels(1, 0.0, 0.05), 8, 0)[0].size(), 0u);
  EXPECT_EQ(PlaceLabels(StraightLevels(1, 0.0, 0.1), 8, 0)[0].size(), 1u);
  // A huge density stops at one label per direction reach.
  EXPECT_EQ(PlaceLabels(StraightLevels(1), 1'000'000, 0)[0].size(), 50u);
  // Points keep the line's own Z.
  const LevelLabels three = PlaceLabels(StraightLevels(3), 2, 0);
  EXPECT_DOUBLE_EQ(three[2][0].anchor[2], 0.2);
}

TEST(LabelPlaces, SkippingLabelsOneLevelThenLeavesN) {
  const auto levels = StraightLevels(7);
  for (const std::int32_t skipping : {0, 1, 2, 6, 10}) {
    const LevelLabels places = PlaceLabels(levels, 4, skipping);
    ASSERT_EQ(places.size(), 7u);
    for (std::size_t k = 0; k < 7; ++k) {
      EXPECT_EQ(places[k].empty(), k % static_cast<std::size_t>(skipping + 1) != 0) << skipping << " " << k;
    }
  }
  // Neighbouring levels do not put their labels at the same X.
  const LevelLabels all = PlaceLabels(levels, 1, 0);
  EXPECT_GT(std::fabs(all[0][0].anchor[0] - all[1][0].anchor[0]), 0.05);
}

TEST(LabelPlaces, AnEmptyLevelOrPolylineGivesNothing) {
  std::vector<CLineList> levels(2);
  const LevelLabels places = PlaceLabels(levels, 4, 0);
  ASSERT_EQ(places.size(), 2u);
  EXPECT_TRUE(places[0].empty() && places[1].empty());
  // A closed square loop of side 0.2: four labels at density 5 (length 0.8).
  std::vector<CLine> loop{{0.4, 0.4, 0, 0.6, 0.4, 0}, {0.6, 0.4, 0, 0.6, 0.6, 0}, {0.6, 0.6, 0, 0.4, 0.6, 0},
                          {0.4, 0.6, 0, 0.4, 0.4, 0}};
  std::vector<CLineList> square;
  square.push_back(CLineList::FromPolylines(loop, {0}));
  const LevelLabels around = PlaceLabels(square, 5, 0);
  ASSERT_EQ(around[0].size(), 4u);
  std::set<int> sides;
  for (const CLabel& l : around[0]) {
    const bool onEdge = std::fabs(l.anchor[0] - 0.4) < 1e-12 || std::fabs(l.anchor[0] - 0.6) < 1e-12 ||
                        std::fabs(l.anchor[1] - 0.4) < 1e-12 || std::fabs(l.anchor[1] - 0.6) < 1e-12;
    EXPECT_TRUE(onEdge);
    sides.insert(static_cast<int>(std::lround(10 * l.anchor[0] + 100 * l.anchor[1])));
  }
  EXPECT_EQ(sides.size(), 4u);
}

// ---------------------------------------------------------------------------------------
// 3. Visibility testers

// The current target's w x h pixels in a format of the given bytes per pixel.
std::vector<GLubyte> ReadPixels(int w, int h, GLenum format, int bytes) {
  std::vector<GLubyte> v(static_cast<std::size_t>(w * h * bytes));
  glPixelStorei(GL_PACK_ALIGNMENT, 1);
  glReadPixels(0, 0, w, h, format, GL_UNSIGNED_BYTE, v.data());
  return v;
}

// OpenGL's integer for each name, in order.
std::vector<GLint> Integers(std::initializer_list<GLenum> names) {
  std::vector<GLint> v;
  for (const GLenum name : names) {
    glGetIntegerv(name, &v.emplace_back());
  }
  return v;
}

// The depth of every stack and the current matrix mode.
std::vector<GLint> Stacks() {
  return Integers({GL_MODELVIEW_STACK_DEPTH, GL_PROJECTION_STACK_DEPTH, GL_TEXTURE_STACK_DEPTH, GL_ATTRIB_STACK_DEPTH,
                   GL_CLIENT_ATTRIB_STACK_DEPTH, GL_MATRIX_MODE});
}

// A target made current for the test's lifetime.
struct Canvas {
  RenderTarget target;
  int w, h;
  Canvas(int width, int height) : w(width), h(height) {
    target.Create(width, height);
    EXPECT_TRUE(target.HasContext()) << target.FailureReason();
    EXPECT_TRUE(target.MakeCurrent());
    EXPECT_GT(target.StencilBits(), 0);
  }
  ~Canvas() { target.ReleaseCurrent(); }
  std::vector<GLubyte> Colour() const { return ReadPixels(w, h, GL_RGBA, 4); }
  std::vector<GLubyte> Stencil() const { return ReadPixels(w, h, GL_STENCIL_INDEX, 1); }
  Color At(int x, int y) const {
    GLubyte p[4] = {};
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glReadPixels(x, y, 1, 1, GL_RGBA, GL_UNSIGNED_BYTE, p);
    return static_cast<Color>(p[0] | (static_cast<Color>(p[1]) << 8) | (static_cast<Color>(p[2]) << 16));
  }
  // Pixel coordinates as cube coordinates: x, y in pixels, z towards the viewer in
  // [-1, 1].
  CapturedMatrices PixelMatrices() const {
    glViewport(0, 0, w, h);
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    glOrtho(0, w, 0, h, -1, 1);
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
    CapturedMatrices m;
    glGetDoublev(GL_MODELVIEW_MATRIX, m.modelView.data());
    glGetDoublev(GL_PROJECTION_MATRIX, m.projection.data());
    glGetIntegerv(GL_VIEWPORT, m.viewport.data());
    return m;
  }
};

// Heights of the scene's two surfaces at a pixel position.
double Tilted(double x, double y) { return -0.6 + 0.012 * (x - 10) + 0.004 * (y - 10); }
constexpr double kFlat = 0.2;

// Noise in the colour buffer (alpha too), a tilted surface over x 10..60 drawn as the
// views draw their fill (with its polygon offset) and a flat one over x 65..115 without
// any, depth only; the stencil 0x5A along the bottom rows and 0 elsewhere.
void DrawTesterScene(const Canvas& c) {
  std::mt19937 random(7);
  std::vector<GLubyte> noise(static_cast<std::size_t>(c.w * c.h * 4));
  for (GLubyte& b : noise) b = static_cast<GLubyte>(random() & 0xFF);
  glClearStencil(0);
  glClearDepth(1.0);
  glClear(GL_DEPTH_BUFFER_BIT | GL_STENCIL_BUFFER_BIT);
  glDisable(GL_DEPTH_TEST);
  glWindowPos2i(0, 0);
  glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
  glDrawPixels(c.w, c.h, GL_RGBA, GL_UNSIGNED_BYTE, noise.data());
  glEnable(GL_SCISSOR_TEST);
  glScissor(0, 0, c.w, 4);
  glClearStencil(0x5A);
  glClear(GL_STENCIL_BUFFER_BIT);
  glClearStencil(0);
  glDisable(GL_SCISSOR_TEST);
  c.PixelMatrices();
  glEnable(GL_DEPTH_TEST);
  glDepthFunc(GL_LESS);
  glColorMask(GL_FALSE, GL_FALSE, GL_FALSE, GL_FALSE);
  glEnable(GL_POLYGON_OFFSET_FILL);
  glPolygonOffset(0.9F, 1.0F);
  const auto quad = [](double x0, double x1, auto height) {
    glBegin(GL_QUADS);
    for (const auto& [x, y] : std::array<std::array<double, 2>, 4>{{{x0, 10}, {x1, 10}, {x1, 90}, {x0, 90}}}) {
      glVertex3d(x, y, height(x, y));
    }
    glEnd();
  };
  quad(10, 60, Tilted);
  glDisable(GL_POLYGON_OFFSET_FILL);
  quad(65, 115, [](double, double) { return kFlat; });
  glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);
}

TEST(LabelVisibility, BothTestersSeeTheSameAndLeaveColourAndStencilAsTheyWere) {
  Canvas c(128, 100);
  DrawTesterScene(c);
  const CapturedMatrices m = c.PixelMatrices();
  // Points with what they should give.
  std::vector<CubePoint3> points;
  std::vector<char> expected;
  std::mt19937 random(11);
  std::uniform_real_distribution<double> u(0.0, 1.0);
  auto add = [&](double x, double y, double z, bool visible) {
    points.push_back({x, y, z});
    expected.push_back(visible ? 1 : 0);
  };
  for (int i = 0; i < 60; ++i) {
    const double x = 14 + 42 * u(random), y = 14 + 72 * u(random);
    add(x, y, Tilted(x, y), true);         // exactly on the tilted surface
    add(x, y + 0.3, Tilted(x, y) + 0.2, true);
    add(x + 0.2, y, Tilted(x, y) - 0.2, false);
  }
  for (int i = 0; i < 30; ++i) {
    const double x = 68 + 44 * u(random), y = 14 + 72 * u(random);
    add(x, y, kFlat, true);  // exactly on the flat one: a tie is visible
    add(x, y, kFlat - 0.01, false);
  }
  add(3.5, 50, -0.99, true);           // nothing drawn there
  add(30, 50, Tilted(30, 50) - 0.3, false);
  add(30.2, 50.1, Tilted(30, 50) + 0.3, true);  // the same pixel, in front
  add(-5, 50, 0.9, false);             // outside the viewport
  add(40, 120, 0.9, false);
  const std::vector<GLubyte> colour = c.Colour(), stencil = c.Stencil();

  CPixelVisibilityStencil byStencil;
  CPixelVisibilityRGB byColour;
  for (IPixelVisibility* tester : {static_cast<IPixelVisibility*>(&byStencil), static_cast<IPixelVisibility*>(&byColour)}) {
    SCOPED_TRACE(tester == &byStencil ? "stencil" : "colour");
    const std::vector<char> got = tester->Test(m, points);
    ASSERT_EQ(got.size(), points.size());
    for (std::size_t i = 0; i < points.size(); ++i) {
      EXPECT_EQ(got[i], expected[i]) << i << " (" << points[i][0] << ", " << points[i][1] << ", " << points[i][2] << ")";
    }
    EXPECT_EQ(c.Colour(), colour);
    EXPECT_EQ(c.Stencil(), stencil);
    // Tested in batches, the same as one at a time.
    for (std::size_t i = 0; i < points.size(); i += 7) {
      EXPECT_EQ(tester->Visible(m, points[i]) ? 1 : 0, got[i]) << i;
    }
    EXPECT_EQ(c.Colour(), colour);
    EXPECT_EQ(c.Stencil(), stencil);
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
  }
  // The stencil tester reads back once per point: no more.
  EXPECT_LE(byStencil.ReadBacks(), static_cast<std::int64_t>(points.size() + points.size() / 7 + 1));
}

// ---------------------------------------------------------------------------------------
// 4. Drawing a pass

constexpr Color kBoxFill = 0x123456;
constexpr Color kWhite = 0xFFFFFF;

struct LabelCanvas : Canvas {
  CFontMapManager fonts;
  Font font{"Arial", 10.0, false};
  CPixelVisibilityStencil tester;
  CLabelsManager labels;
  CapturedMatrices m;
  LabelCanvas() : Canvas(200, 100) { Clear(); }
  void Clear() {
    glClearColor(1, 1, 1, 1);
    glClearStencil(0);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT | GL_STENCIL_BUFFER_BIT);
    m = PixelMatrices();
    glEnable(GL_DEPTH_TEST);
  }
  LabelStyle Style(bool rotate = true) {
    LabelStyle s;
    s.font = &fonts.Get(font);
    s.color = 0;
    s.rotate = rotate;
    s.fill = true;
    s.fillColor = kBoxFill;
    return s;
  }
  // A pass over a cleared canvas with one label, anchored at `at` and heading for `ahead`.
  void DrawOne(const std::string& text, const LabelStyle& style, const CubePoint3& at, const CubePoint3& ahead) {
    Clear();
    labels.Begin(m);
    labels.Add(text, style, at, ahead);
    labels.Finish(tester);
  }
  // Bounding box {x0, y0, x1, y1} of the pixels of a colour.
  std::array<int, 4> BoxOf(Color colour) const {
    const std::vector<GLubyte> v = Colour();
    std::array<int, 4> b{w, h, -1, -1};
    for (int y = 0; y < h; ++y) {
      for (int x = 0; x < w; ++x) {
        const GLubyte* p = &v[static_cast<std::size_t>((y * w + x) * 4)];
        if ((p[0] | (p[1] << 8) | (p[2] << 16)) != static_cast<int>(colour)) continue;
        b = {std::min(b[0], x), std::min(b[1], y), std::max(b[2], x), std::max(b[3], y)};
      }
    }
    return b;
  }
};

TEST(LabelPass, LabelsAreCentredOnTheirAnchorAndTurnAlongTheLine) {
  LabelCanvas c;
  c.DrawOne("1234", c.Style(), {60, 50, 0}, {70, 50, 0});
  ASSERT_EQ(c.labels.LastCounts().drawn, 1);
  const auto flat = c.BoxOf(kBoxFill);
  EXPECT_NEAR((flat[0] + flat[2] + 1) / 2.0, 60.0, 1.0);
  EXPECT_NEAR((flat[1] + flat[3] + 1) / 2.0, 50.0, 1.0);
  EXPECT_GT(flat[2] - flat[0], flat[3] - flat[1] + 8);  // wide
  // Inside its outline.
  const TextQuad& o = c.labels.LastDrawn()[0].outline;
  EXPECT_GE(flat[0], o[0][0] - 0.5);
  EXPECT_LE(flat[2] + 1, o[2][0] + 0.5);

  // A line going up: the label turns a quarter, still centred.
  c.DrawOne("1234", c.Style(), {60, 50, 0}, {60, 60, 0});
  const auto up = c.BoxOf(kBoxFill);
  EXPECT_NEAR((up[0] + up[2] + 1) / 2.0, 60.0, 1.0);
  EXPECT_NEAR((up[1] + up[3] + 1) / 2.0, 50.0, 1.0);
  EXPECT_GT(up[3] - up[1], up[2] - up[0] + 8);  // tall
  EXPECT_EQ(c.labels.LastDrawn()[0].angle, 90.0);

  // Without rotation the same line gives an unturned label.
  c.DrawOne("1234", c.Style(false), {60, 50, 0}, {60, 60, 0});
  EXPECT_EQ(c.BoxOf(kBoxFill), flat);
}

TEST(LabelPass, OppositeLineDirectionsDrawTheSamePixels) {
  LabelCanvas c;
  // Each pair of directions are the two ways along one line: the text reads the same.
  const std::array<std::array<double, 2>, 4> directions{{{10, 0}, {0, 10}, {7, 7}, {8, -3}}};
  for (const auto& d : directions) {
    const auto draw = [&](double way) {
      c.DrawOne("-0.25", c.Style(), {100, 50, 0}, {100 + way * d[0], 50 + way * d[1], 0});
      EXPECT_EQ(c.labels.LastCounts().drawn, 1);
      return c.Colour();
    };
    EXPECT_EQ(draw(1.0), draw(-1.0)) << d[0] << ", " << d[1];
  }
}

TEST(LabelPass, OverlappingLabelsAreDroppedFirstComeFirstKept) {
  LabelCanvas c;
  c.labels.Begin(c.m);
  c.labels.Add("11", c.Style(), {50, 50, 0}, {60, 50, 0});
  c.labels.Add("2222222", c.Style(), {58, 53, 0}, {68, 53, 0});     // over the first
  c.labels.Add("33", c.Style(), {150, 50, 0}, {160, 50, 0});        // clear of both
  c.labels.Add("44", c.Style(), {150, 50 + 8, 0}, {150, 60 + 8, 0});  // turned, over the third
  c.labels.Add("5", c.Style(), {196, 50, 0}, {199, 50, 0});          // sticks out of the viewport
  c.labels.Finish(c.tester);
  const auto& counts = c.labels.LastCounts();
  EXPECT_EQ(counts.queued, 5);
  EXPECT_EQ(counts.drawn, 2);
  EXPECT_EQ(counts.overlapping, 2);
  EXPECT_EQ(counts.outside, 1);
  ASSERT_EQ(c.labels.LastDrawn().size(), 2u);
  EXPECT_EQ(c.labels.LastDrawn()[0].text, "11");
  EXPECT_EQ(c.labels.LastDrawn()[1].text, "33");
  // Nothing of the dropped long label: its box would reach well right of the first's.
  const auto box = c.BoxOf(kBoxFill);
  const TextQuad first = c.labels.LastDrawn()[0].outline;
  for (int x = static_cast<int>(first[1][0]) + 1; x < 100; ++x) {
    for (int y = 40; y < 62; ++y) EXPECT_EQ(c.At(x, y), kWhite) << x << ", " << y;
  }
  EXPECT_GT(box[2], 140);  // the third is there
  // No two drawn outlines overlap.
  const auto& drawn = c.labels.LastDrawn();
  EXPECT_FALSE(OutlinesOverlap(drawn[0].outline, drawn[1].outline));
}

TEST(LabelPass, StateMatricesAndStacksAreLeftAsFound) {
  LabelCanvas c;
  glEnable(GL_LIGHTING);
  glEnable(GL_CLIP_PLANE0);
  glDepthFunc(GL_GREATER);
  glStencilFunc(GL_EQUAL, 3, 7);
  glColor4f(0.25F, 0.5F, 0.75F, 1.0F);
  glMatrixMode(GL_PROJECTION);
  glTranslated(0.125, 0, 0);
  glMatrixMode(GL_MODELVIEW);
  glRotated(10, 0, 0, 1);
  // A mode other than the model-view is current, as a caller may leave it.
  glMatrixMode(GL_PROJECTION);
  auto snapshot = [] {
    std::vector<double> v(16 * 2 + 4 * 2);
    glGetDoublev(GL_MODELVIEW_MATRIX, v.data());
    glGetDoublev(GL_PROJECTION_MATRIX, v.data() + 16);
    glGetDoublev(GL_CURRENT_COLOR, v.data() + 32);
    glGetDoublev(GL_COLOR_WRITEMASK, v.data() + 36);
    for (const GLint i : Stacks()) v.push_back(i);
    // Enables read as 1 or 0.
    for (const GLint i : Integers({GL_DEPTH_FUNC, GL_STENCIL_FUNC, GL_STENCIL_REF, GL_PACK_ALIGNMENT, GL_LIGHTING,
                                   GL_CLIP_PLANE0, GL_STENCIL_TEST})) {
      v.push_back(i);
    }
    return v;
  };
  const auto before = snapshot();
  CPixelVisibilityRGB byColour;
  for (IPixelVisibility* tester : {static_cast<IPixelVisibility*>(&c.tester), static_cast<IPixelVisibility*>(&byColour)}) {
    c.labels.Begin(c.m);
    c.labels.Add("12.5", c.Style(), {50, 50, 0}, {60, 55, 0});
    c.labels.Add("7", c.Style(), {150, 50, 0}, {150, 55, 0});
    c.labels.Finish(*tester);
    const auto after = snapshot();
    ASSERT_EQ(after.size(), before.size());
    for (std::size_t i = 0; i < after.size(); ++i) EXPECT_EQ(after[i], before[i]) << "state item " << i;
    EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
  }
}

// ---------------------------------------------------------------------------------------
// 5. Frames

// A control's worth of objects with its own passes, drawn into its own target.
struct LabelledPlot {
  DataSets sets;
  Axes axes;
  Faces faces;
  Caption caption;
  Legend legend;
  Cursor cursor;
  Contouring contouring;
  Scene scene{sets, axes, contouring};
  PlotAnnotations passes{AnnotatedObjects{axes, faces, caption, legend, cursor, contouring, sets}};
  Renderer renderer;
  RenderTarget target;
  FrameSettings settings;

  explicit LabelledPlot(int width = 300, int height = 300) {
    target.Create(width, height);
    EXPECT_TRUE(target.HasContext()) << target.FailureReason();
    settings.labelTestByStencil = true;
    legend.SetVisible(false);
    caption.SetVisible(false);
  }
  void Render() { renderer.Render(target, scene, settings, &passes); }
  CLabelsManager& Labels() { return passes.Labels(); }
  int Count(Color colour) const {
    int n = 0;
    for (int y = 0; y < target.Height(); ++y) {
      for (int x = 0; x < target.Width(); ++x) n += target.Image().Pixel(x, y) == colour;
    }
    return n;
  }
  // How many of the labels drawn last read as the Z axis writes the level.
  int Drawn(double level) {
    const std::string text = axes.ZAxis().LabelText(level);
    const auto& drawn = Labels().LastDrawn();
    return static_cast<int>(std::count_if(drawn.begin(), drawn.end(), [&](const auto& d) { return d.text == text; }));
  }
};

// A grid over [x0, x1] x [0, 1] with z = f(x, y).
template <class F>
void Grid(DataSet& data, int n, double x0, double x1, F f) {
  std::vector<double> x(static_cast<std::size_t>(n)), y(x.size()), z(x.size() * x.size());
  for (int i = 0; i < n; ++i) {
    x[static_cast<std::size_t>(i)] = x0 + (x1 - x0) * i / (n - 1.0);
    y[static_cast<std::size_t>(i)] = i / (n - 1.0);
  }
  for (std::size_t i = 0; i < x.size(); ++i) {
    for (std::size_t j = 0; j < y.size(); ++j) z[i * y.size() + j] = f(x[i], y[j]);
  }
  data.DataAsRectangularGridSet(x, n, y, n, Array2D(z, x.size(), y.size()));
}

void MainViewOnly(DataSet& data, bool labels) {
  data.ViewMain().SetDataHullVisible(false);
  data.ViewMain().SetContourLabelsVisible(labels);
  data.ViewMain().SetContourLabelsFillColor(kBoxFill);
  data.ViewTop().SetVisible(false);
  data.ViewBottom().SetVisible(false);
}

void Levels(Contouring& contouring, std::initializer_list<double> values) {
  contouring.SetAutoSetContoursType(orvAutoSetOff);
  contouring.Contours().RemoveAll();
  for (const double v : values) contouring.Contours().Add(v);
}

TEST(LabelFrame, ASurfaceInFrontHidesTheLabelsOfTheLinesUnderIt) {
  for (const bool stencil : {true, false}) {
    LabelledPlot p;
    p.settings.plotType = 1;  // seen from above: the higher surface is in front
    p.settings.labelTestByStencil = stencil;
    p.sets.SetCount(2);
    DataSet& ramp = p.sets.Item(0);
    DataSet& roof = p.sets.Item(1);
    Grid(ramp, 21, 0.0, 1.0, [](double x, double) { return x; });  // lines along Y at x = level
    Grid(roof, 5, 0.6, 1.0, [](double, double) { return 2.0; });   // over x 0.6..1 only
    MainViewOnly(ramp, true);
    MainViewOnly(roof, false);
    roof.ViewMain().SetContourLinesVisible(false);
    Levels(p.contouring, {0.27, 0.52, 0.77});
    ramp.ViewMain().SetContourLabelsDensity(2);
    p.Render();
    EXPECT_EQ(p.Drawn(0.27), 2) << stencil;
    EXPECT_EQ(p.Drawn(0.52), 2) << stencil;
    EXPECT_EQ(p.Drawn(0.77), 0) << stencil;  // under the roof
    EXPECT_EQ(p.Labels().LastCounts().hidden, 2) << stencil;
    const int shown = p.Count(kBoxFill);
    EXPECT_GT(shown, 100);
    // Without the roof the hidden level's labels come out, and more box pixels with them.
    roof.ViewMain().SetVisible(false);
    p.renderer.MarkPlotsStale();  // the control does this when a view changes
    p.Render();
    EXPECT_EQ(p.Drawn(0.77), 2) << stencil;
    EXPECT_GT(p.Count(kBoxFill), shown + shown / 3);
  }
}

TEST(LabelFrame, LabelsFollowTheLinesOfACone) {
  LabelledPlot p(400, 400);
  p.settings.plotType = 1;
  DataSet& cone = p.sets.Item(0);
  Grid(cone, 61, 0.0, 1.0, [](double x, double y) { return std::hypot(x - 0.5, y - 0.5); });
  MainViewOnly(cone, true);
  Levels(p.contouring, {0.15, 0.3, 0.45});
  cone.ViewMain().SetContourLabelsDensity(8);
  p.Render();
  const auto& drawn = p.Labels().LastDrawn();
  ASSERT_GE(drawn.size(), 8u);
  const CapturedMatrices& m = p.renderer.LastFrame().mainViews;
  const auto centre = ProjectToWindow(m, 0.5, 0.5, 0.0);
  ASSERT_TRUE(centre.has_value());
  std::set<int> quadrants;
  for (const auto& d : drawn) {
    EXPECT_GT(d.angle, -90.0);
    EXPECT_LE(d.angle, 90.0);
    // Along the circle: the label's direction is square to the radius.
    const double rx = d.x - centre->x, ry = d.y - centre->y;
    const double a = d.angle * 3.14159265358979323846 / 180.0;
    EXPECT_LT(std::fabs(std::cos(a) * rx + std::sin(a) * ry) / std::hypot(rx, ry), 0.2) << d.text;
    quadrants.insert((rx > 0 ? 1 : 0) + (ry > 0 ? 2 : 0));
  }
  EXPECT_EQ(quadrants.size(), 4u);  // lines running every way
  // Unturned, all level.
  cone.ViewMain().SetContourLabelsRotation(false);
  p.Render();
  for (const auto& d : p.Labels().LastDrawn()) EXPECT_EQ(d.angle, 0.0);
}

TEST(LabelFrame, DensitySkippingAndNewContoursRebuildThePlaces) {
  LabelledPlot p;
  p.settings.plotType = 1;
  DataSet& ramp = p.sets.Item(0);
  Grid(ramp, 21, 0.0, 1.0, [](double x, double) { return x; });
  MainViewOnly(ramp, true);
  Levels(p.contouring, {0.12, 0.31, 0.52, 0.71, 0.88});
  ramp.ViewMain().SetContourLabelsDensity(1);
  p.Render();
  const std::int64_t runs = p.Labels().PlacementRuns();
  EXPECT_EQ(p.Labels().LastCounts().queued, 5);
  p.Render();  // nothing changed: the places are kept
  EXPECT_EQ(p.Labels().PlacementRuns(), runs);
  p.settings.zoom = 0.8;  // nor does a new view of them
  p.Render();
  EXPECT_EQ(p.Labels().PlacementRuns(), runs);

  ramp.ViewMain().SetContourLabelsDensity(4);
  p.Render();
  EXPECT_EQ(p.Labels().PlacementRuns(), runs + 1);
  EXPECT_EQ(p.Labels().LastCounts().queued, 20);

  ramp.ViewMain().SetContourLabelsLevelSkipping(1);
  p.Render();
  EXPECT_EQ(p.Labels().PlacementRuns(), runs + 2);
  EXPECT_EQ(p.Labels().LastCounts().queued, 12);
  // Only the first, third and fifth levels are labelled.
  EXPECT_EQ(p.Drawn(0.12) + p.Drawn(0.52) + p.Drawn(0.88), static_cast<int>(p.Labels().LastDrawn().size()));

  // New levels: traced again, placed again, labelled with the new values.
  Levels(p.contouring, {0.22, 0.41, 0.62});
  p.Render();
  EXPECT_EQ(p.Labels().PlacementRuns(), runs + 3);
  EXPECT_GT(p.Drawn(0.62), 0);
  EXPECT_EQ(p.Drawn(0.41), 0);  // skipped
  // New data: its lines move, and so do the labels.
  const double xBefore = p.Labels().LastDrawn().front().x;
  Grid(ramp, 21, 0.0, 1.0, [](double x, double) { return x * x; });
  p.Render();
  EXPECT_EQ(p.Labels().PlacementRuns(), runs + 4);
  ASSERT_FALSE(p.Labels().LastDrawn().empty());
  EXPECT_GT(std::fabs(p.Labels().LastDrawn().front().x - xBefore), 10.0);
}

TEST(LabelFrame, AFrameWithLabelsRaisesNoErrorAndLeavesTheStacks) {
  LabelledPlot p;
  DataSet& data = p.sets.Item(0);
  Grid(data, 30, 0.0, 4.0, [](double x, double y) { return 0.3 * std::sin(x * y); });
  for (View* v : {&data.ViewMain(), &data.ViewTop(), &data.ViewBottom()}) v->SetContourLabelsVisible(true);
  p.settings.lightingOn = true;
  CTrackball ball;
  ball.SetRotation(60, 0, 30);
  double r[16];
  ball.GetRotationMatrix(r);
  std::copy(r, r + 16, p.settings.rotation.begin());
  p.Render();  // data prepared, lists compiled
  ASSERT_TRUE(p.target.MakeCurrent());
  while (glGetError() != GL_NO_ERROR) {
  }
  const std::vector<GLint> before = Stacks();
  p.renderer.RenderFrame(p.target.Width(), p.target.Height(), p.scene, p.settings, p.passes);
  EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
  EXPECT_EQ(Stacks(), before);
  // Labels of every kind were drawn, and the stencil is clear again.
  EXPECT_GT(p.Labels().LastCounts().drawn, 0);
  const std::vector<GLubyte> stencil = ReadPixels(p.target.Width(), p.target.Height(), GL_STENCIL_INDEX, 1);
  EXPECT_TRUE(std::all_of(stencil.begin(), stencil.end(), [](GLubyte s) { return s == 0; }));
  p.target.ReleaseCurrent();
}

}  // namespace
}  // namespace orvane::detail
