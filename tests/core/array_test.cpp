#include <gtest/gtest.h>

#include <limits>
#include <vector>

#include "orvane/core/array.h"
#include "support/expect_error.h"

namespace orvane {
namespace {

double Sum(const Array& a) {
  double s = 0;
  for (std::int32_t i = a.LowerBound(); i <= a.UpperBound(); ++i) s += a.At(i);
  return s;
}

TEST(Array, BuiltImplicitlyFromAVectorWithLowerBoundZero) {
  EXPECT_EQ(Sum(std::vector<double>{1, 2, 3}), 6.0);
  const Array a = std::vector<double>{4, 5};
  EXPECT_EQ(a.LowerBound(), 0);
  EXPECT_EQ(a.UpperBound(), 1);
  EXPECT_EQ(a.Size(), 2u);
  const Array empty;
  EXPECT_TRUE(empty.Empty());
  EXPECT_EQ(empty.UpperBound(), -1);
}

TEST(Array, ExplicitBoundsAreCheckedOnEveryAccess) {
  Array a(1, {10, 20, 30});
  EXPECT_EQ(a.LowerBound(), 1);
  EXPECT_EQ(a.UpperBound(), 3);
  EXPECT_EQ(a.At(1), 10);
  EXPECT_EQ(a.At(3), 30);
  a.At(2) = 25;
  EXPECT_EQ(a.Values()[1], 25);
  EXPECT_ORVANE_ERROR(a.At(0), 9, "Orvada", "Subscript out of range");
  EXPECT_ORVANE_ERROR(a.At(4), 9, "Orvada");
  EXPECT_ORVANE_ERROR(a.At(std::numeric_limits<std::int32_t>::min()), 9, "Orvada");
  const Array negative(-2, {1, 2});
  EXPECT_EQ(negative.UpperBound(), -1);
  EXPECT_EQ(negative.At(-2), 1);
  // Bounds that do not fit 32 bits are refused.
  EXPECT_ORVANE_ERROR(Array(std::numeric_limits<std::int32_t>::max(), {1, 2}), 5, "Orvada");
  EXPECT_NO_THROW(Array(std::numeric_limits<std::int32_t>::max(), {1}));
}

TEST(Array2D, FirstIndexAlongXSecondFastest) {
  // 3 along X, 2 along Y: element (i, j) at i * 2 + j.
  const Array2D z({0, 1, 10, 11, 20, 21}, 3, 2);
  EXPECT_EQ(z.Count(1), 3u);
  EXPECT_EQ(z.Count(2), 2u);
  EXPECT_EQ(z.UpperBound(1), 2);
  EXPECT_EQ(z.UpperBound(2), 1);
  for (std::int32_t i = 0; i < 3; ++i) {
    for (std::int32_t j = 0; j < 2; ++j) EXPECT_EQ(z.At(i, j), 10 * i + j);
  }
  EXPECT_ORVANE_ERROR(z.At(3, 0), 9, "Orvada");
  EXPECT_ORVANE_ERROR(z.At(0, 2), 9, "Orvada");
  EXPECT_ORVANE_ERROR(z.At(-1, 0), 9, "Orvada");
  EXPECT_ORVANE_ERROR(z.LowerBound(3), 9, "Orvada");
  EXPECT_ORVANE_ERROR(z.Count(0), 9, "Orvada");
}

TEST(Array2D, ExplicitLowerBoundsAndSizeMismatches) {
  Array2D z({1, 2, 3, 4}, 2, 2, 1, 5);
  EXPECT_EQ(z.LowerBound(1), 1);
  EXPECT_EQ(z.LowerBound(2), 5);
  EXPECT_EQ(z.UpperBound(2), 6);
  EXPECT_EQ(z.At(2, 5), 3);
  z.At(2, 6) = 40;
  EXPECT_EQ(z.Values().back(), 40);
  EXPECT_ORVANE_ERROR(Array2D({1, 2, 3}, 2, 2), 5, "Orvada",
                      "A two-dimensional array of 2 by 2 elements cannot hold 3 values.");
  // A product that overflows size_t must not wrap around to the vector's size.
  const std::size_t huge = std::numeric_limits<std::size_t>::max() / 2 + 1;
  EXPECT_ORVANE_ERROR(Array2D({}, huge, 2), 5, "Orvada");
  EXPECT_NO_THROW(Array2D({}, 0, 7));
}

}  // namespace
}  // namespace orvane
