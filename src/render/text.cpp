// Text drawing: layout in the text's own frame, turned about the anchor, then turned
// into normalised device coordinates of the current viewport.
//
// The text's frame has its origin on the baseline at the start of the pen, x along the
// text and y up. Its box is [0, width] x [-descent, ascent]. Alignment moves the origin
// by whole pixels, and the anchor is rounded to a whole pixel, so unturned glyphs (whose
// hinted advances and bearings are whole pixels) cover whole pixels.

#include "render/text.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "render/gl.h"
#include "render/gl_line.h"

namespace orvane::detail {

namespace {

// Where the text's frame sits in the viewport.
struct Layout {
  TextMetrics metrics;
  double originX = 0.0, originY = 0.0;  // the frame's origin, viewport pixels
  double cosA = 1.0, sinA = 0.0;
  bool valid = false;

  std::array<double, 2> ToViewport(double x, double y) const {
    return {originX + cosA * x - sinA * y, originY + sinA * x + cosA * y};
  }
};

// cos and sin of an angle in degrees, exact at multiples of 90.
void Turn(double degrees, double& c, double& s) {
  double a = std::fmod(degrees, 360.0);
  if (a < 0.0) a += 360.0;
  if (a == 0.0) {
    c = 1.0, s = 0.0;
  } else if (a == 90.0) {
    c = 0.0, s = 1.0;
  } else if (a == 180.0) {
    c = -1.0, s = 0.0;
  } else if (a == 270.0) {
    c = 0.0, s = -1.0;
  } else {
    const double r = a * 3.14159265358979323846 / 180.0;
    c = std::cos(r);
    s = std::sin(r);
  }
}

Layout LayOut(const TextMetrics& m, const TextAnchor& anchor) {
  Layout layout;
  layout.metrics = m;
  if (!std::isfinite(anchor.x) || !std::isfinite(anchor.y) || !std::isfinite(anchor.angle) ||
      !std::isfinite(anchor.depth)) {
    return layout;
  }
  double dx = 0.0, dy = 0.0;
  switch (anchor.alignH) {
    case TextAlignH::kLeft: break;
    case TextAlignH::kCenter: dx = -std::round(m.width / 2.0); break;
    case TextAlignH::kRight: dx = -std::round(m.width); break;
  }
  switch (anchor.alignV) {
    case TextAlignV::kBaseline: break;
    case TextAlignV::kTop: dy = -m.ascent; break;
    case TextAlignV::kCenter: dy = -std::round((m.ascent - m.descent) / 2.0); break;
    case TextAlignV::kBottom: dy = m.descent; break;
  }
  Turn(anchor.angle, layout.cosA, layout.sinA);
  const double ax = std::round(anchor.x), ay = std::round(anchor.y);
  layout.originX = ax + layout.cosA * dx - layout.sinA * dy;
  layout.originY = ay + layout.sinA * dx + layout.cosA * dy;
  layout.valid = true;
  return layout;
}

// A rectangle of the text's frame as four viewport corners, counter-clockwise.
TextQuad Corners(const Layout& layout, double x0, double y0, double x1, double y1) {
  return {layout.ToViewport(x0, y0), layout.ToViewport(x1, y0), layout.ToViewport(x1, y1), layout.ToViewport(x0, y1)};
}

// Viewport pixels to normalised device coordinates.
struct Ndc {
  double sx, sy;
  explicit Ndc(const GLint viewport[4]) : sx(2.0 / viewport[2]), sy(2.0 / viewport[3]) {}
  void Vertex(const std::array<double, 2>& p, double z) const { glVertex3d(p[0] * sx - 1.0, p[1] * sy - 1.0, z); }
};

void FillQuad(const Ndc& ndc, const TextQuad& q, double z) {
  glBegin(GL_QUADS);
  for (const auto& p : q) ndc.Vertex(p, z);
  glEnd();
}

// One textured quad of a glyph piece.
struct GlyphQuad {
  int page;
  TextQuad corners;              // viewport pixels
  std::array<double, 4> tex;     // s0, t0 (top), s1, t1 (bottom)
};

}  // namespace

void DrawText(CFontMap& font, std::string_view utf8, Color color, const TextAnchor& anchor, const TextBox* box) {
  GLint viewport[4] = {0, 0, 0, 0};
  glGetIntegerv(GL_VIEWPORT, viewport);
  if (viewport[2] <= 0 || viewport[3] <= 0) return;
  const std::u32string text = DecodeUtf8(utf8);
  const Layout layout = LayOut(font.Measure(text), anchor);
  if (!layout.valid) return;
  const TextMetrics& m = layout.metrics;
  const double z = std::clamp(anchor.depth, -1.0, 1.0);
  const Ndc ndc(viewport);

  glPushAttrib(GL_ALL_ATTRIB_BITS);
  glMatrixMode(GL_TEXTURE);
  glPushMatrix();
  glLoadIdentity();
  glMatrixMode(GL_PROJECTION);
  glPushMatrix();
  glLoadIdentity();
  glMatrixMode(GL_MODELVIEW);
  glPushMatrix();
  glLoadIdentity();

  // Nothing of the caller's 3-D drawing may act on flat text.
  glDisable(GL_LIGHTING);
  glDisable(GL_CULL_FACE);
  glDisable(GL_FOG);
  glDisable(GL_POLYGON_STIPPLE);
  glDisable(GL_COLOR_LOGIC_OP);
  glDisable(GL_TEXTURE_1D);
  glDisable(GL_TEXTURE_GEN_S);
  glDisable(GL_TEXTURE_GEN_T);
  glDisable(GL_TEXTURE_GEN_R);
  glDisable(GL_TEXTURE_GEN_Q);
  GLint clipPlanes = 0;
  glGetIntegerv(GL_MAX_CLIP_PLANES, &clipPlanes);
  for (GLint k = 0; k < clipPlanes; ++k) glDisable(static_cast<GLenum>(GL_CLIP_PLANE0 + k));
  glPolygonMode(GL_FRONT_AND_BACK, GL_FILL);
  glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);
  glDepthMask(GL_FALSE);
  glActiveTexture(GL_TEXTURE0);

  glEnable(GL_ALPHA_TEST);
  glAlphaFunc(GL_GREATER, 0.0625F);
  glEnable(GL_BLEND);
  glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);

  if (box != nullptr) {
    const double p = box->padding;
    glDisable(GL_TEXTURE_2D);
    SetColor(box->fill);
    FillQuad(ndc, Corners(layout, -p, -m.descent - p, m.width + p, m.ascent + p), z);
    if (box->border != nullptr && box->border->Width() > 0) {
      // Through the middle of the box's outermost pixels.
      glEnable(GL_LINE_STIPPLE);
      ApplyLineFormat(*box->border);
      const TextQuad q = Corners(layout, -p + 0.5, -m.descent - p + 0.5, m.width + p - 0.5, m.ascent + p - 0.5);
      glBegin(GL_LINE_LOOP);
      for (const auto& c : q) ndc.Vertex(c, z);
      glEnd();
      glDisable(GL_LINE_STIPPLE);
    }
  }

  // Glyphs, gathered by page so that each texture is bound once.
  font.Upload();
  const double scale = font.GlyphScale();
  std::vector<GlyphQuad> quads;
  quads.reserve(text.size());
  double pen = 0.0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const CFontMap::Glyph& g = font.GlyphOf(text[i]);
    for (const CFontMap::Piece& piece : g.pieces) {
      const auto& page = font.Pages()[static_cast<std::size_t>(piece.page)];
      const double x0 = pen + (g.left + piece.offsetX) * scale;
      const double y1 = (g.top - piece.offsetY) * scale;
      const double side = page.side;
      quads.push_back(GlyphQuad{piece.page,
                                Corners(layout, x0, y1 - piece.height * scale, x0 + piece.width * scale, y1),
                                {piece.x / side, piece.y / side, (piece.x + piece.width) / side,
                                 (piece.y + piece.height) / side}});
    }
    pen += g.advance;
    if (i + 1 < text.size()) pen += font.Kerning(text[i], text[i + 1]);
  }
  std::stable_sort(quads.begin(), quads.end(), [](const GlyphQuad& a, const GlyphQuad& b) { return a.page < b.page; });
  SetColor(color);
  if (!quads.empty()) {
    glEnable(GL_TEXTURE_2D);
    glTexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_MODULATE);
    int bound = -1;
    for (const GlyphQuad& q : quads) {
      if (q.page != bound) {
        if (bound >= 0) glEnd();
        glBindTexture(GL_TEXTURE_2D, font.Pages()[static_cast<std::size_t>(q.page)].texture);
        glBegin(GL_QUADS);
        bound = q.page;
      }
      const auto& t = q.tex;
      glTexCoord2d(t[0], t[3]);
      ndc.Vertex(q.corners[0], z);
      glTexCoord2d(t[2], t[3]);
      ndc.Vertex(q.corners[1], z);
      glTexCoord2d(t[2], t[1]);
      ndc.Vertex(q.corners[2], z);
      glTexCoord2d(t[0], t[1]);
      ndc.Vertex(q.corners[3], z);
    }
    glEnd();
    glDisable(GL_TEXTURE_2D);
  }

  // Underline and strikeout, as wide as the text.
  if (m.width > 0.0 && (font.Underline() || font.Strikethrough())) {
    glDisable(GL_TEXTURE_2D);
    if (font.Underline()) {
      const double top = -font.UnderlineOffset();
      FillQuad(ndc, Corners(layout, 0.0, top - font.UnderlineThickness(), m.width, top), z);
    }
    if (font.Strikethrough()) {
      const double bottom = font.StrikeoutOffset();
      FillQuad(ndc, Corners(layout, 0.0, bottom, m.width, bottom + font.StrikeoutThickness()), z);
    }
  }

  glMatrixMode(GL_MODELVIEW);
  glPopMatrix();
  glMatrixMode(GL_PROJECTION);
  glPopMatrix();
  glMatrixMode(GL_TEXTURE);
  glPopMatrix();
  glPopAttrib();
}

TextQuad TextOutline(CFontMap& font, std::string_view utf8, const TextAnchor& anchor, double padding) {
  const Layout layout = LayOut(font.Measure(utf8), anchor);
  const TextMetrics& m = layout.metrics;
  if (!layout.valid) {
    const std::array<double, 2> a{anchor.x, anchor.y};
    return {a, a, a, a};
  }
  return Corners(layout, -padding, -m.descent - padding, m.width + padding, m.ascent + padding);
}

bool OutlinesOverlap(const TextQuad& a, const TextQuad& b) noexcept {
  // Separating axes: the edge normals of both convex quads.
  for (const TextQuad* q : {&a, &b}) {
    for (std::size_t i = 0; i < 4; ++i) {
      const auto& p0 = (*q)[i];
      const auto& p1 = (*q)[(i + 1) % 4];
      const double nx = p0[1] - p1[1], ny = p1[0] - p0[0];
      if (nx == 0.0 && ny == 0.0) continue;
      double aMin = 1e300, aMax = -1e300, bMin = 1e300, bMax = -1e300;
      for (const auto& p : a) {
        const double d = p[0] * nx + p[1] * ny;
        aMin = std::min(aMin, d);
        aMax = std::max(aMax, d);
      }
      for (const auto& p : b) {
        const double d = p[0] * nx + p[1] * ny;
        bMin = std::min(bMin, d);
        bMax = std::max(bMax, d);
      }
      if (aMax <= bMin || bMax <= aMin) return false;
    }
  }
  return true;
}

std::optional<WindowPoint> ProjectToWindow(const CapturedMatrices& matrices, double x, double y, double z) {
  double wx = 0.0, wy = 0.0, wz = 0.0;
  if (gluProject(x, y, z, matrices.modelView.data(), matrices.projection.data(), matrices.viewport.data(), &wx, &wy,
                 &wz) != GL_TRUE) {
    return std::nullopt;
  }
  return WindowPoint{wx - matrices.viewport[0], wy - matrices.viewport[1], 2.0 * wz - 1.0};
}

}  // namespace orvane::detail
