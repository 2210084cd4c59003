// Axes: the three axes and the master formatting copied into them.

#include "orvane/axes/axes.h"

#include "axis_settings.h"

#include <memory>

#include "orvane/core/property_bag.h"

namespace orvane {

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

template <class T>
void Axes::MasterLet(T& field, const T& value, const char* name) {
  if (field == value) return;
  field = value;
  ApplyMasterProperties();
  PropertyChanged.Raise(name);
}

void Axes::SetUseMasterProperties(bool value) {
  MasterLet(useMasters_, value, "UseMasterProperties");
}

void Axes::SetKeepXYAspectRatio(bool value) {
  if (value == keepXYAspectRatio_) return;
  keepXYAspectRatio_ = value;
  PropertyChanged.Raise("KeepXYAspectRatio");
}

void Axes::SetLabelsFormatMaster(const std::string& value) {
  // Announced without the s of the property's name, as it is also stored.
  MasterLet(labelsFormatMaster_, value, "LabelFormatMaster");
}

void Axes::SetLabelsVisibleMaster(bool value) {
  MasterLet(labelsVisibleMaster_, value, "LabelsVisibleMaster");
}

void Axes::SetTitleVisibleMaster(bool value) {
  MasterLet(titleVisibleMaster_, value, "TitleVisibleMaster");
}

void Axes::WriteProperties(PropertyBag& bag, const std::string& prefix) const {
  labelsFontMaster_.WriteProperties(bag, prefix + "LabelFontMaster.");
  titleFontMaster_.WriteProperties(bag, prefix + "TitleFontMaster");
  bag.WriteProperty(prefix + "KeepXYAspectRatio", keepXYAspectRatio_);
  bag.WriteProperty(prefix + "LabelFormatMaster", labelsFormatMaster_);
  bag.WriteProperty(prefix + "LabelsVisibleMaster", labelsVisibleMaster_);
  bag.WriteProperty(prefix + "UseMasterProperties", useMasters_);
  bag.WriteProperty(prefix + "TitleVisibleMaster", titleVisibleMaster_);
  axisLineMaster_.WriteProperties(bag, prefix + "AxisLine.");
  x_.WriteProperties(bag, prefix + "XAxis.");
  y_.WriteProperties(bag, prefix + "YAxis.");
  z_.WriteProperties(bag, prefix + "ZAxis.");
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

}  // namespace orvane
