// The frame, step by step.
//
// Cube space. Every axis runs from 0 to 1 in the cube; the views, clip planes and ticks
// all work there. The model transform takes the cube to the eye in this order (last
// applied first): centre it on the origin, scale its edges to their drawn lengths
// (CubeLengths), mirror Y, then rotate (the trackball in 3-D, -180 degrees about X in
// 2-D) and offset. The mirror is there because the projection's depth axis is reversed
// (near +D, far -D: the viewer looks from negative Z), which makes the eye space left-
// handed; with it, 2-D shows X to the right, Y up and Z towards the viewer.
//
// Centring in the plot area. The projection's translation is given in eye units, so it
// is scaled by the orthographic extent (aspect on the wide side) to move the cube's
// centre to the middle of the plot area beside the legend and below the caption.

#include "frame.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include "data/data_set_state.h"
#include "gl.h"
#include "orvane/axes/axes.h"
#include "orvane/contour/contouring.h"
#include "orvane/data/data_sets.h"
#include "render_target.h"

namespace orvane::detail {

namespace {

CapturedMatrices Capture() {
  CapturedMatrices m;
  glGetDoublev(GL_MODELVIEW_MATRIX, m.modelView.data());
  glGetDoublev(GL_PROJECTION_MATRIX, m.projection.data());
  glGetIntegerv(GL_VIEWPORT, m.viewport.data());
  return m;
}

// Eye-space depth of a cube direction under the current model-view matrix.
double EyeDepth(const std::array<double, 16>& m, double x, double y, double z) {
  return m[2] * x + m[6] * y + m[10] * z;
}

void SetClipPlanes() {
  constexpr double kMin = 0.0, kMax = 1.0;
  constexpr double kTolerance = (kMax - kMin) / 10000.0;
  for (int axis = 0; axis < 3; ++axis) {
    double low[4] = {0, 0, 0, -(kMin - kTolerance)};
    double high[4] = {0, 0, 0, kMax + kTolerance};
    low[axis] = 1.0;
    high[axis] = -1.0;
    glClipPlane(static_cast<GLenum>(GL_CLIP_PLANE0 + 2 * axis), low);
    glClipPlane(static_cast<GLenum>(GL_CLIP_PLANE0 + 2 * axis + 1), high);
  }
}

void EnableClipPlanes(int count, bool on) {
  for (int k = 0; k < count; ++k) {
    if (on) {
      glEnable(static_cast<GLenum>(GL_CLIP_PLANE0 + k));
    } else {
      glDisable(static_cast<GLenum>(GL_CLIP_PLANE0 + k));
    }
  }
}

}  // namespace

Renderer::Renderer() = default;

std::array<double, 3> Renderer::CubeLengths(Axes& axes) {
  std::array<double, 3> lengths{axes.XAxis().Zoom(), axes.YAxis().Zoom(), axes.ZAxis().Zoom()};
  if (axes.KeepXYAspectRatio()) {
    const double rx = axes.XAxis().Max() - axes.XAxis().Min();
    const double ry = axes.YAxis().Max() - axes.YAxis().Min();
    const double longer = std::max(rx, ry);
    if (longer > 0.0 && std::isfinite(longer)) {
      lengths[0] *= rx / longer;
      lengths[1] *= ry / longer;
    }
  }
  for (double& l : lengths) {
    if (!(l > 0.0) || !std::isfinite(l)) l = 1.0;
  }
  return lengths;
}

void Renderer::InvalidatePlots() {
  for (Plot& plot : plots_) plot.Invalidate();
}

void Renderer::MarkPlotsStale() noexcept {
  for (Plot& plot : plots_) plot.MarkStale();
}

void Renderer::ReleaseLists(RenderTarget& target) noexcept {
  if (context_ == &target && contextGeneration_ == target.Generation() && target.MakeCurrent()) {
    for (Plot& plot : plots_) plot.Invalidate();
    target.ReleaseCurrent();
  }
  for (Plot& plot : plots_) plot.Forget();
  context_ = nullptr;
  contextGeneration_ = 0;
}

void Renderer::Render(RenderTarget& target, Scene& scene, const FrameSettings& settings, FramePasses* passes,
                      bool prepareData) {
  if (prepareData) {
    bool changed = recalculation_.RebuildMeshes(scene.dataSets, {});
    const DataRange range = DataRangeOf(scene.dataSets);
    if (changed || dataRange_ != range) {
      // A new mesh or data range: the axes follow it and the levels are derived again.
      marks_.geometry = marks_.contours = true;
      dataRange_ = range;
    }
    if (recalculation_.Run(scene, marks_, {}, [this] { MarkPlotsStale(); })) changed = true;
    if (changed) MarkPlotsStale();
  }
  if (!target.HasContext() || !target.MakeCurrent()) return;
  struct Release {
    RenderTarget& target;
    ~Release() { target.ReleaseCurrent(); }
  } release{target};
  if (context_ != &target || contextGeneration_ != target.Generation()) {
    // The lists were compiled in another context, which is gone or not current.
    for (Plot& plot : plots_) plot.Forget();
    context_ = &target;
    contextGeneration_ = target.Generation();
  }
  FramePasses none;
  RenderFrame(target.Width(), target.Height(), scene, settings, passes != nullptr ? *passes : none);
  glFlush();
  target.ReadBack();
}

void Renderer::RenderFrame(std::int32_t width, std::int32_t height, Scene& scene, const FrameSettings& settings,
                           FramePasses& passes) {
  ++frames_;
  FrameState& f = frame_;
  f.width = width;
  f.height = height;
  f.is3D = settings.plotType != 1;
  f.foreColor = settings.foreColor;
  f.labelTestByStencil = settings.labelTestByStencil;

  // 1. Background.
  const Color back = settings.backColor;
  glClearColor(static_cast<GLfloat>(back & 0xFF) / 255.0F, static_cast<GLfloat>((back >> 8) & 0xFF) / 255.0F,
               static_cast<GLfloat>((back >> 16) & 0xFF) / 255.0F, 1.0F);
  // The stencil as well: the contour labels' visibility test counts on it being zero.
  glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT | GL_STENCIL_BUFFER_BIT);

  // 2. Everything below is undone by the last step.
  glPushAttrib(GL_ALL_ATTRIB_BITS);
  glMatrixMode(GL_PROJECTION);
  glLoadIdentity();
  glMatrixMode(GL_MODELVIEW);
  glLoadIdentity();

  // 3. The axes run from 0 to 1 in the cube; their drawn lengths shape it.
  f.cubeLengths = CubeLengths(scene.axes);
  const double* lengths = f.cubeLengths.data();

  // 4. Lighting, with the light fixed to the viewer.
  if (settings.lightingOn) {
    const GLfloat position[4] = {0.25F, 0.0F, -0.5F, 1.0F};
    const GLfloat white[4] = {1.0F, 1.0F, 1.0F, 1.0F};
    const auto s = static_cast<GLfloat>(settings.lightingIntensitySpotlight);
    const auto a = static_cast<GLfloat>(settings.lightingIntensityAmbient);
    const GLfloat diffuse[4] = {s, s, s, 1.0F};
    const GLfloat ambient[4] = {a, a, a, 1.0F};
    glLightfv(GL_LIGHT0, GL_POSITION, position);
    glLightfv(GL_LIGHT0, GL_SPECULAR, white);
    glLightfv(GL_LIGHT0, GL_DIFFUSE, diffuse);
    glLightModelf(GL_LIGHT_MODEL_TWO_SIDE, 1.0F);
    glLightModelfv(GL_LIGHT_MODEL_AMBIENT, ambient);
    glColorMaterial(GL_FRONT_AND_BACK, GL_AMBIENT_AND_DIFFUSE);
    glMaterialf(GL_FRONT_AND_BACK, GL_SHININESS, static_cast<GLfloat>(1.0 + 19.0 * settings.lightingMaterialShininess));
    glMaterialfv(GL_FRONT, GL_SPECULAR, white);
    glMaterialfv(GL_BACK, GL_SPECULAR, white);
    glEnable(GL_COLOR_MATERIAL);
    glEnable(GL_LIGHT0);
    glEnable(GL_NORMALIZE);  // the cube's scaling would otherwise stretch the normals
  }

  // 5.
  glEnable(GL_DEPTH_TEST);

  // 6. Legend and caption, each with its own viewport; the plot area is what is left.
  const std::int32_t legendRoom = std::clamp(passes.LegendRoom(width, height), 0, std::max(width, 0));
  const std::int32_t captionBand = std::clamp(passes.CaptionBand(width, height), 0, std::max(height, 0));
  f.plotWidth = std::max(width - legendRoom, 1);
  f.plotHeight = std::max(height - captionBand, 1);
  passes.DrawLegend(f);
  passes.DrawCaption(f);

  // 7. Projection.
  glMatrixMode(GL_PROJECTION);
  glLoadIdentity();
  glViewport(0, 0, width, height);
  const double aspect = height == 0 ? 1.0 : static_cast<double>(width) / height;
  const double depth = f.is3D ? std::max({lengths[0], lengths[1], lengths[2]}) : lengths[2];
  if (aspect > 1.0) {
    glOrtho(-aspect, aspect, -1.0, 1.0, depth, -depth);
  } else {
    glOrtho(-1.0, 1.0, -1.0 / aspect, 1.0 / aspect, depth, -depth);
  }
  if ((f.is3D || settings.fitPlotArea) && width > 0 && height > 0) {
    const double extentX = aspect > 1.0 ? aspect : 1.0;
    const double extentY = aspect > 1.0 ? 1.0 : 1.0 / aspect;
    glTranslated(-static_cast<double>(width - f.plotWidth) / width * extentX,
                 -static_cast<double>(height - f.plotHeight) / height * extentY, 0.0);
    const double shrink = std::min(static_cast<double>(f.plotWidth) / width, static_cast<double>(f.plotHeight) / height);
    glScaled(shrink, shrink, 1.0);
  }
  glScaled(settings.zoom, settings.zoom, 1.0);

  // 8. Model transform.
  glMatrixMode(GL_MODELVIEW);
  glLoadIdentity();
  glTranslated(settings.offsetHorizontal, settings.offsetVertical, 0.0);
  if (f.is3D) {
    glMultMatrixd(settings.rotation.data());
  } else {
    glRotated(-180.0, 1.0, 0.0, 0.0);
  }
  glScaled(1.0, -1.0, 1.0);
  glScaled(lengths[0], lengths[1], lengths[2]);
  glTranslated(-0.5, -0.5, -0.5);
  {
    std::array<double, 16> m{};
    glGetDoublev(GL_MODELVIEW_MATRIX, m.data());
    // The viewer looks from negative eye Z: a cube direction pointing there faces it.
    f.viewerOnPositiveSide = {EyeDepth(m, 1, 0, 0) <= 0.0, EyeDepth(m, 0, 1, 0) <= 0.0, EyeDepth(m, 0, 0, 1) <= 0.0};
  }

  // 9. Axes, the matrices for text and mouse, faces.
  passes.DrawAxes(f);
  f.beforeViews = Capture();
  passes.DrawFaces(f);

  // 10. Clip planes just outside the cube, so that points on its faces are kept.
  SetClipPlanes();

  // 11. Views. Their lists hold cube coordinates, normals only when lit, and markers
  // sized against the cube's lengths: a change of any of these makes them stale.
  const std::array<double, 11> listInputs{scene.axes.XAxis().Min(), scene.axes.XAxis().Max(), scene.axes.YAxis().Min(),
                                          scene.axes.YAxis().Max(), scene.axes.ZAxis().Min(), scene.axes.ZAxis().Max(),
                                          lengths[0], lengths[1], lengths[2], settings.lightingOn ? 1.0 : 0.0,
                                          f.is3D ? 1.0 : 0.0};
  if (listInputs != listInputs_) {
    MarkPlotsStale();
    listInputs_ = listInputs;
  }
  // The fills of data sets no longer in the scene are let go.
  for (auto it = fills_.begin(); it != fills_.end();) {
    bool present = false;
    for (std::int32_t i = 0; i < scene.dataSets.Count() && !present; ++i) {
      present = &DataSetAccess::State(scene.dataSets.Item(i)) == it->first;
    }
    it = present ? std::next(it) : fills_.erase(it);
  }
  f.fillPreparationSeconds = 0.0;
  ViewContext context{scene.axes, scene.contouring, settings.lightingOn, f.is3D, f.cubeLengths, &fills_};
  context.frame = static_cast<std::uint64_t>(frames_);
  context.preparationSeconds = &f.fillPreparationSeconds;
  if (settings.levelOfDetail) {
    context.detailPixels = static_cast<std::size_t>(f.plotWidth) * static_cast<std::size_t>(f.plotHeight);
  }
  // A mesh whose level of detail changes (the plot was resized past a step) is drawn anew.
  std::vector<std::size_t> levels;
  for (std::int32_t i = 0; i < scene.dataSets.Count(); ++i) levels.push_back(DetailLevel(scene.dataSets.Item(i), context.detailPixels));
  if (levels != detailLevels_) {
    MarkPlotsStale();
    detailLevels_ = std::move(levels);
  }
  auto labels = [&](int kind) { passes.DrawContourLabels(kind, f); };
  if (f.is3D) {
    for (const int kind : {1, 2}) {
      glPushMatrix();
      glTranslated(0.0, 0.0, kind == 1 ? 1.0 : 0.0);
      glScaled(1.0, 1.0, 0.0);
      f.mainViews = Capture();
      Plot& plot = plots_[static_cast<std::size_t>(kind)];
      if (plot.AnyViewToDraw(scene.dataSets)) {
        EnableClipPlanes(4, true);
        plot.DrawViews(scene.dataSets, context, labels, compileLists_);
        EnableClipPlanes(4, false);
      }
      glPopMatrix();
    }
  }
  f.mainViews = Capture();
  EnableClipPlanes(6, true);
  if (plots_[0].AnyViewToDraw(scene.dataSets)) {
    if (settings.lightingOn) glEnable(GL_LIGHTING);
    plots_[0].DrawViews(scene.dataSets, context, labels, compileLists_);
    if (settings.lightingOn) glDisable(GL_LIGHTING);
  }
  EnableClipPlanes(6, false);

  // 12. Text at 3-D anchors.
  glMatrixMode(GL_PROJECTION);
  glPushMatrix();
  glMatrixMode(GL_MODELVIEW);
  glPushMatrix();
  glPushAttrib(GL_ALL_ATTRIB_BITS);
  passes.DrawOverlayText(f);
  glPopAttrib();
  glMatrixMode(GL_PROJECTION);
  glPopMatrix();
  glMatrixMode(GL_MODELVIEW);
  glPopMatrix();

  // 13. Cursor, through the surface in 3-D.
  if (settings.cursorVisible) {
    if (f.is3D) glDisable(GL_DEPTH_TEST);
    passes.DrawCursor(f);
    if (f.is3D) glEnable(GL_DEPTH_TEST);
  }

  // 14.
  glPopAttrib();
}

}  // namespace orvane::detail
