#include "recalculation.h"

#include <algorithm>
#include <limits>
#include <string>

#include "data/data_set_state.h"
#include "orvane/axes/axes.h"
#include "orvane/contour/contouring.h"
#include "orvane/core/error.h"
#include "orvane/data/data_sets.h"
#include "render/frame.h"

namespace orvane::detail {

namespace {

// Gives a data set's resampling runs a progress callback for the length of a rebuild.
class ProgressScope {
 public:
  ProgressScope(DataSetState& state, const ProgressCallback& progress) : state_(state) {
    state_.progress = progress;
  }
  ~ProgressScope() { state_.progress = nullptr; }
  ProgressScope(const ProgressScope&) = delete;
  ProgressScope& operator=(const ProgressScope&) = delete;

 private:
  DataSetState& state_;
};

}  // namespace

DataRange DataRangeOf(DataSets& sets) {
  DataRange r;
  r.min.fill(std::numeric_limits<double>::max());
  r.max.fill(-std::numeric_limits<double>::max());
  for (DataSet& data : sets) {
    const DataSetState& s = DataSetAccess::State(data);
    if (s.pointCount <= 0) continue;
    for (std::size_t a = 0; a < 3; ++a) {
      r.min[a] = std::min(r.min[a], s.min[a]);
      r.max[a] = std::max(r.max[a], s.max[a]);
    }
  }
  return r;
}

void CheckAxisLimits(Axes& axes) {
  const std::pair<Axis*, const char*> all[] = {{&axes.XAxis(), "X"}, {&axes.YAxis(), "Y"}, {&axes.ZAxis(), "Z"}};
  for (const auto& [axis, letter] : all) {
    if (axis->Min() > axis->Max()) {
      throw Error(kObjectErrorBase + 201, "Orvada.Surface", std::string(letter) + " Axis minimum is greater than maximum");
    }
  }
}

void InvalidateDataSets(DataSets& sets) {
  for (DataSet& data : sets) DataSetAccess::State(data).geometryChanged = {true, true, true};
}

std::vector<double> ContourLevels(const Contouring& contouring) {
  std::vector<double> levels;
  const Contours& contours = contouring.Contours();
  levels.reserve(static_cast<std::size_t>(contours.Count()));
  for (std::int32_t k = 0; k < contours.Count(); ++k) levels.push_back(contours.Item(k)->Value());
  return levels;
}

bool Recalculation::RebuildMeshes(DataSets& sets, const ProgressCallback& progress) {
  bool rebuilt = false;
  for (DataSet& data : sets) {
    DataSetState& s = DataSetAccess::State(data);
    if (!s.needsRebuild || s.pointCount <= 0) continue;
    const ProgressScope scope(s, progress);
    s.RebuildMeshIfNeeded();
    rebuilt = true;
  }
  return rebuilt;
}

bool Recalculation::Run(Scene& scene, StaleMarks& marks, const ProgressCallback& progress,
                        const std::function<void()>& invalidatePlots) {
  bool changed = RebuildMeshes(scene.dataSets, progress);

  if (marks.geometry) {
    const DataRange range = DataRangeOf(scene.dataSets);
    Axis* axes[3] = {&scene.axes.XAxis(), &scene.axes.YAxis(), &scene.axes.ZAxis()};
    for (std::size_t a = 0; a < 3; ++a) axes[a]->SetDataRange(range.min[a], range.max[a]);
    CheckAxisLimits(scene.axes);
    marks.geometry = false;
  }

  if (marks.contours) {
    scene.contouring.AutoSetContours(scene.axes.ZAxis().Min(), scene.axes.ZAxis().Max());
    InvalidateDataSets(scene.dataSets);
    if (invalidatePlots) invalidatePlots();
    marks.contours = false;
  }

  std::vector<double> levels = ContourLevels(scene.contouring);
  if (levels != tracedLevels_) {
    // Every data set traces the new levels; remembered at once, so that a failed trace
    // is tried again by the next run through the data set's own stale mark.
    for (DataSet& data : scene.dataSets) DataSetAccess::State(data).contoursStale = true;
    tracedLevels_ = std::move(levels);
    changed = true;
  }
  for (DataSet& data : scene.dataSets) {
    DataSetState& s = DataSetAccess::State(data);
    if (s.tiesAbove != scene.contouring.TiesAbove()) {
      s.tiesAbove = scene.contouring.TiesAbove();
      s.contoursStale = true;
    }
    if (!s.contoursStale) continue;
    s.TraceContours(tracedLevels_);
    changed = true;
  }
  return changed;
}

}  // namespace orvane::detail
