#pragma once

#include <cstdint>
#include <string>

#include "orvane/core/color.h"
#include "orvane/core/event.h"
#include "orvane/render/line.h"

namespace orvane {

class PropertyBag;

/// The shape drawn at each data point. The gap between 1 and 10 separates the solid
/// shapes from the flat ones.
enum EDataMarkerShape : std::int32_t {
  orvMarkerShape3DCube = 0,       ///< a cube
  orvMarkerShape3DPyramid = 1,    ///< a pyramid
  orvMarkerShape2DSquare = 10,    ///< a flat square
  orvMarkerShape2DTriangle = 11,  ///< a flat triangle
  orvMarkerShape2DCircle = 12,    ///< a flat circle
  orvMarkerShape2DPlus = 13,      ///< a plus sign
  orvMarkerShape2DCross = 14,     ///< a diagonal cross
};

/// The format of the markers drawn at the data points: shape, size, fill and edge.
/// Failing lets raise orvane::Error with source "Orvada.Marker" and keep the old value.
class Marker {
 public:
  /// Hidden yellow-filled cubes of size 3 with a default edge line.
  Marker();
  Marker(const Marker&) = delete;
  Marker& operator=(const Marker&) = delete;

  /// "Returns or sets whether the markers is visible." (False)
  bool Visible() const noexcept { return visible_; }
  /// Lets it; raises "Visible".
  void SetVisible(bool value);
  /// "Returns or sets a value that determines the shape used for the marker." (cube)
  EDataMarkerShape Shape() const noexcept { return shape_; }
  /// Lets it; a value that is not an EDataMarkerShape constant raises error 5. Raises "Shape".
  void SetShape(std::int32_t value);
  /// "Returns or sets the size of the marker." (3)
  double Size() const noexcept { return size_; }
  /// Lets it; NaN, an infinity or a negative size raises error 5 ("Size must be a finite
  /// number of 0 or more."). Raises "Size".
  void SetSize(double value);
  /// "Returns or sets whether the marker will be drawn filled." (True)
  bool FillVisible() const noexcept { return fillVisible_; }
  /// Lets it; raises "FillVisible".
  void SetFillVisible(bool value);
  /// "Returns or sets the color the marker will be filled with." (0x00FFFF, yellow)
  Color FillColor() const noexcept { return fillColor_; }
  /// Lets it; raises "FillColor".
  void SetFillColor(Color value);
  /// "Returns or sets whether the marker will be drawn with a border." (True)
  bool EdgeVisible() const noexcept { return edgeVisible_; }
  /// Lets it; raises "EdgeVisible".
  void SetEdgeVisible(bool value);
  /// "Returns a Line object which defines the formatting for the lines drawn along the
  /// edges of a Marker." Its changes raise "EdgeLine." and the line's property name.
  orvane::Line& EdgeLine() noexcept { return edgeLine_; }
  /// The same, read-only.
  const orvane::Line& EdgeLine() const noexcept { return edgeLine_; }

  /// Takes every property of another marker (its edge line too) through the lets, so
  /// each real change raises its event.
  void CopyFrom(const Marker& other);

  /// Writes "FillColor", "EdgeVisible", "FillVisible", "Shape", "Size", "Visible" and the
  /// edge line under "EdgeLine.", all under prefix.
  void WriteProperties(PropertyBag& bag, const std::string& prefix) const;
  /// Reads them with the defaults above; a bad value raises and changes nothing.
  void ReadProperties(const PropertyBag& bag, const std::string& prefix);

  /// Raised with the property's name after a change.
  Event<const std::string&> PropertyChanged;

 private:
  struct Properties;

  bool visible_ = false;
  EDataMarkerShape shape_ = orvMarkerShape3DCube;
  double size_ = 3.0;
  bool fillVisible_ = true;
  Color fillColor_ = 0x00FFFF;
  bool edgeVisible_ = true;
  orvane::Line edgeLine_;
  Connection edgeLineChanged_;
};

}  // namespace orvane
