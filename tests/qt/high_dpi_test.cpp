// The widget at its screen's device pixel ratio: ctest runs these, with the paint, drag,
// mouse, border and clipboard cases, at the ratio 1 and again with QT_SCALE_FACTOR=2.

#include <gtest/gtest.h>

#include <QClipboard>
#include <QGuiApplication>

#include <cstdlib>

#include "widget_fixture.h"

namespace orvane::qt {
namespace {

TEST(HighDpi, TheGrabHasTheWidgetsSizeTimesTheRatioAndIsTheControlsOwnPicture) {
  QGuiApplication::clipboard()->clear();
  testing::Shown s(400, 300);
  if (const char* factor = std::getenv("QT_SCALE_FACTOR")) {
    EXPECT_DOUBLE_EQ(s.ratio(), std::atof(factor));
  }
  s.surface().ShowSampleData();
  const QPixmap pixmap = s.widget.grab();
  EXPECT_EQ(pixmap.size(), QSize(400, 300) * s.ratio());
  EXPECT_DOUBLE_EQ(pixmap.devicePixelRatio(), s.ratio());
  EXPECT_EQ(s.widget.plotPixelSize(), pixmap.size());
  // The control drew at the device's size and the grab shows its bitmap pixel for pixel:
  // nothing was scaled up.
  ASSERT_TRUE(s.surface().CopyToClipboard());
  const QImage drawn = QGuiApplication::clipboard()->image().convertToFormat(QImage::Format_RGB32);
  EXPECT_EQ(drawn.size(), pixmap.size());
  EXPECT_EQ(testing::CountDifferent(testing::Grab(s.widget), drawn), 0);
}

}  // namespace
}  // namespace orvane::qt
