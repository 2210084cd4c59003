#include "gl_line.h"

namespace orvane::detail {

void DrawLineSegment(const Line& line, double x1, double y1, double z1, double x2, double y2, double z2) {
  if (line.Width() == 0) return;
  glPushAttrib(GL_CURRENT_BIT | GL_LINE_BIT | GL_ENABLE_BIT);
  glDisable(GL_LIGHTING);  // a line has no surface to light
  glEnable(GL_LINE_STIPPLE);
  ApplyLineFormat(line);
  glBegin(GL_LINES);
  glVertex3d(x1, y1, z1);
  glVertex3d(x2, y2, z2);
  glEnd();
  glPopAttrib();
}

}  // namespace orvane::detail
