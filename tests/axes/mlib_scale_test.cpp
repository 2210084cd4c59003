#include <gtest/gtest.h>

#include <cmath>

#include "axes/mlib_scale.h"

namespace orvane {
namespace {

using namespace MLibScale;

struct RoundRow {
  double min, max, interval, roundedMin, roundedMax;
};

TEST(MLibScale, RoundRangeToIntervalTable) {
  const RoundRow rows[] = {
      {0, 10, 2, 0, 10},     {0.9, 10, 2, 0, 10},  {-2, 10, 2, -2, 10},   {-2.1, 10, 2, -4, 10},
      {-2, 10, 3, -3, 12},   {-3, 12, 3, -3, 12},  {-2, 9, 2.1, -2.1, 10.5},
  };
  for (const RoundRow& r : rows) {
    double lo = 0, hi = 0;
    RoundRangeToInterval(r.min, r.max, r.interval, lo, hi);
    EXPECT_EQ(lo, r.roundedMin) << r.min << ".." << r.max << " by " << r.interval;
    EXPECT_EQ(hi, r.roundedMax) << r.min << ".." << r.max << " by " << r.interval;
  }
}

struct AutoRow {
  double min, max;
  std::int32_t count;
  bool keepNatural, addMargin;
  double roundedMin, roundedMax, interval;
};

TEST(MLibScale, AutoRangeAndIntervalTable) {
  const AutoRow rows[] = {
      {0, 10, 5, false, false, 0, 10, 2},
      {0.1, 9.9, 5, false, false, 0, 10, 2},
      {-0.1, 3.9, 5, false, false, -1, 4, 1},
      {-0.1, 7, 5, false, false, -2, 8, 2},
      {-0.1, 10.1, 5, false, false, -3, 12, 3},
      {-1, 15, 5, false, false, -4, 16, 4},
      {-1, 20, 5, false, false, -5, 20, 5},
      {-1, 31, 5, false, false, -8, 32, 8},
      {-1, 40, 5, false, false, -10, 40, 10},
      {-1, 70, 5, false, false, -20, 80, 20},
      {-1.14, 1.36, 3, false, false, -2, 4, 2},
      {1.9, 2.8, 1, false, false, 0, 3, 3},
      {1.9, 3.8, 1, false, false, 0, 4, 4},
      {-100, 4000, 5, false, false, -1000, 4000, 1000},
      {100, 4200, 5, false, false, 0, 5000, 1000},
      {-0.001, 0.04, 5, false, false, -0.01, 0.04, 0.01},
      {-4, 16, 5, false, true, -8, 20, 4},
      {-4, 12, 5, false, false, -4, 16, 4},
      {-4, 12, 5, true, false, -4, 12, 4},
  };
  for (const AutoRow& r : rows) {
    double lo = 0, hi = 0, interval = 0;
    AutoRangeAndInterval(r.min, r.max, r.count, r.keepNatural, r.addMargin, lo, hi, interval);
    const auto row = ::testing::Message() << r.min << ".." << r.max << " count " << r.count
                                          << (r.keepNatural ? " natural" : "")
                                          << (r.addMargin ? " margin" : "");
    EXPECT_EQ(lo, r.roundedMin) << row;
    EXPECT_EQ(hi, r.roundedMax) << row;
    EXPECT_EQ(interval, r.interval) << row;
  }
}

TEST(MLibScale, DegenerateRangesAreWidenedByATenthOfTheirDecade) {
  // A range among the subnormal numbers is one of no width at 0.
  const double cases[][4] = {{5, 5, 4.95, 5.05}, {0, 0, -0.05, 0.05}, {100, 100, 95, 105},
                             {-3, -3, -3.05, -2.95}, {0, 5e-323, -0.05, 0.05}, {-1e-310, 2e-320, -0.05, 0.05}};
  for (const auto& c : cases) {
    double min = c[0], max = c[1];
    WidenDegenerateRange(min, max);
    EXPECT_DOUBLE_EQ(min, c[2]) << c[0];
    EXPECT_DOUBLE_EQ(max, c[3]) << c[0];
  }
  double min = 1, max = 2;  // a real range is left alone
  WidenDegenerateRange(min, max);
  EXPECT_EQ(min, 1);
  EXPECT_EQ(max, 2);
  // Widening upward from the top of the Doubles would overflow: it goes downward.
  min = max = kLargestDouble;
  WidenDegenerateRange(min, max);
  EXPECT_EQ(max, kLargestDouble);
  EXPECT_LT(min, kLargestDouble);
  // A degenerate range never yields a zero interval.
  double lo = 0, hi = 0, interval = 0;
  AutoRangeAndInterval(5, 5, 10, true, false, lo, hi, interval);
  EXPECT_GT(interval, 0.0);
  EXPECT_LE(lo, 4.95);
  EXPECT_GE(hi, 5.05);
  // Nor one of subnormal width, whose tenth would underflow to 0.
  AutoRangeAndInterval(0, 5e-323, 10, true, false, lo, hi, interval);
  EXPECT_EQ(interval, 0.01);
  EXPECT_EQ(lo, -0.05);
  EXPECT_EQ(hi, 0.05);
}

TEST(MLibScale, IndexBoundsSnapToExactMultiples) {
  // min, max, interval, then the expected low and high index.
  const double cases[][5] = {{0.30000000000000004, 0.6000000000000001, 0.1, 3, 6}, {-5, -3, 1, -5, -3},
                             {-5.5, -2.5, 1, -6, -2}};
  for (const auto& c : cases) {
    double low = 0, high = 0;
    ScaleIndexBounds(c[0], c[1], c[2], low, high);
    EXPECT_EQ(low, c[3]) << c[0];
    EXPECT_EQ(high, c[4]) << c[0];
  }
}

TEST(MLibScale, ProductsCeilingsAndEpsilon) {
  EXPECT_EQ(Ceiling(2.0), 2.0);
  EXPECT_EQ(Ceiling(2.1), 3.0);
  EXPECT_EQ(Ceiling(-2.1), -2.0);
  EXPECT_EQ(Ceiling(0.0), 0.0);
  EXPECT_TRUE(IsProductSafe(1e308, 1.0));
  EXPECT_TRUE(IsProductSafe(1e300, -0.5));
  EXPECT_FALSE(IsProductSafe(1e300, 1e10));
  EXPECT_TRUE(IsProductSafe(1e-300, 1e300));
  EXPECT_EQ(SafeProduct(3, 4), 12);
  EXPECT_EQ(SafeProduct(1e300, 1e10), kLargestDouble);
  EXPECT_EQ(SafeProduct(-1e300, 1e10), -kLargestDouble);
  EXPECT_EQ(SafeProduct(1e300, -1e10), -kLargestDouble);
  EXPECT_EQ(RelativeEpsilon(-2.0), 2 * 2.22044604925031e-16);
  EXPECT_EQ(std::trunc(Log10(1000)), 2.0);  // ln/ln10 lands a hair below 3
  EXPECT_EQ(Log10(100), 2.0);
}

}  // namespace
}  // namespace orvane
