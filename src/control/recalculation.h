#pragma once

// The recalculation the control runs before it draws, in this order:
//   1. each data set whose input changed rebuilds its mesh (triangulation, resampling);
//   2. with the geometry stale, every axis takes the data range of all data sets and
//      recalculates its scale, and the axes' limits are checked;
//   3. with the contours stale, the contouring derives its automatic levels from the Z
//      axis's Min and Max, and the data sets' drawing and the plots are marked stale;
//   4. each data set traces its contours when its mesh or the levels changed.
// Surface runs it from Refresh and from the paint step; Renderer::Render runs it for a
// bare scene. Internal header.

#include <array>
#include <functional>
#include <vector>

#include "resample/interpolator.h"

namespace orvane {

class Axes;
class Contouring;
class DataSets;

namespace detail {

struct Scene;

// The control's stale marks that the recalculation reads and clears.
struct StaleMarks {
  bool geometry = true;  // the axes must follow the data range again
  bool contours = true;  // the levels must be derived again from the Z axis
};

// Minimum and maximum of X, Y and Z over every data set that holds points. With none,
// each minimum is the largest double and each maximum its negative: a range that an
// axis takes as "no data", keeping its scale.
struct DataRange {
  std::array<double, 3> min{};
  std::array<double, 3> max{};
  friend bool operator==(const DataRange&, const DataRange&) = default;
};
DataRange DataRangeOf(DataSets& sets);

// Raises -2147221303 (source "Orvada.Surface") for the first axis, X, Y then Z, whose
// minimum is above its maximum, described as "X Axis minimum is greater than maximum".
void CheckAxisLimits(Axes& axes);

// The data sets' drawing is out of date (their scaled geometry and labels); what they
// traced stays valid while the mesh and the levels do.
void InvalidateDataSets(DataSets& sets);

// The levels the contouring holds, in collection order.
std::vector<double> ContourLevels(const Contouring& contouring);

class Recalculation {
 public:
  // Step 1 alone. Each resampling run reports to progress (may be empty). True when a
  // mesh was rebuilt.
  bool RebuildMeshes(DataSets& sets, const ProgressCallback& progress);
  // Steps 1 to 4; invalidatePlots runs in step 3. A mark is cleared only when its step
  // has succeeded, so after an error the next run does the work again. True when
  // something the views draw changed: a mesh, the levels or traced contours.
  bool Run(Scene& scene, StaleMarks& marks, const ProgressCallback& progress,
           const std::function<void()>& invalidatePlots);

 private:
  std::vector<double> tracedLevels_;  // the levels the data sets were last traced with
};

}  // namespace detail
}  // namespace orvane
