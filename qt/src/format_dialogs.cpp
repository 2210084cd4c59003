// The line, label-format and marker dialogs of the property pages.

#include "format_dialogs.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QDoubleSpinBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QSpinBox>
#include <QVBoxLayout>

#include <limits>

#include "orvane/core/format.h"

namespace orvane::qt::pages {

namespace {

// OK and Cancel under the form.
void AddButtons(QDialog& dialog, QVBoxLayout& layout) {
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, &dialog);
  buttons->setObjectName(QStringLiteral("buttons"));
  QObject::connect(buttons, &QDialogButtonBox::accepted, &dialog, &QDialog::accept);
  QObject::connect(buttons, &QDialogButtonBox::rejected, &dialog, &QDialog::reject);
  layout.addWidget(buttons);
}

template <class W>
W* Named(W* widget, const char* name) {
  widget->setObjectName(QString::fromLatin1(name));
  return widget;
}

}  // namespace

// --- Line -------------------------------------------------------------------------------

LineDialog::LineDialog(const LineValue& value, QWidget* parent) : QDialog(parent) {
  setObjectName(QStringLiteral("lineDialog"));
  setWindowTitle(tr("Line"));
  auto* layout = new QVBoxLayout(this);
  auto* form = new QFormLayout;
  layout->addLayout(form);

  color_ = Named(MakeColorButton(this), "colorButton");
  color_->setValue(value.color);
  style_ = Named(new QComboBox(this), "styleCombo");
  FillChoices(*style_, DrawStyleChoices());
  SelectChoice(*style_, value.drawStyle);
  // Any width is the line's; 0 draws no line.
  width_ = Named(new QSpinBox(this), "widthSpin");
  width_->setRange(std::numeric_limits<int>::min(), std::numeric_limits<int>::max());
  width_->setSuffix(tr(" px"));
  width_->setValue(value.width);

  form->addRow(tr("Colour"), color_);
  form->addRow(tr("Style"), style_);
  form->addRow(tr("Width"), width_);
  AddButtons(*this, *layout);
}

LineValue LineDialog::value() const { return {color_->value(), SelectedChoice(*style_), width_->value()}; }

// --- Label format -----------------------------------------------------------------------

LabelFormatDialog::LabelFormatDialog(const std::string& pattern, QWidget* parent) : QDialog(parent) {
  setObjectName(QStringLiteral("labelFormatDialog"));
  setWindowTitle(tr("Label format"));
  auto* layout = new QVBoxLayout(this);
  auto* form = new QFormLayout;
  layout->addLayout(form);

  presets_ = Named(new QComboBox(this), "presetCombo");
  presets_->addItem(tr("(custom)"));
  for (const char* preset : {"0", "0.0", "0.00", "#,##0.00", "0.00E+00", "0%", "General Number"}) {
    presets_->addItem(QString::fromLatin1(preset));
  }
  pattern_ = Named(new QLineEdit(QString::fromStdString(pattern), this), "formatEdit");
  sample_ = Named(new QLineEdit(QStringLiteral("1234.5678"), this), "sampleEdit");
  preview_ = Named(new QLabel(this), "previewLabel");
  preview_->setTextInteractionFlags(Qt::TextSelectableByMouse);

  form->addRow(tr("Common formats"), presets_);
  form->addRow(tr("Format"), pattern_);
  form->addRow(tr("Sample value"), sample_);
  form->addRow(tr("Preview"), preview_);
  AddButtons(*this, *layout);

  connect(presets_, &QComboBox::activated, this, [this](int index) {
    if (index > 0) pattern_->setText(presets_->itemText(index));
  });
  connect(pattern_, &QLineEdit::textChanged, this, [this] { updatePreview(); });
  connect(sample_, &QLineEdit::textChanged, this, [this] { updatePreview(); });
  updatePreview();
}

std::string LabelFormatDialog::pattern() const { return pattern_->text().toStdString(); }

void LabelFormatDialog::updatePreview() {
  try {
    const double sample = ParseNumber(sample_->text());
    preview_->setText(QString::fromStdString(orvane::FormatNumber(sample, pattern())));
  } catch (const std::exception&) {
    preview_->setText(tr("(the sample is not a number)"));
  }
}

// --- Marker -----------------------------------------------------------------------------

MarkerDialog::MarkerDialog(const MarkerValue& value, QWidget* parent) : QDialog(parent) {
  setObjectName(QStringLiteral("markerDialog"));
  setWindowTitle(tr("Data markers"));
  auto* layout = new QVBoxLayout(this);
  auto* form = new QFormLayout;
  layout->addLayout(form);

  visible_ = Named(new QCheckBox(this), "Visible");
  visible_->setChecked(value.visible);
  shape_ = Named(new QComboBox(this), "Shape");
  FillChoices(*shape_, MarkerShapeChoices());
  SelectChoice(*shape_, value.shape);
  size_ = Named(new QDoubleSpinBox(this), "Size");
  size_->setRange(0.0, 1.0e6);
  size_->setDecimals(6);
  size_->setValue(value.size);
  fillVisible_ = Named(new QCheckBox(this), "FillVisible");
  fillVisible_->setChecked(value.fillVisible);
  fillColor_ = Named(MakeColorButton(this), "FillColor");
  fillColor_->setValue(value.fillColor);
  edgeVisible_ = Named(new QCheckBox(this), "EdgeVisible");
  edgeVisible_->setChecked(value.edgeVisible);
  edgeLine_ = Named(MakeLineButton(this), "EdgeLine");
  edgeLine_->setValue(value.edgeLine);

  form->addRow(tr("Visible"), visible_);
  form->addRow(tr("Shape"), shape_);
  form->addRow(tr("Size"), size_);
  form->addRow(tr("Filled"), fillVisible_);
  form->addRow(tr("Fill colour"), fillColor_);
  form->addRow(tr("Edge visible"), edgeVisible_);
  form->addRow(tr("Edge line"), edgeLine_);
  AddButtons(*this, *layout);
}

MarkerValue MarkerDialog::value() const {
  MarkerValue v;
  v.visible = visible_->isChecked();
  v.shape = SelectedChoice(*shape_);
  v.size = size_->value();
  v.fillVisible = fillVisible_->isChecked();
  v.fillColor = fillColor_->value();
  v.edgeVisible = edgeVisible_->isChecked();
  v.edgeLine = edgeLine_->value();
  return v;
}

}  // namespace orvane::qt::pages
