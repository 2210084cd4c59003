#pragma once

// One frame of the plot: clear, lighting, projection, model transform, clip planes, the
// three kinds of data-set view from their display lists, and the places where the
// caption, legend, axes, faces, text and cursor passes draw. Internal header.

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "control/recalculation.h"
#include "orvane/core/color.h"
#include "plot.h"

namespace orvane {

class Axes;
class Contouring;
class DataSets;

namespace detail {

class RenderTarget;

// The control's settings a frame reads.
struct FrameSettings {
  Color backColor = 0xFFFFFF;
  Color foreColor = 0;  // all text
  bool lightingOn = false;
  double lightingIntensitySpotlight = 1.0;
  double lightingIntensityAmbient = 0.5;
  double lightingMaterialShininess = 0.5;
  std::int32_t plotType = 0;  // 0 3-D, 1 2-D
  double zoom = 1.0;
  double offsetHorizontal = 0.0;
  double offsetVertical = 0.0;
  // 2-D maps too are centred in the plot area beside the legend and below the caption
  // and shrunk to it, as 3-D plots always are.
  bool fitPlotArea = false;
  // A mesh of far more triangles than the plot has pixels is drawn at a level of detail
  // (view_drawing.h); false draws every mesh whole.
  bool levelOfDetail = true;
  // The trackball's rotation matrix (column-major); identity by default.
  std::array<double, 16> rotation{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
  bool cursorVisible = false;
  // Contour labels test their pixels' visibility in the stencil buffer (true) or by
  // colour (false): the stencil when the target has one.
  bool labelTestByStencil = false;
};

// The objects a frame draws.
struct Scene {
  DataSets& dataSets;
  Axes& axes;
  Contouring& contouring;
};

// Matrices and viewport as OpenGL had them at a point of the frame.
struct CapturedMatrices {
  std::array<double, 16> modelView{};
  std::array<double, 16> projection{};
  std::array<std::int32_t, 4> viewport{};
};

// What the frame worked out, for the passes and for the host's mouse handling.
struct FrameState {
  std::int32_t width = 0, height = 0;          // the control, in pixels
  std::int32_t plotWidth = 1, plotHeight = 1;  // beside the legend, below the caption
  std::array<double, 3> cubeLengths{1.0, 1.0, 1.0};
  // Whether the viewer is on the positive side of X, Y and Z (3-D; in 2-D only Z).
  std::array<bool, 3> viewerOnPositiveSide{false, false, true};
  CapturedMatrices beforeViews;  // after the model transform (axes, faces)
  CapturedMatrices mainViews;    // as the main views were drawn (text, mouse)
  bool is3D = true;
  Color foreColor = 0;  // the colour of all text
  bool labelTestByStencil = false;  // FrameSettings::labelTestByStencil
  double fillPreparationSeconds = 0.0;  // building the fills' vertex data, GL calls apart
};

// Drawing that belongs to the caption, legend, axes, faces, text and cursor; each is
// called at its place in the frame. The defaults reserve no room and draw nothing.
class FramePasses {
 public:
  virtual ~FramePasses() = default;
  // Pixels the caption band takes at the top of a control of this size.
  virtual std::int32_t CaptionBand(std::int32_t /*width*/, std::int32_t /*height*/) { return 0; }
  // Pixels the legend takes at the right.
  virtual std::int32_t LegendRoom(std::int32_t /*width*/, std::int32_t /*height*/) { return 0; }
  virtual void DrawLegend(const FrameState&) {}
  virtual void DrawCaption(const FrameState&) {}
  virtual void DrawAxes(const FrameState&) {}
  virtual void DrawFaces(const FrameState&) {}
  virtual void DrawContourLabels(int /*kind*/, const FrameState&) {}
  virtual void DrawOverlayText(const FrameState&) {}
  virtual void DrawCursor(const FrameState&) {}
  // The fonts the text passes draw with: dropped when the control's fonts or its
  // context change (no context need be current), and built again before the next frame.
  virtual void InvalidateFonts() {}
  virtual void RebuildFonts() {}
};

class Renderer {
 public:
  Renderer();
  Renderer(const Renderer&) = delete;
  Renderer& operator=(const Renderer&) = delete;

  // Renders one frame into the target (its context made current for the call) and reads
  // it back into the target's bitmap. When prepareData, the scene is first recalculated
  // as the control does it (see recalculation.h), with the geometry and the levels taken
  // as stale whenever a mesh was rebuilt or the data range moved. A target without a
  // context keeps its bitmap and nothing is drawn. The context is released on every way
  // out.
  void Render(RenderTarget& target, Scene& scene, const FrameSettings& settings, FramePasses* passes = nullptr,
              bool prepareData = true);
  // The frame itself, in the current context (no data preparation, no read-back).
  void RenderFrame(std::int32_t width, std::int32_t height, Scene& scene, const FrameSettings& settings,
                   FramePasses& passes);

  // The plots of the main, top and bottom views.
  Plot& PlotOfKind(int kind) noexcept { return plots_[static_cast<std::size_t>(kind)]; }
  // Deletes every plot's list (in the current context).
  void InvalidatePlots();
  // Marks every plot's list stale.
  void MarkPlotsStale() noexcept;
  // Lets go of the fills' vertex data, so that the next list is built from nothing.
  void ForgetFills() noexcept { fills_.clear(); }
  // Deletes the plots' lists when they were compiled in target's context (made current
  // for the call), and forgets them in any case: the next frame compiles them anew.
  void ReleaseLists(RenderTarget& target) noexcept;
  const FrameState& LastFrame() const noexcept { return frame_; }
  // How many frames were drawn.
  std::int64_t FrameCount() const noexcept { return frames_; }
  // Whether the views are compiled into display lists and replayed (the default, for a
  // control that redraws as it is turned) or drawn straight away each frame (for a
  // one-off image, where a list would be compiled to be used once).
  bool CompileLists() const noexcept { return compileLists_; }
  void SetCompileLists(bool value) noexcept { compileLists_ = value; }

  // Drawn lengths of the cube's edges: each axis's Zoom, and with KeepXYAspectRatio the X
  // and Y lengths in proportion to their ranges (the longer keeps its Zoom).
  static std::array<double, 3> CubeLengths(Axes& axes);

 private:
  std::array<Plot, 3> plots_{Plot(0), Plot(1), Plot(2)};
  FrameState frame_;
  bool compileLists_ = true;
  const void* context_ = nullptr;  // the target whose context holds the plots' lists
  std::uint64_t contextGeneration_ = 0;
  Recalculation recalculation_;
  StaleMarks marks_;
  std::optional<DataRange> dataRange_;  // the data range the axes and levels last followed
  std::array<double, 11> listInputs_{};  // axis ranges, cube lengths, lighting, 3-D of the lists
  std::vector<std::size_t> detailLevels_;  // each data set's level of detail in the lists
  FillCache fills_;  // the data sets' fill geometry, kept from frame to frame
  std::int64_t frames_ = 0;
};

}  // namespace detail
}  // namespace orvane
