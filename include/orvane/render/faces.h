#pragma once

#include <string>
#include <vector>

#include "orvane/core/color.h"
#include "orvane/core/event.h"
#include "orvane/render/line.h"

namespace orvane {

class Faces;
class PropertyBag;

/// The format of one pair of parallel plot-cube faces: fill, major grid and edges. Its
/// lets are ignored while the owning Faces' UseMasterProperties is True.
class Face {
 public:
  /// White fill, grid and edges visible, default lines.
  Face();
  Face(const Face&) = delete;
  Face& operator=(const Face&) = delete;

  /// "Returns or set whether the face will be drawn with a solid FillColor."
  bool FillVisible() const noexcept { return fillVisible_; }
  /// Lets it; raises "FillVisible".
  void SetFillVisible(bool value);
  /// "Returns or set the color value that the face will be filled with if FillVisible is True."
  Color FillColor() const noexcept { return fillColor_; }
  /// Lets it; raises "FillColor".
  void SetFillColor(Color value);
  /// "Returns or sets whether the major grid is visible."
  bool MajorGridVisible() const noexcept { return majorGridVisible_; }
  /// Lets it; raises "MajorGridVisible".
  void SetMajorGridVisible(bool value);
  /// "Returns or sets whether the EdgeLine is visible."
  bool EdgeVisible() const noexcept { return edgeVisible_; }
  /// Lets it; raises "EdgeVisible".
  void SetEdgeVisible(bool value);
  /// The format of the major grid lines; changes raise "MajorGridLine." and the name.
  Line& MajorGridLine() noexcept { return majorGridLine_; }
  /// The format of the face's edges; changes raise "EdgeLine." and the name.
  Line& EdgeLine() noexcept { return edgeLine_; }

  /// Writes "EdgeVisible", "FillColor", "FillVisible", "MajorGridVisible", "EdgeLine.",
  /// "MajorGridLine." under prefix.
  void WriteProperties(PropertyBag& bag, const std::string& prefix) const;
  /// Reads them with the defaults; a bad value raises and changes nothing.
  void ReadProperties(const PropertyBag& bag, const std::string& prefix);

  /// Raised with the property's name after a change.
  Event<const std::string&> PropertyChanged;

 private:
  friend class Faces;
  struct Properties;
  bool MastersRule() const;
  bool UndoIgnoredChange();

  Faces* owner_ = nullptr;
  bool copying_ = false;
  bool reverting_ = false;
  bool fillVisible_ = true;
  Color fillColor_ = 0xFFFFFF;
  bool majorGridVisible_ = true;
  bool edgeVisible_ = true;
  Line majorGridLine_;
  Line edgeLine_;
  std::vector<Connection> connections_;
};

/// The three face formats of the plot cube and master values that, while
/// UseMasterProperties is True, are copied into all three (XY, then XZ, then YZ).
class Faces {
 public:
  /// Three default faces; masters applied.
  Faces();
  Faces(const Faces&) = delete;
  Faces& operator=(const Faces&) = delete;

  /// "Represents the formatting for the two XY plane faces of the 3D plot cube."
  Face& XYFace() noexcept { return xy_; }
  /// "Represents the formatting for the two XZ plane faces of the 3D plot cube."
  Face& XZFace() noexcept { return xz_; }
  /// "Represents the formatting for the two YZ plane faces of the 3D plot cube."
  Face& YZFace() noexcept { return yz_; }

  /// Whether the masters are copied into the faces.
  bool UseMasterProperties() const noexcept { return useMasters_; }
  /// Lets it; True copies the masters in. Raises "UseMasterProperties".
  void SetUseMasterProperties(bool value);
  /// "Returns or sets whether the faces will be drawn with a solid FillColor when
  /// UseMasterProperties is True."
  bool FillVisibleMaster() const noexcept { return fillVisibleMaster_; }
  /// Lets it; raises "FillVisibleMaster".
  void SetFillVisibleMaster(bool value);
  /// "Returns or sets the fill color for all faces when UseMasterProperties is True."
  Color FillColorMaster() const noexcept { return fillColorMaster_; }
  /// Lets it; raises "FillColorMaster".
  void SetFillColorMaster(Color value);
  /// "Returns or sets whether the major grid is visible on the faces."
  bool MajorGridVisibleMaster() const noexcept { return majorGridVisibleMaster_; }
  /// Lets it; raises "MajorGridVisibleMaster".
  void SetMajorGridVisibleMaster(bool value);
  /// "Returns or sets whether the EdgeLine is visible for all faces when
  /// UseMasterProperties is True."
  bool EdgeVisibleMaster() const noexcept { return edgeVisibleMaster_; }
  /// Lets it; raises "EdgeVisibleMaster".
  void SetEdgeVisibleMaster(bool value);
  /// The grid line copied into the faces; changes raise "MajorGridLineMaster." and the name.
  Line& MajorGridLineMaster() noexcept { return majorGridLineMaster_; }
  /// The edge line copied into the faces; changes raise "EdgeLineMaster." and the name.
  Line& EdgeLineMaster() noexcept { return edgeLineMaster_; }

  /// Copies the masters into XY, XZ and YZ, in this order, when UseMasterProperties.
  void ApplyMasterProperties();

  /// Writes the masters, their lines and the three faces under prefix ("Faces.").
  void WriteProperties(PropertyBag& bag, const std::string& prefix) const;
  /// Reads them with the defaults, then applies the masters; a bad bag changes nothing.
  void ReadProperties(const PropertyBag& bag, const std::string& prefix);

  /// Raised with the property's name; a face's change comes as "XYFace." and its name.
  Event<const std::string&> PropertyChanged;
  /// True while a master's let relays the faces' changes, before the master's own event:
  /// one redraw, on that last event, shows the whole let.
  bool RelayingMasterLet() const noexcept { return masterLets_ > 0; }

 private:
  friend class Face;
  struct Properties;
  void CopyMastersInto(Face& face);
  // Runs a master's let with RelayingMasterLet true.
  template <class Let>
  void MasterLet(Let let);
  // ApplyMasterProperties within a master's let, before its own event.
  void ApplyMastersOfLet();

  bool useMasters_ = true;
  bool fillVisibleMaster_ = true;
  Color fillColorMaster_ = 0xFFFFFF;
  bool majorGridVisibleMaster_ = true;
  bool edgeVisibleMaster_ = true;
  Line majorGridLineMaster_;
  Line edgeLineMaster_;
  Face xy_, xz_, yz_;
  std::vector<Connection> connections_;
  int masterLets_ = 0;
};

}  // namespace orvane
