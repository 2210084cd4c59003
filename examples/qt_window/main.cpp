// The control in a Qt main window, showing the sample data: drag with the left button to
// turn the plot; the numeric pad's + and - zoom, the arrow keys rotate.

#include <QApplication>
#include <QMainWindow>

#include "orvane/control/host_defaults.h"
#include "orvane/qt/surface_widget.h"

int main(int argc, char** argv) {
  QApplication app(argc, argv);
  QMainWindow window;
  window.setWindowTitle(QStringLiteral("Orvane - sample surface"));

  auto* plot = new orvane::qt::SurfaceWidget(&window);
  window.setCentralWidget(plot);
  orvane::Surface& surface = plot->surface();
  surface.ShowSampleData();
  orvane::TakeHostDefaults(surface);  // the look Orvane's own programs draw with
  surface.Refresh();

  window.resize(800, 600);
  window.show();
  return QApplication::exec();
}
