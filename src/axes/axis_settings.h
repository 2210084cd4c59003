#pragma once

// What an axis persists, read and checked before any of it is applied. Internal header.

#include <cstdint>
#include <memory>
#include <string>

#include "orvane/axes/axis.h"

namespace orvane {

struct Axis::Settings {
  std::int32_t autoRangeType, majorIntervalCount, majorIntervalType;
  double majorInterval, max, min, zoom;
  std::string labelsFormat, title;
  bool labelsVisible, titleVisible;
  std::unique_ptr<Font> labelsFont, titleFont;
  std::unique_ptr<Line> axisLine;
};

}  // namespace orvane
