#pragma once

// Drawing lines of text with a font map, in window pixels of the current viewport.
// Internal header: no compatibility promise.
//
// Positions are pixels from the lower-left corner of the viewport that is current when
// the text is drawn; x runs right and y up, and pixel (i, j) covers [i, i+1] x [j, j+1].
// The drawing sets both matrices to the identity and turns pixels into normalised
// device coordinates itself, so whatever projection the caller left in force does not
// matter. Every piece of OpenGL state it touches is restored before it returns.

#include <array>
#include <optional>
#include <string_view>

#include "orvane/core/color.h"
#include "orvane/render/line.h"
#include "render/font_map.h"
#include "render/frame.h"

namespace orvane::detail {

enum class TextAlignH { kLeft, kCenter, kRight };
// Which line of the text box lies on the anchor: the baseline, the ascent's top, the
// middle of ascent + descent, or the descent's bottom.
enum class TextAlignV { kBaseline, kTop, kCenter, kBottom };

// Where a line of text goes.
struct TextAnchor {
  double x = 0.0;  // pixels from the viewport's left edge
  double y = 0.0;  // pixels from the viewport's bottom edge
  // Normalised device depth the quads are drawn at; -1, the near plane, puts the text in
  // front of everything (the depth test is the caller's, depth writes are off).
  double depth = -1.0;
  TextAlignH alignH = TextAlignH::kLeft;
  TextAlignV alignV = TextAlignV::kBaseline;
  // Counter-clockwise turn about the anchor, in degrees.
  double angle = 0.0;
};

// A filled box behind the text (contour labels), with an optional border.
struct TextBox {
  Color fill = 0xFFFFFF;
  const Line* border = nullptr;  // null or width 0: no border
  double padding = 2.0;          // pixels between the text box and the border
};

// The corners of a text's box in pixels (relative to the viewport like the anchor):
// bottom-left, bottom-right, top-right, top-left in the text's own direction.
using TextQuad = std::array<std::array<double, 2>, 4>;

// Draws one line of UTF-8 text in the current context: the optional box, then the glyphs
// tinted with color (0x00BBGGRR), then the font's underline and strikeout. The text box
// is the measured width by ascent + descent; alignment picks the point of it that lies
// on the anchor. Unturned text (and text turned by a multiple of 90 degrees) lands on
// whole pixels, so each glyph texel covers exactly one pixel. Glyphs are alpha-tested
// (grey above 0.0625) and blended over what is there. Nothing is drawn into an empty
// viewport or for a position that is not finite.
void DrawText(CFontMap& font, std::string_view utf8, Color color, const TextAnchor& anchor,
              const TextBox* box = nullptr);

// The box DrawText fills for the same text and anchor, grown by padding on every side
// (the corners DrawText draws in, snapping included). For overlap tests between labels.
TextQuad TextOutline(CFontMap& font, std::string_view utf8, const TextAnchor& anchor, double padding = 0.0);

// Whether two text outlines overlap (touching edges do not).
bool OutlinesOverlap(const TextQuad& a, const TextQuad& b) noexcept;

// A 3-D point as the captured matrices put it on the screen.
struct WindowPoint {
  double x = 0.0, y = 0.0;  // pixels from the captured viewport's lower-left corner
  double depth = 0.0;       // normalised device depth, -1 near to +1 far
};

// Projects a point with gluProject through captured matrices; nothing when the point
// cannot be projected (it lies in the eye's plane). Use the result as a TextAnchor while
// the same viewport is current.
std::optional<WindowPoint> ProjectToWindow(const CapturedMatrices& matrices, double x, double y, double z);

// An anchor at a projected point, drawn at its depth.
inline TextAnchor AnchorAt(const WindowPoint& p, TextAlignH alignH = TextAlignH::kLeft,
                           TextAlignV alignV = TextAlignV::kBaseline, double angle = 0.0) {
  return TextAnchor{p.x, p.y, p.depth, alignH, alignV, angle};
}

}  // namespace orvane::detail
