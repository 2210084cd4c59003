#pragma once

// What the data set and the renderer read or set on a View beyond its public members.
// Internal header: no compatibility promise.

#include <cstdint>

#include "orvane/render/view.h"

namespace orvane::detail {

// Plot positions of the three views of a data set.
enum PlotPosition : std::int32_t { kPlotMain = 0, kPlotTop = 1, kPlotBottom = 2 };

// "Main", "Top" or "Bottom": the text events carry for a plot position; empty otherwise.
inline const char* PlotPositionName(std::int32_t position) noexcept {
  switch (position) {
    case kPlotMain: return "Main";
    case kPlotTop: return "Top";
    case kPlotBottom: return "Bottom";
    default: return "";
  }
}

struct ViewAccess {
  // Where the view is drawn: 0 main, 1 top, 2 bottom.
  static std::int32_t PlotPosition(const View& view) noexcept { return view.plotPosition_; }
  // Set when the view's data set joins a collection (no event).
  static void SetPlotPosition(View& view, std::int32_t position) noexcept {
    view.plotPosition_ = position;
  }
};

}  // namespace orvane::detail
