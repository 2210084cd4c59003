// orvane.Surface: the whole control on a headless host, its object model under Python
// names. The Python objects for its parts hold the control and look their part up on
// each use, so that one outliving its part (a data set removed by lowering the count)
// raises orvane.Error instead of reaching freed memory. The control is used with the
// GIL held: it is not meant for two threads at once.

#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include <cstring>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <tuple>
#include <vector>

#include "arrays.h"
#include "control/fitting_zoom.h"
#include "orvane/axes/axes.h"
#include "orvane/axes/axis.h"
#include "orvane/contour/color_map.h"
#include "orvane/contour/color_tables.h"
#include "orvane/contour/contouring.h"
#include "orvane/contour/named_colors.h"
#include "orvane/control/host_defaults.h"
#include "orvane/control/surface.h"
#include "orvane/data/data_sets.h"
#include "orvane/host/headless_host.h"
#include "orvane/render/caption.h"
#include "orvane/render/device_context.h"
#include "orvane/render/legend.h"
#include "orvane/render/marker.h"
#include "orvane/render/view.h"

namespace orvane::python {

namespace {

// The control and its host, with this program's look.
struct Control {
  HeadlessHost host;
  Surface surface{host};
  std::string colormap = "viridis";
  // Set from Python: then the picture keeps them rather than fitting its own.
  bool zoomSet = false, formatSet = false, aspectSet = false;
  Control() {
    surface.InitProperties();
    TakeHostDefaults(surface);
  }
};
using Shared = std::shared_ptr<Control>;

struct DataSetsRef {
  Shared c;
};
struct DataSetRef {
  Shared c;
  std::int32_t index;
  DataSet& get() const { return c->surface.DataSets().Item(index); }
};
struct ViewRef {
  Shared c;
  std::int32_t index;
  View& get() const { return c->surface.DataSets().Item(index).ViewMain(); }
};
struct AxesRef {
  Shared c;
};
struct AxisRef {
  Shared c;
  int which;
  Axis& get() const {
    Axes& axes = c->surface.Axes();
    return which == 0 ? axes.XAxis() : which == 1 ? axes.YAxis() : axes.ZAxis();
  }
};
struct ContouringRef {
  Shared c;
};
struct LegendRef {
  Shared c;
};

// The control's own colour maps by the names a user types.
const std::map<std::string, std::int32_t>& BuiltInMaps() {
  static const std::map<std::string, std::int32_t> maps{
      {"blue-red", orvColorMapBlueRed},       {"red-blue", orvColorMapRedBlue},
      {"rainbow", orvColorMapRainbow},        {"rainbow-reverse", orvColorMapRainbowReverse},
      {"land-sea-dark", orvColorMapLandSeaDark}, {"land-sea-light", orvColorMapLandSeaLight}};
  return maps;
}

// The picture, width x height pixels, as an ImageDC.
ImageDC Draw(Control& c, int width, int height) {
  if (width < 1 || height < 1 || width > ImageDC::kMaxSide || height > ImageDC::kMaxSide) {
    Fail(5, "width and height must be from 1 to " + std::to_string(ImageDC::kMaxSide));
  }
  // As the orvane command draws: tick labels with the decimals their ticks need, X and Y
  // at one scale when their spans are alike, and the plot filling the picture.
  c.surface.Refresh();
  if (!c.formatSet) FitLabelFormats(c.surface.Axes(), c.surface.Contouring());
  if (!c.aspectSet) FitXYAspect(c.surface.Axes());
  if (!c.zoomSet) c.surface.SetZoom(detail::FittingZoom(c.surface, width, height));
  ImageDC image(width, height);
  c.surface.DrawToDC(image, 0, 0, width, height);
  return image;
}

py::bytes Bytes(const std::vector<std::uint8_t>& v) {
  return py::bytes(reinterpret_cast<const char*>(v.data()), v.size());
}

std::vector<std::uint8_t> FromBytes(const py::bytes& b) {
  const std::string s = b;
  return std::vector<std::uint8_t>(s.begin(), s.end());
}

}  // namespace

void AddSurface(py::module_& m) {
  py::class_<Control, Shared>(m, "Surface",
                              "The plotting control on a headless host: data sets, axes, contouring and legend, "
                              "drawn off screen with OpenGL.")
      .def(py::init<>(), "A new control with this library's look (viridis, smooth edges, exact bands).")
      .def_property_readonly("data_sets", [](const Shared& c) { return DataSetsRef{c}; }, "The data sets (one at first).")
      .def_property_readonly("axes", [](const Shared& c) { return AxesRef{c}; }, "The X, Y and Z axes.")
      .def_property_readonly("contouring", [](const Shared& c) { return ContouringRef{c}; }, "The levels and colours.")
      .def_property_readonly("legend", [](const Shared& c) { return LegendRef{c}; }, "The colour bar.")
      .def_property(
          "plot_type", [](const Shared& c) { return c->surface.PlotType() == orvPlotType2D ? "2d" : "3d"; },
          [](const Shared& c, const std::string& type) {
            if (type != "2d" && type != "3d") Fail(5, "plot_type must be \"3d\" or \"2d\", not \"" + type + "\"");
            c->surface.SetPlotType(type == "2d" ? orvPlotType2D : orvPlotType3D);
          },
          "\"3d\": a lit surface in the plot cube; \"2d\": a flat contour map.")
      .def_property(
          "rotation",
          [](const Shared& c) {
            return std::make_tuple(c->surface.RotationX(), c->surface.RotationY(), c->surface.RotationZ());
          },
          [](const Shared& c, const std::tuple<double, double, double>& r) {
            c->surface.SetRotationX(std::get<0>(r));
            c->surface.SetRotationY(std::get<1>(r));
            c->surface.SetRotationZ(std::get<2>(r));
          },
          "The plot's rotation about X, Y and Z in degrees.")
      .def_property(
          "zoom", [](const Shared& c) { return c->surface.Zoom(); },
          [](const Shared& c, double zoom) {
            c->surface.SetZoom(zoom);
            c->zoomSet = true;
          },
          "The zoom factor (above 0); unless set, the plot fills the picture.")
      .def_property(
          "lighting", [](const Shared& c) { return c->surface.LightingOn(); },
          [](const Shared& c, bool on) { c->surface.SetLightingOn(on); }, "Whether the 3-D surface is lit.")
      .def_property(
          "samples", [](const Shared& c) { return c->surface.Samples(); },
          [](const Shared& c, std::int32_t n) { c->surface.SetSamples(n); }, "Samples per pixel (1 to 16): antialiasing.")
      .def_property(
          "title", [](const Shared& c) { return c->surface.Header().Text(); },
          [](const Shared& c, const std::string& text) {
            c->surface.Header().SetText(text);
            c->surface.Header().SetVisible(!text.empty());
          },
          "The caption across the top; empty hides it.")
      .def_property(
          "state", [](const Shared& c) { return Bytes(c->surface.State(orvStateTypeFormattingAndData)); },
          [](const Shared& c, const py::bytes& b) { c->surface.SetState(FromBytes(b), orvStateTypeFormattingAndData); },
          "The formatting and the data as bytes; setting them restores both.")
      .def_property(
          "formatting", [](const Shared& c) { return Bytes(c->surface.State(orvStateTypeFormatting)); },
          [](const Shared& c, const py::bytes& b) { c->surface.SetState(FromBytes(b), orvStateTypeFormatting); },
          "The formatting alone as bytes; setting them restores it and keeps the data.")
      .def("show_sample_data", [](const Shared& c) { c->surface.ShowSampleData(); }, "Shows the built-in sample surface.")
      .def("refresh", [](const Shared& c) { c->surface.Refresh(); },
           "Recalculates what the changes made stale (scales, levels, mesh) and redraws.")
      .def(
          "render",
          [](const Shared& c, int width, int height) {
            const ImageDC image = Draw(*c, width, height);
            py::array_t<std::uint8_t> out({static_cast<py::ssize_t>(height), static_cast<py::ssize_t>(width), py::ssize_t{3}});
            std::memcpy(out.mutable_data(), image.Rgb().data(), image.Rgb().size());
            return out;
          },
          py::arg("width") = 800, py::arg("height") = 600, "The picture as an (height, width, 3) uint8 RGB array.")
      .def(
          "to_png", [](const Shared& c, const std::string& path, int width, int height) { Draw(*c, width, height).SavePng(path); },
          py::arg("path"), py::arg("width") = 800, py::arg("height") = 600, "Writes the picture as a PNG file.")
      .def(
          "_repr_png_", [](const Shared& c) { return Bytes(Draw(*c, 640, 480).EncodePng()); },
          "The picture as PNG bytes, for Jupyter.");

  py::class_<DataSetsRef>(m, "DataSets", "The control's data sets, indexed from 0.")
      .def("__len__", [](const DataSetsRef& r) { return r.c->surface.DataSets().Count(); })
      .def("__getitem__",
           [](const DataSetsRef& r, std::int32_t index) {
             const std::int32_t count = r.c->surface.DataSets().Count();
             if (index < 0) index += count;
             r.c->surface.DataSets().Item(index);  // error 9 outside the collection
             return DataSetRef{r.c, index};
           })
      .def_property(
          "count", [](const DataSetsRef& r) { return r.c->surface.DataSets().Count(); },
          [](const DataSetsRef& r, std::int32_t n) { r.c->surface.DataSets().SetCount(n); },
          "How many data sets there are; setting it adds empty ones or removes the last.");

  py::class_<DataSetRef>(m, "DataSet", "One data set: a grid or scattered points, and how it is drawn.")
      .def(
          "set_grid",
          [](const DataSetRef& r, const py::handle& x, const py::handle& y, const py::handle& z) {
            const GridFile grid = GridIn(x, y, z);
            r.get().DataAsBlankedGridSet(grid.x, grid.y, grid.z);
          },
          py::arg("x"), py::arg("y"), py::arg("z"),
          "A grid: x (nx), y (ny), z (ny, nx) with z[j, i] at (x[i], y[j]); NaN leaves a hole.")
      .def(
          "set_points",
          [](const DataSetRef& r, const py::handle& xs, const py::handle& ys, const py::handle& zs) {
            const std::vector<double> x = Doubles(xs, "x", 1), y = Doubles(ys, "y", 1), z = Doubles(zs, "z", 1);
            SameLength(x, y, &z);
            r.get().DataAsSparseGridSet(x, y, z);
          },
          py::arg("x"), py::arg("y"), py::arg("z"), "Scattered points, triangulated.")
      .def("clear", [](const DataSetRef& r) { r.get().Clear(); }, "Removes the data.")
      .def_property_readonly(
          "limits",
          [](const DataSetRef& r) {
            const DataSet& d = r.get();
            return std::make_tuple(d.XMin(), d.XMax(), d.YMin(), d.YMax(), d.ZMin(), d.ZMax());
          },
          "(xmin, xmax, ymin, ymax, zmin, zmax) of the data.")
      .def(
          "contour_lines",
          [](const DataSetRef& r, const py::handle& levelsIn, bool tiesAbove) {
            return LinesOut(r.get().ContourLines(Doubles(levelsIn, "levels", 1), tiesAbove));
          },
          py::arg("levels"), py::arg("ties_above") = true, "Per level, a list of (n, 2) vertex arrays.")
      .def_property_readonly(
          "triangles",
          [](const DataSetRef& r) {
            const std::vector<std::int32_t> v = r.get().MeshTriangleVertices();
            py::array_t<std::int32_t> out({static_cast<py::ssize_t>(v.size() / 3), py::ssize_t{3}});
            if (!v.empty()) std::memcpy(out.mutable_data(), v.data(), v.size() * sizeof(std::int32_t));
            return out;
          },
          "Scattered points' triangles as (n, 3) point numbers; empty for a grid.")
      .def_property_readonly("view", [](const DataSetRef& r) { return ViewRef{r.c, r.index}; }, "How it is drawn.");

  py::class_<ViewRef>(m, "View", "How a data set is drawn.")
      .def_property(
          "fill", [](const ViewRef& r) { return r.get().ContourFillVisible(); },
          [](const ViewRef& r, bool on) { r.get().SetContourFillVisible(on); }, "Colour fill between the levels.")
      .def_property(
          "lines", [](const ViewRef& r) { return r.get().ContourLinesVisible(); },
          [](const ViewRef& r, bool on) { r.get().SetContourLinesVisible(on); }, "Contour lines.")
      .def_property(
          "mesh", [](const ViewRef& r) { return r.get().MeshVisible(); },
          [](const ViewRef& r, bool on) { r.get().SetMeshVisible(on); }, "The mesh's edges.")
      .def_property(
          "markers", [](const ViewRef& r) { return r.get().DataMarkersMaster().Visible(); },
          [](const ViewRef& r, bool on) { r.get().DataMarkersMaster().SetVisible(on); }, "Markers at the data points.")
      .def_property(
          "labels", [](const ViewRef& r) { return r.get().ContourLabelsVisible(); },
          [](const ViewRef& r, bool on) { r.get().SetContourLabelsVisible(on); }, "Labels on the contour lines.")
      .def_property(
          "base", [](const ViewRef& r) { return r.get().BaseVisible(); },
          [](const ViewRef& r, bool on) { r.get().SetBaseVisible(on); }, "A solid block under the 3-D surface.")
      .def_property(
          "transparency",
          [](const ViewRef& r) -> std::optional<double> {
            if (!r.get().TransparencyOn()) return std::nullopt;
            return r.get().Transparency();
          },
          [](const ViewRef& r, std::optional<double> value) {
            if (value) r.get().SetTransparency(*value);
            r.get().SetTransparencyOn(value.has_value());
          },
          "None (opaque) or how see-through the surface is, 0 to 1.");

  py::class_<AxesRef>(m, "Axes", "The three data axes.")
      .def_property_readonly("x", [](const AxesRef& r) { return AxisRef{r.c, 0}; })
      .def_property_readonly("y", [](const AxesRef& r) { return AxisRef{r.c, 1}; })
      .def_property_readonly("z", [](const AxesRef& r) { return AxisRef{r.c, 2}; })
      .def_property(
          "equal_aspect", [](const AxesRef& r) { return r.c->surface.Axes().KeepXYAspectRatio(); },
          [](const AxesRef& r, bool on) {
            r.c->surface.Axes().SetKeepXYAspectRatio(on);
            r.c->aspectSet = true;
          },
          "One unit as long on X as on Y; unless set, so when the X and Y spans are within a factor of 10.");

  py::class_<AxisRef>(m, "Axis", "One data axis.")
      .def_property(
          "title", [](const AxisRef& r) { return r.get().Title(); },
          [](const AxisRef& r, const std::string& text) {
            r.get().SetTitle(text);
            r.get().SetTitleVisible(!text.empty());
          },
          "The axis title; empty hides it.")
      .def_property(
          "labels_format", [](const AxisRef& r) { return r.get().LabelsFormat(); },
          [](const AxisRef& r, const std::string& format) {
            r.get().SetLabelsFormat(format);
            r.c->formatSet = true;
          },
          "The tick labels' number format, such as \"0.00\"; unless set, as many decimals as the ticks need.")
      .def_property_readonly(
          "limits", [](const AxisRef& r) { return std::make_tuple(r.get().Min(), r.get().Max()); }, "(min, max) shown.");

  py::class_<ContouringRef>(m, "Contouring", "The contour levels and their colours.")
      .def_property(
          "levels",
          [](const ContouringRef& r) {
            std::vector<double> levels;
            const Contours& contours = r.c->surface.Contouring().Contours();
            for (std::int32_t k = 0; k < contours.Count(); ++k) levels.push_back(contours.Item(k)->Value());
            return levels;
          },
          [](const ContouringRef& r, const py::handle& values) {
            const std::vector<double> levels = Doubles(values, "levels", 1);
            Contouring& contouring = r.c->surface.Contouring();
            contouring.SetAutoSetContoursType(orvAutoSetOff);
            contouring.Contours().RemoveAll();
            contouring.Contours().AddLevels(levels);
          },
          "The levels; setting them turns the automatic levels off.")
      .def_property(
          "level_count", [](const ContouringRef& r) { return r.c->surface.Contouring().Contours().Count(); },
          [](const ContouringRef& r, std::int32_t n) {
            r.c->surface.Contouring().SetAutoSetContoursType(orvAutoSetByIntervalCount);
            r.c->surface.Contouring().SetAutoSetIntervalCount(n);
          },
          "Setting it asks for that many equal intervals over the data's heights.")
      .def_property(
          "interpolate_colors", [](const ContouringRef& r) { return r.c->surface.Contouring().InterpolateColors(); },
          [](const ContouringRef& r, bool on) { r.c->surface.Contouring().SetInterpolateColors(on); },
          "Colours blended across each band rather than one per band.")
      .def_property(
          "exact_bands", [](const ContouringRef& r) { return r.c->surface.Contouring().ExactBands(); },
          [](const ContouringRef& r, bool on) { r.c->surface.Contouring().SetExactBands(on); },
          "Each pixel coloured by the band its height lies in.")
      .def_property(
          "colormap", [](const ContouringRef& r) { return r.c->colormap; },
          [](const ContouringRef& r, const std::string& name) {
            Contouring& contouring = r.c->surface.Contouring();
            const std::vector<std::string>& perceptual = PerceptualColorMapNames();
            if (std::find(perceptual.begin(), perceptual.end(), name) != perceptual.end()) {
              LoadPerceptualColorMap(contouring.UserColorMap(), name);
              contouring.SetColorMapType(orvColorMapUser);
            } else if (BuiltInMaps().count(name) > 0) {
              contouring.SetColorMapType(BuiltInMaps().at(name));
            } else {
              Fail(5, "unknown colour map \"" + name + "\"; the maps are viridis, cividis, magma, diverging, terrain, "
                      "blue-red, red-blue, rainbow, rainbow-reverse, land-sea-dark and land-sea-light");
            }
            r.c->colormap = name;
          },
          "The colour map by name: viridis, cividis, magma, diverging, terrain, rainbow, ...");

  py::class_<LegendRef>(m, "Legend", "The colour bar beside the plot.")
      .def_property(
          "visible", [](const LegendRef& r) { return r.c->surface.Legend().Visible(); },
          [](const LegendRef& r, bool on) { r.c->surface.Legend().SetVisible(on); })
      .def_property(
          "even_bands", [](const LegendRef& r) { return r.c->surface.Legend().EvenBands(); },
          [](const LegendRef& r, bool on) { r.c->surface.Legend().SetEvenBands(on); },
          "Every band the same height on the bar.");
}

}  // namespace orvane::python
