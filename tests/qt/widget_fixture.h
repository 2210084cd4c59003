#pragma once

// Helpers of the widget tests: a shown widget, its grab as an image, a picture drawn by
// a control on a headless host for comparison, and pixel counts.

#include <gtest/gtest.h>

#include <QImage>
#include <QPointF>
#include <QTest>
#include <QWidget>

#include <array>
#include <cmath>
#include <cstdint>
#include <functional>
#include <vector>

#include "control/surface_state.h"
#include "control/trackball.h"
#include "orvane/control/surface.h"
#include "orvane/host/headless_host.h"
#include "orvane/qt/surface_widget.h"
#include "orvane/render/device_context.h"

namespace orvane::qt::testing {

// A widget of the given size on the screen.
struct Shown {
  SurfaceWidget widget;

  explicit Shown(int width = 320, int height = 240) {
    widget.resize(width, height);
    widget.show();
    EXPECT_TRUE(QTest::qWaitForWindowExposed(&widget));
  }
  Surface& surface() { return widget.surface(); }
  double ratio() const { return widget.devicePixelRatioF(); }
};

// The orientation of the control's trackball.
inline std::array<double, 4> Orientation(Surface& surface) {
  return detail::SurfaceAccess::State(surface).Trackball().Quaternion();
}

// The orientation a drag through the given device pixels gives a plot of width x height
// device pixels that starts at the default view.
inline std::array<double, 4> DraggedOrientation(const std::vector<QPointF>& path, int width, int height) {
  detail::CTrackball ball;
  ball.SetRadius(1.5);
  ball.SetRotation(60, 0, 30);
  for (std::size_t i = 1; i < path.size(); ++i) {
    ball.Drag(path[i - 1].x(), path[i - 1].y(), path[i].x(), path[i].y(), width, height);
  }
  return ball.Quaternion();
}

inline void ExpectSameOrientation(const std::array<double, 4>& a, const std::array<double, 4>& b) {
  for (std::size_t i = 0; i < 4; ++i) EXPECT_NEAR(a[i], b[i], 1e-6) << "component " << i;
}

// What the widget shows, at device pixels.
inline QImage Grab(QWidget& widget) {
  QImage image = widget.grab().toImage().convertToFormat(QImage::Format_RGB32);
  image.setDevicePixelRatio(1.0);
  return image;
}

// Pixels that differ between two images of one size (all of them when the sizes differ).
inline std::int64_t CountDifferent(const QImage& a, const QImage& b) {
  if (a.size() != b.size()) return std::int64_t{a.width()} * a.height() + 1;
  std::int64_t n = 0;
  for (int y = 0; y < a.height(); ++y) {
    for (int x = 0; x < a.width(); ++x) n += (a.pixel(x, y) & 0xFFFFFFu) != (b.pixel(x, y) & 0xFFFFFFu);
  }
  return n;
}

// Pixels of a strong colour: the plotted data, where black text, grey faces and a white
// background have none.
inline std::int64_t CountSaturated(const QImage& image, const QRect& area) {
  std::int64_t n = 0;
  for (int y = area.top(); y <= area.bottom(); ++y) {
    for (int x = area.left(); x <= area.right(); ++x) {
      const QRgb p = image.pixel(x, y);
      const int hi = std::max({qRed(p), qGreen(p), qBlue(p)});
      const int lo = std::min({qRed(p), qGreen(p), qBlue(p)});
      n += hi - lo >= 96;
    }
  }
  return n;
}

// The picture a control on a headless host draws at width x height pixels after setup.
inline QImage HeadlessPicture(int width, int height, const std::function<void(Surface&)>& setup) {
  HeadlessHost host;
  Surface surface(host);
  surface.InitProperties();
  surface.OnResize(width, height);
  setup(surface);
  ImageDC dc(width, height);
  surface.OnPaint(dc);
  QImage image(width, height, QImage::Format_RGB32);
  const std::vector<std::uint8_t>& rgb = dc.Rgb();
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      const std::size_t i = (static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x)) * 3u;
      image.setPixel(x, y, qRgb(rgb[i], rgb[i + 1], rgb[i + 2]));
    }
  }
  return image;
}

}  // namespace orvane::qt::testing
