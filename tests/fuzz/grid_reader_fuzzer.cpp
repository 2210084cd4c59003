// The data-file readers on any bytes: a DSAA grid (".grd"), an ESRI ASCII grid (".asc")
// or XYZ text that may fill a lattice (".xyz"), chosen by how the bytes begin, as a user's
// file would be named. What is read then goes into a data set.

#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <string>
#include <string_view>

#include "fuzz_support.h"
#include "orvane/data/data_file.h"
#include "orvane/data/data_set.h"

using orvane::fuzz::Accepted;
using orvane::fuzz::Check;
using orvane::fuzz::Fail;

namespace {

std::string ExtensionFor(std::string_view bytes) {
  std::string start(bytes.substr(0, 5));
  std::transform(start.begin(), start.end(), start.begin(), [](char c) {
    return static_cast<char>(c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c);
  });
  if (start.starts_with("dsaa")) return ".grd";
  if (start.starts_with("ncols") || start.starts_with("nrows")) return ".asc";
  return ".xyz";
}

bool Ascending(const std::vector<double>& v) {
  return std::is_sorted(v.begin(), v.end()) && std::adjacent_find(v.begin(), v.end()) == v.end();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  const char* folder = std::getenv("TMPDIR");
  const std::string path = std::string(folder != nullptr ? folder : "/tmp") + "/orvane-fuzz-" +
                           std::to_string(getpid()) + ExtensionFor(bytes);
  {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    if (!out) Fail("cannot write " + path);
  }

  orvane::DataFile file;
  const bool read = Accepted([&] { file = orvane::ReadDataFile(path); });
  std::remove(path.c_str());
  if (!read) return 0;

  if (file.isGrid) {
    const auto& g = file.grid;
    Check(!g.x.empty() && !g.y.empty(), "a grid without nodes was accepted");
    Check(g.z.size() == g.x.size() * g.y.size(), "a grid's Z does not fill its nodes");
    Check(Ascending(g.x) && Ascending(g.y), "a grid's nodes are not strictly ascending");
    for (double v : g.x) Check(std::isfinite(v), "a grid column is not finite");
    for (double v : g.y) Check(std::isfinite(v), "a grid row is not finite");
  } else {
    const auto& p = file.points;
    Check(!p.x.empty(), "a file without points was accepted");
    Check(p.x.size() == p.y.size() && p.y.size() == p.z.size(), "X, Y and Z differ in length");
  }
  orvane::DataSet set;
  Accepted([&] { orvane::ShowDataFile(file, set); });
  return 0;
}
