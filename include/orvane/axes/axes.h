#pragma once

#include <string>
#include <vector>

#include "orvane/axes/axis.h"
#include "orvane/core/event.h"
#include "orvane/core/font.h"
#include "orvane/render/line.h"

namespace orvane {

class PropertyBag;

/// "Contains information about the three data axes." Holds XAxis, YAxis and ZAxis and
/// master formatting that, while UseMasterProperties is True, is copied into all three.
class Axes {
 public:
  /// Three axes with their defaults and the titles "X", "Y", "Z"; masters applied.
  Axes();
  Axes(const Axes&) = delete;
  Axes& operator=(const Axes&) = delete;

  /// The X axis.
  Axis& XAxis() noexcept { return x_; }
  /// The Y axis.
  Axis& YAxis() noexcept { return y_; }
  /// The Z axis.
  Axis& ZAxis() noexcept { return z_; }

  /// "Returns or sets whether those properties named as *Master properties on the Axes
  /// object will be used to set Axis properties instead of the equivalent properties on
  /// each individual Axis object."
  bool UseMasterProperties() const noexcept { return useMasters_; }
  /// Lets it; True copies the masters into the axes. Raises "UseMasterProperties".
  void SetUseMasterProperties(bool value);
  /// "Returns or sets whether the relative proportions of the X and Y axes are fixed to
  /// represent their respective ranges."
  bool KeepXYAspectRatio() const noexcept { return keepXYAspectRatio_; }
  /// Lets it; raises "KeepXYAspectRatio".
  void SetKeepXYAspectRatio(bool value);
  /// The label format copied into the axes.
  const std::string& LabelsFormatMaster() const noexcept { return labelsFormatMaster_; }
  /// Lets it; raises "LabelFormatMaster".
  void SetLabelsFormatMaster(const std::string& value);
  /// Label visibility copied into the axes.
  bool LabelsVisibleMaster() const noexcept { return labelsVisibleMaster_; }
  /// Lets it; raises "LabelsVisibleMaster".
  void SetLabelsVisibleMaster(bool value);
  /// Title visibility copied into the axes.
  bool TitleVisibleMaster() const noexcept { return titleVisibleMaster_; }
  /// Lets it; raises "TitleVisibleMaster".
  void SetTitleVisibleMaster(bool value);
  /// The label font copied into the axes (Arial 8).
  Font& LabelsFontMaster() noexcept { return labelsFontMaster_; }
  /// The title font copied into the axes (Arial 8 bold).
  Font& TitleFontMaster() noexcept { return titleFontMaster_; }
  /// The axis line copied into the axes.
  Line& AxisLineMaster() noexcept { return axisLineMaster_; }

  /// Copies the masters into XAxis, YAxis, ZAxis in this order, when UseMasterProperties.
  void ApplyMasterProperties();

  /// Writes the masters and the three axes under prefix (normally "Axes.").
  void WriteProperties(PropertyBag& bag, const std::string& prefix) const;
  /// Reads them with the fresh defaults, then applies the masters.
  void ReadProperties(const PropertyBag& bag, const std::string& prefix);

  /// A master property, KeepXYAspectRatio or UseMasterProperties changed (its name), or
  /// the master line ("AxisLineMaster." and the line's property).
  Event<const std::string&> PropertyChanged;
  /// A master font changed ("LabelsFontMaster", "TitleFontMaster"), or an axis's font
  /// ("XAxis.LabelsFont", ...).
  Event<const std::string&> FontChanged;

 private:
  friend class Axis;
  struct Properties;
  // Copies the masters into one axis, accepted whatever the axis's own rule says.
  void CopyMastersInto(Axis& axis);

  bool useMasters_ = true;
  bool keepXYAspectRatio_ = false;
  std::string labelsFormatMaster_ = "0.00";
  bool labelsVisibleMaster_ = true;
  bool titleVisibleMaster_ = true;
  Font labelsFontMaster_;
  Font titleFontMaster_{"Arial", 8.0, true};
  Line axisLineMaster_;
  Axis x_, y_, z_;
  std::vector<Connection> connections_;
};

class Contouring;

/// Gives each axis a label pattern with as many decimals as its ticks need (LabelFormatFor;
/// the Z axis's also covers the contour levels, which the legend and the contour labels
/// show in its format), after turning the masters off so that the axes may differ. Call
/// it once the axes' ranges and the levels are worked out (after a refresh).
void FitLabelFormats(Axes& axes, const Contouring& contouring);

/// Sets KeepXYAspectRatio for the data's shape: True (one unit as long on X as on Y)
/// when the X and Y axes' spans are within a factor of 10 of each other, else False so
/// that a long, thin domain still fills the plot. Call it once the ranges are worked out.
void FitXYAspect(Axes& axes);

}  // namespace orvane
