// The control in a Qt main window, showing the sample data: drag with the left button to
// turn the plot; the numeric pad's + and - zoom, the arrow keys rotate.

#include <QApplication>
#include <QMainWindow>

#include "orvane/qt/surface_widget.h"
#include "orvane/render/view.h"

int main(int argc, char** argv) {
  QApplication app(argc, argv);
  QMainWindow window;
  window.setWindowTitle(QStringLiteral("Orvane - sample surface"));

  auto* plot = new orvane::qt::SurfaceWidget(&window);
  window.setCentralWidget(plot);
  orvane::Surface& surface = plot->surface();
  surface.ShowSampleData();
  // Beyond the control's own defaults: smooth edges, exact band edges, whole contours,
  // lighting that keeps the colours, no copies of the map on the cube's faces.
  surface.SetSamples(4);
  surface.SetFitPlotArea(true);
  surface.Contouring().SetInterpolateColors(false);
  surface.Contouring().SetExactBands(true);
  surface.Contouring().SetTiesAbove(true);
  surface.SetLightingIntensityAmbient(0.45);
  surface.SetLightingIntensitySpotlight(0.6);
  surface.SetLightingMaterialShininess(1.0);
  surface.DataSets().Item(0).ViewMain().SetContourLabelsFillColor(surface.BackColor());
  surface.DataSets().Item(0).ViewMain().SetContourLabelsEdgeVisible(false);
  surface.DataSets().Item(0).ViewTop().SetVisible(false);
  surface.DataSets().Item(0).ViewBottom().SetVisible(false);
  surface.Refresh();

  window.resize(800, 600);
  window.show();
  return QApplication::exec();
}
