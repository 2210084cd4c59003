// The caption, the legend and the axes' text as the control draws them: where their
// pixels go, what the legend shows, and text that cannot fit or cannot be had.

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <string>

#include "control/surface_state.h"
#include "control_fixture.h"
#include "orvane/axes/axes.h"
#include "orvane/axes/axis.h"
#include "orvane/core/property_bag.h"
#include "orvane/contour/contouring.h"
#include "orvane/render/caption.h"
#include "orvane/render/faces.h"
#include "orvane/render/legend.h"
#include "render/annotations.h"
#include "render/gl.h"

namespace orvane {
namespace {

using testing::Control;

constexpr Color kWhite = 0xFFFFFF;

detail::PlotAnnotations& Passes(Control& c) { return static_cast<detail::PlotAnnotations&>(*c.State().passes); }

// Pixels that are not white inside [x0, x1) x [y0, y1) (top-left origin).
int Ink(Control& c, int x0, int y0, int x1, int y1) {
  int n = 0;
  for (int y = y0; y < y1; ++y) {
    for (int x = x0; x < x1; ++x) n += c.Image().Pixel(x, y) != kWhite;
  }
  return n;
}

// The bounding box of the non-white pixels in the rows [y0, y1): left, top, right, bottom.
std::array<int, 4> InkBox(Control& c, int y0, int y1) {
  std::array<int, 4> box{1 << 30, 1 << 30, -1, -1};
  for (int y = y0; y < y1; ++y) {
    for (int x = 0; x < c.Image().header.biWidth; ++x) {
      if (c.Image().Pixel(x, y) == kWhite) continue;
      box = {std::min(box[0], x), std::min(box[1], y), std::max(box[2], x), std::max(box[3], y)};
    }
  }
  return box;
}

// No OpenGL error was left in the control's context by what it drew.
void ExpectNoGlError(Control& c) {
  ASSERT_TRUE(c.State().target.MakeCurrent());
  EXPECT_EQ(glGetError(), static_cast<GLenum>(GL_NO_ERROR));
  c.State().target.ReleaseCurrent();
}

// Only the caption: no legend, no cube, no axes.
void CaptionAlone(Surface& s, const std::string& text) {
  s.Legend().SetVisible(false);
  s.Faces().SetFillVisibleMaster(false);
  s.Faces().SetMajorGridVisibleMaster(false);
  s.Faces().SetEdgeVisibleMaster(false);
  s.Axes().AxisLineMaster().SetWidth(0);
  s.Axes().SetLabelsVisibleMaster(false);
  s.Axes().SetTitleVisibleMaster(false);
  s.Header().SetText(text);
  s.Header().SetVisible(true);
}

// Each legend band's swatch, at the bar's middle column half-way between two ticks, shows
// the colour of the values between them.
void ExpectSwatches(Control& c, const detail::LegendLayout& l) {
  const auto& frame = c.State().renderer.LastFrame();
  const int px = frame.plotWidth + static_cast<int>((l.barLeft + l.barRight) / 2.0);
  for (std::size_t k = 0; k + 1 < l.ticks.size(); ++k) {
    const int py = frame.height - 1 - static_cast<int>((l.ticks[k].y + l.ticks[k + 1].y) / 2.0);
    const double value = (l.ticks[k].value + l.ticks[k + 1].value) / 2.0;
    EXPECT_EQ(c.Image().Pixel(px, py), c.surface.Contouring().FindColor(value, false)) << "band " << k;
  }
}

// Text outlines that must stay inside [0, w] x [0, h] and never overlap one another.
void ExpectApartAndInside(const std::vector<detail::TextQuad>& outlines, double w, double h, const std::string& what) {
  for (std::size_t i = 0; i < outlines.size(); ++i) {
    for (const auto& corner : outlines[i]) {
      EXPECT_TRUE(corner[0] >= 0.0 && corner[0] <= w && corner[1] >= 0.0 && corner[1] <= h)
          << what << ", outline " << i << ": " << corner[0] << ", " << corner[1];
    }
    for (std::size_t j = i + 1; j < outlines.size(); ++j) {
      EXPECT_FALSE(detail::OutlinesOverlap(outlines[i], outlines[j])) << what << ": " << i << " " << j;
    }
  }
}

TEST(SurfaceText, CaptionIsCentredInItsBandAtTheTopAndTheBandIsTwiceItsMeasuredHeight) {
  Control c(300, 200);
  CaptionAlone(c.surface, "Z = f(X, Y)");
  c.surface.Refresh();
  const auto& frame = c.State().renderer.LastFrame();
  const int band = frame.height - frame.plotHeight;
  const double textHeight = Passes(c).Fonts().Get(c.surface.Header().Font()).Measure("Z = f(X, Y)").height;
  EXPECT_EQ(band, static_cast<int>(std::ceil(2 * textHeight)));
  EXPECT_GT(Ink(c, 0, 0, 300, band), 40);
  EXPECT_EQ(Ink(c, 0, band, 300, 200), 0);
  const auto box = InkBox(c, 0, band);
  EXPECT_NEAR((box[0] + box[2]) / 2.0, 150.0, 2.0);
  EXPECT_NEAR((box[1] + box[3]) / 2.0, band / 2.0, 3.0);
  ExpectNoGlError(c);

  // Empty or hidden: no band, no ink.
  c.surface.Header().SetText("");
  c.surface.Refresh();
  EXPECT_EQ(c.State().renderer.LastFrame().plotHeight, 200);
  EXPECT_EQ(Ink(c, 0, 0, 300, 200), 0);
  c.surface.Header().SetText("Title");
  c.surface.Header().SetVisible(false);
  c.surface.Refresh();
  EXPECT_EQ(Ink(c, 0, 0, 300, 200), 0);

  // A font change is measured again.
  c.surface.Header().SetVisible(true);
  c.surface.Refresh();
  const int title = frame.height - frame.plotHeight;
  c.surface.Header().Font().SetSize(20.0);
  c.surface.Refresh();
  const int larger = frame.height - frame.plotHeight;
  EXPECT_GT(larger, title + 10);
  EXPECT_GT(Ink(c, 0, 0, 300, larger), Ink(c, 0, 0, 300, title));
}

TEST(SurfaceText, CaptionsThatCannotFitDrawWhatTheyCanInsideTheBand) {
  for (const auto& [text, points] : {std::pair<std::string, double>{std::string(10000, 'W'), 10.0},
                                     std::pair<std::string, double>{"Huge", 16384.0}}) {
    Control c(200, 100);
    CaptionAlone(c.surface, text);
    c.surface.Header().Font().SetSize(points);
    c.surface.Header().Font().SetName("No Such Face At All");
    c.surface.Refresh();
    const auto& frame = c.State().renderer.LastFrame();
    EXPECT_LE(frame.height - frame.plotHeight, 100);
    // The long caption shows its middle letters; the huge one may show the gap between
    // two of its letters, which fill many times the control.
    if (points < 100) {
      EXPECT_GT(Ink(c, 0, 0, 200, 100), 0);
    }
    ExpectNoGlError(c);
  }
}

TEST(SurfaceText, ATinyControlDrawsWithoutFault) {
  for (const auto& [w, h] : {std::pair<int, int>{200, 1}, {1, 200}, {1, 1}, {3, 2}}) {
    Control c(w, h);
    c.surface.ShowSampleData();
    c.surface.Refresh();
    EXPECT_EQ(c.Image().header.biWidth, w);
    ExpectNoGlError(c);
    EXPECT_TRUE(c.State().lastPaintError.empty()) << c.State().lastPaintError;
  }
}

TEST(SurfaceText, LegendSwatchesShowTheLevelColoursAndTheRoomComesOffThePlot) {
  Control c(400, 300);
  testing::Saddle(c.surface.DataSets().Item(0));
  c.surface.Refresh();
  const auto& frame = c.State().renderer.LastFrame();
  const int room = frame.width - frame.plotWidth;
  ASSERT_GT(room, 20);
  const detail::LegendLayout l = Passes(c).Layout(room, frame.plotHeight);
  ASSERT_TRUE(l.visible);
  ASSERT_GE(l.ticks.size(), 3u);
  ExpectSwatches(c, l);
  // Hidden, or with no levels: no room.
  c.surface.Legend().SetVisible(false);
  c.surface.Refresh();
  EXPECT_EQ(c.State().renderer.LastFrame().plotWidth, 400);
  c.surface.Legend().SetVisible(true);
  c.surface.Contouring().SetAutoSetContoursType(orvAutoSetOff);
  c.surface.Contouring().Contours().RemoveAll();
  c.surface.Refresh();
  EXPECT_EQ(c.State().renderer.LastFrame().plotWidth, 400);
}

TEST(SurfaceText, EvenLegendBandsShareTheBarEquallyAndKeepTheirColours) {
  // Levels 2, 10, 50, 250 over Z from 1 to 1000 (log-like): in proportion to Z the three
  // lower bands would share a sliver of the bar.
  Control c(400, 300);
  DataSet& data = c.surface.DataSets().Item(0);
  data.DataAsRectangularGridSet({0.0, 1.0}, 2, {0.0, 1.0}, 2, Array2D(std::vector<double>{1, 1000, 1000, 1}, 2, 2));
  Contouring& contouring = c.surface.Contouring();
  contouring.SetAutoSetContoursType(orvAutoSetOff);
  contouring.Contours().AddLevels(std::vector<double>{2, 10, 50, 250});
  c.surface.Axes().ZAxis().SetAutoRangeType(orvAutoRangeExact);
  c.surface.Legend().SetEvenBands(true);
  c.surface.Refresh();
  const auto& frame = c.State().renderer.LastFrame();
  const int room = frame.width - frame.plotWidth;
  const detail::LegendLayout l = Passes(c).Layout(room, frame.plotHeight);
  ASSERT_EQ(l.ticks.size(), 4u);
  const double band = (l.barTop - l.barBottom) / 5.0;  // five bands: foot, 4 levels, top
  for (std::size_t k = 0; k < 4; ++k) EXPECT_NEAR(l.ticks[k].y, l.barBottom + band * static_cast<double>(k + 1), 1e-9);
  ExpectSwatches(c, l);
  // Stored with the legend; absent, the bar is in proportion to Z.
  PropertyBag bag;
  c.surface.WriteProperties(bag);
  EXPECT_TRUE(bag.ReadProperty("LegendEvenBands", false));
  c.surface.Legend().SetEvenBands(false);
  c.surface.Refresh();
  const detail::LegendLayout z = Passes(c).Layout(room, frame.plotHeight);
  EXPECT_NEAR(z.ticks[3].y - z.barBottom, (250.0 - 1.0) / 999.0 * (z.barTop - z.barBottom), 1e-9);
}

TEST(SurfaceText, LegendLabelsNeverOverlapAndStayInsideTheControl) {
  for (const int levels : {1, 7, 40, 300}) {
    Control c(500, 300);
    testing::Saddle(c.surface.DataSets().Item(0));
    Contouring& contouring = c.surface.Contouring();
    contouring.SetAutoSetContoursType(orvAutoSetOff);
    for (int k = 0; k < levels; ++k) contouring.Contours().Add((k + 0.5) / levels);
    c.surface.Refresh();
    const auto& frame = c.State().renderer.LastFrame();
    const int room = frame.width - frame.plotWidth;
    detail::PlotAnnotations& passes = Passes(c);
    const detail::LegendLayout l = passes.Layout(room, frame.plotHeight);
    ASSERT_TRUE(l.visible) << levels;
    EXPECT_EQ(l.ticks.size(), static_cast<std::size_t>(levels));
    detail::CFontMap& font = passes.Fonts().Get(c.surface.Axes().ZAxis().LabelsFont());
    std::vector<detail::TextQuad> outlines;
    for (const auto& t : l.ticks) {
      if (!t.labelled) continue;
      detail::TextAnchor anchor;
      anchor.x = l.labelLeft;
      anchor.y = t.y;
      anchor.alignV = detail::TextAlignV::kCenter;
      outlines.push_back(detail::TextOutline(font, t.text, anchor));
    }
    ASSERT_FALSE(outlines.empty());
    ExpectApartAndInside(outlines, room + 0.5, frame.plotHeight, std::to_string(levels) + " levels");
    ExpectNoGlError(c);
  }
}

TEST(SurfaceText, AxisLabelsNeverOverlapAndStayInsideTheControl) {
  for (const auto& rotation : {std::array<double, 3>{60, 0, 30}, {120, 0, 30}, {120, 0, 210}, {60, 0, 210}}) {
    Control c(400, 300);
    c.surface.ShowSampleData();
    c.surface.SetRotationX(rotation[0]);
    c.surface.SetRotationY(rotation[1]);
    c.surface.SetRotationZ(rotation[2]);
    c.surface.Refresh();
    const auto& outlines = Passes(c).AxisTextOutlines();
    EXPECT_GE(outlines.size(), 8u);
    ExpectApartAndInside(outlines, 400.0, 300.0, "rotation " + std::to_string(rotation[0]) + "," + std::to_string(rotation[2]));
  }
}

TEST(SurfaceText, CrowdedTickLabelsAreThinnedToEveryKthTick) {
  // Small pictures of the sample, turned about: where labels would overlap, those drawn
  // keep a steady step in value (every k-th tick), never an uneven subset.
  bool thinned = false;
  for (const int size : {180, 240, 320}) {
    for (const double rotationZ : {30.0, 120.0, 210.0, 300.0}) {
      Control c(size, size * 3 / 4);
      c.surface.ShowSampleData();
      c.surface.SetRotationZ(rotationZ);
      c.surface.Refresh();
      for (int a = 0; a < 3; ++a) {
        std::vector<double> values;
        for (const auto& label : Passes(c).AxisLabels()) {
          if (label.axis == a) values.push_back(label.value);
        }
        const Axis& axis = detail::PlotAnnotations::AxisOf(c.surface.Axes(), a);
        thinned = thinned || static_cast<std::int32_t>(values.size()) < axis.TickCount() + 1;
        for (std::size_t i = 2; i < values.size(); ++i) {
          EXPECT_NEAR(values[i] - values[i - 1], values[1] - values[0], 1e-9)
              << "axis " << a << " size " << size << " rotation " << rotationZ;
        }
      }
    }
  }
  EXPECT_TRUE(thinned);  // the sizes are small enough to need it
}

}  // namespace
}  // namespace orvane
