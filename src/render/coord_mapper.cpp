#include "coord_mapper.h"

#include "orvane/axes/axes.h"
#include "orvane/data/data_set.h"

namespace orvane::detail {

CCoordMapper::CCoordMapper() { Reset(); }

void CCoordMapper::Reset() {
  origin_ = {0.0, 0.0, 0.0};
  span_ = {1.0, 1.0, 1.0};
}

void CCoordMapper::Init(const DataSet& data, Axes& axes) {
  if (data.XMax() < data.XMin()) {
    Reset();
    return;
  }
  Axis* axis[3] = {&axes.XAxis(), &axes.YAxis(), &axes.ZAxis()};
  for (std::size_t a = 0; a < 3; ++a) {
    origin_[a] = axis[a]->Min();
    span_[a] = axis[a]->Max() - axis[a]->Min();
  }
  const double mins[3] = {data.XMin(), data.YMin(), data.ZMin()};
  const double maxs[3] = {data.XMax(), data.YMax(), data.ZMax()};
  for (std::size_t a = 0; a < 3; ++a) {
    offset_[a] = mins[a];
    scale_[a] = maxs[a] - mins[a];
  }
}

std::array<double, 3> ConvertInternalToScaledCoordinates(Axes& axes, const double (&cube)[3]) {
  const Axis* axis[3] = {&axes.XAxis(), &axes.YAxis(), &axes.ZAxis()};
  std::array<double, 3> data{};
  for (std::size_t a = 0; a < 3; ++a) data[a] = axis[a]->Min() + cube[a] * (axis[a]->Max() - axis[a]->Min());
  return data;
}

}  // namespace orvane::detail
