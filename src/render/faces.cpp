// Face and Faces: the plot-cube face formats and their master values.

#include "orvane/render/faces.h"

#include "orvane/core/property_bag.h"

namespace orvane {

// ---------------------------------------------------------------------------------------
// Face

Face::Face() {
  const std::pair<Line*, std::string> lines[] = {{&majorGridLine_, "MajorGridLine."},
                                                 {&edgeLine_, "EdgeLine."}};
  for (const auto& [line, prefix] : lines) {
    connections_.push_back(line->PropertyChanged.Connect([this, prefix = prefix](const std::string& n) {
      if (!UndoIgnoredChange() && !reverting_) PropertyChanged.Raise(prefix + n);
    }));
  }
}

bool Face::MastersRule() const {
  return owner_ != nullptr && owner_->UseMasterProperties() && !copying_;
}

bool Face::UndoIgnoredChange() {
  if (reverting_ || !MastersRule()) return false;
  reverting_ = true;
  owner_->CopyMastersInto(*this);
  reverting_ = false;
  return true;
}

namespace {

template <class T>
bool Let(T& field, T value, bool ignored) {
  if (ignored || field == value) return false;
  field = value;
  return true;
}

}  // namespace

void Face::SetFillVisible(bool value) {
  if (Let(fillVisible_, value, MastersRule())) PropertyChanged.Raise("FillVisible");
}

void Face::SetFillColor(Color value) {
  if (Let(fillColor_, value, MastersRule())) PropertyChanged.Raise("FillColor");
}

void Face::SetMajorGridVisible(bool value) {
  if (Let(majorGridVisible_, value, MastersRule())) PropertyChanged.Raise("MajorGridVisible");
}

void Face::SetEdgeVisible(bool value) {
  if (Let(edgeVisible_, value, MastersRule())) PropertyChanged.Raise("EdgeVisible");
}

void Face::WriteProperties(PropertyBag& bag, const std::string& prefix) const {
  bag.WriteProperty(prefix + "EdgeVisible", edgeVisible_);
  bag.WriteProperty(prefix + "FillColor", static_cast<std::int32_t>(fillColor_));
  bag.WriteProperty(prefix + "FillVisible", fillVisible_);
  bag.WriteProperty(prefix + "MajorGridVisible", majorGridVisible_);
  edgeLine_.WriteProperties(bag, prefix + "EdgeLine.");
  majorGridLine_.WriteProperties(bag, prefix + "MajorGridLine.");
}

void Face::ReadProperties(const PropertyBag& bag, const std::string& prefix) {
  const bool edgeVisible = bag.ReadProperty(prefix + "EdgeVisible", true);
  const auto fillColor = static_cast<Color>(bag.ReadProperty(prefix + "FillColor", std::int32_t{0xFFFFFF}));
  const bool fillVisible = bag.ReadProperty(prefix + "FillVisible", true);
  const bool gridVisible = bag.ReadProperty(prefix + "MajorGridVisible", true);
  Line edge;
  edge.ReadProperties(bag, prefix + "EdgeLine.");
  Line grid;
  grid.ReadProperties(bag, prefix + "MajorGridLine.");
  const bool wasCopying = copying_;
  copying_ = true;  // stored values count even while the masters rule
  SetEdgeVisible(edgeVisible);
  SetFillColor(fillColor);
  SetFillVisible(fillVisible);
  SetMajorGridVisible(gridVisible);
  edgeLine_.CopyFrom(edge);
  majorGridLine_.CopyFrom(grid);
  copying_ = wasCopying;
}

// ---------------------------------------------------------------------------------------
// Faces

Faces::Faces() {
  const std::pair<Line*, std::string> lines[] = {{&majorGridLineMaster_, "MajorGridLineMaster."},
                                                 {&edgeLineMaster_, "EdgeLineMaster."}};
  for (const auto& [line, prefix] : lines) {
    connections_.push_back(line->PropertyChanged.Connect([this, prefix = prefix](const std::string& n) {
      ApplyMasterProperties();
      PropertyChanged.Raise(prefix + n);
    }));
  }
  const std::pair<Face*, std::string> faces[] = {{&xy_, "XYFace."}, {&xz_, "XZFace."}, {&yz_, "YZFace."}};
  for (const auto& [face, prefix] : faces) {
    face->owner_ = this;
    connections_.push_back(face->PropertyChanged.Connect(
        [this, prefix = prefix](const std::string& n) { PropertyChanged.Raise(prefix + n); }));
  }
  ApplyMasterProperties();
}

void Faces::CopyMastersInto(Face& face) {
  const bool wasCopying = face.copying_;
  face.copying_ = true;
  face.edgeLine_.CopyFrom(edgeLineMaster_);
  face.SetEdgeVisible(edgeVisibleMaster_);
  face.majorGridLine_.CopyFrom(majorGridLineMaster_);
  face.SetMajorGridVisible(majorGridVisibleMaster_);
  face.SetFillColor(fillColorMaster_);
  face.SetFillVisible(fillVisibleMaster_);
  face.copying_ = wasCopying;
}

void Faces::ApplyMasterProperties() {
  if (!useMasters_) return;
  CopyMastersInto(xy_);
  CopyMastersInto(xz_);
  CopyMastersInto(yz_);
}

template <class T>
void Faces::MasterLet(T& field, T value, const char* name) {
  if (field == value) return;
  field = value;
  ApplyMasterProperties();
  PropertyChanged.Raise(name);
}

void Faces::SetUseMasterProperties(bool value) { MasterLet(useMasters_, value, "UseMasterProperties"); }
void Faces::SetFillVisibleMaster(bool value) { MasterLet(fillVisibleMaster_, value, "FillVisibleMaster"); }
void Faces::SetFillColorMaster(Color value) { MasterLet(fillColorMaster_, value, "FillColorMaster"); }
void Faces::SetMajorGridVisibleMaster(bool value) {
  MasterLet(majorGridVisibleMaster_, value, "MajorGridVisibleMaster");
}
void Faces::SetEdgeVisibleMaster(bool value) { MasterLet(edgeVisibleMaster_, value, "EdgeVisibleMaster"); }

void Faces::WriteProperties(PropertyBag& bag, const std::string& prefix) const {
  bag.WriteProperty(prefix + "FillColorMaster", static_cast<std::int32_t>(fillColorMaster_));
  bag.WriteProperty(prefix + "FillVisibleMaster", fillVisibleMaster_);
  bag.WriteProperty(prefix + "MajorGridVisibleMaster", majorGridVisibleMaster_);
  bag.WriteProperty(prefix + "EdgeVisibleMaster", edgeVisibleMaster_);
  bag.WriteProperty(prefix + "UseMasterProperties", useMasters_);
  edgeLineMaster_.WriteProperties(bag, prefix + "EdgeLineMaster.");
  majorGridLineMaster_.WriteProperties(bag, prefix + "MajorGridLineMaster.");
  xy_.WriteProperties(bag, prefix + "XYFace.");
  xz_.WriteProperties(bag, prefix + "XZFace.");
  yz_.WriteProperties(bag, prefix + "YZFace.");
}

void Faces::ReadProperties(const PropertyBag& bag, const std::string& prefix) {
  // Read everything first (the faces into scratch faces, so that a bad value is found
  // before anything changes), then apply.
  const auto fillColor = static_cast<Color>(
      bag.ReadProperty(prefix + "FillColorMaster", std::int32_t{0xFFFFFF}));
  const bool fillVisible = bag.ReadProperty(prefix + "FillVisibleMaster", true);
  const bool gridVisible = bag.ReadProperty(prefix + "MajorGridVisibleMaster", true);
  const bool edgeVisible = bag.ReadProperty(prefix + "EdgeVisibleMaster", true);
  const bool useMasters = bag.ReadProperty(prefix + "UseMasterProperties", true);
  Line edge;
  edge.ReadProperties(bag, prefix + "EdgeLineMaster.");
  Line grid;
  grid.ReadProperties(bag, prefix + "MajorGridLineMaster.");
  Face scratch[3];
  const char* names[] = {"XYFace.", "XZFace.", "YZFace."};
  for (int k = 0; k < 3; ++k) scratch[k].ReadProperties(bag, prefix + names[k]);

  const bool wasUsingMasters = useMasters_;
  useMasters_ = false;
  SetFillColorMaster(fillColor);
  SetFillVisibleMaster(fillVisible);
  SetMajorGridVisibleMaster(gridVisible);
  SetEdgeVisibleMaster(edgeVisible);
  edgeLineMaster_.CopyFrom(edge);
  majorGridLineMaster_.CopyFrom(grid);
  Face* faces[] = {&xy_, &xz_, &yz_};
  for (int k = 0; k < 3; ++k) faces[k]->ReadProperties(bag, prefix + names[k]);
  useMasters_ = useMasters;
  ApplyMasterProperties();
  if (useMasters != wasUsingMasters) PropertyChanged.Raise("UseMasterProperties");
}

}  // namespace orvane
