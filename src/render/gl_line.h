#pragma once

// Drawing with Line formats. Internal header.

#include <cstdint>

#include "gl.h"
#include "orvane/core/color.h"
#include "orvane/render/line.h"

namespace orvane::detail {

// Sets the stipple pattern (factor 1), width and colour of a format. The caller has
// pushed GL_CURRENT_BIT and GL_LINE_BIT and enabled GL_LINE_STIPPLE.
inline void ApplyLineFormat(std::uint16_t stipple, std::int32_t width, Color color) {
  glLineStipple(1, stipple);
  glLineWidth(static_cast<GLfloat>(width));
  glColor3ub(static_cast<GLubyte>(color & 0xFF), static_cast<GLubyte>((color >> 8) & 0xFF),
             static_cast<GLubyte>((color >> 16) & 0xFF));
}

inline void ApplyLineFormat(const Line& line) { ApplyLineFormat(line.StipplePattern(), line.Width(), line.Color()); }

// One segment in a Line format, with its own attribute push and pop; nothing at all, not
// even a state change, when the line's width is 0.
void DrawLineSegment(const Line& line, double x1, double y1, double z1, double x2, double y2, double z2);

// Sets colour and alpha (0..255) from an OLE colour.
inline void SetColor(Color color, GLubyte alpha = 255) {
  glColor4ub(static_cast<GLubyte>(color & 0xFF), static_cast<GLubyte>((color >> 8) & 0xFF),
             static_cast<GLubyte>((color >> 16) & 0xFF), alpha);
}

}  // namespace orvane::detail
