#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "orvane/core/array.h"
#include "orvane/core/event.h"
#include "orvane/data/grid_file.h"

namespace orvane {

class PropertyBag;
class Resampling;
class View;

namespace detail {
struct DataSetState;
struct DataSetAccess;
}  // namespace detail

/// An open line or a closed ring in data units; a ring does not repeat its first vertex.
struct Polyline {
  std::vector<double> x;  ///< X of each vertex, in order along the line
  std::vector<double> y;  ///< Y of each vertex
};

/// A filled area in data units: an outer ring and the holes in it.
struct Polygon {
  std::vector<Polyline> rings;  ///< rings[0] the outer ring (counter-clockwise), then the holes (clockwise)
};

/// Told how far a resampling run has come (grid values done out of the total); returning
/// false stops the run, which then raises error 18.
using ResamplingProgress = std::function<bool(std::int64_t done, std::int64_t total)>;

/// Resamples scattered points onto the grid that settings describe (their limits follow
/// the points while AutoRange), with the selected resampler, blank (NaN) where it leaves
/// nodes empty or outside the points' hull with BlankOutsideHull: what a data set's
/// resampling does, without a data set (no triangulation). Errors as for
/// ResampledDataAsRectangularGridGet, and error 5 for lists of different lengths or
/// values that are not finite. With variance, kriging's estimation variance of each
/// value goes there too, on the same nodes (error 5 for another resampler).
GridFile ResampleGrid(Resampling& settings, std::span<const double> x, std::span<const double> y,
                      std::span<const double> z, const ResamplingProgress& progress = {},
                      GridFile* variance = nullptr);

/// ResampleGrid onto the nodes nodesX x nodesY (each list finite and strictly ascending)
/// instead of the settings' grid, so that a large grid can be made tile by tile; error 5
/// for bad nodes, 7 for more than 10,001 x 10,001 values. Kriging's AutoSetRange still
/// takes the settings' limits (the points' own).
GridFile ResampleOnto(Resampling& settings, std::span<const double> x, std::span<const double> y,
                      std::span<const double> z, std::span<const double> nodesX, std::span<const double> nodesY,
                      const ResamplingProgress& progress = {}, GridFile* variance = nullptr);

/// One set of plotted data: the input points (a rectangular grid or scattered points),
/// their limits, the triangulated or grid mesh drawn from them, the data hull and an
/// optional user hull, and the three views through which it is drawn. Obtained from
/// DataSets::Item. Failing calls raise orvane::Error with source "Orvadis.Dataset".
class DataSet {
 public:
  /// An empty data set (no data, ranges 1).
  DataSet();
  ~DataSet();
  DataSet(const DataSet&) = delete;
  DataSet& operator=(const DataSet&) = delete;

  /// "Clears the dataset of all input data." Removes the user hull too; raises DataChanged.
  void Clear();
  /// "Sets the input data for this dataset in rectangular grid format." zValues(i, j) is
  /// the Z at xValues(i), yValues(j). Clears the previous data first (keeping the user
  /// hull); bad bounds, NaN or a limit of 1e300 or more raise error 5 and leave it cleared.
  void DataAsRectangularGridSet(const Array& xValues, std::int32_t xCount, const Array& yValues,
                                std::int32_t yCount, const Array2D& zValues);
  /// "Sets the input data in sparse grid format." Elements 0..count-1 of each array are
  /// taken and triangulated at once; failures as for the grid setter.
  void DataAsSparseGridSet(std::int32_t count, const Array& xValues, const Array& yValues,
                           const Array& zValues);
  /// DataAsRectangularGridSet from plain lists: z[i * y.size() + j] is the Z at (x[i],
  /// y[j]). A z of another size than x.size() * y.size(), or fewer than two X values,
  /// raises the Array setter's error 5 "Upper bounds ...", and so do more values than a
  /// 32-bit count holds; the other checks and errors are the Array setter's.
  void DataAsRectangularGridSet(std::span<const double> x, std::span<const double> y, std::span<const double> z);
  /// DataAsSparseGridSet from plain lists, one point per element; lists of different
  /// lengths raise error 5 "Upper bounds ..."; the other checks are the Array setter's.
  void DataAsSparseGridSet(std::span<const double> x, std::span<const double> y, std::span<const double> z);
  /// DataAsRectangularGridSet from plain lists, with blank cells: a NaN in z marks a node
  /// with no data. Triangles with a blank corner are not drawn, contoured or interpolated,
  /// and the limits leave blanks out (all blank: an empty plot). Other checks as above.
  void DataAsBlankedGridSet(std::span<const double> x, std::span<const double> y, std::span<const double> z);
  /// The blank nodes of the grid that is drawn: the input grid's, or the resampled grid's
  /// (see Resampling::BlankOutsideHull). Rebuilds a stale mesh first.
  std::int64_t BlankCount() const;
  /// "Returns the input data in rectangular grid format." Error 394 unless the data was
  /// set with DataAsRectangularGridSet.
  void DataAsRectangularGridGet(Array& xValues, std::int32_t& xCount, Array& yValues,
                                std::int32_t& yCount, Array2D& zValues) const;
  /// "Returns the resampled data in rectangular grid format." In data units; resamples
  /// first when the data or the settings changed. Error 5 "No resampler was selected."
  /// while no resampler is selected; a resampler's own errors pass through.
  void ResampledDataAsRectangularGridGet(Array& xValues, std::int32_t& xCount, Array& yValues,
                                         std::int32_t& yCount, Array2D& zValues) const;
  /// "Returns data describing the set of points forming the convex hull around the plot
  /// data." In data units, counter-clockwise; with a count of 0 the arrays are untouched.
  void DataHullGet(std::int32_t& pointCount, Array& xValues, Array& yValues) const;
  /// "Sets the user defined UserHull." A polygon in data units (elements 0..pointCount-1),
  /// stored as given: when contours are next traced, arrays without those elements raise
  /// error 9, points that are not finite error 5, and over scattered data a hull outside
  /// the data hull its own error.
  void UserHullSet(std::int32_t pointCount, const Array& xValues, const Array& yValues);
  /// UserHullSet from plain lists, pointCount being x's length.
  void UserHullSet(std::span<const double> x, std::span<const double> y);
  /// "Clears the user defined UserHull."
  void UserHullClear();
  /// The Z of the mesh at (xValue, yValue), linear within the triangle that holds the
  /// point (grids split each cell from (i, j) to (i + 1, j + 1)). False, with zValue
  /// untouched, outside the limits or the mesh. Rebuilds a stale mesh first.
  bool ZValueInterpolate(double xValue, double yValue, double& zValue);

  /// The triangles of the mesh in data units, nine doubles each: x, y, z of the first,
  /// second and third corner, counter-clockwise. Scattered points give their Delaunay
  /// triangles (corners are input points); a grid, or the resampled grid while a
  /// resampler is selected, gives two triangles per cell, split from (i, j) to (i + 1,
  /// j + 1). Empty without data. Rebuilds a stale mesh (and resamples) first.
  std::vector<double> MeshTriangles() const;
  /// For scattered points, their Delaunay triangles as three zero-based point numbers
  /// each (counter-clockwise), whether or not a resampler is selected; empty for a grid.
  std::vector<std::int32_t> MeshTriangleVertices() const;
  /// The contour lines of each level in data units: one list of polylines per level, in
  /// the order of levels (finite and ascending, otherwise error 5). Lines are clipped to
  /// the user hull; the mesh is rebuilt first when stale. What the control draws is not
  /// affected. With tiesAbove a height equal to a level counts as above it: each contour
  /// comes once, whole, with no doubled edge and no piece of no length.
  std::vector<std::vector<Polyline>> ContourLines(std::span<const double> levels, bool tiesAbove = false) const;
  /// The filled bands between consecutive levels as merged polygons in data units (the
  /// outlines `orvane contour --bands` writes): levels.size() + 1 bands, the first below
  /// levels[0] and the last above the last level; a band the data do not reach is empty.
  /// Levels, tiesAbove and errors as for ContourLines.
  std::vector<std::vector<Polygon>> ContourBands(std::span<const double> levels, bool tiesAbove = false) const;
  /// The resampled grid in data units: the node X and Y values and z[i * y.size() + j] at
  /// (x[i], y[j]), NaN at blank nodes. Resamples first when the data or the settings changed; errors as for
  /// ResampledDataAsRectangularGridGet.
  GridFile ResampledGrid() const;
  /// Where resampling runs started by this data set's own getters (ResampledGrid,
  /// MeshTriangles, ...) report their progress; it may be called from worker threads.
  /// While a control rebuilds the mesh, its host is told instead. Empty: no reports.
  void SetResamplingProgress(ResamplingProgress callback);

  /// "Returns the minimum value of the input data in the X direction." After a
  /// resampling run (a resampler is selected and the mesh was rebuilt), the limits are
  /// those of the resampled grid, here and in the five below.
  double XMin() const;
  /// Maximum X of the input data, or of the resampled grid after a resampling run.
  double XMax() const;
  /// Minimum Y of the input data, or of the resampled grid after a resampling run.
  double YMin() const;
  /// Maximum Y of the input data, or of the resampled grid after a resampling run.
  double YMax() const;
  /// Minimum Z of the input data, or of the resampled grid's values after a resampling run.
  double ZMin() const;
  /// Maximum Z of the input data, or of the resampled grid's values after a resampling run.
  double ZMax() const;

  /// "Returns a reference to the Resampling object which creates an alternative set of
  /// points to represent the dataset, sampled from a surface derived from a mathematical
  /// model of the original dataset."
  orvane::Resampling& Resampling() noexcept;
  /// The same, read-only.
  const orvane::Resampling& Resampling() const noexcept;
  /// "Returns a reference to the 3 dimensional View of the dataset inside the plot cube."
  /// Plot position 0 ("Main").
  orvane::View& ViewMain() noexcept;
  /// The same, read-only.
  const orvane::View& ViewMain() const noexcept;
  /// "Returns a reference to the 2 dimensional View of the dataset on the top face of the
  /// plot cube." Plot position 1 ("Top").
  orvane::View& ViewTop() noexcept;
  /// The same, read-only.
  const orvane::View& ViewTop() const noexcept;
  /// "Returns a reference to the 2 dimensional View of the dataset on the bottom face of
  /// the plot cube." Plot position 2 ("Bottom").
  orvane::View& ViewBottom() noexcept;
  /// The same, read-only.
  const orvane::View& ViewBottom() const noexcept;

  /// Writes the data under prefix: "DataType", "Count", "X", "Y", "Z", "Blanks" (true
  /// when the grid has blank cells) and, with a user hull, "UserHull.X" and "UserHull.Y"; then the views under "ViewMain.", "ViewTop.",
  /// "ViewBottom." and the resampling under "Resampling.".
  void WriteContents(PropertyBag& bag, const std::string& prefix) const;
  /// Restores what WriteContents wrote, the data through the setters. Inconsistent stored
  /// data or a bad view or resampling value raises error 5 and leaves the data set as it was.
  void ReadContents(const PropertyBag& bag, const std::string& prefix);
  /// Writes the formatting alone: the views under "ViewMain.", "ViewTop.", "ViewBottom."
  /// and the resampling under "Resampling.".
  void WriteFormatting(PropertyBag& bag, const std::string& prefix) const;
  /// Reads what WriteFormatting wrote; a bad value raises and changes nothing.
  void ReadFormatting(const PropertyBag& bag, const std::string& prefix);

  /// A change of a view's or the resampling's settings, under the prefix it is stored
  /// under: "ViewMain.", "ViewTop.", "ViewBottom." or "Resampling." (such as
  /// "ViewTop.MeshLine.Color" or "Resampling.Kriging.Range").
  Event<const std::string&> PropertyChanged;

 private:
  friend struct detail::DataSetAccess;
  // Stores a user hull as given and marks the contours stale.
  void Store(std::vector<double> x, std::vector<double> y, std::int32_t pointCount);
  std::unique_ptr<detail::DataSetState> state_;
  std::vector<Connection> relays_;
};

}  // namespace orvane
