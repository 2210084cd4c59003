// Golden Software ASCII grids. The header is five lines; the values follow as whitespace-
// separated numbers, row after row. The reader takes one token at a time from a bounded
// block of the file, so a malformed file never makes it hold more than the grid it
// announced.

#include "orvane/data/grid_file.h"

#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstring>
#include <fstream>
#include <limits>
#include <streambuf>
#include <string>
#include <string_view>
#include <vector>

#include "orvane/core/error.h"

namespace orvane {

namespace {

constexpr const char* kSource = "GridFile";
constexpr long kMostNodes = 10001;           // per side, as the resampler makes at most
constexpr double kBlank = kDsaaBlank;  // Golden Software's blank value
constexpr std::size_t kLongestToken = 4096;  // no number is longer

class Tokens {
 public:
  Tokens(std::istream& in, const std::string& name) : buffer_(in.rdbuf()), name_(name), block_(kBlock) {}

  // The next token, or false at the end of the input. The token stays valid until the
  // next call: it points into the block being read, or into a copy when it straddles two.
  bool Next(std::string_view& token) {
    for (;;) {
      if (pos_ == end_ && !Fill()) {
        tokenLine_ = line_;
        return false;
      }
      const char c = block_[pos_];
      if (!IsSpace(c)) break;
      if (c == '\n') ++line_;
      ++pos_;
    }
    tokenLine_ = line_;
    const std::size_t start = pos_;
    while (pos_ < end_ && !IsSpace(block_[pos_])) ++pos_;
    if (pos_ - start > kLongestToken) TooLong();
    if (pos_ < end_) {
      token = std::string_view(block_.data() + start, pos_ - start);
      return true;
    }
    carry_.assign(block_.data() + start, pos_ - start);
    while (Fill()) {
      const std::size_t from = pos_;
      while (pos_ < end_ && !IsSpace(block_[pos_])) ++pos_;
      carry_.append(block_.data() + from, pos_ - from);
      if (carry_.size() > kLongestToken) TooLong();
      if (pos_ < end_) break;
    }
    token = carry_;
    return true;
  }
  double Number(const char* what) {
    std::string_view text;
    if (!Next(text)) Fail(std::string("the file ends before ") + what);
    double value = 0;
    if (!text.empty() && text.front() == '+') text.remove_prefix(1);
    const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
    if (result.ec != std::errc() || result.ptr != text.data() + text.size()) {
      Fail(std::string(what) + " is not a number");
    }
    return value;
  }
  [[noreturn]] void Fail(const std::string& what) const {
    throw Error(5, kSource, name_ + ":" + std::to_string(tokenLine_) + ": " + what);
  }

 private:
  static constexpr std::size_t kBlock = 64 * 1024;

  // White space as the C locale has it.
  static bool IsSpace(char c) noexcept { return c == ' ' || (c >= '\t' && c <= '\r'); }
  bool Fill() {
    pos_ = end_ = 0;
    if (buffer_ == nullptr) return false;
    const std::streamsize got = buffer_->sgetn(block_.data(), static_cast<std::streamsize>(block_.size()));
    end_ = got > 0 ? static_cast<std::size_t>(got) : 0;
    return end_ > 0;
  }
  [[noreturn]] void TooLong() const {
    Fail("a value is longer than " + std::to_string(kLongestToken) + " characters");
  }

  std::streambuf* buffer_;
  const std::string& name_;
  std::vector<char> block_;
  std::size_t pos_ = 0, end_ = 0;  // the unread part of the block
  std::string carry_;              // a token that straddles two blocks
  long line_ = 1;                  // the line being read
  long tokenLine_ = 1;             // the line of the last token
};

}  // namespace

GridFile ReadDsaaText(std::istream& in, const std::string& name) {
  Tokens tokens(in, name);
  std::string_view tag;
  if (!tokens.Next(tag) || tag != "DSAA") tokens.Fail("not a DSAA grid (the first word must be DSAA)");
  const double nx = tokens.Number("the column count");
  const double ny = tokens.Number("the row count");
  for (double n : {nx, ny}) {
    if (!(n >= 2 && n <= kMostNodes) || n != std::floor(n)) {
      tokens.Fail("the grid must have 2 to " + std::to_string(kMostNodes) + " columns and rows");
    }
  }
  double range[6];
  const char* names[6] = {"the X minimum", "the X maximum", "the Y minimum", "the Y maximum", "the Z minimum", "the Z maximum"};
  for (int k = 0; k < 6; ++k) {
    range[k] = tokens.Number(names[k]);
    if (!std::isfinite(range[k])) tokens.Fail(std::string(names[k]) + " must be a finite number");
  }
  if (!(range[0] < range[1])) tokens.Fail("the X minimum must lie below the X maximum");
  if (!(range[2] < range[3])) tokens.Fail("the Y minimum must lie below the Y maximum");

  GridFile grid;
  const auto cols = static_cast<std::size_t>(nx), rows = static_cast<std::size_t>(ny);
  grid.x.resize(cols);
  grid.y.resize(rows);
  for (std::size_t i = 0; i < cols; ++i) {
    grid.x[i] = range[0] + (range[1] - range[0]) * static_cast<double>(i) / static_cast<double>(cols - 1);
  }
  for (std::size_t j = 0; j < rows; ++j) {
    grid.y[j] = range[2] + (range[3] - range[2]) * static_cast<double>(j) / static_cast<double>(rows - 1);
  }
  grid.x.back() = range[1];
  grid.y.back() = range[3];
  grid.z.resize(cols * rows);
  for (std::size_t j = 0; j < rows; ++j) {
    for (std::size_t i = 0; i < cols; ++i) {
      const double v = tokens.Number("a grid value");
      if (!std::isfinite(v)) tokens.Fail("grid values must be finite numbers");
      grid.z[i * rows + j] = std::fabs(v) >= kBlank ? std::numeric_limits<double>::quiet_NaN() : v;
    }
  }
  std::string_view extra;
  if (tokens.Next(extra)) tokens.Fail("more values than the grid's " + std::to_string(cols * rows));
  if (in.bad()) throw Error(5, kSource, name + ": the file could not be read");
  return grid;
}

GridFile ReadDsaaFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  if (!in) throw Error(5, kSource, path + ": cannot open the file (" + std::strerror(errno) + ")");
  return ReadDsaaText(in, path);
}

}  // namespace orvane
