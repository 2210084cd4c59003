#pragma once

// The control's own frame passes: the plot cube's faces, the axes, the caption, the
// legend, the contour labels and the cursor, drawn from the control's objects at their
// places in the frame. Internal header.

#include <array>
#include <cstdint>

#include "frame.h"

namespace orvane {

class Axes;
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

class PlotAnnotations : public FramePasses {
 public:
  explicit PlotAnnotations(const AnnotatedObjects& objects) : o_(objects) {}

  void DrawFaces(const FrameState& frame) override;
  void DrawAxes(const FrameState& frame) override;
  void DrawCursor(const FrameState& frame) override;

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

  AnnotatedObjects o_;
};

}  // namespace detail
}  // namespace orvane
