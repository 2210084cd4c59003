// The text of the plot: the caption band, the legend's colour bar and the axes' labels
// and titles.
//
// Legend. The room at the control's right holds, from left to right: a margin, the bar
// of colour swatches (one per band between the contour levels, or a smooth gradient
// when colours are interpolated), tick marks at the levels, and the levels' values
// formatted like the Z axis's labels; the Z axis's title sits above the bar. The bar
// spans the Z axis's range, so that it reads like the surface beside it. Labels are
// thinned to every 2nd, 5th, 10th, ... level until no two overlap.
//
// Axis labels. Each tick's label sits beyond the tick's outer end, on the side the tick
// points to on the screen, and is skipped when it would overlap a label already drawn.
// The X and Y titles follow beyond the labels at the middle of their axis; the Z title
// above the top of its axis.

#include <algorithm>
#include <cmath>
#include <string>

#include "annotations.h"
#include "gl.h"
#include "gl_line.h"
#include "orvane/axes/axes.h"
#include "orvane/contour/contouring.h"
#include "orvane/render/caption.h"
#include "orvane/render/legend.h"

namespace orvane::detail {

namespace {

constexpr double kLegendMargin = 8.0;  // pixels round the legend's parts
constexpr double kTickPixels = 4.0;    // the legend's tick marks
constexpr double kLabelGap = 3.0;      // between a tick and its label


std::vector<double> LevelValues(const Contouring& contouring) {
  std::vector<double> values;
  const Contours& levels = contouring.Contours();
  for (std::int32_t k = 0; k < levels.Count(); ++k) {
    const double v = levels.Item(k)->Value();
    if (std::isfinite(v)) values.push_back(v);
  }
  std::sort(values.begin(), values.end());
  return values;
}

// The range the legend's bar spans: the Z axis's, or the levels' when the axis has none.
std::pair<double, double> BarRange(Axes& axes, const std::vector<double>& levels) {
  double lo = axes.ZAxis().Min(), hi = axes.ZAxis().Max();
  if (!(hi > lo) || !std::isfinite(hi - lo)) {
    lo = levels.front();
    hi = levels.back();
  }
  if (!(hi > lo)) {
    lo -= 0.5;
    hi += 0.5;
  }
  return {lo, hi};
}

// Pixel coordinates of the current viewport as the projection, identity model-view.
void PixelProjection(double width, double height) {
  glMatrixMode(GL_PROJECTION);
  glLoadIdentity();
  glOrtho(0.0, width, 0.0, height, -1.0, 1.0);
  glMatrixMode(GL_MODELVIEW);
  glLoadIdentity();
}

double Dot(double ax, double ay, double bx, double by) { return ax * bx + ay * by; }

}  // namespace

CFontMap& PlotAnnotations::FontOf(const Font& font) {
  if (fontsStale_) {
    fonts_.Clear();
    fontsStale_ = false;
  }
  return fonts_.Get(font);
}

// ---------------------------------------------------------------------------------------
// Caption

std::int32_t PlotAnnotations::CaptionBand(std::int32_t /*width*/, std::int32_t height) {
  Caption& caption = o_.caption;
  if (!caption.Visible() || caption.Text().empty() || height <= 0) return 0;
  const TextMetrics m = FontOf(caption.Font()).Measure(caption.Text());
  return static_cast<std::int32_t>(std::min<double>(std::ceil(2.0 * m.height), height));
}

void PlotAnnotations::DrawCaption(const FrameState& frame) {
  const std::int32_t band = std::min(frame.height - frame.plotHeight, CaptionBand(frame.width, frame.height));
  if (band <= 0 || frame.width <= 0) return;
  Caption& caption = o_.caption;
  glViewport(0, frame.height - band, frame.width, band);
  glMatrixMode(GL_PROJECTION);
  glPushMatrix();
  glLoadIdentity();
  // Left equals right: OpenGL refuses this projection (GL_INVALID_VALUE) and the
  // identity stays in force. The text places itself in the band's pixels, which does not
  // depend on the projection; the refusal is taken off the error flag here so that it
  // is not mistaken for a fault later in the frame.
  glOrtho(0.0, 0.0, frame.width, band, -1.0, 1.0);
  while (glGetError() != GL_NO_ERROR) {
  }
  glMatrixMode(GL_MODELVIEW);
  glPushAttrib(GL_ENABLE_BIT);
  glDisable(GL_DEPTH_TEST);
  glDisable(GL_LIGHTING);
  TextAnchor anchor;
  anchor.x = frame.width / 2.0;
  anchor.y = band / 2.0;
  anchor.alignH = TextAlignH::kCenter;
  anchor.alignV = TextAlignV::kCenter;
  DrawText(FontOf(caption.Font()), caption.Text(), frame.foreColor, anchor);
  glPopAttrib();
  glMatrixMode(GL_PROJECTION);
  glPopMatrix();
  glMatrixMode(GL_MODELVIEW);
}

// ---------------------------------------------------------------------------------------
// Legend

namespace {

// Where the bar's swatches are cut: its foot, the levels inside it, its top.
std::vector<double> BarCuts(double lo, double hi, const std::vector<double>& levels) {
  std::vector<double> cuts{lo};
  for (const double v : levels) {
    if (v > lo && v < hi) cuts.push_back(v);
  }
  cuts.push_back(hi);
  return cuts;
}

// Where a value lies up the bar, 0 at its foot and 1 at its top: in proportion to Z, or
// with even bands every swatch the same height and the value in proportion within its own.
double BarFraction(double v, const std::vector<double>& cuts, bool even) {
  const double lo = cuts.front(), hi = cuts.back();
  if (!even) return (v - lo) / (hi - lo);
  const auto k = static_cast<std::size_t>(std::upper_bound(cuts.begin(), cuts.end(), v) - cuts.begin());
  if (k == 0) return 0.0;
  if (k >= cuts.size()) return 1.0;
  const double within = (v - cuts[k - 1]) / (cuts[k] - cuts[k - 1]);
  return (static_cast<double>(k - 1) + within) / static_cast<double>(cuts.size() - 1);
}

}  // namespace

double PlotAnnotations::LegendLabelWidth() {
  Axis& z = o_.axes.ZAxis();
  CFontMap& font = FontOf(z.LabelsFont());
  double widest = 0.0;
  for (const double v : LevelValues(o_.contouring)) widest = std::max(widest, font.Measure(z.LabelText(v)).width);
  return widest;
}

std::int32_t PlotAnnotations::LegendRoom(std::int32_t width, std::int32_t height) {
  if (!o_.legend.Visible() || o_.contouring.Contours().Count() == 0 || width <= 0 || height <= 0) return 0;
  CFontMap& font = FontOf(o_.axes.ZAxis().LabelsFont());
  const double barWidth = std::clamp(std::round(font.Measure("0").height * 1.2), 10.0, 24.0);
  double room = 2 * kLegendMargin + barWidth + kTickPixels + kLabelGap + LegendLabelWidth();
  // The title over the bar starts at the bar's left: room for the whole of it too.
  Axis& z = o_.axes.ZAxis();
  if (z.TitleVisible() && !z.Title().empty()) {
    room = std::max(room, 2 * kLegendMargin + FontOf(z.TitleFont()).Measure(z.Title()).width);
  }
  // Never more than a third of the control: the plot comes first.
  room = std::min(std::ceil(room), std::floor(width / 3.0));
  return static_cast<std::int32_t>(std::max(room, 0.0));
}

LegendLayout PlotAnnotations::Layout(std::int32_t roomWidth, std::int32_t roomHeight) {
  LegendLayout l;
  const std::vector<double> levels = LevelValues(o_.contouring);
  if (!o_.legend.Visible() || levels.empty() || roomWidth <= 0 || roomHeight <= 0) return l;
  Axis& z = o_.axes.ZAxis();
  CFontMap& labels = FontOf(z.LabelsFont());
  const double labelHeight = labels.Measure("0").height;
  if (z.TitleVisible() && !z.Title().empty()) l.title = z.Title();
  const double titleHeight = l.title.empty() ? 0.0 : FontOf(z.TitleFont()).Measure(l.title).height + 4.0;
  const double barWidth = std::clamp(std::round(labelHeight * 1.2), 10.0, 24.0);
  l.barLeft = kLegendMargin;
  l.barRight = std::min(kLegendMargin + barWidth, static_cast<double>(roomWidth));
  l.barBottom = kLegendMargin + labelHeight / 2.0;
  l.barTop = roomHeight - kLegendMargin - titleHeight - labelHeight / 2.0;
  // The bar keeps the middle 80% of a tall room, so that it reads as a key, not a wall.
  const double most = 0.8 * roomHeight;
  if (l.barTop - l.barBottom > most) {
    const double middle = (l.barTop + l.barBottom) / 2.0;
    l.barBottom = middle - most / 2.0;
    l.barTop = middle + most / 2.0;
  }
  if (!(l.barTop - l.barBottom >= 2.0)) return l;  // no room for a bar
  l.visible = true;
  l.labelLeft = l.barRight + kTickPixels + kLabelGap;
  l.titleX = l.barLeft;
  l.titleY = l.barTop + labelHeight / 2.0 + 4.0 + FontOf(z.TitleFont()).Descent();
  const std::pair<double, double> range = BarRange(o_.axes, levels);
  const double lo = range.first, hi = range.second;
  const std::vector<double> cuts = BarCuts(lo, hi, levels);
  for (const double v : levels) {
    if (v < lo || v > hi) continue;
    l.ticks.push_back({v, l.barBottom + BarFraction(v, cuts, o_.legend.EvenBands()) * (l.barTop - l.barBottom), false, {}});
  }
  // Thin the labels: every step-th tick, the step growing 1, 2, 5, 10, 20, 50, ... until
  // neighbouring labels clear each other by two pixels.
  const double needed = labelHeight + 2.0;
  std::size_t step = 1;
  for (int k = 0; step < l.ticks.size(); ++k) {
    bool clear = true;
    for (std::size_t i = step; i < l.ticks.size() && clear; i += step) {
      clear = l.ticks[i].y - l.ticks[i - step].y >= needed;
    }
    if (clear) break;
    static constexpr std::size_t kSteps[3] = {2, 5, 10};
    std::size_t decade = 1;
    for (int d = 0; d < k / 3; ++d) decade *= 10;
    step = kSteps[k % 3] * decade;
  }
  for (std::size_t i = 0; i < l.ticks.size(); i += step) {
    l.ticks[i].labelled = true;
    l.ticks[i].text = z.LabelText(l.ticks[i].value);
  }
  return l;
}

void PlotAnnotations::DrawLegend(const FrameState& frame) {
  const std::int32_t room = frame.width - frame.plotWidth;
  const std::int32_t height = frame.height - (frame.height - frame.plotHeight);
  if (room <= 0 || height <= 0) return;
  const LegendLayout l = Layout(room, height);
  if (!l.visible) return;
  const std::vector<double> levels = LevelValues(o_.contouring);
  const std::pair<double, double> range = BarRange(o_.axes, levels);
  const double lo = range.first, hi = range.second;
  Axis& z = o_.axes.ZAxis();

  glPushAttrib(GL_ALL_ATTRIB_BITS);
  glViewport(frame.plotWidth, 0, room, height);
  glMatrixMode(GL_PROJECTION);
  glPushMatrix();
  glMatrixMode(GL_MODELVIEW);
  glPushMatrix();
  PixelProjection(room, height);
  glDisable(GL_DEPTH_TEST);
  glDisable(GL_LIGHTING);
  glDisable(GL_LINE_STIPPLE);
  // Swatches from the bar's bottom (the Z axis's minimum) to its top, cut at each level.
  const std::vector<double> cuts = BarCuts(lo, hi, levels);
  const bool even = o_.legend.EvenBands();
  auto yOf = [&](double v) { return l.barBottom + BarFraction(v, cuts, even) * (l.barTop - l.barBottom); };
  const bool gradient = o_.contouring.InterpolateColors();
  glShadeModel(gradient ? GL_SMOOTH : GL_FLAT);
  glBegin(GL_QUADS);
  for (std::size_t k = 0; k + 1 < cuts.size(); ++k) {
    const double y0 = yOf(cuts[k]), y1 = yOf(cuts[k + 1]);
    const Color below = o_.contouring.FindColor(gradient ? cuts[k] : (cuts[k] + cuts[k + 1]) / 2.0, false);
    const Color above = gradient ? o_.contouring.FindColor(cuts[k + 1], false) : below;
    SetColor(below);
    glVertex2d(l.barLeft, y0);
    glVertex2d(l.barRight, y0);
    SetColor(above);
    glVertex2d(l.barRight, y1);
    glVertex2d(l.barLeft, y1);
  }
  glEnd();
  // The bar's outline and the ticks, in the text colour, on pixel centres.
  SetColor(frame.foreColor);
  glLineWidth(1.0F);
  const double left = std::floor(l.barLeft) + 0.5, right = std::floor(l.barRight) - 0.5;
  const double bottom = std::floor(l.barBottom) + 0.5, top = std::floor(l.barTop) - 0.5;
  glBegin(GL_LINE_LOOP);
  glVertex2d(left, bottom);
  glVertex2d(right, bottom);
  glVertex2d(right, top);
  glVertex2d(left, top);
  glEnd();
  glBegin(GL_LINES);
  for (const LegendLayout::Tick& t : l.ticks) {
    const double y = std::floor(t.y) + 0.5;
    glVertex2d(right, y);
    glVertex2d(right + kTickPixels, y);
  }
  glEnd();
  CFontMap& labels = FontOf(z.LabelsFont());
  for (const LegendLayout::Tick& t : l.ticks) {
    if (!t.labelled) continue;
    TextAnchor anchor;
    anchor.x = l.labelLeft;
    anchor.y = t.y;
    anchor.alignV = TextAlignV::kCenter;
    DrawText(labels, t.text, frame.foreColor, anchor);
  }
  if (!l.title.empty()) {
    TextAnchor anchor;
    anchor.x = l.titleX;
    anchor.y = l.titleY;
    DrawText(FontOf(z.TitleFont()), l.title, frame.foreColor, anchor);
  }
  glMatrixMode(GL_PROJECTION);
  glPopMatrix();
  glMatrixMode(GL_MODELVIEW);
  glPopMatrix();
  glPopAttrib();
}

// ---------------------------------------------------------------------------------------
// Axis labels and titles

void PlotAnnotations::DrawOverlayText(const FrameState& frame) {
  axisText_.clear();
  axisLabels_.clear();
  const CapturedMatrices& m = frame.beforeViews;
  const auto edges = AxisEdges(frame, m);
  glDisable(GL_DEPTH_TEST);
  glDisable(GL_LIGHTING);
  glViewport(m.viewport[0], m.viewport[1], m.viewport[2], m.viewport[3]);
  std::vector<TextQuad> drawn;  // every label so far, of all axes, padded by a pixel
  for (int a = 0; a < (frame.is3D ? 3 : 2); ++a) {
    Axis& axis = AxisOf(o_.axes, a);
    if (!axis.LabelsVisible() && !(axis.TitleVisible() && !axis.Title().empty())) continue;
    const double first = edges[static_cast<std::size_t>(a)][0], second = edges[static_cast<std::size_t>(a)][1];
    const int out = a == 0 ? 1 : 0;
    const double outward = first >= 0.5 ? 1.0 : -1.0;
    const double length = axis.TickLength();
    auto point = [&](double t, double beyond) {
      double c[3] = {0, 0, 0};
      const int u = (a + 1) % 3, w = (a + 2) % 3;
      c[a] = t;
      c[std::min(u, w)] = first;
      c[std::max(u, w)] = second;
      c[out] += outward * beyond;
      return ProjectToWindow(m, c[0], c[1], c[2]);
    };
    // The screen direction the ticks point in; straight down when they point at the eye.
    double dx = 0.0, dy = -1.0;
    {
      const auto p = point(0.5, 0.0), q = point(0.5, length);
      if (p && q) {
        const double ex = q->x - p->x, ey = q->y - p->y, n = std::hypot(ex, ey);
        if (n > 1e-6) {
          dx = ex / n;
          dy = ey / n;
        }
      }
    }
    auto align = [&](TextAnchor& anchor, double ux, double uy) {
      anchor.alignH = ux > 0.35 ? TextAlignH::kLeft : ux < -0.35 ? TextAlignH::kRight : TextAlignH::kCenter;
      anchor.alignV = uy > 0.35 ? TextAlignV::kBottom : uy < -0.35 ? TextAlignV::kTop : TextAlignV::kCenter;
    };
    double reach = 0.0;  // how far the labels reach beyond the ticks' ends, along (dx, dy)
    if (axis.LabelsVisible()) {
      CFontMap& font = FontOf(axis.LabelsFont());
      const std::int32_t count = DrawnTicks(axis);
      struct Candidate {
        double value, endX, endY;
        std::string text;
        TextAnchor anchor;
        TextQuad outline;  // padded by a pixel
      };
      std::vector<Candidate> candidates;
      for (std::int32_t i = 0; i <= count && count >= 0; ++i) {
        const double t = axis.TickPosition(i);
        if (!(t >= 0.0 && t <= 1.0)) continue;
        const auto end = point(t, length);
        if (!end) continue;
        Candidate c{axis.TickValue(i), end->x, end->y, axis.LabelText(axis.TickValue(i)), {}, {}};
        c.anchor.x = end->x + 4.0 * dx;
        c.anchor.y = end->y + 4.0 * dy;
        align(c.anchor, dx, dy);
        c.outline = TextOutline(font, c.text, c.anchor, 1.0);
        candidates.push_back(std::move(c));
      }
      // Labels that would overlap are thinned evenly: every k-th one from the first, the
      // smallest k at which they clear each other, so the values read at a steady step.
      std::size_t step = 1;
      for (; step < candidates.size(); ++step) {
        bool clear = true;
        for (std::size_t i = step; i < candidates.size() && clear; i += step) {
          clear = !OutlinesOverlap(candidates[i - step].outline, candidates[i].outline);
        }
        if (clear) break;
      }
      for (std::size_t i = 0; i < candidates.size(); i += step) {
        const Candidate& c = candidates[i];
        // Another axis's label, where the axes meet at a corner of the cube, keeps its place.
        bool clear = true;
        for (const TextQuad& other : drawn) clear = clear && !OutlinesOverlap(c.outline, other);
        if (!clear) continue;
        drawn.push_back(c.outline);
        DrawText(font, c.text, frame.foreColor, c.anchor);
        axisText_.push_back(TextOutline(font, c.text, c.anchor));
        axisLabels_.push_back({a, c.value});
        for (const auto& corner : c.outline) {
          reach = std::max(reach, Dot(corner[0] - c.endX, corner[1] - c.endY, dx, dy));
        }
      }
    }
    if (axis.TitleVisible() && !axis.Title().empty()) {
      CFontMap& font = FontOf(axis.TitleFont());
      TextAnchor anchor;
      if (a == 2) {
        // Above the top of the axis, along its own direction on the screen.
        const auto top = point(1.0, 0.0), below = point(0.0, 0.0);
        if (!top || !below) continue;
        double ux = top->x - below->x, uy = top->y - below->y;
        const double n = std::hypot(ux, uy);
        if (n > 1e-6) {
          ux /= n;
          uy /= n;
        } else {
          ux = 0.0;
          uy = 1.0;
        }
        anchor.x = top->x + 8.0 * ux;
        anchor.y = top->y + 8.0 * uy;
        align(anchor, ux, uy);
      } else {
        const auto end = point(0.5, length);
        if (!end) continue;
        const double beyond = std::max(reach, 4.0) + 6.0;
        anchor.x = end->x + beyond * dx;
        anchor.y = end->y + beyond * dy;
        align(anchor, dx, dy);
      }
      // Pushed further out, a line at a time, while it would cover other text.
      const double ox = anchor.x, oy = anchor.y, step = font.Measure(axis.Title()).height;
      TextQuad outline{};
      bool clear = false;
      for (int attempt = 0; attempt < 4 && !clear; ++attempt) {
        const double ux = a == 2 ? 0.0 : dx, uy = a == 2 ? 1.0 : dy;
        anchor.x = ox + attempt * step * ux;
        anchor.y = oy + attempt * step * uy;
        outline = TextOutline(font, axis.Title(), anchor, 1.0);
        clear = true;
        for (const TextQuad& other : drawn) clear = clear && !OutlinesOverlap(outline, other);
      }
      if (!clear) continue;
      drawn.push_back(outline);
      DrawText(font, axis.Title(), frame.foreColor, anchor);
      axisText_.push_back(TextOutline(font, axis.Title(), anchor));
    }
  }
}

}  // namespace orvane::detail
