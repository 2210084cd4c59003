#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <functional>
#include <random>
#include <set>
#include <utility>
#include <vector>

#include "contour/contourer.h"
#include "contour/reference_chain.h"
#include "data/triangulate.h"

namespace orvane {
namespace {

// One triangle, (0, 0), (1, 0), (0, 1), traced at a level; `made` is whether a segment
// is expected.
CContourer::Segment TraceOne(double level, std::array<double, 3> z, bool tiesAbove = false, bool made = true) {
  const double x[3] = {0, 1, 0};
  const double y[3] = {0, 0, 1};
  const double zs[3] = {z[0], z[1], z[2]};
  CContourer::Segment s{};
  EXPECT_EQ(CContourer::Trace(level, x, y, zs, s, tiesAbove), made);
  return s;
}

TEST(CContourer, TriangleCasesFromTheTable) {
  // Two vertices on the level, the third below: the edge between them (case 2).
  EXPECT_EQ(TraceOne(10, {0, 10, 10}).line, (CLine{1, 0, 10, 0, 1, 10}));
  // Heights 0, 10, 20 at level 10: vertex 1 to the middle of side 2-0 (case 5).
  const CContourer::Segment mid = TraceOne(10, {0, 10, 20});
  EXPECT_EQ(mid.line, (CLine{1, 0, 10, 0, 0.5, 10}));
  EXPECT_EQ(mid.position1, 1.0);
  EXPECT_EQ(mid.position2, 2.5);
  // A triangle flat on the level, or touching it at one vertex only, gives nothing. The
  // rest of the table is held to the baseline's on whole fields.
  TraceOne(5, {5, 5, 5}, false, false);
  TraceOne(5, {5, 6, 7}, false, false);
}

// A triangulated mesh of n random points over the unit square with z = f(x, y), traced
// at several levels.
struct Mesh {
  CTriangulate t;
  Mesh(int n, unsigned seed, double (*f)(double, double)) {
    std::mt19937 random(seed);
    std::uniform_real_distribution<double> unit(0, 1);
    std::vector<double> x, y, z;
    for (int i = 0; i < n; ++i) {
      x.push_back(unit(random));
      y.push_back(unit(random));
      z.push_back(f(x.back(), y.back()));
    }
    t.Triangulate(x, y, z);
  }
  ContourTrace Trace(const std::vector<double>& levels, bool withBands = true) const {
    const auto& v = t.TriangleVertices();
    return CContourer::TraceMesh(
        static_cast<std::size_t>(t.TriangleCount()),
        [&](std::size_t tri, double (&x)[3], double (&y)[3], double (&z)[3]) {
          for (std::size_t k = 0; k < 3; ++k) {
            const auto p = static_cast<std::size_t>(v[3 * tri + k]);
            x[k] = t.PointX()[p];
            y[k] = t.PointY()[p];
            z[k] = t.PointZ()[p];
          }
        },
        CContourer::Boundaries(levels), {}, withBands);
  }
};

// An n x n grid over the unit square (one axis serves for both) and z = f(x, y), X outer.
std::pair<std::vector<double>, std::vector<double>> UnitGrid(std::size_t n, double (*f)(double, double)) {
  std::vector<double> g, z;
  for (std::size_t i = 0; i < n; ++i) g.push_back(static_cast<double>(i) / (static_cast<double>(n) - 1.0));
  for (double x : g) {
    for (double y : g) z.push_back(f(x, y));
  }
  return {g, z};
}

void ExpectSameChains(const CLineList& lines) {
  const CLineList fast = lines.Chain();
  const CLineList reference = testing::ReferenceChain(lines);
  EXPECT_EQ(fast.Lines(), reference.Lines());
  EXPECT_EQ(fast.PolylineStarts(), reference.PolylineStarts());
  EXPECT_EQ(fast.Count(), lines.Count());
}

TEST(CLineList, ChainingMatchesTheLiteralRuleOnRandomMeshes) {
  for (unsigned seed : {1u, 2u, 3u}) {
    const Mesh mesh(1500, seed, [](double x, double y) { return std::sin(6 * x) * std::cos(5 * y); });
    const ContourTrace trace = mesh.Trace({-0.6, -0.2, 0.0, 0.3, 0.7});
    for (const CLineList& level : trace.levelLines) {
      ASSERT_GT(level.Count(), 0u);
      ExpectSameChains(level);
    }
  }
}

TEST(CLineList, ChainingMatchesOnGridsWithSharedEdgesAndClosedRings) {
  // A bump on a grid: rings around the top; levels exactly at grid heights emit edges
  // twice (shared by two triangles), which makes points touched by several segments.
  const auto [g, z] = UnitGrid(41, [](double x, double y) {
    return std::round(10 * std::exp(-8 * ((x - 0.5) * (x - 0.5) + (y - 0.5) * (y - 0.5)))) / 10;
  });
  const ContourTrace trace = CContourer::TraceGrid(g, g, z, CContourer::Boundaries(std::vector<double>{0.25, 0.5, 0.8}));
  for (const CLineList& level : trace.levelLines) ExpectSameChains(level);
  const CLineList ring = trace.levelLines[1].Chain();
  ASSERT_FALSE(ring.PolylineStarts().empty());
  const CLine& first = ring.Lines().front();
  const std::size_t end = ring.PolylineStarts().size() > 1 ? static_cast<std::size_t>(ring.PolylineStarts()[1]) : ring.Count();
  const CLine& last = ring.Lines()[end - 1];
  EXPECT_TRUE(Coincide(first.x1, first.y1, first.z1, last.x2, last.y2, last.z2)) << "ring not closed";
}

TEST(CLineList, SegmentsAFractionApartAreNotJoined) {
  CLineList lines;
  lines.Append({0, 0, 1, 1, 0, 1});
  lines.Append({1 + 1e-13, 0, 1, 2, 0, 1});  // 1e-13 beyond the tolerance
  lines.Append({2, 0, 1, 3, 0, 1});
  lines.Append({3, 0, 1 + 1e-9, 4, 0, 1 + 1e-9});  // another level
  const CLineList chained = lines.Chain();
  EXPECT_EQ(chained.PolylineStarts(), (std::vector<std::int32_t>{0, 1, 3}));
  ExpectSameChains(lines);
  // Within the tolerance they join, turned round as needed, at either end.
  CLineList close;
  close.Append({1, 0, 0, 2, 0, 0});
  close.Append({0, 0, 0, 1 + 1e-15, 0, 0});
  close.Append({3, 0, 0, 2, 0, 0});
  const CLineList one = close.Chain();
  EXPECT_EQ(one.PolylineStarts(), std::vector<std::int32_t>{0});
  EXPECT_EQ(one.Lines()[0], (CLine{0, 0, 0, 1 + 1e-15, 0, 0}));
  EXPECT_EQ(one.Lines()[2], (CLine{2, 0, 0, 3, 0, 0}));
  ExpectSameChains(close);
  EXPECT_EQ(CLineList().Chain().Count(), 0u);
}

double Area(const BandTriangles& b) {
  double area = 0;
  for (std::size_t i = 0; i + 8 < b.size(); i += 9) {
    area += 0.5 * std::fabs((b[i + 3] - b[i]) * (b[i + 7] - b[i + 1]) - (b[i + 4] - b[i + 1]) * (b[i + 6] - b[i]));
  }
  return area;
}

TEST(CContourer, BandsOfAPlaneAreItsStrips) {
  // z = x over the unit square: band k is the strip between its two levels.
  const auto [g, z] = UnitGrid(11, [](double x, double) { return x; });
  const std::vector<double> levels{0.25, 0.55, 0.8};
  const ContourTrace trace = CContourer::TraceGrid(g, g, z, CContourer::Boundaries(levels));
  ASSERT_EQ(trace.bands.size(), 4u);
  const std::vector<double> b = CContourer::Boundaries(levels);
  for (std::size_t k = 0; k < 4; ++k) {
    EXPECT_NEAR(Area(trace.bands[k]), (std::vector<double>{0.25, 0.30, 0.25, 0.20})[k], 1e-12);
    const double lo = b[k], hi = k + 1 < b.size() ? b[k + 1] : 2;
    for (std::size_t i = 2; i < trace.bands[k].size(); i += 3) {
      EXPECT_GE(trace.bands[k][i], lo - 1e-14);
      EXPECT_LE(trace.bands[k][i], hi + 1e-14);
    }
  }
  // On one cell, the middle bands hold no vertex at all: only crossings.
  const ContourTrace coarse = CContourer::TraceGrid(std::vector<double>{0, 1}, std::vector<double>{0, 1},
                                                    std::vector<double>{0, 0, 1, 1}, CContourer::Boundaries(levels));
  EXPECT_NEAR(Area(coarse.bands[1]), 0.30, 1e-12);
  EXPECT_NEAR(Area(coarse.bands[2]), 0.25, 1e-12);
  // The line at 0.55 is x = 0.55 across the square, one polyline.
  const CLineList line = trace.levelLines[1].Chain();
  EXPECT_EQ(line.PolylineStarts().size(), 1u);
  for (const CLine& s : line.Lines()) {
    EXPECT_NEAR(s.x1, 0.55, 1e-15);
    EXPECT_EQ(s.z1, 0.55);
  }
}

TEST(CContourer, BandsCoverARandomMeshExactlyOnce) {
  const Mesh mesh(800, 4, [](double x, double y) { return x * x - y; });
  const ContourTrace trace = mesh.Trace({-0.5, -0.1, 0.2, 0.6});
  double meshArea = 0, bandArea = 0;
  const auto& cx = mesh.t.CornerX();
  const auto& cy = mesh.t.CornerY();
  for (std::size_t i = 0; i < cx.size(); i += 3) {
    meshArea += 0.5 * std::fabs((cx[i + 1] - cx[i]) * (cy[i + 2] - cy[i]) - (cy[i + 1] - cy[i]) * (cx[i + 2] - cx[i]));
  }
  for (const BandTriangles& band : trace.bands) bandArea += Area(band);
  EXPECT_NEAR(bandArea, meshArea, 1e-12);
}

// Tracing a mesh without bands must give exactly the lines of a full trace (grids are
// held to the baseline in both modes).
TEST(CContourer, LinesAloneAreTheLinesOfAFullTrace) {
  const Mesh mesh(600, 9, [](double x, double y) { return std::sin(6 * x) * y; });
  const std::vector<double> levels{-0.6, -0.2, 0.0, 0.3, 0.7};
  const ContourTrace full = mesh.Trace(levels), lines = mesh.Trace(levels, false);
  ASSERT_EQ(full.levelLines.size(), lines.levelLines.size());
  for (std::size_t k = 0; k < full.levelLines.size(); ++k) {
    EXPECT_EQ(full.levelLines[k].Lines(), lines.levelLines[k].Lines()) << "level " << k;
  }
  for (const BandTriangles& band : lines.bands) EXPECT_TRUE(band.empty());
}

// Ties above: a height equal to a level counts as above it.

TEST(CContourerTiesAbove, CornersOnTheLevelAreAboveIt) {
  // Two corners on the level, the third below: the edge between them, as crossings.
  EXPECT_EQ(TraceOne(10, {0, 10, 10}, true).line, (CLine{0, 1, 10, 1, 0, 10}));
  // Heights 0, 10, 20 at 10: the middle of side 2-0 to corner 1, itself a crossing.
  const CContourer::Segment mid = TraceOne(10, {0, 10, 20}, true);
  EXPECT_EQ(mid.line, (CLine{0, 0.5, 10, 1, 0, 10}));
  EXPECT_EQ(mid.position1, 2.5);
  EXPECT_EQ(mid.position2, 1.0);
  // One corner on the level, the rest below: a segment of no length at that corner.
  EXPECT_EQ(TraceOne(5, {5, 4, 3}, true).line, (CLine{0, 0, 5, 0, 0, 5}));
  // Flat on the level, or touching it from above: all above, nothing.
  TraceOne(5, {5, 5, 5}, true, false);
  TraceOne(5, {5, 6, 7}, true, false);
  // Two corners on the level and the third above: nothing either.
  TraceOne(10, {20, 10, 10}, true, false);
}

TEST(CContourerTiesAbove, AnEdgeGivesTheSameCrossingToBothItsTriangles) {
  // The crossing is worked out from the edge's lower corner whichever way round a
  // triangle holds the edge, so the two segments meet to the last bit.
  std::mt19937 random(5);
  std::uniform_real_distribution<double> unit(-1, 1);
  for (int i = 0; i < 2000; ++i) {
    const double ax = unit(random), ay = unit(random), bx = unit(random), by = unit(random);
    const double za = unit(random), zb = unit(random), level = unit(random);
    if ((za >= level) == (zb >= level)) continue;
    const double zc = za >= level ? level - 1.0 : level + 1.0;  // both triangles cross a-b and a-c
    const double x1[3] = {ax, bx, 3.0}, y1[3] = {ay, by, 3.0}, z1[3] = {za, zb, zc};
    const double x2[3] = {bx, ax, -3.0}, y2[3] = {by, ay, 2.0}, z2[3] = {zb, za, zc};
    CContourer::Segment s1{}, s2{};
    ASSERT_TRUE(CContourer::Trace(level, x1, y1, z1, s1, true));
    ASSERT_TRUE(CContourer::Trace(level, x2, y2, z2, s2, true));
    // The point on a-b is the first end of one and the second of the other, or the like.
    const bool shared = (s1.line.x1 == s2.line.x1 && s1.line.y1 == s2.line.y1) ||
                        (s1.line.x1 == s2.line.x2 && s1.line.y1 == s2.line.y2) ||
                        (s1.line.x2 == s2.line.x1 && s1.line.y2 == s2.line.y1) ||
                        (s1.line.x2 == s2.line.x2 && s1.line.y2 == s2.line.y2);
    EXPECT_TRUE(shared) << i;
  }
}

// A grid of whole-number heights traced with ties above at whole-number levels, its
// segments after dropping doubles, and its chained lines.
struct TiedGrid {
  std::vector<double> x, y, z;
  ContourTrace trace;
  std::vector<CLineList> chained;

  TiedGrid(std::size_t nx, std::size_t ny, const std::function<double(std::size_t, std::size_t)>& height,
           const std::vector<double>& levels) {
    for (std::size_t i = 0; i < nx; ++i) x.push_back(static_cast<double>(i) / static_cast<double>(nx - 1));
    for (std::size_t j = 0; j < ny; ++j) y.push_back(static_cast<double>(j) / static_cast<double>(ny - 1));
    for (std::size_t i = 0; i < nx; ++i) {
      for (std::size_t j = 0; j < ny; ++j) z.push_back(height(i, j));
    }
    trace = CContourer::TraceGrid(x, y, z, CContourer::Boundaries(levels), {}, true, true);
    for (CLineList& level : trace.levelLines) {
      level.DropDoubled();
      chained.push_back(level.Chain());
    }
  }
};

TEST(CContourerTiesAbove, APlateauOnTheLevelIsRingedOnceAndItsRidgeAndPeakGiveNothing) {
  // 9 x 7 cells of 0 with a plateau of 1 over i, j in 1..3, a ridge of 1 along j = 5
  // (i = 2..6) and a lone peak of 1 at (7, 2).
  const TiedGrid g(9, 7, [](std::size_t i, std::size_t j) {
    const bool plateau = i >= 1 && i <= 3 && j >= 1 && j <= 3;
    const bool ridge = j == 5 && i >= 2 && i <= 6;
    return plateau || ridge || (i == 7 && j == 2) ? 1.0 : 0.0;
  }, {1.0});
  // The plateau's edge, once round: two cells a side, one closed polyline.
  const CLineList& ring = g.chained[0];
  ASSERT_EQ(ring.PolylineStarts().size(), 1u);
  EXPECT_EQ(ring.Lines().front().x1, ring.Lines().back().x2);
  EXPECT_EQ(ring.Lines().front().y1, ring.Lines().back().y2);
  double length = 0;
  for (const CLine& l : ring.Lines()) {
    EXPECT_FALSE(l.x1 == l.x2 && l.y1 == l.y2);
    length += std::hypot(l.x2 - l.x1, l.y2 - l.y1);
  }
  EXPECT_NEAR(length, 2 * (2.0 / 8) + 2 * (2.0 / 6), 1e-14);

  // The exact signs trace the ridge from both sides and the plateau's edge too.
  const ContourTrace exact = CContourer::TraceGrid(g.x, g.y, g.z, CContourer::Boundaries(std::vector<double>{1.0}), {}, false, false);
  EXPECT_GT(exact.levelLines[0].Chain().PolylineStarts().size(), 1u);
}

TEST(CContourerTiesAbove, NoSegmentTwiceNoneOfNoLengthAndEveryLineClosesOrEndsOnTheBorder) {
  // Whole-number heights on a grid, levels at whole numbers, as surveyed terrain comes.
  const std::vector<double> levels{-6, -4, -2, 0, 1, 2, 4, 6};
  const TiedGrid g(41, 29, [](std::size_t i, std::size_t j) {
    return std::round(7 * std::sin(0.23 * static_cast<double>(i)) * std::cos(0.31 * static_cast<double>(j)));
  }, levels);
  for (std::size_t k = 0; k < levels.size(); ++k) {
    const CLineList& lines = g.chained[k];
    ASSERT_GT(lines.Count(), 0u) << k;
    std::set<std::array<double, 4>> seen;
    for (const CLine& l : lines.Lines()) {
      EXPECT_FALSE(l.x1 == l.x2 && l.y1 == l.y2) << "level " << levels[k];
      const bool swap = std::pair{l.x2, l.y2} < std::pair{l.x1, l.y1};
      const std::array<double, 4> key = swap ? std::array{l.x2, l.y2, l.x1, l.y1} : std::array{l.x1, l.y1, l.x2, l.y2};
      EXPECT_TRUE(seen.insert(key).second) << "level " << levels[k] << " twice";
    }
    const auto& starts = lines.PolylineStarts();
    for (std::size_t p = 0; p < starts.size(); ++p) {
      const CLine& first = lines.Item(static_cast<std::size_t>(starts[p]));
      const CLine& last = lines.Item(p + 1 < starts.size() ? static_cast<std::size_t>(starts[p + 1]) - 1 : lines.Count() - 1);
      const bool closed = first.x1 == last.x2 && first.y1 == last.y2;
      const auto onBorder = [](double px, double py) { return px == 0 || px == 1 || py == 0 || py == 1; };
      EXPECT_TRUE(closed || (onBorder(first.x1, first.y1) && onBorder(last.x2, last.y2)))
          << "level " << levels[k] << " polyline " << p << " stops inside the grid";
    }
  }
  // The bands still cover the grid once: band k holds heights from level k - 1 up to,
  // not including, level k.
  double area = 0;
  for (std::size_t k = 0; k < g.trace.bands.size(); ++k) {
    area += Area(g.trace.bands[k]);
    const double lo = k == 0 ? -1e300 : levels[k - 1], hi = k < levels.size() ? levels[k] : 1e300;
    for (std::size_t i = 2; i < g.trace.bands[k].size(); i += 3) {
      EXPECT_GE(g.trace.bands[k][i], lo);
      EXPECT_LE(g.trace.bands[k][i], hi);
    }
  }
  EXPECT_NEAR(area, 1.0, 1e-12);
}

TEST(CLineList, DropDoubledTakesBothCopiesOfAPairAndKeepsTheOrderOfTheRest) {
  CLineList lines;
  lines.Append(CLine{0, 0, 1, 1, 0, 1});
  lines.Append(CLine{5, 5, 1, 6, 5, 1});
  lines.Append(CLine{1, 0, 1, 0, 0, 1});  // the first, the other way round
  lines.Append(CLine{6, 5, 1, 7, 5, 1});
  lines.DropDoubled();
  EXPECT_EQ(lines.Lines(), (std::vector<CLine>{{5, 5, 1, 6, 5, 1}, {6, 5, 1, 7, 5, 1}}));
}

}  // namespace
}  // namespace orvane
