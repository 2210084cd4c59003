#pragma once

// The control's own frame passes: the plot cube's faces, the axes, the caption, the
// legend, the contour labels and the cursor, drawn from the control's objects at their
// places in the frame. Internal header.

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "contour_labels.h"
#include "font_map.h"
#include "frame.h"
#include "text.h"

namespace orvane {

class Axes;
class Axis;
class Caption;
class Contouring;
class Cursor;
class DataSets;
class Faces;
class Face;
class Legend;

namespace detail {

// The objects the passes draw; they belong to the control and outlive the passes.
struct AnnotatedObjects {
  Axes& axes;
  Faces& faces;
  Caption& caption;
  Legend& legend;
  Cursor& cursor;
  Contouring& contouring;
  DataSets& dataSets;
};

// Where the legend puts its parts, in pixels of its own room (origin at the room's
// lower-left corner; the room is the strip at the control's right, as high as the plot
// area).
struct LegendLayout {
  bool visible = false;
  double barLeft = 0, barRight = 0, barBottom = 0, barTop = 0;
  // The levels drawn along the bar, ascending, with their heights on it; those whose
  // labels are shown (thinned so that no two overlap) carry their text.
  struct Tick {
    double value = 0, y = 0;
    bool labelled = false;
    std::string text;
  };
  std::vector<Tick> ticks;
  double labelLeft = 0;  // where the labels start, left-aligned, centred on their tick
  double titleX = 0, titleY = 0;  // the title's centre-bottom
  std::string title;
};

class PlotAnnotations : public FramePasses {
 public:
  explicit PlotAnnotations(const AnnotatedObjects& objects) : o_(objects) {}

  std::int32_t CaptionBand(std::int32_t width, std::int32_t height) override;
  std::int32_t LegendRoom(std::int32_t width, std::int32_t height) override;
  void DrawLegend(const FrameState& frame) override;
  void DrawCaption(const FrameState& frame) override;
  void DrawFaces(const FrameState& frame) override;
  void DrawAxes(const FrameState& frame) override;
  // The labels along the contour lines of the views of one kind (contour_labels.cpp).
  void DrawContourLabels(int kind, const FrameState& frame) override;
  void DrawOverlayText(const FrameState& frame) override;
  void DrawCursor(const FrameState& frame) override;
  void InvalidateFonts() override { fontsStale_ = true; }
  void RebuildFonts() override {}

  // The legend's layout in a room of width x height pixels (as LegendRoom gives it for
  // the control), for the levels the contouring holds now.
  LegendLayout Layout(std::int32_t roomWidth, std::int32_t roomHeight);
  // The outlines of the axis labels and titles the last frame drew, in window pixels
  // (origin at the control's lower-left corner).
  const std::vector<TextQuad>& AxisTextOutlines() const noexcept { return axisText_; }
  // The tick labels the last frame drew: the axis (0 X, 1 Y, 2 Z) and the tick's value.
  struct AxisLabel {
    int axis;
    double value;
  };
  const std::vector<AxisLabel>& AxisLabels() const noexcept { return axisLabels_; }
  // The ticks drawn along an axis: its tick count, or -1 (none) when that is negative
  // or above kMostTicks, where ticks, grid lines and labels would only blacken the cube.
  static std::int32_t DrawnTicks(const Axis& axis);
  // The X (0), Y (1) or Z (2) axis.
  static Axis& AxisOf(Axes& axes, int a);
  static constexpr std::int32_t kMostTicks = 1000;
  // The font maps in use (made on first use in the current context).
  CFontMapManager& Fonts() noexcept { return fonts_; }
  // The contour labels' places and what the last label pass drew.
  CLabelsManager& Labels() noexcept { return labels_; }

  // The cube planes the faces are drawn in: for the XY, XZ and YZ pairs, the Z, Y and X
  // coordinate (0 or 1) of the face behind the data as the frame is seen. In 2-D only
  // the XY face, at Z 0.
  static std::array<double, 3> FacePlanes(const FrameState& frame);
  // The cube edges the axes are drawn along, each as the two fixed coordinates of its
  // line: X along (y, z), Y along (x, z), Z along (x, y). X and Y lie on the floor face's
  // edges nearest the viewer; Z on the vertical edge furthest to the left on screen.
  // matrices are those of the cube (before the views).
  static std::array<std::array<double, 2>, 3> AxisEdges(const FrameState& frame, const CapturedMatrices& matrices);

 private:
  void DrawFace(Face& face, int normalAxis, double plane);
  // The font maps, emptied first when the fonts or the context changed since they were
  // made.
  CFontMap& FontOf(const Font& font);
  // The widest label the legend may show, for its room.
  double LegendLabelWidth();

  AnnotatedObjects o_;
  CFontMapManager fonts_;
  bool fontsStale_ = false;
  std::vector<TextQuad> axisText_;
  std::vector<AxisLabel> axisLabels_;
  CLabelsManager labels_;
  CPixelVisibilityStencil stencilTest_;
  CPixelVisibilityRGB colourTest_;
};

}  // namespace detail
}  // namespace orvane
