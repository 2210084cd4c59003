#pragma once

// The zoom that makes the plot fill a control of a given size: used by programs that
// draw a plot once (the orvane command) or open new data (the viewer).

namespace orvane {
class Surface;
}

namespace orvane::detail {

// The zoom at which the plot cube, as it is turned, fills the plot area beside the
// legend and below the caption, with room left round it for the axes' labels. The
// frame's projection shows -aspect..aspect by -1..1 (or the other way round when taller
// than wide); in 3-D it centres the cube in the plot area and shrinks it to fit, in 2-D
// too with FitPlotArea, otherwise the map stays centred on the whole control.
double FittingZoom(Surface& surface, int width, int height);

}  // namespace orvane::detail
