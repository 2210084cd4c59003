#pragma once

// Inputs shared by the benchmarks.

#include <cstdint>
#include <random>
#include <vector>

namespace orvane::bench {

struct Points {
  std::vector<double> x, y, z;
};

// n points with X, Y and Z uniform on [0, 1), drawn in that order from a fixed seed.
inline Points RandomPoints(std::size_t n, std::uint64_t seed) {
  std::mt19937_64 random(seed);
  std::uniform_real_distribution<double> unit(0.0, 1.0);
  Points p{std::vector<double>(n), std::vector<double>(n), std::vector<double>(n)};
  for (std::size_t i = 0; i < n; ++i) {
    p.x[i] = unit(random);
    p.y[i] = unit(random);
    p.z[i] = unit(random);
  }
  return p;
}

// count values i / (count - 1) across [0, 1].
inline std::vector<double> UnitAxis(std::size_t count) {
  std::vector<double> axis(count);
  for (std::size_t i = 0; i < count; ++i) axis[i] = static_cast<double>(i) / static_cast<double>(count - 1);
  return axis;
}

}  // namespace orvane::bench
