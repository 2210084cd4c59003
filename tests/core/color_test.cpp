#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "orvane/core/color.h"
#include "support/expect_error.h"

namespace orvane {
namespace {

TEST(Color, SplitsAndBuildsWithRedInTheLowestByte) {
  EXPECT_EQ(SplitColor(0x00336699u), (ColorBytes{0x99, 0x66, 0x33}));
  EXPECT_EQ(SplitColor(0xFF000000u), (ColorBytes{0, 0, 0}));  // top byte ignored
  EXPECT_EQ(Rgb(0x99, 0x66, 0x33), 0x00336699u);
  // Web hex #9370D8 (the medium purple of the named colours) is stored as 0xD87093.
  EXPECT_EQ(FromHexRgb(0x9370D8), 0xD87093u);
  EXPECT_EQ(FromHexRgb(0xFF0000), 255u);
}

struct RoundCase {
  double in;
  double out;
};

TEST(Color, RoundHalfEvenTiesGoToTheEvenNeighbour) {
  const RoundCase cases[] = {
      {127.5, 128.0}, {0.5, 0.0},   {1.5, 2.0},   {2.5, 2.0},     {-0.5, -0.0},
      {-1.5, -2.0},   {-2.5, -2.0}, {2.4, 2.0},   {2.6, 3.0},     {-2.6, -3.0},
      // Neighbours of 0.5 and 2.5 that floor(x + 0.5) gets wrong.
      {0.49999999999999994, 0.0},   {2.4999999999999996, 2.0},    {2.5000000000000004, 3.0},
      // Above 2^52 every double is whole.
      {4503599627370497.0, 4503599627370497.0},
  };
  for (const RoundCase& c : cases) {
    EXPECT_EQ(RoundHalfEven(c.in), c.out) << c.in;
  }
  EXPECT_TRUE(std::signbit(RoundHalfEven(-0.5)));
  EXPECT_TRUE(std::isnan(RoundHalfEven(std::nan(""))));
  EXPECT_EQ(RoundHalfEven(std::numeric_limits<double>::infinity()),
            std::numeric_limits<double>::infinity());
}

TEST(Color, ChannelInterpolationRoundsHalfToEven) {
  EXPECT_EQ(InterpolateChannel(0, 255, 0.5), 128);  // 127.5
  EXPECT_EQ(InterpolateChannel(0, 1, 0.5), 0);      // 0.5
  EXPECT_EQ(InterpolateChannel(0, 3, 0.5), 2);      // 1.5
  EXPECT_EQ(InterpolateChannel(200, 100, 0.25), 175);
  EXPECT_EQ(InterpolateChannel(10, 20, -1.0), 0);   // t is not clamped
  EXPECT_EQ(InterpolateChannel(0, 255, 2.0), 510);
  EXPECT_ORVANE_ERROR(InterpolateChannel(0, 255, 1000.0), 6, "Orvada", "Overflow");
  EXPECT_ORVANE_ERROR(InterpolateChannel(0, 255, std::nan("")), 5, "Orvada");
}

TEST(Color, ColorInterpolationWorksPerChannel) {
  const Color black = 0;
  const Color white = Rgb(255, 255, 255);
  EXPECT_EQ(InterpolateColor(black, white, 0.5), Rgb(128, 128, 128));
  EXPECT_EQ(InterpolateColor(Rgb(0, 1, 254), Rgb(255, 0, 255), 0.5), Rgb(128, 0, 254));
  EXPECT_EQ(InterpolateColor(Rgb(10, 20, 30), Rgb(110, 120, 130), 0.0), Rgb(10, 20, 30));
  EXPECT_EQ(InterpolateColor(Rgb(10, 20, 30), Rgb(110, 120, 130), 1.0), Rgb(110, 120, 130));
  // An extrapolated red of 300 spills into green: 300 + 256 * 0 = 0x012C.
  EXPECT_EQ(InterpolateColor(Rgb(100, 0, 0), Rgb(200, 0, 0), 2.0), 0x012Cu);
  // A negative channel makes the whole sum negative; the bits are kept.
  EXPECT_EQ(InterpolateColor(Rgb(0, 0, 0), Rgb(10, 0, 0), -1.0),
            static_cast<Color>(std::int32_t{-10}));
}

TEST(Color, SamplingBetweenStops) {
  const Color lo = Rgb(0, 0, 0);
  const Color hi = Rgb(255, 0, 100);
  EXPECT_EQ(SampleColor(0.0, lo, 1.0, hi, 0.5), Rgb(128, 0, 50));
  EXPECT_EQ(SampleColor(0.5, lo, 1.0, hi, 0.75), Rgb(128, 0, 50));
  // A zero or negative span gives the lower stop's colour.
  EXPECT_EQ(SampleColor(0.5, lo, 0.5, hi, 0.5), lo);
  EXPECT_EQ(SampleColor(0.7, lo, 0.5, hi, 0.6), lo);
}

}  // namespace
}  // namespace orvane
