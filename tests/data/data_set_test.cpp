#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <tuple>
#include <vector>

#include "data/data_set_state.h"
#include "data/geometry.h"
#include "orvane/core/property_bag.h"
#include "orvane/data/data_sets.h"
#include "support/expect_error.h"

namespace orvane {
namespace {

using detail::DataSetAccess;

const char* const kUpper =
    "Upper bounds of input data arrays must be consistent with data element counts";
const char* const kLower = "Lower bounds of input data arrays must be 0";
const char* const kRange = "Data range exceeds maximum limit";

// A collection whose DataChanged indices are recorded.
struct Watched {
  DataSets sets;
  std::vector<std::int32_t> changes;
  Connection c = sets.DataChanged.Connect([this](std::int32_t i) { changes.push_back(i); });
  DataSet& First() { return sets.Item(0); }
};

struct Scatter {
  std::vector<double> x, y, z;
};

// Area covered by the filled triangles of the bands (normalised units).
double BandArea(const std::vector<BandTriangles>& bands) {
  double area = 0;
  for (const BandTriangles& b : bands) {
    for (std::size_t i = 0; i + 8 < b.size(); i += 9) {
      area += 0.5 * std::fabs((b[i + 3] - b[i]) * (b[i + 7] - b[i + 1]) -
                              (b[i + 4] - b[i + 1]) * (b[i + 6] - b[i]));
    }
  }
  return area;
}

// Random points over [100, 300] x [-5, 5] with z = 2x - 3y + 7.
Scatter Plane(int n) {
  Scatter s;
  std::mt19937 random(17);
  std::uniform_real_distribution<double> ux(100, 300), uy(-5, 5);
  for (int i = 0; i < n; ++i) {
    s.x.push_back(ux(random));
    s.y.push_back(uy(random));
    s.z.push_back(2 * s.x.back() - 3 * s.y.back() + 7);
  }
  return s;
}

TEST(DataSet, SparseDataSetsLimitsHullMeshAndInterpolation) {
  Watched w;
  DataSet& d = w.First();
  const Scatter p = Plane(400);
  d.DataAsSparseGridSet(400, p.x, p.y, p.z);
  EXPECT_EQ(w.changes, (std::vector<std::int32_t>{0, 0}));  // the reset, then the data
  EXPECT_EQ(d.XMin(), *std::min_element(p.x.begin(), p.x.end()));
  EXPECT_EQ(d.YMax(), *std::max_element(p.y.begin(), p.y.end()));
  EXPECT_EQ(d.ZMin(), *std::min_element(p.z.begin(), p.z.end()));
  const auto& s = DataSetAccess::State(d);
  EXPECT_EQ(s.dataType, detail::kSparse);
  EXPECT_EQ(s.pointCount, 400);
  ASSERT_TRUE(s.triangulation);
  EXPECT_GT(s.triangulation->TriangleCount(), 700);
  // The hull comes back in data units, on input points, counter-clockwise.
  std::int32_t count = 0;
  Array hx, hy;
  d.DataHullGet(count, hx, hy);
  ASSERT_GE(count, 3);
  double area = 0;
  for (std::int32_t k = 0; k < count; ++k) {
    const std::int32_t m = (k + 1) % count;
    area += hx.At(k) * hy.At(m) - hx.At(m) * hy.At(k);
    EXPECT_NE(std::find(p.x.begin(), p.x.end(), hx.At(k)), p.x.end());
  }
  EXPECT_GT(area, 0.0);
  double z = 0;
  ASSERT_TRUE(d.ZValueInterpolate(200, 0.5, z));  // rebuilds the mesh first
  EXPECT_NEAR(z, 2 * 200 - 3 * 0.5 + 7, 1e-9);
  ASSERT_TRUE(d.ZValueInterpolate(p.x[3], p.y[3], z));
  EXPECT_NEAR(z, p.z[3], 1e-9);
  z = -1;
  EXPECT_FALSE(d.ZValueInterpolate(d.XMax() + 1e-9, 0, z));  // beyond the limits
  EXPECT_FALSE(d.ZValueInterpolate(200, d.YMin() - 1e-9, z));
  EXPECT_FALSE(d.ZValueInterpolate(d.XMin(), d.YMin(), z));  // a corner outside the hull
  EXPECT_EQ(z, -1);
}

TEST(DataSet, SetterErrorsComeAfterTheResetAndLeaveTheSetCleared) {
  Watched w;
  DataSet& d = w.First();
  const std::vector<double> hx{0, 1, 0}, hy{0, 0, 1};
  d.UserHullSet(3, hx, hy);
  const Scatter p = Plane(10);
  d.DataAsSparseGridSet(10, p.x, p.y, p.z);
  w.changes.clear();

  const std::vector<double> four{1, 2, 3, 4};
  const struct {
    std::int32_t count;
    Array x, y, z;
    const char* message;
  } refused[] = {{5, four, four, four, kUpper},
                 {4, Array(1, four), four, four, kLower},
                 {4, four, four, {1, 2, NAN, 4}, "The Z values contain NaN (not a number)."},
                 {4, four, {1, 2, 1e300, 4}, four, kRange},
                 {4, {1, 2, -1e300, 4}, four, four, kRange},
                 {4, four, four, {1, INFINITY, 3, 4}, kRange},
                 {-1, four, four, four, "Count must not be negative, not -1."}};
  for (std::size_t k = 0; k < std::size(refused); ++k) {
    const auto& c = refused[k];
    EXPECT_ORVANE_ERROR(d.DataAsSparseGridSet(c.count, c.x, c.y, c.z), 5, "Orvadis.Dataset", c.message) << k;
    EXPECT_EQ(w.changes.size(), k + 1);  // only the reset's
  }
  const auto& s = DataSetAccess::State(d);
  EXPECT_EQ(s.dataType, detail::kNoData);
  EXPECT_EQ(s.pointCount, 0);
  EXPECT_EQ(s.inputX.size(), 1u);
  // The reset, like Clear, leaves the limits of the last data.
  EXPECT_EQ(d.XMax(), *std::max_element(p.x.begin(), p.x.end()));
  EXPECT_EQ(s.userHullInputCount, 3);  // the setters keep the user hull
  // 9.9e299 is within range.
  d.DataAsSparseGridSet(4, four, four, std::vector<double>{1, 2, 9.9e299, -9.9e299});
  EXPECT_EQ(d.ZMax(), 9.9e299);
}

TEST(DataSet, ClearResetsItsListAndKeepsTheLimits) {
  Watched w;
  DataSet& d = w.First();
  auto& s = DataSetAccess::State(d);
  const Scatter p = Plane(60);
  d.DataAsSparseGridSet(60, p.x, p.y, p.z);
  d.UserHullSet(3, std::vector<double>{150, 250, 200}, std::vector<double>{-1, -1, 2});
  s.PrepareForDrawing(std::vector<double>{400, 500});
  ASSERT_EQ(s.contourLines.size(), 2u);
  const std::array<double, 3> min = s.min, max = s.max, range = s.range;
  s.geometryChanged = {false, false, false};
  w.changes.clear();

  d.Clear();
  EXPECT_EQ(w.changes, std::vector<std::int32_t>{0});
  for (const std::vector<double>* list : {&s.inputX, &s.inputZ, &s.meshX, &s.meshZ}) EXPECT_EQ(*list, std::vector<double>{0.0});
  EXPECT_EQ((std::array{s.pointCount, s.xCount, s.yCount}), (std::array{0, 0, 0}));
  EXPECT_EQ(s.dataType, detail::kNoData);
  EXPECT_EQ(s.meshType, detail::kNoMesh);
  ASSERT_EQ(s.contourLines.size(), 1u);
  EXPECT_EQ(s.contourLines[0].Count(), 0u);
  EXPECT_TRUE(s.bandTriangles.empty());
  EXPECT_EQ(s.geometryChanged, (std::array<bool, 3>{true, true, true}));
  std::int32_t count = -1;
  Array hx, hy;
  d.DataHullGet(count, hx, hy);
  EXPECT_EQ(count, 0);
  EXPECT_EQ(s.userHullInputCount, 0);
  EXPECT_EQ(s.triangulation->TriangleCount(), 0);
  // The limits and ranges are not on the list.
  EXPECT_EQ(std::tie(s.min, s.max, s.range), std::tie(min, max, range));
}

TEST(DataSet, SparseCountZeroPassesAndSkipsTheTriangulation) {
  DataSet d;
  d.DataAsSparseGridSet(0, std::vector<double>{}, std::vector<double>{}, std::vector<double>{});
  const auto& s = DataSetAccess::State(d);
  EXPECT_EQ(s.dataType, detail::kSparse);
  EXPECT_EQ(s.inputX.size(), 1u);
  EXPECT_FALSE(s.triangulation);
  std::int32_t count = -1;
  Array hx{5.0}, hy;
  d.DataHullGet(count, hx, hy);
  EXPECT_EQ(count, 0);
  EXPECT_EQ(hx.Size(), 1u);  // left as passed
}

TEST(DataSet, RectangularGridIsStoredAsItsAxesAndZAndReturned) {
  Watched w;
  DataSet& d = w.First();
  const std::vector<double> x{0, 10, 20}, y{-1, 1};
  const Array2D z({1, 2, 3, 4, 5, 6}, 3, 2);  // z(i, j) = 2i + j + 1
  d.DataAsRectangularGridSet(x, 3, y, 2, z);
  EXPECT_EQ(w.changes.size(), 2u);
  const auto& s = DataSetAccess::State(d);
  EXPECT_EQ(s.pointCount, 6);
  EXPECT_EQ(s.inputX, x);  // no X or Y per node
  EXPECT_EQ(s.inputY, y);
  EXPECT_EQ((std::array{s.PointX(3), s.PointY(3), s.PointX(4), s.PointY(4)}), (std::array{10.0, 1.0, 20.0, -1.0}));
  EXPECT_EQ(s.needsRebuild, true);
  EXPECT_EQ(s.meshType, detail::kNoMesh);  // nothing built yet
  Array gx, gy;
  Array2D gz;
  std::int32_t nx = 0, ny = 0;
  d.DataAsRectangularGridGet(gx, nx, gy, ny, gz);
  EXPECT_EQ(std::pair(nx, ny), std::pair(3, 2));
  EXPECT_EQ(gx.Values(), x);
  EXPECT_EQ(gy.Values(), y);
  EXPECT_EQ(gz.At(2, 1), 6);
  EXPECT_EQ(d.ZMin(), 1);
  EXPECT_EQ(d.ZMax(), 6);
  // No triangulation, no data hull, even once the grid mesh is built: the count is 0
  // and the arrays stay as passed.
  DataSetAccess::State(d).PrepareForDrawing();
  EXPECT_EQ(s.meshType, detail::kGridMesh);
  std::int32_t count = -1;
  Array hx{7.0}, hy{8.0, 9.0};
  d.DataHullGet(count, hx, hy);
  EXPECT_EQ(count, 0);
  EXPECT_EQ(hx.Values(), std::vector<double>{7.0});
  EXPECT_EQ(hy.Values(), (std::vector<double>{8.0, 9.0}));
  // A sparse set cannot be read back as a grid.
  d.DataAsSparseGridSet(3, x, x, x);
  EXPECT_ORVANE_ERROR(d.DataAsRectangularGridGet(gx, nx, gy, ny, gz), 394, "Orvadis.Dataset",
                      "Input data was not supplied as a rectangular grid");
}

TEST(DataSet, RectangularGridBoundChecks) {
  DataSet d;
  const std::vector<double> x{0, 1, 2}, y{0, 1}, six(6);
  const struct {
    Array x;
    std::int32_t nx;
    Array y;
    std::int32_t ny;
    Array2D z;
    const char* message;
  } refused[] = {
      // A Z of one row is refused even for one column: its first dimension must reach 1.
      {std::vector<double>{5}, 1, y, 2, Array2D({1, 2}, 1, 2), kUpper},
      {x, 4, y, 2, Array2D(std::vector<double>(8), 4, 2), kUpper},
      {x, 3, y, 3, Array2D(std::vector<double>(9), 3, 3), kUpper},
      {x, 3, y, 2, Array2D(std::vector<double>(4), 2, 2), kUpper},
      {x, 3, Array(1, {0, 1, 2}), 2, Array2D(six, 3, 2), kLower},
      {x, 3, y, 2, Array2D(six, 3, 2, 1, 0), kLower},
      {x, 3, y, 2, Array2D({0, 1, 2, NAN, 4, 5}, 3, 2), "The Z values contain NaN (not a number)."},
      {x, 3, y, -2, Array2D(six, 3, 2), "YCount must not be negative, not -2."}};
  for (std::size_t k = 0; k < std::size(refused); ++k) {
    const auto& c = refused[k];
    EXPECT_ORVANE_ERROR(d.DataAsRectangularGridSet(c.x, c.nx, c.y, c.ny, c.z), 5, "Orvadis.Dataset", c.message)
        << "case " << k;
  }
  EXPECT_NO_THROW(d.DataAsRectangularGridSet(std::vector<double>{5}, 1, y, 2, Array2D({1, 2, 0, 0}, 2, 2)));
}

TEST(DataSet, FlatAxesNormaliseToZeroWithRangeOne) {
  DataSet d;
  d.DataAsRectangularGridSet(std::vector<double>{4, 4, 4}, 3, std::vector<double>{1, 2}, 2,
                             Array2D({7, 7, 7, 7, 7, 7}, 3, 2));
  auto& s = DataSetAccess::State(d);
  s.PrepareForDrawing();
  EXPECT_EQ(s.range, (std::array{1.0, 1.0, 1.0}));  // Y's 2 - 1 happens to be 1 too
  for (double v : s.meshX) EXPECT_EQ(v, 0.0);
  for (double v : s.meshZ) EXPECT_EQ(v, 0.0);
  EXPECT_EQ(s.Normalise(3, 5.0), 0.0);  // no such axis
  double z = 0;
  EXPECT_TRUE(d.ZValueInterpolate(4, 1.5, z));
  EXPECT_EQ(z, 7);
}

TEST(DataSet, GridInterpolationUsesTheDrawnDiagonal) {
  DataSet d;
  // One cell with only the (1, 1) corner raised: bilinear would give 0.1875 at (0.75, 0.25).
  d.DataAsRectangularGridSet(std::vector<double>{0, 1}, 2, std::vector<double>{0, 1}, 2,
                             Array2D({0, 0, 0, 1}, 2, 2));
  double z = -1;
  for (const auto& [x, y, expected] : {std::array{0.75, 0.25, 0.25}, {0.25, 0.75, 0.25}, {0.5, 0.5, 0.5}, {1.0, 1.0, 1.0}}) {
    ASSERT_TRUE(d.ZValueInterpolate(x, y, z)) << x << "," << y;
    EXPECT_DOUBLE_EQ(z, expected) << x << "," << y;
  }
  z = -1;
  EXPECT_FALSE(d.ZValueInterpolate(1.1, 0.5, z));
  EXPECT_EQ(z, -1);
  // A descending axis works the same way.
  d.DataAsRectangularGridSet(std::vector<double>{30, 20, 10}, 3, std::vector<double>{0, 1}, 2,
                             Array2D({3, 3, 2, 2, 1, 1}, 3, 2));
  ASSERT_TRUE(d.ZValueInterpolate(15, 0.5, z));
  EXPECT_DOUBLE_EQ(z, 1.5);
}

TEST(DataSet, RebuildIsLazyAndRaisesTheDrawingFlags) {
  DataSet d;
  const Scatter p = Plane(50);
  d.DataAsSparseGridSet(50, p.x, p.y, p.z);
  auto& s = DataSetAccess::State(d);
  EXPECT_TRUE(s.needsRebuild);
  s.geometryChanged = {false, false, false};
  s.PrepareForDrawing();
  EXPECT_FALSE(s.needsRebuild);
  EXPECT_EQ(s.meshType, detail::kTriangleMesh);
  EXPECT_EQ(s.geometryChanged, (std::array<bool, 3>{true, true, true}));
  EXPECT_FALSE(s.contoursStale);
  EXPECT_DOUBLE_EQ(s.Denormalise(0, s.triangulation->PointX()[7]), p.x[7]);
  // Nothing to do the second time.
  s.geometryChanged = {false, false, false};
  s.PrepareForDrawing();
  EXPECT_EQ(s.geometryChanged, (std::array<bool, 3>{false, false, false}));
}

TEST(DataSet, UserHullMustLieInTheDataHullOfScatteredData) {
  Watched w;
  DataSet& d = w.First();
  const std::vector<double> x{0, 10, 10, 0, 5}, y{0, 0, 10, 10, 5}, z{1, 2, 3, 4, 5};
  d.DataAsSparseGridSet(5, x, y, z);
  auto& s = DataSetAccess::State(d);
  s.PrepareForDrawing();
  w.changes.clear();
  // On the data hull's corners and edges counts as inside.
  d.UserHullSet(4, std::vector<double>{0, 10, 10, 5}, std::vector<double>{0, 0, 10, 10});
  EXPECT_EQ(w.changes.size(), 1u);
  EXPECT_TRUE(s.contoursStale);
  EXPECT_NO_THROW(s.PrepareForDrawing());
  EXPECT_FALSE(s.contoursStale);
  EXPECT_DOUBLE_EQ(s.userHullX[1], 1.0);
  d.UserHullSet(3, std::vector<double>{1, 11, 5}, std::vector<double>{1, 1, 8});
  EXPECT_ORVANE_ERROR(s.PrepareForDrawing(), -2147221304, "Orvadis.Dataset.DataAsSparseGridSet",
                      "The user hull must be contained by the data hull.");
  EXPECT_TRUE(s.contoursStale);
  // Over a grid mesh (which has no data hull) the test is not made, and the user hull
  // still clips: here half of it lies beyond the grid.
  d.DataAsRectangularGridSet(std::vector<double>{0, 10}, 2, std::vector<double>{0, 10}, 2,
                             Array2D({1, 2, 3, 4}, 2, 2));
  d.UserHullSet(4, std::vector<double>{5, 15, 15, 5}, std::vector<double>{0, 0, 10, 10});
  s.traceBands = true;
  EXPECT_NO_THROW(s.PrepareForDrawing(std::vector<double>{2.5}));
  EXPECT_EQ(s.meshType, detail::kGridMesh);
  EXPECT_NEAR(BandArea(s.bandTriangles), 0.5, 1e-12);
  ASSERT_EQ(s.contourLines.size(), 1u);
  EXPECT_GT(s.contourLines[0].Count(), 0u);
  // A user hull is stored as given and checked where it is used, when contours are next
  // traced: elements missing, points that are not finite.
  d.UserHullSet(3, std::vector<double>{1, 2}, std::vector<double>{1, 2, 3});
  EXPECT_EQ(s.userHullInputCount, 3);
  EXPECT_ORVANE_ERROR(s.PrepareForDrawing(), 9, "Orvadis.Dataset",
                      "The user hull's arrays do not hold elements 0 to PointCount - 1 (PointCount 3).");
  d.UserHullSet(2147483647, std::vector<double>{1, 2, 3}, std::vector<double>{1, 2, 3});
  EXPECT_ORVANE_ERROR(s.PrepareForDrawing(), 9, "Orvadis.Dataset");
  d.UserHullSet(3, std::vector<double>{1, NAN, 5}, std::vector<double>{1, 2, 3});
  EXPECT_ORVANE_ERROR(s.PrepareForDrawing(), 5, "Orvadis.Dataset",
                      "The user hull's points must be finite numbers (point 1 is not).");
  d.UserHullSet(-4, std::vector<double>{}, std::vector<double>{});  // no points: no hull to check
  EXPECT_NO_THROW(s.PrepareForDrawing());
  w.changes.clear();
  d.UserHullClear();
  EXPECT_EQ(w.changes.size(), 1u);
  EXPECT_EQ(s.userHullInputCount, 0);
  d.UserHullSet(3, std::vector<double>{1, 9, 5}, std::vector<double>{1, 1, 8});
  d.Clear();  // Clear removes the user hull
  EXPECT_EQ(s.userHullInputCount, 0);
}

TEST(Geometry, InclusivePointInPolygon) {
  // A concave "C": the notch (1..2 x 1..2) is outside.
  const std::vector<double> px{0, 3, 3, 1, 1, 3, 3, 0}, py{0, 0, 1, 1, 2, 2, 3, 3};
  // Inside, in the notch, on an edge, on a vertex, on the bottom edge, just below it, beyond.
  const std::tuple<double, double, bool> cases[] = {{0.5, 1.5, true}, {2, 1.5, false}, {1, 1.5, true},   {3, 3, true},
                                                    {2, 0, true},     {2, -1e-9, false}, {4, 1.5, false}};
  for (const auto& [x, y, inside] : cases) EXPECT_EQ(detail::IsPointInPolygonInclusive(x, y, px, py), inside) << x << "," << y;
  EXPECT_FALSE(detail::IsPointInPolygonInclusive(0, 0, std::vector<double>{}, std::vector<double>{}));
}

TEST(DataSet, ContentsRoundTripThroughABag) {
  DataSet sparse;
  const Scatter p = Plane(200);
  sparse.DataAsSparseGridSet(200, p.x, p.y, p.z);
  sparse.UserHullSet(3, std::vector<double>{150, 250, 200}, std::vector<double>{-1, -1, 2});
  DataSet grid;
  grid.DataAsRectangularGridSet(std::vector<double>{5}, 1, std::vector<double>{1, 2, 3}, 3,
                                Array2D({1, 2, 3, 0, 0, 0}, 2, 3));
  PropertyBag bag;
  sparse.WriteContents(bag, "Datasets.DataSet1.");
  grid.WriteContents(bag, "Datasets.DataSet2.");
  EXPECT_EQ(bag.ReadProperty("Datasets.DataSet1.DataType", std::int32_t{0}), 2);
  EXPECT_EQ(bag.ReadProperty("Datasets.DataSet1.Count", std::int32_t{0}), 200);
  EXPECT_TRUE(bag.Contains("Datasets.DataSet1.UserHull.X"));
  EXPECT_FALSE(bag.Contains("Datasets.DataSet2.UserHull.X"));
  PropertyBag stored;
  stored.SetContents(bag.Contents());

  DataSet a, b;
  a.ReadContents(stored, "Datasets.DataSet1.");
  b.ReadContents(stored, "Datasets.DataSet2.");
  const auto& sa = DataSetAccess::State(a);
  EXPECT_EQ(sa.inputX, p.x);
  EXPECT_EQ(sa.inputZ, p.z);
  EXPECT_EQ(sa.userHullInputX, (std::vector<double>{150, 250, 200}));
  EXPECT_EQ(sa.triangulation->TriangleVertices(),
            DataSetAccess::State(sparse).triangulation->TriangleVertices());
  Array gx, gy;
  Array2D gz;
  std::int32_t nx = 0, ny = 0;
  b.DataAsRectangularGridGet(gx, nx, gy, ny, gz);
  EXPECT_EQ(nx, 1);
  EXPECT_EQ(gz.Values(), (std::vector<double>{1, 2, 3}));
  // A bag with no keys clears.
  a.ReadContents(PropertyBag(), "X.");
  EXPECT_EQ(DataSetAccess::State(a).dataType, detail::kNoData);
}

TEST(DataSet, InconsistentStoredContentsAreRefusedAndChangeNothing) {
  DataSet d;
  d.DataAsSparseGridSet(3, std::vector<double>{1, 2, 3}, std::vector<double>{3, 1, 2},
                        std::vector<double>{0, 0, 1});
  auto refused = [&d](PropertyBag bag, const std::string& why) {
    EXPECT_ORVANE_ERROR(d.ReadContents(bag, "D."), 5, "Orvadis.Dataset",
                        "The stored data set under \"D.\" is inconsistent: " + why + ".");
    EXPECT_EQ(DataSetAccess::State(d).pointCount, 3);
    EXPECT_EQ(d.XMax(), 3);
  };
  // A stored data set of the given type and count with these lists.
  const auto stored = [](std::int32_t type, std::int32_t count, const std::vector<double>& x, const std::vector<double>& y,
                         const std::vector<double>& z) {
    PropertyBag bag;
    bag.WriteProperty("D.DataType", type);
    bag.WriteProperty("D.Count", count);
    bag.WriteProperty("D.X", x);
    bag.WriteProperty("D.Y", y);
    bag.WriteProperty("D.Z", z);
    return bag;
  };
  PropertyBag type;
  type.WriteProperty("D.DataType", std::int32_t{7});
  refused(type, "data type 7 is not 0, 1 or 2");
  refused(stored(2, 3, {1, 2, 3}, {1, 2}, {1, 2, 3}), "the X, Y and Z lists do not hold Count points");
  refused(stored(1, 4, {1, 2}, {1, 2}, {1, 2, 3}), "the grid's X, Y and Z sizes do not match its count");
  EXPECT_ORVANE_ERROR(d.ReadContents(stored(2, 3, {1, 2, 3}, {1, NAN, 3}, {1, 2, 3}), "D."), 5, "Orvadis.Dataset");
  EXPECT_EQ(DataSetAccess::State(d).pointCount, 3);
  PropertyBag wrongType;
  wrongType.WriteProperty("D.X", std::string("1,2,3"));
  EXPECT_ORVANE_ERROR(d.ReadContents(wrongType, "D."), 13, "PropertyBag");
  EXPECT_EQ(DataSetAccess::State(d).pointCount, 3);
}

TEST(DataSets, StartsWithOneItemAndResizesAtTheEnd) {
  Watched w;
  EXPECT_EQ(w.sets.Count(), 1);
  w.sets.Item(0).DataAsSparseGridSet(3, std::vector<double>{1, 2, 3}, std::vector<double>{3, 1, 2},
                                     std::vector<double>{0, 0, 1});
  w.changes.clear();
  w.sets.SetCount(3);  // each new item is cleared as it joins
  EXPECT_EQ(w.changes, (std::vector<std::int32_t>{1, 2}));
  EXPECT_EQ(DataSetAccess::State(w.sets.Item(2)).index, 3);
  w.changes.clear();
  w.sets.SetCount(3);
  EXPECT_TRUE(w.changes.empty());
  w.sets.Item(2).Clear();
  EXPECT_EQ(w.changes, (std::vector<std::int32_t>{2}));
  w.sets.SetCount(1);
  EXPECT_EQ(w.sets.Count(), 1);
  EXPECT_EQ(w.sets.Item(0).XMax(), 3);  // the first keeps its data
  EXPECT_ORVANE_ERROR(w.sets.SetCount(0), 5, "Orvada.DataSets",
                      "Invalid procedure call or argument");
  EXPECT_ORVANE_ERROR(w.sets.SetCount(-4), 5, "Orvada.DataSets");
  EXPECT_EQ(w.sets.Count(), 1);
  EXPECT_ORVANE_ERROR(w.sets.Item(1), 9, "Orvada.DataSets", "Subscript out of range");
  EXPECT_ORVANE_ERROR(w.sets.Item(-1), 9, "Orvada.DataSets");
}

TEST(DataSets, ClearAllAndIteration) {
  Watched w;
  w.sets.SetCount(3);
  w.changes.clear();
  w.sets.ClearAll();
  EXPECT_EQ(w.changes, (std::vector<std::int32_t>{0, 1, 2}));
  int n = 0;
  for (DataSet& d : w.sets) {
    EXPECT_EQ(&d, &w.sets.Item(n));
    ++n;
  }
  EXPECT_EQ(n, 3);
}

TEST(DataSet, BandsAreClippedToAConcaveUserHull) {
  DataSet d;
  // A 21 x 21 grid given as scattered points over 0..10, z = x + y.
  std::vector<double> x, y, z;
  for (int i = 0; i <= 20; ++i) {
    for (int j = 0; j <= 20; ++j) {
      x.push_back(i * 0.5);
      y.push_back(j * 0.5);
      z.push_back(x.back() + y.back());
    }
  }
  d.DataAsSparseGridSet(static_cast<std::int32_t>(x.size()), x, y, z);
  // A "C" in data units: the 10 x 10 square less the notch 3..10 x 4..6 (area 86).
  d.UserHullSet(8, std::vector<double>{0, 10, 10, 3, 3, 10, 10, 0},
                std::vector<double>{0, 0, 4, 4, 6, 6, 10, 10});
  auto& s = DataSetAccess::State(d);
  const std::vector<double> levels{4, 8, 12, 16};
  s.traceBands = true;
  s.PrepareForDrawing(levels);
  ASSERT_EQ(s.bandTriangles.size(), 5u);
  ASSERT_EQ(s.contourLines.size(), 4u);
  // Normalised units: the hull's area 86 of the data's 100.
  EXPECT_NEAR(BandArea(s.bandTriangles), 0.86, 1e-9);
  for (const BandTriangles& band : s.bandTriangles) {
    for (std::size_t i = 0; i + 2 < band.size(); i += 3) {
      EXPECT_TRUE(detail::IsPointInPolygonInclusive(band[i], band[i + 1], s.userHullX, s.userHullY))
          << band[i] << "," << band[i + 1];
    }
  }
  // Without the hull the bands cover the whole square.
  d.UserHullClear();
  s.contoursStale = true;
  s.PrepareForDrawing(levels);
  EXPECT_NEAR(BandArea(s.bandTriangles), 1.0, 1e-9);
}

TEST(DataSet, GridLinesComeBackChainedOnTheLevel) {
  DataSet d;
  const std::vector<double> x{0, 1, 2, 3}, y{0, 1, 2};
  std::vector<double> z;
  for (double xi : x) {
    for (double yj : y) z.push_back(10 * xi + yj);  // rises along X
  }
  d.DataAsRectangularGridSet(x, 4, y, 3, Array2D(z, 4, 3));
  auto& s = DataSetAccess::State(d);
  s.PrepareForDrawing(std::vector<double>{15});
  ASSERT_EQ(s.contourLines.size(), 1u);
  const CLineList& line = s.contourLines[0];
  EXPECT_EQ(line.PolylineStarts().size(), 1u);
  for (const CLine& seg : line.Lines()) {
    EXPECT_NEAR(s.Denormalise(2, seg.z1), 15, 1e-12);
    EXPECT_NEAR(10 * s.Denormalise(0, seg.x1) + s.Denormalise(1, seg.y1), 15, 1e-9);
  }
}

}  // namespace
}  // namespace orvane
