#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "orvane/core/color.h"

namespace orvane {

class ColorMap;

/// The names LoadPerceptualColorMap knows: viridis, cividis, magma, diverging, terrain.
const std::vector<std::string>& PerceptualColorMapNames();

/// Replaces map's stops with the named map on 0..1; error 5 for a name not in
/// PerceptualColorMapNames (names are case-sensitive).
void LoadPerceptualColorMap(ColorMap& map, std::string_view name);
/// The perceptual map for data described by text (a Z title, a file name): "terrain"
/// when it holds elevation, height, altitude, topo, dem, bathy, terrain or relief in any
/// case, otherwise "viridis".
std::string PerceptualColorMapFor(std::string_view text);

/// Colour stops read from a file, on the file's own value scale.
struct ColorTable {
  /// Non-decreasing, at least two; a value listed twice (never at either end) is a jump.
  std::vector<double> values;
  /// The colour at each value; at a jump the first is the colour below, the second above.
  std::vector<Color> colors;
  /// Whether every value lies within [0, 1], so the table is read as positions on a map.
  bool relative = false;
  /// The colour for values below the table (a .cpt's B line), if given.
  std::optional<Color> below;
  /// The colour for values above the table (a .cpt's F line), if given.
  std::optional<Color> above;
  /// The colour for missing values (a .cpt's N line), if given.
  std::optional<Color> missing;
};

/// Reads a simple "VALUE COLOR" table or a GMT .cpt file, told apart by content; error 5
/// naming the file and line for anything it cannot use.
ColorTable ReadColorTable(const std::string& path);

/// Replaces map's stops with table laid over the levels first..last: the map's colour at p
/// is the table's at first + p (last - first), or at p itself for a relative table. Values
/// outside the table take below / above where given, else the nearest end colour. Error 5
/// unless first < last, both finite.
void LoadColorTable(ColorMap& map, const ColorTable& table, double first, double last);

}  // namespace orvane
