// View: the switches and formats of what is drawn for one data set in one place.

#include "orvane/render/view.h"

#include <cmath>
#include <tuple>
#include <utility>

#include "core/property_table.h"
#include "orvane/core/error.h"
#include "orvane/core/property_bag.h"

namespace orvane {

namespace {

constexpr const char* kSource = "Orvada.View";

void CheckTransparency(const double& value, const char*) {
  if (std::isnan(value)) throw Error(5, kSource, "Transparency must be a number from 0 to 1.");
  if (value < 0.0 || value > 1.0) throw Error(5, kSource);
}

void CheckNotNegative(const std::int32_t& value, const char*) {
  if (value < 0) throw Error(5, kSource);
}

}  // namespace

// The view's properties in the order they are stored; each is raised under the name it
// is stored under.
struct View::Properties {
  template <class T>
  using P = detail::Property<View, T>;
  using SubLine = detail::SubObject<View, orvane::Line>;
  using SubMarker = detail::SubObject<View, orvane::Marker>;

  static constexpr P<bool> kVisible{"Visible", &View::visible_, true};
  static constexpr P<bool> kUseMasterProperties{"UseMasterProperties", &View::useMasters_, true};
  static constexpr P<bool> kMeshVisible{"MeshVisible", &View::meshVisible_, false};
  static constexpr P<bool> kContourFillVisible{"ContourFillVisible", &View::contourFillVisible_,
                                               true};
  static constexpr P<bool> kContourLinesVisible{"ContourLinesVisible",
                                                &View::contourLinesVisible_, true};
  static constexpr P<bool> kContourLabelsVisible{"ContourLabelsVisible",
                                                 &View::contourLabelsVisible_, false};
  static constexpr P<bool> kContourLabelsRotation{"ContourLabelRotation",
                                                  &View::contourLabelsRotation_, true};
  static constexpr P<bool> kContourLabelsEdgeVisible{"ContourLabelEdgeVisible",
                                                     &View::contourLabelsEdgeVisible_, true};
  static constexpr P<bool> kContourLabelsFillVisible{"ContourLabelFillVisible",
                                                     &View::contourLabelsFillVisible_, true};
  static constexpr P<Color> kContourLabelsFillColor{"ContourLabelColor",
                                                    &View::contourLabelsFillColor_, 0x00FFFF};
  static constexpr P<std::int32_t> kContourLabelsDensity{
      "ContourLabelDensity", &View::contourLabelsDensity_, 4, CheckNotNegative};
  static constexpr P<std::int32_t> kContourLabelsLevelSkipping{
      "ContourLabelLevelSkipping", &View::contourLabelsLevelSkipping_, 0, CheckNotNegative};
  static constexpr P<bool> kDataHullVisible{"DataHullVisible", &View::dataHullVisible_, true};
  static constexpr P<bool> kUserHullVisible{"UserHullVisible", &View::userHullVisible_, false};
  static constexpr P<bool> kUserHullClipping{"ClipToUserHull", &View::userHullClipping_, false};
  static constexpr P<double> kTransparency{"Transparency", &View::transparency_, 0.5,
                                           CheckTransparency};
  static constexpr P<bool> kTransparencyOn{"TransparencyOn", &View::transparencyOn_, false};
  static constexpr P<bool> kBaseVisible{"BaseVisible", &View::baseVisible_, false};
  static constexpr P<Color> kBaseColor{"BaseColor", &View::baseColor_, 0xA0A0A0};

  static constexpr auto kStored = std::tuple{
      kVisible,
      kUseMasterProperties,
      kMeshVisible,
      SubLine{"MeshLine.", &View::meshLine_},
      kContourFillVisible,
      kContourLinesVisible,
      SubLine{"ContourLinesMaster.", &View::contourLinesMaster_},
      kContourLabelsVisible,
      kContourLabelsRotation,
      kContourLabelsEdgeVisible,
      kContourLabelsFillVisible,
      kContourLabelsFillColor,
      kContourLabelsDensity,
      kContourLabelsLevelSkipping,
      SubLine{"ContourLabelsEdgeLine.", &View::contourLabelsEdgeLine_},
      kDataHullVisible,
      SubLine{"DataHullLine.", &View::dataHullLine_},
      kUserHullVisible,
      SubLine{"UserHullLine.", &View::userHullLine_},
      kUserHullClipping,
      kTransparency,
      kTransparencyOn,
      SubMarker{"DataMarkerMaster.", &View::dataMarkersMaster_},
      kBaseVisible,
      kBaseColor};
};

View::View() {
  // Sub-objects' changes come up under the prefix they are stored under.
  const std::pair<Event<const std::string&>*, const char*> relays[] = {
      {&meshLine_.PropertyChanged, "MeshLine."},
      {&contourLinesMaster_.PropertyChanged, "ContourLinesMaster."},
      {&contourLabelsEdgeLine_.PropertyChanged, "ContourLabelsEdgeLine."},
      {&dataHullLine_.PropertyChanged, "DataHullLine."},
      {&userHullLine_.PropertyChanged, "UserHullLine."},
      {&dataMarkersMaster_.PropertyChanged, "DataMarkerMaster."}};
  for (const auto& relay : relays) {
    connections_.push_back(relay.first->Connect(
        [this, prefix = std::string(relay.second)](const std::string& name) {
          PropertyChanged.Raise(prefix + name);
        }));
  }
}

void View::SetVisible(bool value) { Properties::kVisible.Let(*this, value); }
void View::SetUseMasterProperties(bool value) {
  Properties::kUseMasterProperties.Let(*this, value);
}
void View::SetContourFillVisible(bool value) { Properties::kContourFillVisible.Let(*this, value); }
void View::SetContourLinesVisible(bool value) {
  Properties::kContourLinesVisible.Let(*this, value);
}
void View::SetContourLinesMaster(const orvane::Line& line) { contourLinesMaster_.CopyFrom(line); }
void View::SetMeshVisible(bool value) { Properties::kMeshVisible.Let(*this, value); }
void View::SetDataHullVisible(bool value) { Properties::kDataHullVisible.Let(*this, value); }
void View::SetUserHullVisible(bool value) { Properties::kUserHullVisible.Let(*this, value); }
void View::SetUserHullClipping(bool value) { Properties::kUserHullClipping.Let(*this, value); }
void View::SetDataMarkersMaster(const orvane::Marker& marker) {
  dataMarkersMaster_.CopyFrom(marker);
}
void View::SetTransparencyOn(bool value) { Properties::kTransparencyOn.Let(*this, value); }
void View::SetBaseVisible(bool value) { Properties::kBaseVisible.Let(*this, value); }
void View::SetBaseColor(Color value) { Properties::kBaseColor.Let(*this, value); }
void View::SetTransparency(double value) { Properties::kTransparency.Let(*this, value); }
void View::SetContourLabelsVisible(bool value) {
  Properties::kContourLabelsVisible.Let(*this, value);
}
void View::SetContourLabelsRotation(bool value) {
  Properties::kContourLabelsRotation.Let(*this, value);
}
void View::SetContourLabelsEdgeVisible(bool value) {
  Properties::kContourLabelsEdgeVisible.Let(*this, value);
}
void View::SetContourLabelsFillVisible(bool value) {
  Properties::kContourLabelsFillVisible.Let(*this, value);
}
void View::SetContourLabelsFillColor(Color value) {
  Properties::kContourLabelsFillColor.Let(*this, value);
}
void View::SetContourLabelsDensity(std::int32_t value) {
  Properties::kContourLabelsDensity.Let(*this, value);
}
void View::SetContourLabelsLevelSkipping(std::int32_t value) {
  Properties::kContourLabelsLevelSkipping.Let(*this, value);
}

void View::WriteProperties(PropertyBag& bag, const std::string& prefix) const {
  detail::WriteAll(bag, prefix, *this, Properties::kStored);
}

void View::ReadProperties(const PropertyBag& bag, const std::string& prefix) {
  detail::ReadAll(bag, prefix, *this, Properties::kStored);
}

}  // namespace orvane
