// The headless host: the property pages the control asks it for.

#include <gtest/gtest.h>

#include "orvane/control/surface.h"
#include "orvane/host/headless_host.h"

namespace orvane {
namespace {

TEST(HeadlessHost, PropertyPagesAreCountedWithTheControlAsked) {
  HeadlessHost host;
  Surface surface(host);
  surface.ShowPropertyPages({"Surface", "Axes"});
  EXPECT_EQ(host.PropertyPageRequests(), 1);
}

}  // namespace
}  // namespace orvane
