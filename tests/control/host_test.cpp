// The headless host and the pointer guard.

#include <gtest/gtest.h>

#include <stdexcept>
#include <vector>

#include "control/mouse_pointer.h"
#include "orvane/host/headless_host.h"

namespace orvane {
namespace {

TEST(HeadlessHost, StartsInUserModeWithAPlainWindowAndRefusesTheClipboard) {
  HeadlessHost host;
  EXPECT_TRUE(host.UserMode());
  EXPECT_TRUE(host.Enabled());
  EXPECT_EQ(host.BorderStyle(), orvNone);
  EXPECT_EQ(host.Appearance(), orvFlat);
  EXPECT_EQ(host.MousePointer(), kPointerDefault);
  EXPECT_FALSE(host.SetClipboardBitmap(std::vector<std::uint8_t>(46, 1)));
  EXPECT_TRUE(host.ReportProgress(0.5));
  host.SetUserMode(false);
  EXPECT_FALSE(host.UserMode());
}

TEST(HeadlessHost, RecordsKeysPointersAndProgressUntilCleared) {
  HeadlessHost host;
  host.PropertyChanged("Zoom");
  host.PropertyChanged("DataSet2");
  host.SetMousePointer(kPointerHourglass);
  host.SetMousePointer(kPointerDefault);
  std::vector<double> asked;
  host.SetProgressHandler([&asked](double f) {
    asked.push_back(f);
    return f < 0.5;
  });
  EXPECT_TRUE(host.ReportProgress(0.25));
  EXPECT_FALSE(host.ReportProgress(0.75));
  host.RequestRepaint();
  EXPECT_EQ(host.NotifiedKeys(), (std::vector<std::string>{"Zoom", "DataSet2"}));
  EXPECT_EQ(host.PointerChanges(), (std::vector<std::int32_t>{11, 0}));
  EXPECT_EQ(host.ProgressReports(), (std::vector<double>{0.25, 0.75}));
  EXPECT_EQ(asked, host.ProgressReports());
  EXPECT_EQ(host.RepaintRequests(), 1);
  host.ClearRecords();
  EXPECT_TRUE(host.NotifiedKeys().empty());
  EXPECT_TRUE(host.PointerChanges().empty());
  EXPECT_TRUE(host.ProgressReports().empty());
  EXPECT_EQ(host.RepaintRequests(), 0);
  EXPECT_EQ(host.MousePointer(), kPointerDefault);  // the window keeps its state
}

TEST(MousePointer, ShowsItsShapeAndPutsTheOldOneBackWhenAnErrorLeavesTheScope) {
  HeadlessHost host;
  host.SetMousePointer(2);
  host.ClearRecords();
  try {
    const detail::CMousePointer wait(host, kPointerHourglass);
    EXPECT_EQ(host.MousePointer(), kPointerHourglass);
    throw std::runtime_error("work failed");
  } catch (const std::runtime_error&) {
  }
  EXPECT_EQ(host.MousePointer(), 2);
  EXPECT_EQ(host.PointerChanges(), (std::vector<std::int32_t>{11, 2}));
}

}  // namespace
}  // namespace orvane
