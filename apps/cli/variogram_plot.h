#pragma once

// The picture of orvane variogram --plot: the experimental semivariances as dots and the
// fitted models as curves, drawn by the control itself in its flat map view.

#include <span>
#include <string>

#include "orvane/resample/variogram.h"

namespace orvane::cli {

// Draws the bins and the models (the best first, drawn thicker) over distances 0 to
// cutoff into a PNG of width x height written to output ("-" for standard output).
void PlotVariogram(const std::string& title, std::span<const VariogramBin> bins, std::span<const VariogramModel> models,
                   double cutoff, int width, int height, const std::string& output);

}  // namespace orvane::cli
