// Named colour maps, colour tables read from files, and laying a table over a ColorMap.
//
// Contents
//   1. Named maps
//   2. Reading a colour table
//   3. Laying a table over a level range
//
// A colour table is a list of (value, colour) stops. Two kinds of file are read, told
// apart by what they hold:
//
//   simple table   one stop per line, "VALUE COLOR"
//   GMT .cpt       one slice per line, "z0 colour0 z1 colour1 [L|U|B] [;label]", plus
//                  "B colour", "F colour" and "N colour" lines for values below and above
//                  the table and for missing values
//
// A file is a .cpt when it has a COLOR_MODEL comment, a B, F or N line, or a line only a
// .cpt can hold (a label, eight or nine fields, four fields that are not all numbers);
// otherwise it is a simple table, so "0 10 20 30" is the value 0 with the colour 10 20 30.
// Fields are separated by blanks, tabs or commas, so "0 255,0,0" is "0 255 0 0". Lines
// whose first non-blank character is '#' are comments.
//
// A colour is one field, #RRGGBB, R/G/B, H-S-V, a grey level or a name from kNames, or
// three fields R G B. Channels are whole numbers 0..255; with "COLOR_MODEL = HSV" (or
// +HSV) the triplets are hue 0..360, saturation and value 0..1, as H-S-V always is. The
// colours are turned into RGB where they are read and interpolated in RGB.
//
// Discrete tables. Each .cpt slice gives stops at z0 and z1. Where a slice ends in the
// colour the next one starts with, the two make one stop; where they differ, the table
// keeps the value twice, the lower slice's colour first: a jump. A simple table marks a
// jump the same way, by repeating a value. A ColorMap cannot hold two stops at one
// position, so LoadColorTable puts the colour below a jump kJumpWidth before it. As in
// GMT, a value on a boundary takes the colour of the slice above it, and the table's last
// value its last colour.

#include "orvane/contour/color_tables.h"

#include <algorithm>
#include <cctype>
#include <array>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <limits>
#include <span>
#include <system_error>

#include "orvane/contour/color_map.h"
#include "orvane/core/error.h"

namespace orvane {

namespace {

constexpr const char* kSource = "Orvada.ColorMap";

// ---------------------------------------------------------------------------------------
// 1. Named maps
// ---------------------------------------------------------------------------------------

// A stop of a map sampled from a 256-entry table: the entry's index and its colour.
struct EntryStop {
  int entry;
  std::uint32_t rrggbb;
};

// A stop at a position on 0..1.
struct PositionStop {
  double at;
  std::uint32_t rrggbb;
};

// viridis, cividis and magma are sampled from the 256-entry tables published with
// matplotlib, CC0. The entries kept are the fewest, chosen greedily from entry 0, for
// which the straight line between two kept entries passes within half a step (0.5/255) of
// every entry between them; after rounding to bytes the map is then within 1/255 of the
// table everywhere. Evenly spaced stops would need every entry for cividis, whose blue
// channel bends sharply near entry 22.
constexpr EntryStop kViridis[] = {
    {0, 0x440154},   {14, 0x481668},  {29, 0x482979},  {44, 0x443B84},  {62, 0x3C508B},
    {88, 0x2F6B8E},  {120, 0x23898E}, {139, 0x1E9B8A}, {149, 0x20A486}, {159, 0x27AD81},
    {168, 0x32B67A}, {177, 0x40BD72}, {188, 0x56C667}, {197, 0x69CD5B}, {208, 0x84D44B},
    {223, 0xAADC32}, {234, 0xC8E020}, {240, 0xD8E219}, {244, 0xE2E418}, {247, 0xEAE51A},
    {251, 0xF4E61E}, {255, 0xFDE725}};

constexpr EntryStop kCividis[] = {
    {0, 0x00224E},   {12, 0x002B62},  {19, 0x00306F},  {22, 0x003171},  {23, 0x013271},
    {27, 0x0F3570},  {30, 0x163770},  {35, 0x203A6F},  {47, 0x31436D},  {64, 0x434E6C},
    {82, 0x555B6D},  {110, 0x6D6F72}, {127, 0x7C7B78}, {138, 0x868379}, {167, 0xA29975},
    {193, 0xBDAE6C}, {215, 0xD4C15F}, {232, 0xE7D150}, {244, 0xF5DC41}, {250, 0xFCE236},
    {251, 0xFDE334}, {252, 0xFEE434}, {254, 0xFEE636}, {255, 0xFEE838}};

constexpr EntryStop kMagma[] = {
    {0, 0x000004},   {2, 0x010106},   {6, 0x02020D},   {16, 0x0A0822},  {29, 0x19103F},
    {39, 0x271258},  {48, 0x36106B},  {55, 0x420F75},  {64, 0x51127C},  {80, 0x6A1C81},
    {94, 0x802582},  {114, 0xA02F7F}, {133, 0xBF3A77}, {145, 0xD2426F}, {154, 0xDF4A68},
    {164, 0xEB5760}, {174, 0xF4675C}, {182, 0xF8765C}, {193, 0xFC8A62}, {206, 0xFEA36F},
    {224, 0xFEC488}, {245, 0xFDEBAC}, {255, 0xFCFDBF}};

// ColorBrewer's 11-class RdBu (Cynthia Brewer, Apache 2.0), reversed: dark blue at 0,
// near-white at 0.5, dark red at 1. Its classes are spaced for equal perceived steps.
constexpr PositionStop kDiverging[] = {
    {0.0, 0x053061}, {0.1, 0x2166AC}, {0.2, 0x4393C3}, {0.3, 0x92C5DE},
    {0.4, 0xD1E5F0}, {0.5, 0xF7F7F7}, {0.6, 0xFDDBC7}, {0.7, 0xF4A582},
    {0.8, 0xD6604D}, {0.9, 0xB2182B}, {1.0, 0x67001F}};

// Elevations: deep water, shallow water, green lowlands, pale yellow, brown, snow. The
// stops of matplotlib's "terrain", their fractions times 255 rounded half to even.
constexpr PositionStop kTerrain[] = {
    {0.0, 0x333399}, {0.15, 0x0099FF}, {0.25, 0x00CC66},
    {0.5, 0xFFFF99}, {0.75, 0x805C54}, {1.0, 0xFFFFFF}};

// Escapes control and non-ASCII bytes and cuts text to 80 characters, so that a file's
// contents quoted in a message never reach a terminal as raw escape sequences.
std::string Quote(std::string_view text) {
  constexpr std::size_t kMost = 80;
  std::string out = "\"";
  for (std::size_t i = 0; i < text.size() && i < kMost; ++i) {
    const auto byte = static_cast<unsigned char>(text[i]);
    if (byte < 0x20 || byte >= 0x7F || byte == '"' || byte == '\\') {
      static constexpr char kHex[] = "0123456789ABCDEF";
      out += "\\x";
      out += kHex[byte >> 4];
      out += kHex[byte & 15];
    } else {
      out += static_cast<char>(byte);
    }
  }
  if (text.size() > kMost) out += "...";
  return out + "\"";
}

}  // namespace

const std::vector<std::string>& PerceptualColorMapNames() {
  static const std::vector<std::string> names = {"viridis", "cividis", "magma", "diverging", "terrain"};
  return names;
}

void LoadPerceptualColorMap(ColorMap& map, std::string_view name) {
  const auto loadEntries = [&map](const auto& stops) {
    map.RemoveAll();
    for (const EntryStop& s : stops) map.Add(s.entry / 255.0, FromHexRgb(s.rrggbb));
  };
  const auto loadPositions = [&map](const auto& stops) {
    map.RemoveAll();
    for (const PositionStop& s : stops) map.Add(s.at, FromHexRgb(s.rrggbb));
  };
  if (name == "viridis") return loadEntries(kViridis);
  if (name == "cividis") return loadEntries(kCividis);
  if (name == "magma") return loadEntries(kMagma);
  if (name == "diverging") return loadPositions(kDiverging);
  if (name == "terrain") return loadPositions(kTerrain);
  throw Error(5, kSource,
              Quote(name) + " is not a colour map; the known ones are viridis, cividis, magma, diverging and terrain.");
}

std::string PerceptualColorMapFor(std::string_view text) {
  std::string lower(text);
  std::transform(lower.begin(), lower.end(), lower.begin(), [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  for (const char* word : {"elev", "height", "altitude", "topo", "dem", "bathy", "terrain", "relief"}) {
    if (lower.find(word) != std::string::npos) return "terrain";
  }
  return "viridis";
}

// ---------------------------------------------------------------------------------------
// 2. Reading a colour table
// ---------------------------------------------------------------------------------------

namespace {

// A colour table is a few kilobytes; anything this large is not one.
constexpr std::size_t kMostBytes = std::size_t{16} << 20;

struct NamedColor {
  std::string_view name;
  std::uint32_t rrggbb;
};

// The colour names read in a .cpt, as GMT (and X11) define them.
constexpr NamedColor kNames[] = {
    {"black", 0x000000},   {"white", 0xFFFFFF}, {"gray", 0xBEBEBE},  {"grey", 0xBEBEBE},
    {"red", 0xFF0000},     {"green", 0x00FF00}, {"blue", 0x0000FF},  {"yellow", 0xFFFF00},
    {"cyan", 0x00FFFF},    {"magenta", 0xFF00FF}, {"orange", 0xFFA500}, {"brown", 0xA52A2A},
    {"purple", 0xA020F0}, {"pink", 0xFFC0CB}};

enum class Model { kRgb, kHsv };

bool IsSeparator(char c) { return c == ' ' || c == '\t' || c == ',' || c == '\v' || c == '\f'; }

std::vector<std::string_view> Fields(std::string_view line) {
  std::vector<std::string_view> fields;
  std::size_t i = 0;
  while (i < line.size()) {
    while (i < line.size() && IsSeparator(line[i])) ++i;
    const std::size_t start = i;
    while (i < line.size() && !IsSeparator(line[i])) ++i;
    if (i > start) fields.push_back(line.substr(start, i - start));
  }
  return fields;
}

bool EqualsIgnoringCase(std::string_view a, std::string_view b) {
  return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) {
           return (x >= 'A' && x <= 'Z' ? x - 'A' + 'a' : x) == (y >= 'A' && y <= 'Z' ? y - 'A' + 'a' : y);
         });
}

// A whole field as a number (a leading '+' allowed). Infinities and NaN are numbers here,
// and so is a number out of the range of doubles, read as an infinity: the caller
// refuses them all as not finite.
bool ParseNumber(std::string_view text, double& value) {
  if (!text.empty() && text.front() == '+') text.remove_prefix(1);
  if (text.empty()) return false;
  const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
  if (result.ptr != text.data() + text.size()) return false;
  if (result.ec == std::errc::result_out_of_range) value = std::numeric_limits<double>::infinity();
  return result.ec == std::errc() || result.ec == std::errc::result_out_of_range;
}

bool IsNumber(std::string_view text) {
  double ignored = 0;
  return ParseNumber(text, ignored);
}

std::uint8_t ToByte(double fraction) {
  return static_cast<std::uint8_t>(RoundHalfEven(std::clamp(fraction, 0.0, 1.0) * 255.0));
}

// Hue in degrees, saturation and value in 0..1.
Color FromHsv(double h, double s, double v) {
  const double sector = std::fmod(h, 360.0) / 60.0;
  const double whole = std::floor(sector);
  const double f = sector - whole;
  const double p = v * (1 - s);
  const double q = v * (1 - s * f);
  const double t = v * (1 - s * (1 - f));
  // Red, green and blue in each sixth of the hue circle.
  const double rgb[6][3] = {{v, t, p}, {q, v, p}, {p, v, t}, {p, q, v}, {t, p, v}, {v, p, q}};
  const auto* c = rgb[static_cast<int>(whole) % 6];
  return Rgb(ToByte(c[0]), ToByte(c[1]), ToByte(c[2]));
}

// Reads a file line by line and reports what it cannot use against the line.
class TableReader {
 public:
  TableReader(const std::string& path, std::string text) : path_(path), text_(std::move(text)) {
    if (text_.starts_with("\xEF\xBB\xBF")) pos_ = 3;
  }

  // The next line without its ending and surrounding blanks; false at the end.
  bool Next(std::string_view& line) {
    if (pos_ >= text_.size()) return false;
    std::size_t end = text_.find('\n', pos_);
    if (end == std::string::npos) end = text_.size();
    line = std::string_view(text_).substr(pos_, end - pos_);
    pos_ = end + 1;
    ++number_;
    while (!line.empty() && (line.back() == '\r' || IsSeparator(line.back()))) line.remove_suffix(1);
    while (!line.empty() && IsSeparator(line.front())) line.remove_prefix(1);
    return true;
  }

  void Rewind() {
    pos_ = text_.starts_with("\xEF\xBB\xBF") ? 3 : 0;
    number_ = 0;
  }

  // The number of the line Next gave last.
  long Line() const noexcept { return number_; }

  [[noreturn]] void Fail(const std::string& what) const { Fail(number_, what); }
  [[noreturn]] void Fail(long line, const std::string& what) const {
    throw Error(5, kSource, path_ + ":" + std::to_string(line) + ": " + what);
  }

  double Number(std::string_view field, const char* what) const {
    double value = 0;
    if (!ParseNumber(field, value)) Fail(Quote(field) + " is not " + what);
    if (!std::isfinite(value)) Fail("values must be finite numbers, not " + Quote(field));
    return value;
  }

  // A channel: a whole number 0..255, or in HSV a hue (index 0) or a fraction.
  double Channel(std::string_view field, Model model, int index) const {
    double value = 0;
    const bool number = ParseNumber(field, value);
    if (model == Model::kHsv) {
      const double most = index == 0 ? 360.0 : 1.0;
      if (!number || !(value >= 0 && value <= most)) {
        Fail(Quote(field) + (index == 0 ? " is not a hue (0 to 360)" : " is not a fraction (0 to 1)"));
      }
    } else if (!number || !(value >= 0 && value <= 255) || value != std::floor(value)) {
      Fail(Quote(field) + " is not a colour channel (a whole number 0 to 255)");
    }
    return value;
  }

  Color Triplet(std::string_view a, std::string_view b, std::string_view c, Model model) const {
    const double x = Channel(a, model, 0), y = Channel(b, model, 1), z = Channel(c, model, 2);
    if (model == Model::kHsv) return FromHsv(x, y, z);
    return Rgb(static_cast<std::uint8_t>(x), static_cast<std::uint8_t>(y), static_cast<std::uint8_t>(z));
  }

  // A colour written as one field.
  Color OneField(std::string_view field, Model model) const {
    if (field.front() == '#') {
      std::uint32_t rrggbb = 0;
      const auto result = std::from_chars(field.data() + 1, field.data() + field.size(), rrggbb, 16);
      if (field.size() != 7 || result.ec != std::errc() || result.ptr != field.data() + field.size()) {
        Fail(Quote(field) + " is not a colour (#RRGGBB)");
      }
      return FromHexRgb(rrggbb);
    }
    for (const char separator : {'/', '-'}) {
      const std::size_t first = field.find(separator, 1);
      if (first == std::string_view::npos) continue;
      const std::size_t second = field.find(separator, first + 1);
      if (second == std::string_view::npos || field.find(separator, second + 1) != std::string_view::npos) {
        Fail(Quote(field) + " is not a colour (three channels are needed)");
      }
      return Triplet(field.substr(0, first), field.substr(first + 1, second - first - 1), field.substr(second + 1),
                     separator == '-' ? Model::kHsv : model);
    }
    for (const NamedColor& named : kNames) {
      if (EqualsIgnoringCase(field, named.name)) return FromHexRgb(named.rrggbb);
    }
    if (IsNumber(field)) {
      const auto grey = static_cast<std::uint8_t>(Channel(field, Model::kRgb, 0));
      return Rgb(grey, grey, grey);
    }
    Fail(Quote(field) + " is not a colour");
  }

  // A colour written as one field or three.
  Color Colour(std::span<const std::string_view> fields, Model model) const {
    if (fields.size() == 3) return Triplet(fields[0], fields[1], fields[2], model);
    return OneField(fields[0], model);
  }

 private:
  std::string path_;
  std::string text_;
  std::size_t pos_ = 0;
  long number_ = 0;
};

std::string ReadWhole(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  if (!in) throw Error(5, kSource, path + ": cannot open the file (" + std::strerror(errno) + ")");
  // A folder opens, then reads as empty: say what it is instead.
  std::error_code ignored;
  if (std::filesystem::is_directory(path, ignored)) {
    throw Error(5, kSource, path + ": cannot open the file (" + std::strerror(EISDIR) + ")");
  }
  std::string text;
  char block[1 << 14];
  while (in.read(block, static_cast<std::streamsize>(sizeof block)) || in.gcount() > 0) {
    text.append(block, static_cast<std::size_t>(in.gcount()));
    if (text.size() > kMostBytes) throw Error(5, kSource, path + ": the file is too large for a colour table");
  }
  if (in.bad()) throw Error(5, kSource, path + ": the file could not be read");
  return text;
}

// The fields of a data line before any ";label", without a trailing L, U or B
// annotation flag.
std::vector<std::string_view> SliceFields(std::string_view line) {
  std::vector<std::string_view> fields = Fields(line.substr(0, line.find(';')));
  if (fields.size() == 5 || fields.size() == 9) {
    const std::string_view flag = fields.back();
    if (flag == "L" || flag == "U" || flag == "B") fields.pop_back();
  }
  return fields;
}

bool IsOutsideLine(const std::vector<std::string_view>& fields) {
  return (fields.size() == 2 || fields.size() == 4) && (fields[0] == "B" || fields[0] == "F" || fields[0] == "N");
}

// Whether a data line has a shape only a .cpt gives.
bool OnlyInCpt(std::string_view line) {
  if (line.find(';') != std::string_view::npos) return true;
  const std::vector<std::string_view> fields = Fields(line);
  if (IsOutsideLine(fields)) return true;
  if (fields.size() == 5 || fields.size() == 8 || fields.size() == 9) return true;
  return fields.size() == 4 && !std::all_of(fields.begin(), fields.end(), IsNumber);
}

// The model a COLOR_MODEL comment names; false for a comment that names none.
bool ColourModel(const TableReader& reader, std::string_view comment, Model& model) {
  const std::size_t key = comment.find("COLOR_MODEL");
  if (key == std::string_view::npos) return false;
  std::string_view rest = comment.substr(key + 11);
  const std::size_t equals = rest.find('=');
  if (equals == std::string_view::npos) return false;
  const std::vector<std::string_view> words = Fields(rest.substr(equals + 1));
  std::string_view name = words.empty() ? std::string_view() : words.front();
  if (name.starts_with('+')) name.remove_prefix(1);
  if (EqualsIgnoringCase(name, "RGB")) {
    model = Model::kRgb;
  } else if (EqualsIgnoringCase(name, "HSV")) {
    model = Model::kHsv;
  } else if (EqualsIgnoringCase(name, "CMYK")) {
    reader.Fail("CMYK colour tables are not supported");
  } else {
    reader.Fail("unknown colour model " + Quote(name) + " (expected RGB or HSV)");
  }
  return true;
}

// Appends a stop, refusing values that go down and a value given a third time or
// repeated at the start.
void AddStop(const TableReader& reader, ColorTable& table, double value, Color color, std::string_view field) {
  const std::size_t n = table.values.size();
  if (n > 0 && value < table.values[n - 1]) {
    reader.Fail("values must ascend, and " + Quote(field) + " is below the value before it");
  }
  if (n > 0 && value == table.values[n - 1] && (n == 1 || table.values[n - 2] == value)) {
    reader.Fail("a value may be repeated only once, between others, to mark a jump: " + Quote(field));
  }
  table.values.push_back(value);
  table.colors.push_back(color);
}

void ReadSimple(TableReader& reader, ColorTable& table) {
  static constexpr const char* kExpected =
      "expected \"VALUE COLOR\" with COLOR as #RRGGBB, R G B, R,G,B or R/G/B, not ";
  std::string_view line;
  std::string_view lastField;
  long lastLine = 0;
  while (reader.Next(line)) {
    if (line.empty() || line.front() == '#') continue;
    const std::vector<std::string_view> fields = Fields(line);
    if (fields.size() != 2 && fields.size() != 4) reader.Fail(kExpected + Quote(line));
    const double value = reader.Number(fields[0], "a value");
    const Color color = reader.Colour(std::span(fields).subspan(1), Model::kRgb);
    AddStop(reader, table, value, color, fields[0]);
    lastField = fields[0];
    lastLine = reader.Line();
  }
  const std::size_t n = table.values.size();
  if (n >= 2 && table.values[n - 1] == table.values[n - 2]) {
    reader.Fail(lastLine, "a value may be repeated only once, between others, to mark a jump: " + Quote(lastField));
  }
}

void ReadCpt(TableReader& reader, ColorTable& table, Model model) {
  static constexpr const char* kExpected =
      "expected a slice \"z0 colour z1 colour\" or a B, F or N line, not ";
  std::string_view line;
  while (reader.Next(line)) {
    if (line.empty() || line.front() == '#') continue;
    std::vector<std::string_view> fields = SliceFields(line);
    if (IsOutsideLine(fields)) {
      const Color color = reader.Colour(std::span(fields).subspan(1), model);
      (fields[0] == "B" ? table.below : fields[0] == "F" ? table.above : table.missing) = color;
      continue;
    }
    if (fields.size() != 4 && fields.size() != 8) reader.Fail(kExpected + Quote(line));
    const std::size_t half = fields.size() / 2;
    const double z0 = reader.Number(fields[0], "a value");
    const Color c0 = reader.Colour(std::span(fields).subspan(1, half - 1), model);
    const double z1 = reader.Number(fields[half], "a value");
    const Color c1 = reader.Colour(std::span(fields).subspan(half + 1), model);
    if (!(z0 < z1)) reader.Fail("a slice must go up, not from " + Quote(fields[0]) + " to " + Quote(fields[half]));
    if (table.values.empty()) {
      AddStop(reader, table, z0, c0, fields[0]);
    } else if (z0 != table.values.back()) {
      reader.Fail("the slice starts at " + Quote(fields[0]) + ", not where the one before ended");
    } else if (c0 != table.colors.back()) {
      AddStop(reader, table, z0, c0, fields[0]);
    }
    AddStop(reader, table, z1, c1, fields[half]);
  }
}

}  // namespace

ColorTable ReadColorTable(const std::string& path) {
  TableReader reader(path, ReadWhole(path));
  // First pass: the colour model and which kind of file this is.
  Model model = Model::kRgb;
  bool cpt = false;
  std::string_view line;
  while (reader.Next(line)) {
    if (line.starts_with('#')) {
      cpt = ColourModel(reader, line, model) || cpt;
    } else if (!line.empty()) {
      cpt = cpt || OnlyInCpt(line);
    }
  }
  reader.Rewind();
  ColorTable table;
  if (cpt) {
    ReadCpt(reader, table, model);
  } else {
    ReadSimple(reader, table);
  }
  if (table.values.size() < 2) {
    throw Error(5, kSource, path + ": a colour table needs at least 2 stops, and this one has " +
                                std::to_string(table.values.size()));
  }
  table.relative = table.values.front() >= 0.0 && table.values.back() <= 1.0;
  return table;
}

// ---------------------------------------------------------------------------------------
// 3. Laying a table over a level range
// ---------------------------------------------------------------------------------------

namespace {

// The distance on the map's 0..1 scale between the two stops of a jump. Far above the
// spacing of doubles near 1 (about 1e-16), so the stops stay apart, and far below any
// spacing of levels a plot can show; a position a rounding error short of the jump
// still samples the colour above it.
constexpr double kJumpWidth = 1e-9;

struct Stop {
  double at;
  Color color;
};

// The colour of stops (non-decreasing positions) at p: the first colour before them,
// the last after them, the later of two stops at one position on it.
Color ColourAt(const std::vector<Stop>& stops, double p) {
  if (p < stops.front().at) return stops.front().color;
  std::size_t i = 0;
  while (i + 1 < stops.size() && stops[i + 1].at <= p) ++i;
  if (i + 1 == stops.size()) return stops.back().color;
  return SampleColor(stops[i].at, stops[i].color, stops[i + 1].at, stops[i + 1].color, p);
}

void CheckTable(const ColorTable& table) {
  const std::vector<double>& v = table.values;
  if (v.size() != table.colors.size()) {
    throw Error(5, kSource, "A colour table needs one colour for each value.");
  }
  if (v.size() < 2) throw Error(5, kSource, "A colour table needs at least 2 stops.");
  for (std::size_t i = 0; i < v.size(); ++i) {
    if (!std::isfinite(v[i])) throw Error(5, kSource, "A colour table's values must be finite numbers.");
    const bool repeat = i > 0 && v[i] == v[i - 1];
    if ((i > 0 && v[i] < v[i - 1]) || (repeat && (i == 1 || i + 1 == v.size() || v[i - 2] == v[i]))) {
      throw Error(5, kSource,
                  "A colour table's values must ascend, a value repeated only once, between others, to mark a jump.");
    }
  }
}

}  // namespace

void LoadColorTable(ColorMap& map, const ColorTable& table, double first, double last) {
  if (!(std::isfinite(first) && std::isfinite(last) && first < last && std::isfinite(last - first))) {
    throw Error(5, kSource, "A colour table needs a level range of finite numbers, the first below the last.");
  }
  CheckTable(table);
  // The table on the map's scale, with the colours outside it.
  std::vector<Stop> stops;
  const std::size_t n = table.values.size();
  const auto at = [&](double value) { return table.relative ? value : (value - first) / (last - first); };
  if (table.below) stops.push_back({at(table.values.front()), *table.below});
  for (std::size_t i = 0; i < n; ++i) stops.push_back({at(table.values[i]), table.colors[i]});
  // The last value keeps the last colour; above it the colour turns within a jump width.
  if (table.above) stops.push_back({stops.back().at + kJumpWidth, *table.above});

  std::vector<Stop> kept = {{0.0, ColourAt(stops, 0.0)}};
  for (std::size_t i = 0; i < stops.size(); ++i) {
    const double q = stops[i].at;
    if (!(q > 0.0 && q < 1.0)) continue;
    const bool belowJump = i + 1 < stops.size() && stops[i + 1].at == q;
    const double position = belowJump ? q - kJumpWidth : q;
    if (position > kept.back().at) kept.push_back({position, stops[i].color});
  }
  kept.push_back({1.0, ColourAt(stops, 1.0)});

  map.RemoveAll();
  for (const Stop& s : kept) map.Add(s.at, s.color);
}

}  // namespace orvane
