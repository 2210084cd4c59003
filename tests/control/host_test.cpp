// The headless host and the pointer guard.

#include <gtest/gtest.h>

#include <stdexcept>
#include <vector>

#include "control/mouse_pointer.h"
#include "orvane/control/surface.h"
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

TEST(HeadlessHost, PropertyPagesAreCountedWithTheControlAsked) {
  HeadlessHost host;
  Surface surface(host);
  surface.ShowPropertyPages({"Surface", "Axes"});
  EXPECT_EQ(host.PropertyPageRequests(), 1);
}

}  // namespace
}  // namespace orvane
