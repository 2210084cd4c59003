#include "orvane/control/host_defaults.h"

#include "orvane/contour/color_tables.h"
#include "orvane/contour/contouring.h"
#include "orvane/control/surface.h"
#include "orvane/data/data_set.h"
#include "orvane/data/data_sets.h"
#include "orvane/render/view.h"

namespace orvane {

void TakeHostDefaults(Surface& surface) {
  surface.SetSamples(4);  // smooth edges
  surface.SetFitPlotArea(true);
  Contouring& contouring = surface.Contouring();
  contouring.SetInterpolateColors(false);
  contouring.SetExactBands(true);
  contouring.SetTiesAbove(true);
  LoadPerceptualColorMap(contouring.UserColorMap(), "viridis");
  contouring.SetColorMapType(orvColorMapUser);
  // Light that keeps the colour map's hues: ambient and spotlight adding up to about one,
  // so ground facing the light shows its own colour, not one pushed towards white, and
  // the narrowest highlight. Slopes turned away darken.
  surface.SetLightingIntensityAmbient(0.45);
  surface.SetLightingIntensitySpotlight(0.6);
  surface.SetLightingMaterialShininess(1.0);
  for (DataSet& data : surface.DataSets()) {
    data.ViewTop().SetVisible(false);
    data.ViewBottom().SetVisible(false);
    // Contour labels as text on the background, breaking the line, not in yellow boxes.
    for (View* view : {&data.ViewMain(), &data.ViewTop(), &data.ViewBottom()}) {
      view->SetContourLabelsFillColor(surface.BackColor());
      view->SetContourLabelsEdgeVisible(false);
    }
  }
}

}  // namespace orvane
