// XYZ text: one point per line, three numbers separated by commas, semicolons, tabs or
// spaces (or chosen columns of wider lines).
//
// The input is read in blocks (with read() from a file: 256 KiB from a regular one, 64 KiB
// from a pipe or a device; 64 KiB from a stream) and cut into lines in place; only a line
// that straddles two blocks is copied, into one buffer reused for every such line. A line
// may hold at most 1 MiB (its ending not counted), so a file without line breaks, or a
// device that never ends, is refused after about 1 MiB instead of being read into memory
// whole.
// A UTF-8 byte-order mark at the very start is skipped; a line ends at "\n" and any run
// of carriage returns before it ("\r\n", "\r\r\n") is dropped.
//
// An ordinary data line (numbers in the wanted fields, once the first line has been read)
// is parsed in one pass with from_chars straight from the block; anything else (a header,
// a comment, a blank Z, decimal commas, the first comma of a file, a refusal) goes the
// general way, which gives the very same points.
//
// A malformed line is quoted in its error message, cut to 80 characters, with control
// characters and bytes that are not UTF-8 escaped, so that what the file holds never
// reaches a terminal as raw escape sequences.

#include "orvane/data/xyz_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <map>
#include <memory>
#include <span>
#include <string_view>
#include <utility>
#include <vector>

#include "orvane/core/error.h"

namespace orvane {

namespace {

constexpr const char* kSource = "XyzFile";
constexpr std::size_t kBlock = std::size_t{1} << 16;      // from a stream
constexpr std::size_t kFileBlock = std::size_t{1} << 18;  // with read() from a regular file
// Longest line accepted, without its line ending.
constexpr std::size_t kMaxLine = std::size_t{1} << 20;
// Characters of a line quoted in an error message.
constexpr std::size_t kQuotedCharacters = 80;

// Commas separate fields, unless the file writes its decimals with them.
bool IsSeparator(char c, bool decimalComma) {
  return (c == ',' && !decimalComma) || c == ' ' || c == '\t' || c == ';';
}

// Splits line into fields, keeping the first kept.size(); returns how many there are.
std::size_t Fields(std::string_view line, std::span<std::string_view> kept, bool decimalComma = false) {
  std::size_t count = 0;
  std::size_t i = 0;
  while (i < line.size()) {
    while (i < line.size() && IsSeparator(line[i], decimalComma)) ++i;
    const std::size_t start = i;
    while (i < line.size() && !IsSeparator(line[i], decimalComma)) ++i;
    if (i > start) {
      if (count < kept.size()) kept[count] = line.substr(start, i - start);
      ++count;
    }
  }
  return count;
}

bool ParseNumber(std::string_view text, double& value) {
  if (!text.empty() && text.front() == '+') text.remove_prefix(1);
  const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
  return result.ec == std::errc() && result.ptr == text.data() + text.size();
}

// A number written with a decimal comma ("12,5"); a decimal point is refused.
bool ParseCommaNumber(std::string_view text, double& value) {
  if (text.find('.') != std::string_view::npos) return false;
  const std::size_t comma = text.find(',');
  if (comma == std::string_view::npos) return ParseNumber(text, value);
  if (text.size() > 64 || text.find(',', comma + 1) != std::string_view::npos) return false;
  char buffer[64];
  text.copy(buffer, text.size());
  buffer[comma] = '.';
  return ParseNumber(std::string_view(buffer, text.size()), value);
}

// Whether a line ends in an empty field after its last separator, as "x,y," does.
bool EndsEmpty(std::string_view line) {
  while (!line.empty() && line.back() == ' ') line.remove_suffix(1);
  return !line.empty() && (line.back() == ',' || line.back() == ';' || line.back() == '\t');
}

// Length of the well-formed UTF-8 sequence at text[i], or 0 when it is not one.
std::size_t Utf8Length(std::string_view text, std::size_t i) {
  const auto byte = [&](std::size_t k) { return static_cast<unsigned char>(text[k]); };
  const unsigned char lead = byte(i);
  std::size_t length = 0;
  unsigned char low = 0x80;  // range of the first continuation byte
  unsigned char high = 0xBF;
  if (lead >= 0xC2 && lead <= 0xDF) {
    length = 2;
  } else if (lead >= 0xE0 && lead <= 0xEF) {
    length = 3;
    if (lead == 0xE0) low = 0xA0;   // no overlong forms
    if (lead == 0xED) high = 0x9F;  // no surrogates
  } else if (lead >= 0xF0 && lead <= 0xF4) {
    length = 4;
    if (lead == 0xF0) low = 0x90;
    if (lead == 0xF4) high = 0x8F;  // nothing beyond U+10FFFF
  } else {
    return 0;
  }
  if (i + length > text.size()) return 0;
  if (byte(i + 1) < low || byte(i + 1) > high) return 0;
  for (std::size_t k = 2; k < length; ++k) {
    if (byte(i + k) < 0x80 || byte(i + k) > 0xBF) return 0;
  }
  return length;
}

void AppendEscape(std::string& out, unsigned char c) {
  static constexpr char kHex[] = "0123456789abcdef";
  out += "\\x";
  out += kHex[c >> 4];
  out += kHex[c & 0xF];
}

// text made safe to print: tab as \t, a backslash doubled, other control characters
// (C0, DEL and the C1 range U+0080..U+009F) and bytes that are not UTF-8 as \xNN; at
// most `limit` characters of text, followed by "..." when it was cut.
std::string Printable(std::string_view text, std::size_t limit) {
  std::string out;
  std::size_t i = 0;
  for (std::size_t shown = 0; i < text.size() && shown < limit; ++shown) {
    const auto c = static_cast<unsigned char>(text[i]);
    if (c == '\t') {
      out += "\\t";
      ++i;
    } else if (c == '\\') {
      out += "\\\\";
      ++i;
    } else if (c < 0x20 || c == 0x7F) {
      AppendEscape(out, c);
      ++i;
    } else if (c < 0x80) {
      out += static_cast<char>(c);
      ++i;
    } else if (const std::size_t length = Utf8Length(text, i); length == 0) {
      AppendEscape(out, c);
      ++i;
    } else if (c == 0xC2 && static_cast<unsigned char>(text[i + 1]) < 0xA0) {
      AppendEscape(out, c);  // a C1 control, which terminals obey like ESC sequences
      AppendEscape(out, static_cast<unsigned char>(text[i + 1]));
      i += 2;
    } else {
      out.append(text.substr(i, length));
      i += length;
    }
  }
  if (i < text.size()) out += "...";
  return out;
}

// Cuts the input into lines, reading it in blocks: from a stream, or with read() from a
// file descriptor.
class LineReader {
 public:
  enum class Result { kLine, kEnd, kTooLong, kUnreadable };

  explicit LineReader(std::istream& in) : in_(&in), size_(kBlock), block_(new char[kBlock]) {}
  // A file open as fd (which stays the caller's to close): a regular file of fileSize
  // bytes in large blocks, anything else (fileSize 0) in the blocks of a stream.
  LineReader(int fd, std::size_t fileSize)
      : fd_(fd), fileSize_(fileSize), size_(fileSize > 0 ? kFileBlock : kBlock), block_(new char[size_]) {}

  // The next line without its ending, valid until the next call.
  Result Next(std::string_view& line) {
    bool straddles = false;
    spill_.clear();
    for (;;) {
      if (pos_ == end_) {
        if (atEnd_) {
          if (!straddles) return Result::kEnd;
          return Finish(spill_, line);
        }
        if (!Fill()) return Result::kUnreadable;
        continue;
      }
      const char* start = block_.get() + pos_;
      const std::size_t available = end_ - pos_;
      const auto* newline = static_cast<const char*>(std::memchr(start, '\n', available));
      const std::size_t length = newline ? static_cast<std::size_t>(newline - start) : available;
      // Room for the longest line and a "\r\r" ending.
      if (spill_.size() + length > kMaxLine + 2) return Result::kTooLong;
      pos_ += length + (newline ? 1 : 0);
      if (newline && !straddles) return Finish(std::string_view(start, length), line);
      spill_.append(start, length);
      straddles = true;
      if (newline) return Finish(spill_, line);
    }
  }

  // The whole lines ahead in the block, for a caller that cuts them itself: [first, last),
  // last just past a line break (empty when none is ahead). The caller passes back with
  // SkipTo how far it read.
  void WholeLines(const char*& first, const char*& last) const {
    first = block_.get() + pos_;
    last = block_.get() + std::max(pos_, lines_);
  }
  void SkipTo(const char* at) { pos_ = static_cast<std::size_t>(at - block_.get()); }

  // About how many lines a regular file holds, judged by its first block (0 when the
  // size is not known or the first block holds no line break), to reserve room for at
  // most kMostExpected points. Reads that block.
  std::size_t ExpectedLines() {
    constexpr std::size_t kMostExpected = std::size_t{1} << 26;
    if (fileSize_ == 0 || !first_ || !Fill()) return 0;
    const auto breaks = static_cast<std::size_t>(std::count(block_.get(), block_.get() + end_, '\n'));
    if (breaks == 0) return 0;
    if (atEnd_) return breaks + 1;  // the whole file
    const double lines = static_cast<double>(breaks) * static_cast<double>(fileSize_) / static_cast<double>(end_);
    return static_cast<std::size_t>(std::min(lines * 1.0625, static_cast<double>(kMostExpected)));  // later lines may be shorter
  }

 private:
  static Result Finish(std::string_view text, std::string_view& line) {
    while (!text.empty() && text.back() == '\r') text.remove_suffix(1);
    if (text.size() > kMaxLine) return Result::kTooLong;
    line = text;
    return Result::kLine;
  }

  // Reads the next block; false when the input failed.
  bool Fill() {
    if (failed_) return false;
    std::size_t got = 0;
    if (in_ != nullptr) {
      in_->read(block_.get(), static_cast<std::streamsize>(size_));
      if (in_->bad()) return false;
      got = static_cast<std::size_t>(in_->gcount());
    } else {
      while (got < size_) {
        const ssize_t n = ::read(fd_, block_.get() + got, size_ - got);
        if (n == 0) break;
        if (n < 0) {
          if (errno == EINTR) continue;
          failed_ = true;
          return false;
        }
        got += static_cast<std::size_t>(n);
      }
    }
    end_ = got;
    pos_ = 0;
    atEnd_ = end_ < size_;
    lines_ = end_;
    while (lines_ > 0 && block_[lines_ - 1] != '\n') --lines_;
    if (first_) {
      first_ = false;
      if (end_ >= 3 && std::memcmp(block_.get(), "\xEF\xBB\xBF", 3) == 0) pos_ = 3;
    }
    return true;
  }

  std::istream* in_ = nullptr;
  int fd_ = -1;
  std::size_t fileSize_ = 0;
  std::size_t size_;  // bytes a block holds
  std::unique_ptr<char[]> block_;
  std::size_t pos_ = 0;
  std::size_t end_ = 0;
  std::size_t lines_ = 0;  // just past the block's last line break, or 0
  bool atEnd_ = false;
  bool first_ = true;
  bool failed_ = false;
  std::string spill_;  // a line that straddles blocks
};

// The fast way for ordinary data lines. It reads them straight from the block, where
// each ends in a line break: after a line's last character come its carriage returns,
// if any, and then '\n'.

// Skips the separators at p; false when one is a comma and commas must be looked at.
inline bool SkipSeparators(const char*& p, bool watchCommas) {
  for (; IsSeparator(*p, false); ++p) {
    if (*p == ',' && watchCommas) return false;
  }
  return true;
}

// Whether p is at the end of a line: carriage returns, if any, then '\n'.
inline bool AtLineEnd(const char* p) {
  while (*p == '\r') ++p;
  return *p == '\n';
}

// Whether a field ends at p, as the general path cuts a line.
inline bool FieldEnds(const char* p) { return IsSeparator(*p, false) || AtLineEnd(p); }

// The number at p (a leading '+' allowed, as ParseNumber takes it) that fills its field;
// the position after it, or nullptr when the field holds something else or a number that
// is not finite. The line break ahead bounds the reading.
inline const char* FieldNumber(const char* p, const char* end, double& value) {
  if (*p == '+') ++p;
  // A whole number of up to 15 digits, as coordinates often are, is exact as a double.
  const char* const digits = p + (*p == '-' ? 1 : 0);
  const char* const stop = end - digits > 16 ? digits + 16 : end;
  const char* q = digits;
  std::uint64_t whole = 0;
  for (unsigned digit; q < stop && (digit = static_cast<unsigned char>(*q) - 48U) < 10; ++q) whole = whole * 10 + digit;
  if (q != digits && q - digits <= 15 && FieldEnds(q)) {
    value = digits == p ? static_cast<double>(whole) : -static_cast<double>(whole);
    return q;
  }
  const auto result = std::from_chars(p, end, value);
  if (result.ec != std::errc() || !FieldEnds(result.ptr) || !std::isfinite(value)) return nullptr;
  return result.ptr;
}

// Reads the data line at p, within [p, end) that ends in a line break: the position past
// its break, with values set, when the general path would take the line as one point with
// these values. That is, the fields at where[] hold finite numbers, the line has exactly
// three fields (plain) or at least `used`, the first is no comment, no comma appears while
// the file's use of commas is undecided (watchCommas), and the line is no longer than
// kMaxLine. nullptr leaves the line to the general path.
const char* FastLine(const char* p, const char* end, bool plain, const std::size_t (&where)[3], std::size_t used,
                     bool watchCommas, double (&values)[3]) {
  const char* const start = p;
  if (plain) {
    for (double& value : values) {
      if (!SkipSeparators(p, watchCommas)) return nullptr;
      p = FieldNumber(p, end, value);
      if (p == nullptr) return nullptr;
    }
    if (!SkipSeparators(p, watchCommas)) return nullptr;
    while (*p == '\r') ++p;
    if (*p != '\n') return nullptr;
  } else {
    for (std::size_t field = 0; field < used; ++field) {
      if (!SkipSeparators(p, watchCommas) || AtLineEnd(p)) return nullptr;
      if (field == 0 && *p == '#') return nullptr;
      if (field != where[0] && field != where[1] && field != where[2]) {
        while (!IsSeparator(*p, false) && *p != '\n') ++p;
        continue;
      }
      double value = 0.0;
      p = FieldNumber(p, end, value);
      if (p == nullptr) return nullptr;
      for (std::size_t k = 0; k < 3; ++k) {
        if (where[k] == field) values[k] = value;
      }
    }
    // Further fields may hold anything but an undecided comma.
    const char* const rest = p;
    p = static_cast<const char*>(std::memchr(rest, '\n', static_cast<std::size_t>(end - rest)));
    if (watchCommas && std::memchr(rest, ',', static_cast<std::size_t>(p - rest)) != nullptr) return nullptr;
  }
  if (static_cast<std::size_t>(p - start) > kMaxLine) return nullptr;  // the general path says how long
  return p + 1;
}

XyzPoints ReadLines(LineReader& reader, const std::string& name, const XyzReadOptions& options) {
  constexpr int kMostColumns = 1 << 20;  // no line of 1 MiB holds more fields
  for (int column : options.columns) {
    if (column < 1 || column > kMostColumns) {
      throw Error(5, kSource, "The X, Y and Z columns must be numbered from 1 to " + std::to_string(kMostColumns) +
                                  ", not " + std::to_string(column) + ".");
    }
  }
  const bool plain = options.columns == std::array<int, 3>{1, 2, 3};
  std::size_t used = 0;  // fields a line must hold
  std::size_t where[3];  // 0-based field of X, Y and Z
  for (std::size_t k = 0; k < 3; ++k) {
    where[k] = static_cast<std::size_t>(options.columns[k] - 1);
    used = std::max(used, where[k] + 1);
  }
  XyzPoints points;
  if (const std::size_t expected = reader.ExpectedLines(); expected > 0) {
    points.x.reserve(expected);
    points.y.reserve(expected);
    points.z.reserve(expected);
  }
  const std::string shownName = Printable(name, std::string::npos);
  long number = 0;
  bool firstContent = true;
  auto fail = [&](const std::string& what) {
    throw Error(5, kSource, shownName + ":" + std::to_string(number) + ": " + what);
  };
  std::vector<std::string_view> fields(used);
  // Whether numbers are written with decimal commas, fields then separated by semicolons
  // or tabs: decided by the first line that holds a comma, for the whole file.
  enum class Commas { kUndecided, kSeparate, kDecimal } commas = Commas::kUndecided;
  std::string_view line;
  for (;;) {
    // Once the first line is read, ordinary lines go the fast way until one does not.
    if (!firstContent && commas != Commas::kDecimal) {
      const bool watchCommas = commas == Commas::kUndecided;
      const char* p = nullptr;
      const char* end = nullptr;
      reader.WholeLines(p, end);
      double values[3];
      while (p < end) {
        const char* const next = FastLine(p, end, plain, where, used, watchCommas, values);
        if (next == nullptr) break;
        ++number;
        points.x.push_back(values[0]);
        points.y.push_back(values[1]);
        points.z.push_back(values[2]);
        p = next;
      }
      reader.SkipTo(p);
    }
    const LineReader::Result result = reader.Next(line);
    if (result == LineReader::Result::kEnd) break;
    if (result == LineReader::Result::kUnreadable) {
      throw Error(5, kSource, shownName + ": the file could not be read");
    }
    ++number;
    if (result == LineReader::Result::kTooLong) fail("the line is longer than 1 MiB");
    const bool decimal = commas == Commas::kDecimal;
    std::size_t count = Fields(line, fields, decimal);
    if (count == 0 || fields[0].front() == '#') continue;
    const auto parse = decimal ? ParseCommaNumber : ParseNumber;
    double values[3] = {0, 0, 0};
    const bool header = firstContent && !(where[0] < count && parse(fields[where[0]], values[0])) &&
                        !(commas == Commas::kUndecided && where[0] < count && ParseCommaNumber(fields[where[0]], values[0]));
    firstContent = false;
    if (header) continue;
    if (commas == Commas::kUndecided && line.find(',') != std::string_view::npos) {
      commas = Commas::kSeparate;
      if (line.find(';') != std::string_view::npos || line.find('\t') != std::string_view::npos) {
        std::vector<std::string_view> split(used);
        const std::size_t n = Fields(line, split, true);
        bool all = plain ? n == 3 : n >= used;
        for (std::size_t k = 0; k < 3 && all; ++k) all = ParseCommaNumber(split[where[k]], values[k]);
        if (all) {
          commas = Commas::kDecimal;
          fields.swap(split);
          count = n;
        }
      }
    }
    const auto number3 = commas == Commas::kDecimal ? ParseCommaNumber : ParseNumber;
    // "x,y," is a place with no Z: kept as a blank, NaN.
    if (plain && count == 2 && EndsEmpty(line) && number3(fields[0], values[0]) && number3(fields[1], values[1]) &&
        std::isfinite(values[0]) && std::isfinite(values[1])) {
      points.x.push_back(values[0]);
      points.y.push_back(values[1]);
      points.z.push_back(std::numeric_limits<double>::quiet_NaN());
      ++points.blanks;
      continue;
    }
    const bool enough = plain ? count == 3 : count >= used;
    bool numeric = enough;
    for (std::size_t k = 0; k < 3 && numeric; ++k) numeric = number3(fields[where[k]], values[k]);
    const bool finite = numeric && std::isfinite(values[0]) && std::isfinite(values[1]) && std::isfinite(values[2]);
    if (!finite && options.skipInvalid) {
      ++points.skipped;
      continue;
    }
    if (!enough) {
      if (plain) fail("expected 3 numbers (X, Y, Z), found " + std::to_string(count) + " fields");
      fail("expected at least " + std::to_string(used) + " fields, found " + std::to_string(count));
    }
    if (!numeric) {
      if (commas == Commas::kDecimal && line.find('.') != std::string_view::npos) {
        fail("\"" + Printable(line, kQuotedCharacters) +
             "\" has a decimal point, but the file writes its decimals with commas");
      }
      fail("\"" + Printable(line, kQuotedCharacters) + "\" is not " +
           (plain ? std::string("three numbers") : "numbers in the X, Y and Z columns"));
    }
    if (!finite) fail("values must be finite numbers");
    points.x.push_back(values[0]);
    points.y.push_back(values[1]);
    points.z.push_back(values[2]);
  }
  return points;
}

// Closes a file descriptor when it goes.
class FileDescriptor {
 public:
  explicit FileDescriptor(int fd) : fd_(fd) {}
  ~FileDescriptor() { ::close(fd_); }
  FileDescriptor(const FileDescriptor&) = delete;
  FileDescriptor& operator=(const FileDescriptor&) = delete;

 private:
  int fd_;
};

}  // namespace

XyzPoints ReadXyzText(std::istream& in, const std::string& name) { return ReadXyzText(in, name, XyzReadOptions{}); }

XyzPoints ReadXyzText(std::istream& in, const std::string& name, const XyzReadOptions& options) {
  LineReader reader(in);
  return ReadLines(reader, name, options);
}

XyzPoints ReadXyzFile(const std::string& path) { return ReadXyzFile(path, XyzReadOptions{}); }

XyzPoints ReadXyzFile(const std::string& path, const XyzReadOptions& options) {
  const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) {
    throw Error(5, kSource, Printable(path, std::string::npos) + ": cannot open the file (" +
                                std::strerror(errno) + ")");
  }
  const FileDescriptor closer(fd);
  // A regular file is read in large blocks, with room for its points reserved; a pipe
  // or a device in the blocks of a stream.
  struct stat status {};
  const bool regular = ::fstat(fd, &status) == 0 && S_ISREG(status.st_mode) && status.st_size > 0;
  LineReader reader(fd, regular ? static_cast<std::size_t>(status.st_size) : 0);
  return ReadLines(reader, path, options);
}

std::size_t MergeDuplicatePoints(XyzPoints& points) {
  const std::size_t n = points.x.size();
  if (n >= std::numeric_limits<std::uint32_t>::max()) {
    throw Error(5, kSource, "Too many points to merge: " + std::to_string(n) + ".");
  }
  // Each place (-0 and 0 one place) is looked up in an open-addressing table of the first
  // point there, in file order: a later point at the same place adds its Z to the first's
  // sum, so the sums run in file order. A NaN place is never the same as another.
  std::size_t slots = 16;
  while (slots < 2 * n) slots *= 2;
  std::vector<std::uint32_t> table(slots, 0);  // 1 + the first point's index; 0 empty
  const auto bits = [](double v) {
    std::uint64_t b = 0;
    v += 0.0;  // -0 as 0
    std::memcpy(&b, &v, sizeof b);
    return b;
  };
  std::vector<std::uint32_t> firstOf;  // made at the first duplicate: each point's first
  std::vector<double> sum;
  std::vector<std::uint32_t> count;
  std::size_t merged = 0;
  for (std::size_t i = 0; i < n; ++i) {
    if (std::isnan(points.x[i]) || std::isnan(points.y[i])) continue;
    const std::uint64_t bx = bits(points.x[i]), by = bits(points.y[i]);
    std::uint64_t h = (bx * 0x9E3779B97F4A7C15ULL) ^ (by + 0x632BE59BD9B4E019ULL + (bx << 6) + (bx >> 2));
    h ^= h >> 29;
    h *= 0xBF58476D1CE4E5B9ULL;
    h ^= h >> 32;
    std::size_t slot = static_cast<std::size_t>(h) & (slots - 1);
    while (true) {
      const std::uint32_t held = table[slot];
      if (held == 0) {
        table[slot] = static_cast<std::uint32_t>(i + 1);
        break;
      }
      const std::size_t first = held - 1;
      if (bits(points.x[first]) == bx && bits(points.y[first]) == by) {
        if (firstOf.empty()) {
          firstOf.assign(n, std::numeric_limits<std::uint32_t>::max());
          sum.assign(n, 0.0);
          count.assign(n, 0);
        }
        if (count[first] == 0) {
          sum[first] = points.z[first];
          count[first] = 1;
        }
        sum[first] += points.z[i];
        ++count[first];
        firstOf[i] = static_cast<std::uint32_t>(first);
        ++merged;
        break;
      }
      slot = (slot + 1) & (slots - 1);
    }
  }
  if (merged == 0) return 0;
  std::vector<std::uint32_t>().swap(table);
  XyzPoints out;
  out.skipped = points.skipped;
  out.blanks = points.blanks;
  out.x.reserve(n - merged);
  out.y.reserve(n - merged);
  out.z.reserve(n - merged);
  for (std::size_t i = 0; i < n; ++i) {
    if (firstOf[i] != std::numeric_limits<std::uint32_t>::max()) continue;
    out.x.push_back(points.x[i]);
    out.y.push_back(points.y[i]);
    out.z.push_back(count[i] > 1 ? sum[i] / static_cast<double>(count[i]) : points.z[i]);
  }
  points = std::move(out);
  return merged;
}

}  // namespace orvane
