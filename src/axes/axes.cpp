// Axes: the three axes and the master formatting copied into them.

#include "orvane/axes/axes.h"

#include "axis_settings.h"

#include <algorithm>
#include <memory>
#include <tuple>

#include "core/property_table.h"
#include "orvane/contour/contouring.h"
#include "orvane/core/format.h"
#include "orvane/core/property_bag.h"

namespace orvane {

// The masters and the axes in the order they are stored. A master let copies the
// masters into the axes before it raises; the label format is raised and stored as
// "LabelFormatMaster", the title font glued to "TitleFontMaster" without a dot.
struct Axes::Properties {
  template <class T>
  using P = detail::Property<Axes, T>;
  static constexpr auto kUseMasterProperties =
      P<bool>{"UseMasterProperties", &Axes::useMasters_, true}.Then(&Axes::ApplyMasterProperties);
  static constexpr P<bool> kKeepXYAspectRatio{"KeepXYAspectRatio", &Axes::keepXYAspectRatio_,
                                              false};
  static inline const auto kLabelsFormatMaster =
      P<std::string>{"LabelFormatMaster", &Axes::labelsFormatMaster_, "0.00"}.Then(
          &Axes::ApplyMasterProperties);
  static constexpr auto kLabelsVisibleMaster =
      P<bool>{"LabelsVisibleMaster", &Axes::labelsVisibleMaster_, true}.Then(
          &Axes::ApplyMasterProperties);
  static constexpr auto kTitleVisibleMaster =
      P<bool>{"TitleVisibleMaster", &Axes::titleVisibleMaster_, true}.Then(
          &Axes::ApplyMasterProperties);
  static inline const auto kStored = std::tuple{
      detail::SubObject<Axes, Font>{"LabelFontMaster.", &Axes::labelsFontMaster_},
      detail::SubObject<Axes, Font>{"TitleFontMaster", &Axes::titleFontMaster_},
      kKeepXYAspectRatio,
      kLabelsFormatMaster,
      kLabelsVisibleMaster,
      kUseMasterProperties,
      kTitleVisibleMaster,
      detail::SubObject<Axes, Line>{"AxisLine.", &Axes::axisLineMaster_},
      detail::SubObject<Axes, Axis>{"XAxis.", &Axes::x_},
      detail::SubObject<Axes, Axis>{"YAxis.", &Axes::y_},
      detail::SubObject<Axes, Axis>{"ZAxis.", &Axes::z_}};
};

Axes::Axes() {
  for (Axis* axis : {&x_, &y_, &z_}) axis->owner_ = this;
  x_.SetTitle("X");
  y_.SetTitle("Y");
  z_.SetTitle("Z");
  connections_.push_back(labelsFontMaster_.FontChanged.Connect([this](const std::string&) {
    ApplyMasterProperties();
    FontChanged.Raise("LabelsFontMaster");
  }));
  connections_.push_back(titleFontMaster_.FontChanged.Connect([this](const std::string&) {
    ApplyMasterProperties();
    FontChanged.Raise("TitleFontMaster");
  }));
  connections_.push_back(axisLineMaster_.PropertyChanged.Connect([this](const std::string& name) {
    ApplyMasterProperties();
    PropertyChanged.Raise("AxisLineMaster." + name);
  }));
  const std::pair<Axis*, const char*> axes[] = {{&x_, "XAxis."}, {&y_, "YAxis."}, {&z_, "ZAxis."}};
  for (const auto& [axis, prefix] : axes) {
    const std::string relayed = prefix;
    connections_.push_back(axis->FontChanged.Connect(
        [this, relayed](const std::string& name) { FontChanged.Raise(relayed + name); }));
  }
  ApplyMasterProperties();
}

void Axes::CopyMastersInto(Axis& axis) {
  const bool wasCopying = axis.copying_;
  axis.copying_ = true;
  axis.axisLine_.CopyFrom(axisLineMaster_);
  axis.labelsFont_.CopyFrom(labelsFontMaster_);
  axis.titleFont_.CopyFrom(titleFontMaster_);
  axis.labelsFormat_ = labelsFormatMaster_;
  axis.labelsVisible_ = labelsVisibleMaster_;
  axis.titleVisible_ = titleVisibleMaster_;
  axis.copying_ = wasCopying;
}

void Axes::ApplyMasterProperties() {
  if (!useMasters_) return;
  CopyMastersInto(x_);
  CopyMastersInto(y_);
  CopyMastersInto(z_);
}

void Axes::SetUseMasterProperties(bool value) {
  Properties::kUseMasterProperties.Let(*this, value);
}
void Axes::SetKeepXYAspectRatio(bool value) { Properties::kKeepXYAspectRatio.Let(*this, value); }
void Axes::SetLabelsFormatMaster(const std::string& value) {
  Properties::kLabelsFormatMaster.Let(*this, value);
}
void Axes::SetLabelsVisibleMaster(bool value) {
  Properties::kLabelsVisibleMaster.Let(*this, value);
}
void Axes::SetTitleVisibleMaster(bool value) { Properties::kTitleVisibleMaster.Let(*this, value); }

void Axes::WriteProperties(PropertyBag& bag, const std::string& prefix) const {
  detail::WriteAll(bag, prefix, *this, Properties::kStored);
}

void Axes::ReadProperties(const PropertyBag& bag, const std::string& prefix) {
  // Everything is read and checked first, so that a bad bag changes nothing.
  Font labelsFont;
  labelsFont.CopyFrom(labelsFontMaster_);
  labelsFont.ReadProperties(bag, prefix + "LabelFontMaster.");
  Font titleFont;
  titleFont.CopyFrom(titleFontMaster_);
  titleFont.ReadProperties(bag, prefix + "TitleFontMaster");
  const bool keepXY = bag.ReadProperty(prefix + "KeepXYAspectRatio", false);
  const std::string format = bag.ReadProperty(prefix + "LabelFormatMaster", "0.00");
  const bool labelsVisible = bag.ReadProperty(prefix + "LabelsVisibleMaster", true);
  const bool useMasters = bag.ReadProperty(prefix + "UseMasterProperties", true);
  const bool titleVisible = bag.ReadProperty(prefix + "TitleVisibleMaster", true);
  Line line;
  line.ReadProperties(bag, prefix + "AxisLine.");
  Axis::Settings xs = x_.ReadSettings(bag, prefix + "XAxis.");
  Axis::Settings ys = y_.ReadSettings(bag, prefix + "YAxis.");
  Axis::Settings zs = z_.ReadSettings(bag, prefix + "ZAxis.");

  // Apply with the masters' copy held back until the end.
  const bool wasUsingMasters = useMasters_;
  useMasters_ = false;
  labelsFontMaster_.CopyFrom(labelsFont);
  titleFontMaster_.CopyFrom(titleFont);
  axisLineMaster_.CopyFrom(line);
  SetKeepXYAspectRatio(keepXY);
  SetLabelsFormatMaster(format);
  SetLabelsVisibleMaster(labelsVisible);
  SetTitleVisibleMaster(titleVisible);
  x_.ApplySettings(xs);
  y_.ApplySettings(ys);
  z_.ApplySettings(zs);
  useMasters_ = useMasters;
  ApplyMasterProperties();
  if (useMasters != wasUsingMasters) PropertyChanged.Raise("UseMasterProperties");
}

void FitLabelFormats(Axes& axes, const Contouring& contouring) {
  axes.SetUseMasterProperties(false);
  Axis* const all[3] = {&axes.XAxis(), &axes.YAxis(), &axes.ZAxis()};
  for (Axis* axis : all) {
    std::vector<double> values;
    // A handful of ticks tells the decimals; an absurd count (a zero interval) is not walked.
    const std::int32_t count = std::clamp(axis->TickCount(), -1, 1000);
    for (std::int32_t i = 0; i <= count; ++i) values.push_back(axis->TickValue(i));
    if (axis == &axes.ZAxis()) {
      for (std::int32_t k = 0; k < contouring.Contours().Count(); ++k) {
        values.push_back(contouring.Contours().Item(k)->Value());
      }
    }
    axis->SetLabelsFormat(LabelFormatFor(values));
  }
}

void FitXYAspect(Axes& axes) {
  const double spanX = axes.XAxis().Max() - axes.XAxis().Min(), spanY = axes.YAxis().Max() - axes.YAxis().Min();
  axes.SetKeepXYAspectRatio(spanX > 0.0 && spanY > 0.0 && std::max(spanX, spanY) <= 10.0 * std::min(spanX, spanY));
}

}  // namespace orvane
