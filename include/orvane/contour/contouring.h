#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "orvane/contour/color_map.h"
#include "orvane/core/color.h"
#include "orvane/core/event.h"
#include "orvane/render/line.h"

namespace orvane {

class PropertyBag;

/// How the contour levels are rebuilt when the Z range of the data changes.
enum EAutoSetContoursType : std::int32_t {
  orvAutoSetOff = 0,              ///< the levels stay as the host set them
  orvAutoSetByInterval = 1,       ///< levels from ZMin in steps of AutoSetInterval
  orvAutoSetByIntervalCount = 2,  ///< AutoSetIntervalCount equal intervals from ZMin
};

/// One contour level: a Z value with its colours and line format.
class Contour {
 public:
  /// A level at value with the given colours, a solid line of width 1.
  explicit Contour(double value = 0.0, Color color = 0, Color colorBelow = 0)
      : value_(value), color_(color), colorBelow_(colorBelow) {}
  Contour(const Contour&) = delete;
  Contour& operator=(const Contour&) = delete;

  /// "Returns or sets the nominal Z value that this contour relates to." (fixed when added)
  double Value() const noexcept { return value_; }
  /// "Returns or sets the color value associated with this contour level value."
  orvane::Color Color() const noexcept { return color_; }
  /// Lets it; raises "Color".
  void SetColor(orvane::Color value);
  /// "Returns or sets the color value associated with this contour level value when it is
  /// approached from below."
  orvane::Color ColorBelow() const noexcept { return colorBelow_; }
  /// Lets it; raises "ColorBelow".
  void SetColorBelow(orvane::Color value);
  /// "Returns or sets a value that determines the line drawing style."
  std::int32_t LineDrawStyle() const noexcept { return lineDrawStyle_; }
  /// Lets it and raises "LineDrawStyle"; a value outside 0..4 is stored and then raises
  /// error 5 (source "Orvada.Contour").
  void SetLineDrawStyle(std::int32_t value);
  /// "Returns or sets the line width for this contour."
  std::int32_t LineWidth() const noexcept { return lineWidth_; }
  /// Lets it; raises "LineWidth".
  void SetLineWidth(std::int32_t value);

  /// Writes "Color", "ColorBelow", "LineDrawStyle", "LineWidth" and "Value" under prefix.
  void WriteProperties(PropertyBag& bag, const std::string& prefix) const;

  /// Raised with the property's name after a change.
  Event<const std::string&> PropertyChanged;

 private:
  friend class Contours;
  double value_;
  orvane::Color color_;
  orvane::Color colorBelow_;
  std::int32_t lineDrawStyle_ = orvDrawStyleSolid;
  std::int32_t lineWidth_ = 1;
};

/// The contour levels, in ascending Value order (equal values allowed). Levels are
/// shared objects: one moved by an insertion is replaced by a fresh copy.
class Contours {
 public:
  /// No levels.
  Contours() = default;
  Contours(const Contours&) = delete;
  Contours& operator=(const Contours&) = delete;
  /// Takes the other collection's levels; this collection's owner keeps hearing of
  /// their changes.
  Contours& operator=(Contours&& other) noexcept;

  /// "Add a Contour item to the collection." Inserted after any levels of equal value;
  /// a negative colour (the default) leaves that colour 0. Always returns 0.
  std::int32_t Add(double value, std::int64_t color = -1, std::int64_t colorBelow = -1);
  /// Adds the values as levels with no colours, with exactly the result of calling Add
  /// for each in turn (order, ties, and which levels come back as fresh copies), but in
  /// O((Count + n) log n) rather than O(Count * n).
  void AddLevels(std::span<const double> values);
  /// "Returns a count of the number of collection members."
  std::int32_t Count() const noexcept { return static_cast<std::int32_t>(items_.size()); }
  /// "Returns the member of the collection identified by the Index parameter." Error 9
  /// outside 0..Count-1.
  std::shared_ptr<Contour> Item(std::int32_t index) const;
  /// Removes the level at index, moving the following ones down; error 9 outside.
  void Remove(std::int32_t index);
  /// "Remove all items from the collection."
  void RemoveAll() noexcept {
    items_.clear();
    relays_.clear();
    ordered_ = true;
  }

  /// Writes "Count" and each level under prefix + "Contour" + index + ".".
  void WriteProperties(PropertyBag& bag, const std::string& prefix) const;
  /// Reads them in stored order; a bad bag changes nothing.
  void ReadProperties(const PropertyBag& bag, const std::string& prefix);

 private:
  friend class Contouring;
  // Index at which Add puts value: the first level above it, else Count.
  std::size_t InsertionIndex(double value) const;
  // Hands the changes of the levels from index from on to relay_, each with its index.
  void Reconnect(std::size_t from = 0);

  std::vector<std::shared_ptr<Contour>> items_;
  // Set by the owning Contouring: called with a level's index and property name.
  std::function<void(std::size_t, const std::string&)> relay_;
  std::vector<Connection> relays_;  // one per level while relay_ is set
  // The values ascend (ties allowed) and none is NaN, so the insertion index can be found
  // by bisection. Only a NaN level or levels read unsorted from a bag clear it.
  bool ordered_ = true;
};

/// The contour levels of the control, their automatic rebuilding, their colouring from a
/// colour map, and FindColor, which turns a Z value into a colour. A change the host makes
/// to a level raises PropertyChanged under the key the level is stored under, such as
/// "Contours.Contour3.Color"; the recolouring done by ApplyColorMap and AutoSetContours
/// raises nothing.
class Contouring {
 public:
  /// Levels by interval count (10), rainbow colours, no levels yet.
  Contouring();
  Contouring(const Contouring&) = delete;
  Contouring& operator=(const Contouring&) = delete;

  /// "Returns or sets the method used to automatically build a set of contour levels when
  /// the dataset Z limits change."
  std::int32_t AutoSetContoursType() const noexcept { return autoSetContoursType_; }
  /// Lets it (not checked: values other than 1 and 2 act as off); raises "AutoSetContoursType".
  void SetAutoSetContoursType(std::int32_t value);
  /// "Returns or sets the interval value used when AutoSetContoursType is orvAutoSetByInterval."
  double AutoSetInterval() const noexcept { return autoSetInterval_; }
  /// Lets it; raises "AutoSetInterval".
  void SetAutoSetInterval(double value);
  /// "Returns or sets the number of intervals used when AutoSetContoursType is
  /// orvAutoSetByIntervalCount."
  std::int32_t AutoSetIntervalCount() const noexcept { return autoSetIntervalCount_; }
  /// Lets it; raises "AutoSetIntervalCount".
  void SetAutoSetIntervalCount(std::int32_t value);
  /// "Returns or sets the type of color map that will be used when the contours are
  /// recalculated."
  std::int32_t ColorMapType() const noexcept { return colorMapType_; }
  /// Lets it; raises "ColorMap".
  void SetColorMapType(std::int32_t value);
  /// "Returns or sets whether colors will be smoothly interpolated or kept constant
  /// between contours."
  bool InterpolateColors() const noexcept { return interpolateColors_; }
  /// Lets it; raises "InterpolateColors".
  void SetInterpolateColors(bool value);
  /// Whether the fill shows at each pixel the colour of the band its own Z lies in, so
  /// that band edges follow the levels (False: one colour a triangle, from its mean Z).
  /// InterpolateColors, when True, takes precedence. Stored only by this library.
  bool ExactBands() const noexcept { return exactBands_; }
  /// Lets it; raises "ExactBands".
  void SetExactBands(bool value);
  /// Whether a height equal to a level counts as above it in tracing, so that each contour
  /// is traced once and whole (False: exact signs, under which a level lying along mesh
  /// edges traces them twice). Stored only by this library.
  bool TiesAbove() const noexcept { return tiesAbove_; }
  /// Lets it; raises "TiesAbove".
  void SetTiesAbove(bool value);
  /// "Represents the collection of contour items that determine contour values and formatting."
  orvane::Contours& Contours() noexcept { return contours_; }
  /// The same, read-only.
  const orvane::Contours& Contours() const noexcept { return contours_; }
  /// "Returns a reference to the user-defined ColorMap object." Its changes raise
  /// "UserColorMap." and the name.
  ColorMap& UserColorMap() noexcept { return userMap_; }
  /// The map filled from the built-in definitions when colours are recalculated.
  const ColorMap& WorkingColorMap() const noexcept { return workingMap_; }

  /// "Returns a color corresponding to a Z value." Error 9 when there are no levels.
  Color FindColor(double zValue, bool isColorBelow) const;

  /// Rebuilds the levels for a new Z range and recolours them (never raises).
  void AutoSetContours(double zMin, double zMax);
  /// Recolours the levels from the selected map.
  void ApplyColorMap();
  /// Refills the working map for ColorMapType.
  void BuildColorMap();
  /// The defaults: by interval count 10, interval 1, rainbow, no interpolation, no levels.
  void ResetToDefaults();

  /// Writes "AutoSetContoursType", "AutoSetInterval", "AutoSetIntervalCount", "ColorMap",
  /// "InterpolateColors", "ExactBands", "TiesAbove", then the levels under "Contours."
  /// and the user map under "UserColorMap.", all under prefix.
  void WriteProperties(PropertyBag& bag, const std::string& prefix) const;
  /// Reads them with the defaults; a bad bag changes nothing.
  void ReadProperties(const PropertyBag& bag, const std::string& prefix);

  /// Raised with the property's name after a change; a level's change comes as
  /// "Contours.Contour", its index, a point and its name, the user map's as
  /// "UserColorMap." and the name.
  Event<const std::string&> PropertyChanged;

 private:
  struct Properties;
  void CaptureLevelColors();

  ColorMap workingMap_;
  ColorMap userMap_;
  orvane::Contours contours_;
  bool mapCaptured_ = false;
  std::int32_t autoSetContoursType_ = orvAutoSetByIntervalCount;
  double autoSetInterval_ = 1.0;
  std::int32_t autoSetIntervalCount_ = 10;
  std::int32_t colorMapType_ = orvColorMapRainbow;
  bool interpolateColors_ = false;
  bool exactBands_ = false;
  bool tiesAbove_ = false;
  bool recolouring_ = false;  // levels' changes are not relayed while set
  Connection userMapChanged_;
};

}  // namespace orvane
