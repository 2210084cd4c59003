#pragma once

// What a DataSet holds beyond its public members, for the renderer, the contour tracer
// and the control. Internal header: no compatibility promise.

#include <algorithm>
#include <array>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "contour/contourer.h"
#include "orvane/core/event.h"
#include "orvane/data/data_set.h"
#include "orvane/render/view.h"
#include "orvane/resample/resampling.h"
#include "resample/interpolator.h"
#include "triangulate.h"

namespace orvane {
namespace detail {

// Kind of input, as stored.
enum DataType : std::int32_t { kNoData = 0, kRectangularGrid = 1, kSparse = 2 };
// Kind of mesh drawn from it.
enum MeshType : std::int32_t { kNoMesh = 0, kGridMesh = 1, kTriangleMesh = 2 };

struct DataSetState {
  // Input: scattered points as three lists; a grid as its xCount column X values, its
  // yCount row Y values and Z as a flat list (grid point k = i * yCount + j), so that a
  // grid's X and Y take no room per node. One element each when cleared.
  std::vector<double> inputX{0.0}, inputY{0.0}, inputZ{0.0};
  // X and Y of input point k, a grid's included.
  double PointX(std::size_t k) const {
    return dataType == kRectangularGrid ? inputX[k / static_cast<std::size_t>(yCount)] : inputX[k];
  }
  double PointY(std::size_t k) const {
    return dataType == kRectangularGrid ? inputY[k % static_cast<std::size_t>(yCount)] : inputY[k];
  }
  std::int32_t pointCount = 0;
  std::int32_t xCount = 0;
  std::int32_t yCount = 0;
  std::int32_t dataType = kNoData;

  // The grid mesh that is drawn, normalised: its column X and row Y values and the
  // flat Z (X index outer); also its axes in data units. A triangle mesh is the
  // triangulation's own.
  std::vector<double> meshX{0.0}, meshY{0.0}, meshZ{0.0};
  std::vector<double> gridX, gridY;
  std::int32_t meshType = kNoMesh;
  // The grid mesh comes from the resampler; its Z in data units (X index outer).
  bool resampled = false;
  std::vector<double> resampledZ;
  // Blank nodes (NaN) of the grid mesh: a blanked input grid's, or the resampled grid's.
  std::int64_t blankCount = 0;
  std::unique_ptr<CTriangulate> triangulation;  // made on first use
  // Changes, to a value no other data set has had, whenever the mesh is rebuilt or
  // cleared: what the views work out from the mesh follows it.
  std::uint64_t meshGeneration = 0;
  // The decimated mesh the views draw in place of a mesh of far more triangles than the
  // plot has pixels (src/render/level_of_detail.h), kept while the mesh and its level
  // stay: a grid thinned to every level-th node (x, y, z normalised, gridX by gridY
  // nodes), or a clustered triangulation (x, y, z of its points and their triples).
  struct DetailMesh {
    std::uint64_t generation = 0;
    std::size_t level = 0;  // 0: none made
    std::vector<double> x, y, z;
    std::size_t gridX = 0, gridY = 0;
    std::vector<std::int32_t> indices;
  };
  DetailMesh detailMesh;

  // Data hull and user hull, normalised; the user hull also as the host gave it.
  std::vector<double> dataHullX, dataHullY;
  std::vector<double> userHullInputX{0.0}, userHullInputY{0.0};
  std::int32_t userHullInputCount = 0;
  // The user hull's points that can be used: its count, when both stored arrays hold that
  // many; 0 otherwise (UserHullSet stores what it is given unchecked).
  std::size_t UserHullCount() const {
    const auto n = static_cast<std::size_t>(std::max(userHullInputCount, 0));
    return n <= userHullInputX.size() && n <= userHullInputY.size() ? n : 0;
  }
  std::vector<double> userHullX{0.0}, userHullY{0.0};

  // Limits; a range below the double epsilon is 1 so that normalising never divides by 0.
  std::array<double, 3> min{0.0, 0.0, 0.0};
  std::array<double, 3> max{0.0, 0.0, 0.0};
  std::array<double, 3> range{1.0, 1.0, 1.0};

  // Contour lines of each level (chained, normalised) and the filled triangles of each
  // band, from the last tracing; one empty list when cleared.
  std::vector<CLineList> contourLines{CLineList{}};
  // Changes, to a value no other data set has had, whenever contourLines is replaced:
  // what is worked out from the lines (the contour labels' places) follows it.
  std::uint64_t contourGeneration = 0;
  std::vector<BandTriangles> bandTriangles;
  // Whether tracing fills bandTriangles as well. The views colour the mesh itself and
  // never draw the bands, so only a caller that exports them (polygons) asks for them.
  bool traceBands = false;
  // Whether a height equal to a level counts as above it when tracing (the control's
  // Contouring.TiesAbove, handed down before each tracing).
  bool tiesAbove = false;

  bool needsRebuild = false;
  std::array<bool, 3> geometryChanged{false, false, false};  // read and cleared by the views
  bool contoursStale = false;
  bool rebuilding = false;  // a mesh rebuild is under way (its own changes are raised)
  std::int32_t index = 0;  // 1-based position in the owning collection; 0 alone

  Event<> changed;  // the owning DataSets relays it as DataChanged
  // A view's change: the view's plot position and the property's name (DataSets relays
  // it as ViewChanged).
  Event<std::int32_t, const std::string&> viewChanged;
  // Any other change of the data set's settings, prefixed as stored ("Resampling.");
  // DataSets relays it as PropertyChanged.
  Event<const std::string&> settingsChanged;

  // The resampling settings; a change marks the mesh for rebuild.
  orvane::Resampling resampling;
  // Where a resampling run reports its progress (none by default; the control sets it
  // while it recalculates). It may be called from the run's worker threads.
  ProgressCallback progress;
  // Where runs report otherwise: the host program's own callback (SetResamplingProgress).
  ProgressCallback ownProgress;
  // The views; their plot positions are set when the data set joins a collection.
  orvane::View viewMain, viewTop, viewBottom;

  // n = (v - min) / range on axis 0 (X), 1 (Y), 2 (Z); any other axis gives 0.
  double Normalise(int axis, double value) const;
  // v = n * range + min.
  double Denormalise(int axis, double value) const;
  // Limits of the input lists.
  void ComputeLimits();
  // The data hull, normalised with the current limits, from the input points.
  void NormaliseDataHull();
  // Replaces the mesh by the selected resampler's grid (limits from that grid).
  void Resample();
  // The Z values of a grid mesh in data units (X index outer).
  const std::vector<double>& GridZ() const { return resampled ? resampledZ : inputZ; }
  // Removes the user hull (no event).
  void ClearUserHull();
  // Clear's reset; the setters keep the user hull. Raises changed.
  void Reset(bool keepUserHull);
  // Rebuilds the mesh when the input changed (lazily, before drawing).
  void RebuildMeshIfNeeded();
  // Traces the levels (data units, ascending) over the mesh: first the normalised user
  // hull and, over a triangulated mesh, the test that every user hull vertex lies in the
  // data hull (error -2147221304); then lines and bands, clipped to the user hull.
  void TraceContours(std::span<const double> levels);
  // Rebuild and tracing, as a frame does before drawing this data set.
  void PrepareForDrawing(std::span<const double> levels = {});
  // Joining a collection at a 1-based position: stores it, clears (which raises
  // changed), then gives the views their plot positions 0, 1 and 2.
  void Join(std::int32_t position);
};

struct DataSetAccess {
  static DataSetState& State(DataSet& d) { return *d.state_; }
  static const DataSetState& State(const DataSet& d) { return *d.state_; }
};

}  // namespace detail
}  // namespace orvane
