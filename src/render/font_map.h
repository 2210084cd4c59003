#pragma once

// Glyph textures and metrics of the fonts the plot writes its text with. Internal
// header: no compatibility promise.
//
// A CFontMap holds one font: the face file fontconfig chooses for the font's name,
// weight and slant, opened with FreeType at the font's size on a 96 dpi screen, and its
// glyphs rendered as anti-aliased grey images packed into a few atlas textures. Text is
// measured from the glyph metrics alone (no context needed); the textures live in the
// OpenGL context that was current when they were made. CFontMapManager keeps one map per
// distinct font. Drawing a string is in text.h.

#include <array>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <tuple>
#include <unordered_map>
#include <vector>

#include "orvane/core/font.h"

namespace orvane::detail {

// The face file fontconfig picks for a family name, an OpenType-style weight (1..1000;
// 0 means regular) and slant. Never fails for an unknown family: fontconfig substitutes
// its default (a sans face). An empty path means fontconfig found no font at all.
struct FaceChoice {
  std::string path;
  int index = 0;                  // face index inside the file (collections)
  std::string family;             // the chosen face's family name
  bool embolden = false;          // fontconfig asks for synthetic bold
  std::array<double, 4> matrix{1.0, 0.0, 0.0, 1.0};  // xx, xy, yx, yy (synthetic oblique)
};
FaceChoice ChooseFace(const std::string& family, int weight, bool italic);

// Decodes UTF-8 into code points. Every byte that does not begin a well-formed sequence
// (stray continuation bytes, overlong forms, surrogates, values above U+10FFFF,
// truncated sequences) becomes one U+FFFD.
std::u32string DecodeUtf8(std::string_view utf8);

// The extent of a line of text, in pixels.
struct TextMetrics {
  double width = 0.0;    // sum of the advances and kerning
  double height = 0.0;   // ascent + descent, rounded up
  double ascent = 0.0;   // the face's ascender above the baseline
  double descent = 0.0;  // the face's descender below the baseline (positive)
};

// One font's glyphs. Not copyable; lives as long as its textures are wanted.
class CFontMap {
 public:
  // One rectangle of a glyph image in an atlas page. Glyphs larger than a page are split
  // into several pieces.
  struct Piece {
    int page = -1;            // index into the map's pages
    int x = 0, y = 0;         // texel position of the piece in its page
    int width = 0, height = 0;
    int offsetX = 0, offsetY = 0;  // position of the piece inside the glyph image (top-left)
  };
  // A rendered glyph. Positions in pixels, y up from the baseline.
  struct Glyph {
    unsigned index = 0;       // FreeType glyph index (0 = the face's .notdef)
    double advance = 0.0;     // pen advance
    int left = 0;             // bitmap's left edge from the pen
    int top = 0;              // bitmap's top row above the baseline
    int width = 0, height = 0;
    std::vector<Piece> pieces;   // empty until uploaded, and for blank glyphs
    std::vector<std::uint8_t> pending;  // the grey image (width x height) awaiting upload
  };
  // An atlas texture.
  struct Page {
    unsigned texture = 0;
    int side = 0;
    int shelfY = 0, shelfHeight = 0, cursorX = 0;  // shelf packing state
  };

  // Chooses the face and opens it at the font's size, loads the metrics and glyphs of
  // U+0020..U+00FF and, when an OpenGL context is current, makes their textures in it.
  // Raises error 5 (source "Orvada.Surface") when no face at all can be loaded.
  explicit CFontMap(const Font& font);
  CFontMap(const CFontMap&) = delete;
  CFontMap& operator=(const CFontMap&) = delete;
  // Deletes the textures when their context is current (see Release).
  ~CFontMap();

  // Deletes the textures. Their context must be current; when another context (or none)
  // is current the names are only forgotten, so no other context's textures are hit.
  void Release() noexcept;
  // Drops the texture names without a GL call, for when their context is gone. Glyphs
  // keep their metrics and are uploaded again, into the then current context, on the
  // next draw.
  void Forget() noexcept;

  // Width (with kerning), height, ascent and descent of a line of UTF-8 text. Needs no
  // context: glyphs not seen before are rendered now and uploaded at the next draw.
  TextMetrics Measure(std::string_view utf8);
  TextMetrics Measure(const std::u32string& text);

  // The glyph of a code point (rendered on first use). Control characters (U+0000..U+001F,
  // U+007F..U+009F) are blank and advance nothing; a code point the face lacks gets the
  // face's .notdef glyph.
  const Glyph& GlyphOf(char32_t codePoint);
  // Kerning between two code points' glyphs, in pixels (0 when the face has none).
  double Kerning(char32_t left, char32_t right);

  // Makes the textures of every glyph still waiting, in the current context. Called by
  // the drawing; safe to call with nothing to do.
  void Upload();

  // The face's metrics at this size, in pixels.
  double Ascent() const noexcept { return ascent_; }
  double Descent() const noexcept { return descent_; }  // positive, below the baseline
  double LineHeight() const noexcept { return lineHeight_; }
  // The underline's top edge below the baseline (positive is down) and its thickness.
  double UnderlineOffset() const noexcept { return underlineOffset_; }
  double UnderlineThickness() const noexcept { return underlineThickness_; }
  // The strikeout's bottom edge above the baseline and its thickness.
  double StrikeoutOffset() const noexcept { return strikeoutOffset_; }
  double StrikeoutThickness() const noexcept { return strikeoutThickness_; }
  // The size glyphs are drawn at (Size points x 96 / 72).
  double PixelSize() const noexcept { return pixelSize_; }
  // Glyph images are drawn scaled by this: 1 except for sizes above the largest
  // rendering size, whose glyphs are rendered at that size and magnified.
  double GlyphScale() const noexcept { return scale_; }
  bool HasKerning() const noexcept { return hasKerning_; }
  bool Underline() const noexcept { return underline_; }
  bool Strikethrough() const noexcept { return strikethrough_; }
  const FaceChoice& Face() const noexcept { return face_; }
  const std::vector<Page>& Pages() const noexcept { return pages_; }
  // How many distinct glyphs (by glyph index) have been rendered.
  std::size_t GlyphCount() const noexcept { return glyphs_.size(); }

  // Glyph images are quantised to 65 grey levels (0..64) and spread back over 0..255:
  // v = round(level x 255 / 64) with level = round(grey x 64 / 255).
  static std::uint8_t QuantiseGrey(std::uint8_t grey) noexcept;

  // Limits the atlas pages to side x side texels (0 restores the default), so that tests
  // can make glyphs that need splitting.
  static void LimitPageSideForTesting(int side) noexcept;
  // Makes every face fail to open (true), to test the refusal when no face can be had.
  static void FailFaceLoadingForTesting(bool fail) noexcept;

  // The largest em size glyphs are rendered at; larger fonts are magnified from it.
  static constexpr double kMaxRenderPixels = 1024.0;
  // Fonts up to this em size in pixels render U+0020..U+00FF up front; larger ones render
  // each glyph on first use.
  static constexpr double kPreloadLimitPixels = 256.0;

 private:
  struct FreeTypeFace;

  Glyph& Render(unsigned glyphIndex);
  unsigned IndexOf(char32_t codePoint);
  bool Place(Glyph& glyph);
  int NewPage(int wanted);

  std::unique_ptr<FreeTypeFace> ft_;
  FaceChoice face_;
  std::map<unsigned, Glyph> glyphs_;                  // by glyph index
  std::array<unsigned, 256> latin1_{};                // code point -> glyph index + 1 (0: unknown)
  std::unordered_map<char32_t, unsigned> indices_;    // the same beyond U+00FF
  std::vector<Page> pages_;
  std::vector<unsigned> waiting_;                     // glyph indices with a pending image
  const void* context_ = nullptr;                     // the EGL context holding the pages
  Glyph blank_;                                       // control characters
  double pixelSize_ = 0.0, scale_ = 1.0;
  double ascent_ = 0.0, descent_ = 0.0, lineHeight_ = 0.0;
  double underlineOffset_ = 0.0, underlineThickness_ = 1.0;
  double strikeoutOffset_ = 0.0, strikeoutThickness_ = 1.0;
  bool hasKerning_ = false;
  bool underline_ = false, strikethrough_ = false;
};

// One CFontMap per font in use, keyed by the font's seven attributes.
class CFontMapManager {
 public:
  CFontMapManager() = default;
  CFontMapManager(const CFontMapManager&) = delete;
  CFontMapManager& operator=(const CFontMapManager&) = delete;

  // The map of a font equal to this one in every attribute, made on first use (its
  // textures in the current context). The reference stays valid until Clear or Forget.
  CFontMap& Get(const Font& font);
  // Deletes every map and its textures (their context current).
  void Clear() noexcept;
  // Drops every map without a GL call (their context is gone).
  void Forget() noexcept;
  std::size_t Size() const noexcept { return maps_.size(); }

 private:
  // Name, size (ten-thousandths of a point), bold, italic, underline, strikethrough,
  // weight.
  using Key = std::tuple<std::string, std::int64_t, bool, bool, bool, bool, std::int16_t>;
  std::map<Key, std::unique_ptr<CFontMap>> maps_;
};

}  // namespace orvane::detail
