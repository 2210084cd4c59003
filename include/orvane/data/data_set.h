#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "orvane/core/array.h"
#include "orvane/core/event.h"

namespace orvane {

class PropertyBag;
class Resampling;
class View;

namespace detail {
struct DataSetState;
struct DataSetAccess;
}  // namespace detail

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
  /// which must lie within the data hull when contours are traced over scattered data.
  void UserHullSet(std::int32_t pointCount, const Array& xValues, const Array& yValues);
  /// "Clears the user defined UserHull."
  void UserHullClear();
  /// The Z of the mesh at (xValue, yValue), linear within the triangle that holds the
  /// point (grids split each cell from (i, j) to (i + 1, j + 1)). False, with zValue
  /// untouched, outside the limits or the mesh. Rebuilds a stale mesh first.
  bool ZValueInterpolate(double xValue, double yValue, double& zValue);

  /// "Returns the minimum value of the input data in the X direction."
  double XMin() const;
  /// Maximum X of the input data.
  double XMax() const;
  /// Minimum Y of the input data.
  double YMin() const;
  /// Maximum Y of the input data.
  double YMax() const;
  /// Minimum Z of the input data.
  double ZMin() const;
  /// Maximum Z of the input data.
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

  /// Writes the data under prefix: "DataType", "Count", "X", "Y", "Z" and, with a user
  /// hull, "UserHull.X" and "UserHull.Y"; then the views under "ViewMain.", "ViewTop.",
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
  std::unique_ptr<detail::DataSetState> state_;
  std::vector<Connection> relays_;
};

}  // namespace orvane
