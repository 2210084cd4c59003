#pragma once

// The resampling options the viewer offers, and a copy of them that can be put back
// when a long run is cancelled.

#include <QDialog>

#include <cstdint>
#include <functional>
#include <optional>

#include "orvane/resample/variogram.h"

namespace orvane {
class Resampling;
}
class QCheckBox;
class QComboBox;
class QDoubleSpinBox;
class QPushButton;
class QSpinBox;

namespace orvane::viewer {

// The settings of a data set's resampling that the viewer changes.
struct ResamplingSettings {
  std::int32_t type = 0;
  std::int32_t intervals = 0;
  double power = 0.0;
  std::int32_t model = 0;
  bool autoRange = true;
  double nugget = 0.0;
  double range = 0.0;
  double sill = 0.0;
  double tautness = 0.0;
  bool gradients = false;
  bool blankOutsideHull = false;

  static ResamplingSettings Of(const Resampling& resampling);
  // Sets each value through its let (each may raise orvane::Error).
  void ApplyTo(Resampling& resampling) const;
};

// Edits the grid size and the parameters of each method. Values are checked by the
// resampling's own lets when the caller applies them.
class ResamplingDialog : public QDialog {
  Q_OBJECT

 public:
  // Finds the model that fits the data's variogram best; nothing when it cannot.
  using Fitter = std::function<std::optional<VariogramModel>()>;
  // With a fitter, the kriging page's "Fit to data" fills in its model.
  ResamplingDialog(const ResamplingSettings& settings, QWidget* parent = nullptr, Fitter fitter = {});
  ResamplingSettings settings() const;

 private:
  void showMethod(int index);
  void fitToData();

  ResamplingSettings initial_;
  Fitter fitter_;
  QPushButton* fit_ = nullptr;
  QComboBox* method_ = nullptr;
  QSpinBox* intervals_ = nullptr;
  QDoubleSpinBox* power_ = nullptr;
  QComboBox* model_ = nullptr;
  QCheckBox* autoRange_ = nullptr;
  QDoubleSpinBox* nugget_ = nullptr;
  QDoubleSpinBox* range_ = nullptr;
  QDoubleSpinBox* sill_ = nullptr;
  QDoubleSpinBox* tautness_ = nullptr;
  QCheckBox* gradients_ = nullptr;
  QCheckBox* blankOutsideHull_ = nullptr;
  bool blankTouched_ = false;  // the user set it: a change of method leaves it
  QWidget* pages_[3] = {};
};

}  // namespace orvane::viewer
