#include <gtest/gtest.h>

#include <string>
#include <tuple>
#include <vector>

#include "core/property_table.h"
#include "orvane/core/error.h"
#include "orvane/core/event.h"
#include "orvane/core/property_bag.h"
#include "orvane/render/line.h"
#include "support/event_recorder.h"
#include "support/expect_error.h"

namespace orvane {
namespace {

using testing::EventRecorder;

enum Mode : std::int32_t { kModeA = 0, kModeB = 1 };

void CheckPositive(const double& value, const char* name) {
  if (!(value > 0.0)) throw Error(5, "Toy", std::string(name) + " must be above 0.");
}

// A small object with one property of each oddity the stored formats need.
struct Toy {
  bool ruled = false;           // while true, Flag's let is ignored
  std::vector<std::string> log;  // hook calls and events, in order
  bool flag = true;
  Color color = 0xFFFF;
  Mode mode = kModeA;
  double scale = 1.0;
  double bare = 0.0;
  double range = 1.0;
  std::string text;
  Line line;
  Event<const std::string&> PropertyChanged;
  Connection logEvents = PropertyChanged.Connect([this](const std::string& n) { log.push_back(n); });

  bool Ruled() const { return ruled; }
  void Hook() { log.push_back("hook"); }

  struct Properties;
};

struct Toy::Properties {
  template <class T>
  using P = detail::Property<Toy, T>;
  static constexpr auto kFlag = P<bool>{"Flag", &Toy::flag, true}.IgnoredWhile(&Toy::Ruled);
  static constexpr P<Color> kColor{"Color", &Toy::color, 0xFFFF};
  static constexpr auto kMode = P<Mode>{"Mode", &Toy::mode, kModeA}.Then(&Toy::Hook);
  static constexpr P<double> kScale{"Scale", &Toy::scale, 1.0, CheckPositive};
  static constexpr auto kBare = P<double>{"XValue", &Toy::bare, 0.0}.Bare();
  static constexpr auto kRange = P<double>{"Range", &Toy::range, 1.0}.ReadKey("1");
  static inline const auto kText = P<std::string>{"Text", &Toy::text, std::string()}.Key("Caption");
  static inline const auto kStored =
      std::tuple{kFlag, kColor, kMode, kScale, kBare, kRange, kText,
                 detail::SubObject<Toy, Line>{"Line.", &Toy::line}};
};

TEST(PropertyTable, LetComparesChecksStoresRunsTheHookThenRaises) {
  Toy toy;
  Toy::Properties::kMode.Let(toy, kModeA);
  Toy::Properties::kMode.Let(toy, kModeB);
  Toy::Properties::kFlag.Let(toy, false);
  toy.ruled = true;
  Toy::Properties::kFlag.Let(toy, true);  // ignored while ruled
  EXPECT_ORVANE_ERROR(Toy::Properties::kScale.Let(toy, -1.0), 5, "Toy", "Scale must be above 0.");
  EXPECT_EQ(toy.scale, 1.0);
  EXPECT_FALSE(toy.flag);
  EXPECT_EQ(toy.mode, kModeB);
  EXPECT_EQ(toy.log, (std::vector<std::string>{"hook", "Mode", "Flag"}));
}

TEST(PropertyTable, KeysPrefixesAndStoredTypes) {
  Toy toy;
  toy.color = 0x80000001u;
  toy.mode = kModeB;
  toy.text = "title";
  PropertyBag bag;
  detail::WriteAll(bag, "T.", toy, Toy::Properties::kStored);
  std::vector<std::string> keys;
  for (const auto& item : bag.Items()) keys.push_back(item.first);
  EXPECT_EQ(keys, (std::vector<std::string>{"T.Flag", "T.Color", "T.Mode", "T.Scale", "XValue",
                                            "T.Range", "T.Caption", "T.Line.Color",
                                            "T.Line.DrawStyle", "T.Line.Width"}));
  EXPECT_EQ(bag.TypeOf("T.Color"), PropertyType::Long);
  EXPECT_EQ(bag.TypeOf("T.Mode"), PropertyType::Long);
  EXPECT_EQ(bag.TypeOf("T.Caption"), PropertyType::String);

  // Range is read from "1", so what was written under "Range" does not come back.
  bag.WriteProperty("T.Range", 5.0);
  bag.WriteProperty("XValue", 2.5);
  Toy copy;
  copy.log.clear();
  detail::ReadAll(bag, "T.", copy, Toy::Properties::kStored);
  EXPECT_EQ(copy.color, 0x80000001u);
  EXPECT_EQ(copy.mode, kModeB);
  EXPECT_EQ(copy.bare, 2.5);
  EXPECT_EQ(copy.range, 1.0);
  EXPECT_EQ(copy.text, "title");
  EXPECT_EQ(copy.log, (std::vector<std::string>{"Color", "hook", "Mode", "XValue", "Text"}));
}

TEST(PropertyTable, ReadingChecksEverythingBeforeApplyingAnything) {
  Toy toy;
  PropertyBag bag;
  bag.WriteProperty("T.Flag", false);
  bag.WriteProperty("T.Mode", std::int32_t{1});
  bag.WriteProperty("T.Line.DrawStyle", std::int32_t{9});  // the sub-object is refused last
  EXPECT_ORVANE_ERROR(detail::ReadAll(bag, "T.", toy, Toy::Properties::kStored), 5, "Orvada.Line");
  bag.WriteProperty("T.Line.DrawStyle", std::int32_t{1});
  bag.WriteProperty("T.Scale", 0.0);
  EXPECT_ORVANE_ERROR(detail::ReadAll(bag, "T.", toy, Toy::Properties::kStored), 5, "Toy",
                      "Scale must be above 0.");
  EXPECT_TRUE(toy.flag);
  EXPECT_EQ(toy.mode, kModeA);
  EXPECT_EQ(toy.line.DrawStyle(), orvDrawStyleSolid);
  EXPECT_TRUE(toy.log.empty());
}

}  // namespace
}  // namespace orvane
