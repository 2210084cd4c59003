// A Qt program outside the Orvane tree, built against the installed widget library.
#include <orvane/qt/surface_widget.h>

#include <QApplication>
#include <QImage>

#include <iostream>

int main(int argc, char** argv) {
  QApplication app(argc, argv);
  orvane::qt::SurfaceWidget plot;
  plot.resize(64, 48);
  plot.surface().ShowSampleData();
  const QImage picture = plot.grab().toImage();
  if (picture.size() != plot.plotPixelSize() || picture.isNull()) {
    std::cout << "qt consumer: mismatch\n";
    return 1;
  }
  std::cout << "qt consumer: ok\n";
  return 0;
}
