// Frames of a 1000 x 1000 grid surface (1,998,002 triangles) at 800 x 600, flat colours
// from 20 levels: the first frame, which compiles the display list, and a re-frame after a
// rotation, which replays it. Beside them a bare OpenGL baseline that compiles and
// replays the same coloured triangles from one display list into the same framebuffer;
// every variant reads the image back, as a frame does.

#include <benchmark/benchmark.h>

#include <chrono>
#include <cmath>
#include <vector>

#include "control/surface_state.h"
#include "control/trackball.h"
#include "orvane/axes/axes.h"
#include "orvane/contour/contouring.h"
#include "orvane/control/surface.h"
#include "orvane/data/data_sets.h"
#include "orvane/host/headless_host.h"
#include "orvane/render/view.h"
#include "render/annotations.h"
#include "render/frame.h"
#include "render/gl.h"
#include "render/render_target.h"

namespace {

using orvane::detail::FrameSettings;
using orvane::detail::Renderer;
using orvane::detail::RenderTarget;
using orvane::detail::Scene;

constexpr int kGrid = 1000;
constexpr int kWidth = 800;
constexpr int kHeight = 600;

struct Surface {
  orvane::DataSets sets;
  orvane::Axes axes;
  orvane::Contouring contouring;
  Scene scene{sets, axes, contouring};
  Renderer renderer;
  RenderTarget target;
  FrameSettings settings;
  int angle = 30;

  Surface() {
    std::vector<double> x(kGrid), y(kGrid), z(static_cast<std::size_t>(kGrid) * kGrid);
    for (int i = 0; i < kGrid; ++i) x[static_cast<std::size_t>(i)] = y[static_cast<std::size_t>(i)] = 4.0 * i / (kGrid - 1);
    for (std::size_t i = 0; i < kGrid; ++i) {
      for (std::size_t j = 0; j < kGrid; ++j) z[i * kGrid + j] = std::sin(3 * x[i]) * std::cos(3 * y[j]) + 0.3 * x[i] * y[j];
    }
    orvane::DataSet& data = sets.Item(0);
    data.DataAsRectangularGridSet(x, kGrid, y, kGrid, orvane::Array2D(z, kGrid, kGrid));
    data.ViewMain().SetContourLinesVisible(false);
    data.ViewMain().SetDataHullVisible(false);
    data.ViewTop().SetVisible(false);
    data.ViewBottom().SetVisible(false);
    contouring.SetAutoSetIntervalCount(20);
    target.Create(kWidth, kHeight);
    settings.levelOfDetail = false;  // every one of the 2 million triangles drawn
    Rotate(60, 30);
    renderer.Render(target, scene, settings);  // meshes, levels and the list
  }
  void Rotate(int rx, int rz) {
    orvane::detail::CTrackball ball;
    ball.SetRotation(rx, 0, rz);
    double m[16];
    ball.GetRotationMatrix(m);
    std::copy(m, m + 16, settings.rotation.begin());
  }
};

Surface& Shared() {
  static Surface surface;
  return surface;
}

// Arg bands: 0 draws the described fill (one colour a triangle), 1 exact bands.
void SetBands(Surface& s, const benchmark::State& state) {
  const bool bands = state.range(0) == 1;
  if (s.contouring.ExactBands() == bands) return;
  s.contouring.SetExactBands(bands);
  s.renderer.MarkPlotsStale();
}

// prepare_ms: the fill's vertex data built anew (positions, normals, colours, strips),
// GL calls apart, per frame.
void BM_FrameFirst(benchmark::State& state) {
  Surface& s = Shared();
  SetBands(s, state);
  double prepare = 0.0;
  for (auto _ : state) {
    s.renderer.ForgetFills();
    s.renderer.MarkPlotsStale();
    s.renderer.Render(s.target, s.scene, s.settings, nullptr, false);
    prepare += s.renderer.LastFrame().fillPreparationSeconds;
  }
  state.counters["builds"] = static_cast<double>(s.renderer.PlotOfKind(0).BuildCount());
  state.counters["prepare_ms"] = 1e3 * prepare / static_cast<double>(state.iterations());
}
BENCHMARK(BM_FrameFirst)->ArgName("bands")->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond)->Iterations(5);

// A change of colours: the list is built again, the vertex positions kept.
void BM_FrameAfterColourChange(benchmark::State& state) {
  Surface& s = Shared();
  SetBands(s, state);
  s.renderer.Render(s.target, s.scene, s.settings, nullptr, false);
  double prepare = 0.0;
  int flip = 0;
  for (auto _ : state) {
    s.contouring.SetColorMapType((++flip % 2) != 0 ? orvane::orvColorMapRainbow : orvane::orvColorMapBlueRed);
    s.renderer.MarkPlotsStale();
    s.renderer.Render(s.target, s.scene, s.settings, nullptr, false);
    prepare += s.renderer.LastFrame().fillPreparationSeconds;
  }
  state.counters["prepare_ms"] = 1e3 * prepare / static_cast<double>(state.iterations());
}
BENCHMARK(BM_FrameAfterColourChange)->ArgName("bands")->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond)->Iterations(5);

void BM_FrameAfterRotation(benchmark::State& state) {
  Surface& s = Shared();
  SetBands(s, state);
  s.renderer.Render(s.target, s.scene, s.settings, nullptr, false);
  const std::int64_t builds = s.renderer.PlotOfKind(0).BuildCount();
  for (auto _ : state) {
    s.angle = (s.angle + 5) % 360;
    s.Rotate(60, s.angle);
    s.renderer.Render(s.target, s.scene, s.settings, nullptr, false);
  }
  state.counters["rebuilds"] = static_cast<double>(s.renderer.PlotOfKind(0).BuildCount() - builds);
}
BENCHMARK(BM_FrameAfterRotation)->ArgName("bands")->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond)->Iterations(20);

// The same triangles, coloured as the surface, without the control around them.
struct Bare {
  std::vector<float> vertices;      // 9 per triangle, cube coordinates
  std::vector<unsigned char> rgba;  // 4 per triangle
  GLuint list = 0;

  Bare() {
    Surface& s = Shared();
    const auto n = static_cast<std::size_t>(kGrid);
    std::vector<double> z(n * n);
    double lo = INFINITY, hi = -INFINITY;
    for (std::size_t i = 0; i < n; ++i) {
      for (std::size_t j = 0; j < n; ++j) {
        const double x = 4.0 * static_cast<double>(i) / (kGrid - 1), y = 4.0 * static_cast<double>(j) / (kGrid - 1);
        z[i * n + j] = std::sin(3 * x) * std::cos(3 * y) + 0.3 * x * y;
        lo = std::min(lo, z[i * n + j]);
        hi = std::max(hi, z[i * n + j]);
      }
    }
    auto corner = [&](std::size_t i, std::size_t j) {
      vertices.insert(vertices.end(), {static_cast<float>(i) / (kGrid - 1), static_cast<float>(j) / (kGrid - 1),
                                       static_cast<float>((z[i * n + j] - lo) / (hi - lo))});
    };
    for (std::size_t i = 0; i + 1 < n; ++i) {
      for (std::size_t j = 0; j + 1 < n; ++j) {
        for (int t = 0; t < 2; ++t) {
          const double mean = t == 0 ? (z[i * n + j] + z[(i + 1) * n + j] + z[(i + 1) * n + j + 1]) / 3
                                     : (z[i * n + j] + z[(i + 1) * n + j + 1] + z[i * n + j + 1]) / 3;
          const orvane::Color c = s.contouring.FindColor(mean, false);
          rgba.insert(rgba.end(), {static_cast<unsigned char>(c & 0xFF), static_cast<unsigned char>((c >> 8) & 0xFF),
                                   static_cast<unsigned char>((c >> 16) & 0xFF), 255});
          corner(i, j);
          if (t == 0) {
            corner(i + 1, j);
            corner(i + 1, j + 1);
          } else {
            corner(i + 1, j + 1);
            corner(i, j + 1);
          }
        }
      }
    }
  }
  void Compile() {
    if (list != 0) glDeleteLists(list, 1);
    list = glGenLists(1);
    glNewList(list, GL_COMPILE);
    glBegin(GL_TRIANGLES);
    for (std::size_t t = 0; t < rgba.size() / 4; ++t) {
      glColor4ub(rgba[4 * t], rgba[4 * t + 1], rgba[4 * t + 2], rgba[4 * t + 3]);
      for (std::size_t k = 0; k < 3; ++k) glVertex3f(vertices[9 * t + 3 * k], vertices[9 * t + 3 * k + 1], vertices[9 * t + 3 * k + 2]);
    }
    glEnd();
    glEndList();
  }
  // The surface's frame without the control: same projection, rotation and list.
  void Replay(int angle) {
    Surface& s = Shared();
    glClearColor(1, 1, 1, 1);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    glEnable(GL_DEPTH_TEST);
    glShadeModel(GL_FLAT);
    glMatrixMode(GL_PROJECTION);
    glLoadIdentity();
    glViewport(0, 0, kWidth, kHeight);
    const double aspect = static_cast<double>(kWidth) / kHeight;
    glOrtho(-aspect, aspect, -1, 1, 1, -1);
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
    s.Rotate(60, angle);
    glMultMatrixd(s.settings.rotation.data());
    glScaled(1, -1, 1);
    glTranslated(-0.5, -0.5, -0.5);
    glCallList(list);
    glFlush();
    s.target.ReadBack();
  }
};

Bare& SharedBare() {
  static Bare bare;
  return bare;
}

void BM_BareListCompile(benchmark::State& state) {
  Surface& s = Shared();
  Bare& bare = SharedBare();
  s.target.MakeCurrent();
  for (auto _ : state) {
    bare.Compile();
    bare.Replay(30);
  }
  s.target.ReleaseCurrent();
}
BENCHMARK(BM_BareListCompile)->Unit(benchmark::kMillisecond)->Iterations(5);

void BM_BareListReplay(benchmark::State& state) {
  Surface& s = Shared();
  Bare& bare = SharedBare();
  s.target.MakeCurrent();
  bare.Compile();
  int angle = 30;
  for (auto _ : state) {
    angle = (angle + 5) % 360;
    bare.Replay(angle);
  }
  s.target.ReleaseCurrent();
}
BENCHMARK(BM_BareListReplay)->Unit(benchmark::kMillisecond)->Iterations(20);

}  // namespace

// The control's sample surface at 800 x 600 turned a little before each frame, with the
// main view's contour labels on and then off: the labels' share of a re-frame (their
// places are kept; each frame tests the anchors in the stencil buffer and draws the
// labels that show).
namespace {

struct Sample {
  orvane::HeadlessHost host;
  orvane::Surface surface{host};
  int angle = 30;

  Sample() {
    surface.InitProperties();
    surface.OnResize(kWidth, kHeight);
    surface.ShowSampleData();
  }
  void Labels(bool on) {
    surface.DataSets().Item(0).ViewMain().SetContourLabelsVisible(on);
    surface.Refresh();
  }
  void Turn() {
    angle = (angle + 5) % 360;
    surface.SetRotationZ(angle);
    surface.Refresh();
  }
  orvane::detail::CLabelsManager& Manager() {
    auto& passes = dynamic_cast<orvane::detail::PlotAnnotations&>(*orvane::detail::SurfaceAccess::State(surface).passes);
    return passes.Labels();
  }
};

Sample& SharedSample() {
  static Sample sample;
  return sample;
}

void BM_FrameLabels(benchmark::State& state) {
  Sample& s = SharedSample();
  const bool on = state.range(0) != 0;
  s.Labels(on);
  for (auto _ : state) s.Turn();
  const auto& counts = s.Manager().LastCounts();
  state.counters["drawn"] = on ? counts.drawn : 0;
  state.counters["queued"] = on ? counts.queued : 0;
}
BENCHMARK(BM_FrameLabels)->ArgName("labels")->Arg(1)->Arg(0)->Unit(benchmark::kMillisecond)->Iterations(40);

}  // namespace

// A 10,000 x 10,000 grid (200 million triangles) in the control at 1024 x 768, as the
// viewer shows it: 20 levels, contour lines on, the fill drawn at a level of detail. The
// first frame (mesh, tracing and list) is reported as first_s; each iteration turns the
// plot 5 degrees and redraws, which is what a drag in the viewer does.
namespace {

struct LargeGrid {
  orvane::HeadlessHost host;
  orvane::Surface surface{host};
  int angle = 30;
  double firstSeconds = 0.0;

  LargeGrid() {
    constexpr std::size_t n = 10000;
    std::vector<double> x(n), z(n * n);
    for (std::size_t i = 0; i < n; ++i) x[i] = 10.0 * static_cast<double>(i);
    for (std::size_t i = 0; i < n; ++i) {
      const double u = static_cast<double>(i) / (n - 1);
      for (std::size_t j = 0; j < n; ++j) {
        const double v = static_cast<double>(j) / (n - 1);
        z[i * n + j] = 400.0 + 120.0 * std::sin(3.1 * u) * std::cos(2.3 * v) + 8.0 * std::sin(37.0 * u + 11.0 * v);
      }
    }
    surface.InitProperties();
    surface.OnResize(1024, 768);
    surface.Contouring().SetAutoSetIntervalCount(20);
    orvane::DataSet& data = surface.DataSets().Item(0);
    data.DataAsRectangularGridSet(x, x, z);
    data.ViewMain().SetContourLinesVisible(true);
    const auto started = std::chrono::steady_clock::now();
    surface.Refresh();
    firstSeconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - started).count();
  }
};

void BM_TurnLargeGrid(benchmark::State& state) {
  static LargeGrid grid;
  for (auto _ : state) {
    grid.angle = (grid.angle + 5) % 360;
    grid.surface.SetRotationZ(grid.angle);
    grid.surface.Refresh();
  }
  state.counters["first_s"] = grid.firstSeconds;
}
BENCHMARK(BM_TurnLargeGrid)->Unit(benchmark::kMillisecond)->Iterations(20);

}  // namespace
