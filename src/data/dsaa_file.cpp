// DSAA grids (Golden Software ASCII) read without GDAL, and the layout of a raster's cells
// in a grid.
//
// A DSAA file: "DSAA" alone on the first line; the numbers of columns and rows; the X, Y
// and Z limits (xlo xhi, ylo yhi, zlo zhi); then the values, row by row from ylo to yhi,
// each row from xlo to xhi. Whitespace of any kind separates them all, so a row may wrap
// over lines, and lines may end in "\n" or "\r\n".
//
// The grid comes out bit for bit as GDAL's GSAG driver gives it through ReadRaster, as
// these files were read before: GDAL takes the X and Y limits for the centres of the outer
// cells and makes a geotransform of them, cell size (xhi - xlo) / (nx - 1) and origin
// xlo - size / 2, so node i lies at origin + (i + 0.5) size, which is not always
// xlo + i size in the last bit; a cell holding GSAG's no-data value, exactly 1.70141e38,
// is blank, and so is NaN. Numbers are read as strtod reads them, with from_chars: a
// leading '+' is taken, one too large is infinite (and refused), one too small is 0.
// What GDAL passes over with a warning (a word that is no number, values beyond the
// header's count) is refused here, naming the line.
//
// The file is read with read() in blocks that always end after whitespace, so that no
// number is cut; each number is parsed in place and goes straight to its node.

#include "data/dsaa_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <climits>
#include <cmath>
#include <cstring>
#include <limits>
#include <memory>
#include <string_view>
#include <vector>

#include "core/parallel.h"
#include "orvane/core/error.h"

namespace orvane::detail {

namespace {

constexpr const char* kSource = "DataFile";
constexpr std::size_t kBlock = std::size_t{1} << 18;
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

[[noreturn]] void Fail(const std::string& text) { throw Error(5, kSource, text); }

// Whitespace as isspace has it in the C locale.
inline bool IsSpace(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

// The line breaks in [first, last).
std::size_t LineBreaks(const char* first, const char* last) {
  std::size_t count = 0;
  while ((first = static_cast<const char*>(std::memchr(first, '\n', static_cast<std::size_t>(last - first)))) != nullptr) {
    ++count;
    ++first;
  }
  return count;
}

// A word of the file for a message: printable ASCII as it is, other bytes as \xNN, cut
// to 40 characters.
std::string Quoted(std::string_view word) {
  static constexpr char kHex[] = "0123456789abcdef";
  std::string out = "\"";
  for (std::size_t k = 0; k < word.size() && k < 40; ++k) {
    const auto c = static_cast<unsigned char>(word[k]);
    if (c > 0x20 && c < 0x7F && c != '\\' && c != '"') {
      out += static_cast<char>(c);
    } else {
      out += "\\x";
      out += kHex[c >> 4];
      out += kHex[c & 0xF];
    }
  }
  return out + (word.size() > 40 ? "...\"" : "\"");
}

// What strtod gives for a number from_chars finds out of range: an infinity when it is
// too large, a zero when too small, with its sign. [first, last) is the number.
double OutOfRange(const char* first, const char* last) {
  const bool negative = *first == '-';
  // The decimal exponent of the first significant digit tells which.
  long long digitsBefore = 0, zerosAfter = 0;
  bool point = false, significant = false;
  const char* p = first + (negative ? 1 : 0);
  for (; p < last && *p != 'e' && *p != 'E'; ++p) {
    if (*p == '.') {
      point = true;
    } else if (significant || *p != '0') {
      significant = true;
      if (!point) ++digitsBefore;
    } else if (point) {
      ++zerosAfter;
    }
  }
  long long exponent = 0;
  if (p < last) {
    ++p;
    const bool down = p < last && *p == '-';
    if (p < last && (*p == '-' || *p == '+')) ++p;
    for (; p < last && exponent < 1'000'000'000; ++p) exponent = exponent * 10 + (*p - '0');
    if (down) exponent = -exponent;
  }
  const long long order = (digitsBefore > 0 ? digitsBefore - 1 : -(zerosAfter + 1)) + exponent;
  const double magnitude = order > 0 ? std::numeric_limits<double>::infinity() : 0.0;
  return negative ? -magnitude : magnitude;
}

// The number that fills the word at p, which ends before end (at whitespace or at end):
// the position after it, or nullptr when the word is no number.
inline const char* ParseNumber(const char* p, const char* end, double& value) {
  if (*p == '+') {
    ++p;
    if (p == end || *p == '-' || *p == '+') return nullptr;
  }
  const auto result = std::from_chars(p, end, value);
  if (result.ec == std::errc::invalid_argument || (result.ptr != end && !IsSpace(*result.ptr))) return nullptr;
  if (result.ec == std::errc::result_out_of_range) value = OutOfRange(p, result.ptr);
  return result.ptr;
}

// The file's text in blocks that end after whitespace (or at the end of the file), so
// that each holds whole words.
class Words {
 public:
  Words(const std::string& path, const std::string& name) : name_(name), buffer_(new char[kBlock]) {
    fd_ = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd_ < 0) Fail(name + ": cannot open the file (" + std::strerror(errno) + ")");
    struct stat status {};
    regular_ = ::fstat(fd_, &status) == 0 && S_ISREG(status.st_mode);
    if (regular_) size_ = static_cast<std::uint64_t>(status.st_size);
  }
  ~Words() { ::close(fd_); }
  Words(const Words&) = delete;
  Words& operator=(const Words&) = delete;

  // The text in view: whole words and whitespace.
  const char* Begin() const { return buffer_.get() + pos_; }
  const char* End() const { return buffer_.get() + view_; }
  // Marks the text before at as read.
  void SkipTo(const char* at) { pos_ = static_cast<std::size_t>(at - buffer_.get()); }

  // Brings more text into view once all in view is read; false at the end of the file.
  bool More() {
    lines_ += LineBreaks(buffer_.get(), buffer_.get() + pos_);
    read_ += pos_;
    std::memmove(buffer_.get(), buffer_.get() + pos_, have_ - pos_);
    have_ -= pos_;
    pos_ = 0;
    while (!end_ && have_ < kBlock) {
      const ssize_t n = ::read(fd_, buffer_.get() + have_, kBlock - have_);
      if (n < 0 && errno == EINTR) continue;
      if (n < 0) Fail(name_ + ": the file could not be read (" + std::strerror(errno) + ")");
      end_ = n == 0;
      have_ += static_cast<std::size_t>(n);
    }
    view_ = have_;
    if (!end_) {
      while (view_ > 0 && !IsSpace(buffer_[view_ - 1])) --view_;
      if (view_ == 0) Fail(name_ + ": line " + std::to_string(LineOf(Begin())) + ": " + Quoted({Begin(), have_}) + " is not a number");
    }
    return have_ > 0;
  }

  // The next word, empty at the end of the file.
  std::string_view Next() {
    const char* p = Begin();
    for (;;) {
      while (p < End() && IsSpace(*p)) ++p;
      if (p < End()) break;
      SkipTo(p);
      if (!More()) return {};
      p = Begin();
    }
    const char* word = p;
    while (p < End() && !IsSpace(*p)) ++p;
    SkipTo(p);
    return {word, static_cast<std::size_t>(p - word)};
  }

  // The word that starts at p, in view.
  std::string_view WordAt(const char* p) const {
    const char* end = p;
    while (end < End() && !IsSpace(*end)) ++end;
    return {p, static_cast<std::size_t>(end - p)};
  }
  // The line (from 1) of p, in view.
  std::size_t LineOf(const char* p) const {
    return lines_ + LineBreaks(buffer_.get(), p) + 1;
  }
  // The bytes from p, in view, to the end of the file (the most there are when the size
  // of the file is not known).
  std::uint64_t Left(const char* p) const {
    if (!regular_) return std::numeric_limits<std::uint64_t>::max();
    const std::uint64_t at = read_ + static_cast<std::uint64_t>(p - buffer_.get());
    return size_ > at ? size_ - at : 0;
  }
  // The first bytes of the file, once More has been called.
  std::string_view Start() const { return {buffer_.get(), std::min<std::size_t>(have_, 8)}; }

 private:
  const std::string& name_;
  std::unique_ptr<char[]> buffer_;
  int fd_ = -1;
  bool regular_ = false;    // a regular file, of size_ bytes
  std::uint64_t size_ = 0;
  std::uint64_t read_ = 0;  // bytes before the buffer
  std::size_t lines_ = 0;   // line breaks before the buffer
  std::size_t have_ = 0;    // bytes in the buffer
  std::size_t view_ = 0;    // bytes of whole words and whitespace
  std::size_t pos_ = 0;     // bytes read of those
  bool end_ = false;        // the file has no more
};

}  // namespace

void CheckRasterSize(const std::string& name, std::int64_t columns, std::int64_t rows) {
  if (columns < 2 || rows < 2) {
    Fail(name + ": a grid needs at least 2 by 2 cells, not " + std::to_string(columns) + " by " + std::to_string(rows));
  }
  if (columns > kMostGridCells || rows > kMostGridCells || columns * rows > kMostGridCells) {
    Fail(name + ": the raster has " + std::to_string(columns * rows) + " cells, more than the " +
         std::to_string(kMostGridCells) + " a grid may hold; cut or thin it first (gdal_translate -srcwin or -outsize)");
  }
}

void FailCell(const std::string& name, std::size_t c, std::size_t r) {
  Fail(name + ": the cell in column " + std::to_string(c + 1) + ", row " + std::to_string(r + 1) +
       " is not a finite number below 1e300");
}

RasterLayout::RasterLayout(const double (&gt)[6], std::size_t columns, std::size_t rows, const std::string& name,
                           GridFile& grid)
    : columns_(columns), rows_(rows), reversedX_(!(gt[1] > 0)), topDown_(gt[5] < 0) {
  if (gt[2] != 0.0 || gt[4] != 0.0) Fail(name + ": the raster is rotated (its geotransform has shear terms); warp it north-up first (gdalwarp)");
  if (gt[1] == 0.0 || gt[5] == 0.0) Fail(name + ": the raster's cells have no size");
  grid.x.resize(columns);
  grid.y.resize(rows);
  for (std::size_t i = 0; i < columns; ++i) grid.x[i] = gt[0] + (static_cast<double>(Column(i)) + 0.5) * gt[1];
  for (std::size_t j = 0; j < rows; ++j) grid.y[j] = gt[3] + (static_cast<double>(Row(j)) + 0.5) * gt[5];
  const auto check = [&name](double v, const char* where) {
    if (!std::isfinite(v) || std::fabs(v) >= kLargestValue) Fail(name + ": " + where + " is not a finite number below 1e300");
  };
  check(grid.x.front(), "the first column's X");
  check(grid.x.back(), "the last column's X");
  check(grid.y.front(), "the first row's Y");
  check(grid.y.back(), "the last row's Y");
}

void ReadDsaaFile(const std::string& path, const std::string& name, std::optional<double> noData,
                  const RasterGeoreference* georeference, GridFile& grid) {
  Words words(path, name);
  words.More();
  // "DSAA" (in any case, as GDAL takes it) and a line break.
  const std::string_view start = words.Start();
  if (start.size() < 5 || (start[4] != '\n' && start[4] != '\r') ||
      !std::equal(start.begin(), start.begin() + 4, "DSAA", [](char a, char b) { return (a & ~0x20) == b; })) {
    Fail(name + ": not a DSAA grid (the first line is not \"DSAA\")");
  }
  words.Next();

  // The header: whole numbers of columns and rows, then six numbers.
  static constexpr const char* kItems[] = {"number of columns", "number of rows", "lowest X", "highest X",
                                           "lowest Y",          "highest Y",      "lowest Z", "highest Z"};
  std::int64_t counts[2] = {0, 0};
  double limits[6] = {};
  for (std::size_t k = 0; k < 8; ++k) {
    const std::string_view word = words.Next();
    if (word.empty()) Fail(name + ": the DSAA header ends before its " + kItems[k]);
    const char* const first = word.data() + (word.front() == '+' && word.size() > 1 && word[1] != '-' ? 1 : 0);
    const char* const last = word.data() + word.size();
    bool number = false;
    if (k < 2) {
      const auto result = std::from_chars(first, last, counts[k]);
      number = result.ptr == last && result.ec != std::errc::invalid_argument;
      if (result.ec == std::errc::result_out_of_range) counts[k] = *first == '-' ? -1 : std::numeric_limits<std::int64_t>::max();
    } else {
      number = ParseNumber(word.data(), last, limits[k - 2]) == last;
    }
    if (!number) {
      Fail(name + ": line " + std::to_string(words.LineOf(word.data())) + ": the " + kItems[k] + " in the DSAA header is " +
           (k < 2 ? "not a whole number (" : "not a number (") + Quoted(word) + ")");
    }
  }
  // GDAL holds no more than INT_MAX columns and INT_MAX - 1 rows.
  const std::int64_t nx = std::min<std::int64_t>(counts[0], INT_MAX);
  const std::int64_t ny = std::min<std::int64_t>(counts[1], INT_MAX - 1);
  CheckRasterSize(name, nx, ny);
  const auto columns = static_cast<std::size_t>(nx), rows = static_cast<std::size_t>(ny);

  // The header's limits as GDAL makes them a geotransform, unless a sidecar gives one.
  RasterGeoreference header;
  header.gt[1] = (limits[1] - limits[0]) / static_cast<double>(nx - 1);
  header.gt[5] = (limits[2] - limits[3]) / static_cast<double>(ny - 1);
  header.gt[0] = limits[0] - header.gt[1] / 2;
  header.gt[3] = limits[3] - header.gt[5] / 2;
  const RasterGeoreference& geo = georeference != nullptr ? *georeference : header;
  const RasterLayout layout(geo.gt, columns, rows, name, grid);

  // Each value takes at least two bytes (the last one); a file too short for them all is
  // read without room for them, to say what it holds.
  const std::size_t cells = columns * rows;
  const bool store = words.Left(words.Begin()) >= 2 * std::uint64_t{cells} - 1;
  if (store) {
    ReserveHuge(grid.z, cells);
    grid.z.assign(cells, kNan);
  }
  double* const z = grid.z.data();
  const bool hasNoData = noData.has_value();
  const double noDataValue = noData.value_or(0.0);
  const double scale = geo.scale, offset = geo.offset;
  // The first bad value in the order ReadRaster meets them: the top row first.
  bool bad = false;
  std::size_t badColumn = 0, badRow = 0;

  std::size_t count = 0, c = 0, r = rows - 1;  // the raster's column and row (from the top)
  const char* p = words.Begin();
  const char* end = words.End();
  while (count < cells) {
    while (p < end && IsSpace(*p)) ++p;
    if (p == end) {
      words.SkipTo(p);
      if (!words.More()) break;
      p = words.Begin();
      end = words.End();
      continue;
    }
    double v = 0.0;
    const char* const next = ParseNumber(p, end, v);
    if (next == nullptr) Fail(name + ": line " + std::to_string(words.LineOf(p)) + ": " + Quoted(words.WordAt(p)) + " is not a number");
    p = next;
    if (!std::isnan(v) && v != kDsaaBlank && !(hasNoData && v == noDataValue)) {
      v = v * scale + offset;
      if (!(std::fabs(v) < kLargestValue)) {
        if (!bad || r != badRow) {
          badColumn = c;
          badRow = r;
        }
        bad = true;
      } else if (store) {
        z[layout.Index(c, r)] = v;
      }
    }
    ++count;
    if (++c == columns) {
      c = 0;
      --r;
    }
  }
  words.SkipTo(p);
  if (count < cells) {
    Fail(name + ": the file holds " + std::to_string(count) + " values, fewer than the " + std::to_string(nx) + " by " +
         std::to_string(ny) + " its header gives");
  }
  const std::string_view more = words.Next();
  if (!more.empty()) {
    Fail(name + ": line " + std::to_string(words.LineOf(more.data())) + ": more values than the " + std::to_string(nx) +
         " by " + std::to_string(ny) + " the header gives (" + Quoted(more) + ")");
  }
  if (bad) FailCell(name, badColumn, badRow);
}

}  // namespace orvane::detail
