// SurfaceWidget: the control in a Qt window. The control draws off screen at the widget's
// size in device pixels; each paint copies its picture into frame_ through a PainterDC
// and frame_ onto the widget, one bitmap pixel to one device pixel.

#include "orvane/qt/surface_widget.h"

#include <QClipboard>
#include <QCoreApplication>
#include <QCursor>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QMetaMethod>
#include <QMouseEvent>
#include <QPaintEvent>
#include <QPainter>
#include <QResizeEvent>
#include <QtGlobal>

#include <algorithm>
#include <exception>
#include <utility>

#include "core/flag_scope.h"
#include "orvane/core/error.h"
#include "orvane/qt/input_codes.h"
#include "orvane/qt/painter_dc.h"
#include "orvane/qt/property_pages.h"

namespace orvane::qt {

namespace {

using orvane::detail::FlagScope;

// The largest side the control draws, in pixels.
constexpr int kMaxPlotSide = 16384;

std::int16_t Code(int value) { return static_cast<std::int16_t>(value); }

}  // namespace

SurfaceWidget::SurfaceWidget(QWidget* parent)
    : QFrame(parent), surface_(std::make_unique<orvane::Surface>(static_cast<orvane::Host&>(*this))) {
  setFrameStyle(QFrame::NoFrame);
  setFocusPolicy(Qt::StrongFocus);
  setMouseTracking(true);  // the tracking cursor follows the pointer without a button
  setAttribute(Qt::WA_OpaquePaintEvent);
  setCursor(Qt::ArrowCursor);

  orvane::Surface& s = *surface_;
  connections_.push_back(s.MouseDown.Connect([this](std::int16_t b, std::int16_t k, float x, float y) {
    Q_EMIT mouseDown(b, k, x, y);
  }));
  connections_.push_back(s.MouseMove.Connect([this](std::int16_t b, std::int16_t k, float x, float y) {
    Q_EMIT mouseMove(b, k, x, y);
  }));
  connections_.push_back(s.MouseUp.Connect([this](std::int16_t b, std::int16_t k, float x, float y) {
    Q_EMIT mouseUp(b, k, x, y);
  }));
  connections_.push_back(s.DblClick.Connect([this] { Q_EMIT dblClick(); }));

  s.InitProperties();
  syncPlotSize();
}

SurfaceWidget::~SurfaceWidget() {
  connections_.clear();
  surface_.reset();  // the control may still talk to its host while it terminates
}

QSize SurfaceWidget::plotPixelSize() const {
  const QRect area = contentsRect();
  const qreal ratio = devicePixelRatioF();
  return {std::clamp(qRound(area.width() * ratio), 0, kMaxPlotSide),
          std::clamp(qRound(area.height() * ratio), 0, kMaxPlotSide)};
}

QSize SurfaceWidget::sizeHint() const { return {480, 360}; }
QSize SurfaceWidget::minimumSizeHint() const { return {64, 48}; }

template <class F>
void SurfaceWidget::guarded(F&& call) {
  QString message;
  try {
    std::forward<F>(call)();
    return;
  } catch (const orvane::Error& e) {
    message = QString::fromStdString(e.Description());
  } catch (const std::exception& e) {
    message = QString::fromUtf8(e.what());
  } catch (...) {
    message = QStringLiteral("An unknown error occurred.");
  }
  if (isSignalConnected(QMetaMethod::fromSignal(&SurfaceWidget::errorOccurred))) {
    Q_EMIT errorOccurred(message);
  } else {
    qWarning("orvane: %s", qUtf8Printable(message));
  }
}

void SurfaceWidget::syncPlotSize() {
  const QSize size = plotPixelSize();
  if (size == plotSize_) return;
  guarded([this, size] {
    surface_->OnResize(size.width(), size.height());
    plotSize_ = size;
  });
}

// --- The window's state ----------------------------------------------------------------

bool SurfaceWidget::Enabled() const { return isEnabled(); }
void SurfaceWidget::SetEnabled(bool value) { setEnabled(value); }

void SurfaceWidget::SetBorderStyle(EBorderStyle value) {
  borderStyle_ = value;
  applyFrame();
}

void SurfaceWidget::SetAppearance(EAppearance value) {
  appearance_ = value;
  applyFrame();
}

void SurfaceWidget::applyFrame() {
  if (borderStyle_ == orvNone) {
    setFrameStyle(QFrame::NoFrame);
  } else if (appearance_ == orv3d) {
    setFrameStyle(QFrame::Panel | QFrame::Sunken);  // a sunken edge two pixels wide
    setLineWidth(2);
  } else {
    setFrameStyle(QFrame::Box | QFrame::Plain);  // one flat line
    setLineWidth(1);
  }
  // The border takes its room from the plot: the control draws at the new size at once,
  // so that the refresh that applied the border already has it.
  if (!reporting_) syncPlotSize();
  update();
}

void SurfaceWidget::SetMousePointer(std::int32_t shape) {
  pointer_ = shape;
  setCursor(shape == kPointerHourglass ? Qt::WaitCursor : Qt::ArrowCursor);
}

// --- Notifications and services --------------------------------------------------------

void SurfaceWidget::PropertyChanged(const std::string& key) { Q_EMIT propertyChanged(QString::fromStdString(key)); }

void SurfaceWidget::RequestRepaint() { update(); }

bool SurfaceWidget::SetClipboardBitmap(const std::vector<std::uint8_t>& bitmap) {
  const QImage image = ImageFromBitmapBlock(bitmap);
  QClipboard* clipboard = QGuiApplication::clipboard();
  if (image.isNull() || clipboard == nullptr) return false;
  clipboard->setImage(image);
  return true;
}

void SurfaceWidget::ShowPropertyPages(orvane::Surface& surface, const std::vector<std::string>& settings) {
  PropertyPagesDialog dialog(surface, this);
  for (const std::string& setting : settings) {
    if (dialog.showPage(QString::fromStdString(setting))) break;
  }
  dialog.exec();
}

bool SurfaceWidget::ReportProgress(double fractionDone) {
  const FlagScope reporting(reporting_);
  Q_EMIT progress(fractionDone);
  // Events other than the user's keep the window alive (paints show the last picture);
  // never from inside a paint, which must not nest.
  if (!painting_ && !stopRequested_) QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
  const bool goOn = !stopRequested_;
  stopRequested_ = false;  // the control stops at the first refusal: the request is spent
  return goOn;
}

void SurfaceWidget::requestStop() {
  if (reporting_) stopRequested_ = true;
}

// --- Events ----------------------------------------------------------------------------

void SurfaceWidget::paintEvent(QPaintEvent* /*event*/) {
  const FlagScope painting(painting_);
  if (!reporting_) {
    syncPlotSize();
    if (frame_.size() != plotSize_ && plotSize_.isValid()) {
      frame_ = QImage(plotSize_, QImage::Format_RGB32);
      frame_.fill(Qt::white);
    }
    if (!frame_.isNull()) {
      QPainter onFrame(&frame_);
      PainterDC dc(onFrame);
      surface_->OnPaint(dc);
    }
  }
  QPainter painter(this);
  const QRect area = contentsRect();
  const qreal ratio = devicePixelRatioF();
  if (frame_.isNull() || frame_.size() != plotPixelSize()) painter.fillRect(area, Qt::white);
  if (!frame_.isNull()) {
    painter.setClipRect(area);
    painter.drawImage(QRectF(QPointF(area.topLeft()), QSizeF(frame_.size()) / ratio), frame_);
    painter.setClipping(false);
  }
  drawFrame(&painter);
}

void SurfaceWidget::resizeEvent(QResizeEvent* event) {
  QFrame::resizeEvent(event);
  if (!reporting_) syncPlotSize();  // else the next paint catches up
}

void SurfaceWidget::mousePressEvent(QMouseEvent* event) {
  syncPlotSize();
  const QPointF at = (event->position() - QPointF(contentsRect().topLeft())) * devicePixelRatioF();
  const auto button = Code(ButtonCode(event->button()));
  const auto shift = Code(ShiftCode(event->modifiers()));
  guarded([&] { surface_->OnMouseDown(button, shift, static_cast<float>(at.x()), static_cast<float>(at.y())); });
  event->accept();
}

void SurfaceWidget::mouseMoveEvent(QMouseEvent* event) {
  syncPlotSize();
  const QPointF at = (event->position() - QPointF(contentsRect().topLeft())) * devicePixelRatioF();
  const auto buttons = Code(ButtonCode(event->buttons()));
  const auto shift = Code(ShiftCode(event->modifiers()));
  guarded([&] { surface_->OnMouseMove(buttons, shift, static_cast<float>(at.x()), static_cast<float>(at.y())); });
  event->accept();
}

void SurfaceWidget::mouseReleaseEvent(QMouseEvent* event) {
  const QPointF at = (event->position() - QPointF(contentsRect().topLeft())) * devicePixelRatioF();
  const auto button = Code(ButtonCode(event->button()));
  const auto shift = Code(ShiftCode(event->modifiers()));
  guarded([&] { surface_->OnMouseUp(button, shift, static_cast<float>(at.x()), static_cast<float>(at.y())); });
  event->accept();
}

void SurfaceWidget::mouseDoubleClickEvent(QMouseEvent* event) {
  // The second press of a double click is the double click only, as a Windows control
  // sees it; its release comes as a mouse up.
  guarded([this] { surface_->OnDblClick(); });
  event->accept();
}

void SurfaceWidget::keyPressEvent(QKeyEvent* event) {
  const int code = WindowsKeyCode(event->key(), event->modifiers());
  bool used = false;
  if (code != 0) {
    syncPlotSize();
    const auto shift = Code(ShiftCode(event->modifiers()));
    guarded([&] { used = surface_->OnKeyDown(Code(code), shift); });
  }
  if (used) {
    event->accept();
  } else {
    QFrame::keyPressEvent(event);
  }
}

}  // namespace orvane::qt
