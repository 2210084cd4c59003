#pragma once

// Asks for the size of an exported picture.

#include <QDialog>
#include <QSize>

class QCheckBox;
class QSpinBox;

namespace orvane::viewer {

class ExportDialog : public QDialog {
  Q_OBJECT

 public:
  // Starts at the size the plot has on the screen.
  explicit ExportDialog(QSize start, QWidget* parent = nullptr);
  QSize size() const;

 private:
  void follow(bool widthChanged);

  QSpinBox* width_ = nullptr;
  QSpinBox* height_ = nullptr;
  QCheckBox* keepRatio_ = nullptr;
  double ratio_ = 4.0 / 3.0;
  bool following_ = false;
};

}  // namespace orvane::viewer
