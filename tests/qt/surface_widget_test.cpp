// The widget as host of the control: what it paints, the mouse and keys it passes on, the
// signals it emits, the window state the control sets, and its clipboard and progress
// (the property pages have tests of their own).

#include <gtest/gtest.h>

#include <QApplication>
#include <QClipboard>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QSignalSpy>
#include <QTest>

#include <cmath>
#include <cstdint>
#include <string>
#include <vector>

#include "orvane/axes/axes.h"
#include "orvane/core/color.h"
#include "orvane/core/error.h"
#include "orvane/data/data_set.h"
#include "orvane/resample/resampling.h"
#include "widget_fixture.h"

namespace orvane::qt {
namespace {

using testing::CountDifferent;
using testing::CountSaturated;
using testing::Grab;
using testing::Shown;

// Scattered points on a jittered lattice over [0, 2] x [0, 2], z = x - y, resampled by
// inverse distance onto a grid of the given intervals. Only the control's own thread
// reports progress, and the resampler's other threads may take every column of a small
// grid on a busy machine: grids of some 200 intervals give it plenty to report.
void Resampled(Surface& surface, std::int32_t intervals) {
  std::vector<double> x, y, z;
  constexpr int kSide = 20;
  for (int i = 0; i < kSide; ++i) {
    for (int j = 0; j < kSide; ++j) {
      const double xi = 2.0 * i / (kSide - 1) + 0.01 * std::sin(i * 7.0 + j);
      const double yj = 2.0 * j / (kSide - 1) + 0.01 * std::cos(i + j * 5.0);
      x.push_back(xi);
      y.push_back(yj);
      z.push_back(xi - yj);
    }
  }
  DataSet& data = surface.DataSets().Item(0);
  data.DataAsSparseGridSet(static_cast<std::int32_t>(x.size()), x, y, z);
  data.Resampling().SetResamplerType(orvResamplerTypeInverseDistance);
  data.Resampling().SetIntervalCount(intervals);
}

// A mouse move with the given buttons held, delivered as the window system would.
void Move(QWidget& widget, QPoint at, Qt::MouseButtons buttons, Qt::KeyboardModifiers modifiers = {}) {
  QMouseEvent move(QEvent::MouseMove, QPointF(at), widget.mapToGlobal(QPointF(at)), Qt::NoButton, buttons, modifiers);
  QCoreApplication::sendEvent(&widget, &move);
}

// Whether a key press was taken by the widget.
bool KeyTaken(QWidget& widget, Qt::Key key, Qt::KeyboardModifiers modifiers = {}) {
  QKeyEvent press(QEvent::KeyPress, key, modifiers);
  QCoreApplication::sendEvent(&widget, &press);
  return press.isAccepted();
}

// The arguments of a mouse signal: the button, the shift keys and the position.
void ExpectMouse(const QList<QVariant>& args, int button, int shift, double x, double y) {
  EXPECT_EQ(args.at(0).toInt(), button);
  EXPECT_EQ(args.at(1).toInt(), shift);
  EXPECT_FLOAT_EQ(args.at(2).toFloat(), static_cast<float>(x));
  EXPECT_FLOAT_EQ(args.at(3).toFloat(), static_cast<float>(y));
}

QImage ClipboardImage() { return QGuiApplication::clipboard()->image().convertToFormat(QImage::Format_RGB32); }

// --- Painting --------------------------------------------------------------------------

TEST(SurfaceWidgetPaint, TheGrabIsTheControlsPictureWithTheSampleInColourInTheMiddle) {
  Shown s(320, 240);
  const QImage empty = Grab(s.widget);
  ASSERT_EQ(empty.size(), s.widget.plotPixelSize());
  EXPECT_EQ(CountSaturated(empty, empty.rect()), 0);  // no data: white, black and greys

  s.surface().ShowSampleData();
  const QImage sample = Grab(s.widget);
  const QSize size = s.widget.plotPixelSize();
  const QImage expected =
      testing::HeadlessPicture(size.width(), size.height(), [](Surface& surface) { surface.ShowSampleData(); });
  EXPECT_EQ(CountDifferent(sample, expected), 0);
  // The coloured surface fills much of the middle of the picture.
  const QRect middle(size.width() / 3, size.height() / 3, size.width() / 3, size.height() / 3);
  EXPECT_GT(CountSaturated(sample, middle), middle.width() * middle.height() / 4);
  // Corners are background.
  EXPECT_EQ(sample.pixel(1, size.height() - 2), qRgb(255, 255, 255));
}

TEST(SurfaceWidgetPaint, ANewBackColorShowsAfterTheRefreshAndTheWidgetFollowsItsSize) {
  Shown s(200, 160);
  s.surface().SetBackColor(Rgb(0, 0, 255));
  s.surface().Refresh();
  QImage picture = Grab(s.widget);
  EXPECT_EQ(picture.pixel(2, picture.height() - 3), qRgb(0, 0, 255));

  s.widget.resize(260, 120);
  QApplication::processEvents();
  picture = Grab(s.widget);
  EXPECT_EQ(picture.size(), QSize(260, 120) * s.ratio());
  EXPECT_EQ(s.widget.plotPixelSize(), picture.size());
  EXPECT_EQ(picture.pixel(picture.width() - 2, picture.height() - 2), qRgb(0, 0, 255));
}

// --- Mouse and keys --------------------------------------------------------------------

TEST(SurfaceWidgetInput, ALeftDragTurnsThePlotAndRedrawsAtOnceARightDragDoesNot) {
  Shown s(300, 240);
  s.surface().ShowSampleData();
  const QImage before = Grab(s.widget);
  const auto start = testing::Orientation(s.surface());
  QTest::mousePress(&s.widget, Qt::RightButton, {}, QPoint(150, 120));
  QTest::mouseMove(&s.widget, QPoint(230, 150));
  QTest::mouseRelease(&s.widget, Qt::RightButton, {}, QPoint(230, 150));
  EXPECT_EQ(testing::Orientation(s.surface()), start);
  EXPECT_EQ(CountDifferent(before, Grab(s.widget)), 0);

  QTest::mousePress(&s.widget, Qt::LeftButton, {}, QPoint(150, 120));
  QTest::mouseMove(&s.widget, QPoint(190, 135));
  QTest::mouseMove(&s.widget, QPoint(230, 150));
  QTest::mouseRelease(&s.widget, Qt::LeftButton, {}, QPoint(230, 150));
  // The trackball turned as far as the control's own drag through those pixels turns it.
  const double r = s.ratio();
  const auto turned = testing::Orientation(s.surface());
  EXPECT_NE(turned, start);
  testing::ExpectSameOrientation(
      turned, testing::DraggedOrientation({QPointF(150, 120) * r, QPointF(190, 135) * r, QPointF(230, 150) * r},
                                          qRound(300 * r), qRound(240 * r)));
  const QImage after = Grab(s.widget);
  EXPECT_GT(CountDifferent(before, after), after.width() * after.height() / 50);

  // Once the button is up, moving turns nothing.
  Move(s.widget, QPoint(40, 40), Qt::NoButton);
  EXPECT_EQ(testing::Orientation(s.surface()), turned);
  EXPECT_EQ(CountDifferent(after, Grab(s.widget)), 0);
}

TEST(SurfaceWidgetInput, ThePadsPlusAndMinusZoomAndThePlainOnesAreLeftToTheParent) {
  Shown s;
  s.surface().ShowSampleData();
  const QImage before = Grab(s.widget);
  QSignalSpy keys(&s.widget, &SurfaceWidget::propertyChanged);

  QTest::keyClick(&s.widget, Qt::Key_Plus, Qt::KeypadModifier);
  EXPECT_DOUBLE_EQ(s.surface().Zoom(), 1.2);
  ASSERT_EQ(keys.count(), 1);
  EXPECT_EQ(keys.at(0).at(0).toString(), QStringLiteral("Zoom"));
  EXPECT_GT(CountDifferent(before, Grab(s.widget)), 0);

  EXPECT_FALSE(KeyTaken(s.widget, Qt::Key_Plus));
  EXPECT_FALSE(KeyTaken(s.widget, Qt::Key_Minus));
  EXPECT_DOUBLE_EQ(s.surface().Zoom(), 1.2);

  EXPECT_TRUE(KeyTaken(s.widget, Qt::Key_Plus, Qt::KeypadModifier));
  EXPECT_DOUBLE_EQ(s.surface().Zoom(), 1.2 * 1.2);
  for (int i = 0; i < 3; ++i) QTest::keyClick(&s.widget, Qt::Key_Minus, Qt::KeypadModifier);
  EXPECT_DOUBLE_EQ(s.surface().Zoom(), 1.0);  // never below 1
  EXPECT_EQ(CountDifferent(before, Grab(s.widget)), 0);
}

// Each key's code is the input codes' test, and what it does the control's.
TEST(SurfaceWidgetInput, ArrowPresetAndLetterKeysReachTheControlWhateverTheirCase) {
  Shown s;
  s.surface().ShowSampleData();
  Surface& surface = s.surface();
  QTest::keyClick(&s.widget, Qt::Key_Up);
  EXPECT_EQ(surface.RotationX(), 65);
  QTest::keyClick(&s.widget, Qt::Key_PageDown);
  EXPECT_EQ(surface.RotationZ(), 210);
  QTest::keyClick(&s.widget, 'd');  // lower case
  EXPECT_NEAR(surface.LightingIntensitySpotlight(), 0.9, 1e-12);
  QTest::keyClick(&s.widget, Qt::Key_S, Qt::ShiftModifier);
  EXPECT_NEAR(surface.LightingIntensitySpotlight(), 1.0, 1e-12);
  EXPECT_FALSE(KeyTaken(s.widget, Qt::Key_X));  // not one of the control's keys
}

// --- Signals ---------------------------------------------------------------------------

TEST(SurfaceWidgetSignals, MouseSignalsCarryTheButtonTheShiftKeysAndDevicePixelsAndADoubleClickIsOneDblClick) {
  Shown s;
  const double r = s.ratio();
  QSignalSpy down(&s.widget, &SurfaceWidget::mouseDown);
  QSignalSpy move(&s.widget, &SurfaceWidget::mouseMove);
  QSignalSpy up(&s.widget, &SurfaceWidget::mouseUp);
  QSignalSpy dbl(&s.widget, &SurfaceWidget::dblClick);

  QTest::mousePress(&s.widget, Qt::RightButton, Qt::ShiftModifier | Qt::ControlModifier, QPoint(30, 40));
  ASSERT_EQ(down.count(), 1);
  ExpectMouse(down.at(0), 2, 3, 30 * r, 40 * r);
  Move(s.widget, QPoint(35, 41), Qt::RightButton | Qt::MiddleButton, Qt::AltModifier);
  ASSERT_EQ(move.count(), 1);
  ExpectMouse(move.at(0), 6, 4, 35 * r, 41 * r);  // the buttons held
  QTest::mouseRelease(&s.widget, Qt::RightButton, {}, QPoint(36, 42));
  ASSERT_EQ(up.count(), 1);
  ExpectMouse(up.at(0), 2, 0, 36 * r, 42 * r);
  // A move without a button reaches the control too (the widget tracks the mouse).
  Move(s.widget, QPoint(5, 6), Qt::NoButton);
  ASSERT_EQ(move.count(), 2);
  ExpectMouse(move.at(1), 0, 0, 5 * r, 6 * r);

  // A double click: one press, one DblClick in place of the second press, two releases.
  const QPoint at(50, 50);
  QTest::mousePress(&s.widget, Qt::LeftButton, {}, at);
  QTest::mouseRelease(&s.widget, Qt::LeftButton, {}, at);
  QTest::mouseDClick(&s.widget, Qt::LeftButton, {}, at);
  QTest::mouseRelease(&s.widget, Qt::LeftButton, {}, at);
  EXPECT_EQ(down.count(), 2);
  EXPECT_EQ(dbl.count(), 1);
  EXPECT_EQ(up.count(), 3);
}

TEST(SurfaceWidgetSignals, WhatTheControlRefusesAfterAKeyIsReportedAndTheKeyStillCounts) {
  Shown s;
  Surface& surface = s.surface();
  surface.SetAutoRefresh(true);
  surface.Axes().XAxis().SetAutoRangeType(orvAutoRangeOff);  // 0 to 0 without data
  EXPECT_THROW(surface.Axes().XAxis().SetMin(0.5), Error);
  QSignalSpy errors(&s.widget, &SurfaceWidget::errorOccurred);
  QSignalSpy keys(&s.widget, &SurfaceWidget::propertyChanged);
  QTest::keyClick(&s.widget, Qt::Key_Plus, Qt::KeypadModifier);
  ASSERT_EQ(errors.count(), 1);
  EXPECT_TRUE(errors.at(0).at(0).toString().contains(QStringLiteral("X Axis minimum is greater than maximum")))
      << errors.at(0).at(0).toString().toStdString();
  EXPECT_DOUBLE_EQ(surface.Zoom(), 1.2);
  ASSERT_EQ(keys.count(), 1);
  EXPECT_EQ(keys.at(0).at(0).toString(), QStringLiteral("Zoom"));
}

// --- The window's state ----------------------------------------------------------------

TEST(SurfaceWidgetHost, EnabledIsTheWidgetsOwnAndADisabledWidgetTakesNoInput) {
  Shown s;
  QSignalSpy keys(&s.widget, &SurfaceWidget::propertyChanged);
  QSignalSpy down(&s.widget, &SurfaceWidget::mouseDown);
  s.surface().SetEnabled(false);
  EXPECT_FALSE(s.widget.isEnabled());
  EXPECT_FALSE(s.surface().Enabled());
  ASSERT_EQ(keys.count(), 1);
  EXPECT_EQ(keys.at(0).at(0).toString(), QStringLiteral("Enabled"));
  QKeyEvent plus(QEvent::KeyPress, Qt::Key_Plus, Qt::KeypadModifier);
  QCoreApplication::sendEvent(&s.widget, &plus);
  QMouseEvent press(QEvent::MouseButtonPress, QPointF(10, 10), s.widget.mapToGlobal(QPointF(10, 10)), Qt::LeftButton,
                    Qt::LeftButton, Qt::NoModifier);
  QCoreApplication::sendEvent(&s.widget, &press);
  EXPECT_DOUBLE_EQ(s.surface().Zoom(), 1.0);
  EXPECT_EQ(down.count(), 0);

  s.widget.setEnabled(true);
  EXPECT_TRUE(s.surface().Enabled());
  QTest::keyClick(&s.widget, Qt::Key_Plus, Qt::KeypadModifier);
  EXPECT_DOUBLE_EQ(s.surface().Zoom(), 1.2);
}

TEST(SurfaceWidgetHost, TheBorderAndItsLookBecomeTheFrameAndTakeTheirRoomFromThePlot) {
  QGuiApplication::clipboard()->clear();
  Shown s(200, 150);
  const double r = s.ratio();
  Surface& surface = s.surface();
  surface.ShowSampleData();

  surface.SetBorderStyle(orvFixedSingle);
  EXPECT_EQ(s.widget.frameWidth(), 0);  // applied by the next refresh
  surface.Refresh();
  EXPECT_EQ(s.widget.BorderStyle(), orvFixedSingle);
  EXPECT_EQ(s.widget.frameWidth(), 1);
  EXPECT_EQ(s.widget.frameShadow(), QFrame::Plain);
  EXPECT_EQ(s.widget.contentsRect(), QRect(1, 1, 198, 148));
  const QSize inner = s.widget.plotPixelSize();
  EXPECT_EQ(inner, QSize(qRound(198 * r), qRound(148 * r)));
  // The refresh that brought the border already drew at the smaller size.
  ASSERT_TRUE(surface.CopyToClipboard());
  const QImage picture = ClipboardImage();
  EXPECT_EQ(picture.size(), inner);
  const QImage grab = Grab(s.widget);
  const int edge = qRound(r);
  EXPECT_EQ(CountDifferent(grab.copy(edge, edge, inner.width(), inner.height()), picture), 0);
  EXPECT_EQ(grab.pixel(0, grab.height() / 2), s.widget.palette().color(QPalette::WindowText).rgb());

  // Mouse positions count from inside the border.
  QSignalSpy down(&s.widget, &SurfaceWidget::mouseDown);
  QTest::mousePress(&s.widget, Qt::MiddleButton, {}, QPoint(10, 20));
  QTest::mouseRelease(&s.widget, Qt::MiddleButton, {}, QPoint(10, 20));
  ASSERT_EQ(down.count(), 1);
  ExpectMouse(down.at(0), 4, 0, 9 * r, 19 * r);

  surface.SetAppearance(orv3d);
  surface.Refresh();
  EXPECT_EQ(s.widget.Appearance(), orv3d);
  EXPECT_EQ(s.widget.frameWidth(), 2);
  EXPECT_EQ(s.widget.frameShadow(), QFrame::Sunken);
  EXPECT_EQ(s.widget.plotPixelSize(), QSize(qRound(196 * r), qRound(146 * r)));

  surface.SetBorderStyle(orvNone);
  surface.Refresh();
  EXPECT_EQ(s.widget.frameWidth(), 0);
  EXPECT_EQ(s.widget.plotPixelSize(), QSize(200, 150) * r);
  ASSERT_TRUE(surface.CopyToClipboard());
  EXPECT_EQ(ClipboardImage().size(), QSize(200, 150) * r);
}

TEST(SurfaceWidgetHost, ThePointerIsTheWaitCursorWhileTheControlWorksAndComesBackAfter) {
  Shown s;
  EXPECT_EQ(s.widget.cursor().shape(), Qt::ArrowCursor);
  std::vector<Qt::CursorShape> during;
  std::vector<std::int32_t> pointers;
  QObject::connect(&s.widget, &SurfaceWidget::progress, &s.widget, [&] {
    during.push_back(s.widget.cursor().shape());
    pointers.push_back(s.widget.MousePointer());
  });
  Resampled(s.surface(), 200);
  s.surface().Refresh();
  ASSERT_FALSE(during.empty());
  for (const Qt::CursorShape shape : during) EXPECT_EQ(shape, Qt::WaitCursor);
  for (const std::int32_t pointer : pointers) EXPECT_EQ(pointer, kPointerHourglass);
  EXPECT_EQ(s.widget.cursor().shape(), Qt::ArrowCursor);
  EXPECT_EQ(s.widget.MousePointer(), kPointerDefault);

  // A refresh that fails gives the pointer back too.
  s.surface().Axes().XAxis().SetAutoRangeType(orvAutoRangeOff);
  s.surface().Axes().XAxis().SetMin(9.0);
  s.surface().Axes().XAxis().SetMax(8.0);
  EXPECT_THROW(s.surface().Refresh(), Error);
  EXPECT_EQ(s.widget.cursor().shape(), Qt::ArrowCursor);

  s.widget.SetMousePointer(kPointerHourglass);
  EXPECT_EQ(s.widget.cursor().shape(), Qt::WaitCursor);
  s.widget.SetMousePointer(kPointerDefault);
  EXPECT_EQ(s.widget.cursor().shape(), Qt::ArrowCursor);
}

// --- Services --------------------------------------------------------------------------

TEST(SurfaceWidgetServices, ProgressIsSignalledAndAStopEndsTheRunWithError18KeepingThePicture) {
  Shown s;
  Surface& surface = s.surface();
  QSignalSpy fractions(&s.widget, &SurfaceWidget::progress);
  Resampled(surface, 200);
  surface.Refresh();
  ASSERT_GT(fractions.count(), 0);
  double last = 0.0;
  for (const QList<QVariant>& call : fractions) {
    const double f = call.at(0).toDouble();
    EXPECT_GT(f, 0.0);
    EXPECT_LE(f, 1.0);
    EXPECT_GE(f, last);
    last = f;
  }
  const QImage before = Grab(s.widget);

  surface.DataSets().Item(0).Resampling().SetIntervalCount(240);
  int reports = 0;
  const QMetaObject::Connection stop = QObject::connect(&s.widget, &SurfaceWidget::progress, &s.widget, [&] {
    ++reports;
    s.widget.requestStop();
  });
  try {
    surface.Refresh();
    ADD_FAILURE() << "the run was not stopped";
  } catch (const Error& e) {
    EXPECT_EQ(e.Number(), 18);
  }
  EXPECT_EQ(reports, 1);  // the run ends at the first refusal
  EXPECT_EQ(CountDifferent(before, Grab(s.widget)), 0);
  QObject::disconnect(stop);

  // The request was spent, and a stop asked for while nothing works is dropped: the next
  // run goes through.
  s.widget.requestStop();
  const qsizetype earlier = fractions.count();
  EXPECT_NO_THROW(surface.Refresh());
  EXPECT_GT(fractions.count(), earlier);
}

TEST(SurfaceWidgetServices, EventsArePassedOnDuringTheWorkSoAQueuedStopArrives) {
  Shown s;
  Resampled(s.surface(), 200);
  QMetaObject::invokeMethod(&s.widget, &SurfaceWidget::requestStop, Qt::QueuedConnection);
  try {
    s.surface().Refresh();
    ADD_FAILURE() << "the queued stop did not arrive";
  } catch (const Error& e) {
    EXPECT_EQ(e.Number(), 18);
  }
}

TEST(SurfaceWidgetServices, CopyToClipboardPutsTheLastPictureThereAtTheWidgetsSize) {
  QGuiApplication::clipboard()->clear();
  Shown s(240, 180);
  s.surface().ShowSampleData();
  ASSERT_TRUE(s.surface().CopyToClipboard());
  const QImage copied = ClipboardImage();
  EXPECT_EQ(copied.size(), QSize(240, 180) * s.ratio());
  EXPECT_EQ(CountDifferent(copied, Grab(s.widget)), 0);
  EXPECT_GT(CountSaturated(copied, copied.rect()), 0);

  // A block that is not a whole bitmap is refused.
  EXPECT_FALSE(s.widget.SetClipboardBitmap(std::vector<std::uint8_t>(40, 0)));
  EXPECT_EQ(ClipboardImage().size(), copied.size());
}

}  // namespace
}  // namespace orvane::qt
