// Two data sets in one plot cube, the upper one see-through, drawn to a PNG from code:
// the control on a headless host, as a program without a window uses it.
//
//   orvane_two_surfaces OUT.png [WIDTHxHEIGHT]

#include <cmath>
#include <cstdio>
#include <exception>
#include <vector>

#include "orvane/orvane.h"

namespace {

// z = f(x, y) on an n x n grid over [-2, 2] x [-2, 2].
template <class F>
void Grid(orvane::DataSet& data, int n, F f) {
  std::vector<double> x(static_cast<std::size_t>(n)), z;
  for (int i = 0; i < n; ++i) x[static_cast<std::size_t>(i)] = -2.0 + 4.0 * i / (n - 1);
  for (const double xi : x)
    for (const double yj : x) z.push_back(f(xi, yj));
  data.DataAsRectangularGridSet(x, n, x, n, orvane::Array2D(z, x.size(), x.size()));
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) {
    std::fprintf(stderr, "usage: orvane_two_surfaces OUT.png [WIDTHxHEIGHT]\n");
    return 2;
  }
  int width = 800, height = 600;
  if (argc > 2 && std::sscanf(argv[2], "%dx%d", &width, &height) != 2) {
    std::fprintf(stderr, "orvane_two_surfaces: the size must be WIDTHxHEIGHT\n");
    return 2;
  }
  try {
    orvane::HeadlessHost host;
    orvane::Surface surface(host);
    surface.InitProperties();
    surface.DataSets().SetCount(2);
    orvane::TakeHostDefaults(surface);  // smooth edges, exact bands, viridis, no projections
    // A saddle below, a bump above it, see-through.
    Grid(surface.DataSets().Item(0), 41, [](double x, double y) { return 0.15 * (x * x - y * y); });
    Grid(surface.DataSets().Item(1), 41, [](double x, double y) { return 1.2 * std::exp(-(x * x + y * y)) + 0.4; });
    orvane::View& upper = surface.DataSets().Item(1).ViewMain();
    upper.SetTransparencyOn(true);
    upper.SetTransparency(0.45);
    surface.SetLightingOn(true);
    surface.Header().SetText("A saddle under a see-through bump");
    surface.Header().SetVisible(true);
    orvane::ImageDC image(width, height);
    surface.DrawToDC(image, 0, 0, width, height);
    image.SavePng(argv[1]);
  } catch (const std::exception& e) {
    std::fprintf(stderr, "orvane_two_surfaces: %s\n", e.what());
    return 1;
  }
  return 0;
}
