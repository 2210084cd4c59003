#pragma once

// CCoordMapper: from a data set's normalised coordinates (0 at its minimum, 1 at its
// maximum on each axis) and from data units into plot-cube coordinates (0 at an axis's
// minimum, 1 at its maximum). Internal header.

#include <array>
#include <cstddef>

namespace orvane {

class Axes;
class DataSet;

namespace detail {

class CCoordMapper {
 public:
  // Origin 0 and span 1 on every axis; data offsets 0 and scales 1.
  CCoordMapper();

  // Axis ranges from axes and the data set's extents; an empty data set (XMax below XMin)
  // resets instead.
  void Init(const DataSet& data, Axes& axes);
  // Every axis origin 0 and span 1; the data offsets and scales stay.
  void Reset();

  // value * scale + offset on axis 0 (X), 1 (Y) or 2 (Z).
  double NormalisedToData(std::size_t axis, double value) const { return value * scale_[axis] + offset_[axis]; }
  // (value - origin) / span.
  double DataToCube(std::size_t axis, double value) const { return (value - origin_[axis]) / span_[axis]; }
  // (offset - origin + value * scale) / span.
  double NormalisedToCube(std::size_t axis, double value) const {
    return (offset_[axis] - origin_[axis] + value * scale_[axis]) / span_[axis];
  }

  double NormalisedToDataX(double v) const { return NormalisedToData(0, v); }
  double NormalisedToDataY(double v) const { return NormalisedToData(1, v); }
  double NormalisedToDataZ(double v) const { return NormalisedToData(2, v); }
  double DataToCubeX(double v) const { return DataToCube(0, v); }
  double DataToCubeY(double v) const { return DataToCube(1, v); }
  double DataToCubeZ(double v) const { return DataToCube(2, v); }
  double NormalisedToCubeX(double v) const { return NormalisedToCube(0, v); }
  double NormalisedToCubeY(double v) const { return NormalisedToCube(1, v); }
  double NormalisedToCubeZ(double v) const { return NormalisedToCube(2, v); }
  // Every number the mapping depends on: two mappers with equal ones map alike.
  std::array<double, 12> Signature() const {
    return {origin_[0], origin_[1], origin_[2], span_[0], span_[1], span_[2],
            offset_[0], offset_[1], offset_[2], scale_[0], scale_[1], scale_[2]};
  }

 private:
  std::array<double, 3> origin_{0.0, 0.0, 0.0};
  std::array<double, 3> span_{1.0, 1.0, 1.0};
  std::array<double, 3> offset_{0.0, 0.0, 0.0};
  std::array<double, 3> scale_{1.0, 1.0, 1.0};
};

// From cube coordinates (0 at each axis's minimum, 1 at its maximum) to data units, the
// axes' scale: Min + c * (Max - Min) on each axis.
std::array<double, 3> ConvertInternalToScaledCoordinates(Axes& axes, const double (&cube)[3]);

}  // namespace detail
}  // namespace orvane
