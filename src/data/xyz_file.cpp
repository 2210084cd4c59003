#include "orvane/data/xyz_file.h"

#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstring>
#include <fstream>
#include <string_view>

#include "orvane/core/error.h"

namespace orvane {

namespace {

constexpr const char* kSource = "XyzFile";

bool IsSeparator(char c) { return c == ',' || c == ' ' || c == '\t'; }

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

bool ParseNumber(std::string_view text, double& value) {
  if (!text.empty() && text.front() == '+') text.remove_prefix(1);
  const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
  return result.ec == std::errc() && result.ptr == text.data() + text.size();
}

}  // namespace

XyzPoints ReadXyzText(std::istream& in, const std::string& name) {
  XyzPoints points;
  std::string line;
  long number = 0;
  bool firstContent = true;
  auto fail = [&](const std::string& what) {
    throw Error(5, kSource, name + ":" + std::to_string(number) + ": " + what);
  };
  while (std::getline(in, line)) {
    ++number;
    if (!line.empty() && line.back() == '\r') line.pop_back();
    const std::vector<std::string_view> fields = Fields(line);
    if (fields.empty() || fields.front().front() == '#') continue;
    double values[3] = {0, 0, 0};
    bool numeric = fields.size() == 3;
    for (std::size_t k = 0; k < fields.size() && k < 3 && numeric; ++k) {
      numeric = ParseNumber(fields[k], values[k]);
    }
    const bool header = firstContent && !ParseNumber(fields.front(), values[0]);
    firstContent = false;
    if (header) continue;
    if (fields.size() != 3) {
      fail("expected 3 numbers (X, Y, Z), found " + std::to_string(fields.size()) + " fields");
    }
    if (!numeric) fail("\"" + line + "\" is not three numbers");
    for (double v : values) {
      if (!std::isfinite(v)) fail("values must be finite numbers");
    }
    points.x.push_back(values[0]);
    points.y.push_back(values[1]);
    points.z.push_back(values[2]);
  }
  if (in.bad()) throw Error(5, kSource, name + ": the file could not be read");
  return points;
}

XyzPoints ReadXyzFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  if (!in) {
    throw Error(5, kSource, path + ": cannot open the file (" + std::strerror(errno) + ")");
  }
  return ReadXyzText(in, path);
}

}  // namespace orvane
