// Font maps: fontconfig chooses the face, FreeType renders the glyphs, OpenGL keeps
// them in atlas textures.
//
// Contents
//   1. Choosing the face
//   2. UTF-8
//   3. Opening the face and its metrics
//   4. Glyphs
//   5. Atlas pages and uploads
//   6. Measuring
//   7. CFontMapManager
//
// Sizes. A font of S points is S x 96 / 72 pixels to the em, as on a 96 dpi screen.
// Glyphs are hinted and rendered as 8-bit grey coverage, quantised to 65 levels. Above
// kMaxRenderPixels glyphs are rendered at that em size and every metric and quad is
// scaled up by GlyphScale(): such text covers most of any plot, and rendering it at full
// size would take hundreds of megabytes of texture.
//
// Textures. Each page is a square GL_INTENSITY4 texture (the grey is both colour factor
// and alpha), nearest-sampled, filled shelf by shelf with a one-texel gap around every
// glyph. A page's size is first offered to GL_PROXY_TEXTURE_2D and halved until the
// driver accepts it; a glyph larger than a page is cut into page-sized pieces.

#define EGL_NO_X11 1
#define MESA_EGL_NO_X11_HEADERS 1
#include <EGL/egl.h>

#include "render/font_map.h"

#include <fontconfig/fontconfig.h>
#include <ft2build.h>
#include FT_FREETYPE_H
#include FT_BITMAP_H
#include FT_DRIVER_H
#include FT_MODULE_H
#include FT_SYNTHESIS_H
#include FT_TRUETYPE_TABLES_H

#include <algorithm>
#include <atomic>
#include <cmath>

#include "orvane/core/error.h"
#include "render/gl.h"

namespace orvane::detail {

namespace {

constexpr const char* kErrorSource = "Orvada.Surface";
constexpr char32_t kReplacement = 0xFFFD;
std::atomic<int> gPageSideLimit{0};
std::atomic<bool> gFailFaceLoading{false};

// ---------------------------------------------------------------------------------------
// 1. Choosing the face

// The font's weight as fontconfig's: 0 (no preference) is regular.
double FontconfigWeight(int weight) {
  const int w = weight <= 0 ? 400 : std::min(weight, 1000);
  return FcWeightFromOpenTypeDouble(static_cast<double>(w));
}

bool InitFontconfig() {
  static const bool ok = FcInit() == FcTrue;
  return ok;
}

const FcChar8* Fc(const char* s) { return reinterpret_cast<const FcChar8*>(s); }

}  // namespace

FaceChoice ChooseFace(const std::string& family, int weight, bool italic) {
  FaceChoice choice;
  if (!InitFontconfig()) return choice;
  FcPattern* pattern = FcPatternCreate();
  if (pattern == nullptr) return choice;
  if (!family.empty()) FcPatternAddString(pattern, FC_FAMILY, Fc(family.c_str()));
  FcPatternAddDouble(pattern, FC_WEIGHT, FontconfigWeight(weight));
  FcPatternAddInteger(pattern, FC_SLANT, italic ? FC_SLANT_ITALIC : FC_SLANT_ROMAN);
  FcPatternAddBool(pattern, FC_SCALABLE, FcTrue);
  FcConfigSubstitute(nullptr, pattern, FcMatchPattern);
  FcDefaultSubstitute(pattern);
  FcResult result = FcResultNoMatch;
  FcPattern* match = FcFontMatch(nullptr, pattern, &result);
  FcPatternDestroy(pattern);
  if (match == nullptr) return choice;
  FcChar8* text = nullptr;
  if (FcPatternGetString(match, FC_FILE, 0, &text) == FcResultMatch && text != nullptr) {
    choice.path = reinterpret_cast<const char*>(text);
  }
  if (FcPatternGetString(match, FC_FAMILY, 0, &text) == FcResultMatch && text != nullptr) {
    choice.family = reinterpret_cast<const char*>(text);
  }
  int index = 0;
  if (FcPatternGetInteger(match, FC_INDEX, 0, &index) == FcResultMatch) choice.index = index;
  FcBool embolden = FcFalse;
  if (FcPatternGetBool(match, FC_EMBOLDEN, 0, &embolden) == FcResultMatch) choice.embolden = embolden == FcTrue;
  FcMatrix* matrix = nullptr;
  if (FcPatternGetMatrix(match, FC_MATRIX, 0, &matrix) == FcResultMatch && matrix != nullptr) {
    choice.matrix = {matrix->xx, matrix->xy, matrix->yx, matrix->yy};
  }
  FcPatternDestroy(match);
  return choice;
}

// ---------------------------------------------------------------------------------------
// 2. UTF-8

std::u32string DecodeUtf8(std::string_view utf8) {
  std::u32string out;
  out.reserve(utf8.size());
  const auto byte = [&](std::size_t i) { return static_cast<unsigned>(static_cast<unsigned char>(utf8[i])); };
  std::size_t i = 0;
  while (i < utf8.size()) {
    const unsigned b0 = byte(i);
    if (b0 < 0x80) {
      out.push_back(static_cast<char32_t>(b0));
      ++i;
      continue;
    }
    int length = 0;
    unsigned lo = 0x80, hi = 0xBF;  // the allowed range of the second byte
    char32_t cp = 0;
    if (b0 >= 0xC2 && b0 <= 0xDF) {
      length = 2;
      cp = b0 & 0x1Fu;
    } else if (b0 >= 0xE0 && b0 <= 0xEF) {
      length = 3;
      cp = b0 & 0x0Fu;
      if (b0 == 0xE0) lo = 0xA0;  // overlong
      if (b0 == 0xED) hi = 0x9F;  // surrogates
    } else if (b0 >= 0xF0 && b0 <= 0xF4) {
      length = 4;
      cp = b0 & 0x07u;
      if (b0 == 0xF0) lo = 0x90;  // overlong
      if (b0 == 0xF4) hi = 0x8F;  // above U+10FFFF
    } else {
      out.push_back(kReplacement);
      ++i;
      continue;
    }
    // The longest well-formed prefix is taken as one bad sequence (one U+FFFD).
    std::size_t k = 1;
    for (; k < static_cast<std::size_t>(length) && i + k < utf8.size(); ++k) {
      const unsigned b = byte(i + k);
      const unsigned low = k == 1 ? lo : 0x80u, high = k == 1 ? hi : 0xBFu;
      if (b < low || b > high) break;
      cp = (cp << 6) | static_cast<char32_t>(b & 0x3Fu);
    }
    out.push_back(k == static_cast<std::size_t>(length) ? cp : kReplacement);
    i += k;
  }
  return out;
}

// ---------------------------------------------------------------------------------------
// 3. Opening the face and its metrics

struct CFontMap::FreeTypeFace {
  FT_Library library = nullptr;
  FT_Face face = nullptr;
  FreeTypeFace() = default;
  FreeTypeFace(const FreeTypeFace&) = delete;
  FreeTypeFace& operator=(const FreeTypeFace&) = delete;
  ~FreeTypeFace() {
    if (face != nullptr) FT_Done_Face(face);
    if (library != nullptr) FT_Done_FreeType(library);
  }
};

namespace {

// 26.6 fixed point to pixels.
double FromF26Dot6(FT_Pos v) { return static_cast<double>(v) / 64.0; }

// Font units to pixels at the face's current size.
double FontUnits(FT_Face face, FT_Long units) {
  return FromF26Dot6(FT_MulFix(units, face->size->metrics.y_scale));
}

// Opens a face at an em size in pixels; false when FreeType refuses the file or the size.
bool OpenFace(FT_Library library, const FaceChoice& choice, double pixels, FT_Face& face) {
  if (choice.path.empty() || gFailFaceLoading.load()) return false;
  if (FT_New_Face(library, choice.path.c_str(), choice.index, &face) != 0) {
    face = nullptr;
    return false;
  }
  FT_Error error = 0;
  if (FT_IS_SCALABLE(face)) {
    // 26.6 points at 72 dpi are 26.6 pixels.
    const auto size = std::max<FT_F26Dot6>(1, static_cast<FT_F26Dot6>(std::lround(pixels * 64.0)));
    error = FT_Set_Char_Size(face, 0, size, 72, 72);
  } else if (face->num_fixed_sizes > 0) {
    // A bitmap face: the strike nearest the size.
    int best = 0;
    for (int k = 1; k < face->num_fixed_sizes; ++k) {
      if (std::abs(FromF26Dot6(face->available_sizes[k].y_ppem) - pixels) <
          std::abs(FromF26Dot6(face->available_sizes[best].y_ppem) - pixels)) {
        best = k;
      }
    }
    error = FT_Select_Size(face, best);
  } else {
    error = 1;
  }
  if (error != 0) {
    FT_Done_Face(face);
    face = nullptr;
    return false;
  }
  return true;
}

}  // namespace

CFontMap::CFontMap(const Font& font)
    : ft_(std::make_unique<FreeTypeFace>()),
      underline_(font.Underline()),
      strikethrough_(font.Strikethrough()) {
  pixelSize_ = std::max(font.SizePoints() * 96.0 / 72.0, 0.0);
  const double renderPixels = std::clamp(pixelSize_, 1.0, kMaxRenderPixels);
  if (FT_Init_FreeType(&ft_->library) != 0) {
    ft_->library = nullptr;
    throw Error(5, kErrorSource, "The font engine could not be started to draw the font \"" + font.Name() + "\"");
  }
  // The TrueType hinting that fits stems to whole pixels in both directions, as the
  // screen fonts of desktop systems are drawn; the newer interpreter fits only rows.
  FT_UInt interpreter = TT_INTERPRETER_VERSION_35;
  FT_Property_Set(ft_->library, "truetype", "interpreter-version", &interpreter);
  face_ = ChooseFace(font.Name(), font.Weight(), font.Italic());
  if (!OpenFace(ft_->library, face_, renderPixels, ft_->face)) {
    // The chosen file will not open: any sans face will do.
    face_ = ChooseFace("sans-serif", font.Weight(), font.Italic());
    if (!OpenFace(ft_->library, face_, renderPixels, ft_->face)) {
      throw Error(5, kErrorSource,
                  "No font face could be loaded for the font \"" + font.Name() +
                      "\": fontconfig offers no face that FreeType can open");
    }
  }
  FT_Face face = ft_->face;
  if (face_.matrix != std::array<double, 4>{1.0, 0.0, 0.0, 1.0}) {
    FT_Matrix m;
    m.xx = static_cast<FT_Fixed>(std::lround(face_.matrix[0] * 65536.0));
    m.xy = static_cast<FT_Fixed>(std::lround(face_.matrix[1] * 65536.0));
    m.yx = static_cast<FT_Fixed>(std::lround(face_.matrix[2] * 65536.0));
    m.yy = static_cast<FT_Fixed>(std::lround(face_.matrix[3] * 65536.0));
    FT_Set_Transform(face, &m, nullptr);
  }

  // Glyphs are rendered at the em size of the face; everything else follows from it.
  const double emPixels = FromF26Dot6(face->size->metrics.y_ppem * 64);
  scale_ = pixelSize_ > kMaxRenderPixels && emPixels > 0.0 ? pixelSize_ / emPixels : 1.0;
  const FT_Size_Metrics& sm = face->size->metrics;
  ascent_ = std::ceil(FromF26Dot6(sm.ascender) * scale_);
  descent_ = std::ceil(-FromF26Dot6(sm.descender) * scale_);
  lineHeight_ = std::max(std::ceil(FromF26Dot6(sm.height) * scale_), ascent_ + descent_);

  // Underline: FreeType gives the centre of the stroke; a missing value falls back to a
  // tenth of the em below the baseline, one twentieth thick.
  const double em = emPixels * scale_;
  double ulCentre = -0.1 * em, ulThickness = 0.05 * em;
  if (FT_IS_SCALABLE(face) && face->underline_thickness > 0) {
    ulCentre = FontUnits(face, face->underline_position) * scale_;
    ulThickness = FontUnits(face, face->underline_thickness) * scale_;
  }
  underlineThickness_ = std::max(1.0, std::round(ulThickness));
  underlineOffset_ = std::max(0.0, std::round(-ulCentre - underlineThickness_ / 2.0));
  if (underlineOffset_ + underlineThickness_ > descent_ && descent_ >= underlineThickness_ + 1.0) {
    underlineOffset_ = descent_ - underlineThickness_;  // keep it inside the line
  }
  // Strikeout: the OS/2 table's top edge and size; otherwise across the middle of the
  // lower-case letters.
  double soTop = 0.3 * em, soThickness = underlineThickness_;
  if (const auto* os2 = static_cast<const TT_OS2*>(FT_Get_Sfnt_Table(face, FT_SFNT_OS2));
      os2 != nullptr && os2->version != 0xFFFF && os2->yStrikeoutSize > 0 && FT_IS_SCALABLE(face)) {
    soTop = FontUnits(face, os2->yStrikeoutPosition) * scale_;
    soThickness = FontUnits(face, os2->yStrikeoutSize) * scale_;
  }
  strikeoutThickness_ = std::max(1.0, std::round(soThickness));
  strikeoutOffset_ = std::max(1.0, std::round(soTop - strikeoutThickness_));

  hasKerning_ = FT_HAS_KERNING(face);

  if (pixelSize_ <= kPreloadLimitPixels) {
    for (char32_t c = 0x20; c <= 0xFF; ++c) GlyphOf(c);
  }
  if (eglGetCurrentContext() != EGL_NO_CONTEXT) Upload();
}

CFontMap::~CFontMap() { Release(); }

// ---------------------------------------------------------------------------------------
// 4. Glyphs

namespace {

// The slot's bitmap as one byte per pixel, 0..255, rows top first without padding.
std::vector<std::uint8_t> GreyImage(FT_Library library, const FT_Bitmap& source) {
  const auto width = static_cast<std::size_t>(source.width), rows = static_cast<std::size_t>(source.rows);
  std::vector<std::uint8_t> out(width * rows);
  if (out.empty()) return out;
  FT_Bitmap converted;
  FT_Bitmap_Init(&converted);
  const FT_Bitmap* bitmap = &source;
  int levels = source.num_grays;
  if (source.pixel_mode != FT_PIXEL_MODE_GRAY) {
    if (FT_Bitmap_Convert(library, &source, &converted, 1) != 0) {
      FT_Bitmap_Done(library, &converted);
      std::fill(out.begin(), out.end(), std::uint8_t{0});
      return out;
    }
    bitmap = &converted;
    levels = converted.num_grays;
  }
  const int top = std::max(levels - 1, 1);
  for (std::size_t r = 0; r < rows; ++r) {
    const unsigned char* row = bitmap->pitch >= 0
                                   ? bitmap->buffer + r * static_cast<std::size_t>(bitmap->pitch)
                                   : bitmap->buffer + (rows - 1 - r) * static_cast<std::size_t>(-bitmap->pitch);
    for (std::size_t c = 0; c < width; ++c) {
      const unsigned v = std::min(static_cast<unsigned>(row[c]), static_cast<unsigned>(top));
      out[r * width + c] = static_cast<std::uint8_t>((v * 255u + static_cast<unsigned>(top) / 2u) / static_cast<unsigned>(top));
    }
  }
  FT_Bitmap_Done(library, &converted);
  return out;
}

}  // namespace

std::uint8_t CFontMap::QuantiseGrey(std::uint8_t grey) noexcept {
  const unsigned level = (static_cast<unsigned>(grey) * 64u + 127u) / 255u;  // 0..64
  return static_cast<std::uint8_t>((level * 255u + 32u) / 64u);
}

void CFontMap::LimitPageSideForTesting(int side) noexcept { gPageSideLimit = std::max(side, 0); }

void CFontMap::FailFaceLoadingForTesting(bool fail) noexcept { gFailFaceLoading = fail; }

unsigned CFontMap::IndexOf(char32_t codePoint) {
  if (codePoint < latin1_.size()) {
    unsigned& slot = latin1_[codePoint];
    if (slot == 0) slot = FT_Get_Char_Index(ft_->face, codePoint) + 1;
    return slot - 1;
  }
  const auto found = indices_.find(codePoint);
  if (found != indices_.end()) return found->second;
  const unsigned index = FT_Get_Char_Index(ft_->face, codePoint);
  indices_.emplace(codePoint, index);
  return index;
}

const CFontMap::Glyph& CFontMap::GlyphOf(char32_t codePoint) {
  if (codePoint < 0x20 || (codePoint >= 0x7F && codePoint <= 0x9F)) return blank_;
  return Render(IndexOf(codePoint));
}

CFontMap::Glyph& CFontMap::Render(unsigned glyphIndex) {
  const auto found = glyphs_.find(glyphIndex);
  if (found != glyphs_.end()) return found->second;
  Glyph& glyph = glyphs_[glyphIndex];
  glyph.index = glyphIndex;
  FT_Face face = ft_->face;
  if (FT_Load_Glyph(face, glyphIndex, FT_LOAD_DEFAULT) != 0) return glyph;  // blank
  if (face_.embolden) FT_GlyphSlot_Embolden(face->glyph);
  glyph.advance = FromF26Dot6(face->glyph->advance.x) * scale_;
  if (face->glyph->format != FT_GLYPH_FORMAT_BITMAP && FT_Render_Glyph(face->glyph, FT_RENDER_MODE_NORMAL) != 0) {
    return glyph;
  }
  const FT_Bitmap& bitmap = face->glyph->bitmap;
  std::vector<std::uint8_t> image = GreyImage(ft_->library, bitmap);
  if (image.empty()) return glyph;
  for (std::uint8_t& v : image) v = QuantiseGrey(v);
  glyph.left = face->glyph->bitmap_left;
  glyph.top = face->glyph->bitmap_top;
  glyph.width = static_cast<int>(bitmap.width);
  glyph.height = static_cast<int>(bitmap.rows);
  glyph.pending = std::move(image);
  waiting_.push_back(glyphIndex);
  return glyph;
}

double CFontMap::Kerning(char32_t left, char32_t right) {
  if (!hasKerning_) return 0.0;
  FT_Vector delta{0, 0};
  if (FT_Get_Kerning(ft_->face, IndexOf(left), IndexOf(right), FT_KERNING_DEFAULT, &delta) != 0) return 0.0;
  return FromF26Dot6(delta.x) * scale_;
}

// ---------------------------------------------------------------------------------------
// 5. Atlas pages and uploads

namespace {

// Whether the driver can make a GL_INTENSITY4 texture of side x side.
bool PageFits(int side) {
  glTexImage2D(GL_PROXY_TEXTURE_2D, 0, GL_INTENSITY4, side, side, 0, GL_LUMINANCE, GL_UNSIGNED_BYTE, nullptr);
  GLint width = 0;
  glGetTexLevelParameteriv(GL_PROXY_TEXTURE_2D, 0, GL_TEXTURE_WIDTH, &width);
  return width != 0;
}

int NextPowerOfTwo(double v) {
  int p = 1;
  while (p < v && p < (1 << 30)) p *= 2;
  return p;
}

// The unpack state texture creation expects: tightly packed bytes from the start of the
// client's buffer.
void PlainUnpack(GLint alignment) {
  glPixelStorei(GL_UNPACK_ALIGNMENT, alignment);
  glPixelStorei(GL_UNPACK_SWAP_BYTES, GL_FALSE);
  glPixelStorei(GL_UNPACK_LSB_FIRST, GL_FALSE);
  glPixelStorei(GL_UNPACK_ROW_LENGTH, 0);
  glPixelStorei(GL_UNPACK_SKIP_ROWS, 0);
  glPixelStorei(GL_UNPACK_SKIP_PIXELS, 0);
}

}  // namespace

// Makes a page for a piece of at least wanted texels a side (0: the map's usual size).
// Returns the page's index, or -1 when the driver accepts no texture at all.
int CFontMap::NewPage(int wanted) {
  // About sixteen em a side holds the Latin-1 glyphs on one page.
  const double em = pixelSize_ / scale_;
  int side = std::clamp(NextPowerOfTwo(std::max(em * 16.0, static_cast<double>(wanted))), 64, 2048);
  GLint maxSize = 0;
  glGetIntegerv(GL_MAX_TEXTURE_SIZE, &maxSize);
  if (maxSize > 0) side = std::min(side, maxSize);
  if (const int limit = gPageSideLimit.load(); limit > 0) side = std::min(side, limit);
  while (side >= 1 && !PageFits(side)) side /= 2;
  if (side < 1) return -1;

  Page page;
  page.side = side;
  glGenTextures(1, &page.texture);
  glBindTexture(GL_TEXTURE_2D, page.texture);
  glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
  glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
  glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
  glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
  glTexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_DECAL);
  PlainUnpack(1);
  // Zeros, so the gaps between glyphs are transparent.
  const std::vector<std::uint8_t> zeros(static_cast<std::size_t>(side) * static_cast<std::size_t>(side), 0);
  glTexImage2D(GL_TEXTURE_2D, 0, GL_INTENSITY4, side, side, 0, GL_LUMINANCE, GL_UNSIGNED_BYTE, zeros.data());
  pages_.push_back(page);
  return static_cast<int>(pages_.size()) - 1;
}

// Finds room for every piece of a glyph and uploads them; false when no texture can be
// had. The glyph is cut into squares the size of the last page (one piece for any glyph
// that fits a page).
bool CFontMap::Place(Glyph& glyph) {
  glyph.pieces.clear();
  if (pages_.empty() && NewPage(std::max(glyph.width, glyph.height)) < 0) return false;
  const int tile = pages_.back().side;
  for (int oy = 0; oy < glyph.height; oy += tile) {
    for (int ox = 0; ox < glyph.width; ox += tile) {
      const int w = std::min(glyph.width - ox, tile), h = std::min(glyph.height - oy, tile);
      // Room on the last page's current shelf, or on a new shelf, or on a new page.
      Piece piece;
      for (int attempt = 0; attempt < 2 && piece.page < 0; ++attempt) {
        int pageIndex = static_cast<int>(pages_.size()) - 1;
        if (attempt == 1 && (pageIndex = NewPage(std::max(w, h))) < 0) return false;
        Page& page = pages_[static_cast<std::size_t>(pageIndex)];
        if (page.cursorX + w > page.side) {
          page.shelfY += page.shelfHeight + 1;
          page.shelfHeight = 0;
          page.cursorX = 0;
        }
        if (page.shelfY + h <= page.side && page.cursorX + w <= page.side) {
          piece = Piece{pageIndex, page.cursorX, page.shelfY, w, h, ox, oy};
          page.cursorX += w + 1;  // the gap: nearest sampling never reaches a neighbour
          page.shelfHeight = std::max(page.shelfHeight, h);
        }
      }
      if (piece.page < 0) return false;
      // Rows padded to four bytes, as the unpack alignment of the upload says.
      const auto stride = static_cast<std::size_t>((w + 3) & ~3);
      std::vector<std::uint8_t> rows(stride * static_cast<std::size_t>(h), 0);
      for (int r = 0; r < h; ++r) {
        const std::size_t from =
            static_cast<std::size_t>(oy + r) * static_cast<std::size_t>(glyph.width) + static_cast<std::size_t>(ox);
        std::copy_n(glyph.pending.begin() + static_cast<std::ptrdiff_t>(from), w,
                    rows.begin() + static_cast<std::ptrdiff_t>(static_cast<std::size_t>(r) * stride));
      }
      glBindTexture(GL_TEXTURE_2D, pages_[static_cast<std::size_t>(piece.page)].texture);
      glPixelStorei(GL_UNPACK_ALIGNMENT, 4);
      glTexSubImage2D(GL_TEXTURE_2D, 0, piece.x, piece.y, w, h, GL_LUMINANCE, GL_UNSIGNED_BYTE, rows.data());
      glyph.pieces.push_back(piece);
    }
  }
  return true;
}

void CFontMap::Upload() {
  const void* current = eglGetCurrentContext();
  if (current == EGL_NO_CONTEXT) return;
  if (!pages_.empty() && current != context_) Forget();  // made in a context not current now
  if (waiting_.empty()) return;
  context_ = current;
  glPushAttrib(GL_TEXTURE_BIT);
  glPushClientAttrib(GL_CLIENT_PIXEL_STORE_BIT);
  for (const unsigned index : waiting_) {
    Glyph& glyph = glyphs_[index];
    if (glyph.pending.empty()) {
      // Uploaded once and forgotten since: render the image again.
      FT_Face face = ft_->face;
      if (FT_Load_Glyph(face, index, FT_LOAD_DEFAULT) != 0) continue;
      if (face_.embolden) FT_GlyphSlot_Embolden(face->glyph);
      if (face->glyph->format != FT_GLYPH_FORMAT_BITMAP && FT_Render_Glyph(face->glyph, FT_RENDER_MODE_NORMAL) != 0) {
        continue;
      }
      glyph.pending = GreyImage(ft_->library, face->glyph->bitmap);
      for (std::uint8_t& v : glyph.pending) v = QuantiseGrey(v);
      if (glyph.pending.size() != static_cast<std::size_t>(glyph.width) * static_cast<std::size_t>(glyph.height)) {
        glyph.pending.clear();
        continue;
      }
    }
    if (!Place(glyph)) glyph.pieces.clear();  // the driver gives no texture: not drawn
    glyph.pending.clear();
    glyph.pending.shrink_to_fit();
  }
  waiting_.clear();
  glPopClientAttrib();
  glPopAttrib();
}

void CFontMap::Release() noexcept {
  if (!pages_.empty() && context_ != nullptr && eglGetCurrentContext() == context_) {
    for (const Page& page : pages_) glDeleteTextures(1, &page.texture);
  }
  Forget();
}

void CFontMap::Forget() noexcept {
  pages_.clear();
  context_ = nullptr;
  waiting_.clear();
  for (auto& [index, glyph] : glyphs_) {
    const bool hadPieces = !glyph.pieces.empty() || !glyph.pending.empty();
    glyph.pieces.clear();
    if (hadPieces) waiting_.push_back(index);
  }
}

// ---------------------------------------------------------------------------------------
// 6. Measuring

TextMetrics CFontMap::Measure(std::string_view utf8) { return Measure(DecodeUtf8(utf8)); }

TextMetrics CFontMap::Measure(const std::u32string& text) {
  TextMetrics m;
  m.ascent = ascent_;
  m.descent = descent_;
  m.height = std::ceil(ascent_ + descent_);
  for (std::size_t i = 0; i < text.size(); ++i) {
    m.width += GlyphOf(text[i]).advance;
    if (i + 1 < text.size()) m.width += Kerning(text[i], text[i + 1]);
  }
  return m;
}

// ---------------------------------------------------------------------------------------
// 7. CFontMapManager

CFontMap& CFontMapManager::Get(const Font& font) {
  Key key{font.Name(), font.Size().scaled, font.Bold(), font.Italic(), font.Underline(), font.Strikethrough(),
          font.Weight()};
  auto found = maps_.find(key);
  if (found == maps_.end()) found = maps_.emplace(std::move(key), std::make_unique<CFontMap>(font)).first;
  return *found->second;
}

void CFontMapManager::Clear() noexcept { maps_.clear(); }

void CFontMapManager::Forget() noexcept {
  for (auto& entry : maps_) entry.second->Forget();
  maps_.clear();
}

}  // namespace orvane::detail
