#pragma once

// A control on a headless host, taken its defaults and sized, with helpers to count what
// it draws, to find where it drew a point of the cube, and to give it data.

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <vector>

#include "control/surface_state.h"
#include "data/data_set_state.h"
#include "orvane/control/surface.h"
#include "orvane/host/headless_host.h"
#include "render/gl.h"

namespace orvane::testing {

struct Control {
  HeadlessHost host;
  Surface surface{host};

  explicit Control(int width = 120, int height = 90) {
    surface.InitProperties();
    surface.OnResize(width, height);
    EXPECT_TRUE(State().target.HasContext()) << State().target.FailureReason();
    host.ClearRecords();
  }
  detail::SurfaceState& State() { return detail::SurfaceAccess::State(surface); }
  // Frames drawn so far, into any target.
  std::int64_t Frames() { return State().renderer.FrameCount(); }
  // Display lists compiled so far for the main views.
  std::int64_t MainListBuilds() { return State().renderer.PlotOfKind(0).BuildCount(); }
  const detail::Bitmap& Image() { return State().target.Image(); }
  const std::vector<std::string>& Keys() const { return host.NotifiedKeys(); }
  // Window pixel (top-left origin) of a cube point, through the main views' matrices or,
  // with views false, those of the cube drawn before them.
  std::array<int, 2> Project(double x, double y, double z, bool views = true) {
    const auto& frame = State().renderer.LastFrame();
    const auto& m = views ? frame.mainViews : frame.beforeViews;
    double wx = 0, wy = 0, wz = 0;
    gluProject(x, y, z, m.modelView.data(), m.projection.data(), m.viewport.data(), &wx, &wy, &wz);
    return {static_cast<int>(std::floor(wx)), Image().header.biHeight - 1 - static_cast<int>(std::floor(wy))};
  }
  Color PixelAt(double x, double y, double z, bool views = true) {
    const auto p = Project(x, y, z, views);
    return Image().Pixel(p[0], p[1]);
  }
};

// z = x * y over an n x n grid on [0, 1] x [0, 1].
inline void Saddle(DataSet& data, int n = 9) {
  std::vector<double> x(static_cast<std::size_t>(n)), z(x.size() * x.size());
  for (std::size_t i = 0; i < x.size(); ++i) x[i] = static_cast<double>(i) / (n - 1.0);
  for (std::size_t i = 0; i < x.size(); ++i) {
    for (std::size_t j = 0; j < x.size(); ++j) z[i * x.size() + j] = x[i] * x[j];
  }
  data.DataAsRectangularGridSet(x, n, x, n, Array2D(z, x.size(), x.size()));
}

// Scattered points on a jittered lattice over [0, 2] x [0, 2], z = x - y.
inline void Scatter(DataSet& data, int side = 12) {
  std::vector<double> x, y, z;
  for (int i = 0; i < side; ++i) {
    for (int j = 0; j < side; ++j) {
      const double xi = 2.0 * i / (side - 1) + 0.01 * std::sin(i * 7.0 + j);
      const double yj = 2.0 * j / (side - 1) + 0.01 * std::cos(i + j * 5.0);
      x.push_back(xi);
      y.push_back(yj);
      z.push_back(xi - yj);
    }
  }
  data.DataAsSparseGridSet(static_cast<std::int32_t>(x.size()), x, y, z);
}

// Pixels of an image that differ from colour.
inline int CountNot(const detail::Bitmap& image, Color colour) {
  int n = 0;
  for (int y = 0; y < image.header.biHeight; ++y) {
    for (int x = 0; x < image.header.biWidth; ++x) n += image.Pixel(x, y) != colour;
  }
  return n;
}

// Pixels of an image that are colour.
inline int CountOf(const detail::Bitmap& image, Color colour) {
  return image.header.biWidth * image.header.biHeight - CountNot(image, colour);
}

}  // namespace orvane::testing
