#pragma once

// The small dialogs the property pages open for one compound value: a line format, a
// numeric label format with a live preview, and a data-marker format. Each edits a copy
// and hands it back through value(); nothing reaches the control until the pages apply.

#include <QDialog>

#include <string>

#include "property_editors.h"

class QCheckBox;
class QComboBox;
class QDoubleSpinBox;
class QLabel;
class QLineEdit;
class QSpinBox;

namespace orvane::qt::pages {

// Colour ("colorButton"), dash style ("styleCombo") and width in pixels ("widthSpin").
class LineDialog : public QDialog {
 public:
  explicit LineDialog(const LineValue& value, QWidget* parent = nullptr);
  LineValue value() const;

 private:
  ColorButton* color_;
  QComboBox* style_;
  QSpinBox* width_;
};

// A pattern for FormatNumber ("formatEdit", a few common ones in "presetCombo"), and how a
// sample number ("sampleEdit") looks with it ("previewLabel"), updated on every keystroke.
class LabelFormatDialog : public QDialog {
 public:
  explicit LabelFormatDialog(const std::string& pattern, QWidget* parent = nullptr);
  std::string pattern() const;

 private:
  void updatePreview();

  QLineEdit* pattern_;
  QComboBox* presets_;
  QLineEdit* sample_;
  QLabel* preview_;
};

// Visibility, shape, size, fill and edge of the data markers.
class MarkerDialog : public QDialog {
 public:
  explicit MarkerDialog(const MarkerValue& value, QWidget* parent = nullptr);
  MarkerValue value() const;

 private:
  QCheckBox* visible_;
  QComboBox* shape_;
  QDoubleSpinBox* size_;
  QCheckBox* fillVisible_;
  ColorButton* fillColor_;
  QCheckBox* edgeVisible_;
  LineButton* edgeLine_;
};

}  // namespace orvane::qt::pages
