#include <gtest/gtest.h>

#include "orvane/contour/color_map.h"
#include "orvane/core/property_bag.h"
#include "support/event_recorder.h"
#include "support/expect_error.h"

namespace orvane {
namespace {

using testing::EventRecorder;

TEST(NamedColors, ValuesAreRedPlus256GreenPlus65536Blue) {
  EXPECT_EQ(orvColorRed, 0x0000FF);
  // Each against its web hex #RRGGBB.
  const std::pair<std::int32_t, std::uint32_t> colors[] = {
      {orvColorAliceBlue, 0xF0F8FF},  {orvColorBlack, 0x000000},    {orvColorWhite, 0xFFFFFF},
      {orvColorDarkorange, 0xFF8C00}, {orvColorFeldspar, 0xD19275}, {orvColorLightSlateBlue, 0x8470FF},
      {orvColorVioletRed, 0xD02090},  {orvColorYellowGreen, 0x9ACD32},
      // Deliberately not the usual web values, #9370DB and #DB7093.
      {orvColorMediumPurple, 0x9370D8}, {orvColorPaleVioletRed, 0xD87093}};
  for (const auto& [value, web] : colors) EXPECT_EQ(value, static_cast<std::int32_t>(FromHexRgb(web))) << std::hex << web;
}

TEST(ColorMap, OrderedInsertionReplacesAnEqualValue) {
  ColorMap map;
  EventRecorder events(map.PropertyChanged);
  const auto middle = map.Add(0.5, orvColorRed);
  EXPECT_EQ(map.Count(), 3);
  EXPECT_EQ(map.Item(1), middle);
  const auto old = map.Item(2);
  const auto replacement = map.Add(1.0, orvColorBlue);
  EXPECT_EQ(map.Count(), 3);
  EXPECT_EQ(map.Item(2), replacement);
  EXPECT_NE(map.Item(2), old);
  EXPECT_EQ(old->Color(), FromHexRgb(0xF5F5F5));  // still valid for its holder
  map.Add(-1.0, 0);
  EXPECT_EQ(map.Item(0)->Value(), -1.0);
  EXPECT_EQ(events.names, (std::vector<std::string>{"Count", "Count", "Count"}));
}

TEST(ColorMap, RemoveAndRemoveAll) {
  ColorMap map;
  EventRecorder events(map.PropertyChanged);
  EXPECT_ORVANE_ERROR(map.Remove(2), 9, "Orvada.ColorMap", "Subscript out of range");
  EXPECT_ORVANE_ERROR(map.Item(-1), 9, "Orvada.ColorMap");
  map.Remove(0);
  EXPECT_EQ(map.Count(), 1);
  EXPECT_EQ(map.Item(0)->Value(), 1.0);
  map.Remove(0);  // the last stop may go: an empty map
  EXPECT_EQ(map.Count(), 0);
  map.RemoveAll();
  EXPECT_EQ(events.names.size(), 3u);
  EXPECT_EQ(map.Sample(0.5), std::nullopt);
}

TEST(ColorMap, SamplingBetweenStopsRoundsHalfToEven) {
  ColorMap map;
  map.RemoveAll();
  map.Add(0.0, Rgb(0, 0, 0));
  map.Add(1.0, Rgb(255, 1, 3));
  EXPECT_EQ(map.Sample(0.5), Rgb(128, 0, 2));  // 127.5 -> 128, 0.5 -> 0, 1.5 -> 2
  EXPECT_EQ(map.Sample(0.0), Rgb(0, 0, 0));
  EXPECT_EQ(map.Sample(1.0), Rgb(255, 1, 3));
  EXPECT_EQ(map.Sample(1.5), std::nullopt);  // no stop reaches beyond 1
  // One stop: nothing can be sampled.
  map.Remove(1);
  EXPECT_EQ(map.Sample(0.0), std::nullopt);
}

TEST(ColorMap, StripesRaiseTheirNames) {
  ColorMap map;
  EXPECT_EQ(map.StripeColor(), 0u);
  EventRecorder events(map.PropertyChanged);
  map.SetIsStriped(true);
  map.SetIsStriped(true);
  map.SetStripeColor(orvColorWhiteSmoke);
  EXPECT_EQ(events.names, (std::vector<std::string>{"IsStriped", "StripeColor"}));
}

TEST(ColorMap, PersistedStopsComeBackInStoredOrder) {
  ColorMap map;
  map.Add(0.25, orvColorGold)->SetColorBelow(orvColorNavy);
  PropertyBag bag;
  map.WriteProperties(bag, "Map.");
  EXPECT_EQ(bag.ReadProperty("Map.Count", std::int32_t{0}), 3);
  EXPECT_EQ(bag.ReadProperty("Map.Color1.Value", 0.0), 0.25);
  EXPECT_EQ(bag.ReadProperty("Map.Color1.ColorBelow", std::int32_t{0}), orvColorNavy);
  ColorMap copy;
  copy.ReadProperties(bag, "Map.");
  ASSERT_EQ(copy.Count(), 3);
  EXPECT_EQ(copy.Item(1)->Color(), static_cast<Color>(orvColorGold));
  EXPECT_EQ(copy.Item(1)->ColorBelow(), static_cast<Color>(orvColorNavy));
  // Stored out of order, they stay so.
  PropertyBag unsorted;
  unsorted.WriteProperty("M.Count", std::int32_t{2});
  unsorted.WriteProperty("M.Color0.Value", 0.9);
  unsorted.WriteProperty("M.Color1.Value", 0.1);
  copy.ReadProperties(unsorted, "M.");
  EXPECT_EQ(copy.Item(0)->Value(), 0.9);
  // Nothing stored: the fresh map. An absurd count changes nothing.
  copy.ReadProperties(PropertyBag(), "M.");
  EXPECT_EQ(copy.Count(), 2);
  EXPECT_EQ(copy.Item(0)->Color(), FromHexRgb(0xC0C0C0));
  PropertyBag absurd;
  absurd.WriteProperty("M.Count", std::int32_t{2000000000});
  EXPECT_ORVANE_ERROR(copy.ReadProperties(absurd, "M."), 5, "Orvada.ColorMap");
  EXPECT_EQ(copy.Count(), 2);
}

}  // namespace
}  // namespace orvane
