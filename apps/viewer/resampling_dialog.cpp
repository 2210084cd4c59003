#include "resampling_dialog.h"

#include <algorithm>
#include <cmath>

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QDoubleSpinBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QPushButton>
#include <QSpinBox>
#include <QVBoxLayout>

#include <limits>
#include <utility>

#include "orvane/resample/resampling.h"

namespace orvane::viewer {

ResamplingSettings ResamplingSettings::Of(const Resampling& r) {
  ResamplingSettings s;
  s.type = r.ResamplerType();
  s.intervals = r.IntervalCount();
  s.power = r.InverseDistance().WeightingPower();
  s.model = r.Kriging().ModelSemiVariogram();
  s.autoRange = r.Kriging().AutoSetRange();
  s.nugget = r.Kriging().Nugget();
  s.range = r.Kriging().Range();
  s.sill = r.Kriging().Sill();
  s.tautness = r.NNGridR().Taughtness();
  s.gradients = r.NNGridR().UseGradients();
  s.blankOutsideHull = r.BlankOutsideHull();
  return s;
}

void ResamplingSettings::ApplyTo(Resampling& r) const {
  r.SetIntervalCount(intervals);
  r.InverseDistance().SetWeightingPower(power);
  r.Kriging().SetModelSemiVariogram(model);
  r.Kriging().SetAutoSetRange(autoRange);
  r.Kriging().SetNugget(nugget);
  r.Kriging().SetRange(range);
  r.Kriging().SetSill(sill);
  r.NNGridR().SetTaughtness(tautness);
  r.NNGridR().SetUseGradients(gradients);
  r.SetBlankOutsideHull(blankOutsideHull);
  r.SetResamplerType(type);
}

namespace {

QDoubleSpinBox* NumberBox(double value, double min, double max, int decimals, const QString& name) {
  auto* box = new QDoubleSpinBox;
  box->setObjectName(name);
  box->setRange(min, max);
  box->setDecimals(decimals);
  box->setValue(value);
  box->setAccelerated(true);
  return box;
}

// Sets a fitted value with enough decimals for six significant digits of it (at least
// the box's own), so that small values do not round to 0.
void ShowFitted(QDoubleSpinBox* box, double value) {
  if (value > 0.0) {
    const int wanted = 5 - static_cast<int>(std::floor(std::log10(value)));
    box->setDecimals(std::clamp(wanted, box->decimals(), 15));
  }
  box->setValue(value);
}

}  // namespace

ResamplingDialog::ResamplingDialog(const ResamplingSettings& settings, QWidget* parent, Fitter fitter)
    : QDialog(parent), initial_(settings), fitter_(std::move(fitter)) {
  setWindowTitle(tr("Resampling Options"));
  auto* layout = new QVBoxLayout(this);

  auto* common = new QFormLayout;
  method_ = new QComboBox;
  method_->setObjectName(QStringLiteral("method"));
  method_->addItems({tr("None: draw the points as they are"), tr("Inverse distance"), tr("Kriging"),
                     tr("Natural neighbour")});
  method_->setCurrentIndex(std::clamp(settings.type, 0, 3));
  common->addRow(tr("&Method:"), method_);
  intervals_ = new QSpinBox;
  intervals_->setObjectName(QStringLiteral("intervals"));
  intervals_->setRange(1, 4000);
  intervals_->setValue(std::clamp(settings.intervals, 1, 4000));
  intervals_->setSuffix(tr(" intervals"));
  intervals_->setToolTip(tr("The grid has this many intervals along X and along Y."));
  common->addRow(tr("&Grid:"), intervals_);
  blankOutsideHull_ = new QCheckBox(tr("Leave cells outside the data's hull &blank"));
  blankOutsideHull_->setObjectName(QStringLiteral("blankOutsideHull"));
  blankOutsideHull_->setToolTip(tr("Draw only where the points are: no values extrapolated beyond their convex hull."));
  blankOutsideHull_->setChecked(settings.blankOutsideHull);
  connect(blankOutsideHull_, &QCheckBox::clicked, this, [this] { blankTouched_ = true; });
  common->addRow(QString(), blankOutsideHull_);
  layout->addLayout(common);

  constexpr double big = 1e12;
  auto* idw = new QGroupBox(tr("Inverse distance"));
  auto* idwForm = new QFormLayout(idw);
  power_ = NumberBox(settings.power, 0.0, 64.0, 3, QStringLiteral("power"));
  power_->setToolTip(tr("Weights fall with the distance to this power."));
  idwForm->addRow(tr("&Power:"), power_);

  auto* kriging = new QGroupBox(tr("Kriging"));
  auto* krigingForm = new QFormLayout(kriging);
  model_ = new QComboBox;
  model_->setObjectName(QStringLiteral("model"));
  model_->addItems({tr("Linear"), tr("Spherical"), tr("Exponential"), tr("Gaussian")});
  model_->setCurrentIndex(std::clamp(settings.model, 0, 3));
  krigingForm->addRow(tr("Semi-variogram &model:"), model_);
  autoRange_ = new QCheckBox(tr("Fit the range to the data"));
  autoRange_->setObjectName(QStringLiteral("autoRange"));
  autoRange_->setChecked(settings.autoRange);
  krigingForm->addRow(QString(), autoRange_);
  nugget_ = NumberBox(settings.nugget, 0.0, big, 4, QStringLiteral("nugget"));
  krigingForm->addRow(tr("&Nugget:"), nugget_);
  range_ = NumberBox(settings.range, 0.0, big, 4, QStringLiteral("range"));
  krigingForm->addRow(tr("&Range:"), range_);
  sill_ = NumberBox(settings.sill, 0.0, big, 4, QStringLiteral("sill"));
  krigingForm->addRow(tr("&Sill:"), sill_);
  connect(autoRange_, &QCheckBox::toggled, range_, &QWidget::setDisabled);
  range_->setDisabled(settings.autoRange);
  fit_ = new QPushButton(tr("&Fit to data"));
  fit_->setObjectName(QStringLiteral("fitToData"));
  fit_->setToolTip(tr("The model, nugget, sill and range that fit the data's variogram best (weighted least squares)."));
  fit_->setEnabled(static_cast<bool>(fitter_));
  connect(fit_, &QPushButton::clicked, this, &ResamplingDialog::fitToData);
  krigingForm->addRow(QString(), fit_);

  auto* nn = new QGroupBox(tr("Natural neighbour"));
  auto* nnForm = new QFormLayout(nn);
  tautness_ = NumberBox(settings.tautness, 0.0, 1e6, 3, QStringLiteral("tautness"));
  tautness_->setToolTip(tr("How tightly the surface is drawn between the points."));
  nnForm->addRow(tr("&Tautness:"), tautness_);
  gradients_ = new QCheckBox(tr("Blend gradients"));
  gradients_->setObjectName(QStringLiteral("gradients"));
  gradients_->setChecked(settings.gradients);
  nnForm->addRow(QString(), gradients_);

  pages_[0] = idw;
  pages_[1] = kriging;
  pages_[2] = nn;
  for (QWidget* page : pages_) layout->addWidget(page);
  connect(method_, &QComboBox::currentIndexChanged, this, &ResamplingDialog::showMethod);
  showMethod(method_->currentIndex());

  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
  connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
  layout->addStretch(1);
  layout->addWidget(buttons);
}

void ResamplingDialog::showMethod(int index) {
  intervals_->setEnabled(index != 0);
  blankOutsideHull_->setEnabled(index != 0);
  // Natural neighbour knows nothing beyond the hull: blank there unless asked otherwise.
  if (!blankTouched_ && index != 0 && index != initial_.type) blankOutsideHull_->setChecked(index == 3);
  for (int k = 0; k < 3; ++k) pages_[k]->setEnabled(index == k + 1);
}

void ResamplingDialog::fitToData() {
  if (!fitter_) return;
  const std::optional<VariogramModel> best = fitter_();
  if (!best) {
    fit_->setToolTip(tr("No variogram could be fitted to these data."));
    return;
  }
  model_->setCurrentIndex(best->model);
  autoRange_->setChecked(false);
  ShowFitted(nugget_, best->nugget);
  ShowFitted(sill_, best->nugget + best->psill);
  ShowFitted(range_, best->range);
}

ResamplingSettings ResamplingDialog::settings() const {
  ResamplingSettings s = initial_;
  s.type = method_->currentIndex();
  s.intervals = intervals_->value();
  s.power = power_->value();
  s.model = model_->currentIndex();
  s.autoRange = autoRange_->isChecked();
  s.nugget = nugget_->value();
  s.range = range_->value();
  s.sill = sill_->value();
  s.tautness = tautness_->value();
  s.gradients = gradients_->isChecked();
  s.blankOutsideHull = blankOutsideHull_->isChecked();
  return s;
}

}  // namespace orvane::viewer
