// Printing the plot through a QPdfWriter: one page, the plot's colours on it at print
// resolution, and the control's own picture left as it was.

#include <gtest/gtest.h>

#include <QImage>
#include <QPageSize>
#include <QPdfWriter>
#include <QTemporaryDir>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "orvane/control/surface.h"
#include "orvane/host/headless_host.h"
#include "orvane/qt/print.h"

namespace orvane::qt {
namespace {

// Saturated colours, as the colour map gives the surface: far from the white page, the
// black lines and the grey edges of text.
bool Coloured(QRgb c) {
  const int hi = std::max({qRed(c), qGreen(c), qBlue(c)}), lo = std::min({qRed(c), qGreen(c), qBlue(c)});
  return hi - lo > 100;
}

TEST(Print, APdfPageShowsThePlot) {
  HeadlessHost host;
  Surface surface(host);
  surface.InitProperties();
  surface.OnResize(200, 150);
  surface.ShowSampleData();
  QTemporaryDir dir;
  ASSERT_TRUE(dir.isValid());
  const QString pdf = dir.filePath("plot.pdf");
  {
    QPdfWriter writer(pdf);
    writer.setPageSize(QPageSize(QPageSize::A4));
    writer.setResolution(600);  // the plot is drawn at 300 dpi and scaled up
    const QRectF drawn = PrintSurface(surface, writer);
    EXPECT_GT(drawn.width(), 3000.0);  // most of an A4 page's 8.3 inches at 600 dpi
    EXPECT_NEAR(drawn.width() / drawn.height(), 4.0 / 3.0, 0.01);
  }
  // One page, with the plot's colours on it.
  const std::string prefix = dir.filePath("page").toStdString();
  const std::string command = "pdftoppm -r 50 -png " + pdf.toStdString() + " " + prefix + " 2>&1";
  ASSERT_EQ(std::system(command.c_str()), 0) << command;
  QImage page(QString::fromStdString(prefix + "-1.png"));
  ASSERT_FALSE(page.isNull());
  EXPECT_TRUE(QImage(QString::fromStdString(prefix + "-2.png")).isNull()) << "a second page";
  int coloured = 0;
  for (int y = 0; y < page.height(); ++y) {
    for (int x = 0; x < page.width(); ++x) coloured += Coloured(page.pixel(x, y));
  }
  EXPECT_GT(coloured, page.width() * page.height() / 20);
  // Nothing drawn outside the 4:3 box at the page's middle: the top strip is white.
  for (int x = 0; x < page.width(); ++x) EXPECT_FALSE(Coloured(page.pixel(x, 2)));
}

}  // namespace
}  // namespace orvane::qt
