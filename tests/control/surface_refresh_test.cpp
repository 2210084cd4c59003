// The refresh cycle: when the control draws, what a change makes it recalculate, the
// axis-limit error, the wait pointer, resampling progress through the host and a run
// the host stops, and the paint step that keeps every error from the host.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

#include "control_fixture.h"
#include "support/expect_error.h"

namespace orvane {
namespace {

using testing::Control;

constexpr Color kWhite = 0xFFFFFF;

class SurfaceRefresh : public ::testing::Test {
 protected:
  // Frames that a call draws.
  template <class F>
  std::int64_t Drawn(F&& call) {
    const std::int64_t before = c.Frames();
    call();
    return c.Frames() - before;
  }
  Control c;
  Surface& s = c.surface;
};

TEST_F(SurfaceRefresh, WithoutAutoRefreshNothingDrawsUntilRefreshAndWithItEachLetDrawsOnce) {
  s.SetBackColor(0x102030);
  s.SetZoom(1.5);
  s.SetRotationZ(45);
  s.Header().SetText("Title");
  testing::Saddle(s.DataSets().Item(0));
  EXPECT_EQ(c.Frames(), 0);
  EXPECT_EQ(c.host.RepaintRequests(), 0);
  s.Refresh();
  EXPECT_EQ(c.Frames(), 1);
  EXPECT_EQ(c.host.RepaintRequests(), 1);
  EXPECT_EQ(c.Image().Pixel(0, 0), 0x102030u);

  s.SetAutoRefresh(true);  // the let itself refreshes
  EXPECT_EQ(c.Frames(), 2);
  const std::vector<std::function<void()>> lets = {
      [&] { s.SetBackColor(0x203040); },
      [&] { s.SetForeColor(0x0000FF); },
      [&] { s.SetZoom(1.2); },
      [&] { s.SetOffsetHorizontal(0.1); },
      [&] { s.SetRotationX(70); },
      [&] { s.SetLightingIntensityAmbient(0.3); },
      [&] { s.SetPlotType(orvPlotType2D); },
      [&] { s.Header().SetText("Caption"); },
      [&] { s.Legend().SetVisible(false); },
      [&] { s.Cursor().SetXValue(0.5); },
      [&] { s.Contouring().SetColorMapType(orvColorMapBlueRed); },
      [&] { s.DataSets().Item(0).ViewTop().SetVisible(false); },
  };
  for (std::size_t k = 0; k < lets.size(); ++k) EXPECT_EQ(Drawn(lets[k]), 1) << "let " << k;
  EXPECT_EQ(c.Image().Pixel(0, 0), 0x203040u);
}

TEST_F(SurfaceRefresh, AFacesMasterLetRedrawsOnceAfterItsRelayedChanges) {
  s.SetAutoRefresh(true);
  c.host.ClearRecords();
  EXPECT_EQ(Drawn([&] { s.Faces().SetFillColorMaster(0x00FF00); }), 1);
  EXPECT_EQ(c.Keys(), (std::vector<std::string>{"XYFace.FillColor", "XZFace.FillColor", "YZFace.FillColor",
                                                "FillColorMaster"}));
  EXPECT_EQ(Drawn([&] { s.Faces().MajorGridLineMaster().SetWidth(2); }), 1);  // a master line relays the same way
  EXPECT_EQ(Drawn([&] { s.Faces().XYFace().SetFillVisible(false); }), 0);     // ignored under the masters
  EXPECT_EQ(Drawn([&] { s.Faces().SetUseMasterProperties(false); }), 1);
  EXPECT_EQ(Drawn([&] { s.Faces().XYFace().SetFillColor(0x0000FF); }), 1);  // a face of its own redraws by itself
}

TEST_F(SurfaceRefresh, AtDesignTimeOnlyThePaintRequestDraws) {
  c.host.SetUserMode(false);
  s.SetAutoRefresh(true);
  s.SetBackColor(0x00FF00);
  s.Header().SetText("Designing");
  testing::Saddle(s.DataSets().Item(0));
  EXPECT_EQ(c.Frames(), 0);
  ImageDC window(120, 90);
  s.OnPaint(window);
  EXPECT_EQ(c.Frames(), 1);  // the resize left the picture out of date
  EXPECT_EQ(window.Pixel(0, 0), 0x00FF00u);
  s.OnPaint(window);
  EXPECT_EQ(c.Frames(), 1);  // nothing new: the picture is only copied
}

TEST_F(SurfaceRefresh, ACursorChangeReplaysTheListWhileContouringAndLightingRebuildIt) {
  testing::Scatter(s.DataSets().Item(0));
  s.SetAutoRefresh(true);
  const detail::DataSetState& data = detail::DataSetAccess::State(s.DataSets().Item(0));
  const std::int64_t frames = c.Frames();
  const std::int64_t builds = c.MainListBuilds();
  EXPECT_FALSE(c.State().marks.geometry);
  EXPECT_FALSE(c.State().marks.contours);

  s.Cursor().SetVisible(true);
  s.Cursor().SetXValue(1.0);
  EXPECT_EQ(c.Frames(), frames + 2);
  // Anything recalculated would have marked the list stale: it is replayed as it was.
  EXPECT_EQ(c.MainListBuilds(), builds);
  EXPECT_FALSE(c.State().marks.geometry);
  EXPECT_FALSE(c.State().marks.contours);
  EXPECT_FALSE(data.needsRebuild);
  EXPECT_FALSE(data.contoursStale);

  // A contouring change, by contrast, derives the levels again and rebuilds the list.
  EXPECT_EQ(Drawn([&] { s.Contouring().SetAutoSetIntervalCount(4); }), 1);
  EXPECT_EQ(c.MainListBuilds(), builds + 1);
  EXPECT_EQ(s.Contouring().Contours().Count(), 5);
  // LightingOn never refreshes by itself, but its next frame rebuilds the list too.
  EXPECT_EQ(Drawn([&] { s.SetLightingOn(true); }), 0);
  EXPECT_EQ(Drawn([&] { s.Refresh(); }), 1);
  EXPECT_EQ(c.MainListBuilds(), builds + 2);
}

TEST_F(SurfaceRefresh, RefreshFollowsTheDataWithTheAxesAndTheLevels) {
  testing::Saddle(s.DataSets().Item(0));
  s.Axes().ZAxis().SetAutoRangeType(orvAutoRangeExact);
  s.Refresh();
  EXPECT_EQ(s.Axes().ZAxis().Min(), 0.0);
  EXPECT_EQ(s.Axes().ZAxis().Max(), 1.0);
  // Ten intervals over the Z axis's range: eleven levels from 0.
  ASSERT_EQ(s.Contouring().Contours().Count(), 11);
  EXPECT_EQ(s.Contouring().Contours().Item(0)->Value(), 0.0);
  EXPECT_NEAR(s.Contouring().Contours().Item(10)->Value(), 1.0, 1e-12);
  EXPECT_GT(testing::CountNot(c.Image(), kWhite), 500);
}

TEST_F(SurfaceRefresh, AnAxisMinimumAboveItsMaximumRaisesOnRefreshWithTheAxisLetter) {
  testing::Saddle(s.DataSets().Item(0));
  s.Refresh();
  const std::vector<std::uint8_t> picture = c.Image().bits;
  const std::int64_t frames = c.Frames();

  s.Axes().YAxis().SetAutoRangeType(orvAutoRangeOff);
  s.Axes().YAxis().SetMin(2.0);
  s.Axes().YAxis().SetMax(1.0);
  c.host.SetMousePointer(3);
  c.host.ClearRecords();
  EXPECT_ORVANE_ERROR(s.Refresh(), -2147221303, "Orvada.Surface", "Y Axis minimum is greater than maximum");
  EXPECT_EQ(c.Frames(), frames);
  EXPECT_EQ(c.Image().bits, picture);
  // The wait pointer came and went although the refresh failed, and gave back the one shown.
  EXPECT_EQ(c.host.PointerChanges(), (std::vector<std::int32_t>{kPointerHourglass, 3}));
  EXPECT_EQ(c.host.MousePointer(), 3);
  // Still stale: the next refresh meets the same limits.
  EXPECT_ORVANE_ERROR(s.Refresh(), -2147221303, "Orvada.Surface", "Y Axis minimum is greater than maximum");

  // X is checked before Z.
  s.Axes().YAxis().SetMax(3.0);
  for (Axis* axis : {&s.Axes().ZAxis(), &s.Axes().XAxis()}) {
    axis->SetAutoRangeType(orvAutoRangeOff);
    axis->SetMin(5.0);
    axis->SetMax(4.0);
  }
  EXPECT_ORVANE_ERROR(s.Refresh(), -2147221303, "Orvada.Surface", "X Axis minimum is greater than maximum");
  s.Axes().XAxis().SetMax(6.0);
  EXPECT_ORVANE_ERROR(s.Refresh(), -2147221303, "Orvada.Surface", "Z Axis minimum is greater than maximum");
  s.Axes().ZAxis().SetMax(6.0);
  s.Refresh();
  EXPECT_EQ(c.Frames(), frames + 1);
}

TEST_F(SurfaceRefresh, AnAutoRefreshThatFailsStillTellsTheHostOfTheChange) {
  s.SetAutoRefresh(true);
  s.Axes().XAxis().SetAutoRangeType(orvAutoRangeOff);  // 0 to 0 without data
  c.host.ClearRecords();
  EXPECT_ORVANE_ERROR(s.Axes().XAxis().SetMin(0.5), -2147221303, "Orvada.Surface",
                      "X Axis minimum is greater than maximum");
  EXPECT_EQ(s.Axes().XAxis().Min(), 0.5);
  EXPECT_EQ(c.Keys(), std::vector<std::string>{"Min"});
  EXPECT_EQ(c.host.MousePointer(), kPointerDefault);
}

TEST_F(SurfaceRefresh, ResamplingReportsProgressAndAStopFromTheHostEndsWithError18KeepingPictureAndData) {
  testing::Scatter(s.DataSets().Item(0), 20);
  s.DataSets().Item(0).Resampling().SetResamplerType(orvResamplerTypeInverseDistance);
  s.DataSets().Item(0).Resampling().SetIntervalCount(60);
  s.Refresh();
  const std::vector<double>& reports = c.host.ProgressReports();
  ASSERT_FALSE(reports.empty());
  EXPECT_TRUE(std::is_sorted(reports.begin(), reports.end()));
  EXPECT_GT(reports.front(), 0.0);
  EXPECT_LE(reports.back(), 1.0);
  const detail::DataSetState& data = detail::DataSetAccess::State(s.DataSets().Item(0));
  ASSERT_EQ(data.gridX.size(), 61u);
  const std::vector<double> meshZ = data.meshZ;
  const std::vector<std::uint8_t> picture = c.Image().bits;
  const std::int64_t frames = c.Frames();
  const double zMax = s.Axes().ZAxis().Max();

  s.DataSets().Item(0).Resampling().SetIntervalCount(80);
  int asked = 0;
  c.host.SetProgressHandler([&asked](double) {
    ++asked;
    return false;
  });
  c.host.ClearRecords();
  EXPECT_ORVANE_ERROR(s.Refresh(), 18, "IInterpolator", "The resampling was interrupted.");
  EXPECT_EQ(asked, 1);  // the run stops at the first answer
  EXPECT_EQ(data.gridX.size(), 61u);
  EXPECT_EQ(data.meshZ, meshZ);
  EXPECT_EQ(c.Frames(), frames);
  EXPECT_EQ(c.Image().bits, picture);
  EXPECT_EQ(s.Axes().ZAxis().Max(), zMax);
  EXPECT_EQ(c.host.MousePointer(), kPointerDefault);

  // A paint that recalculates (the header's font changed) keeps the same stop to itself
  // and shows the last picture.
  s.Header().Font().SetItalic(true);
  ImageDC window(120, 90);
  s.OnPaint(window);
  EXPECT_EQ(asked, 2);
  EXPECT_NE(c.State().lastPaintError.find("interrupted"), std::string::npos);
  EXPECT_EQ(c.Frames(), frames);
  for (const auto& [x, y] : {std::pair{0, 0}, std::pair{60, 45}, std::pair{119, 89}, std::pair{30, 70}}) {
    EXPECT_EQ(window.Pixel(x, y), c.Image().Pixel(x, y)) << x << ", " << y;
  }

  // Once the host lets it run, the new grid arrives.
  c.host.SetProgressHandler({});
  s.Refresh();
  EXPECT_EQ(data.gridX.size(), 81u);
  EXPECT_GT(c.Frames(), frames);
}

TEST_F(SurfaceRefresh, TheLimitsARebuildHandsToItsResamplingStartNoRefreshOfTheirOwn) {
  s.SetAutoRefresh(true);
  const std::int64_t frames = c.Frames();
  DataSet& data = s.DataSets().Item(0);
  testing::Scatter(data, 8);
  data.Resampling().SetResamplerType(orvResamplerTypeInverseDistance);
  EXPECT_EQ(c.Frames(), frames + 3);  // clear, new data, resampler: one refresh each
  // Reading the resampled grid rebuilds the mesh outside a refresh: its limits come up
  // to the host and mark the data stale, and nothing draws.
  data.Resampling().SetIntervalCount(7);
  c.host.ClearRecords();
  c.State().marks.geometry = false;
  detail::DataSetAccess::State(data).needsRebuild = true;
  Array x, y;
  Array2D z;
  std::int32_t nx = 0, ny = 0;
  EXPECT_EQ(Drawn([&] { data.ResampledDataAsRectangularGridGet(x, nx, y, ny, z); }), 0);
  EXPECT_EQ(c.Keys(), std::vector<std::string>{"DataSet1.Resampling.Limits"});
  EXPECT_TRUE(c.State().marks.geometry);
}

TEST_F(SurfaceRefresh, ResetClearsTheDataAndDrawsTheEmptyControl) {
  s.DataSets().SetCount(2);
  testing::Saddle(s.DataSets().Item(1));
  s.SetBackColor(0x0000FF);
  s.Refresh();
  s.Reset();
  EXPECT_EQ(s.DataSets().Count(), 1);
  EXPECT_EQ(s.BackColor(), kWhite);
  // The empty cube: white faces with black grids, edges, axes and labels (greys at the
  // glyphs' edges), and no colour of the data or of the old background.
  const auto& image = c.Image();
  int other = 0;
  for (int y = 0; y < image.header.biHeight; ++y) {
    for (int x = 0; x < image.header.biWidth; ++x) {
      const Color p = image.Pixel(x, y);
      other += (p & 0xFF) != ((p >> 8) & 0xFF) || (p & 0xFF) != ((p >> 16) & 0xFF);  // not a grey
    }
  }
  EXPECT_EQ(other, 0);
  EXPECT_GT(testing::CountOf(image, 0x000000), 100);
}

TEST_F(SurfaceRefresh, AResizeDrawsAtTheNewSizeOnTheNextPaint) {
  s.SetBackColor(0x336699);
  s.Refresh();
  EXPECT_ORVANE_ERROR(s.OnResize(-1, 10), 5, "Orvada.Surface");
  EXPECT_EQ(c.Image().header.biWidth, 120);
  s.OnResize(64, 40);
  ImageDC window(64, 40);
  EXPECT_EQ(Drawn([&] { s.OnPaint(window); }), 1);
  EXPECT_EQ(c.Image().header.biWidth, 64);
  EXPECT_EQ(c.Image().header.biHeight, 40);
  EXPECT_EQ(window.Pixel(63, 39), 0x336699u);
}

}  // namespace
}  // namespace orvane
