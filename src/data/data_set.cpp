// DataSet: input validation and storage, limits and normalisation, hulls, lazy mesh
// rebuild, Z interpolation and the persisted contents.
//
// Coordinates of the mesh, the hulls and the triangulation are normalised per axis,
// n = (v - min) / range, with a range below the double epsilon taken as 1 so that a flat
// axis maps onto 0. A grid is stored as flat lists with point k = i * yCount + j.

#include <algorithm>
#include <atomic>
#include <cmath>
#include <limits>
#include <memory>
#include <span>
#include <string>
#include <utility>

#include "data_set_state.h"
#include "contour/band_outline.h"
#include "contour/hull_clip.h"
#include "core/flag_scope.h"
#include "geometry.h"
#include "orvane/core/error.h"
#include "orvane/core/property_bag.h"
#include "render/view_access.h"
#include "resample/interpolator.h"

namespace orvane {

namespace {

// A fresh contour generation, unique in the process.
std::uint64_t NextContourGeneration() {
  static std::atomic<std::uint64_t> last{0};
  return ++last;
}

using detail::DataSetState;

constexpr const char* kSource = "Orvadis.Dataset";
constexpr double kEpsilon = 2.220446049250313e-16;
// Absolute tolerance of the limits test in ZValueInterpolate and of grid coordinates.
constexpr double kTolerance = 2.2204460492503102e-14;
constexpr double kMaximumMagnitude = 1e300;

const char* const kUpperBoundsMessage =
    "Upper bounds of input data arrays must be consistent with data element counts";
const char* const kLowerBoundsMessage = "Lower bounds of input data arrays must be 0";
const char* const kRangeMessage = "Data range exceeds maximum limit";

void CheckCount(std::int32_t count, const char* name) {
  if (count < 0) {
    throw Error(5, kSource, std::string(name) + " must not be negative, not " +
                                std::to_string(count) + ".");
  }
}

// NaN is refused outright, unless it marks blank cells; infinities and magnitudes of
// 1e300 or more exceed the range.
void CheckValues(std::span<const double> values, const char* axis, bool blanks = false) {
  for (double v : values) {
    if (std::isnan(v) && !blanks) {
      throw Error(5, kSource, std::string("The ") + axis + " values contain NaN (not a number).");
    }
  }
  for (double v : values) {
    if (!(std::fabs(v) < kMaximumMagnitude) && !std::isnan(v)) throw Error(5, kSource, kRangeMessage);
  }
}

std::span<const double> First(const Array& a, std::int32_t count) {
  return std::span<const double>(a.Values()).first(static_cast<std::size_t>(count));
}

// Limits of the first count values on one axis, blanks (NaN) left out; 0 with range 1
// when there are none.
void AxisLimits(const std::vector<double>& values, std::int32_t count, double& min, double& max,
                double& range) {
  min = std::numeric_limits<double>::max();
  max = -min;
  const std::size_t n = std::max<std::size_t>(1, static_cast<std::size_t>(count));
  for (std::size_t i = 0; i < n && i < values.size(); ++i) {
    if (std::isnan(values[i])) continue;
    min = std::min(min, values[i]);
    max = std::max(max, values[i]);
  }
  if (min > max) min = max = 0.0;
  range = max - min;
  if (std::fabs(range) < kEpsilon) range = 1.0;
}

// Position of v between consecutive grid values: the interval index and the fraction.
bool FindInterval(const std::vector<double>& g, double v, std::size_t& index, double& t) {
  if (g.size() == 1) {
    index = 0;
    t = 0.0;
    return std::fabs(v - g[0]) <= kTolerance;
  }
  for (std::size_t k = 0; k + 1 < g.size(); ++k) {
    const double lo = std::min(g[k], g[k + 1]);
    const double hi = std::max(g[k], g[k + 1]);
    if (v + kTolerance >= lo && v <= hi + kTolerance) {
      index = k;
      t = g[k + 1] == g[k] ? 0.0 : std::clamp((v - g[k]) / (g[k + 1] - g[k]), 0.0, 1.0);
      return true;
    }
  }
  return false;
}

}  // namespace

namespace {

// ResampleGrid onto the settings' grid, or onto the given nodes when there are any.
GridFile Resample(orvane::Resampling& settings, std::span<const double> x, std::span<const double> y,
                  std::span<const double> z, const std::vector<double>* nodesX, const std::vector<double>* nodesY,
                  const ResamplingProgress& progress, GridFile* variance) {
  if (variance != nullptr && settings.ResamplerType() != orvResamplerTypeKriging) {
    throw Error(5, kSource, "Only kriging gives an estimation variance.");
  }
  const std::size_t n = x.size();
  if (y.size() != n || z.size() != n) throw Error(5, kSource, kUpperBoundsMessage);
  if (n > static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max())) throw Error(5, kSource, kUpperBoundsMessage);
  CheckValues(x, "X");
  CheckValues(y, "Y");
  CheckValues(z, "Z");
  if (n == 0) throw Error(5, kSource, "The data set holds no data to resample.");
  const auto [x0, x1] = std::minmax_element(x.begin(), x.end());
  const auto [y0, y1] = std::minmax_element(y.begin(), y.end());
  settings.SetDataLimits(*x0, *x1, *y0, *y1);
  std::unique_ptr<InterpolatorBase> resampler = CreateInterpolator(settings);
  resampler->SetProgressCallback(progress);
  resampler->SetWantVariance(variance != nullptr);
  if (nodesX != nullptr) resampler->SetNodes(*nodesX, *nodesY);
  std::vector<double> hullX, hullY;
  if (settings.BlankOutsideHull()) detail::ConvexHull(x, y, hullX, hullY);
  resampler->SetInputData(static_cast<std::int32_t>(n), std::vector<double>(x.begin(), x.end()),
                          std::vector<double>(y.begin(), y.end()), std::vector<double>(z.begin(), z.end()));
  GridFile grid;
  resampler->GetOutputData(grid.x, grid.y, grid.z);
  CheckValues(grid.z, "resampled Z", true);  // NaN: a node the resampler leaves blank
  if (settings.BlankOutsideHull()) detail::BlankOutside(hullX, hullY, grid.x, grid.y, grid.z);
  if (variance != nullptr) {
    *variance = GridFile{grid.x, grid.y, resampler->Variance()};
    // A blank value has no variance either.
    for (std::size_t k = 0; k < grid.z.size() && k < variance->z.size(); ++k) {
      if (std::isnan(grid.z[k])) variance->z[k] = std::numeric_limits<double>::quiet_NaN();
    }
  }
  return grid;
}

}  // namespace

GridFile ResampleGrid(orvane::Resampling& settings, std::span<const double> x, std::span<const double> y,
                      std::span<const double> z, const ResamplingProgress& progress, GridFile* variance) {
  return Resample(settings, x, y, z, nullptr, nullptr, progress, variance);
}

GridFile ResampleOnto(orvane::Resampling& settings, std::span<const double> x, std::span<const double> y,
                      std::span<const double> z, std::span<const double> nodesX, std::span<const double> nodesY,
                      const ResamplingProgress& progress, GridFile* variance) {
  const std::vector<double> gx(nodesX.begin(), nodesX.end()), gy(nodesY.begin(), nodesY.end());
  for (const std::vector<double>* axis : {&gx, &gy}) {
    if (axis->empty()) throw Error(5, kSource, "The grid needs one node or more along X and along Y.");
    for (std::size_t k = 0; k < axis->size(); ++k) {
      if (!std::isfinite((*axis)[k]) || (k > 0 && !((*axis)[k - 1] < (*axis)[k]))) {
        throw Error(5, kSource, "The grid's nodes must be finite and ascending along X and along Y.");
      }
    }
  }
  if (static_cast<double>(gx.size()) * static_cast<double>(gy.size()) > static_cast<double>(InterpolatorBase::kMaxGridValues)) {
    throw Error(7, kSource, "A grid of " + std::to_string(gx.size()) + " by " + std::to_string(gy.size()) +
                                " values is too large (at most 10001 by 10001 values).");
  }
  return Resample(settings, x, y, z, &gx, &gy, progress, variance);
}

// ---------------------------------------------------------------------------------------
// State

namespace detail {

double DataSetState::Normalise(int axis, double value) const {
  if (axis < 0 || axis > 2) return 0.0;
  return (value - min[static_cast<std::size_t>(axis)]) / range[static_cast<std::size_t>(axis)];
}

double DataSetState::Denormalise(int axis, double value) const {
  if (axis < 0 || axis > 2) return 0.0;
  return value * range[static_cast<std::size_t>(axis)] + min[static_cast<std::size_t>(axis)];
}

void DataSetState::ComputeLimits() {
  const bool grid = dataType == kRectangularGrid;
  AxisLimits(inputX, grid ? xCount : pointCount, min[0], max[0], range[0]);
  AxisLimits(inputY, grid ? yCount : pointCount, min[1], max[1], range[1]);
  AxisLimits(inputZ, pointCount, min[2], max[2], range[2]);
}

void DataSetState::Reset(bool keepUserHull) {
  inputX.assign(1, 0.0);
  inputY.assign(1, 0.0);
  inputZ.assign(1, 0.0);
  pointCount = 0;
  xCount = 0;
  yCount = 0;
  dataType = kNoData;
  meshType = kNoMesh;
  meshX.assign(1, 0.0);
  meshY.assign(1, 0.0);
  meshZ.assign(1, 0.0);
  gridX.clear();
  gridY.clear();
  resampled = false;
  resampledZ.clear();
  blankCount = 0;
  geometryChanged = {true, true, true};  // the views' caches of the old mesh are stale
  meshGeneration = NextContourGeneration();
  detailMesh = {};
  contourLines.assign(1, CLineList{});
  contourGeneration = NextContourGeneration();
  bandTriangles.clear();
  dataHullX.clear();
  dataHullY.clear();
  if (!keepUserHull) ClearUserHull();
  if (triangulation) triangulation->Reset();
  // The limits are not part of the reset: they keep describing the last data until new
  // data replaces them.
  changed.Raise();
}

void DataSetState::ClearUserHull() {
  userHullInputX.assign(1, 0.0);
  userHullInputY.assign(1, 0.0);
  userHullX.assign(1, 0.0);
  userHullY.assign(1, 0.0);
  userHullInputCount = 0;
}

void DataSetState::NormaliseDataHull() {
  dataHullX.clear();
  dataHullY.clear();
  // Only a triangulation makes a hull: a rectangular grid has none.
  if (pointCount <= 0 || dataType != kSparse || !triangulation) return;
  for (std::int32_t v : triangulation->HullVertices()) {
    dataHullX.push_back(Normalise(0, inputX[static_cast<std::size_t>(v)]));
    dataHullY.push_back(Normalise(1, inputY[static_cast<std::size_t>(v)]));
  }
}

void DataSetState::Resample() {
  // The grid is made in full before anything of the data set changes, its limits
  // included, so that a resampler's error leaves the data set as it was. A grid's blank
  // cells are no data to resample from.
  std::vector<double> px, py, pz;
  const auto n = static_cast<std::size_t>(pointCount);
  for (std::size_t k = 0; k < n; ++k) {
    if (std::isnan(inputZ[k])) continue;
    px.push_back(PointX(k));
    py.push_back(PointY(k));
    pz.push_back(inputZ[k]);
  }
  if (px.empty()) throw Error(5, kSource, "Every cell of the grid is blank: there is nothing to resample.");
  GridFile grid = ResampleGrid(resampling, px, py, pz, progress ? progress : ownProgress);
  gridX = std::move(grid.x);
  gridY = std::move(grid.y);
  resampledZ = std::move(grid.z);
  resampled = true;
  AxisLimits(gridX, static_cast<std::int32_t>(gridX.size()), min[0], max[0], range[0]);
  AxisLimits(gridY, static_cast<std::int32_t>(gridY.size()), min[1], max[1], range[1]);
  AxisLimits(resampledZ, static_cast<std::int32_t>(resampledZ.size()), min[2], max[2], range[2]);
  blankCount = std::count_if(resampledZ.begin(), resampledZ.end(), [](double v) { return std::isnan(v); });
  const std::size_t nx = gridX.size();
  const std::size_t ny = gridY.size();
  meshX.resize(nx);
  meshY.resize(ny);
  meshZ.resize(nx * ny);
  for (std::size_t i = 0; i < nx; ++i) meshX[i] = Normalise(0, gridX[i]);
  for (std::size_t j = 0; j < ny; ++j) meshY[j] = Normalise(1, gridY[j]);
  for (std::size_t k = 0; k < nx * ny; ++k) meshZ[k] = Normalise(2, resampledZ[k]);
  meshType = kGridMesh;
  NormaliseDataHull();
}

void DataSetState::RebuildMeshIfNeeded() {
  if (!needsRebuild || pointCount <= 0) return;
  const FlagScope underWay(rebuilding);
  if (resampling.ResamplerSelected()) {
    Resample();
  } else {
    const bool wasResampled = resampled;
    resampled = false;
    resampledZ.clear();
    blankCount = std::count_if(inputZ.begin(), inputZ.begin() + pointCount, [](double v) { return std::isnan(v); });
    const auto n = static_cast<std::size_t>(pointCount);
    ComputeLimits();
    if (wasResampled) NormaliseDataHull();
    if (dataType == kRectangularGrid) {
      meshType = kGridMesh;
      const auto nx = static_cast<std::size_t>(xCount);
      const auto ny = static_cast<std::size_t>(yCount);
      gridX.assign(inputX.begin(), inputX.begin() + static_cast<std::ptrdiff_t>(nx));
      gridY.assign(inputY.begin(), inputY.begin() + static_cast<std::ptrdiff_t>(ny));
      meshX.resize(nx);
      meshY.resize(ny);
      meshZ.resize(n);
      for (std::size_t i = 0; i < nx; ++i) meshX[i] = Normalise(0, gridX[i]);
      for (std::size_t j = 0; j < ny; ++j) meshY[j] = Normalise(1, gridY[j]);
      for (std::size_t k = 0; k < n; ++k) meshZ[k] = Normalise(2, inputZ[k]);
    } else {
      // The triangulation holds the normalised points the mesh is drawn from.
      meshType = kTriangleMesh;
      meshX.assign(1, 0.0);
      meshY.assign(1, 0.0);
      meshZ.assign(1, 0.0);
    }
  }
  geometryChanged = {true, true, true};
  meshGeneration = NextContourGeneration();
  detailMesh = {};
  contoursStale = true;
  needsRebuild = false;
}

void DataSetState::TraceContours(std::span<const double> levels) {
  // The user hull was stored as given: it is checked here, where it is first used.
  const std::size_t count = UserHullCount();
  if (userHullInputCount > 0 && count == 0) {
    throw Error(9, kSource, "The user hull's arrays do not hold elements 0 to PointCount - 1 (PointCount " +
                                std::to_string(userHullInputCount) + ").");
  }
  for (std::size_t k = 0; k < count; ++k) {
    if (!std::isfinite(userHullInputX[k]) || !std::isfinite(userHullInputY[k])) {
      throw Error(5, kSource, "The user hull's points must be finite numbers (point " + std::to_string(k) + " is not).");
    }
  }
  userHullX.assign(std::max<std::size_t>(count, 1), 0.0);
  userHullY.assign(std::max<std::size_t>(count, 1), 0.0);
  for (std::size_t k = 0; k < count; ++k) {
    userHullX[k] = Normalise(0, userHullInputX[k]);
    userHullY[k] = Normalise(1, userHullInputY[k]);
  }
  if (meshType == kTriangleMesh) {
    for (std::size_t k = 0; k < count; ++k) {
      if (!IsPointInPolygonInclusive(userHullX[k], userHullY[k], dataHullX, dataHullY)) {
        throw Error(kObjectErrorBase + 200, "Orvadis.Dataset.DataAsSparseGridSet",
                    "The user hull must be contained by the data hull.");
      }
    }
  }

  // Boundaries in the mesh's normalised Z; a flat data set puts every level at 0, or,
  // with ties above, below, on or above its height (-1, 0, 1), so that its one band is
  // the one its height lies in.
  std::vector<double> normalised(levels.size());
  const bool flat = max[2] - min[2] < kTolerance;
  for (std::size_t k = 0; k < levels.size(); ++k) {
    if (!flat) {
      normalised[k] = Normalise(2, levels[k]);
    } else if (tiesAbove) {
      normalised[k] = levels[k] < min[2] ? -1.0 : (levels[k] > min[2] ? 1.0 : 0.0);
    }
  }
  std::sort(normalised.begin(), normalised.end());  // levels arrive ascending already
  const std::vector<double> boundaries = CContourer::Boundaries(normalised);

  std::unique_ptr<HullClipper> clipper;
  TriangleClip clip;
  if (count >= 3) {
    clipper = std::make_unique<HullClipper>(std::span<const double>(userHullX).first(count),
                                            std::span<const double>(userHullY).first(count));
    clip = [&clipper](const double (&x)[3], const double (&y)[3], const double (&z)[3],
                      BandTriangles& band) { clipper->Clip(x, y, z, band); };
  }
  ContourTrace trace;
  if (meshType == kGridMesh) {
    trace = CContourer::TraceGrid(meshX, meshY, meshZ, boundaries, clip, traceBands, tiesAbove);
  } else if (meshType == kTriangleMesh && triangulation) {
    const CTriangulate& t = *triangulation;
    trace = CContourer::TraceMesh(
        static_cast<std::size_t>(t.TriangleCount()),
        [&t](std::size_t tri, double (&x)[3], double (&y)[3], double (&z)[3]) {
          for (std::size_t k = 0; k < 3; ++k) {
            x[k] = t.CornerX()[3 * tri + k];
            y[k] = t.CornerY()[3 * tri + k];
            z[k] = t.CornerZ()[3 * tri + k];
          }
        },
        boundaries, clip, traceBands, tiesAbove);
  } else {
    trace.levelLines.resize(levels.size());
    trace.bands.resize(levels.size() + 1);
  }
  if (tiesAbove) {
    for (CLineList& level : trace.levelLines) level.DropDoubled();
  }
  contourLines = CLineList::ChainAll(trace.levelLines);
  if (contourLines.empty()) contourLines.emplace_back();
  contourGeneration = NextContourGeneration();
  bandTriangles = std::move(trace.bands);
  contoursStale = false;
}

void DataSetState::PrepareForDrawing(std::span<const double> levels) {
  RebuildMeshIfNeeded();
  if (contoursStale) TraceContours(levels);
}

void DataSetState::Join(std::int32_t position) {
  index = position;
  Reset(false);
  ViewAccess::SetPlotPosition(viewMain, kPlotMain);
  ViewAccess::SetPlotPosition(viewTop, kPlotTop);
  ViewAccess::SetPlotPosition(viewBottom, kPlotBottom);
}

}  // namespace detail

// ---------------------------------------------------------------------------------------
// Public members

namespace {

// The checked input of DataAsRectangularGridSet (X and Y already checked), stored; with
// blanks, NaN in Z marks a blank cell.
void StoreGrid(DataSetState& s, std::span<const double> x, std::span<const double> y, std::vector<double> z,
               bool blanks = false) {
  CheckValues(z, "Z", blanks);
  const std::size_t nx = x.size(), ny = y.size();
  s.xCount = static_cast<std::int32_t>(nx);
  s.yCount = static_cast<std::int32_t>(ny);
  s.dataType = detail::kRectangularGrid;
  s.pointCount = static_cast<std::int32_t>(nx * ny);
  if (s.pointCount > 0) {
    s.inputX.assign(x.begin(), x.end());
    s.inputY.assign(y.begin(), y.end());
    s.inputZ = std::move(z);
  }
  s.ComputeLimits();
  s.NormaliseDataHull();
  s.needsRebuild = true;
  s.changed.Raise();
}

// The points of DataAsSparseGridSet, whose lists hold count values each: checked,
// stored and triangulated.
void StoreSparse(DataSetState& s, std::span<const double> x, std::span<const double> y,
                 std::span<const double> z) {
  CheckValues(x, "X");
  CheckValues(y, "Y");
  CheckValues(z, "Z");
  const std::size_t n = x.size();
  s.dataType = detail::kSparse;
  s.pointCount = static_cast<std::int32_t>(n);
  if (n > 0) {
    s.inputX.assign(x.begin(), x.end());
    s.inputY.assign(y.begin(), y.end());
    s.inputZ.assign(z.begin(), z.end());
  }
  s.ComputeLimits();
  if (n > 0) {
    std::vector<double> nx(n), ny(n), nz(n);
    for (std::size_t k = 0; k < n; ++k) {
      nx[k] = s.Normalise(0, s.inputX[k]);
      ny[k] = s.Normalise(1, s.inputY[k]);
      nz[k] = s.Normalise(2, s.inputZ[k]);
    }
    if (!s.triangulation) s.triangulation = std::make_unique<CTriangulate>();
    s.triangulation->Triangulate(nx, ny, nz);
  }
  s.NormaliseDataHull();
  s.needsRebuild = true;
  s.changed.Raise();
}

// Lines (and with bands the band triangles) of levels over the current mesh, traced
// apart from what the views draw: the data set's own contour results are put back
// afterwards, whether the tracing succeeded or not.
struct TraceApart {
  DataSetState& s;
  std::vector<CLineList> savedLines;
  std::vector<BandTriangles> savedBands;
  std::uint64_t savedGeneration;
  bool savedStale, savedTraceBands, savedTiesAbove;

  // Puts the data set's contour results aside; the destructor brings them back.
  explicit TraceApart(DataSetState& state)
      : s(state),
        savedLines(std::move(state.contourLines)),
        savedBands(std::move(state.bandTriangles)),
        savedGeneration(state.contourGeneration),
        savedStale(state.contoursStale),
        savedTraceBands(state.traceBands),
        savedTiesAbove(state.tiesAbove) {}
  // Traces into the data set's members, where the caller reads the results.
  void Run(std::span<const double> levels, bool bands, bool tiesAbove) {
    s.traceBands = bands;
    s.tiesAbove = tiesAbove;
    s.TraceContours(levels);
  }
  ~TraceApart() {
    s.contourLines = std::move(savedLines);
    s.bandTriangles = std::move(savedBands);
    s.contourGeneration = savedGeneration;
    s.contoursStale = savedStale;
    s.traceBands = savedTraceBands;
    s.tiesAbove = savedTiesAbove;
  }
  TraceApart(const TraceApart&) = delete;
  TraceApart& operator=(const TraceApart&) = delete;
};

void CheckLevels(std::span<const double> levels) {
  for (std::size_t k = 0; k < levels.size(); ++k) {
    if (!std::isfinite(levels[k])) throw Error(5, kSource, "The contour levels must be finite numbers.");
    if (k > 0 && levels[k] < levels[k - 1]) throw Error(5, kSource, "The contour levels must be in ascending order.");
  }
}

// Appends a triangle's corners, turned counter-clockwise when they run the other way.
void AppendTriangle(std::vector<double>& out, const double (&x)[3], const double (&y)[3], const double (&z)[3]) {
  const double turn = (x[1] - x[0]) * (y[2] - y[0]) - (y[1] - y[0]) * (x[2] - x[0]);
  const std::size_t order[3] = {0, turn < 0.0 ? std::size_t{2} : std::size_t{1}, turn < 0.0 ? std::size_t{1} : std::size_t{2}};
  for (std::size_t k : order) {
    out.push_back(x[k]);
    out.push_back(y[k]);
    out.push_back(z[k]);
  }
}

}  // namespace

DataSet::DataSet() : state_(std::make_unique<DataSetState>()) {
  relays_.push_back(state_->resampling.PropertyChanged.Connect([this](const std::string& name) {
    if (state_->pointCount > 0) state_->needsRebuild = true;
    const std::string relayed = "Resampling." + name;
    PropertyChanged.Raise(relayed);
    state_->settingsChanged.Raise(relayed);
  }));
  const std::pair<View*, const char*> views[] = {{&state_->viewMain, "ViewMain."},
                                                 {&state_->viewTop, "ViewTop."},
                                                 {&state_->viewBottom, "ViewBottom."}};
  for (const auto& entry : views) {
    relays_.push_back(entry.first->PropertyChanged.Connect(
        [this, view = entry.first, prefix = std::string(entry.second)](const std::string& name) {
          PropertyChanged.Raise(prefix + name);
          state_->viewChanged.Raise(detail::ViewAccess::PlotPosition(*view), name);
        }));
  }
}

DataSet::~DataSet() = default;

void DataSet::Clear() { state_->Reset(false); }

void DataSet::DataAsRectangularGridSet(const Array& xValues, std::int32_t xCount,
                                       const Array& yValues, std::int32_t yCount,
                                       const Array2D& zValues) {
  DataSetState& s = *state_;
  s.Reset(true);
  CheckCount(xCount, "XCount");
  CheckCount(yCount, "YCount");
  if (xValues.UpperBound() < xCount - 1 || yValues.UpperBound() < yCount - 1 ||
      zValues.UpperBound(1) < 1 || zValues.UpperBound(1) < xCount - 1 ||
      zValues.UpperBound(2) < yCount - 1) {
    throw Error(5, kSource, kUpperBoundsMessage);
  }
  if (xValues.LowerBound() != 0 || yValues.LowerBound() != 0 || zValues.LowerBound(1) != 0) {
    throw Error(5, kSource, kLowerBoundsMessage);
  }
  // Z is read from (0, 0) on; a second dimension that starts later has no such element.
  if (yCount > 0 && zValues.LowerBound(2) > 0) throw Error(9, kSource);
  const std::int64_t points = std::int64_t{xCount} * yCount;
  if (points > std::numeric_limits<std::int32_t>::max()) {
    throw Error(5, kSource, "A grid of " + std::to_string(xCount) + " by " +
                                std::to_string(yCount) + " points is too large.");
  }
  CheckValues(First(xValues, xCount), "X");
  CheckValues(First(yValues, yCount), "Y");
  std::vector<double> z(static_cast<std::size_t>(points));
  for (std::int32_t i = 0; i < xCount; ++i) {
    for (std::int32_t j = 0; j < yCount; ++j) {
      z[static_cast<std::size_t>(i) * static_cast<std::size_t>(yCount) +
        static_cast<std::size_t>(j)] = zValues.At(i, j);
    }
  }
  StoreGrid(s, First(xValues, xCount), First(yValues, yCount), std::move(z));
}

namespace {

// The list setters of a grid, blanks or not: their checks, then StoreGrid.
void StoreGridLists(DataSetState& s, std::span<const double> x, std::span<const double> y,
                    std::span<const double> z, bool blanks) {
  s.Reset(true);
  constexpr auto kMostCount = static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max());
  // The Array setter wants at least two X rows of Z; here Z has as many rows as X values.
  if (x.size() > kMostCount || y.size() > kMostCount || x.size() < 2 || z.size() / x.size() != y.size() ||
      z.size() % x.size() != 0) {
    throw Error(5, kSource, kUpperBoundsMessage);
  }
  const auto xCount = static_cast<std::int32_t>(x.size());
  const auto yCount = static_cast<std::int32_t>(y.size());
  if (std::int64_t{xCount} * yCount > std::numeric_limits<std::int32_t>::max()) {
    throw Error(5, kSource, "A grid of " + std::to_string(xCount) + " by " +
                                std::to_string(yCount) + " points is too large.");
  }
  CheckValues(x, "X");
  CheckValues(y, "Y");
  StoreGrid(s, x, y, std::vector<double>(z.begin(), z.end()), blanks);
}

}  // namespace

void DataSet::DataAsRectangularGridSet(std::span<const double> x, std::span<const double> y,
                                       std::span<const double> z) {
  StoreGridLists(*state_, x, y, z, false);
}

void DataSet::DataAsBlankedGridSet(std::span<const double> x, std::span<const double> y, std::span<const double> z) {
  StoreGridLists(*state_, x, y, z, true);
}

std::int64_t DataSet::BlankCount() const {
  DataSetState& s = *state_;
  s.RebuildMeshIfNeeded();
  return s.blankCount;
}

void DataSet::DataAsSparseGridSet(std::int32_t count, const Array& xValues, const Array& yValues,
                                  const Array& zValues) {
  DataSetState& s = *state_;
  s.Reset(true);
  CheckCount(count, "Count");
  if (xValues.UpperBound() < count - 1 || yValues.UpperBound() < count - 1 ||
      zValues.UpperBound() < count - 1) {
    throw Error(5, kSource, kUpperBoundsMessage);
  }
  if (xValues.LowerBound() != 0 || yValues.LowerBound() != 0 || zValues.LowerBound() != 0) {
    throw Error(5, kSource, kLowerBoundsMessage);
  }
  StoreSparse(s, First(xValues, count), First(yValues, count), First(zValues, count));
}

void DataSet::DataAsSparseGridSet(std::span<const double> x, std::span<const double> y,
                                  std::span<const double> z) {
  DataSetState& s = *state_;
  s.Reset(true);
  if (x.size() > static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max()) ||
      y.size() != x.size() || z.size() != x.size()) {
    throw Error(5, kSource, kUpperBoundsMessage);
  }
  StoreSparse(s, x, y, z);
}

void DataSet::DataAsRectangularGridGet(Array& xValues, std::int32_t& xCount, Array& yValues,
                                       std::int32_t& yCount, Array2D& zValues) const {
  const DataSetState& s = *state_;
  if (s.dataType != detail::kRectangularGrid) {
    throw Error(394, kSource, "Input data was not supplied as a rectangular grid");
  }
  const auto nx = static_cast<std::size_t>(s.xCount);
  const auto ny = static_cast<std::size_t>(s.yCount);
  std::vector<double> x(nx), y(ny);
  for (std::size_t i = 0; i < nx && s.pointCount > 0; ++i) x[i] = s.inputX[i];
  for (std::size_t j = 0; j < ny && s.pointCount > 0; ++j) y[j] = s.inputY[j];
  std::vector<double> z = s.pointCount > 0 ? s.inputZ : std::vector<double>(nx * ny);
  xValues = Array(std::move(x));
  yValues = Array(std::move(y));
  zValues = Array2D(std::move(z), nx, ny);
  xCount = s.xCount;
  yCount = s.yCount;
}

void DataSet::ResampledDataAsRectangularGridGet(Array& xValues, std::int32_t& xCount,
                                                Array& yValues, std::int32_t& yCount,
                                                Array2D& zValues) const {
  DataSetState& s = *state_;
  if (!s.resampling.ResamplerSelected()) throw Error(5, kSource, "No resampler was selected.");
  s.RebuildMeshIfNeeded();
  if (!s.resampled) throw Error(5, kSource, "The data set holds no data to resample.");
  const std::size_t nx = s.gridX.size();
  const std::size_t ny = s.gridY.size();
  xValues = Array(s.gridX);
  yValues = Array(s.gridY);
  zValues = Array2D(s.resampledZ, nx, ny);
  xCount = static_cast<std::int32_t>(nx);
  yCount = static_cast<std::int32_t>(ny);
}

void DataSet::DataHullGet(std::int32_t& pointCount, Array& xValues, Array& yValues) const {
  const DataSetState& s = *state_;
  pointCount = static_cast<std::int32_t>(s.dataHullX.size());
  if (pointCount <= 0) return;
  std::vector<double> x(s.dataHullX.size()), y(s.dataHullY.size());
  for (std::size_t k = 0; k < x.size(); ++k) {
    x[k] = s.Denormalise(0, s.dataHullX[k]);
    y[k] = s.Denormalise(1, s.dataHullY[k]);
  }
  xValues = Array(std::move(x));
  yValues = Array(std::move(y));
}

void DataSet::UserHullSet(std::int32_t pointCount, const Array& xValues, const Array& yValues) {
  // Stored as given; the elements 0 .. pointCount - 1 are looked for when contours are
  // next traced (an array that does not start at 0 holds none of them).
  const auto from = [](const Array& a) { return a.LowerBound() == 0 ? a.Values() : std::vector<double>{}; };
  Store(from(xValues), from(yValues), pointCount);
}

void DataSet::UserHullSet(std::span<const double> xValues, std::span<const double> yValues) {
  Store(std::vector<double>(xValues.begin(), xValues.end()), std::vector<double>(yValues.begin(), yValues.end()),
        static_cast<std::int32_t>(std::min<std::size_t>(xValues.size(), std::numeric_limits<std::int32_t>::max())));
}

void DataSet::Store(std::vector<double> x, std::vector<double> y, std::int32_t pointCount) {
  DataSetState& s = *state_;
  s.userHullInputX = std::move(x);
  s.userHullInputY = std::move(y);
  s.userHullInputCount = pointCount;
  const std::size_t usable = std::max<std::size_t>(s.UserHullCount(), 1);
  s.userHullX.assign(usable, 0.0);
  s.userHullY.assign(usable, 0.0);
  s.contoursStale = true;
  s.changed.Raise();
}

void DataSet::UserHullClear() {
  state_->ClearUserHull();
  state_->changed.Raise();
}

bool DataSet::ZValueInterpolate(double xValue, double yValue, double& zValue) {
  DataSetState& s = *state_;
  s.RebuildMeshIfNeeded();
  if (!(xValue + kTolerance >= s.min[0] && xValue <= s.max[0] + kTolerance &&
        yValue + kTolerance >= s.min[1] && yValue <= s.max[1] + kTolerance)) {
    return false;
  }
  if (s.meshType == detail::kTriangleMesh) {
    double z = 0.0;
    if (!s.triangulation ||
        !s.triangulation->LocateAndInterpolate(s.Normalise(0, xValue), s.Normalise(1, yValue), z)) {
      return false;
    }
    zValue = s.Denormalise(2, z);
    return true;
  }
  if (s.meshType != detail::kGridMesh) return false;
  std::size_t i = 0;
  std::size_t j = 0;
  double u = 0.0;
  double v = 0.0;
  if (!FindInterval(s.gridX, xValue, i, u) || !FindInterval(s.gridY, yValue, j, v)) return false;
  const std::size_t ny = s.gridY.size();
  const std::size_t i1 = std::min(i + 1, s.gridX.size() - 1);
  const std::size_t j1 = std::min(j + 1, ny - 1);
  const std::vector<double>& gridZ = s.GridZ();
  const auto z = [&](std::size_t a, std::size_t b) { return gridZ[a * ny + b]; };
  // The cell's two triangles meet along the diagonal from (i, j) to (i + 1, j + 1). A
  // triangle with a blank corner has no surface: NaN carries through the sum.
  const double value = u >= v ? z(i, j) + u * (z(i1, j) - z(i, j)) + v * (z(i1, j1) - z(i1, j))
                              : z(i, j) + v * (z(i, j1) - z(i, j)) + u * (z(i1, j1) - z(i, j1));
  if (std::isnan(value)) return false;
  zValue = value;
  return true;
}

std::vector<double> DataSet::MeshTriangles() const {
  DataSetState& s = *state_;
  s.RebuildMeshIfNeeded();
  std::vector<double> out;
  if (s.pointCount <= 0) return out;
  double x[3], y[3], z[3];
  if (s.meshType == detail::kTriangleMesh && s.triangulation) {
    const std::vector<std::int32_t>& v = s.triangulation->TriangleVertices();
    out.reserve(v.size() * 3);
    for (std::size_t t = 0; t + 2 < v.size(); t += 3) {
      for (std::size_t k = 0; k < 3; ++k) {
        const auto p = static_cast<std::size_t>(v[t + k]);
        x[k] = s.inputX[p];
        y[k] = s.inputY[p];
        z[k] = s.inputZ[p];
      }
      AppendTriangle(out, x, y, z);
    }
  } else if (s.meshType == detail::kGridMesh) {
    const std::vector<double>& gz = s.GridZ();
    const std::size_t nx = s.gridX.size(), ny = s.gridY.size();
    if (nx < 2 || ny < 2) return out;
    out.reserve((nx - 1) * (ny - 1) * 18);
    // Each cell (i, j) .. (i + 1, j + 1) as two triangles along its diagonal.
    const std::size_t cells[2][3][2] = {{{0, 0}, {1, 0}, {1, 1}}, {{0, 0}, {1, 1}, {0, 1}}};
    for (std::size_t i = 0; i + 1 < nx; ++i) {
      for (std::size_t j = 0; j + 1 < ny; ++j) {
        for (const auto& triangle : cells) {
          for (std::size_t k = 0; k < 3; ++k) {
            const std::size_t a = i + triangle[k][0], b = j + triangle[k][1];
            x[k] = s.gridX[a];
            y[k] = s.gridY[b];
            z[k] = gz[a * ny + b];
          }
          if (std::isnan(z[0] + z[1] + z[2])) continue;  // a blank corner
          AppendTriangle(out, x, y, z);
        }
      }
    }
  }
  return out;
}

std::vector<std::int32_t> DataSet::MeshTriangleVertices() const {
  const DataSetState& s = *state_;
  if (s.dataType != detail::kSparse || s.pointCount <= 0 || !s.triangulation) return {};
  return s.triangulation->TriangleVertices();
}

std::vector<std::vector<Polyline>> DataSet::ContourLines(std::span<const double> levels, bool tiesAbove) const {
  CheckLevels(levels);
  DataSetState& s = *state_;
  s.RebuildMeshIfNeeded();
  TraceApart trace(s);
  trace.Run(levels, false, tiesAbove);
  std::vector<std::vector<Polyline>> out(levels.size());
  for (std::size_t k = 0; k < levels.size() && k < s.contourLines.size(); ++k) {
    const CLineList& lines = s.contourLines[k];
    const std::vector<std::int32_t>& starts = lines.PolylineStarts();
    for (std::size_t p = 0; p < starts.size(); ++p) {
      const auto begin = static_cast<std::size_t>(starts[p]);
      const std::size_t end = p + 1 < starts.size() ? static_cast<std::size_t>(starts[p + 1]) : lines.Count();
      if (begin >= end) continue;
      Polyline line;
      line.x.reserve(end - begin + 1);
      line.y.reserve(end - begin + 1);
      line.x.push_back(s.Denormalise(0, lines.Item(begin).x1));
      line.y.push_back(s.Denormalise(1, lines.Item(begin).y1));
      for (std::size_t i = begin; i < end; ++i) {
        line.x.push_back(s.Denormalise(0, lines.Item(i).x2));
        line.y.push_back(s.Denormalise(1, lines.Item(i).y2));
      }
      out[k].push_back(std::move(line));
    }
  }
  return out;
}

std::vector<std::vector<Polygon>> DataSet::ContourBands(std::span<const double> levels, bool tiesAbove) const {
  CheckLevels(levels);
  DataSetState& s = *state_;
  s.RebuildMeshIfNeeded();
  TraceApart trace(s);
  trace.Run(levels, true, tiesAbove);
  std::vector<std::vector<Polygon>> out(levels.size() + 1);
  for (std::size_t k = 0; k < out.size() && k < s.bandTriangles.size(); ++k) {
    // Band by band, each band's triangles freed once outlined.
    const BandOutline outline = OutlineBand(s.bandTriangles[k]);
    BandTriangles().swap(s.bandTriangles[k]);
    for (std::size_t p = 0; p < outline.PolygonCount(); ++p) {
      Polygon polygon;
      for (std::size_t r = outline.polygonStarts[p]; r < outline.polygonStarts[p + 1]; ++r) {
        Polyline ring;
        for (std::size_t i = outline.ringStarts[r]; i < outline.ringStarts[r + 1]; ++i) {
          ring.x.push_back(s.Denormalise(0, outline.x[i]));
          ring.y.push_back(s.Denormalise(1, outline.y[i]));
        }
        polygon.rings.push_back(std::move(ring));
      }
      out[k].push_back(std::move(polygon));
    }
  }
  return out;
}

GridFile DataSet::ResampledGrid() const {
  DataSetState& s = *state_;
  if (!s.resampling.ResamplerSelected()) throw Error(5, kSource, "No resampler was selected.");
  s.RebuildMeshIfNeeded();
  if (!s.resampled) throw Error(5, kSource, "The data set holds no data to resample.");
  return GridFile{s.gridX, s.gridY, s.resampledZ};
}

void DataSet::SetResamplingProgress(ResamplingProgress callback) { state_->ownProgress = std::move(callback); }

orvane::Resampling& DataSet::Resampling() noexcept { return state_->resampling; }
const orvane::Resampling& DataSet::Resampling() const noexcept { return state_->resampling; }
View& DataSet::ViewMain() noexcept { return state_->viewMain; }
const View& DataSet::ViewMain() const noexcept { return state_->viewMain; }
View& DataSet::ViewTop() noexcept { return state_->viewTop; }
const View& DataSet::ViewTop() const noexcept { return state_->viewTop; }
View& DataSet::ViewBottom() noexcept { return state_->viewBottom; }
const View& DataSet::ViewBottom() const noexcept { return state_->viewBottom; }

double DataSet::XMin() const { return state_->min[0]; }
double DataSet::XMax() const { return state_->max[0]; }
double DataSet::YMin() const { return state_->min[1]; }
double DataSet::YMax() const { return state_->max[1]; }
double DataSet::ZMin() const { return state_->min[2]; }
double DataSet::ZMax() const { return state_->max[2]; }

// ---------------------------------------------------------------------------------------
// Persisted contents

void DataSet::WriteContents(PropertyBag& bag, const std::string& prefix) const {
  const DataSetState& s = *state_;
  bag.WriteProperty(prefix + "DataType", s.dataType);
  bag.WriteProperty(prefix + "Count", s.pointCount);
  std::vector<double> x, y, z;
  if (s.dataType == detail::kRectangularGrid) {
    Array ax, ay;
    Array2D az;
    std::int32_t nx = 0;
    std::int32_t ny = 0;
    DataAsRectangularGridGet(ax, nx, ay, ny, az);
    x = ax.Values();
    y = ay.Values();
    z = az.Values();
  } else if (s.dataType == detail::kSparse && s.pointCount > 0) {
    x = s.inputX;
    y = s.inputY;
    z = s.inputZ;
  }
  bag.WriteProperty(prefix + "X", std::move(x));
  bag.WriteProperty(prefix + "Y", std::move(y));
  const bool blanks = std::any_of(z.begin(), z.end(), [](double v) { return std::isnan(v); });
  bag.WriteProperty(prefix + "Z", std::move(z));
  if (blanks) bag.WriteProperty(prefix + "Blanks", true);
  if (s.UserHullCount() > 0) {
    const std::size_t n = s.UserHullCount();
    bag.WriteProperty(prefix + "UserHull.X",
                      std::vector<double>(s.userHullInputX.begin(), s.userHullInputX.begin() + static_cast<long>(n)));
    bag.WriteProperty(prefix + "UserHull.Y",
                      std::vector<double>(s.userHullInputY.begin(), s.userHullInputY.begin() + static_cast<long>(n)));
  }
  WriteFormatting(bag, prefix);
}

void DataSet::WriteFormatting(PropertyBag& bag, const std::string& prefix) const {
  const DataSetState& s = *state_;
  s.viewMain.WriteProperties(bag, prefix + "ViewMain.");
  s.viewTop.WriteProperties(bag, prefix + "ViewTop.");
  s.viewBottom.WriteProperties(bag, prefix + "ViewBottom.");
  s.resampling.WriteProperties(bag, prefix + "Resampling.");
}

void DataSet::ReadFormatting(const PropertyBag& bag, const std::string& prefix) {
  // The views are read once into scratch views, which finds a bad value before anything
  // changes; reading them again below then cannot fail.
  const std::pair<View*, std::string> views[] = {{&state_->viewMain, prefix + "ViewMain."},
                                                 {&state_->viewTop, prefix + "ViewTop."},
                                                 {&state_->viewBottom, prefix + "ViewBottom."}};
  for (const auto& view : views) View().ReadProperties(bag, view.second);
  // The resampling settings check themselves before they change anything.
  state_->resampling.ReadProperties(bag, prefix + "Resampling.");
  for (const auto& view : views) view.first->ReadProperties(bag, view.second);
}

void DataSet::ReadContents(const PropertyBag& bag, const std::string& prefix) {
  const std::int32_t dataType = bag.ReadProperty(prefix + "DataType", std::int32_t{0});
  const std::int32_t count = bag.ReadProperty(prefix + "Count", std::int32_t{0});
  std::vector<double> x = bag.ReadProperty(prefix + "X", std::vector<double>{});
  std::vector<double> y = bag.ReadProperty(prefix + "Y", std::vector<double>{});
  std::vector<double> z = bag.ReadProperty(prefix + "Z", std::vector<double>{});
  const bool blanks = bag.ReadProperty(prefix + "Blanks", false);
  const std::vector<double> hullX = bag.ReadProperty(prefix + "UserHull.X", std::vector<double>{});
  const std::vector<double> hullY = bag.ReadProperty(prefix + "UserHull.Y", std::vector<double>{});

  // Check everything before anything changes.
  auto refuse = [&prefix](const std::string& why) {
    throw Error(5, kSource, "The stored data set under \"" + prefix + "\" is inconsistent: " +
                                why + ".");
  };
  if (dataType < detail::kNoData || dataType > detail::kSparse) {
    refuse("data type " + std::to_string(dataType) + " is not 0, 1 or 2");
  }
  if (count < 0) refuse("the point count is negative");
  if (dataType == detail::kRectangularGrid &&
      (x.size() * y.size() != z.size() || z.size() != static_cast<std::size_t>(count))) {
    refuse("the grid's X, Y and Z sizes do not match its count");
  }
  if (dataType == detail::kSparse && (x.size() != static_cast<std::size_t>(count) ||
                                      y.size() != x.size() || z.size() != x.size())) {
    refuse("the X, Y and Z lists do not hold Count points");
  }
  if (hullX.size() != hullY.size()) refuse("the user hull's X and Y differ in length");
  if (x.size() > static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max()) ||
      y.size() > static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max()) ||
      hullX.size() > static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max())) {
    refuse("it is too large");
  }
  CheckValues(x, "X");
  CheckValues(y, "Y");
  if (blanks && dataType != detail::kRectangularGrid) refuse("only a grid can hold blank cells");
  CheckValues(z, "Z", blanks);
  CheckValues(hullX, "user hull X");
  CheckValues(hullY, "user hull Y");
  ReadFormatting(bag, prefix);

  const auto nx = static_cast<std::int32_t>(x.size());
  const auto ny = static_cast<std::int32_t>(y.size());
  if (dataType == detail::kRectangularGrid) {
    // A grid of fewer than two columns is handed over with a spare zero row, as the
    // setter wants at least two.
    const std::size_t rows = std::max<std::size_t>(x.size(), 2);
    const std::size_t columns = y.size();
    if (blanks) {
      DataAsBlankedGridSet(x, y, z);
    } else {
      z.resize(rows * columns, 0.0);
      DataAsRectangularGridSet(std::move(x), nx, std::move(y), ny, Array2D(std::move(z), rows, columns));
    }
  } else if (dataType == detail::kSparse) {
    DataAsSparseGridSet(count, std::move(x), std::move(y), std::move(z));
  } else {
    state_->Reset(true);
  }
  if (hullX.empty()) {
    UserHullClear();
  } else {
    UserHullSet(static_cast<std::int32_t>(hullX.size()), hullX, hullY);
  }
}

}  // namespace orvane
