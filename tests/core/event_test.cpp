#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "orvane/core/event.h"

namespace orvane {
namespace {

TEST(Event, HandlersRunInConnectionOrderWithTheArguments) {
  Event<const std::string&, int> changed;
  std::vector<std::string> calls;
  Connection a = changed.Connect([&](const std::string& s, int n) { calls.push_back("a" + s + std::to_string(n)); });
  Connection b = changed.Connect([&](const std::string& s, int n) { calls.push_back("b" + s + std::to_string(n)); });
  Connection c = changed.Connect([&](const std::string& s, int n) { calls.push_back("c" + s + std::to_string(n)); });
  changed.Raise("Width", 1);
  changed.Raise("Color", 2);
  EXPECT_EQ(calls, (std::vector<std::string>{"aWidth1", "bWidth1", "cWidth1", "aColor2",
                                             "bColor2", "cColor2"}));
  EXPECT_EQ(changed.ConnectionCount(), 3u);
}

TEST(Event, ConnectionsDisconnectWhenDestroyedOrAsked) {
  Event<> fired;
  int a = 0;
  int b = 0;
  Connection keep = fired.Connect([&] { ++a; });
  {
    Connection scoped = fired.Connect([&] { ++b; });
    fired.Raise();
    EXPECT_TRUE(scoped.Connected());
  }
  fired.Raise();
  EXPECT_EQ(a, 2);
  EXPECT_EQ(b, 1);
  keep.Disconnect();
  keep.Disconnect();  // twice is harmless
  EXPECT_FALSE(keep.Connected());
  fired.Raise();
  EXPECT_EQ(a, 2);
  EXPECT_EQ(fired.ConnectionCount(), 0u);
}

TEST(Event, MovedConnectionKeepsTheHandler) {
  Event<int> fired;
  int sum = 0;
  Connection first = fired.Connect([&](int n) { sum += n; });
  Connection second = std::move(first);
  EXPECT_FALSE(first.Connected());  // NOLINT(bugprone-use-after-move)
  fired.Raise(5);
  EXPECT_EQ(sum, 5);
  Connection third;
  third = std::move(second);
  fired.Raise(1);
  EXPECT_EQ(sum, 6);
}

TEST(Event, DisconnectingALaterHandlerDuringARaiseSkipsIt) {
  Event<> fired;
  std::vector<int> calls;
  Connection second;
  Connection first = fired.Connect([&] {
    calls.push_back(1);
    second.Disconnect();
  });
  second = fired.Connect([&] { calls.push_back(2); });
  Connection third = fired.Connect([&] { calls.push_back(3); });
  fired.Raise();
  fired.Raise();
  EXPECT_EQ(calls, (std::vector<int>{1, 3, 1, 3}));
  EXPECT_EQ(fired.ConnectionCount(), 2u);
}

TEST(Event, HandlerConnectedDuringARaiseRunsFromTheNextRaise) {
  Event<> fired;
  std::vector<int> calls;
  std::vector<Connection> added;
  Connection first = fired.Connect([&] {
    calls.push_back(1);
    if (added.empty()) added.push_back(fired.Connect([&] { calls.push_back(2); }));
  });
  fired.Raise();
  fired.Raise();
  EXPECT_EQ(calls, (std::vector<int>{1, 1, 2}));
}

TEST(Event, ConnectionMayOutliveItsEventAndEventMayDieInsideAHandler) {
  Connection orphan;
  {
    Event<> fired;
    orphan = fired.Connect([] {});
  }
  EXPECT_FALSE(orphan.Connected());
  orphan.Disconnect();

  auto owner = std::make_unique<Event<>>();
  int calls = 0;
  Connection killer = owner->Connect([&] {
    ++calls;
    owner.reset();
  });
  Connection after = owner->Connect([&] { ++calls; });
  owner->Raise();
  EXPECT_EQ(calls, 2);
  EXPECT_EQ(owner, nullptr);
}

TEST(Event, AnExceptionFromAHandlerReachesTheRaiserAndLeavesTheEventUsable) {
  Event<int> fired;
  int seen = 0;
  Connection thrower = fired.Connect([](int n) {
    if (n == 1) throw std::runtime_error("bad");
  });
  Connection counter = fired.Connect([&](int) { ++seen; });
  EXPECT_THROW(fired.Raise(1), std::runtime_error);
  EXPECT_EQ(seen, 0);
  thrower.Disconnect();  // removed at once: no raise is in progress any more
  EXPECT_EQ(fired.ConnectionCount(), 1u);
  fired.Raise(2);
  EXPECT_EQ(seen, 1);
}

}  // namespace
}  // namespace orvane
