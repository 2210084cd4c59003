#pragma once

#include <cstdint>
#include <string>

#include "orvane/core/event.h"
#include "orvane/core/font.h"
#include "orvane/render/line.h"

namespace orvane {

class Axes;
class PropertyBag;

/// How an axis's Min and Max follow the data.
enum EAutoRangeType : std::int32_t {
  orvAutoRangeOff = 0,      ///< Min and Max stay as set
  orvAutoRangeExact = 1,    ///< Min and Max are the data limits
  orvAutoRangeRounded = 2,  ///< the data limits widened to round multiples of the interval
};

/// Which of MajorInterval and MajorIntervalCount drives the other.
enum EIntervalType : std::int32_t {
  orvIntervalTypeByIntervalCount = 0,  ///< the count is kept, the interval derived
  orvIntervalTypeByInterval = 1,       ///< the interval is kept, the count derived
};

/// One axis of the plot cube: its scale (range, automatic range, intervals), its ticks
/// and labels, its title and its line. Owned by Axes; failing lets raise error 5 with
/// source "Orvada.Axis" and keep the old value.
class Axis {
 public:
  /// An axis with the defaults: rounded automatic range, 10 intervals, "0.00" labels.
  Axis();
  Axis(const Axis&) = delete;
  Axis& operator=(const Axis&) = delete;

  /// How Min and Max follow the data.
  EAutoRangeType AutoRangeType() const noexcept { return autoRangeType_; }
  /// Lets it (0..2), recalculates the scale, raises ScaleChanged "AutoRangeType".
  void SetAutoRangeType(std::int32_t value);
  /// The interval between major ticks, in data units.
  double MajorInterval() const noexcept { return majorInterval_; }
  /// Lets it (any finite value), recalculates, raises ScaleChanged "MajorInterval".
  void SetMajorInterval(double value);
  /// The number of major intervals.
  std::int32_t MajorIntervalCount() const noexcept { return majorIntervalCount_; }
  /// Lets it (at least 1), recalculates, raises ScaleChanged "MajorIntervalCount".
  void SetMajorIntervalCount(std::int32_t value);
  /// Which of interval and count drives the other.
  EIntervalType MajorIntervalType() const noexcept { return majorIntervalType_; }
  /// Lets it (0..1), recalculates, raises ScaleChanged "MajorIntervalType".
  void SetMajorIntervalType(std::int32_t value);
  /// The axis minimum in data units.
  double Min() const noexcept { return min_; }
  /// Lets it (finite), recalculates, raises ScaleChanged "Min".
  void SetMin(double value);
  /// The axis maximum in data units.
  double Max() const noexcept { return max_; }
  /// Lets it (finite), recalculates, raises ScaleChanged "Max".
  void SetMax(double value);

  /// The numeric format pattern of the labels (see FormatNumber).
  const std::string& LabelsFormat() const noexcept { return labelsFormat_; }
  /// Lets it; ignored while the Axes' UseMasterProperties is True. No event.
  void SetLabelsFormat(const std::string& value);
  /// Whether the labels are drawn.
  bool LabelsVisible() const noexcept { return labelsVisible_; }
  /// Lets it; ignored while masters are used. No event.
  void SetLabelsVisible(bool value);
  /// Whether the title is drawn.
  bool TitleVisible() const noexcept { return titleVisible_; }
  /// Lets it; ignored while masters are used. No event.
  void SetTitleVisible(bool value);
  /// The title text.
  const std::string& Title() const noexcept { return title_; }
  /// Lets the title. No event.
  void SetTitle(const std::string& value);
  /// The zoom level applied to the drawn axis.
  double Zoom() const noexcept { return zoom_; }
  /// Lets it (finite and above 0). No event.
  void SetZoom(double value);
  /// The labels' font (Arial 8); changes made while masters are used are undone.
  Font& LabelsFont() noexcept { return labelsFont_; }
  /// The title's font (Arial 8 bold); as LabelsFont.
  Font& TitleFont() noexcept { return titleFont_; }
  /// The line along the axis (width 2); as LabelsFont.
  Line& AxisLine() noexcept { return axisLine_; }

  /// The range of the data along this axis, handed over by the control before drawing;
  /// recalculates the scale. A maximum below the minimum means no data.
  void SetDataRange(double dataMin, double dataMax);

  /// Number of the last major tick: (Max - Min) / MajorInterval truncated toward zero;
  /// ticks are 0..this, so a negative count (negative interval, inverted range) means no
  /// tick. 0 when the range and the interval are both 0; a zero interval over a non-empty
  /// range gives the largest (or smallest) 32-bit value, which callers must not loop over.
  std::int32_t TickCount() const;
  /// Value of tick i: Min + i * MajorInterval.
  double TickValue(std::int32_t i) const;
  /// Position of tick i along the axis, 0..1 in cube units (0 when Max equals Min).
  double TickPosition(std::int32_t i) const;
  /// Length of a tick mark in cube units (0.025).
  double TickLength() const noexcept { return (AxisEnd() - AxisStart()) * 0.025; }
  /// A value as label text, formatted with LabelsFormat.
  std::string LabelText(double value) const;
  /// Where the axis starts in cube units: always 0.
  double AxisStart() const noexcept { return 0.0; }
  /// Where the axis ends in cube units: always 1.
  double AxisEnd() const noexcept { return 1.0; }

  /// Writes the axis's keys under prefix ("AutoRangeType" ... "AxisLine.").
  void WriteProperties(PropertyBag& bag, const std::string& prefix) const;
  /// Reads them with the fresh defaults; invalid values raise and change nothing. The
  /// scale is recalculated only when a read scale setting differs from the axis's own, so
  /// reading back what the axis wrote changes nothing and raises no event.
  void ReadProperties(const PropertyBag& bag, const std::string& prefix);

  /// "Raised when a property that affects the axis scales has changed."
  Event<const std::string&> ScaleChanged;
  /// "Raised when a font property for this object has changed." ("LabelsFont", "TitleFont")
  Event<const std::string&> FontChanged;

 private:
  friend class Axes;
  struct Settings;
  // True while the owner's masters are in force and no copy or read is running.
  bool MastersRule() const;
  void Recalculate();
  // Undoes a change made to the line or a font while the masters rule; true if it did.
  bool UndoIgnoredChange();
  template <class T>
  void ScaleLet(T& field, T value, const char* name);
  Settings ReadSettings(const PropertyBag& bag, const std::string& prefix) const;
  void ApplySettings(const Settings& settings);

  Axes* owner_ = nullptr;
  bool copying_ = false;    // masters being copied in, or a bag being read: lets count
  bool reverting_ = false;  // an ignored change is being undone: no events
  EAutoRangeType autoRangeType_ = orvAutoRangeRounded;
  double majorInterval_ = 0.0;
  std::int32_t majorIntervalCount_ = 10;
  EIntervalType majorIntervalType_ = orvIntervalTypeByIntervalCount;
  double min_ = 0.0;
  double max_ = 0.0;
  double dataMin_ = 0.0;
  double dataMax_ = 0.0;
  std::string labelsFormat_ = "0.00";
  bool labelsVisible_ = true;
  bool titleVisible_ = true;
  std::string title_;
  double zoom_ = 1.0;
  Font labelsFont_;
  Font titleFont_;
  Line axisLine_;
  Connection labelsFontChanged_, titleFontChanged_, lineChanged_;
};

}  // namespace orvane
