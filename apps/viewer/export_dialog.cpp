#include "export_dialog.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QSpinBox>

#include <algorithm>
#include <cmath>

namespace orvane::viewer {

namespace {

constexpr int kLargest = 16384;

}  // namespace

ExportDialog::ExportDialog(QSize start, QWidget* parent) : QDialog(parent) {
  setWindowTitle(tr("Export PNG"));
  if (start.width() < 1 || start.height() < 1) start = QSize(1200, 900);
  ratio_ = static_cast<double>(start.width()) / start.height();
  auto* form = new QFormLayout(this);

  auto* presets = new QComboBox;
  presets->setObjectName(QStringLiteral("presets"));
  presets->addItem(tr("As on the screen (%1 x %2)").arg(start.width()).arg(start.height()), start);
  for (const QSize size : {QSize(800, 600), QSize(1200, 900), QSize(1920, 1080), QSize(2400, 1800), QSize(3840, 2160)}) {
    presets->addItem(tr("%1 x %2").arg(size.width()).arg(size.height()), size);
  }
  form->addRow(tr("&Preset:"), presets);

  width_ = new QSpinBox;
  width_->setObjectName(QStringLiteral("width"));
  height_ = new QSpinBox;
  height_->setObjectName(QStringLiteral("height"));
  for (QSpinBox* box : {width_, height_}) {
    box->setRange(1, kLargest);
    box->setSuffix(tr(" px"));
  }
  width_->setValue(std::clamp(start.width(), 1, kLargest));
  height_->setValue(std::clamp(start.height(), 1, kLargest));
  form->addRow(tr("&Width:"), width_);
  form->addRow(tr("&Height:"), height_);
  keepRatio_ = new QCheckBox(tr("&Keep the proportions"));
  keepRatio_->setChecked(true);
  form->addRow(QString(), keepRatio_);

  connect(presets, &QComboBox::activated, this, [this, presets](int index) {
    const QSize size = presets->itemData(index).toSize();
    following_ = true;
    width_->setValue(size.width());
    height_->setValue(size.height());
    following_ = false;
    ratio_ = static_cast<double>(size.width()) / size.height();
  });
  connect(width_, &QSpinBox::valueChanged, this, [this] { follow(true); });
  connect(height_, &QSpinBox::valueChanged, this, [this] { follow(false); });
  connect(keepRatio_, &QCheckBox::toggled, this, [this](bool on) {
    if (on) ratio_ = static_cast<double>(width_->value()) / height_->value();
  });

  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
  connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
  form->addRow(buttons);
}

void ExportDialog::follow(bool widthChanged) {
  if (following_ || !keepRatio_->isChecked()) return;
  following_ = true;
  if (widthChanged) {
    height_->setValue(std::clamp(static_cast<int>(std::lround(width_->value() / ratio_)), 1, kLargest));
  } else {
    width_->setValue(std::clamp(static_cast<int>(std::lround(height_->value() * ratio_)), 1, kLargest));
  }
  following_ = false;
}

QSize ExportDialog::size() const { return {width_->value(), height_->value()}; }

}  // namespace orvane::viewer
