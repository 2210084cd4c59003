// Surface: the object tree, the lets, the handlers of the children's changes, the
// refresh cycle and the paint step.
//
// Contents
//   1. Building and taking defaults
//   2. Listening to the children
//   3. Properties
//   4. Refresh and the paint step
//   5. What the host calls
//
// Stale marks. A let or a child's change only marks what it makes stale (geometry,
// contours, fonts, plots, redraw) and tells the host the stored key; Refresh, run by
// RequestAutoRefresh when AutoRefresh is True in user mode outside loading, then
// recalculates and draws. A refresh or paint marks itself busy: the changes its own
// recalculation raises (axis scales, resampling limits) mark things stale again but
// start no refresh inside the one under way.

#include "orvane/control/surface.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <limits>
#include <memory>
#include <thread>
#include <utility>

#include "control/mouse_pointer.h"
#include "core/flag_scope.h"
#include "data/data_set_state.h"
#include "orvane/core/error.h"
#include "orvane/core/property_bag.h"
#include "orvane/host/headless_host.h"
#include "render/annotations.h"
#include "render/coord_mapper.h"
#include "render/gl.h"
#include "surface_state.h"

namespace orvane {

namespace {

constexpr std::int16_t kLeftButton = 1;  // the host's button bits: 1 left, 2 right, 4 middle

using detail::FlagScope;
using detail::SurfaceState;

constexpr const char* kSource = "Orvada.Surface";

// A fresh object's persisted values read into object: its defaults, fonts included.
template <class T>
void TakeDefaults(T& object) {
  const T fresh;
  PropertyBag bag;
  fresh.WriteProperties(bag, "");
  object.ReadProperties(bag, "");
}

void CheckFinite(double value, const char* name) {
  if (!std::isfinite(value)) throw Error(5, kSource, std::string(name) + " must be a finite number.");
}

// Samples per pixel: 1 (none) to 16, more than any driver offers.
void CheckSamples(std::int32_t value) {
  if (value < 1 || value > 16) {
    throw Error(5, kSource, "Samples must be from 1 to 16, not " + std::to_string(value) + ".");
  }
}

// Lighting values are kept within 0..1.
double ClampedIntensity(double value, const char* name) {
  if (std::isnan(value)) throw Error(5, kSource, std::string(name) + " must be a number, not NaN.");
  return value < 0.0 ? 0.0 : (value > 1.0 ? 1.0 : value);
}

// The rotation lets' angle: whole turns added while below 0 and taken off while above
// 360 (so 360 stays 360 and 720 gives 360), then rounded half to even. fmod gives what
// the repeated steps give, for any magnitude.
std::int32_t NormalisedRotation(double degrees, const char* name) {
  if (!std::isfinite(degrees)) throw Error(5, kSource, std::string(name) + " must be a finite number of degrees.");
  double v = degrees;
  if (v < 0.0) {
    v = std::fmod(v, 360.0);
    if (v < 0.0) v += 360.0;
  } else if (v > 360.0) {
    v = std::fmod(v, 360.0);
    if (v == 0.0) v = 360.0;
  }
  return static_cast<std::int32_t>(RoundHalfEven(v));
}

// The frame settings the control's properties give, for drawing into target.
detail::FrameSettings SettingsOf(SurfaceState& s, const detail::RenderTarget& target) {
  detail::FrameSettings f;
  f.backColor = s.backColor;
  f.foreColor = s.foreColor;
  f.lightingOn = s.lightingOn;
  f.lightingIntensitySpotlight = s.lightingIntensitySpotlight;
  f.lightingIntensityAmbient = s.lightingIntensityAmbient;
  f.lightingMaterialShininess = s.lightingMaterialShininess;
  f.plotType = s.plotType;
  f.zoom = s.zoom;
  f.offsetHorizontal = s.offsetHorizontal;
  f.offsetVertical = s.offsetVertical;
  f.fitPlotArea = s.fitPlotArea;
  f.levelOfDetail = s.levelOfDetail;
  double m[16];
  s.Trackball().GetRotationMatrix(m);
  std::copy(m, m + 16, f.rotation.begin());
  f.cursorVisible = s.cursor.Visible();
  f.labelTestByStencil = target.StencilBits() > 0;
  return f;
}

}  // namespace

// ---------------------------------------------------------------------------------------
// 1. Building and taking defaults

Surface::Surface(Host& host) : host_(host), state_(std::make_unique<SurfaceState>()) {
  // The members of SurfaceState are made in the control's order (contouring, data sets,
  // axes, faces, legend, plots, header, fonts, cursor), with every mark set.
  SurfaceState& s = *state_;
  s.passes = std::make_unique<detail::PlotAnnotations>(
      detail::AnnotatedObjects{s.axes, s.faces, s.header, s.legend, s.cursor, s.contouring, s.dataSets});
  ConnectChildren();
  detail::InvalidateDataSets(state_->dataSets);
}

Surface::~Surface() { Terminate(); }

void Surface::InitProperties() {
  SurfaceState& s = *state_;
  FlagScope loading(s.loading, true);
  s.appearance = orvFlat;
  s.autoRefresh = false;
  s.backColor = 0xFFFFFF;
  s.foreColor = 0;
  s.borderStyle = orvNone;
  s.lightingOn = false;
  s.offsetHorizontal = 0.0;
  s.offsetVertical = 0.0;
  s.plotType = orvPlotType3D;
  s.zoom = 1.0;
  s.lightingMaterialShininess = 0.5;
  s.lightingIntensitySpotlight = 1.0;
  s.lightingIntensityAmbient = 0.5;
  s.fitPlotArea = false;
  s.levelOfDetail = true;
  if (s.samples != 1) {
    s.samples = 1;
    RemakeTarget();
  }
  // The window takes the default border and look at the next refresh.
  s.borderStylePending = true;
  s.appearancePending = true;

  // The axes forget the data's range first: they take their stored defaults as they are,
  // not a scale worked out again from data that is about to go.
  constexpr double kNoData = std::numeric_limits<double>::max();
  for (Axis* axis : {&s.axes.XAxis(), &s.axes.YAxis(), &s.axes.ZAxis()}) axis->SetDataRange(kNoData, -kNoData);
  TakeDefaults(s.axes);
  TakeDefaults(s.contouring);
  s.dataSets.SetCount(1);
  {
    const DataSet fresh;
    PropertyBag bag;
    fresh.WriteContents(bag, "");
    s.dataSets.Item(0).ReadContents(bag, "");
  }
  TakeDefaults(s.faces);
  TakeDefaults(s.legend);
  InvalidatePlots();
  TakeDefaults(s.header);

  detail::CTrackball& ball = s.Trackball();
  ball.SetRadius(1.5);
  ball.SetRotation(60, 0, 30);
  s.lightingOn = false;
}

void Surface::Terminate() noexcept {
  SurfaceState& s = *state_;
  if (s.terminated) return;
  s.terminated = true;
  s.connections.clear();
  try {
    s.passes->InvalidateFonts();
  } catch (...) {  // the fonts go with the context below in any case
  }
  s.renderer.ReleaseLists(s.target);
  s.target.Release();
}

// ---------------------------------------------------------------------------------------
// Persistence

void Surface::WriteProperties(PropertyBag& bag) const {
  const SurfaceState& s = *state_;
  detail::CTrackball& ball = const_cast<SurfaceState&>(s).Trackball();
  bag.WriteProperty("Appearance", static_cast<std::int32_t>(s.appearance));
  bag.WriteProperty("AutoRefresh", s.autoRefresh);
  bag.WriteProperty("BackColor", static_cast<std::int32_t>(s.backColor));
  bag.WriteProperty("ForeColor", static_cast<std::int32_t>(s.foreColor));
  bag.WriteProperty("BorderStyle", static_cast<std::int32_t>(s.borderStyle));
  bag.WriteProperty("Enabled", host_.Enabled());
  bag.WriteProperty("HorizontalOffset", s.offsetHorizontal);
  bag.WriteProperty("LightingOn", s.lightingOn);
  bag.WriteProperty("LightingIntensityAmbient", s.lightingIntensityAmbient);
  bag.WriteProperty("LightingIntensitySpotlight", s.lightingIntensitySpotlight);
  bag.WriteProperty("LightingMaterialShininess", s.lightingMaterialShininess);
  bag.WriteProperty("VerticalOffset", s.offsetVertical);
  bag.WriteProperty("ViewType", static_cast<std::int32_t>(s.plotType));
  bag.WriteProperty("XRotation", ball.RotationX());
  bag.WriteProperty("YRotation", ball.RotationY());
  bag.WriteProperty("ZRotation", ball.RotationZ());
  bag.WriteProperty("Zoom", s.zoom);
  bag.WriteProperty("Samples", s.samples);
  bag.WriteProperty("FitPlotArea", s.fitPlotArea);
  // Written only when off, so that a State from before it reads as it was saved.
  if (!s.levelOfDetail) bag.WriteProperty("LevelOfDetail", false);
  s.axes.WriteProperties(bag, "Axes.");
  s.contouring.WriteProperties(bag, "Contouring.");
  bag.WriteProperty("Datasets.Count", s.dataSets.Count());
  for (std::int32_t i = 0; i < s.dataSets.Count(); ++i) {
    s.dataSets.Item(i).WriteFormatting(bag, "Datasets.DataSet" + std::to_string(i + 1) + ".");
  }
  s.faces.WriteProperties(bag, "Faces.");
  s.legend.WriteProperties(bag, "Legend");
  s.header.WriteProperties(bag, "Header");
  s.cursor.WriteProperties(bag, "Cursor.");
}

void Surface::TryReading(const PropertyBag& bag, bool withData) {
  HeadlessHost host;
  Surface scratch(host);
  scratch.InitProperties();
  scratch.ReadPropertiesInPlace(bag, withData);
}

void Surface::ReadProperties(const PropertyBag& bag) {
  TryReading(bag, false);
  ReadPropertiesInPlace(bag, false);
}

void Surface::ReadPropertiesInPlace(const PropertyBag& given, bool withData) {
  SurfaceState& s = *state_;
  // A key the bag lacks takes the value a new control has: the bag is laid over what a
  // new control writes. (This is what gives the axes their titles X, Y and Z, which they
  // take from their collection after their own empty default.)
  PropertyBag bag;
  {
    HeadlessHost host;
    Surface fresh(host);
    fresh.InitProperties();
    fresh.WriteProperties(bag);
  }
  for (const auto& item : given.Items()) bag.WriteProperty(item.first, item.second);
  // Everything is read and checked before the first change.
  const auto appearance = bag.ReadProperty("Appearance", std::int32_t{orvFlat});
  const bool autoRefresh = bag.ReadProperty("AutoRefresh", false);
  const auto back = bag.ReadProperty("BackColor", std::int32_t{0xFFFFFF});
  const auto fore = bag.ReadProperty("ForeColor", std::int32_t{0});
  const auto border = bag.ReadProperty("BorderStyle", std::int32_t{orvNone});
  const bool enabled = bag.ReadProperty("Enabled", true);
  const double offsetH = bag.ReadProperty("HorizontalOffset", 0.0);
  const bool lightingOn = bag.ReadProperty("LightingOn", false);
  const double ambient = bag.ReadProperty("LightingIntensityAmbient", 0.5);
  const double spotlight = bag.ReadProperty("LightingIntensitySpotlight", 1.0);
  const double shininess = bag.ReadProperty("LightingMaterialShininess", 0.5);
  const double offsetV = bag.ReadProperty("VerticalOffset", 0.0);
  const auto plotType = bag.ReadProperty("ViewType", std::int32_t{orvPlotType3D});
  const auto rx = bag.ReadProperty("XRotation", std::int32_t{60});
  const auto ry = bag.ReadProperty("YRotation", std::int32_t{0});
  const auto rz = bag.ReadProperty("ZRotation", std::int32_t{30});
  const double zoom = bag.ReadProperty("Zoom", 1.0);
  const auto samples = bag.ReadProperty("Samples", std::int32_t{1});
  const bool fitPlotArea = bag.ReadProperty("FitPlotArea", false);
  const bool levelOfDetail = bag.ReadProperty("LevelOfDetail", true);
  const auto count = bag.ReadProperty("Datasets.Count", std::int32_t{0});
  if (appearance < orvFlat || appearance > orv3d || border < orvNone || border > orvFixedSingle ||
      (plotType != orvPlotType3D && plotType != orvPlotType2D)) {
    throw Error(5, kSource);
  }
  for (const double v : {offsetH, offsetV}) CheckFinite(v, "An offset");
  for (const double v : {ambient, spotlight, shininess}) ClampedIntensity(v, "A lighting value");
  if (!(zoom > 0.0) || !std::isfinite(zoom)) throw Error(5, kSource, "The stored Zoom must be a positive number.");
  CheckSamples(samples);
  if (count < 0 || count > 10000) throw Error(5, kSource, "The stored data set count " + std::to_string(count) + " cannot be used.");

  FlagScope loading(s.loading, true);
  SetAppearance(appearance);
  s.autoRefresh = autoRefresh;
  s.backColor = static_cast<Color>(back) & 0xFFFFFFu;
  s.foreColor = static_cast<Color>(fore) & 0xFFFFFFu;
  SetBorderStyle(border);
  host_.SetEnabled(enabled);
  s.offsetHorizontal = offsetH;
  s.lightingOn = lightingOn;
  s.lightingIntensityAmbient = ClampedIntensity(ambient, "LightingIntensityAmbient");
  s.lightingIntensitySpotlight = ClampedIntensity(spotlight, "LightingIntensitySpotlight");
  s.lightingMaterialShininess = ClampedIntensity(shininess, "LightingMaterialShininess");
  s.offsetVertical = offsetV;
  s.plotType = static_cast<EPlotType>(plotType);
  s.Trackball().SetRotation(rx, ry, rz);
  s.zoom = zoom;
  s.fitPlotArea = fitPlotArea;
  s.levelOfDetail = levelOfDetail;
  SetSamples(samples);
  s.axes.ReadProperties(bag, "Axes.");
  s.contouring.ReadProperties(bag, "Contouring.");
  if (count > 0) s.dataSets.SetCount(count);
  for (std::int32_t i = 0; i < s.dataSets.Count() && i < std::max(count, 1); ++i) {
    const std::string prefix = "Datasets.DataSet" + std::to_string(i + 1) + ".";
    if (withData) {
      s.dataSets.Item(i).ReadContents(bag, prefix);
    } else {
      s.dataSets.Item(i).ReadFormatting(bag, prefix);
    }
  }
  s.faces.ReadProperties(bag, "Faces.");
  s.legend.ReadProperties(bag, "Legend");
  s.header.ReadProperties(bag, "Header");
  s.cursor.ReadProperties(bag, "Cursor.");
  s.marks.geometry = s.marks.contours = true;
  s.fontsDirty = true;
  s.redrawRequired = true;
  InvalidatePlots();
}

void Surface::WriteState(PropertyBag& bag, bool withData) const {
  WriteProperties(bag);
  if (!withData) return;
  const SurfaceState& s = *state_;
  for (std::int32_t i = 0; i < s.dataSets.Count(); ++i) {
    s.dataSets.Item(i).WriteContents(bag, "Datasets.DataSet" + std::to_string(i + 1) + ".");
  }
}

std::vector<std::uint8_t> Surface::State(std::int32_t type) const {
  PropertyBag bag;
  if (type == orvStateTypeFormatting || type == orvStateTypeFormattingAndData) {
    WriteState(bag, type == orvStateTypeFormattingAndData);
  }
  return bag.Contents();
}

void Surface::SetState(const std::vector<std::uint8_t>& bytes, std::int32_t type) {
  PropertyBag bag;
  bag.SetContents(bytes);
  // The properties whatever the type; the data only for orvStateTypeFormattingAndData.
  const bool withData = type == orvStateTypeFormattingAndData;
  TryReading(bag, withData);
  // The refresh can still refuse what was read (a resampler's settings that do not fit
  // the data), so what was here is kept to be put back. Kriging reads its Range and Sill
  // from the keys "1" and "2", which are written here too so that they come back as they
  // were.
  PropertyBag previous;
  WriteState(previous, true);
  for (const auto& item : std::vector(previous.Items())) {
    if (item.first.ends_with("Kriging.Range")) {
      previous.WriteProperty(item.first.substr(0, item.first.size() - 5) + "1", item.second);
    } else if (item.first.ends_with("Kriging.Sill")) {
      previous.WriteProperty(item.first.substr(0, item.first.size() - 4) + "2", item.second);
    }
  }
  ReadPropertiesInPlace(bag, withData);
  try {
    Refresh();
  } catch (const Error&) {
    ReadPropertiesInPlace(previous, true);
    try {
      Refresh();
    } catch (const Error&) {
      // It failed before the State came as well; the host heard of that then.
    }
    throw;
  }
}

orvane::DataSets& Surface::DataSets() noexcept { return state_->dataSets; }
orvane::Axes& Surface::Axes() noexcept { return state_->axes; }
orvane::Faces& Surface::Faces() noexcept { return state_->faces; }
orvane::Contouring& Surface::Contouring() noexcept { return state_->contouring; }
orvane::Legend& Surface::Legend() noexcept { return state_->legend; }
Caption& Surface::Header() noexcept { return state_->header; }
orvane::Cursor& Surface::Cursor() noexcept { return state_->cursor; }

// ---------------------------------------------------------------------------------------
// 2. Listening to the children
//
// Each handler marks what the change makes stale, refreshes when asked to, and tells the
// host the key: the child's name for the property as raised, "DataSet" and the
// zero-based index for a data change, the plot position, "_" and the name for a view.

void Surface::ConnectChildren() {
  SurfaceState& s = *state_;
  auto& c = s.connections;
  c.push_back(s.axes.FontChanged.Connect([this](const std::string& name) {
    InvalidateFonts();
    RefreshThenNotify(name);
  }));
  c.push_back(s.axes.PropertyChanged.Connect([this](const std::string& name) {
    InvalidatePlots();
    RefreshThenNotify(name);
  }));
  for (Axis* axis : {&s.axes.XAxis(), &s.axes.YAxis(), &s.axes.ZAxis()}) {
    const bool isZ = axis == &s.axes.ZAxis();
    c.push_back(axis->ScaleChanged.Connect([this, isZ](const std::string& name) {
      SurfaceState& st = *state_;
      st.marks.geometry = true;
      detail::InvalidateDataSets(st.dataSets);  // the data sets rescale
      InvalidatePlots();
      if (isZ) st.marks.contours = true;  // the levels follow the Z axis
      RefreshThenNotify(name);
    }));
  }
  c.push_back(s.contouring.PropertyChanged.Connect([this](const std::string& name) {
    detail::InvalidateDataSets(state_->dataSets);
    state_->marks.contours = true;
    InvalidatePlots();
    RefreshThenNotify(name);
  }));
  c.push_back(s.cursor.PropertyChanged.Connect([this](const std::string& name) {
    state_->redrawRequired = true;  // the data and the plots stay valid
    RefreshThenNotify(name);
  }));
  c.push_back(s.dataSets.DataChanged.Connect([this](std::int32_t index) {
    InvalidateData();
    RefreshThenNotify("DataSet" + std::to_string(index));
  }));
  c.push_back(s.dataSets.ViewChanged.Connect([this](const std::string& position, const std::string& name) {
    InvalidatePlots();
    RefreshThenNotify(position + "_" + name);
  }));
  c.push_back(s.dataSets.PropertyChanged.Connect([this](const std::string& name) {
    // A data set's resampling settings: its mesh and limits change with them. The
    // limits a rebuild hands to its resampling are raised here too, while that rebuild
    // is under way: they mark the data stale but start no refresh of their own.
    InvalidateData();
    bool rebuilding = false;
    for (DataSet& data : state_->dataSets) rebuilding = rebuilding || detail::DataSetAccess::State(data).rebuilding;
    if (rebuilding) {
      host_.PropertyChanged(name);
    } else {
      RefreshThenNotify(name);
    }
  }));
  c.push_back(s.faces.PropertyChanged.Connect([this](const std::string& name) {
    // A master's let relays the faces' changes first: the host hears each, and the one
    // redraw comes with the master's own event.
    if (state_->faces.RelayingMasterLet()) {
      host_.PropertyChanged(name);
      return;
    }
    RefreshThenNotify(name);
  }));
  c.push_back(s.header.PropertyChanged.Connect([this](const std::string& name) {
    if (name == "Font") InvalidateFonts();
    RefreshThenNotify(name);
  }));
  c.push_back(s.legend.PropertyChanged.Connect([this](const std::string& name) { RefreshThenNotify(name); }));
}

void Surface::RequestAutoRefresh() {
  const SurfaceState& s = *state_;
  if (!host_.UserMode() || !s.autoRefresh || s.loading || s.busy || s.terminated) return;
  Refresh();
}

void Surface::RefreshThenNotify(const std::string& key) {
  try {
    RequestAutoRefresh();
  } catch (...) {
    host_.PropertyChanged(key);  // the change stands: the host hears of it all the same
    throw;
  }
  host_.PropertyChanged(key);
}

void Surface::InvalidatePlots() noexcept { state_->renderer.MarkPlotsStale(); }

void Surface::InvalidateFonts() {
  state_->passes->InvalidateFonts();
  state_->fontsDirty = true;
}

void Surface::InvalidateData() {
  SurfaceState& s = *state_;
  s.marks.geometry = true;
  s.marks.contours = true;
  detail::InvalidateDataSets(s.dataSets);
  InvalidatePlots();
}

// ---------------------------------------------------------------------------------------
// 3. Properties

template <class T>
void Surface::Let(T& field, T value, const char* key) {
  if (field == value) return;
  field = value;
  RefreshThenNotify(key);
}

EAppearance Surface::Appearance() const noexcept { return state_->appearance; }

void Surface::SetAppearance(std::int32_t value) {
  if (value == host_.Appearance()) return;
  if (value != orvFlat && value != orv3d) throw Error(5, kSource);
  state_->appearance = static_cast<EAppearance>(value);
  state_->appearancePending = true;
  RefreshThenNotify("Appearance");
}

bool Surface::AutoRefresh() const noexcept { return state_->autoRefresh; }
void Surface::SetAutoRefresh(bool value) { Let(state_->autoRefresh, value, "AutoRefresh"); }

Color Surface::BackColor() const noexcept { return state_->backColor; }
void Surface::SetBackColor(Color value) { Let(state_->backColor, value, "BackColor"); }

EBorderStyle Surface::BorderStyle() const noexcept { return state_->borderStyle; }

void Surface::SetBorderStyle(std::int32_t value) {
  if (value == host_.BorderStyle()) return;
  if (value != orvNone && value != orvFixedSingle) throw Error(5, kSource);
  state_->borderStyle = static_cast<EBorderStyle>(value);
  state_->borderStylePending = true;
  RefreshThenNotify("BorderStyle");
}

bool Surface::Enabled() const { return host_.Enabled(); }

void Surface::SetEnabled(bool value) {
  if (value == host_.Enabled()) return;
  host_.SetEnabled(value);
  host_.PropertyChanged("Enabled");
}

Color Surface::ForeColor() const noexcept { return state_->foreColor; }
void Surface::SetForeColor(Color value) { Let(state_->foreColor, value, "ForeColor"); }

double Surface::LightingIntensityAmbient() const noexcept { return state_->lightingIntensityAmbient; }
void Surface::SetLightingIntensityAmbient(double value) {
  Let(state_->lightingIntensityAmbient, ClampedIntensity(value, "LightingIntensityAmbient"),
      "LightingIntensityAmbient");
}

double Surface::LightingIntensitySpotlight() const noexcept { return state_->lightingIntensitySpotlight; }
void Surface::SetLightingIntensitySpotlight(double value) {
  // The stored format has always announced the spotlight under the shininess key.
  Let(state_->lightingIntensitySpotlight, ClampedIntensity(value, "LightingIntensitySpotlight"),
      "LightingMaterialShininess");
}

double Surface::LightingMaterialShininess() const noexcept { return state_->lightingMaterialShininess; }
void Surface::SetLightingMaterialShininess(double value) {
  Let(state_->lightingMaterialShininess, ClampedIntensity(value, "LightingMaterialShininess"),
      "LightingMaterialShininess");
}

bool Surface::LightingOn() const noexcept { return state_->lightingOn; }

void Surface::SetLightingOn(bool value) {
  if (state_->lightingOn == value) return;
  state_->lightingOn = value;
  InvalidatePlots();  // and deliberately no refresh
  host_.PropertyChanged("LightingOn");
}

double Surface::OffsetHorizontal() const noexcept { return state_->offsetHorizontal; }
void Surface::SetOffsetHorizontal(double value) {
  if (value == state_->offsetHorizontal) return;
  CheckFinite(value, "OffsetHorizontal");
  Let(state_->offsetHorizontal, value, "HorizontalOffset");
}

double Surface::OffsetVertical() const noexcept { return state_->offsetVertical; }
void Surface::SetOffsetVertical(double value) {
  if (value == state_->offsetVertical) return;
  CheckFinite(value, "OffsetVertical");
  Let(state_->offsetVertical, value, "VerticalOffset");
}

EPlotType Surface::PlotType() const noexcept { return state_->plotType; }

void Surface::SetPlotType(std::int32_t value) {
  if (value == state_->plotType) return;
  if (value != orvPlotType3D && value != orvPlotType2D) throw Error(5, kSource);
  Let(state_->plotType, static_cast<EPlotType>(value), "ViewType");
}

std::int32_t Surface::RotationX() const { return state_->Trackball().RotationX(); }
std::int32_t Surface::RotationY() const { return state_->Trackball().RotationY(); }
std::int32_t Surface::RotationZ() const { return state_->Trackball().RotationZ(); }
void Surface::SetRotationX(double degrees) { SetRotation(0, degrees, "RotationX", "XRotation"); }
void Surface::SetRotationY(double degrees) { SetRotation(1, degrees, "RotationY", "YRotation"); }
void Surface::SetRotationZ(double degrees) { SetRotation(2, degrees, "RotationZ", "ZRotation"); }

void Surface::SetRotation(int axis, double degrees, const char* name, const char* key) {
  const std::int32_t angle = NormalisedRotation(degrees, name);
  detail::CTrackball& ball = state_->Trackball();
  if (axis == 0) {
    ball.SetRotationX(angle);
  } else if (axis == 1) {
    ball.SetRotationY(angle);
  } else {
    ball.SetRotationZ(angle);
  }
  RefreshThenNotify(key);
}

double Surface::Zoom() const noexcept { return state_->zoom; }

std::int32_t Surface::Samples() const noexcept { return state_->samples; }

void Surface::SetSamples(std::int32_t value) {
  SurfaceState& s = *state_;
  if (value == s.samples) return;
  CheckSamples(value);
  s.samples = value;
  RemakeTarget();
  RefreshThenNotify("Samples");
}

void Surface::RemakeTarget() {
  // The drawing context is made again with its new framebuffer (fonts and lists go with
  // the old one); a target not yet made takes the count when it is.
  SurfaceState& s = *state_;
  if (!s.targetMade) return;
  InvalidateFonts();
  s.renderer.ReleaseLists(s.target);
  s.target.Create(s.width, s.height, s.samples);
  s.redrawRequired = true;
}

bool Surface::FitPlotArea() const noexcept { return state_->fitPlotArea; }
void Surface::SetFitPlotArea(bool value) { Let(state_->fitPlotArea, value, "FitPlotArea"); }

bool Surface::LevelOfDetail() const noexcept { return state_->levelOfDetail; }
void Surface::SetLevelOfDetail(bool value) { Let(state_->levelOfDetail, value, "LevelOfDetail"); }

void Surface::SetZoom(double value) {
  if (value == state_->zoom) return;
  if (!(value > 0.0)) throw Error(5, kSource);
  CheckFinite(value, "Zoom");
  Let(state_->zoom, value, "Zoom");
}

// ---------------------------------------------------------------------------------------
// 4. Refresh and the paint step

void Surface::Recalculate() {
  SurfaceState& s = *state_;
  // Resampling runs report to the host from this thread only; their worker threads see
  // the host's last answer.
  const std::thread::id self = std::this_thread::get_id();
  auto stop = std::make_shared<std::atomic<bool>>(false);
  Host& host = host_;
  ProgressCallback progress = [&host, self, stop](std::int64_t done, std::int64_t total) {
    if (std::this_thread::get_id() == self && !stop->load()) {
      const double fraction = total > 0 ? static_cast<double>(done) / static_cast<double>(total) : 1.0;
      if (!host.ReportProgress(fraction)) stop->store(true);
    }
    return !stop->load();
  };
  detail::Scene scene = s.SceneOf();
  if (s.recalculation.Run(scene, s.marks, progress, [this] { InvalidatePlots(); })) InvalidatePlots();
}

void Surface::Refresh() {
  SurfaceState& s = *state_;
  const detail::CMousePointer wait(host_, kPointerHourglass);
  const FlagScope busy(s.busy, true);
  if (s.borderStylePending) {
    s.borderStylePending = false;
    host_.SetBorderStyle(s.borderStyle);
  }
  if (s.appearancePending) {
    s.appearancePending = false;
    if (s.borderStyle != orvNone) host_.SetAppearance(s.appearance);
  }
  if (s.fontsDirty) {
    s.passes->RebuildFonts();
    s.fontsDirty = false;
  }
  Recalculate();
  s.redrawRequired = true;
  EnsureTarget();
  PaintStep(s.target, nullptr, 0, 0);
  host_.RequestRepaint();
}

void Surface::EnsureTarget() {
  SurfaceState& s = *state_;
  if (s.targetMade) return;
  s.target.Create(s.width, s.height, s.samples);
  s.targetMade = true;
}

void Surface::PaintStep(detail::RenderTarget& target, DeviceContext* dc, std::int32_t left,
                        std::int32_t top) noexcept {
  SurfaceState& s = *state_;
  try {
    const FlagScope busy(s.busy, true);
    if (s.fontsDirty) {
      s.passes->RebuildFonts();
      s.fontsDirty = false;
      detail::InvalidateDataSets(s.dataSets);
      Recalculate();
    }
    if (s.redrawRequired) {
      s.redrawRequired = false;
      detail::Scene scene = s.SceneOf();
      s.renderer.Render(target, scene, SettingsOf(s, target), s.passes.get(), false);
    }
  } catch (const std::exception& e) {
    s.lastPaintError = e.what();
  } catch (...) {
    s.lastPaintError = "an unknown error";
  }
  // Whatever failed above, the last picture is shown.
  if (dc == nullptr) return;
  try {
    target.CopyTo(*dc, left, top);
  } catch (const std::exception& e) {
    s.lastPaintError = e.what();
  } catch (...) {
    s.lastPaintError = "an unknown error";
  }
}

void Surface::Reset() {
  InitProperties();
  InvalidateData();
  Refresh();
}

void Surface::ShowPropertyPages(const std::vector<std::string>& settings) { host_.ShowPropertyPages(*this, settings); }

// ---------------------------------------------------------------------------------------
// 5. What the host calls

void Surface::OnPaint(DeviceContext& dc) noexcept {
  try {
    EnsureTarget();
  } catch (...) {  // no picture can be had: nothing to copy
    return;
  }
  PaintStep(state_->target, &dc, 0, 0);
}

void Surface::OnResize(std::int32_t width, std::int32_t height) {
  SurfaceState& s = *state_;
  InvalidateFonts();
  s.renderer.ReleaseLists(s.target);
  s.target.Create(width, height, s.samples);  // a refused size leaves the old target as it was
  s.targetMade = true;
  s.width = width;
  s.height = height;
  s.redrawRequired = true;
}

void Surface::OnMouseDown(std::int16_t button, std::int16_t shift, float x, float y) {
  state_->lastMouseX = x;
  state_->lastMouseY = y;
  state_->dragging = (button & kLeftButton) != 0;
  MouseDown.Raise(button, shift, x, y);
}

void Surface::OnMouseMove(std::int16_t button, std::int16_t shift, float x, float y) {
  SurfaceState& s = *state_;
  if (s.cursor.Mode() == orvCursorModeTrackMouse) {
    if (TrackCursor(x, y) && s.cursor.Visible()) s.redrawRequired = true;
  }
  if (s.dragging && (button & kLeftButton) != 0 && s.plotType == orvPlotType3D && s.width > 0 && s.height > 0) {
    s.Trackball().Drag(s.lastMouseX, s.lastMouseY, x, y, s.width, s.height);
    s.lastMouseX = x;
    s.lastMouseY = y;
    s.redrawRequired = true;
    EnsureTarget();
    PaintStep(s.target, nullptr, 0, 0);
    host_.RequestRepaint();
  } else if (s.redrawRequired) {
    host_.RequestRepaint();
  }
  MouseMove.Raise(button, shift, x, y);
}

void Surface::OnMouseUp(std::int16_t button, std::int16_t shift, float x, float y) {
  if ((button & kLeftButton) != 0) state_->dragging = false;
  MouseUp.Raise(button, shift, x, y);
}

void Surface::OnDblClick() { DblClick.Raise(); }

bool Surface::OnKeyDown(std::int16_t keyCode, std::int16_t /*shift*/) {
  SurfaceState& s = *state_;
  // The arrow keys step an angle by 5 degrees and bring it into 0..359 in whole steps
  // before the let (which has its own, different normaliser).
  auto stepped = [](std::int32_t angle, std::int32_t by) {
    std::int32_t a = angle + by;
    while (a < 0) a += 360;
    while (a >= 360) a -= 360;
    return a;
  };
  auto preset = [&](double x, double y, double z) {
    s.offsetHorizontal = 0.0;  // directly: the preset views notify only their angles
    s.offsetVertical = 0.0;
    s.zoom = 1.0;
    SetRotationX(x);
    SetRotationY(y);
    SetRotationZ(z);
  };
  switch (keyCode) {
    case 83: SetLightingIntensitySpotlight(LightingIntensitySpotlight() + 0.1); break;  // S
    case 68: SetLightingIntensitySpotlight(LightingIntensitySpotlight() - 0.1); break;  // D
    case 81: SetLightingIntensityAmbient(LightingIntensityAmbient() + 0.1); break;      // Q
    case 87: SetLightingIntensityAmbient(LightingIntensityAmbient() - 0.1); break;      // W
    case 79: SetLightingMaterialShininess(LightingMaterialShininess() + 0.1); break;    // O
    case 80: SetLightingMaterialShininess(LightingMaterialShininess() - 0.1); break;    // P
    case 107: SetZoom(Zoom() * 1.2); break;                                             // pad +
    case 109: SetZoom(std::max(Zoom() / 1.2, 1.0)); break;                              // pad -
    case 38: SetRotationX(stepped(RotationX(), 5)); break;                              // Up
    case 40: SetRotationX(stepped(RotationX(), -5)); break;                             // Down
    case 39: SetRotationZ(stepped(RotationZ(), 5)); break;                              // Right
    case 37: SetRotationZ(stepped(RotationZ(), -5)); break;                             // Left
    case 36: preset(60, 0, 30); break;                                                  // Home
    case 33: preset(120, 0, 30); break;                                                 // Page Up
    case 34: preset(120, 0, 210); break;                                                // Page Down
    case 35: preset(60, 0, 210); break;                                                 // End
    default: return false;
  }
  s.redrawRequired = true;
  EnsureTarget();
  PaintStep(s.target, nullptr, 0, 0);
  host_.RequestRepaint();
  return true;
}

bool Surface::ConvertInternalToScaledCoordinates(double internalX, double internalY, double& scaledX,
                                                 double& scaledY) {
  const double cube[3] = {internalX, internalY, 0.0};
  const std::array<double, 3> data = detail::ConvertInternalToScaledCoordinates(state_->axes, cube);
  if (!std::isfinite(internalX) || !std::isfinite(internalY) || !std::isfinite(data[0]) || !std::isfinite(data[1])) {
    return false;
  }
  scaledX = data[0];
  scaledY = data[1];
  return true;
}

bool Surface::TrackCursor(float x, float y) {
  SurfaceState& s = *state_;
  if (!s.target.HasContext() || s.renderer.FrameCount() == 0) return false;
  const detail::FrameState& frame = s.renderer.LastFrame();
  if (frame.width != s.target.Width() || frame.height != s.target.Height()) return false;
  const int px = static_cast<int>(std::floor(x)), py = frame.height - 1 - static_cast<int>(std::floor(y));
  if (px < 0 || py < 0 || px >= frame.width || py >= frame.height) return false;
  // The depth under the pointer, as the last frame left it: the clear value means no
  // data there.
  if (!s.target.MakeCurrent()) return false;
  GLfloat depth = 1.0F;
  detail::RenderTarget::ReadPixels(px, py, 1, 1, GL_DEPTH_COMPONENT, GL_FLOAT, &depth);
  s.target.ReleaseCurrent();
  if (!(depth < 1.0F)) return false;
  const detail::CapturedMatrices& m = frame.mainViews;
  double cube[3];
  if (gluUnProject(px + 0.5, py + 0.5, depth, m.modelView.data(), m.projection.data(), m.viewport.data(), &cube[0],
                   &cube[1], &cube[2]) != GL_TRUE) {
    return false;
  }
  const std::array<double, 3> data = detail::ConvertInternalToScaledCoordinates(s.axes, cube);
  for (const double v : data) {
    if (!std::isfinite(v)) return false;
  }
  s.cursor.SetXValue(data[0]);
  s.cursor.SetYValue(data[1]);
  s.cursor.SetZValue(data[2]);
  return true;
}

}  // namespace orvane
