#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "orvane/axes/axes.h"
#include "orvane/contour/contouring.h"
#include "orvane/core/color.h"
#include "orvane/core/event.h"
#include "orvane/data/data_sets.h"
#include "orvane/host/host.h"
#include "orvane/render/caption.h"
#include "orvane/render/cursor.h"
#include "orvane/render/device_context.h"
#include "orvane/render/faces.h"
#include "orvane/render/legend.h"

namespace orvane {

class PropertyBag;

namespace detail {
class RenderTarget;
struct SurfaceState;
struct SurfaceAccess;
}  // namespace detail

/// 3-D or 2-D plot.
enum EPlotType : std::int32_t {
  orvPlotType3D = 0,  ///< a lit surface in the plot cube, turned by the trackball
  orvPlotType2D = 1,  ///< a flat contour map seen from above
};

/// What the State property holds.
enum EStateType : std::int32_t {
  orvStateTypeFormatting = 0,         ///< the formatting only
  orvStateTypeFormattingAndData = 1,  ///< the formatting and the data
};

/// "Represents the top level object in this control." The control: it owns every other
/// object (DataSets, Axes, Faces, Contouring, Legend, the Header caption, Cursor), keeps
/// track of what their changes make stale, and on Refresh recalculates that and draws one
/// frame off screen, which the host's paint then copies to the window.
///
/// Every let that changes a value tells the host the key it is stored under
/// (Host::PropertyChanged), and with AutoRefresh True, in user mode and outside
/// InitProperties, refreshes once. Refused values raise orvane::Error with source
/// "Orvada.Surface" and keep the old value. One Surface lives on one thread.
class Surface {
 public:
  /// Builds the object tree with everything marked stale. The host must outlive the
  /// control. A new control then takes its defaults with InitProperties.
  explicit Surface(Host& host);
  /// Terminates the control.
  ~Surface();
  Surface(const Surface&) = delete;
  Surface& operator=(const Surface&) = delete;

  // --- Lifecycle ------------------------------------------------------------------------

  /// A new control takes its defaults: its own properties, then Axes, Contouring,
  /// DataSets (one empty data set), Faces, Legend and the Header take theirs in that
  /// order, and the trackball its ball radius 1.5 and rotation 60, 0, 30. Nothing
  /// refreshes meanwhile.
  void InitProperties();
  /// Drops the fonts and everything drawn in OpenGL and stops listening to the objects:
  /// the control draws nothing more. Safe to call twice; the destructor calls it.
  void Terminate() noexcept;

  // --- Persistence ----------------------------------------------------------------------

  /// Writes the control's own keys ("Appearance" ... "Zoom"), then Axes ("Axes."),
  /// Contouring ("Contouring."), the data sets' count and formatting ("Datasets.Count",
  /// "Datasets.DataSet1." ...), Faces ("Faces."), Legend ("Legend"), the Header
  /// ("Header") and the Cursor ("Cursor.").
  void WriteProperties(PropertyBag& bag) const;
  /// Reads what WriteProperties wrote, each absent key taking its default, without
  /// refreshing meanwhile. A value that cannot be used raises its error and leaves the
  /// control as it was.
  void ReadProperties(const PropertyBag& bag);
  /// The State: a bag's contents with the formatting (orvStateTypeFormatting), or the
  /// formatting and every data set's data under "Datasets.DataSet1." ...
  /// (orvStateTypeFormattingAndData); any other type gives an empty bag's contents.
  std::vector<std::uint8_t> State(std::int32_t type = orvStateTypeFormatting) const;
  /// Restores a State and refreshes, whatever AutoRefresh says: the properties whatever
  /// the type, the data only for orvStateTypeFormattingAndData. Bytes that are not a
  /// bag's contents, or a value that cannot be used, raise error 5 and leave the control
  /// as it was; so does a refresh that refuses what was read, raising its own error.
  void SetState(const std::vector<std::uint8_t>& bytes, std::int32_t type = orvStateTypeFormatting);

  // --- Objects --------------------------------------------------------------------------

  /// The data sets.
  orvane::DataSets& DataSets() noexcept;
  /// The three axes and their masters.
  orvane::Axes& Axes() noexcept;
  /// The plot cube's faces.
  orvane::Faces& Faces() noexcept;
  /// The contour levels and colours.
  orvane::Contouring& Contouring() noexcept;
  /// The colour key beside the plot.
  orvane::Legend& Legend() noexcept;
  /// The caption across the top.
  Caption& Header() noexcept;
  /// The crosshair.
  orvane::Cursor& Cursor() noexcept;

  // --- Properties -----------------------------------------------------------------------

  /// The window's border look, as last let (orvFlat when new).
  EAppearance Appearance() const noexcept;
  /// Does nothing when value is the window's current look; otherwise 0 or 1 (else error
  /// 5), applied to the window by the next Refresh while BorderStyle is orvFixedSingle.
  /// Key "Appearance".
  void SetAppearance(std::int32_t value);
  /// "Returns or sets whether the control will automatically refresh itself after any
  /// property change." False when new.
  bool AutoRefresh() const noexcept;
  /// Lets it; True refreshes at once. Key "AutoRefresh".
  void SetAutoRefresh(bool value);
  /// The plot's background (white when new).
  Color BackColor() const noexcept;
  /// Lets it. Key "BackColor".
  void SetBackColor(Color value);
  /// The window's border, as last let (orvNone when new).
  EBorderStyle BorderStyle() const noexcept;
  /// Does nothing when value is the window's current border; otherwise 0 or 1 (else
  /// error 5), applied to the window by the next Refresh. Key "BorderStyle".
  void SetBorderStyle(std::int32_t value);
  /// Whether the window takes input (the host's state).
  bool Enabled() const;
  /// Enables or disables the window; refreshes nothing. Key "Enabled".
  void SetEnabled(bool value);
  /// The colour of all text (black when new).
  Color ForeColor() const noexcept;
  /// Lets it. Key "ForeColor".
  void SetForeColor(Color value);
  /// Ambient light, 0 to 1 (0.5 when new).
  double LightingIntensityAmbient() const noexcept;
  /// Lets it, below 0 stored as 0 and above 1 as 1; NaN raises error 5. Key
  /// "LightingIntensityAmbient".
  void SetLightingIntensityAmbient(double value);
  /// Spotlight intensity, 0 to 1 (1 when new).
  double LightingIntensitySpotlight() const noexcept;
  /// Lets it, clamped as the ambient light. Deliberately notified under the key
  /// "LightingMaterialShininess".
  void SetLightingIntensitySpotlight(double value);
  /// Shininess of the surface, 0 to 1 (0.5 when new).
  double LightingMaterialShininess() const noexcept;
  /// Lets it, clamped as the ambient light. Key "LightingMaterialShininess".
  void SetLightingMaterialShininess(double value);
  /// Whether the main views are lit (False when new).
  bool LightingOn() const noexcept;
  /// Lets it and marks the plots stale; deliberately refreshes nothing even with
  /// AutoRefresh True. Key "LightingOn".
  void SetLightingOn(bool value);
  /// The plot's horizontal offset from the centre, in eye units (0 when new).
  double OffsetHorizontal() const noexcept;
  /// Lets it (finite, else error 5). Key "HorizontalOffset".
  void SetOffsetHorizontal(double value);
  /// The plot's vertical offset from the centre (0 when new).
  double OffsetVertical() const noexcept;
  /// Lets it (finite, else error 5). Key "VerticalOffset".
  void SetOffsetVertical(double value);
  /// 3-D or 2-D (orvPlotType3D when new).
  EPlotType PlotType() const noexcept;
  /// Lets it: 0 or 1, else error 5. Key "ViewType".
  void SetPlotType(std::int32_t value);
  /// "Returns or sets the rotation in degrees about the Y axis." (kept as is): the
  /// trackball's X angle, 0 to 360 (60 after InitProperties).
  std::int32_t RotationX() const;
  /// Lets it: the value goes into 0..360 by whole turns (720 gives 360, -30 gives 330)
  /// and is rounded to whole degrees, half to even; then the trackball takes it even when
  /// it is unchanged (it may have been dragged since). Non-finite values raise error 5.
  /// Key "XRotation".
  void SetRotationX(double degrees);
  /// "Returns or sets the rotation in degrees about the Y axis." (0 after InitProperties)
  std::int32_t RotationY() const;
  /// As SetRotationX. Key "YRotation".
  void SetRotationY(double degrees);
  /// "Returns or sets the rotation in degrees about the Z axis." (30 after InitProperties)
  std::int32_t RotationZ() const;
  /// As SetRotationX. Key "ZRotation".
  void SetRotationZ(double degrees);
  /// Samples per pixel the control draws with, 1 to 16 (1 when new: no antialiasing);
  /// the driver may give fewer.
  std::int32_t Samples() const noexcept;
  /// Lets it (else error 5) and makes the drawing context again. Key "Samples".
  void SetSamples(std::int32_t value);
  /// Whether a 2-D map is centred in the plot area and shrunk to it, as a 3-D plot is
  /// (False when new: the map is centred on the whole control).
  bool FitPlotArea() const noexcept;
  /// Lets it. Key "FitPlotArea".
  void SetFitPlotArea(bool value);
  /// Whether a data set of more than 4 triangles per plot pixel has its fill and mesh
  /// drawn from a decimated mesh (contour lines and labels still from the whole data;
  /// True when new).
  bool LevelOfDetail() const noexcept;
  /// Lets it. Key "LevelOfDetail", stored only when False.
  void SetLevelOfDetail(bool value);
  /// "Returns or sets the zoom level of the control." (1 when new)
  double Zoom() const noexcept;
  /// Lets it: a value not above 0 raises error 5, an infinite one too. Key "Zoom".
  void SetZoom(double value);

  // --- Methods --------------------------------------------------------------------------

  /// Converts a point in the plot cube's internal coordinates (0 to 1 along each axis, as
  /// the cursor finds them under the pointer) to the axes' scaled coordinates: Min +
  /// internal x (Max - Min) of the X and of the Y axis. False, with scaledX and scaledY
  /// untouched, when either input or result is not finite.
  bool ConvertInternalToScaledCoordinates(double internalX, double internalY, double& scaledX, double& scaledY);
  /// "Causes a manual recalculation and refresh of the control." Shows the wait pointer,
  /// applies a pending border and look to the window, rebuilds the fonts if needed,
  /// recalculates what is stale (meshes, axis ranges, levels, contours), draws the frame
  /// off screen and asks the host to repaint. Recalculation errors are raised (such as
  /// -2147221303 "X Axis minimum is greater than maximum", or 18 when the host stopped a
  /// resampling run) and leave the last picture as it was; the pointer comes back on
  /// every way out.
  void Refresh();
  /// "Resets the control to its original default settings, clearing any data."
  /// InitProperties, then the data is marked stale, then Refresh.
  void Reset();
  /// "Copies a bitmap of the control to the Windows Clipboard." Hands the host the last
  /// picture drawn (nothing is drawn first) as the bitmap header followed by its pixels.
  /// Never raises: false when there is no picture or the host refuses it.
  bool CopyToClipboard() noexcept;
  /// "Draws a bitmap of the control onto the supplied device context at the supplied
  /// coordinates." The plot is drawn at width x height pixels in a drawing context of its
  /// own and copied to dc with its top-left corner at (left, top); then the control draws
  /// itself again at its own size (Refresh). A side that is negative or above 16384
  /// raises error 5 before anything changes.
  void DrawToDC(DeviceContext& dc, std::int32_t left, std::int32_t top, std::int32_t width, std::int32_t height);
  /// "Display a sample dataset." Resets the control and shows a 30 x 30 grid of
  /// Z = 0.3 sin(X Y) over 0..4 x 0..4 inside a concave user hull, with colours
  /// interpolated, under the caption "Z = 0.3 * sin(X + Y)".
  void ShowSampleData();
  /// Asks the host to open the property pages with the given settings.
  void ShowPropertyPages(const std::vector<std::string>& settings);

  // --- What the host calls --------------------------------------------------------------

  /// The host's paint request: copies the picture to dc at (0, 0), first drawing it when
  /// something made it out of date. Nothing raised inside reaches the host.
  void OnPaint(DeviceContext& dc) noexcept;
  /// The window's new size in pixels: the drawing context is made again at that size and
  /// the next paint draws. A negative side or one above 16384 raises error 5.
  void OnResize(std::int32_t width, std::int32_t height);
  /// A button went down at (x, y) in window pixels (Y down): remembered for a drag, then
  /// MouseDown is raised. Buttons: 1 left, 2 right, 4 middle; shift: 1 Shift, 2 Ctrl,
  /// 4 Alt.
  void OnMouseDown(std::int16_t button, std::int16_t shift, float x, float y);
  /// The pointer moved: a tracking cursor moves to the data point under it; with the
  /// left button held the plot turns on the trackball and is drawn at once (even with
  /// AutoRefresh False); then MouseMove is raised.
  void OnMouseMove(std::int16_t button, std::int16_t shift, float x, float y);
  /// A button came up: a drag ends; MouseUp is raised.
  void OnMouseUp(std::int16_t button, std::int16_t shift, float x, float y);
  /// A double click: DblClick is raised.
  void OnDblClick();
  /// A key went down (Windows key codes: 83 S, 107 numeric-pad plus, 38 Up, 36 Home,
  /// ...): lighting, zoom, rotation and the preset views; other keys do nothing. True when
  /// the key was one of the control's.
  bool OnKeyDown(std::int16_t keyCode, std::int16_t shift);

  // --- Events ---------------------------------------------------------------------------

  /// The host window reported a button press (button, shift, x, y in pixels).
  Event<std::int16_t, std::int16_t, float, float> MouseDown;
  /// The pointer moved over the control (button, shift, x, y in pixels).
  Event<std::int16_t, std::int16_t, float, float> MouseMove;
  /// A button came up (button, shift, x, y in pixels).
  Event<std::int16_t, std::int16_t, float, float> MouseUp;
  /// "Occurs when the user presses and releases a mouse button and then presses and
  /// releases it again over an object."
  Event<> DblClick;

 private:
  friend struct detail::SurfaceAccess;

  void RequestAutoRefresh();
  // RequestAutoRefresh, then the host hears of key (even when the refresh fails).
  void RefreshThenNotify(const std::string& key);
  void InvalidatePlots() noexcept;
  void InvalidateFonts();
  void InvalidateData();
  void Recalculate();
  // The control's own target, made at its size on first need.
  void EnsureTarget();
  // Makes the target again at its size and sample count, when it was made.
  void RemakeTarget();
  // Writes the formatting and, with data, every data set's data: what State gives.
  void WriteState(PropertyBag& bag, bool withData) const;
  // ReadProperties without the trial on a scratch control; with data, the data sets' data
  // too.
  void ReadPropertiesInPlace(const PropertyBag& bag, bool withData);
  // Reads the bag into a scratch control first: raises what reading would raise here,
  // before anything here changes.
  static void TryReading(const PropertyBag& bag, bool withData);
  // Moves the cursor to the data point under window pixel (x, y), through the depth the
  // last frame left there; false when there is no data under it.
  bool TrackCursor(float x, float y);
  // Draws into target when the picture is out of date and copies it to dc (when given)
  // at (left, top). Nothing raised inside gets out.
  void PaintStep(detail::RenderTarget& target, DeviceContext* dc, std::int32_t left, std::int32_t top) noexcept;
  void ConnectChildren();
  void SetRotation(int axis, double degrees, const char* name, const char* key);
  template <class T>
  void Let(T& field, T value, const char* key);

  Host& host_;
  std::unique_ptr<detail::SurfaceState> state_;
};

}  // namespace orvane
