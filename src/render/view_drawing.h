#pragma once

// Drawing one data set's view into the current display list. Internal header.

#include <array>
#include <cstdint>
#include <unordered_map>
#include <vector>

#include "orvane/core/color.h"

namespace orvane {

class Axes;
class Contouring;
class DataSet;
class View;

namespace detail {

struct DataSetState;

// The colours of the bands laid out along Z for a 1-D texture: texel j covers Z from
// zLow + j * step to zLow + (j + 1) * step and holds the band colour of its middle. With
// levels evenly spaced every level falls a hundredth of a texel above a texel edge, so a
// height exactly on a level shows the band above it, as the tracing's ties do.
struct BandTexture {
  double zLow = 0.0, step = 1.0;
  std::vector<std::uint32_t> texels;  // RGBA bytes in memory order
  // Where a height lies along the texture, 0 to 1 over its texels.
  float Coordinate(double z) const {
    return static_cast<float>((z - zLow) / (step * static_cast<double>(texels.size())));
  }
};
// The texture for the contour levels' colours (none when there are no levels), at most
// maxTexels wide.
BandTexture MakeBandTexture(const Contouring& contouring, double zRange, std::size_t maxTexels);

// A data set's filled surface as the views draw it, in cube coordinates. The vertex
// data (positions, normals, blanks) are kept while the mesh, its level of detail, the
// mapping into the cube and the lighting stay; the colours are worked out once a frame.
struct FillGeometry {
  bool ready = false;
  std::uint64_t meshGeneration = 0;   // what the vertex data were made for
  std::size_t level = 0;
  std::array<double, 12> mapping{};
  bool lit = false;
  std::uint64_t colourFrame = 0;      // the frame whose colours it holds
  std::vector<float> position;  // x, y, z of each mesh vertex
  std::vector<double> zData;    // each vertex's Z in data units, for its colour
  std::vector<float> normal;    // the same, when lit
  bool interpolated = false;    // colour per vertex (true) or per triangle
  std::vector<Color> colour;
  // Exact bands: each vertex's place in the band texture (colour is then unused).
  bool bands = false;
  std::vector<float> texel;
  BandTexture texture;
  bool hasBlanks = false;     // some vertex has no height (NaN): a blanked grid
  std::vector<bool> blank;    // then the triangles with such a corner
  bool outsideReady = false;
  std::vector<bool> outside;  // triangles outside the user hull, or blank
};
// The fills, by data set, kept by the renderer from frame to frame.
using FillCache = std::unordered_map<const DataSetState*, FillGeometry>;

// What a view's drawing needs from the frame.
struct ViewContext {
  Axes& axes;
  const Contouring& contouring;
  bool lightingOn = false;
  bool is3D = true;  // in 2-D the hulls and markers go over every fill, after the views
  // Drawn lengths of the cube's X, Y and Z edges: markers are divided by them, so that
  // a cube marker stays a cube however the plot cube is stretched.
  std::array<double, 3> cubeLengths{1.0, 1.0, 1.0};
  // Where the views share their fill geometry, within a frame and across frames; none:
  // each view makes its own.
  FillCache* fillCache = nullptr;
  std::uint64_t frame = 0;  // the frame being drawn (numbered from 1)
  // Where the fills add the seconds spent preparing their vertex data (GL calls apart).
  double* preparationSeconds = nullptr;
  // The plot's pixels, over which a mesh of many more triangles is drawn at a level of
  // detail (level_of_detail.h); 0 draws every mesh whole.
  std::size_t detailPixels = 0;
};

// Draws, in cube coordinates, the data set's markers, filled surface, contour lines,
// mesh and hulls as the view's switches say; in 2-D the fill, lines and mesh alone. The
// caller checked that the view is visible.
void DrawView(DataSet& data, const View& view, const ViewContext& context);
// The level the data set's fill and mesh are drawn at over `pixels`: a grid's stride or
// a triangulation's clustering cells; 1 when drawn whole.
std::size_t DetailLevel(DataSet& data, std::size_t pixels);
// A 2-D map's hulls and markers of the data set, over whatever was drawn: they come after
// every view, so that no fill buries them.
void DrawOverlays(DataSet& data, const View& view, const ViewContext& context);

// The half-width in cube units of a marker of the given size: 1/200 of the cube's edge
// per unit of Size (a default marker of Size 3 spans 3% of the edge).
double MarkerHalfWidth(double size);

}  // namespace detail
}  // namespace orvane
