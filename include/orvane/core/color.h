#pragma once

#include <cstdint>

namespace orvane {

/// A colour as the host stores it: 0x00BBGGRR, red in the lowest byte.
using Color = std::uint32_t;

/// A colour split into its three bytes for drawing.
struct ColorBytes {
  std::uint8_t red = 0;    ///< lowest byte of the colour
  std::uint8_t green = 0;  ///< second byte
  std::uint8_t blue = 0;   ///< third byte; the top byte is ignored
  friend bool operator==(const ColorBytes&, const ColorBytes&) = default;
};

/// The colour made of three bytes (R + 256 G + 65536 B).
constexpr Color Rgb(std::uint8_t red, std::uint8_t green, std::uint8_t blue) noexcept {
  return static_cast<Color>(red) | (static_cast<Color>(green) << 8) |
         (static_cast<Color>(blue) << 16);
}

/// The colour written as web hex #RRGGBB (0xRRGGBB), turned into 0x00BBGGRR.
constexpr Color FromHexRgb(std::uint32_t rrggbb) noexcept {
  return Rgb(static_cast<std::uint8_t>(rrggbb >> 16), static_cast<std::uint8_t>(rrggbb >> 8),
             static_cast<std::uint8_t>(rrggbb));
}

/// Red, green and blue bytes of a colour.
constexpr ColorBytes SplitColor(Color color) noexcept {
  return {static_cast<std::uint8_t>(color), static_cast<std::uint8_t>(color >> 8),
          static_cast<std::uint8_t>(color >> 16)};
}

/// x rounded to the nearest whole number, ties to the even one (127.5 -> 128, 0.5 -> 0),
/// independent of the floating-point rounding mode. NaN and infinities come back unchanged.
double RoundHalfEven(double x) noexcept;

/// lo + (hi - lo) * t in double precision, rounded half to even into a 16-bit integer.
/// Raises error 6 (overflow) when the result leaves -32768..32767 and error 5 for NaN t.
std::int16_t InterpolateChannel(double lo, double hi, double t);

/// Per-channel interpolation from lo (t = 0) to hi (t = 1); t is not clamped. The result
/// is R + 256 G + 65536 B of the rounded channels as a signed 32-bit sum (an extrapolated
/// channel outside 0..255 spills into its neighbour); error 6 when the sum overflows.
Color InterpolateColor(Color lo, Color hi, double t);

/// The colour at position p between two stops (vLo, cLo) and (vHi, cHi): cLo when
/// vHi - vLo is not above 0, else InterpolateColor with t = (p - vLo) / (vHi - vLo).
Color SampleColor(double vLo, Color cLo, double vHi, Color cHi, double p);

}  // namespace orvane
