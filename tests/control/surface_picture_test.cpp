// What the control's pictures show: fills that depend on the data alone, band edges on
// the levels, markers and hulls where a viewer expects them. Checked by pixels.

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <filesystem>
#include <memory>
#include <numbers>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "control/fitting_zoom.h"
#include "control_fixture.h"
#include "data/data_set_state.h"
#include "orvane/axes/axes.h"
#include "orvane/axes/axis.h"
#include "orvane/contour/contouring.h"
#include "orvane/core/property_bag.h"
#include "orvane/data/data_file.h"
#include "orvane/render/faces.h"
#include "orvane/render/marker.h"
#include "orvane/render/view.h"
#include "support/expect_error.h"

namespace orvane {
namespace {

using testing::Control;

// A flat 2 x 2 grid at height z over [x0, x0 + side] x [y0, y0 + side].
void Plane(DataSet& data, double z, double x0, double y0 = 0.0, double side = 1.0) {
  const std::vector<double> x{x0, x0 + side}, y{y0, y0 + side};
  data.DataAsRectangularGridSet(x, 2, y, 2, Array2D(std::vector<double>{z, z, z, z}, 2, 2));
}

// Only the main views, no faces, axes or legend: the data alone on the background.
void BareViews(Control& c) {
  c.surface.Legend().SetVisible(false);
  c.surface.Faces().SetFillVisibleMaster(false);
  c.surface.Faces().SetMajorGridVisibleMaster(false);
  c.surface.Faces().SetEdgeVisibleMaster(false);
  for (DataSet& data : c.surface.DataSets()) {
    data.ViewTop().SetVisible(false);
    data.ViewBottom().SetVisible(false);
  }
}

// The three fills: the described flat triangles, exact bands, interpolated colours.
enum class Fill { kFlat, kBands, kSmooth };

void SetFill(Surface& surface, Fill fill) {
  surface.Contouring().SetExactBands(fill == Fill::kBands);
  surface.Contouring().SetInterpolateColors(fill == Fill::kSmooth);
}

TEST(SurfacePicture, AFlatPlaneIsOneColourWhateverTheOrderOfTheDataSetsOrTheFill) {
  // The planes lie side by side, z = 0 over x in [0, 1] and z = 10 over [2, 3]. Mesa
  // once dropped the second data set's flat shading from the list, fading it to black.
  for (const Fill fill : {Fill::kFlat, Fill::kBands, Fill::kSmooth})
  for (const bool swapped : {false, true}) {
    Control c(240, 240);
    SetFill(c.surface, fill);
    c.surface.DataSets().SetCount(2);
    Plane(c.surface.DataSets().Item(0), swapped ? 10.0 : 0.0, swapped ? 2.0 : 0.0);
    Plane(c.surface.DataSets().Item(1), swapped ? 0.0 : 10.0, swapped ? 0.0 : 2.0);
    c.surface.Axes().ZAxis().SetZoom(0.2);
    BareViews(c);
    c.surface.Refresh();
    const Contouring& contouring = c.surface.Contouring();
    for (const double z : {0.0, 1.0}) {
      const Color expected = contouring.FindColor(z * 10.0, false);
      std::set<Color> seen;
      for (int i = 1; i < 20; ++i) {
        for (int j = 1; j < 20; ++j) seen.insert(c.PixelAt((i / 20.0 + 2.0 * z) / 3.0, j / 20.0, z));
      }
      EXPECT_EQ(seen, std::set<Color>{expected})
          << "plane " << z * 10 << (swapped ? " (swapped)" : "") << " fill " << static_cast<int>(fill);
    }
  }
}

// z = x at 400 scattered points over the unit square (its corners among them), with ten
// levels at 0.05, 0.15, ... 0.95, drawn without lines, hull or legend.
void ScatteredRamp(Control& c) {
  std::mt19937 random(24);
  std::uniform_real_distribution<double> unit(0, 1);
  std::vector<double> x{0, 1, 0, 1}, y{0, 0, 1, 1};
  while (x.size() < 400) {
    x.push_back(unit(random));
    y.push_back(unit(random));
  }
  DataSet& data = c.surface.DataSets().Item(0);
  data.DataAsSparseGridSet(static_cast<std::int32_t>(x.size()), x, y, x);
  data.ViewMain().SetContourLinesVisible(false);
  data.ViewMain().SetDataHullVisible(false);
  Contouring& contouring = c.surface.Contouring();
  contouring.SetAutoSetContoursType(orvAutoSetOff);
  for (int k = 0; k < 10; ++k) contouring.Contours().Add(0.05 + 0.1 * k);
  BareViews(c);
}

// The band colour a pixel shows: the band colour nearest in hue (RGB direction), so
// that a lit pixel, brighter or darker, still names its band's colour.
Color BandColourOf(const Contouring& contouring, Color c) {
  const double r = c & 0xFF, g = (c >> 8) & 0xFF, b = (c >> 16) & 0xFF;
  const double n = std::sqrt(r * r + g * g + b * b);
  Color best = 0;
  double bestCos = -2;
  for (int k = 0; k <= contouring.Contours().Count(); ++k) {
    const double z = k == 0 ? -1.0 : contouring.Contours().Item(k - 1)->Value() + 0.01;
    const Color l = contouring.FindColor(z, false);
    const double lr = l & 0xFF, lg = (l >> 8) & 0xFF, lb = (l >> 16) & 0xFF;
    const double cosine = (r * lr + g * lg + b * lb) / (std::max(n, 1.0) * std::sqrt(lr * lr + lg * lg + lb * lb));
    if (cosine > bestCos) {
      bestCos = cosine;
      best = l;
    }
  }
  return best;
}

TEST(SurfacePicture, ExactBandsRunStraightAlongTheLevelsOfAScatteredPlane) {
  // In 2-D each row of the map changes band within a pixel of where x crosses the level;
  // flat triangles, coloured by their mean, wander by tens of pixels.
  for (const Fill fill : {Fill::kBands, Fill::kFlat}) {
    Control c(300, 300);
    ScatteredRamp(c);
    SetFill(c.surface, fill);
    c.surface.SetPlotType(orvPlotType2D);
    c.surface.Refresh();
    int worst = 0, strays = 0;
    for (int k = 1; k < 10; ++k) {
      const double level = 0.05 + 0.1 * k;
      const Color below = c.surface.Contouring().FindColor(level - 0.05, false);
      const Color above = c.surface.Contouring().FindColor(level + 0.05, false);
      for (double y = 0.15; y < 0.9; y += 0.1) {  // clear of the hull's missing slivers
        const auto edge = c.Project(level, y, level);
        const auto from = c.Project(level - 0.04, y, level), to = c.Project(level + 0.04, y, level);
        int first = -1;  // the first column of the band above
        for (int px = from[0]; px <= to[0]; ++px) {
          const Color p = c.Image().Pixel(px, edge[1]);
          if (p == above && first < 0) first = px;
          strays += p != above && p != below;
        }
        worst = std::max(worst, std::abs(first - edge[0]));
      }
    }
    if (fill == Fill::kBands) {
      EXPECT_LE(worst, 1);
      EXPECT_EQ(strays, 0) << "colours of other bands near an edge";
    } else {
      EXPECT_GT(worst, 5);  // the described fill, kept as it was
    }
  }
}

TEST(SurfacePicture, ExactBandsHoldIn3DLitOrNotOnGridsAndTriangulations) {
  for (const bool grid : {false, true}) {
    for (const bool lit : {false, true}) {
      Control c(320, 320);
      ScatteredRamp(c);
      if (grid) {
        DataSet& data = c.surface.DataSets().Item(0);
        const std::vector<double> x{0, 1.0 / 3, 2.0 / 3, 1};
        std::vector<double> z;
        for (double xi : x) z.insert(z.end(), {xi, xi, xi, xi});
        data.DataAsRectangularGridSet(x, 4, x, 4, Array2D(z, 4, 4));
      }
      SetFill(c.surface, Fill::kBands);
      c.surface.SetLightingOn(lit);
      c.surface.Refresh();
      const Contouring& contouring = c.surface.Contouring();
      // Points a little off each level show their own band: exactly its colour unlit,
      // its hue lit; the margin is under a pixel and a half at this size.
      int checked = 0;
      for (int k = 0; k < 10; ++k) {
        for (const double side : {-1.0, 1.0}) {
          const double x = 0.05 + 0.1 * k + side * 0.008;
          if (x <= 0.0 || x >= 1.0) continue;
          for (double y = 0.1; y < 0.95; y += 0.2) {
            const Color colour = c.PixelAt(x, y, x);
            EXPECT_EQ(lit ? BandColourOf(contouring, colour) : colour, contouring.FindColor(x, false)) << x << "," << y;
            ++checked;
          }
        }
      }
      EXPECT_EQ(checked, 100);
      const auto a = c.Project(0.05 - 0.008, 0.5, 0), b = c.Project(0.05 + 0.008, 0.5, 0);
      EXPECT_LT(std::hypot(a[0] - b[0], a[1] - b[1]), 3.0);  // the margin is that small
    }
  }
}

TEST(SurfacePicture, MarkersOfA2DMapShowOverEveryFill) {
  // Points at z = 0 under a plane at z = 10 that covers them, in the same data set's
  // resampled surface's place: a second data set drawn after the first.
  Control c(240, 240);
  c.surface.DataSets().SetCount(2);
  const std::vector<double> px{0.2, 0.5, 0.8, 0.3, 0.7}, py{0.2, 0.8, 0.3, 0.6, 0.5}, pz{0, 0, 0, 0, 0.5};
  DataSet& points = c.surface.DataSets().Item(0);
  points.DataAsSparseGridSet(5, px, py, pz);
  Marker& marker = points.ViewMain().DataMarkersMaster();
  marker.SetVisible(true);
  marker.SetShape(orvMarkerShape2DSquare);
  marker.SetSize(4);
  marker.SetFillColor(0x00FFFF);
  marker.SetEdgeVisible(false);
  Plane(c.surface.DataSets().Item(1), 10.0, 0.0);
  BareViews(c);
  c.surface.SetPlotType(orvPlotType2D);
  c.surface.Refresh();
  for (std::size_t k = 0; k < px.size(); ++k) EXPECT_EQ(c.PixelAt(px[k], py[k], pz[k]), 0x00FFFFu) << "marker " << k;
}

TEST(SurfacePicture, HullLinesHideBehindTheSurfaceIn3DAndShowOverItIn2D) {
  // A tilted plane over scattered points with a thick red data hull on the cube's floor,
  // seen from nearly straight above: the far side of the floor lies behind the surface.
  // The hull's red pixels with the fill drawn, against those without it; with cover, a
  // second data set's plane is drawn after the first over all of it.
  const auto redPixels = [](bool is3D, bool fill, bool cover = false) {
    Control c(240, 240);
    c.surface.DataSets().SetCount(cover ? 2 : 1);
    testing::Scatter(c.surface.DataSets().Item(0));
    View& view = c.surface.DataSets().Item(0).ViewMain();
    view.SetContourLinesVisible(false);
    view.SetContourFillVisible(fill);
    view.DataHullLine().SetColor(0x0000FF);
    view.DataHullLine().SetWidth(3);
    if (cover) {
      Plane(c.surface.DataSets().Item(1), 5.0, -1.0, -1.0, 4.0);
      c.surface.DataSets().Item(1).ViewMain().SetContourLinesVisible(false);
    }
    BareViews(c);
    c.surface.SetPlotType(is3D ? orvPlotType3D : orvPlotType2D);
    c.surface.SetRotationX(10);
    c.surface.SetRotationZ(0);
    c.surface.Refresh();
    return testing::CountOf(c.Image(), 0x0000FF);
  };
  const int bare3D = redPixels(true, false);
  EXPECT_GT(bare3D, 600);
  EXPECT_LT(redPixels(true, true), bare3D * 2 / 3) << "the hull shows through the surface";
  const int bare2D = redPixels(false, false);
  EXPECT_EQ(redPixels(false, true), bare2D) << "the hull is buried under the fill";
  EXPECT_GT(redPixels(false, true, true), 600) << "the second data set's fill buries the first one's hull";
}

TEST(SurfacePicture, AFullyOpaqueTransparentViewLooksLikeTheOpaqueOne) {
  // Two data sets, the second drawn as a transparent view of Transparency 1 (fully
  // opaque) over the first: the frame matches the one with the view opaque.
  auto draw = [](bool transparent, Fill fill, double transparency = 1.0) {
    auto c = std::make_unique<Control>(240, 240);
    SetFill(c->surface, fill);
    c->surface.DataSets().SetCount(2);
    testing::Saddle(c->surface.DataSets().Item(0), 9);
    DataSet& second = c->surface.DataSets().Item(1);
    std::vector<double> x(7), z(49);
    for (std::size_t i = 0; i < 7; ++i) x[i] = 0.2 + 0.1 * static_cast<double>(i);
    for (std::size_t i = 0; i < 7; ++i) {
      for (std::size_t j = 0; j < 7; ++j) z[i * 7 + j] = 0.3 + 0.5 * x[i] - 0.2 * x[j];
    }
    second.DataAsRectangularGridSet(x, 7, x, 7, Array2D(z, 7, 7));
    second.ViewMain().SetTransparencyOn(transparent);
    second.ViewMain().SetTransparency(transparency);
    c->surface.Refresh();
    return c;
  };
  const auto differing = [](Control& one, Control& other) {
    const auto& a = one.Image();
    const auto& b = other.Image();
    int n = 0;
    for (int y = 0; y < a.header.biHeight; ++y) {
      for (int x = 0; x < a.header.biWidth; ++x) n += a.Pixel(x, y) != b.Pixel(x, y);
    }
    return n;
  };
  for (const Fill fill : {Fill::kFlat, Fill::kBands}) {
    auto opaque = draw(false, fill);
    auto transparent = draw(true, fill);
    EXPECT_EQ(differing(*opaque, *transparent), 0) << "fill " << static_cast<int>(fill);
    // Half transparent, the picture changes; fully transparent, the fill is gone.
    auto half = draw(true, fill, 0.5);
    EXPECT_GT(differing(*opaque, *half), 800) << "fill " << static_cast<int>(fill);
    auto clear = draw(true, fill, 0.0);
    auto none = draw(false, fill);
    none->surface.DataSets().Item(1).ViewMain().SetContourFillVisible(false);
    none->surface.Refresh();
    EXPECT_EQ(differing(*clear, *none), 0) << "fill " << static_cast<int>(fill);
  }
}

TEST(SurfacePicture, ADottedContourAlongMeshEdgesRunsOnOnceAndARidgeOnTheLevelIsNoContour) {
  // Whole-number heights on a grid: a plateau of 1 over x, y in 1..3 and a ridge of 1
  // along y = 5 (x = 2..6), 0 elsewhere; one level at 1, dotted, on a 2-D map.
  const auto draw = [](bool tiesAbove, std::int64_t& ringBlack, std::int64_t& ringLength, std::int64_t& ridgeBlack) {
    Control c(300, 260);
    const std::vector<double> x{0, 1, 2, 3, 4, 5, 6, 7, 8}, y{0, 1, 2, 3, 4, 5, 6};
    std::vector<double> z;
    for (std::size_t i = 0; i < x.size(); ++i) {
      for (std::size_t j = 0; j < y.size(); ++j) {
        const bool plateau = i >= 1 && i <= 3 && j >= 1 && j <= 3, ridge = j == 5 && i >= 2 && i <= 6;
        z.push_back(plateau || ridge ? 1.0 : 0.0);
      }
    }
    DataSet& data = c.surface.DataSets().Item(0);
    data.DataAsRectangularGridSet(x, 9, y, 7, Array2D(z, 9, 7));
    View& view = data.ViewMain();
    view.SetContourFillVisible(false);
    view.ContourLinesMaster().SetDrawStyle(orvDrawStyleDot);
    view.ContourLinesMaster().SetColor(0x000000);
    Contouring& contouring = c.surface.Contouring();
    contouring.SetAutoSetContoursType(orvAutoSetOff);
    contouring.Contours().Add(1.0);
    contouring.SetTiesAbove(tiesAbove);
    BareViews(c);
    c.surface.SetPlotType(orvPlotType2D);
    c.surface.SetZoom(2.0);
    c.surface.Refresh();
    Axes& axes = c.surface.Axes();
    const auto cube = [&](double dx, double dy) {
      return c.Project((dx - axes.XAxis().Min()) / (axes.XAxis().Max() - axes.XAxis().Min()),
                     (dy - axes.YAxis().Min()) / (axes.YAxis().Max() - axes.YAxis().Min()), 0.0);
    };
    // Black pixels within a pixel of the segment from a to b (data units).
    const auto blackAlong = [&](double ax, double ay, double bx, double by, std::int64_t& length) {
      const auto a = cube(ax, ay), b = cube(bx, by);
      length = std::max(std::abs(b[0] - a[0]), std::abs(b[1] - a[1]));
      std::int64_t black = 0;
      for (int py = std::min(a[1], b[1]) - 1; py <= std::max(a[1], b[1]) + 1; ++py) {
        for (int px = std::min(a[0], b[0]) - 1; px <= std::max(a[0], b[0]) + 1; ++px) {
          black += c.Image().Pixel(px, py) == 0u;
        }
      }
      return black;
    };
    ringBlack = ringLength = 0;
    const double corners[5][2] = {{1, 1}, {3, 1}, {3, 3}, {1, 3}, {1, 1}};
    for (int k = 0; k < 4; ++k) {
      std::int64_t side = 0;
      // The sides' middles only: the corners' pixels are shared by two sides.
      const double mx = (corners[k][0] + corners[k + 1][0]) / 2, my = (corners[k][1] + corners[k + 1][1]) / 2;
      ringBlack += blackAlong((corners[k][0] + mx) / 2, (corners[k][1] + my) / 2, (mx + corners[k + 1][0]) / 2,
                              (my + corners[k + 1][1]) / 2, side);
      ringLength += side;
    }
    std::int64_t ridgeLength = 0;
    ridgeBlack = blackAlong(2.5, 5, 5.5, 5, ridgeLength);
  };
  std::int64_t black = 0, length = 0, ridge = 0;
  draw(true, black, length, ridge);
  ASSERT_GT(length, 100);
  // Dotted: every other pixel, along each side as one run.
  EXPECT_NEAR(static_cast<double>(black) / static_cast<double>(length), 0.5, 0.06);
  EXPECT_EQ(ridge, 0);
  // Exact signs trace the ridge from both its sides, out and back.
  draw(false, black, length, ridge);
  EXPECT_GT(ridge, 40);
}


namespace layout {

// The bounding box of the strongly coloured pixels left of x = right: the map's fill.
struct Box {
  int left = 1 << 20, top = 1 << 20, right = -1, bottom = -1;
  int Width() const { return right - left + 1; }
  int Height() const { return bottom - top + 1; }
};

Box FillBox(const detail::Bitmap& image, int right) {
  Box box;
  for (int y = 0; y < image.header.biHeight; ++y) {
    for (int x = 0; x < right; ++x) {
      const Color c = image.Pixel(x, y);
      const int r = c & 0xFF, g = (c >> 8) & 0xFF, b = (c >> 16) & 0xFF;
      if (std::max({r, g, b}) - std::min({r, g, b}) < 60) continue;  // white, black, grey text
      box = {std::min(box.left, x), std::min(box.top, y), std::max(box.right, x), std::max(box.bottom, y)};
    }
  }
  return box;
}

// z = x + y on a grid over [0, w] x [0, h], captioned, with the legend.
void Domain(Control& c, double w, double h) {
  const std::vector<double> x{0.0, w / 2, w}, y{0.0, h / 2, h};
  std::vector<double> z;
  for (const double xi : x)
    for (const double yj : y) z.push_back(xi / w + yj / h);
  c.surface.DataSets().Item(0).DataAsRectangularGridSet(x, 3, y, 3, Array2D(z, 3, 3));
  c.surface.Header().SetText("A caption");
  c.surface.Header().SetVisible(true);
}

}  // namespace layout

TEST(SurfacePicture, FourSamplesSmoothTheEdgesAndOneKeepsTheColoursExact) {
  Control c(200, 200);
  BareViews(c);
  testing::Saddle(c.surface.DataSets().Item(0));
  c.surface.DataSets().Item(0).ViewMain().SetContourFillVisible(false);
  c.surface.Faces().SetEdgeVisibleMaster(true);
  c.surface.Refresh();
  EXPECT_EQ(c.State().target.Samples(), 1);
  std::set<Color> exact;  // one sample: the lines' and edges' own colours on white
  for (int y = 0; y < 200; ++y)
    for (int x = 0; x < 200; ++x) exact.insert(c.Image().Pixel(x, y));

  c.surface.SetSamples(4);
  c.surface.Refresh();
  EXPECT_EQ(c.State().target.Samples(), 4);
  int blended = 0;
  for (int y = 0; y < 200; ++y)
    for (int x = 0; x < 200; ++x) blended += exact.count(c.Image().Pixel(x, y)) == 0;
  EXPECT_GT(blended, 200);

  // Kept in the State; a count the control cannot take is refused and changes nothing.
  const std::vector<std::uint8_t> state = c.surface.State();
  Control d(60, 60);
  d.surface.SetState(state);
  EXPECT_EQ(d.surface.Samples(), 4);
  EXPECT_EQ(d.State().target.Samples(), 4);
  EXPECT_ORVANE_ERROR(d.surface.SetSamples(17), 5, "Orvada.Surface", "Samples must be from 1 to 16, not 17.");
  EXPECT_EQ(d.surface.Samples(), 4);
  d.surface.InitProperties();
  EXPECT_EQ(d.State().target.Samples(), 1);
}

TEST(SurfacePicture, AFittedMapFillsThePlotAreaAndEqualAspectKeepsItsShape) {
  // A square domain at 800 x 600 with caption and legend: most of the height.
  Control c(800, 600);
  layout::Domain(c, 1.0, 1.0);
  c.surface.SetPlotType(orvPlotType2D);
  c.surface.SetFitPlotArea(true);
  const auto& frame = c.State().renderer.LastFrame();
  // The map's box once the zoom is fitted to the plot area.
  const auto fitted = [&c, &frame] {
    c.surface.Refresh();
    c.surface.SetZoom(detail::FittingZoom(c.surface, 800, 600));
    c.surface.Refresh();
    return layout::FillBox(c.Image(), frame.plotWidth);
  };
  layout::Box box = fitted();
  EXPECT_GE(box.Height(), 0.75 * 600);
  EXPECT_NEAR((box.left + box.right) / 2.0, frame.plotWidth / 2.0, 2.0);  // centred beside the legend

  // 860 x 610 units at one scale are drawn 860 x 610, within 2 %.
  layout::Domain(c, 860.0, 610.0);
  c.surface.Axes().SetKeepXYAspectRatio(true);
  box = fitted();
  EXPECT_NEAR(static_cast<double>(box.Width()) / box.Height(), 860.0 / 610.0, 0.02 * 860.0 / 610.0);
  // Stretched, the axes' ranges span equal lengths instead.
  c.surface.Axes().SetKeepXYAspectRatio(false);
  box = fitted();
  Axes& axes = c.surface.Axes();
  const double stretched = 860.0 / (axes.XAxis().Max() - axes.XAxis().Min()) / (610.0 / (axes.YAxis().Max() - axes.YAxis().Min()));
  EXPECT_NEAR(static_cast<double>(box.Width()) / box.Height(), stretched, 0.02 * stretched);
}

TEST(SurfacePicture, TheFittedCubeStaysInsideThePlotAreaAtAnySizeAndRotation) {
  for (const auto& [w, h] : {std::pair{800, 600}, std::pair{400, 600}, std::pair{900, 300}}) {
    Control c(w, h);
    layout::Domain(c, 860.0, 610.0);
    for (const auto& r : {std::array{60, 0, 30}, std::array{60, 0, 75}, std::array{90, 0, 0}, std::array{20, 30, 200}}) {
      c.surface.SetRotationX(r[0]);
      c.surface.SetRotationY(r[1]);
      c.surface.SetRotationZ(r[2]);
      c.surface.SetZoom(detail::FittingZoom(c.surface, w, h));
      c.surface.Refresh();
      const auto& frame = c.State().renderer.LastFrame();
      for (int corner = 0; corner < 8; ++corner) {
        const auto p = c.Project(corner & 1, (corner >> 1) & 1, (corner >> 2) & 1);
        EXPECT_GE(p[0], 0) << w << "x" << h << " rotation " << r[0] << "," << r[1] << "," << r[2];
        EXPECT_LT(p[0], frame.plotWidth);
        EXPECT_GE(p[1], h - frame.plotHeight);
        EXPECT_LT(p[1], h);
      }
    }
  }
}

TEST(SurfacePicture, ABaseStandsTheSurfaceOnABlockDownToTheFloorAlongItsBoundary) {
  // A plane at z = 1 over a Z axis of 0 to 2, on a grid and triangulated: the walls fill
  // the space between its front edges and the floor, in the base colour (shaded) alone.
  for (const bool grid : {true, false}) {
    Control c(200, 200);
    BareViews(c);
    DataSet& data = c.surface.DataSets().Item(0);
    if (grid) {
      Plane(data, 1.0, 0.0);
    } else {
      data.DataAsSparseGridSet(4, {0, 1, 0, 1}, {0, 0, 1, 1}, {1, 1, 1, 1});
    }
    c.surface.Axes().ZAxis().SetAutoRangeType(orvAutoRangeOff);
    c.surface.Axes().ZAxis().SetMin(0.0);
    c.surface.Axes().ZAxis().SetMax(2.0);
    data.ViewMain().SetContourLinesVisible(false);
    data.ViewMain().SetDataHullVisible(false);
    c.surface.Refresh();
    auto wall = [&] {
      std::set<Color> seen;
      for (const auto& [x, y] : {std::pair{0.5, 0.0}, std::pair{0.0, 0.5}, std::pair{1.0, 0.5}, std::pair{0.5, 1.0}}) {
        for (const double z : {0.1, 0.25, 0.4}) seen.insert(c.PixelAt(0.05 + 0.9 * x, 0.05 + 0.9 * y, z));
      }
      return seen;
    };
    EXPECT_EQ(wall().count(0xFFFFFF), 1u) << "no block: the background shows under the plane";
    data.ViewMain().SetBaseVisible(true);
    c.surface.Refresh();
    // Under the back edges the top may show instead; the front walls are the block's.
    const std::set<Color> seen = wall();
    const Color top = c.surface.Contouring().FindColor(1.0, false);
    EXPECT_EQ(seen.count(0xFFFFFF), 0u);
    int walls = 0;
    for (const Color colour : seen) {
      const int r = colour & 0xFF, g = (colour >> 8) & 0xFF, b = (colour >> 16) & 0xFF;
      walls += colour != top;
      EXPECT_TRUE(colour == top || (r == g && g == b && r >= 112 && r <= 160)) << std::hex << colour;  // #A0A0A0 shaded 0.7 to 1
    }
    EXPECT_EQ(walls, 2);  // two walls face the viewer, each one shade
    // Kept with the view; a State without it has no block.
    const std::vector<std::uint8_t> state = c.surface.State();
    Control d(60, 60);
    d.surface.SetState(state);
    EXPECT_TRUE(d.surface.DataSets().Item(0).ViewMain().BaseVisible());
    EXPECT_EQ(d.surface.DataSets().Item(0).ViewMain().BaseColor(), 0xA0A0A0u);
  }
}

TEST(SurfacePicture, ABlankHoleShowsTheBackgroundAndTheContourLinesStopAtIt) {
  // z = x over [0, 1]^2 on 21 x 21 nodes, blank where 0.4 <= x, y <= 0.6.
  std::vector<double> x, z;
  for (int k = 0; k <= 20; ++k) x.push_back(k / 20.0);
  for (int i = 0; i <= 20; ++i) {
    for (int j = 0; j <= 20; ++j) {
      z.push_back(i >= 8 && i <= 12 && j >= 8 && j <= 12 ? std::nan("") : i / 20.0);
    }
  }
  // The grid goes through a GeoTIFF, as a user's raster would.
  const std::string tiff = (std::filesystem::temp_directory_path() / ("orvane_hole_" + std::to_string(::getpid()) + ".tif")).string();
  WriteGridFile(tiff, ".tif", GridFile{x, x, z});
  const DataFile file = ReadDataFile(tiff);
  std::filesystem::remove(tiff);
  ASSERT_EQ(file.BlankCount(), 25U);
  for (const bool is3D : {false, true}) {
    Control c(300, 300);
    BareViews(c);
    c.surface.SetPlotType(is3D ? orvPlotType3D : orvPlotType2D);
    DataSet& data = c.surface.DataSets().Item(0);
    ShowDataFile(file, data);
    data.ViewMain().SetUseMasterProperties(true);
    data.ViewMain().ContourLinesMaster().SetColor(0x000000);
    c.surface.Contouring().SetAutoSetContoursType(orvAutoSetOff);
    c.surface.Contouring().Contours().RemoveAll();
    c.surface.Contouring().Contours().AddLevels(std::vector<double>{0.25, 0.5, 0.75});
    c.surface.Refresh();
    const Color background = c.Image().Pixel(1, 1);
    // Everything over the hole is background; beside it the map is drawn.
    int inside = 0, drawn = 0;
    for (int a = 0; a <= 18; ++a) {
      const double u = 0.41 + a / 100.0;
      for (int b = 0; b <= 18; ++b) inside += c.PixelAt(u, 0.41 + b / 100.0, u) != background;
      drawn += c.PixelAt(u, 0.2, u) != background;
    }
    EXPECT_EQ(inside, 0) << (is3D ? "3-D" : "2-D");
    EXPECT_EQ(drawn, 19) << (is3D ? "3-D" : "2-D");
    if (is3D) continue;
    // The line at z = 0.5 runs up x = 0.5 to the hole's edge (y = 0.35) and on from 0.65.
    const auto dark = [&c](double u, double v) {
      const auto p = c.Project(u, v, u);
      for (int dx = -1; dx <= 1; ++dx) {
        const Color k = c.Image().Pixel(p[0] + dx, p[1]);
        if ((k & 0xFF) + ((k >> 8) & 0xFF) + ((k >> 16) & 0xFF) < 150) return true;
      }
      return false;
    };
    EXPECT_TRUE(dark(0.5, 0.3));
    EXPECT_TRUE(dark(0.5, 0.7));
    EXPECT_FALSE(dark(0.5, 0.45));
  }
}

TEST(SurfacePicture, ADecimatedMeshDiffersFromTheWholeInUnderOnePercentOfPixelsAndKeepsItsSpikes) {
  // 401 x 401 nodes (320,000 triangles) over a plot of under 30,000 pixels: drawn at
  // stride 3 or more, yet a one-node spike off every kept node keeps its height, and the
  // picture, contour lines traced from the whole grid, is all but the same.
  const int n = 401;
  std::vector<double> x(n), z(static_cast<std::size_t>(n) * n);
  for (int i = 0; i < n; ++i) x[static_cast<std::size_t>(i)] = i / (n - 1.0);
  for (int i = 0; i < n; ++i) {
    for (int j = 0; j < n; ++j) {
      z[static_cast<std::size_t>(i * n + j)] = std::sin(3.0 * x[static_cast<std::size_t>(i)]) * std::cos(2.0 * x[static_cast<std::size_t>(j)]);
    }
  }
  z[static_cast<std::size_t>(203 * n + 101)] = 3.0;  // at (0.5075, 0.2525): no kept node at strides 3 to 5
  for (const bool is3D : {false, true}) {
    std::vector<detail::Bitmap> images;
    std::vector<std::size_t> levels;
    for (const bool detail : {true, false}) {
      Control c(200, 150);
      BareViews(c);
      c.surface.SetPlotType(is3D ? orvPlotType3D : orvPlotType2D);
      c.surface.SetLevelOfDetail(detail);
      DataSet& data = c.surface.DataSets().Item(0);
      data.DataAsRectangularGridSet(x, n, x, n, Array2D(z, x.size(), x.size()));
      data.ViewMain().SetContourLinesVisible(true);
      c.surface.Refresh();
      levels.push_back(detail::DataSetAccess::State(data).detailMesh.level);
      images.push_back(c.Image());
      if (detail) {
        // The spike's height is drawn, at the kept node of its block.
        const auto& drawn = detail::DataSetAccess::State(data).detailMesh.z;
        EXPECT_EQ(*std::max_element(drawn.begin(), drawn.end()), 1.0);  // 3 of -1 to 3, normalised
      }
    }
    EXPECT_GE(levels[0], 3U);  // the decimated grid was drawn, the whole one not
    EXPECT_EQ(levels[1], 0U);
    int differ = 0;
    for (int py = 0; py < 150; ++py) {
      for (int px = 0; px < 200; ++px) differ += images[0].Pixel(px, py) != images[1].Pixel(px, py);
    }
    EXPECT_LE(differ, 200 * 150 / 100) << (is3D ? "3-D" : "2-D");
  }
}

TEST(SurfacePicture, AContourOfPiecesFarShorterThanAPixelIsDrawnUnbroken) {
  // A cone over 1201 x 1201 nodes: the level 0.3 is a circle of about 3000 pieces, each
  // a fifth of a pixel long. Drawn with 4 samples a pixel, every piece alone covers too
  // few samples and the circle fades to gaps (llvmpipe: 153 of 360 degrees); at a level
  // of detail the pieces are joined to about a pixel and it shows all the way round.
  const int n = 1201;
  std::vector<double> x(n), z;
  for (int i = 0; i < n; ++i) x[static_cast<std::size_t>(i)] = i / (n - 1.0);
  for (const double xi : x) {
    for (const double yj : x) z.push_back(std::hypot(xi - 0.5, yj - 0.5));
  }
  Control c(200, 150);
  BareViews(c);
  c.surface.SetSamples(4);
  c.surface.SetPlotType(orvPlotType2D);
  c.surface.Contouring().SetAutoSetContoursType(orvAutoSetOff);
  c.surface.Contouring().Contours().RemoveAll();
  c.surface.Contouring().Contours().AddLevels(std::vector<double>{0.3});
  DataSet& data = c.surface.DataSets().Item(0);
  data.DataAsRectangularGridSet(x, x, z);
  data.ViewMain().SetContourFillVisible(false);
  data.ViewMain().SetContourLinesVisible(true);
  data.ViewMain().SetUseMasterProperties(true);
  data.ViewMain().ContourLinesMaster().SetColor(0x000000);
  c.surface.Refresh();
  int drawn = 0;
  for (int k = 0; k < 360; ++k) {
    const double a = k * std::numbers::pi / 180.0;
    const auto p = c.Project(0.5 + 0.3 * std::cos(a), 0.5 + 0.3 * std::sin(a), 0.5);
    unsigned darkest = 765;
    for (int dx = -1; dx <= 1; ++dx) {
      for (int dy = -1; dy <= 1; ++dy) {
        const Color q = c.Image().Pixel(p[0] + dx, p[1] + dy);
        darkest = std::min(darkest, (q & 0xFF) + ((q >> 8) & 0xFF) + ((q >> 16) & 0xFF));
      }
    }
    drawn += darkest <= 384;  // half a pixel of black at least
  }
  EXPECT_EQ(drawn, 360);
}

TEST(SurfacePicture, TheKeptFillFollowsChangesOfColoursLightingAndAxes) {
  // The fill's vertex data outlive a frame; each change below must still show.
  Control c(240, 240);
  ScatteredRamp(c);
  c.surface.SetPlotType(orvPlotType2D);
  c.surface.Refresh();
  Contouring& contouring = c.surface.Contouring();
  const auto at = [&c](double x) { return c.PixelAt(x, 0.5, x); };
  EXPECT_EQ(at(0.42), contouring.FindColor(0.42, false));
  contouring.SetColorMapType(orvColorMapBlueRed);
  c.surface.Refresh();
  EXPECT_EQ(at(0.42), contouring.FindColor(0.42, false));
  EXPECT_EQ(at(0.82), contouring.FindColor(0.82, false));
  // The X axis over [0, 2]: the ramp takes the left half, in the same colours.
  c.surface.Axes().XAxis().SetAutoRangeType(orvAutoRangeOff);
  c.surface.Axes().XAxis().SetMax(2.0);
  c.surface.Refresh();
  EXPECT_EQ(at(0.21), contouring.FindColor(0.42, false));
  EXPECT_EQ(at(0.75), c.Image().Pixel(1, 1));  // nothing drawn beyond x = 1
  // Lit in 3-D, then unlit again: normals made for the light, dropped without it.
  c.surface.SetPlotType(orvPlotType3D);
  c.surface.SetLightingOn(true);
  c.surface.Refresh();
  c.surface.SetLightingOn(false);
  c.surface.Refresh();
  EXPECT_EQ(c.PixelAt(0.21, 0.5, 0.42), contouring.FindColor(0.42, false));
}

TEST(SurfacePicture, LevelOfDetailIsStoredOnlyWhenOff) {
  Control c;
  PropertyBag bag;
  c.surface.WriteProperties(bag);
  EXPECT_FALSE(bag.Contains("LevelOfDetail"));
  c.surface.SetLevelOfDetail(false);
  bag = PropertyBag{};
  c.surface.WriteProperties(bag);
  EXPECT_EQ(bag.ReadProperty("LevelOfDetail", true), false);
  Control other;
  other.surface.ReadProperties(bag);
  EXPECT_FALSE(other.surface.LevelOfDetail());
  other.surface.InitProperties();
  EXPECT_TRUE(other.surface.LevelOfDetail());
}

}  // namespace
}  // namespace orvane
