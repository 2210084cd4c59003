// The widget at its screen's device pixel ratio: the control draws at device pixels, so a
// grab has the widget's size times the ratio and shows the whole plot as sharp as the
// control drew it. ctest runs these at the ratio 1 and again with QT_SCALE_FACTOR=2.

#include <gtest/gtest.h>

#include <QClipboard>
#include <QDir>
#include <QGuiApplication>
#include <QSignalSpy>
#include <QTest>

#include <cstdlib>

#include "widget_fixture.h"

namespace orvane::qt {
namespace {

using testing::CountDifferent;
using testing::CountSaturated;
using testing::Grab;
using testing::Shown;

// The ratio the test run asked Qt for (ctest sets QT_SCALE_FACTOR), 1 without it.
double AskedRatio() {
  const char* factor = std::getenv("QT_SCALE_FACTOR");
  return factor != nullptr && *factor != '\0' ? std::atof(factor) : 1.0;
}

// With ORVANE_QT_GRAB_DIR set, grabs are left there as PNG files for a look.
void Keep(const QImage& image, const char* name) {
  const QString dir = qEnvironmentVariable("ORVANE_QT_GRAB_DIR");
  if (dir.isEmpty()) return;
  const QString file = QDir(dir).filePath(QStringLiteral("%1-x%2.png").arg(QLatin1String(name)).arg(AskedRatio()));
  EXPECT_TRUE(image.save(file)) << file.toStdString();
}

TEST(HighDpi, TheGrabHasTheWidgetsSizeTimesTheRatio) {
  Shown s(300, 200);
  if (std::getenv("QT_SCALE_FACTOR") != nullptr) {
    EXPECT_DOUBLE_EQ(s.ratio(), AskedRatio());
  }
  const QPixmap grab = s.widget.grab();
  EXPECT_EQ(grab.size(), QSize(300, 200) * s.ratio());
  EXPECT_DOUBLE_EQ(grab.devicePixelRatio(), s.ratio());
  EXPECT_EQ(s.widget.plotPixelSize(), grab.size());
}

TEST(HighDpi, TheWholePlotIsDrawnAtDevicePixels) {
  QGuiApplication::clipboard()->clear();
  Shown s(400, 300);
  s.surface().ShowSampleData();
  const QImage grab = Grab(s.widget);
  Keep(grab, "sample");
  const QSize device = QSize(400, 300) * s.ratio();
  ASSERT_EQ(grab.size(), device);
  // The control's own picture is the device's size, and the grab shows it pixel for pixel:
  // nothing was scaled up.
  ASSERT_TRUE(s.surface().CopyToClipboard());
  const QImage drawn = QGuiApplication::clipboard()->image().convertToFormat(QImage::Format_RGB32);
  EXPECT_EQ(drawn.size(), device);
  EXPECT_EQ(CountDifferent(grab, drawn), 0);
  // It is the whole plot, as a control of that size draws it.
  const QImage expected = testing::HeadlessPicture(device.width(), device.height(),
                                                   [](Surface& surface) { surface.ShowSampleData(); });
  EXPECT_EQ(CountDifferent(grab, expected), 0);
  const QRect middle(device.width() / 3, device.height() / 3, device.width() / 3, device.height() / 3);
  EXPECT_GT(CountSaturated(grab, middle), middle.width() * middle.height() / 4);
}

TEST(HighDpi, MousePositionsReachTheControlInDevicePixels) {
  Shown s(300, 200);
  const double r = s.ratio();
  QSignalSpy down(&s.widget, &SurfaceWidget::mouseDown);
  QTest::mousePress(&s.widget, Qt::LeftButton, {}, QPoint(50, 30));
  QTest::mouseRelease(&s.widget, Qt::LeftButton, {}, QPoint(50, 30));
  ASSERT_EQ(down.count(), 1);
  EXPECT_FLOAT_EQ(down.at(0).at(2).toFloat(), static_cast<float>(50 * r));
  EXPECT_FLOAT_EQ(down.at(0).at(3).toFloat(), static_cast<float>(30 * r));
}

TEST(HighDpi, ADragTurnsThePlotAndTheRedrawnPictureFillsTheWidget) {
  Shown s(300, 240);
  s.surface().ShowSampleData();
  const QImage before = Grab(s.widget);
  QTest::mousePress(&s.widget, Qt::LeftButton, {}, QPoint(150, 120));
  QTest::mouseMove(&s.widget, QPoint(200, 140));
  QTest::mouseRelease(&s.widget, Qt::LeftButton, {}, QPoint(200, 140));
  // The control saw the drag in device pixels of a plot in device pixels: the turn is the
  // one the same drag gives at the ratio 1.
  const double r = s.ratio();
  testing::ExpectSameOrientation(
      testing::Orientation(s.surface()),
      testing::DraggedOrientation({QPointF(150, 120) * r, QPointF(200, 140) * r}, qRound(300 * r), qRound(240 * r)));
  testing::ExpectSameOrientation(testing::Orientation(s.surface()),
                                 testing::DraggedOrientation({QPointF(150, 120), QPointF(200, 140)}, 300, 240));
  const QImage after = Grab(s.widget);
  Keep(after, "turned");
  ASSERT_EQ(after.size(), before.size());
  EXPECT_GT(CountDifferent(before, after), 0);
  const QRect middle(after.width() / 3, after.height() / 3, after.width() / 3, after.height() / 3);
  EXPECT_GT(CountSaturated(after, middle), 0);
}

}  // namespace
}  // namespace orvane::qt
