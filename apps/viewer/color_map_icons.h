#pragma once

// Pictures of the colour maps for menus and lists.

#include <QIcon>
#include <QImage>
#include <QSize>

#include <cstdint>

namespace orvane::viewer {

// The size of a colour map's picture in a list.
QSize ColorMapIconSize();
// The colour map of the given type (orvColorMap...) as the plot fills 24 contour bands
// from low (left) to high (right), in a one-pixel dark frame.
QImage ColorMapPreview(std::int32_t type, QSize size);
QIcon ColorMapIcon(std::int32_t type);

}  // namespace orvane::viewer
