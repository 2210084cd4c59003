#pragma once

#include <QFrame>
#include <QImage>
#include <QSize>
#include <QString>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "orvane/control/surface.h"
#include "orvane/core/event.h"
#include "orvane/host/host.h"

namespace orvane::qt {

/// A Qt widget that hosts one orvane::Surface: it paints the control's picture at device
/// pixels, passes it the mouse, keys and size, and gives it the window's border, pointer,
/// clipboard and progress. Coordinates handed to the control and carried by the mouse
/// signals are device pixels from the top-left corner inside the border.
class SurfaceWidget : public QFrame, public orvane::Host {
  Q_OBJECT

 public:
  /// A control with its defaults (InitProperties), sized to the widget.
  explicit SurfaceWidget(QWidget* parent = nullptr);
  ~SurfaceWidget() override;
  SurfaceWidget(const SurfaceWidget&) = delete;
  SurfaceWidget& operator=(const SurfaceWidget&) = delete;

  /// The control and its whole object model.
  orvane::Surface& surface() noexcept { return *surface_; }
  /// The size of the control's picture in device pixels (inside the border).
  QSize plotPixelSize() const;
  /// 480 x 360: the size a layout starts the plot at.
  QSize sizeHint() const override;
  /// 64 x 48.
  QSize minimumSizeHint() const override;

  // --- orvane::Host, called by the control -----------------------------------------------

  /// Always true: the widget is the running program's.
  bool UserMode() const override { return true; }
  /// QWidget::isEnabled().
  bool Enabled() const override;
  /// QWidget::setEnabled().
  void SetEnabled(bool value) override;
  /// The border last applied.
  EBorderStyle BorderStyle() const override { return borderStyle_; }
  /// orvNone: no frame; orvFixedSingle: a frame (see SetAppearance); the plot shrinks to fit.
  void SetBorderStyle(EBorderStyle value) override;
  /// The look last applied.
  EAppearance Appearance() const override { return appearance_; }
  /// orvFlat: a plain one-pixel line; orv3d: a sunken two-pixel edge (with a border only).
  void SetAppearance(EAppearance value) override;
  /// The pointer shape last set.
  std::int32_t MousePointer() const override { return pointer_; }
  /// kPointerHourglass shows Qt::WaitCursor, any other shape Qt::ArrowCursor.
  void SetMousePointer(std::int32_t shape) override;
  /// Emits propertyChanged(key).
  void PropertyChanged(const std::string& key) override;
  /// QWidget::update().
  void RequestRepaint() override;
  /// Puts the bitmap on the QClipboard as an image; false for a malformed bitmap.
  bool SetClipboardBitmap(const std::vector<std::uint8_t>& bitmap) override;
  /// Opens the PropertyPagesDialog modally over the widget, at the first page a setting
  /// names ("Axes/Axis X", "Contouring"), else at the Surface page.
  void ShowPropertyPages(orvane::Surface& surface, const std::vector<std::string>& settings) override;
  /// Emits progress, processes non-input events, and answers false once after requestStop().
  bool ReportProgress(double fractionDone) override;

 public Q_SLOTS:
  /// Asks the long work in progress (a resampling run) to stop at its next progress
  /// report; does nothing when no work reports progress.
  void requestStop();

 Q_SIGNALS:
  /// A button went down (button 1 left, 2 right, 4 middle; shift 1 Shift, 2 Ctrl, 4 Alt).
  void mouseDown(int button, int shift, float x, float y);
  /// The pointer moved (button: the buttons held).
  void mouseMove(int button, int shift, float x, float y);
  /// A button came up.
  void mouseUp(int button, int shift, float x, float y);
  /// The plot was double-clicked.
  void dblClick();
  /// A persisted property changed; key is the key it is stored under.
  void propertyChanged(const QString& key);
  /// Long work has come this far (0 to 1).
  void progress(double fraction);
  /// The control refused what the mouse or keyboard asked (its error's description).
  void errorOccurred(const QString& message);

 protected:
  void paintEvent(QPaintEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void mouseDoubleClickEvent(QMouseEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;

 private:
  // Gives the control the widget's current size in device pixels when it changed.
  void syncPlotSize();
  // The frame for the border and look.
  void applyFrame();
  // Runs a call into the control, turning what it raises into errorOccurred.
  template <class F>
  void guarded(F&& call);

  std::unique_ptr<orvane::Surface> surface_;
  std::vector<orvane::Connection> connections_;
  QImage frame_;                   // the last picture, device pixels
  QSize plotSize_{-1, -1};         // the size the control was last given
  EBorderStyle borderStyle_ = orvNone;
  EAppearance appearance_ = orvFlat;
  std::int32_t pointer_ = kPointerDefault;
  bool painting_ = false;          // inside paintEvent
  bool reporting_ = false;         // inside ReportProgress
  bool stopRequested_ = false;
};

}  // namespace orvane::qt
