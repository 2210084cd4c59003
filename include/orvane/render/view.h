#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "orvane/core/color.h"
#include "orvane/core/event.h"
#include "orvane/render/line.h"
#include "orvane/render/marker.h"

namespace orvane {

class PropertyBag;

namespace detail {
struct ViewAccess;
}  // namespace detail

/// What is drawn for one data set in one place of the plot (ViewMain inside the cube,
/// ViewTop and ViewBottom on its top and bottom faces) and how: filled surface, contour
/// lines, mesh, data markers, data and user hulls, contour labels. Obtained from
/// DataSet::ViewMain, ViewTop and ViewBottom. Failing lets raise orvane::Error with source
/// "Orvada.View" and keep the old value. Each change raises PropertyChanged with the name
/// it is stored under, which for the contour-label properties and UserHullClipping
/// differs from the property's own name.
class View {
 public:
  /// Visible; filled contours, contour lines and the data hull shown; default formats.
  View();
  View(const View&) = delete;
  View& operator=(const View&) = delete;

  /// "Returns or sets whether the View is visible." (True)
  bool Visible() const noexcept { return visible_; }
  /// Lets it; raises "Visible".
  void SetVisible(bool value);
  /// Contour lines all take ContourLinesMaster's format when True, each contour level's
  /// own line format when False. (True)
  bool UseMasterProperties() const noexcept { return useMasters_; }
  /// Lets it; raises "UseMasterProperties".
  void SetUseMasterProperties(bool value);
  /// "Returns or sets whether the View is shown with color-filled contours." (True)
  bool ContourFillVisible() const noexcept { return contourFillVisible_; }
  /// Lets it; raises "ContourFillVisible".
  void SetContourFillVisible(bool value);
  /// "Returns or sets whether contour lines are visible." (True)
  bool ContourLinesVisible() const noexcept { return contourLinesVisible_; }
  /// Lets it; raises "ContourLinesVisible".
  void SetContourLinesVisible(bool value);
  /// "Returns or sets a reference to a Line object which defines the formatting for all
  /// contour lines." Its changes raise "ContourLinesMaster." and the line's property name.
  orvane::Line& ContourLinesMaster() noexcept { return contourLinesMaster_; }
  /// The same, read-only.
  const orvane::Line& ContourLinesMaster() const noexcept { return contourLinesMaster_; }
  /// Copies another line's format into ContourLinesMaster (the view keeps its own line;
  /// later changes of the other line do not reach it). Each real change raises
  /// "ContourLinesMaster." and the name.
  void SetContourLinesMaster(const orvane::Line& line);
  /// "Returns or sets whether the mesh will be visible." (False)
  bool MeshVisible() const noexcept { return meshVisible_; }
  /// Lets it; raises "MeshVisible".
  void SetMeshVisible(bool value);
  /// "Returns a Line object which defines the formatting for the mesh used to join data
  /// points." Its changes raise "MeshLine." and the name.
  orvane::Line& MeshLine() noexcept { return meshLine_; }
  /// The same, read-only.
  const orvane::Line& MeshLine() const noexcept { return meshLine_; }
  /// "Returns or sets whether the data hull is visible." (True)
  bool DataHullVisible() const noexcept { return dataHullVisible_; }
  /// Lets it; raises "DataHullVisible".
  void SetDataHullVisible(bool value);
  /// "Returns a Line object which defines the formatting for the line representing the
  /// data hull." Its changes raise "DataHullLine." and the name.
  orvane::Line& DataHullLine() noexcept { return dataHullLine_; }
  /// The same, read-only.
  const orvane::Line& DataHullLine() const noexcept { return dataHullLine_; }
  /// "Returns or sets whether the user hull is visible." (False)
  bool UserHullVisible() const noexcept { return userHullVisible_; }
  /// Lets it; raises "UserHullVisible".
  void SetUserHullVisible(bool value);
  /// "Returns a Line object which defines the formatting for the line representing the
  /// user defined hull." Its changes raise "UserHullLine." and the name.
  orvane::Line& UserHullLine() noexcept { return userHullLine_; }
  /// The same, read-only.
  const orvane::Line& UserHullLine() const noexcept { return userHullLine_; }
  /// "Returns or sets whether data shown on the View should be clipped to the user hull."
  /// (False)
  bool UserHullClipping() const noexcept { return userHullClipping_; }
  /// Lets it; raises "ClipToUserHull".
  void SetUserHullClipping(bool value);
  /// "Returns or sets a reference to a Marker object which defines the formatting for all
  /// data markers." Its changes raise "DataMarkerMaster." (no s) and the name.
  orvane::Marker& DataMarkersMaster() noexcept { return dataMarkersMaster_; }
  /// The same, read-only.
  const orvane::Marker& DataMarkersMaster() const noexcept { return dataMarkersMaster_; }
  /// Copies another marker's format into DataMarkersMaster (the view keeps its own
  /// marker). Each real change raises "DataMarkerMaster." and the name.
  void SetDataMarkersMaster(const orvane::Marker& marker);
  /// "Returns or sets whether transparency effects will be applied to the view." (False)
  bool TransparencyOn() const noexcept { return transparencyOn_; }
  /// Lets it; raises "TransparencyOn".
  void SetTransparencyOn(bool value);
  /// "Returns or sets the transparency level." (0.5) Used as the fill's alpha fraction:
  /// 1 is opaque, 0 invisible.
  double Transparency() const noexcept { return transparency_; }
  /// Lets it (0 to 1; outside, or NaN, error 5); raises "Transparency".
  void SetTransparency(double value);
  /// Whether a 3-D surface stands on a solid block: walls from the data's boundary down
  /// to the cube's floor (False: the surface alone).
  bool BaseVisible() const noexcept { return baseVisible_; }
  /// Lets it; raises "BaseVisible".
  void SetBaseVisible(bool value);
  /// The block's colour (a neutral grey, #A0A0A0).
  Color BaseColor() const noexcept { return baseColor_; }
  /// Lets it; raises "BaseColor".
  void SetBaseColor(Color value);
  /// "Returns or sets whether contour labels are visible." (False)
  bool ContourLabelsVisible() const noexcept { return contourLabelsVisible_; }
  /// Lets it; raises "ContourLabelsVisible".
  void SetContourLabelsVisible(bool value);
  /// "Returns or sets a value that determines whether the contour labels should be
  /// rotated when plotted" (True)
  bool ContourLabelsRotation() const noexcept { return contourLabelsRotation_; }
  /// Lets it; raises "ContourLabelRotation".
  void SetContourLabelsRotation(bool value);
  /// "Returns or sets whether contour labels are plotted with a border." (True)
  bool ContourLabelsEdgeVisible() const noexcept { return contourLabelsEdgeVisible_; }
  /// Lets it; raises "ContourLabelEdgeVisible".
  void SetContourLabelsEdgeVisible(bool value);
  /// The format of the contour labels' border. Its changes raise "ContourLabelsEdgeLine."
  /// and the name.
  orvane::Line& ContourLabelsEdgeLine() noexcept { return contourLabelsEdgeLine_; }
  /// The same, read-only.
  const orvane::Line& ContourLabelsEdgeLine() const noexcept { return contourLabelsEdgeLine_; }
  /// "Returns or sets whether contour labels are filled with color." (True)
  bool ContourLabelsFillVisible() const noexcept { return contourLabelsFillVisible_; }
  /// Lets it; raises "ContourLabelFillVisible".
  void SetContourLabelsFillVisible(bool value);
  /// "Returns or sets the color of contour labels." (0x00FFFF, yellow)
  Color ContourLabelsFillColor() const noexcept { return contourLabelsFillColor_; }
  /// Lets it; raises "ContourLabelColor".
  void SetContourLabelsFillColor(Color value);
  /// "Returns or sets the drawing density of contour labels which affects the spacing of
  /// labels along a contour line." (4)
  std::int32_t ContourLabelsDensity() const noexcept { return contourLabelsDensity_; }
  /// Lets it (0 or more; otherwise error 5); raises "ContourLabelDensity".
  void SetContourLabelsDensity(std::int32_t value);
  /// "Returns or sets a value that determines the number of contour levels to leave
  /// unlabelled." (0)
  std::int32_t ContourLabelsLevelSkipping() const noexcept { return contourLabelsLevelSkipping_; }
  /// Lets it (0 or more; otherwise error 5); raises "ContourLabelLevelSkipping".
  void SetContourLabelsLevelSkipping(std::int32_t value);

  /// Writes every property under prefix (such as "Datasets.DataSet1.ViewMain."), each
  /// under the name it raises, the lines and the marker under their own prefixes.
  void WriteProperties(PropertyBag& bag, const std::string& prefix) const;
  /// Reads them with the defaults above; a bad value raises and changes nothing.
  void ReadProperties(const PropertyBag& bag, const std::string& prefix);

  /// Raised with the stored name of the property after a change.
  Event<const std::string&> PropertyChanged;

 private:
  friend struct detail::ViewAccess;
  struct Properties;

  bool visible_ = true;
  bool useMasters_ = true;
  bool contourFillVisible_ = true;
  bool contourLinesVisible_ = true;
  bool meshVisible_ = false;
  bool dataHullVisible_ = true;
  bool userHullVisible_ = false;
  bool userHullClipping_ = false;
  bool transparencyOn_ = false;
  double transparency_ = 0.5;
  bool baseVisible_ = false;
  Color baseColor_ = 0xA0A0A0;
  bool contourLabelsVisible_ = false;
  bool contourLabelsRotation_ = true;
  bool contourLabelsEdgeVisible_ = true;
  bool contourLabelsFillVisible_ = true;
  Color contourLabelsFillColor_ = 0x00FFFF;
  std::int32_t contourLabelsDensity_ = 4;
  std::int32_t contourLabelsLevelSkipping_ = 0;
  orvane::Line contourLinesMaster_;
  orvane::Line meshLine_;
  orvane::Line dataHullLine_;
  orvane::Line userHullLine_;
  orvane::Line contourLabelsEdgeLine_;
  orvane::Marker dataMarkersMaster_;
  // Where the view is drawn: 0 main, 1 top, 2 bottom; set when its data set joins a
  // collection.
  std::int32_t plotPosition_ = 0;
  std::vector<Connection> connections_;
};

}  // namespace orvane
