#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <set>
#include <vector>

#include "contour/band_outline.h"
#include "contour/contourer.h"

namespace orvane {
namespace {

// Triangles as a band holds them (z is irrelevant to the outline).
struct Band {
  BandTriangles t;
  void Add(double ax, double ay, double bx, double by, double cx, double cy) {
    t.insert(t.end(), {ax, ay, 0, bx, by, 0, cx, cy, 0});
  }
  // The unit square [x, x + s] x [y, y + s] as two counter-clockwise triangles.
  void Square(double x, double y, double s = 1) {
    Add(x, y, x + s, y, x + s, y + s);
    Add(x, y, x + s, y + s, x, y + s);
  }
};

double TriangleArea(const BandTriangles& t) {
  double sum = 0;
  for (std::size_t i = 0; i + 8 < t.size(); i += 9) {
    sum += (t[i + 3] - t[i]) * (t[i + 7] - t[i + 1]) - (t[i + 4] - t[i + 1]) * (t[i + 6] - t[i]);
  }
  return sum / 2;
}

// Crossing-number test of a point against ring r.
bool InsideRing(const BandOutline& o, std::size_t r, double px, double py) {
  bool inside = false;
  const std::size_t a = o.ringStarts[r], b = o.ringStarts[r + 1];
  for (std::size_t i = a, j = b - 1; i < b; j = i++) {
    if ((o.y[i] > py) != (o.y[j] > py) &&
        px < (o.x[j] - o.x[i]) * (py - o.y[i]) / (o.y[j] - o.y[i]) + o.x[i]) {
      inside = !inside;
    }
  }
  return inside;
}

// Every ring simple in its vertices, outer rings counter-clockwise, holes clockwise
// and inside their outer ring, and the area that of the triangles.
void ExpectWellFormed(const BandOutline& o, const BandTriangles& t) {
  for (std::size_t p = 0; p < o.PolygonCount(); ++p) {
    for (std::size_t r = o.polygonStarts[p]; r < o.polygonStarts[p + 1]; ++r) {
      const bool outer = r == o.polygonStarts[p];
      EXPECT_EQ(o.TwiceSignedArea(r) > 0, outer) << "ring " << r;
      std::set<std::pair<double, double>> seen;
      for (std::size_t i = o.ringStarts[r]; i < o.ringStarts[r + 1]; ++i) {
        EXPECT_TRUE(seen.insert({o.x[i], o.y[i]}).second) << "ring " << r << " passes a vertex twice";
      }
      if (!outer) {
        const std::size_t i = o.ringStarts[r];
        const double mx = (o.x[i] + o.x[i + 1]) / 2, my = (o.y[i] + o.y[i + 1]) / 2;
        EXPECT_TRUE(InsideRing(o, o.polygonStarts[p], mx, my)) << "hole " << r;
      }
    }
  }
  double area = 0;
  for (std::size_t r = 0; r < o.RingCount(); ++r) area += o.TwiceSignedArea(r) / 2;
  const double expected = TriangleArea(t);
  EXPECT_NEAR(area, expected, 1e-12 * std::fabs(expected));
}

TEST(BandOutline, SharedEdgesCancelIntoOneCounterClockwiseRing) {
  Band b;
  b.Square(0, 0);
  b.Square(1, 0);
  const BandOutline o = OutlineBand(b.t);
  ASSERT_EQ(o.PolygonCount(), 1u);
  ASSERT_EQ(o.RingCount(), 1u);
  EXPECT_EQ(o.ringStarts[1], 6u);  // the middle edge's ends stay as vertices
  EXPECT_DOUBLE_EQ(o.TwiceSignedArea(0), 4.0);
  ExpectWellFormed(o, b.t);
  // Corners that differ by rounding noise are one vertex.
  Band noisy;
  noisy.Add(0, 0, 1, 0, 1, 1);
  noisy.Add(1e-16, 0, 1, 1 + 2e-16, 0, 1);
  const BandOutline n = OutlineBand(noisy.t);
  ASSERT_EQ(n.RingCount(), 1u);
  EXPECT_EQ(n.ringStarts[1], 4u);
  EXPECT_TRUE(OutlineBand({}).RingCount() == 0);
}

TEST(BandOutline, HolesRunClockwiseInsideTheirOuterRing) {
  Band frame;  // a 3 x 3 block of unit squares less the middle one
  for (int k = 0; k < 9; ++k) {
    if (k != 4) frame.Square(k % 3, k / 3);
  }
  const BandOutline o = OutlineBand(frame.t);
  ASSERT_EQ(o.PolygonCount(), 1u);
  ASSERT_EQ(o.RingCount(), 2u);
  EXPECT_DOUBLE_EQ(o.TwiceSignedArea(0), 18.0);
  EXPECT_DOUBLE_EQ(o.TwiceSignedArea(1), -2.0);
  ExpectWellFormed(o, frame.t);

  // An island in the hole is a polygon of its own.
  Band island = frame;
  island.Square(1.25, 1.25, 0.5);
  const BandOutline i = OutlineBand(island.t);
  ASSERT_EQ(i.PolygonCount(), 2u);
  EXPECT_EQ(i.RingCount(), 3u);
  ExpectWellFormed(i, island.t);
}

TEST(BandOutline, RingsThatTouchAtAPointAreSplitThere) {
  // Two squares meeting at one corner: two polygons, not a figure of eight.
  Band corner;
  corner.Square(0, 0);
  corner.Square(1, 1);
  const BandOutline c = OutlineBand(corner.t);
  EXPECT_EQ(c.PolygonCount(), 2u);
  ExpectWellFormed(c, corner.t);
  // The square [0, 2] x [0, 2] less the triangle (1, 0), (1.5, 0.5), (0.5, 0.5): a hole
  // touching the outer ring at (1, 0). It is a hole of its own, not a pinch in the outer ring.
  Band pit;
  pit.Add(0, 0, 1, 0, 0.5, 0.5);
  pit.Add(1, 0, 2, 0, 1.5, 0.5);
  pit.Add(2, 0, 2, 2, 1.5, 0.5);
  pit.Add(1.5, 0.5, 2, 2, 0.5, 0.5);
  pit.Add(0.5, 0.5, 2, 2, 0, 2);
  pit.Add(0, 0, 0.5, 0.5, 0, 2);
  const BandOutline h = OutlineBand(pit.t);
  ASSERT_EQ(h.PolygonCount(), 1u);
  EXPECT_EQ(h.RingCount(), 2u);
  ExpectWellFormed(h, pit.t);
}

TEST(BandOutline, TracedBandsKeepTheirAreaAndShape) {
  // A noisy surface over a grid: many bands with islands and holes.
  std::mt19937 random(11);
  std::uniform_real_distribution<double> unit(0, 1);
  const std::size_t n = 60;
  std::vector<double> x(n), y(n), z(n * n);
  for (std::size_t i = 0; i < n; ++i) x[i] = y[i] = static_cast<double>(i) / (n - 1);
  for (std::size_t i = 0; i < n; ++i) {
    for (std::size_t j = 0; j < n; ++j) {
      z[i * n + j] = std::sin(7 * x[i]) * std::cos(5 * y[j]) + 0.3 * unit(random);
    }
  }
  // Levels on grid values too, so that vertices lie exactly on boundaries.
  std::vector<double> levels{-0.8, -0.4, z[5 * n + 7], 0.0, 0.4, 0.8};
  std::sort(levels.begin(), levels.end());
  const ContourTrace trace = CContourer::TraceGrid(x, y, z, CContourer::Boundaries(levels));
  std::size_t holes = 0;
  for (const BandTriangles& band : trace.bands) {
    const BandOutline o = OutlineBand(band);
    ExpectWellFormed(o, band);
    holes += o.RingCount() - o.PolygonCount();
  }
  EXPECT_GT(holes, 5u);  // the data do make holes
}

}  // namespace
}  // namespace orvane
