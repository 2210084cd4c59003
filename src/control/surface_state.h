#pragma once

// What a Surface holds: its object tree, its stale marks, the renderer and the
// off-screen target. Internal header: no compatibility promise.

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "control/recalculation.h"
#include "control/trackball.h"
#include "orvane/control/surface.h"
#include "render/frame.h"
#include "render/render_target.h"

namespace orvane::detail {

struct SurfaceState {
  // The tree, declared in the order the control creates it. Children do not reach their
  // parent: the control listens to them (connections, below).
  orvane::Contouring contouring;
  orvane::DataSets dataSets;
  orvane::Axes axes;
  orvane::Faces faces;
  orvane::Legend legend;
  Renderer renderer;  // the main, top and bottom Plot renderers
  Caption header;
  // The caption, legend, axes, faces, text and cursor passes with their fonts; the
  // default ones draw nothing.
  std::unique_ptr<FramePasses> passes = std::make_unique<FramePasses>();
  orvane::Cursor cursor;
  std::unique_ptr<CTrackball> trackball;  // made on the first use of a rotation

  // The drawing target at the control's size, made on the first paint or resize.
  RenderTarget target;
  bool targetMade = false;
  std::int32_t width = 0;
  std::int32_t height = 0;

  Recalculation recalculation;
  StaleMarks marks;  // GeometryDirty and ContoursDirty
  bool fontsDirty = true;
  bool redrawRequired = true;
  bool borderStylePending = true;
  bool appearancePending = true;
  bool loading = false;
  // A refresh or a paint is under way: the changes it makes itself (axis scales,
  // resampling limits) mark things stale but start no refresh of their own.
  bool busy = false;
  bool terminated = false;

  EAppearance appearance = orvFlat;
  bool autoRefresh = false;
  Color backColor = 0xFFFFFF;
  Color foreColor = 0;
  EBorderStyle borderStyle = orvNone;
  bool lightingOn = false;
  double offsetHorizontal = 0.0;
  double offsetVertical = 0.0;
  EPlotType plotType = orvPlotType3D;
  double zoom = 1.0;
  double lightingMaterialShininess = 0.5;
  double lightingIntensitySpotlight = 1.0;
  double lightingIntensityAmbient = 0.5;
  std::int32_t samples = 1;   // per pixel of the drawing target
  bool fitPlotArea = false;   // 2-D maps centred and fitted in the plot area
  bool levelOfDetail = true;  // meshes of far more triangles than pixels drawn decimated

  float lastMouseX = 0.0F;  // the last button press, for a drag
  float lastMouseY = 0.0F;
  bool dragging = false;  // the left button went down over the control and is held
  // What the last failed paint step raised (the paint step never lets it out).
  std::string lastPaintError;

  std::vector<Connection> connections;

  CTrackball& Trackball() {
    if (!trackball) trackball = std::make_unique<CTrackball>();
    return *trackball;
  }
  Scene SceneOf() { return Scene{dataSets, axes, contouring}; }
};

struct SurfaceAccess {
  static SurfaceState& State(Surface& s) { return *s.state_; }
  // Refresh's first two steps on their own (a caller timing the stages runs them before
  // Refresh, which then finds nothing left to do in them): the recalculation of meshes,
  // axes, levels and contours, and the drawing target with its context.
  static void Recalculate(Surface& s) { s.Recalculate(); }
  static void EnsureTarget(Surface& s) { s.EnsureTarget(); }
  // The passes that draw caption, legend, axes, faces, text and cursor from now on.
  // (null: the default ones).
  static void SetPasses(Surface& s, std::unique_ptr<FramePasses> passes) {
    s.state_->passes = passes ? std::move(passes) : std::make_unique<FramePasses>();
  }
};

}  // namespace orvane::detail
