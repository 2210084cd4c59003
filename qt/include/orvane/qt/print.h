#pragma once

#include <QRectF>

namespace orvane {
class Surface;
}
class QPagedPaintDevice;

namespace orvane::qt {

/// Prints the control's plot on one page of a printer or PDF writer, in the widest 4:3
/// box the page's printable area holds, centred. The plot is drawn afresh at the device's
/// resolution, at most 300 dots per inch and within the drawing size limit, through
/// Surface::DrawToDC. Returns the rectangle drawn into, in device pixels. Errors of the
/// drawing (orvane::Error) pass on; the control's own picture is left as it was.
QRectF PrintSurface(Surface& surface, QPagedPaintDevice& device);

}  // namespace orvane::qt
