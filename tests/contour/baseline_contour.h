#pragma once

// Grid and mesh tracing and segment chaining as they stood before they were tuned for
// speed, kept as the oracle the tuned code must match bit for bit: every segment and band
// triangle in the same order, every polyline the same.

#include <span>

#include "contour/contourer.h"
#include "contour/line_list.h"

namespace orvane::testing::baseline {

ContourTrace TraceMesh(
    std::size_t triangleCount,
    const std::function<void(std::size_t, double (&)[3], double (&)[3], double (&)[3])>& triangle,
    std::span<const double> boundaries, const TriangleClip& clip = {}, bool withBands = true);
ContourTrace TraceGrid(std::span<const double> x, std::span<const double> y,
                       std::span<const double> z, std::span<const double> boundaries,
                       const TriangleClip& clip = {}, bool withBands = true);
CLineList Chain(const CLineList& lines);

}  // namespace orvane::testing::baseline
