// A variogram chart from the control's own parts. Each model is a data set whose heights
// are y - gamma(x) over the chart's area: its single contour, at level 0, is the curve
// y = gamma(x), traced and drawn as any contour line, in the data set's own colour. The
// bins are a data set drawn as markers only. The axes, their ticks, titles and fonts are
// the map's.

#include "variogram_plot.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "control/fitting_zoom.h"
#include "orvane/axes/axes.h"
#include "orvane/axes/axis.h"
#include "orvane/contour/contouring.h"
#include "orvane/control/host_defaults.h"
#include "orvane/control/surface.h"
#include "orvane/core/color.h"
#include "orvane/data/data_sets.h"
#include "orvane/host/headless_host.h"
#include "orvane/render/device_context.h"
#include "orvane/render/faces.h"
#include "orvane/render/marker.h"
#include "orvane/render/view.h"
#include "output_file.h"

namespace orvane::cli {

namespace {

// Curve colours, best model first: a colour-blind-safe set.
constexpr Color kCurveColours[] = {Rgb(0, 114, 178), Rgb(230, 159, 0), Rgb(0, 158, 115), Rgb(204, 121, 167)};
const char* const kColourNames[] = {"blue", "orange", "green", "pink"};

// Nodes of the curve grids: a curve's straight pieces a few pixels long, so that thick
// lines join without gaps.
constexpr std::size_t kColumns = 161, kRows = 81;

}  // namespace

void PlotVariogram(const std::string& title, std::span<const VariogramBin> bins, std::span<const VariogramModel> models,
                   double cutoff, int width, int height, const std::string& output) {
  OutputFile file(output);
  double top = 0.0;
  for (const VariogramBin& b : bins) top = std::max(top, b.gamma);
  for (const VariogramModel& m : models) top = std::max(top, m.Gamma(cutoff));
  top = top > 0.0 ? top * 1.1 : 1.0;  // values that do not vary: an axis from 0 to 1
  const std::size_t count = std::min(models.size(), std::size(kCurveColours));

  HeadlessHost host;
  Surface surface(host);
  surface.InitProperties();
  surface.DataSets().SetCount(static_cast<std::int32_t>(count + 1));
  TakeHostDefaults(surface);
  surface.SetPlotType(orvPlotType2D);
  surface.Legend().SetVisible(false);
  // A light grid under the curves.
  surface.Faces().MajorGridLineMaster().SetColor(Rgb(205, 205, 205));

  std::vector<double> x(kColumns), y(kRows), z(kColumns * kRows);
  for (std::size_t i = 0; i < kColumns; ++i) x[i] = cutoff * static_cast<double>(i) / (kColumns - 1);
  for (std::size_t j = 0; j < kRows; ++j) y[j] = top * static_cast<double>(j) / (kRows - 1);
  std::string key;
  for (std::size_t k = 0; k < count; ++k) {
    const VariogramModel& m = models[k];
    for (std::size_t i = 0; i < kColumns; ++i) {
      // The curve starts at the nugget: the jump at 0 itself is not drawn.
      const double gamma = m.Gamma(std::max(x[i], cutoff * 1e-9));
      for (std::size_t j = 0; j < kRows; ++j) z[i * kRows + j] = y[j] - gamma;
    }
    DataSet& data = surface.DataSets().Item(static_cast<std::int32_t>(k + 1));
    data.DataAsRectangularGridSet(x, y, z);
    View& view = data.ViewMain();
    view.SetContourFillVisible(false);
    view.SetUseMasterProperties(true);
    view.ContourLinesMaster().SetColor(kCurveColours[k]);
    view.ContourLinesMaster().SetWidth(k == 0 ? 3 : 2);
    key += std::string(k == 0 ? "" : ", ") + m.Name() + " (" + kColourNames[k] + (k == 0 ? ", best" : "") + ")";
  }
  // The semivariances, as dots.
  std::vector<double> h, gamma, zero;
  for (const VariogramBin& b : bins) {
    h.push_back(b.distance);
    gamma.push_back(b.gamma);
    zero.push_back(0.0);
  }
  DataSet& points = surface.DataSets().Item(0);
  points.DataAsSparseGridSet(h, gamma, zero);
  View& dots = points.ViewMain();
  dots.SetContourFillVisible(false);
  dots.SetContourLinesVisible(false);
  dots.SetDataHullVisible(false);
  Marker& marker = dots.DataMarkersMaster();
  marker.SetVisible(true);
  marker.SetShape(orvMarkerShape2DCircle);
  marker.SetFillColor(Rgb(40, 40, 40));
  marker.SetSize(2.0);

  Contouring& contouring = surface.Contouring();
  contouring.SetAutoSetContoursType(orvAutoSetOff);
  contouring.Contours().RemoveAll();
  contouring.Contours().AddLevels(std::vector<double>{0.0});
  surface.Axes().SetKeepXYAspectRatio(false);
  surface.Axes().XAxis().SetTitle("distance");
  surface.Axes().YAxis().SetTitle("semivariance");
  surface.Header().SetText(title + ": " + (key.empty() ? std::string("semivariances, no model fitted") : key));
  surface.Header().SetVisible(true);
  surface.OnResize(width, height);
  surface.Refresh();
  FitLabelFormats(surface.Axes(), surface.Contouring());
  surface.SetZoom(detail::FittingZoom(surface, width, height));
  surface.Refresh();
  ImageDC image(width, height);
  surface.OnPaint(image);
  const std::vector<std::uint8_t> png = image.EncodePng();
  file.Stream().write(reinterpret_cast<const char*>(png.data()), static_cast<std::streamsize>(png.size()));
  file.Commit();
}

}  // namespace orvane::cli
