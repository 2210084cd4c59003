// Face and Faces: the plot-cube face formats and their master values.

#include "orvane/render/faces.h"

#include <tuple>

#include "core/property_table.h"
#include "orvane/core/property_bag.h"

namespace orvane {

// ---------------------------------------------------------------------------------------
// Face

// A face's properties in the order they are stored; its lets are ignored while the
// owner's masters rule.
struct Face::Properties {
  template <class T>
  using P = detail::Property<Face, T>;
  using SubLine = detail::SubObject<Face, Line>;
  static constexpr auto kEdgeVisible =
      P<bool>{"EdgeVisible", &Face::edgeVisible_, true}.IgnoredWhile(&Face::MastersRule);
  static constexpr auto kFillColor =
      P<Color>{"FillColor", &Face::fillColor_, 0xFFFFFF}.IgnoredWhile(&Face::MastersRule);
  static constexpr auto kFillVisible =
      P<bool>{"FillVisible", &Face::fillVisible_, true}.IgnoredWhile(&Face::MastersRule);
  static constexpr auto kMajorGridVisible =
      P<bool>{"MajorGridVisible", &Face::majorGridVisible_, true}.IgnoredWhile(&Face::MastersRule);
  static constexpr auto kStored =
      std::tuple{kEdgeVisible, kFillColor, kFillVisible, kMajorGridVisible,
                 SubLine{"EdgeLine.", &Face::edgeLine_}, SubLine{"MajorGridLine.", &Face::majorGridLine_}};
};

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

void Face::SetFillVisible(bool value) { Properties::kFillVisible.Let(*this, value); }
void Face::SetFillColor(Color value) { Properties::kFillColor.Let(*this, value); }
void Face::SetMajorGridVisible(bool value) { Properties::kMajorGridVisible.Let(*this, value); }
void Face::SetEdgeVisible(bool value) { Properties::kEdgeVisible.Let(*this, value); }

void Face::WriteProperties(PropertyBag& bag, const std::string& prefix) const {
  detail::WriteAll(bag, prefix, *this, Properties::kStored);
}

void Face::ReadProperties(const PropertyBag& bag, const std::string& prefix) {
  const auto stored = detail::StageAll(bag, prefix, *this, Properties::kStored);
  const bool wasCopying = copying_;
  copying_ = true;  // stored values count even while the masters rule
  detail::ApplyAll(*this, Properties::kStored, stored);
  copying_ = wasCopying;
}

// ---------------------------------------------------------------------------------------
// Faces

// The masters in the order they are stored, then the faces; a master let copies the
// masters into the faces before it raises.
struct Faces::Properties {
  template <class T>
  using P = detail::Property<Faces, T>;
  static constexpr auto kFillColorMaster =
      P<Color>{"FillColorMaster", &Faces::fillColorMaster_, 0xFFFFFF}.Then(
          &Faces::ApplyMastersOfLet);
  static constexpr auto kFillVisibleMaster =
      P<bool>{"FillVisibleMaster", &Faces::fillVisibleMaster_, true}.Then(
          &Faces::ApplyMastersOfLet);
  static constexpr auto kMajorGridVisibleMaster =
      P<bool>{"MajorGridVisibleMaster", &Faces::majorGridVisibleMaster_, true}.Then(
          &Faces::ApplyMastersOfLet);
  static constexpr auto kEdgeVisibleMaster =
      P<bool>{"EdgeVisibleMaster", &Faces::edgeVisibleMaster_, true}.Then(
          &Faces::ApplyMastersOfLet);
  static constexpr auto kUseMasterProperties =
      P<bool>{"UseMasterProperties", &Faces::useMasters_, true}.Then(&Faces::ApplyMastersOfLet);
  static constexpr auto kStored = std::tuple{
      kFillColorMaster, kFillVisibleMaster, kMajorGridVisibleMaster, kEdgeVisibleMaster,
      kUseMasterProperties,
      detail::SubObject<Faces, Line>{"EdgeLineMaster.", &Faces::edgeLineMaster_},
      detail::SubObject<Faces, Line>{"MajorGridLineMaster.", &Faces::majorGridLineMaster_},
      detail::SubObject<Faces, Face>{"XYFace.", &Faces::xy_},
      detail::SubObject<Faces, Face>{"XZFace.", &Faces::xz_},
      detail::SubObject<Faces, Face>{"YZFace.", &Faces::yz_}};
};

namespace {

// Takes one off a count when it goes, on every path out.
struct FlagCount {
  int& count;
  ~FlagCount() { --count; }
};

}  // namespace

Faces::Faces() {
  const std::pair<Line*, std::string> lines[] = {{&majorGridLineMaster_, "MajorGridLineMaster."},
                                                 {&edgeLineMaster_, "EdgeLineMaster."}};
  for (const auto& [line, prefix] : lines) {
    connections_.push_back(line->PropertyChanged.Connect([this, prefix = prefix](const std::string& n) {
      MasterLet([this] { ApplyMasterProperties(); });
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

template <class Let>
void Faces::MasterLet(Let let) {
  ++masterLets_;
  const FlagCount restore{masterLets_};
  let();
}

void Faces::ApplyMastersOfLet() {
  MasterLet([this] { ApplyMasterProperties(); });
}

void Faces::SetUseMasterProperties(bool value) {
  Properties::kUseMasterProperties.Let(*this, value);
}
void Faces::SetFillVisibleMaster(bool value) { Properties::kFillVisibleMaster.Let(*this, value); }
void Faces::SetFillColorMaster(Color value) { Properties::kFillColorMaster.Let(*this, value); }
void Faces::SetMajorGridVisibleMaster(bool value) {
  Properties::kMajorGridVisibleMaster.Let(*this, value);
}
void Faces::SetEdgeVisibleMaster(bool value) { Properties::kEdgeVisibleMaster.Let(*this, value); }

void Faces::WriteProperties(PropertyBag& bag, const std::string& prefix) const {
  detail::WriteAll(bag, prefix, *this, Properties::kStored);
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
