#pragma once

// Contour labels: where they go along a data set's contour lines, whether their anchor
// can be seen, and drawing those that can without letting two overlap. Internal header.
//
// Places. A label is two points of its contour line in the data set's normalised
// coordinates: the anchor, where the label's centre goes, and a point a little further
// along the line, which gives the label's direction once both are on the screen. The
// places are worked out once for each data set, view kind and level, and again only
// when the data set's contour lines are traced anew or the view's density or level
// skipping changes (see PlaceLabels for the rule).
//
// Visibility. A label is drawn only when its anchor passes the depth test against what
// the frame has drawn so far: a line hidden behind a surface keeps its labels hidden.
// The test draws the anchor as a single point and looks at what it left, in the stencil
// buffer (CPixelVisibilityStencil) or in the colour buffer (CPixelVisibilityRGB), and
// leaves both buffers as it found them.
//
// Drawing. Labels are centred on their anchor, turned along the line's direction on the
// screen when rotation is on (never upside down), and drawn in front of everything at
// the near plane: the anchor's test decides whether a label shows at all, and a label
// that shows is read whole. A label whose outline overlaps one already drawn in the
// same pass is dropped: the first one kept wins.

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <unordered_map>
#include <vector>

#include "contour/line_list.h"
#include "render/font_map.h"
#include "render/frame.h"
#include "render/text.h"

namespace orvane {

class Line;

namespace detail {

struct DataSetState;

// ---------------------------------------------------------------------------------------
// Rotation

// A 3x3 rotation matrix, rows first: m[0][1] is M12.
using Matrix3 = std::array<std::array<double, 3>, 3>;

// Degrees to radians with a short pi, 3.1415926 / 180: labels are turned with it.
inline constexpr double kDegreesToRadians = 0.017453292222222222;

// The rotation R = Rz(az) Ry(ay) Rx(ax) for angles in degrees (each converted with
// kDegreesToRadians).
Matrix3 RotationMatrix(double ax, double ay, double az) noexcept;
// m times the column (x, y, z).
std::array<double, 3> Rotate(const Matrix3& m, double x, double y, double z) noexcept;

// The outline of a label centred on (x, y): the rectangle with corners at (+-halfWidth,
// +-halfHeight) turned counter-clockwise by angle degrees about its centre, as
// bottom-left, bottom-right, top-right, top-left in the label's own direction.
TextQuad LabelOutline(double x, double y, double halfWidth, double halfHeight, double angle) noexcept;

// The on-screen angle of a label whose line runs from (x1, y1) towards (x2, y2), in
// degrees within (-90, 90], so that the text never reads upside down. 0 when the two
// points coincide.
double LabelAngle(double x1, double y1, double x2, double y2) noexcept;

// ---------------------------------------------------------------------------------------
// Places

// One label: two points of its contour line (normalised coordinates of the data set).
struct CLabel {
  std::array<double, 3> anchor{};  // the label's centre
  std::array<double, 3> ahead{};   // further along the line: the direction
};

// The labels of each level (index as the data set's contourLines).
using LevelLabels = std::vector<std::vector<CLabel>>;

// Where the labels of one view go along the chained contour lines of each level.
//
// Lengths are measured in the normalised XY plane, where the plot spans 1. A level is
// labelled when its index is a multiple of skipping + 1 (skipping n labels one level,
// leaves n, labels the next). Each polyline at least kMinLabelledLength long gets
// n = max(1, round(length x density)) labels (about density labels along a line that
// crosses the plot, at least one on any line long enough to hold its label), one in the
// middle of each of its n equal stretches, shifted within the stretch from level to level
// (between a quarter and three quarters of it) so that the labels of neighbouring levels
// do not line up. The second point lies kAheadLength further along the polyline, or at
// its end.
LevelLabels PlaceLabels(std::span<const CLineList> levels, std::int32_t density, std::int32_t skipping);

inline constexpr double kMinLabelledLength = 0.08;
inline constexpr double kAheadLength = 0.02;

// ---------------------------------------------------------------------------------------
// Visibility

// A point of the cube (coordinates drawn with the current model-view matrix).
using CubePoint3 = std::array<double, 3>;

// Whether points can be seen: each one is drawn as a single pixel with the depth test
// (GL_LEQUAL, no depth writes) against the depth buffer as it is, into the current
// viewport, whose matrices are given. A point exactly on a surface that was drawn counts
// as visible: it is pulled towards the viewer by kDepthPull (normalised device depth)
// first, more than the rounding of the surface's own depth and the small polygon offset
// the fill is drawn with. Points that cannot be projected or fall outside the viewport
// are not visible. Colour and stencil buffers are left exactly as they were (the stencil
// test expects a zero stencil round the points, as the frame clears it).
class IPixelVisibility {
 public:
  virtual ~IPixelVisibility() = default;
  // One result per point (1 visible, 0 not), the same as testing them one at a time.
  virtual std::vector<char> Test(const CapturedMatrices& matrices, std::span<const CubePoint3> points) = 0;
  bool Visible(const CapturedMatrices& matrices, const CubePoint3& point) {
    return Test(matrices, std::span<const CubePoint3>(&point, 1)).front() != 0;
  }
  // How many read-backs the testers made (they cost a wait for the drawing).
  std::int64_t ReadBacks() const noexcept { return readBacks_; }

  static constexpr double kDepthPull = 1e-3;
  // The block of pixels read round the point's pixel for the stencil test: (2r+1)^2.
  static constexpr int kBlockRadius = 1;

 protected:
  std::int64_t readBacks_ = 0;
};

// In the stencil buffer: the point sets the stencil to 1 where it passes the depth test
// (and to 0 where it fails); visible when some pixel of the block round it is not 0. The
// point is drawn again with every stencil operation GL_ZERO to clear what it set.
// Points whose blocks do not touch are tested together: drawn in one go, read back, and
// cleared in one go.
class CPixelVisibilityStencil : public IPixelVisibility {
 public:
  std::vector<char> Test(const CapturedMatrices& matrices, std::span<const CubePoint3> points) override;
};

// In the colour buffer: the pixel's colour is read, the point drawn in a probe colour
// (the pixel's own inverted, which always differs), and read again; visible when the
// probe arrived. The point is drawn again in the saved colour. Points on different pixels
// are tested together.
class CPixelVisibilityRGB : public IPixelVisibility {
 public:
  std::vector<char> Test(const CapturedMatrices& matrices, std::span<const CubePoint3> points) override;
};

// ---------------------------------------------------------------------------------------
// The labels of a pass

// How a label looks.
struct LabelStyle {
  CFontMap* font = nullptr;
  Color color = 0;
  bool rotate = true;          // turn along the line
  bool fill = true;            // the box behind the text
  Color fillColor = 0x00FFFF;
  const Line* border = nullptr;  // null: no border
};

class CLabelsManager {
 public:
  // The places of the labels of a data set's view kind, worked out again when the data
  // set's contour lines, the density or the level skipping changed since last time.
  const LevelLabels& Places(const DataSetState& state, int kind, std::int32_t density, std::int32_t skipping);
  // Forgets the places of data sets not among these.
  void KeepOnly(std::span<const DataSetState* const> states);

  // Starts a pass drawn through these matrices (the current viewport is theirs).
  void Begin(const CapturedMatrices& matrices);
  // Queues a label: its text, look and two points in cube coordinates.
  void Add(const std::string& text, const LabelStyle& style, const CubePoint3& anchor, const CubePoint3& ahead);
  // Tests the queued labels' anchors with tester and draws, in the order they were added,
  // those that are visible, inside the viewport and clear of every label drawn before in
  // this pass.
  void Finish(IPixelVisibility& tester);

  // What the last pass drew: each label's outline (viewport pixels), text and angle.
  struct Drawn {
    TextQuad outline;
    std::string text;
    double angle = 0.0;
    double x = 0.0, y = 0.0;  // the anchor, viewport pixels
  };
  const std::vector<Drawn>& LastDrawn() const noexcept { return drawn_; }
  // Counts of the last pass.
  struct Counts {
    std::int32_t queued = 0, hidden = 0, outside = 0, overlapping = 0, drawn = 0;
  };
  const Counts& LastCounts() const noexcept { return counts_; }
  // How many times places were worked out.
  std::int64_t PlacementRuns() const noexcept { return placements_; }

  // Pixels of air kept round a label's box when testing for overlap.
  static constexpr double kAir = 1.0;

 private:
  struct Queued {
    std::string text;
    LabelStyle style;
    CubePoint3 anchor, ahead;
  };
  struct KindPlaces {
    bool built = false;
    std::int32_t density = 0, skipping = 0;
    LevelLabels levels;
  };
  struct Entry {
    std::uint64_t generation = 0;
    std::array<KindPlaces, 3> kinds;
  };

  std::unordered_map<const DataSetState*, Entry> places_;
  CapturedMatrices matrices_;
  std::vector<Queued> queue_;
  std::vector<Drawn> drawn_;
  Counts counts_;
  std::int64_t placements_ = 0;
};

}  // namespace detail
}  // namespace orvane
