#pragma once

// The triangulation procedure exactly as first described, kept as the oracle for the
// fast one: every point in input order tests every live triangle of a fixed table of
// 4n slots, deleted triangles give their edges to a buffer, edges found twice are
// dropped, and the rest are joined to the point.

#include <array>
#include <cstdint>
#include <set>
#include <span>
#include <vector>

namespace orvane::testing {

struct ReferenceMesh {
  std::set<std::array<std::int32_t, 3>> triangles;  // sorted point numbers of kept triangles
  std::vector<std::int32_t> hull;                    // as CTriangulate chains it
};

ReferenceMesh ReferenceTriangulate(std::span<const double> x, std::span<const double> y);

// The kept triangles of a CTriangulate-like vertex list as a set of sorted triples.
std::set<std::array<std::int32_t, 3>> TriangleSet(const std::vector<std::int32_t>& vertices);

}  // namespace orvane::testing
