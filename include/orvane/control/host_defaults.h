#pragma once

namespace orvane {

class Surface;

/// The look Orvane's own programs draw with, beyond the control's described defaults:
/// 4 samples, 2-D maps fitted to the plot area, exact bands, ties above, lighting that
/// keeps the colours (ambient 0.45, spotlight 0.6, shininess 1), no projections on the
/// cube's faces, contour labels on the background colour, viridis through the user map.
void TakeHostDefaults(Surface& surface);

}  // namespace orvane
