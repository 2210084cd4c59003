#pragma once

// The meuse zinc data, and what tests/data/gstat_meuse.R prints for them: gstat's own
// figures, for the tests that hold their stored copies to them.

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>
#include <vector>

// Skips the test when R or gstat is absent; else out holds the script's output.
#define ORVANE_GSTAT_MEUSE_OUTPUT(out)                                                                          \
  if (std::system("Rscript -e 'library(gstat)' > /dev/null 2>&1") != 0) GTEST_SKIP() << "no R with gstat";     \
  const std::string out = ::orvane::testing::RunGstatMeuse();                                                   \
  ASSERT_FALSE(out.empty())

namespace orvane::testing {

struct Points {
  std::vector<double> x, y, z;
};

// meuse.csv's 155 points: x, y and zinc.
inline Points Meuse() {
  Points p;
  std::ifstream in(std::string(ORVANE_SHARED_DATA) + "/meuse.csv");
  std::string line;
  std::getline(in, line);  // x,y,zinc
  for (double x = 0, y = 0, z = 0; std::getline(in, line);) {
    if (std::sscanf(line.c_str(), "%lf,%lf,%lf", &x, &y, &z) != 3) continue;
    p.x.push_back(x);
    p.y.push_back(y);
    p.z.push_back(z);
  }
  return p;
}

inline std::string RunGstatMeuse() {
  const std::string command =
      std::string("Rscript ") + ORVANE_GSTAT_SCRIPT + " " + ORVANE_SHARED_DATA + "/meuse.csv";
  FILE* pipe = popen(command.c_str(), "r");
  if (pipe == nullptr) return {};
  std::string out;
  char buffer[4096];
  for (std::size_t n = 0; (n = std::fread(buffer, 1, sizeof buffer, pipe)) > 0;) out.append(buffer, n);
  return pclose(pipe) == 0 ? out : std::string();
}

}  // namespace orvane::testing
