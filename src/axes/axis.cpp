// Axis: scale settings and their recalculation, label and title formatting, ticks.

#include "orvane/axes/axis.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>

#include "axis_settings.h"
#include "mlib_scale.h"
#include "orvane/axes/axes.h"
#include "orvane/core/color.h"
#include "orvane/core/error.h"
#include "orvane/core/format.h"
#include "orvane/core/property_bag.h"

namespace orvane {

namespace {

constexpr const char* kSource = "Orvada.Axis";

void CheckFinite(double value, const char* name) {
  if (!std::isfinite(value)) {
    throw Error(5, kSource, std::string(name) + " must be a finite number.");
  }
}

void CheckAutoRangeType(std::int32_t v) {
  if (v < orvAutoRangeOff || v > orvAutoRangeRounded) throw Error(5, kSource);
}
void CheckIntervalCount(std::int32_t v) {
  if (v < 1) throw Error(5, kSource);
}
void CheckIntervalType(std::int32_t v) {
  if (v < orvIntervalTypeByIntervalCount || v > orvIntervalTypeByInterval) {
    throw Error(5, kSource);
  }
}
void CheckZoom(double v) {
  if (!(std::isfinite(v) && v > 0.0)) {
    throw Error(5, kSource, "Zoom must be a finite number above 0.");
  }
}

}  // namespace

Axis::Axis() : titleFont_("Arial", 8.0, true) {
  axisLine_.SetWidth(2);
  labelsFontChanged_ = labelsFont_.FontChanged.Connect([this](const std::string&) {
    if (!UndoIgnoredChange() && !reverting_) FontChanged.Raise("LabelsFont");
  });
  titleFontChanged_ = titleFont_.FontChanged.Connect([this](const std::string&) {
    if (!UndoIgnoredChange() && !reverting_) FontChanged.Raise("TitleFont");
  });
  lineChanged_ = axisLine_.PropertyChanged.Connect([this](const std::string&) {
    UndoIgnoredChange();
  });
}

bool Axis::MastersRule() const {
  return owner_ != nullptr && owner_->UseMasterProperties() && !copying_;
}

bool Axis::UndoIgnoredChange() {
  if (reverting_ || !MastersRule()) return false;
  reverting_ = true;
  owner_->CopyMastersInto(*this);
  reverting_ = false;
  return true;
}

// ---------------------------------------------------------------------------------------
// Scale

void Axis::Recalculate() {
  if (dataMax_ < dataMin_) return;  // no data yet
  double min = min_;
  double max = max_;
  double interval = majorInterval_;
  std::int32_t count = majorIntervalCount_;
  const bool byCount = majorIntervalType_ == orvIntervalTypeByIntervalCount;
  switch (autoRangeType_) {
    case orvAutoRangeRounded:
      if (byCount) {
        MLibScale::AutoRangeAndInterval(dataMin_, dataMax_, count, true, false, min, max,
                                        interval);
      } else if (interval > 0.0) {  // no multiples of a zero or negative interval
        MLibScale::RoundRangeToInterval(dataMin_, dataMax_, interval, min, max);
      }
      break;
    case orvAutoRangeExact:
      min = dataMin_;
      max = dataMax_;
      if (byCount) interval = (max - min) / count;
      break;
    case orvAutoRangeOff:
      if (byCount) interval = (max - min) / count;
      break;
  }
  if (interval > 0.0) {
    const double intervals = RoundHalfEven((max - min) / interval);
    // The count stays a Long of at least 1 (an inverted manual range gives 1).
    if (!(intervals <= std::numeric_limits<std::int32_t>::max())) {
      count = std::numeric_limits<std::int32_t>::max();
    } else {
      count = static_cast<std::int32_t>(std::max(intervals, 1.0));
    }
  }
  if (min == min_ && max == max_ && interval == majorInterval_ && count == majorIntervalCount_) {
    return;
  }
  min_ = min;
  max_ = max;
  majorInterval_ = interval;
  majorIntervalCount_ = count;
  ScaleChanged.Raise("AutoRangeOrIntervalValues");
}

template <class T>
void Axis::ScaleLet(T& field, T value, const char* name) {
  const T old = field;
  field = value;
  try {
    Recalculate();
  } catch (...) {
    field = old;  // a failed let keeps the old value
    throw;
  }
  ScaleChanged.Raise(name);
}

void Axis::SetAutoRangeType(std::int32_t value) {
  if (value == autoRangeType_) return;
  CheckAutoRangeType(value);
  ScaleLet(autoRangeType_, static_cast<EAutoRangeType>(value), "AutoRangeType");
}

void Axis::SetMajorInterval(double value) {
  if (value == majorInterval_) return;
  CheckFinite(value, "MajorInterval");
  ScaleLet(majorInterval_, value, "MajorInterval");
}

void Axis::SetMajorIntervalCount(std::int32_t value) {
  if (value == majorIntervalCount_) return;
  CheckIntervalCount(value);
  ScaleLet(majorIntervalCount_, value, "MajorIntervalCount");
}

void Axis::SetMajorIntervalType(std::int32_t value) {
  if (value == majorIntervalType_) return;
  CheckIntervalType(value);
  ScaleLet(majorIntervalType_, static_cast<EIntervalType>(value), "MajorIntervalType");
}

void Axis::SetMin(double value) {
  if (value == min_) return;
  CheckFinite(value, "Min");
  ScaleLet(min_, value, "Min");
}

void Axis::SetMax(double value) {
  if (value == max_) return;
  CheckFinite(value, "Max");
  ScaleLet(max_, value, "Max");
}

void Axis::SetDataRange(double dataMin, double dataMax) {
  CheckFinite(dataMin, "The data minimum");
  CheckFinite(dataMax, "The data maximum");
  const double oldMin = dataMin_;
  const double oldMax = dataMax_;
  dataMin_ = dataMin;
  dataMax_ = dataMax;
  try {
    Recalculate();
  } catch (...) {
    dataMin_ = oldMin;
    dataMax_ = oldMax;
    throw;
  }
}

// ---------------------------------------------------------------------------------------
// Formatting

void Axis::SetLabelsFormat(const std::string& value) {
  if (MastersRule() || value == labelsFormat_) return;
  labelsFormat_ = value;
}

void Axis::SetLabelsVisible(bool value) {
  if (MastersRule()) return;
  labelsVisible_ = value;
}

void Axis::SetTitleVisible(bool value) {
  if (MastersRule()) return;
  titleVisible_ = value;
}

void Axis::SetTitle(const std::string& value) { title_ = value; }

void Axis::SetZoom(double value) {
  if (value == zoom_) return;
  CheckZoom(value);
  zoom_ = value;
}

// ---------------------------------------------------------------------------------------
// Ticks

std::int32_t Axis::TickCount() const {
  // Truncated toward zero, so a negative interval or an inverted range gives a negative
  // count: ticks 0 to a negative number are none at all. 0 / 0 (no interval over an
  // empty range) leaves the single tick at Min; a zero interval over a range is clamped.
  const double count = std::trunc((max_ - min_) / majorInterval_);
  if (std::isnan(count)) return 0;
  return static_cast<std::int32_t>(std::clamp<double>(count, std::numeric_limits<std::int32_t>::min(),
                                                      std::numeric_limits<std::int32_t>::max()));
}

double Axis::TickValue(std::int32_t i) const { return i * majorInterval_ + min_; }

double Axis::TickPosition(std::int32_t i) const {
  if (max_ == min_) return 0.0;
  return (TickValue(i) - min_) / (max_ - min_);
}

std::string Axis::LabelText(double value) const { return FormatNumber(value, labelsFormat_); }

// ---------------------------------------------------------------------------------------
// Persistence

void Axis::WriteProperties(PropertyBag& bag, const std::string& prefix) const {
  bag.WriteProperty(prefix + "AutoRangeType", static_cast<std::int32_t>(autoRangeType_));
  bag.WriteProperty(prefix + "MajorInterval", majorInterval_);
  bag.WriteProperty(prefix + "MajorIntervalCount", majorIntervalCount_);
  bag.WriteProperty(prefix + "MajorIntervalType", static_cast<std::int32_t>(majorIntervalType_));
  bag.WriteProperty(prefix + "LabelsFormat", labelsFormat_);
  bag.WriteProperty(prefix + "LabelsVisible", labelsVisible_);
  labelsFont_.WriteProperties(bag, prefix + "LabelFont.");
  titleFont_.WriteProperties(bag, prefix + "TitleFont.");
  bag.WriteProperty(prefix + "Max", max_);
  bag.WriteProperty(prefix + "Min", min_);
  bag.WriteProperty(prefix + "Title", title_);
  bag.WriteProperty(prefix + "TitleVisible", titleVisible_);
  bag.WriteProperty(prefix + "Zoom", zoom_);
  axisLine_.WriteProperties(bag, prefix + "AxisLine.");
}

Axis::Settings Axis::ReadSettings(const PropertyBag& bag, const std::string& prefix) const {
  Settings s;
  s.autoRangeType = bag.ReadProperty(prefix + "AutoRangeType", std::int32_t{orvAutoRangeRounded});
  s.majorInterval = bag.ReadProperty(prefix + "MajorInterval", 0.0);
  s.majorIntervalCount = bag.ReadProperty(prefix + "MajorIntervalCount", std::int32_t{10});
  s.majorIntervalType = bag.ReadProperty(prefix + "MajorIntervalType", std::int32_t{0});
  s.labelsFormat = bag.ReadProperty(prefix + "LabelsFormat", "0.00");
  s.labelsVisible = bag.ReadProperty(prefix + "LabelsVisible", true);
  s.labelsFont = std::make_unique<Font>();
  s.labelsFont->CopyFrom(labelsFont_);
  s.labelsFont->ReadProperties(bag, prefix + "LabelFont.");
  s.titleFont = std::make_unique<Font>();
  s.titleFont->CopyFrom(titleFont_);
  s.titleFont->ReadProperties(bag, prefix + "TitleFont.");
  s.max = bag.ReadProperty(prefix + "Max", 0.0);
  s.min = bag.ReadProperty(prefix + "Min", 0.0);
  s.title = bag.ReadProperty(prefix + "Title", "");
  s.titleVisible = bag.ReadProperty(prefix + "TitleVisible", true);
  s.zoom = bag.ReadProperty(prefix + "Zoom", 1.0);
  s.axisLine = std::make_unique<Line>();
  s.axisLine->ReadProperties(bag, prefix + "AxisLine.");
  CheckAutoRangeType(s.autoRangeType);
  CheckIntervalCount(s.majorIntervalCount);
  CheckIntervalType(s.majorIntervalType);
  CheckFinite(s.majorInterval, "MajorInterval");
  CheckFinite(s.max, "Max");
  CheckFinite(s.min, "Min");
  CheckZoom(s.zoom);
  return s;
}

void Axis::ApplySettings(const Settings& s) {
  // The scale first, all at once, so that one recalculation sees the stored settings.
  // Settings equal to the axis's own change nothing, as the lets of equal values do: an
  // axis read back from its own bag keeps its limits and raises nothing.
  const EAutoRangeType oldType = autoRangeType_;
  const double oldInterval = majorInterval_;
  const std::int32_t oldCount = majorIntervalCount_;
  const EIntervalType oldIntervalType = majorIntervalType_;
  const double oldMax = max_;
  const double oldMin = min_;
  const bool scaleRead = s.autoRangeType != oldType || s.majorInterval != oldInterval ||
                         s.majorIntervalCount != oldCount ||
                         s.majorIntervalType != oldIntervalType || s.max != oldMax ||
                         s.min != oldMin;
  if (scaleRead) {
    autoRangeType_ = static_cast<EAutoRangeType>(s.autoRangeType);
    majorInterval_ = s.majorInterval;
    majorIntervalCount_ = s.majorIntervalCount;
    majorIntervalType_ = static_cast<EIntervalType>(s.majorIntervalType);
    max_ = s.max;
    min_ = s.min;
  }
  try {
    if (scaleRead) Recalculate();
  } catch (...) {
    autoRangeType_ = oldType;
    majorInterval_ = oldInterval;
    majorIntervalCount_ = oldCount;
    majorIntervalType_ = oldIntervalType;
    max_ = oldMax;
    min_ = oldMin;
    throw;
  }
  if (autoRangeType_ != oldType) ScaleChanged.Raise("AutoRangeType");
  if (majorInterval_ != oldInterval) ScaleChanged.Raise("MajorInterval");
  if (majorIntervalCount_ != oldCount) ScaleChanged.Raise("MajorIntervalCount");
  if (majorIntervalType_ != oldIntervalType) ScaleChanged.Raise("MajorIntervalType");
  if (max_ != oldMax) ScaleChanged.Raise("Max");
  if (min_ != oldMin) ScaleChanged.Raise("Min");

  copying_ = true;  // the stored formatting counts even while the masters rule
  labelsFormat_ = s.labelsFormat;
  labelsVisible_ = s.labelsVisible;
  titleVisible_ = s.titleVisible;
  title_ = s.title;
  zoom_ = s.zoom;
  labelsFont_.CopyFrom(*s.labelsFont);
  titleFont_.CopyFrom(*s.titleFont);
  axisLine_.CopyFrom(*s.axisLine);
  copying_ = false;
}

void Axis::ReadProperties(const PropertyBag& bag, const std::string& prefix) {
  ApplySettings(ReadSettings(bag, prefix));
}

}  // namespace orvane
