// orvane render: draw a data file (scattered points or a grid), or the built-in sample,
// through the control to a PNG image; orvane state: save the same control's State.

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <limits>
#include <iostream>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <tuple>
#include <vector>

#include "commands.h"
#include "input_options.h"
#include "level_options.h"
#include "numbers.h"
#include "control/fitting_zoom.h"
#include "control/surface_state.h"
#include "orvane/control/host_defaults.h"
#include "orvane/control/surface.h"
#include "orvane/axes/axes.h"
#include "orvane/axes/axis.h"
#include "orvane/contour/color_tables.h"
#include "orvane/contour/contouring.h"
#include "orvane/core/error.h"
#include "orvane/core/property_bag.h"
#include "orvane/data/data_set.h"
#include "orvane/data/data_sets.h"
#include "orvane/data/data_file.h"
#include "orvane/data/xyz_file.h"
#include "orvane/host/headless_host.h"
#include "orvane/render/device_context.h"
#include "orvane/render/marker.h"
#include "orvane/render/view.h"
#include "output_file.h"
#include "resample_options.h"

namespace orvane::cli {

namespace {

struct RenderOptions {
  std::string file;
  bool sample = false;
  std::string output;
  std::string size = "800x600";
  std::string plotType = "3d";
  std::vector<double> rotation;
  double zoom = 1.0;
  std::string title;
  std::string colormap;         // a map's name or a colour table file
  LevelOptions level;
  bool interpolateColors = false;
  std::string fill = "bands";   // flat, bands or smooth
  std::string ties = "above";   // how heights on a level are traced: above or exact
  std::string projections = "none";  // the views on the cube's top and bottom faces
  std::string xlabel, ylabel, zlabel;  // axis titles
  std::int64_t samples = 4;   // per pixel: antialiasing
  bool fullDetail = false;    // fill and mesh from every triangle, however many
  std::string aspect;         // equal, auto, or empty: by the data's shape
  bool lighting = false;
  bool base = false;            // a solid block under the 3-D surface
  bool blankOutsideHull = false;  // resampled cells beyond the data's hull left blank
  bool extrapolate = false;       // nn: fill them
  double maxError = 0.0;          // kriging: cells whose standard error exceeds it are blank
  CLI::Option* varianceOption = nullptr;
  bool mesh = false;
  bool markers = false;
  bool noFill = false;
  bool noLines = false;
  bool noLegend = false;
  bool labels = false;
  bool timings = false;
  InputOptions input;           // how XYZ files are read
  std::string state;            // a saved State to apply before drawing
  bool formattingOnly = false;  // orvane state: leave the data out
  CLI::App* command = nullptr;  // to tell options given from defaults
  ResampleOptions resample;
  CLI::Option* titleOption = nullptr;
  CLI::Option* zoomOption = nullptr;
};

// Seconds spent in each stage of a run.
class Stopwatch {
 public:
  void Lap(const std::string& stage) {
    const auto now = std::chrono::steady_clock::now();
    char buffer[64];
    std::snprintf(buffer, sizeof buffer, "%s %.3f s", stage.c_str(), std::chrono::duration<double>(now - last_).count());
    text_ += (text_.empty() ? "" : ", ") + std::string(buffer);
    last_ = now;
  }
  const std::string& Text() const { return text_; }

 private:
  std::chrono::steady_clock::time_point last_ = std::chrono::steady_clock::now();
  std::string text_;
};

[[noreturn]] void Refuse(const std::string& text) { throw Error(5, "orvane", text); }

// The built-in colour maps by the names a user types.
const std::map<std::string, std::int32_t>& ColorMaps() {
  static const std::map<std::string, std::int32_t> maps{
      {"blue-red", orvColorMapBlueRed},       {"red-blue", orvColorMapRedBlue},
      {"rainbow", orvColorMapRainbow},        {"rainbow-reverse", orvColorMapRainbowReverse},
      {"rainbow-striped", orvColorMapRainbowStriped}, {"zebra-striped", orvColorMapZebraStriped},
      {"land-sea-dark", orvColorMapLandSeaDark},     {"land-sea-light", orvColorMapLandSeaLight}};
  return maps;
}

// "WxH" with each side 1 to 16384.
std::pair<int, int> ParseSize(const std::string& text) {
  int w = 0, h = 0;
  char x = 0, extra = 0;
  if (std::sscanf(text.c_str(), "%d%c%d%c", &w, &x, &h, &extra) != 3 || (x != 'x' && x != 'X') || w < 1 || h < 1 ||
      w > 16384 || h > 16384) {
    Refuse("--size must be WIDTHxHEIGHT with each side from 1 to 16384, as in 800x600");
  }
  return {w, h};
}

// A progress bar for resampling runs inside the control's refresh.
class ProgressHost : public HeadlessHost {
 public:
  bool ReportProgress(double fraction) override {
    return bar_.Update(static_cast<std::int64_t>(std::clamp(fraction, 0.0, 1.0) * 1000.0), 1000);
  }

 private:
  ProgressBar bar_;
};

void LoadData(const RenderOptions& o, Surface& surface) {
  DataSet& data = surface.DataSets().Item(0);
  const DataFile file = ReadData(o.file, o.input);
  if (file.isGrid && !o.resample.method.empty()) {
    Refuse(o.file + ": a grid file is drawn as it is; --resample takes scattered points");
  }
  if (!o.resample.method.empty()) {
    ConfigureResampling(o.resample, o.file, file.points, data.Resampling());
    // Natural neighbour knows no more than its hull: beyond it the map stays empty.
    const bool natural = o.resample.method == "nn";
    data.Resampling().SetBlankOutsideHull(o.blankOutsideHull || (natural && !o.extrapolate));
  }
  if (o.varianceOption->count() > 0) {
    // The confidence view: the kriged grid with the cells the data do not support left
    // blank, drawn as a grid of its own.
    DataFile masked;
    masked.isGrid = true;
    GridFile variance;
    {
      InterruptGuard guard;
      ProgressBar bar;
      masked.grid = ResampleGrid(data.Resampling(), file.points.x, file.points.y, file.points.z,
                                 [&bar](std::int64_t done, std::int64_t total) { return bar.Update(done, total); },
                                 &variance);
    }
    std::size_t blanked = 0, kept = 0;
    double least = std::numeric_limits<double>::infinity();
    for (std::size_t k = 0; k < masked.grid.z.size(); ++k) {
      if (std::isnan(masked.grid.z[k])) continue;
      const double error = std::sqrt(std::max(variance.z[k], 0.0));
      least = std::min(least, error);
      if (error <= o.maxError) {
        ++kept;
      } else {
        masked.grid.z[k] = std::numeric_limits<double>::quiet_NaN();
        ++blanked;
      }
    }
    if (kept == 0) {
      char text[48];
      std::snprintf(text, sizeof text, "%.6g", least);
      Refuse("--variance " + Number(o.maxError) + " leaves no cell to draw: the least standard error is " + text);
    }
    std::cerr << "orvane: " << blanked << " of " << masked.grid.z.size() << " cells have a kriging standard error above "
              << Number(o.maxError) << " and are left blank\n";
    ShowDataFile(masked, data);
    return;
  }
  ShowDataFile(file, data);
}

// Reads a saved State file, refusing what is not one.
std::vector<std::uint8_t> ReadStateFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  if (!in) Refuse(path + ": cannot open the state file");
  std::vector<std::uint8_t> bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  if (in.bad()) Refuse(path + ": the state file could not be read");
  if (bytes.size() > (std::size_t{1} << 31)) Refuse(path + ": the state file is too large");
  return bytes;
}

// Checks the options common to render and state.
void CheckOptions(const RenderOptions& o) {
  if (o.sample && !o.file.empty()) Refuse("give either a data FILE or --sample");
  if (!o.sample && o.file.empty() && o.state.empty()) Refuse("give a data FILE, --sample or --state");
  for (const auto& [name, option] : o.resample.given) {
    if (option->count() == 0) continue;
    if (o.file.empty()) Refuse(name + " applies to a data FILE only");
    if (o.resample.method.empty()) Refuse(name + " applies with --resample only");
  }
  if ((o.blankOutsideHull || o.extrapolate) && o.resample.method.empty()) {
    Refuse(std::string(o.extrapolate ? "--extrapolate" : "--blank-outside-hull") + " applies with --resample only");
  }
  if (o.blankOutsideHull && o.extrapolate) Refuse("--extrapolate and --blank-outside-hull contradict each other.");
  if (o.extrapolate && o.resample.method != "nn") Refuse("--extrapolate applies to --resample nn only");
  if (o.varianceOption->count() > 0) {
    if (o.resample.method != "kriging") Refuse("--variance applies to --resample kriging only");
    if (!(std::isfinite(o.maxError) && o.maxError >= 0.0)) Refuse("--variance takes a standard error of 0 or more");
  }
  if (o.plotType != "3d" && o.plotType != "2d") Refuse("--plot-type must be 3d or 2d");
  if (!o.rotation.empty() && o.rotation.size() != 3) Refuse("--rotation takes three angles: X,Y,Z");
  for (double angle : o.rotation) {
    if (!std::isfinite(angle)) Refuse("--rotation angles must be finite numbers");
  }
  if (!(std::isfinite(o.zoom) && o.zoom > 0.0)) Refuse("--zoom must be a finite number above 0");
  if (o.level.count < 1 || o.level.count > kMostLevels) Refuse("--contours must be between 1 and 10000");
  if (o.fill != "flat" && o.fill != "bands" && o.fill != "smooth") Refuse("--fill must be flat, bands or smooth");
  if (o.interpolateColors && o.command->count("--fill") > 0 && o.fill != "smooth") {
    Refuse("--interpolate-colors asks for --fill smooth, not --fill " + o.fill);
  }
  if (o.ties != "above" && o.ties != "exact") Refuse("--ties must be above or exact");
  if (o.samples < 1 || o.samples > 16) Refuse("--samples must be between 1 and 16");
  if (!o.aspect.empty() && o.aspect != "equal" && o.aspect != "auto") Refuse("--aspect must be equal or auto");
  if (o.projections != "none" && o.projections != "top" && o.projections != "bottom" && o.projections != "both") {
    Refuse("--projections must be none, top, bottom or both");
  }
}

bool IsPerceptual(const std::string& name) {
  const std::vector<std::string>& names = PerceptualColorMapNames();
  return std::find(names.begin(), names.end(), name) != names.end();
}

// The colour table a --colormap that names no map reads, refused before any work.
std::optional<ColorTable> ColorTableOf(const RenderOptions& o) {
  if (o.colormap.empty() || ColorMaps().count(o.colormap) > 0 || IsPerceptual(o.colormap)) return std::nullopt;
  if (!std::filesystem::exists(o.colormap)) {
    std::string names;
    for (const auto& [name, value] : ColorMaps()) names += name + ", ";
    for (const std::string& name : PerceptualColorMapNames()) names += name + ", ";
    Refuse("--colormap must be one of " + names + "or a colour table file (" + o.colormap + " is neither)");
  }
  return ReadColorTable(o.colormap);
}

// This program's choice of map when none is given: terrain for elevations, named so by
// the Z title or the file's name, viridis for anything else.
std::string DefaultColorMap(const RenderOptions& o) {
  return PerceptualColorMapFor(o.zlabel + " " + std::filesystem::path(o.file).filename().string());
}

// Gives the control its data and formatting: the file or the sample, then a saved State,
// then the options. After a State only the options given on the command line apply, so
// that their defaults do not undo what the State holds.
void Prepare(const RenderOptions& o, const std::optional<ColorTable>& table, Surface& surface, Stopwatch& clock) {
  const auto given = [&o](const char* name) { return o.command->count(name) > 0; };
  if (o.sample) {
    surface.ShowSampleData();
  } else if (!o.file.empty()) {
    LoadData(o, surface);
    clock.Lap("read");
    surface.Header().SetText(std::filesystem::path(o.file).filename().string());
    surface.Header().SetVisible(true);
  }
  const bool fromState = !o.state.empty();
  if (fromState) {
    const std::vector<std::uint8_t> bytes = ReadStateFile(o.state);
    PropertyBag bag;
    try {
      bag.SetContents(bytes);
    } catch (const Error& e) {
      Refuse(o.state + ": not a saved state (" + e.Description() + ")");
    }
    // A State with data draws on its own; the data of a FILE or the sample win over it.
    const bool withData = bag.Contains("Datasets.DataSet1.DataType") && o.file.empty() && !o.sample;
    surface.SetState(bytes, withData ? orvStateTypeFormattingAndData : orvStateTypeFormatting);
    clock.Lap("state");
  }
  if (given("--title")) {
    surface.Header().SetText(o.title);
    surface.Header().SetVisible(!o.title.empty());
  }
  // This program's look, unless a State brought its own; the options below change it.
  if (!fromState) TakeHostDefaults(surface);
  if (!fromState || given("--plot-type")) surface.SetPlotType(o.plotType == "2d" ? orvPlotType2D : orvPlotType3D);
  if (!o.rotation.empty()) {
    surface.SetRotationX(o.rotation[0]);
    surface.SetRotationY(o.rotation[1]);
    surface.SetRotationZ(o.rotation[2]);
  }
  if (!fromState || given("--zoom")) surface.SetZoom(o.zoom);
  if (given("--samples")) surface.SetSamples(static_cast<std::int32_t>(o.samples));
  if (o.fullDetail) surface.SetLevelOfDetail(false);
  Contouring& contouring = surface.Contouring();
  // Named maps of the control by type, the others through the user map; a table of data
  // values is placed on the levels once they are known (ColourLevels).
  const std::string map = !o.colormap.empty() ? o.colormap : fromState ? "" : DefaultColorMap(o);
  if (ColorMaps().count(map) > 0) {
    contouring.SetColorMapType(ColorMaps().at(map));
  } else if (IsPerceptual(map)) {
    LoadPerceptualColorMap(contouring.UserColorMap(), map);
    contouring.SetColorMapType(orvColorMapUser);
  } else if (table && table->relative) {
    LoadColorTable(contouring.UserColorMap(), *table, 0.0, 1.0);
    contouring.SetColorMapType(orvColorMapUser);
  }
  if (given("--contours")) {
    contouring.SetAutoSetContoursType(orvAutoSetByIntervalCount);
    contouring.SetAutoSetIntervalCount(static_cast<std::int32_t>(o.level.count));
  } else if (o.level.Explicit()) {
    const DataSet& data = surface.DataSets().Item(0);
    const std::vector<double> levels = Levels(o.level, data.ZMin(), data.ZMax());
    contouring.SetAutoSetContoursType(orvAutoSetOff);
    contouring.Contours().RemoveAll();
    contouring.Contours().AddLevels(levels);
  }
  if (given("--fill") || o.interpolateColors) {
    const std::string fill = o.interpolateColors ? "smooth" : o.fill;
    contouring.SetInterpolateColors(fill == "smooth");
    contouring.SetExactBands(fill == "bands");
  }
  if (given("--ties")) contouring.SetTiesAbove(o.ties == "above");
  if (o.lighting) surface.SetLightingOn(true);
  if (given("--projections")) {
    for (DataSet& data : surface.DataSets()) {
      data.ViewTop().SetVisible(o.projections == "top" || o.projections == "both");
      data.ViewBottom().SetVisible(o.projections == "bottom" || o.projections == "both");
    }
  }
  const std::tuple<const char*, const std::string*, Axis*> titles[] = {
      {"--xlabel", &o.xlabel, &surface.Axes().XAxis()},
      {"--ylabel", &o.ylabel, &surface.Axes().YAxis()},
      {"--zlabel", &o.zlabel, &surface.Axes().ZAxis()}};
  for (const auto& [option, text, axis] : titles) {
    if (!given(option)) continue;
    axis->SetTitle(*text);
    axis->SetTitleVisible(!text->empty());
  }
  View& view = surface.DataSets().Item(0).ViewMain();
  if (o.mesh) view.SetMeshVisible(true);
  if (o.markers) {
    // Small white dots with a dark edge, which leave the map readable under them.
    Marker& markers = view.DataMarkersMaster();
    markers.SetVisible(true);
    if (!fromState) {
      markers.SetShape(o.plotType == "2d" ? orvMarkerShape2DCircle : orvMarkerShape3DCube);
      markers.SetFillColor(0xFFFFFF);
      markers.SetSize(2.0);
    }
  }
  if (o.base) view.SetBaseVisible(true);
  if (o.noFill) view.SetContourFillVisible(false);
  if (o.noLines) view.SetContourLinesVisible(false);
  if (o.labels) view.SetContourLabelsVisible(true);
  if (o.noLegend) surface.Legend().SetVisible(false);
}

// Colours that need the levels: a table of data values placed on the levels' range, and
// log-spaced levels coloured by their order (by value they would crowd the map's low end
// into a few levels). Comes after a recalculation.
void ColourLevels(const RenderOptions& o, const std::optional<ColorTable>& table, Surface& surface) {
  Contouring& contouring = surface.Contouring();
  Contours& levels = contouring.Contours();
  const std::int32_t n = levels.Count();
  if (n == 0) return;
  if (table && !table->relative) {
    const double first = levels.Item(0)->Value(), last = levels.Item(n - 1)->Value();
    // One level alone takes the table's colour at its value.
    LoadColorTable(contouring.UserColorMap(), *table, n > 1 ? first : first - 1.0, n > 1 ? last : first + 1.0);
    contouring.SetColorMapType(orvColorMapUser);
    contouring.ApplyColorMap();
  }
  if (o.level.logOption->count() == 0) return;
  surface.Legend().SetEvenBands(true);  // every band the same height, as the colours go
  if (contouring.ColorMapType() != orvColorMapUser) contouring.BuildColorMap();
  const ColorMap& map =
      contouring.ColorMapType() == orvColorMapUser ? contouring.UserColorMap() : contouring.WorkingColorMap();
  std::vector<Color> colours;
  for (std::int32_t k = 0; k < n; ++k) colours.push_back(map.Sample(n > 1 ? static_cast<double>(k) / (n - 1) : 0.5).value_or(0));
  // The levels keep the colours given them: the map type that recolours nothing.
  contouring.SetColorMapType(orvColorMapNone);
  for (std::int32_t k = 0; k < n; ++k) {
    levels.Item(k)->SetColor(colours[static_cast<std::size_t>(k)]);
    levels.Item(k)->SetColorBelow(colours[static_cast<std::size_t>(k)]);
  }
}

// X and Y at one scale (--aspect equal), or each stretched to the plot (auto); unless
// told (or a State holds it), by the data's shape. Needs the axes' ranges, so comes
// after a recalculation.
void ChooseAspect(const RenderOptions& o, Surface& surface) {
  if (!o.aspect.empty()) {
    surface.Axes().SetKeepXYAspectRatio(o.aspect == "equal");
  } else if (o.state.empty()) {
    FitXYAspect(surface.Axes());
  }
}

void RunRender(const RenderOptions& o) {
  CheckOptions(o);
  const std::string extension = std::filesystem::path(o.output).extension().string();
  if (!IsStreamed(o.output) && extension != ".png") {
    Refuse(o.output + ": cannot write " +
           (extension.empty() ? std::string("a file without an extension") : extension + " files") +
           "; orvane render writes .png (or - for standard output)");
  }
  const std::optional<ColorTable> table = ColorTableOf(o);
  const auto [width, height] = ParseSize(o.size);
  OutputFile file(o.output);  // a target that cannot be replaced is refused before any work
  Stopwatch clock;

  ProgressHost host;
  Surface surface(host);
  // One image: the views are drawn straight away rather than compiled into lists first.
  detail::SurfaceAccess::State(surface).renderer.SetCompileLists(false);
  surface.InitProperties();
  surface.OnResize(width, height);
  detail::SurfaceAccess::EnsureTarget(surface);
  clock.Lap("context");
  Prepare(o, table, surface, clock);

  // The stages of Refresh one by one, so that --timings can tell them apart.
  detail::SurfaceAccess::Recalculate(surface);
  if (o.state.empty()) FitLabelFormats(surface.Axes(), surface.Contouring());
  ChooseAspect(o, surface);
  ColourLevels(o, table, surface);
  clock.Lap("mesh and contours");
  // Unless a zoom was asked for (or a state brought one), the plot fills its area.
  if (o.command->count("--zoom") == 0 && o.state.empty()) surface.SetZoom(detail::FittingZoom(surface, width, height));
  surface.Refresh();
  clock.Lap("frame");
  ImageDC image(width, height);
  surface.OnPaint(image);
  const std::vector<std::uint8_t> png = image.EncodePng();
  file.Stream().write(reinterpret_cast<const char*>(png.data()), static_cast<std::streamsize>(png.size()));
  file.Commit();
  clock.Lap("png");
  if (o.timings) std::cerr << "timings: " << clock.Text() << "\n";
}

void RunState(const RenderOptions& o) {
  CheckOptions(o);
  const std::optional<ColorTable> table = ColorTableOf(o);
  OutputFile file(o.output);
  Stopwatch clock;
  ProgressHost host;
  Surface surface(host);
  surface.InitProperties();
  Prepare(o, table, surface, clock);
  // The data's scales and levels are worked out, as a refresh would, before saving.
  detail::SurfaceAccess::Recalculate(surface);
  if (o.state.empty()) FitLabelFormats(surface.Axes(), surface.Contouring());
  ChooseAspect(o, surface);
  ColourLevels(o, table, surface);
  const std::vector<std::uint8_t> bytes =
      surface.State(o.formattingOnly ? orvStateTypeFormatting : orvStateTypeFormattingAndData);
  file.Stream().write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
  file.Commit();
}

// The options render and state share: what to draw and how.
void AddPlotOptions(CLI::App& command, RenderOptions& o) {
  command.add_option("FILE", o.file, kDataFileHelp);
  AddInputOptions(command, o.input);
  command.add_flag("--sample", o.sample, "The built-in sample surface instead of a file");
  command.add_option("--state", o.state, "A saved state (orvane state) to apply first; with no FILE its data too");
  command.add_option("--plot-type", o.plotType, "3d (a surface in a plot cube, default) or 2d (a contour map)");
  command.add_option("--rotation", o.rotation, "3-D view angles X,Y,Z in degrees (default 60,0,30)")->delimiter(',');
  o.zoomOption = command.add_option("--zoom", o.zoom, "Zoom factor above 0 (default: the plot fills the image)");
  o.titleOption = command.add_option("--title", o.title, "Caption text over the plot (default: the file's name)");
  command.add_option("--colormap", o.colormap,
                     "viridis, cividis, magma, diverging, terrain, blue-red, red-blue, rainbow, rainbow-reverse, "
                     "rainbow-striped, zebra-striped, land-sea-dark, land-sea-light, or a colour table file (VALUE "
                     "COLOR lines, or a GMT .cpt); default terrain when the Z title or file name says elevation, "
                     "height, altitude, topo, DEM, bathymetry, terrain or relief, viridis otherwise");
  AddLevelOptions(command, o.level, "--contours", true);
  command.add_option("--fill", o.fill,
                     "bands (default: each pixel in the colour of its band, edges on the levels), flat (one "
                     "colour a triangle, from its mean height) or smooth (colours interpolated between levels)");
  command.add_flag("--interpolate-colors", o.interpolateColors, "The same as --fill smooth");
  command.add_option("--ties", o.ties,
                     "above (default: a height equal to a level counts as above it; whole contours) or exact "
                     "(exact signs: a level along mesh edges is traced twice)");
  command.add_flag("--lighting", o.lighting, "Light the surface");
  command.add_option("--projections", o.projections,
                     "none (default), top, bottom or both: the map drawn again on the cube's top or bottom face");
  command.add_option("--samples", o.samples, "Samples per pixel, 1 to 16 (default 4: smooth edges; 1: exact colours)");
  command.add_flag("--full-detail", o.fullDetail,
                   "Draw the fill and mesh from every triangle (by default data of more than 4 triangles a "
                   "pixel are drawn from a decimated mesh; contour lines always come from the full data)");
  command.add_option("--aspect", o.aspect,
                     "equal (one unit as long on X as on Y) or auto (X and Y fill the plot); "
                     "default equal when the X and Y spans are within a factor of 10");
  command.add_option("--xlabel", o.xlabel, "Title of the X axis");
  command.add_option("--ylabel", o.ylabel, "Title of the Y axis");
  command.add_option("--zlabel", o.zlabel, "Title of the Z axis (the legend takes it too)");
  command.add_flag("--base", o.base, "Stand the 3-D surface on a solid block down to the cube's floor");
  command.add_flag("--mesh", o.mesh, "Draw the mesh");
  command.add_flag("--markers", o.markers, "Mark the data points");
  command.add_flag("--no-fill", o.noFill, "No colour fill");
  command.add_flag("--no-lines", o.noLines, "No contour lines");
  command.add_flag("--labels", o.labels, "Label the contour lines with their levels");
  command.add_flag("--no-legend", o.noLegend, "No legend");
  AddResampleOptions(command, o.resample, "--resample", false);
  command.add_flag("--blank-outside-hull", o.blankOutsideHull,
                   "Leave resampled cells outside the data's convex hull blank (the default for nn)");
  command.add_flag("--extrapolate", o.extrapolate, "--resample nn: fill the cells outside the data's hull too");
  o.varianceOption = command.add_option(
      "--variance", o.maxError,
      "--resample kriging: leave blank the cells whose standard error (the square root of the kriging variance) "
      "exceeds SE, to show only what the data support");
  o.varianceOption->type_name("SE");
  o.command = &command;
}

}  // namespace

void AddRenderCommand(CLI::App& app) {
  auto o = std::make_shared<RenderOptions>();
  CLI::App* render = app.add_subcommand(
      "render", "Draw a data file (points or a grid) or the built-in sample as a 3-D surface or contour map to PNG");
  AddPlotOptions(*render, *o);
  render->add_option("-o,--output", o->output, "PNG file to write (- for standard output)")->required();
  render->add_option("--size", o->size, "Image size WIDTHxHEIGHT (default 800x600)");
  render->add_flag("--timings", o->timings, "Print the seconds each stage took to standard error");
  render->callback([o] { RunRender(*o); });

  auto so = std::make_shared<RenderOptions>();
  CLI::App* state = app.add_subcommand(
      "state", "Save the control's state (formatting and data, as orvane render would draw them) to a file");
  AddPlotOptions(*state, *so);
  state->add_option("-o,--output", so->output, "State file to write")->required();
  state->add_flag("--formatting-only", so->formattingOnly, "Save the formatting without the data");
  state->callback([so] { RunState(*so); });
}

}  // namespace orvane::cli
