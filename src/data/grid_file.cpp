// Golden Software ASCII grids. The header is five lines; the values follow as whitespace-
// separated numbers, row after row. The reader takes one token at a time from a bounded
// buffer, so a malformed file never makes it hold more than the grid it announced.

#include "orvane/data/grid_file.h"

#include <cctype>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstring>
#include <fstream>
#include <streambuf>
#include <string>
#include <string_view>

#include "orvane/core/error.h"

namespace orvane {

namespace {

constexpr const char* kSource = "GridFile";
constexpr long kMostNodes = 10001;           // per side, as the resampler makes at most
constexpr double kBlank = 1.70141e38;        // Golden Software's blank value
constexpr std::size_t kLongestToken = 4096;  // no number is longer

class Tokens {
 public:
  Tokens(std::istream& in, const std::string& name) : buffer_(in.rdbuf()), name_(name) {}

  // The next token, or false at the end of the input.
  bool Next(std::string& token) {
    token.clear();
    if (buffer_ == nullptr) {
      tokenLine_ = line_;
      return false;
    }
    constexpr int kEnd = std::char_traits<char>::eof();
    int c = buffer_->sbumpc();
    while (c != kEnd && std::isspace(c)) {
      if (c == '\n') ++line_;
      c = buffer_->sbumpc();
    }
    tokenLine_ = line_;
    if (c == kEnd) return false;
    while (c != kEnd && !std::isspace(c)) {
      if (token.size() == kLongestToken) Fail("a value is longer than " + std::to_string(kLongestToken) + " characters");
      token.push_back(static_cast<char>(c));
      c = buffer_->sbumpc();
    }
    if (c == '\n') ++line_;
    return true;
  }
  double Number(const char* what) {
    std::string token;
    if (!Next(token)) Fail(std::string("the file ends before ") + what);
    double value = 0;
    std::string_view text = token;
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
  std::streambuf* buffer_;
  const std::string& name_;
  long line_ = 1;       // the line being read
  long tokenLine_ = 1;  // the line of the last token
};

}  // namespace

GridFile ReadDsaaText(std::istream& in, const std::string& name) {
  Tokens tokens(in, name);
  std::string tag;
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
      if (std::fabs(v) >= kBlank) tokens.Fail("the grid has blank cells, which cannot be drawn");
      grid.z[i * rows + j] = v;
    }
  }
  std::string extra;
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
