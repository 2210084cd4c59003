// Contour labels: places along the lines, the visibility testers and the pass that
// draws them (see contour_labels.h).

#include "render/contour_labels.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <unordered_set>

#include "data/data_set_state.h"
#include "orvane/axes/axes.h"
#include "orvane/contour/contouring.h"
#include "orvane/data/data_sets.h"
#include "orvane/render/line.h"
#include "orvane/render/view.h"
#include "render/annotations.h"
#include "render/coord_mapper.h"
#include "render/gl.h"
#include "render/gl_line.h"
#include "render/plot.h"
#include "render/render_target.h"

namespace orvane::detail {

// ---------------------------------------------------------------------------------------
// Rotation

Matrix3 RotationMatrix(double ax, double ay, double az) noexcept {
  const double x = ax * kDegreesToRadians, y = ay * kDegreesToRadians, z = az * kDegreesToRadians;
  const double cx = std::cos(x), sx = std::sin(x);
  const double cy = std::cos(y), sy = std::sin(y);
  const double cz = std::cos(z), sz = std::sin(z);
  return {{{cz * cy, cz * sy * sx - sz * cx, cz * sy * cx + sz * sx},
           {sz * cy, sz * sy * sx + cz * cx, sz * sy * cx - cz * sx},
           {-sy, sx * cy, cx * cy}}};
}

std::array<double, 3> Rotate(const Matrix3& m, double x, double y, double z) noexcept {
  return {m[0][0] * x + m[0][1] * y + m[0][2] * z, m[1][0] * x + m[1][1] * y + m[1][2] * z,
          m[2][0] * x + m[2][1] * y + m[2][2] * z};
}

TextQuad LabelOutline(double x, double y, double halfWidth, double halfHeight, double angle) noexcept {
  const Matrix3 r = RotationMatrix(0.0, 0.0, angle);
  const double corners[4][2] = {
      {-halfWidth, -halfHeight}, {halfWidth, -halfHeight}, {halfWidth, halfHeight}, {-halfWidth, halfHeight}};
  TextQuad q{};
  for (std::size_t k = 0; k < 4; ++k) {
    const auto p = Rotate(r, corners[k][0], corners[k][1], 0.0);
    q[k] = {x + p[0], y + p[1]};
  }
  return q;
}

double LabelAngle(double x1, double y1, double x2, double y2) noexcept {
  const double dx = x2 - x1, dy = y2 - y1;
  if (dx == 0.0 && dy == 0.0) return 0.0;
  double a = std::atan2(dy, dx) * 180.0 / std::numbers::pi;  // [-180, 180]
  if (a > 90.0) a -= 180.0;
  if (a <= -90.0) a += 180.0;
  return a;
}

// ---------------------------------------------------------------------------------------
// Places

namespace {

// One polyline's segments with their running lengths in the XY plane.
class Polyline {
 public:
  Polyline(const CLineList& lines, std::size_t begin, std::size_t end) : lines_(lines), begin_(begin) {
    ends_.reserve(end - begin);
    double sum = 0.0;
    for (std::size_t i = begin; i < end; ++i) {
      const CLine& l = lines.Item(i);
      sum += std::hypot(l.x2 - l.x1, l.y2 - l.y1);
      ends_.push_back(sum);
    }
  }
  double Length() const noexcept { return ends_.empty() ? 0.0 : ends_.back(); }
  // The point at arc length s (clamped to the polyline).
  std::array<double, 3> At(double s) const {
    const auto it = std::lower_bound(ends_.begin(), ends_.end(), s);
    const std::size_t i = it == ends_.end() ? ends_.size() - 1 : static_cast<std::size_t>(it - ends_.begin());
    const CLine& l = lines_.Item(begin_ + i);
    const double start = i == 0 ? 0.0 : ends_[i - 1];
    const double length = ends_[i] - start;
    const double t = length > 0.0 ? std::clamp((s - start) / length, 0.0, 1.0) : 0.0;
    return {l.x1 + t * (l.x2 - l.x1), l.y1 + t * (l.y2 - l.y1), l.z1 + t * (l.z2 - l.z1)};
  }

 private:
  const CLineList& lines_;
  std::size_t begin_;
  std::vector<double> ends_;
};

}  // namespace

LevelLabels PlaceLabels(std::span<const CLineList> levels, std::int32_t density, std::int32_t skipping) {
  LevelLabels out(levels.size());
  const std::size_t step = static_cast<std::size_t>(std::max(skipping, 0)) + 1;
  const double perLength = static_cast<double>(std::max(density, 0));
  for (std::size_t k = 0; k < levels.size(); k += step) {
    const CLineList& lines = levels[k];
    if (lines.Count() == 0) continue;
    std::vector<std::int32_t> starts = lines.PolylineStarts();
    if (starts.empty()) starts.push_back(0);
    // Where in its stretch each label sits: a golden-ratio walk over [0.25, 0.75].
    const double walk = static_cast<double>(k) * 0.6180339887498949;
    const double phase = 0.25 + 0.5 * (walk - std::floor(walk));
    for (std::size_t p = 0; p < starts.size(); ++p) {
      const auto begin = static_cast<std::size_t>(starts[p]);
      const std::size_t end = p + 1 < starts.size() ? static_cast<std::size_t>(starts[p + 1]) : lines.Count();
      if (begin >= end) continue;
      const Polyline line(lines, begin, end);
      const double length = line.Length();
      if (!(length >= kMinLabelledLength)) continue;
      // Never closer together than the direction's reach.
      const double most = std::floor(length / kAheadLength);
      const double n = std::clamp(std::round(length * perLength), 1.0, std::max(most, 1.0));
      const double stretch = length / n;
      for (double i = 0.0; i < n; i += 1.0) {
        const double s = (i + phase) * stretch;
        out[k].push_back(CLabel{line.At(s), line.At(std::min(s + kAheadLength, length))});
      }
    }
  }
  return out;
}

// ---------------------------------------------------------------------------------------
// Visibility

namespace {

// A point to test, in window pixels of the framebuffer.
struct Probe {
  bool valid = false;
  GLint px = 0, py = 0;           // the pixel it lands on
  double ndcX = 0, ndcY = 0, ndcZ = 0;  // where it is drawn: that pixel's centre, pulled depth
};

std::vector<Probe> Project(const CapturedMatrices& m, std::span<const CubePoint3> points) {
  std::vector<Probe> probes(points.size());
  const auto& vp = m.viewport;
  if (vp[2] <= 0 || vp[3] <= 0) return probes;
  for (std::size_t i = 0; i < points.size(); ++i) {
    const auto w = ProjectToWindow(m, points[i][0], points[i][1], points[i][2]);
    if (!w || !std::isfinite(w->x) || !std::isfinite(w->y) || !std::isfinite(w->depth)) continue;
    if (w->x < 0.0 || w->y < 0.0 || w->x >= vp[2] || w->y >= vp[3]) continue;
    if (w->depth < -1.0 || w->depth > 1.0) continue;  // beyond the near or far plane
    Probe& p = probes[i];
    const double fx = std::floor(w->x), fy = std::floor(w->y);
    p.valid = true;
    p.px = static_cast<GLint>(fx) + vp[0];
    p.py = static_cast<GLint>(fy) + vp[1];
    p.ndcX = 2.0 * (fx + 0.5) / vp[2] - 1.0;
    p.ndcY = 2.0 * (fy + 0.5) / vp[3] - 1.0;
    p.ndcZ = std::max(w->depth - IPixelVisibility::kDepthPull, -1.0);
  }
  return probes;
}

// Groups of probes that can be tested together: within a group no probe's block of
// (2 radius + 1)^2 pixels shares a pixel with another's. First fit, in order.
std::vector<std::vector<std::size_t>> Batches(const std::vector<Probe>& probes, int radius) {
  std::vector<std::vector<std::size_t>> batches;
  std::vector<std::unordered_set<std::uint64_t>> taken;
  auto key = [](GLint x, GLint y) {
    return (static_cast<std::uint64_t>(static_cast<std::uint32_t>(x)) << 32) | static_cast<std::uint32_t>(y);
  };
  for (std::size_t i = 0; i < probes.size(); ++i) {
    const Probe& p = probes[i];
    if (!p.valid) continue;
    std::size_t b = 0;
    for (; b < batches.size(); ++b) {
      bool free = true;
      for (int dx = -radius; dx <= radius && free; ++dx) {
        for (int dy = -radius; dy <= radius && free; ++dy) free = taken[b].count(key(p.px + dx, p.py + dy)) == 0;
      }
      if (free) break;
    }
    if (b == batches.size()) {
      batches.emplace_back();
      taken.emplace_back();
    }
    batches[b].push_back(i);
    for (int dx = -radius; dx <= radius; ++dx) {
      for (int dy = -radius; dy <= radius; ++dy) taken[b].insert(key(p.px + dx, p.py + dy));
    }
  }
  return batches;
}

// The state the test points are drawn in: identity matrices (the probes are in normalised
// device coordinates), single unsmoothed pixels, and nothing that could change a
// fragment or drop it except the depth test; tight packing for the read-backs. All of it
// is restored when the scope ends.
class PointScope {
 public:
  PointScope() {
    glPushAttrib(GL_ENABLE_BIT | GL_CURRENT_BIT | GL_POINT_BIT | GL_TRANSFORM_BIT);
    glPushClientAttrib(GL_CLIENT_PIXEL_STORE_BIT);
    glMatrixMode(GL_TEXTURE);
    glPushMatrix();
    glLoadIdentity();
    glMatrixMode(GL_PROJECTION);
    glPushMatrix();
    glLoadIdentity();
    glMatrixMode(GL_MODELVIEW);
    glPushMatrix();
    glLoadIdentity();
    static constexpr GLenum kOff[] = {GL_LIGHTING, GL_TEXTURE_1D, GL_TEXTURE_2D, GL_FOG, GL_ALPHA_TEST, GL_BLEND,
                                      GL_POINT_SMOOTH, GL_COLOR_LOGIC_OP, GL_DITHER, GL_POLYGON_OFFSET_POINT,
                                      GL_SCISSOR_TEST, GL_CULL_FACE};
    for (const GLenum cap : kOff) glDisable(cap);
    GLint planes = 0;
    glGetIntegerv(GL_MAX_CLIP_PLANES, &planes);
    for (GLint k = 0; k < planes; ++k) glDisable(static_cast<GLenum>(GL_CLIP_PLANE0 + k));
    glPointSize(1.0F);
    glPixelStorei(GL_PACK_ALIGNMENT, 1);
    glPixelStorei(GL_PACK_ROW_LENGTH, 0);
    glPixelStorei(GL_PACK_SKIP_ROWS, 0);
    glPixelStorei(GL_PACK_SKIP_PIXELS, 0);
  }
  ~PointScope() {
    glMatrixMode(GL_MODELVIEW);
    glPopMatrix();
    glMatrixMode(GL_PROJECTION);
    glPopMatrix();
    glMatrixMode(GL_TEXTURE);
    glPopMatrix();
    glMatrixMode(GL_MODELVIEW);
    glPopClientAttrib();
    glPopAttrib();
  }
  PointScope(const PointScope&) = delete;
  PointScope& operator=(const PointScope&) = delete;
};

void DrawPoints(const std::vector<Probe>& probes, const std::vector<std::size_t>& batch) {
  glBegin(GL_POINTS);
  for (const std::size_t i : batch) glVertex3d(probes[i].ndcX, probes[i].ndcY, probes[i].ndcZ);
  glEnd();
}

}  // namespace

std::vector<char> CPixelVisibilityStencil::Test(const CapturedMatrices& matrices, std::span<const CubePoint3> points) {
  std::vector<char> visible(points.size(), 0);
  const std::vector<Probe> probes = Project(matrices, points);
  const auto batches = Batches(probes, kBlockRadius);
  if (batches.empty()) return visible;
  const auto& vp = matrices.viewport;
  PointScope scope;
  constexpr int kSide = 2 * kBlockRadius + 1;
  for (const auto& batch : batches) {
    glPushAttrib(GL_COLOR_BUFFER_BIT | GL_STENCIL_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    glColorMask(GL_FALSE, GL_FALSE, GL_FALSE, GL_FALSE);
    glEnable(GL_DEPTH_TEST);
    glDepthFunc(GL_LEQUAL);
    glDepthMask(GL_FALSE);
    glEnable(GL_STENCIL_TEST);
    glStencilMask(0xFF);
    glStencilFunc(GL_ALWAYS, 1, 1);
    glStencilOp(GL_KEEP, GL_ZERO, GL_REPLACE);
    DrawPoints(probes, batch);
    for (const std::size_t i : batch) {
      const Probe& p = probes[i];
      // The block, cut to the viewport.
      const GLint x0 = std::max(p.px - kBlockRadius, vp[0]), y0 = std::max(p.py - kBlockRadius, vp[1]);
      const GLint x1 = std::min(p.px + kBlockRadius, vp[0] + vp[2] - 1);
      const GLint y1 = std::min(p.py + kBlockRadius, vp[1] + vp[3] - 1);
      GLubyte block[kSide * kSide] = {};
      RenderTarget::ReadPixels(x0, y0, x1 - x0 + 1, y1 - y0 + 1, GL_STENCIL_INDEX, GL_UNSIGNED_BYTE, block);
      ++readBacks_;
      const auto count = static_cast<std::size_t>((x1 - x0 + 1) * (y1 - y0 + 1));
      visible[i] = std::any_of(block, block + count, [](GLubyte v) { return v != 0; }) ? 1 : 0;
    }
    glStencilOp(GL_ZERO, GL_ZERO, GL_ZERO);
    DrawPoints(probes, batch);
    glPopAttrib();
  }
  return visible;
}

std::vector<char> CPixelVisibilityRGB::Test(const CapturedMatrices& matrices, std::span<const CubePoint3> points) {
  std::vector<char> visible(points.size(), 0);
  const std::vector<Probe> probes = Project(matrices, points);
  const auto batches = Batches(probes, 0);
  if (batches.empty()) return visible;
  PointScope scope;
  // Colours given between glBegin and glEnd can outlive the attribute pop in Mesa: the
  // current colour is put back by hand as well.
  GLfloat current[4] = {1.0F, 1.0F, 1.0F, 1.0F};
  glGetFloatv(GL_CURRENT_COLOR, current);
  std::vector<std::array<GLfloat, 3>> saved(points.size());
  for (const auto& batch : batches) {
    // The depth group as the test needs it, and the colour group for the write mask: the
    // probe and its undoing write red, green and blue only, so alpha stays as it was.
    glPushAttrib(GL_DEPTH_BUFFER_BIT | GL_COLOR_BUFFER_BIT);
    glEnable(GL_DEPTH_TEST);
    glDepthFunc(GL_LEQUAL);
    glDepthMask(GL_FALSE);
    glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_FALSE);
    for (const std::size_t i : batch) {
      RenderTarget::ReadPixels(probes[i].px, probes[i].py, 1, 1, GL_RGB, GL_FLOAT, saved[i].data());
      ++readBacks_;
    }
    glBegin(GL_POINTS);
    for (const std::size_t i : batch) {
      const auto& c = saved[i];
      glColor3f(1.0F - c[0], 1.0F - c[1], 1.0F - c[2]);
      glVertex3d(probes[i].ndcX, probes[i].ndcY, probes[i].ndcZ);
    }
    glEnd();
    for (const std::size_t i : batch) {
      std::array<GLfloat, 3> now{};
      RenderTarget::ReadPixels(probes[i].px, probes[i].py, 1, 1, GL_RGB, GL_FLOAT, now.data());
      ++readBacks_;
      bool arrived = true;
      for (std::size_t c = 0; c < 3; ++c) arrived = arrived && std::fabs(now[c] - (1.0F - saved[i][c])) < 0.5F / 255.0F;
      visible[i] = arrived ? 1 : 0;
    }
    glBegin(GL_POINTS);
    for (const std::size_t i : batch) {
      glColor3fv(saved[i].data());
      glVertex3d(probes[i].ndcX, probes[i].ndcY, probes[i].ndcZ);
    }
    glEnd();
    glPopAttrib();
  }
  glColor4fv(current);
  return visible;
}

// ---------------------------------------------------------------------------------------
// The labels of a pass

const LevelLabels& CLabelsManager::Places(const DataSetState& state, int kind, std::int32_t density,
                                          std::int32_t skipping) {
  Entry& entry = places_[&state];
  if (entry.generation != state.contourGeneration) {
    entry.generation = state.contourGeneration;
    for (KindPlaces& k : entry.kinds) k.built = false;
  }
  KindPlaces& k = entry.kinds[static_cast<std::size_t>(std::clamp(kind, 0, 2))];
  if (!k.built || k.density != density || k.skipping != skipping) {
    k.levels = PlaceLabels(state.contourLines, density, skipping);
    k.density = density;
    k.skipping = skipping;
    k.built = true;
    ++placements_;
  }
  return k.levels;
}

void CLabelsManager::KeepOnly(std::span<const DataSetState* const> states) {
  std::erase_if(places_, [&](const auto& item) {
    return std::find(states.begin(), states.end(), item.first) == states.end();
  });
}

void CLabelsManager::Begin(const CapturedMatrices& matrices) {
  matrices_ = matrices;
  queue_.clear();
}

void CLabelsManager::Add(const std::string& text, const LabelStyle& style, const CubePoint3& anchor,
                         const CubePoint3& ahead) {
  if (style.font == nullptr || text.empty()) return;
  queue_.push_back(Queued{text, style, anchor, ahead});
}

namespace {

// A border round a label without a fill: the line DrawText would draw round its box.
void DrawBorder(CFontMap& font, const std::string& text, const TextAnchor& anchor, const Line& line,
                double padding) {
  GLint vp[4] = {0, 0, 0, 0};
  glGetIntegerv(GL_VIEWPORT, vp);
  if (vp[2] <= 0 || vp[3] <= 0 || line.Width() <= 0) return;
  const TextQuad q = TextOutline(font, text, anchor, padding - 0.5);
  glPushAttrib(GL_ENABLE_BIT | GL_CURRENT_BIT | GL_LINE_BIT | GL_DEPTH_BUFFER_BIT | GL_TRANSFORM_BIT);
  glMatrixMode(GL_PROJECTION);
  glPushMatrix();
  glLoadIdentity();
  glMatrixMode(GL_MODELVIEW);
  glPushMatrix();
  glLoadIdentity();
  glDisable(GL_LIGHTING);
  glDisable(GL_TEXTURE_2D);
  GLint planes = 0;
  glGetIntegerv(GL_MAX_CLIP_PLANES, &planes);
  for (GLint k = 0; k < planes; ++k) glDisable(static_cast<GLenum>(GL_CLIP_PLANE0 + k));
  glDepthMask(GL_FALSE);
  glEnable(GL_LINE_STIPPLE);
  ApplyLineFormat(line);
  glBegin(GL_LINE_LOOP);
  for (const auto& c : q) glVertex3d(2.0 * c[0] / vp[2] - 1.0, 2.0 * c[1] / vp[3] - 1.0, anchor.depth);
  glEnd();
  glMatrixMode(GL_MODELVIEW);
  glPopMatrix();
  glMatrixMode(GL_PROJECTION);
  glPopMatrix();
  glMatrixMode(GL_MODELVIEW);
  glPopAttrib();
}

}  // namespace

void CLabelsManager::Finish(IPixelVisibility& tester) {
  drawn_.clear();
  counts_ = Counts{};
  counts_.queued = static_cast<std::int32_t>(queue_.size());
  if (queue_.empty()) return;
  std::vector<CubePoint3> anchors;
  anchors.reserve(queue_.size());
  for (const Queued& q : queue_) anchors.push_back(q.anchor);
  const std::vector<char> visible = tester.Test(matrices_, anchors);
  const double width = matrices_.viewport[2], height = matrices_.viewport[3];
  const TextBox defaultBox;
  for (std::size_t i = 0; i < queue_.size(); ++i) {
    const Queued& q = queue_[i];
    if (visible[i] == 0) {
      ++counts_.hidden;
      continue;
    }
    const auto a = ProjectToWindow(matrices_, q.anchor[0], q.anchor[1], q.anchor[2]);
    const auto b = ProjectToWindow(matrices_, q.ahead[0], q.ahead[1], q.ahead[2]);
    if (!a || !b) {
      ++counts_.hidden;
      continue;
    }
    const LabelStyle& s = q.style;
    const double angle = s.rotate ? LabelAngle(a->x, a->y, b->x, b->y) : 0.0;
    const TextMetrics m = s.font->Measure(q.text);
    const bool boxed = s.fill || (s.border != nullptr && s.border->Width() > 0);
    const double padding = boxed ? defaultBox.padding : 0.0;
    const TextQuad outline = LabelOutline(a->x, a->y, m.width / 2.0 + padding + kAir,
                                          (m.ascent + m.descent) / 2.0 + padding + kAir, angle);
    const bool inside = std::all_of(outline.begin(), outline.end(), [&](const std::array<double, 2>& c) {
      return c[0] >= 0.0 && c[1] >= 0.0 && c[0] <= width && c[1] <= height;
    });
    if (!inside) {
      ++counts_.outside;
      continue;
    }
    const bool overlaps = std::any_of(drawn_.begin(), drawn_.end(),
                                      [&](const Drawn& d) { return OutlinesOverlap(d.outline, outline); });
    if (overlaps) {
      ++counts_.overlapping;
      continue;
    }
    // In front of everything: the anchor's test already said whether the label shows.
    const TextAnchor anchor{a->x, a->y, -1.0, TextAlignH::kCenter, TextAlignV::kCenter, angle};
    if (s.fill) {
      TextBox box;
      box.fill = s.fillColor;
      box.border = s.border;
      DrawText(*s.font, q.text, s.color, anchor, &box);
    } else {
      if (s.border != nullptr) DrawBorder(*s.font, q.text, anchor, *s.border, defaultBox.padding);
      DrawText(*s.font, q.text, s.color, anchor);
    }
    drawn_.push_back(Drawn{outline, q.text, angle, a->x, a->y});
    ++counts_.drawn;
  }
  queue_.clear();
}

// ---------------------------------------------------------------------------------------
// The control's pass

void PlotAnnotations::DrawContourLabels(int kind, const FrameState& frame) {
  DataSets& sets = o_.dataSets;
  std::vector<const DataSetState*> states;
  for (std::int32_t i = 0; i < sets.Count(); ++i) states.push_back(&DataSetAccess::State(sets.Item(i)));
  labels_.KeepOnly(states);

  Axis& zAxis = o_.axes.ZAxis();
  const Contours& levels = o_.contouring.Contours();
  CFontMap& font = FontOf(zAxis.LabelsFont());
  labels_.Begin(frame.mainViews);
  for (std::int32_t i = 0; i < sets.Count(); ++i) {
    DataSet& data = sets.Item(i);
    const View& view = ViewOfKind(data, kind);
    if (!view.Visible() || !view.ContourLabelsVisible()) continue;
    const DataSetState& state = DataSetAccess::State(data);
    CCoordMapper map;
    map.Init(data, o_.axes);
    const LevelLabels& places =
        labels_.Places(state, kind, view.ContourLabelsDensity(), view.ContourLabelsLevelSkipping());
    LabelStyle style;
    style.font = &font;
    style.color = frame.foreColor;
    style.rotate = view.ContourLabelsRotation();
    style.fill = view.ContourLabelsFillVisible();
    style.fillColor = view.ContourLabelsFillColor();
    style.border = view.ContourLabelsEdgeVisible() ? &view.ContourLabelsEdgeLine() : nullptr;
    const auto cube = [&map](const std::array<double, 3>& p) {
      return CubePoint3{map.NormalisedToCubeX(p[0]), map.NormalisedToCubeY(p[1]), map.NormalisedToCubeZ(p[2])};
    };
    for (std::size_t k = 0; k < places.size(); ++k) {
      if (places[k].empty()) continue;
      if (k >= static_cast<std::size_t>(levels.Count())) break;
      const std::string text = zAxis.LabelText(levels.Item(static_cast<std::int32_t>(k))->Value());
      for (const CLabel& label : places[k]) labels_.Add(text, style, cube(label.anchor), cube(label.ahead));
    }
  }
  if (frame.labelTestByStencil) {
    labels_.Finish(stencilTest_);
  } else {
    labels_.Finish(colourTest_);
  }
}

}  // namespace orvane::detail
