#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include "orvane/core/property_bag.h"
#include "support/expect_error.h"

namespace orvane {
namespace {

using Bytes = std::vector<std::uint8_t>;

PropertyBag EveryType() {
  PropertyBag bag;
  bag.WriteProperty("Long", std::int32_t{-2147483647 - 1});
  bag.WriteProperty("LongMax", std::int32_t{2147483647});
  bag.WriteProperty("Integer", std::int16_t{-32768});
  bag.WriteProperty("IntegerMax", std::int16_t{32767});
  bag.WriteProperty("True", true);
  bag.WriteProperty("False", false);
  bag.WriteProperty("Double", 0.1);
  bag.WriteProperty("Tiny", 4.9406564584124654e-324);
  bag.WriteProperty("Huge", -1.7976931348623157e308);
  bag.WriteProperty("NegativeZero", -0.0);
  bag.WriteProperty("String", std::string("Z = f(X, Y) \xC2\xB0"));
  bag.WriteProperty("Empty", std::string());
  bag.WriteProperty("Currency", Currency{82500});
  bag.WriteProperty("CurrencyMin", Currency{std::numeric_limits<std::int64_t>::min()});
  bag.WriteProperty("Array", std::vector<double>{1.5, -0.0, 1e-310, -1.7976931348623157e308});
  bag.WriteProperty("EmptyArray", std::vector<double>{});
  return bag;
}

PropertyBag RoundTrip(const PropertyBag& bag) {
  PropertyBag copy;
  copy.SetContents(bag.Contents());
  return copy;
}

TEST(PropertyBag, EveryTypeRoundTripsExactlyThroughContents) {
  const PropertyBag bag = EveryType();
  const PropertyBag copy = RoundTrip(bag);
  ASSERT_EQ(copy.Count(), bag.Count());
  for (std::size_t i = 0; i < bag.Count(); ++i) {
    EXPECT_EQ(copy.Items()[i].first, bag.Items()[i].first);
    EXPECT_EQ(copy.Items()[i].second.index(), bag.Items()[i].second.index()) << i;
    EXPECT_EQ(copy.Items()[i].second, bag.Items()[i].second) << bag.Items()[i].first;
  }
  EXPECT_TRUE(std::signbit(copy.ReadProperty("NegativeZero", 1.0)));
  EXPECT_EQ(copy.TypeOf("Integer"), PropertyType::Integer);
  EXPECT_EQ(copy.TypeOf("Currency"), PropertyType::Currency);
  EXPECT_EQ(copy.TypeOf("Missing"), std::nullopt);
  EXPECT_EQ(RoundTrip(copy).Contents(), bag.Contents());
}

TEST(PropertyBag, NonFiniteDoublesRoundTrip) {
  PropertyBag bag;
  bag.WriteProperty("NaN", std::nan(""));
  bag.WriteProperty("Inf", std::numeric_limits<double>::infinity());
  const PropertyBag copy = RoundTrip(bag);
  EXPECT_TRUE(std::isnan(copy.ReadProperty("NaN", 0.0)));
  EXPECT_EQ(copy.ReadProperty("Inf", 0.0), std::numeric_limits<double>::infinity());
}

TEST(PropertyBag, KeysKeepTheOrderFirstWritten) {
  PropertyBag bag;
  bag.WriteProperty("B", std::int32_t{1});
  bag.WriteProperty("A", std::int32_t{2});
  bag.WriteProperty("B", std::string("again"));  // keeps its place, takes the new value
  const PropertyBag copy = RoundTrip(bag);
  ASSERT_EQ(copy.Count(), 2u);
  EXPECT_EQ(copy.Items()[0].first, "B");
  EXPECT_EQ(copy.ReadProperty("B", ""), "again");
  EXPECT_EQ(copy.Items()[1].first, "A");
}

TEST(PropertyBag, AbsentKeysGiveTheDefault) {
  const PropertyBag bag;
  EXPECT_EQ(bag.ReadProperty("X", std::int32_t{60}), 60);
  EXPECT_EQ(bag.ReadProperty("X", std::int16_t{400}), 400);
  EXPECT_EQ(bag.ReadProperty("X", true), true);
  EXPECT_EQ(bag.ReadProperty("X", 0.5), 0.5);
  EXPECT_EQ(bag.ReadProperty("X", "0.00"), "0.00");
  EXPECT_EQ(bag.ReadProperty("X", Currency{100000}), Currency{100000});
  PropertyBag cased;
  cased.WriteProperty("Zoom", 2.0);
  EXPECT_EQ(cased.ReadProperty("zoom", 1.0), 1.0);  // keys are exact
}

TEST(PropertyBag, NumbersConvertRoundingHalfToEven) {
  PropertyBag bag;
  bag.WriteProperty("D", 2.5);
  bag.WriteProperty("D2", 3.5);
  bag.WriteProperty("Neg", -2.5);
  bag.WriteProperty("L", std::int32_t{7});
  bag.WriteProperty("True", true);
  bag.WriteProperty("C", Currency{25000});  // 2.5
  bag.WriteProperty("C3", Currency{35000});
  for (const auto& [key, value] : {std::pair{"D", 2}, {"D2", 4}, {"True", -1}, {"C", 2}, {"C3", 4}}) {
    EXPECT_EQ(bag.ReadProperty(key, std::int32_t{0}), value) << key;
  }
  for (const auto& [key, text] : {std::pair{"L", "7"}, {"True", "True"}, {"C", "2.5"}, {"D", "2.5"}}) {
    EXPECT_EQ(bag.ReadProperty(key, ""), text) << key;
  }
  EXPECT_EQ(bag.ReadProperty("Neg", std::int16_t{0}), -2);
  EXPECT_EQ(bag.ReadProperty("L", 0.0), 7.0);
  EXPECT_EQ(bag.ReadProperty("L", Currency{}), Currency{70000});
  EXPECT_EQ(bag.ReadProperty("L", false), true);
  EXPECT_EQ(bag.ReadProperty("C", 0.0), 2.5);
  EXPECT_EQ(bag.ReadProperty("D", Currency{}), Currency{25000});
}

TEST(PropertyBag, StringsConvertWhenTheyHoldANumberOrABoolean) {
  PropertyBag bag;
  bag.WriteProperty("N", std::string(" 12.5 "));
  bag.WriteProperty("T", std::string("true"));
  bag.WriteProperty("F", std::string("False"));
  bag.WriteProperty("E", std::string("-1e3"));
  EXPECT_EQ(bag.ReadProperty("N", 0.0), 12.5);
  EXPECT_EQ(bag.ReadProperty("N", std::int32_t{0}), 12);
  EXPECT_EQ(bag.ReadProperty("T", false), true);
  EXPECT_EQ(bag.ReadProperty("F", true), false);
  EXPECT_EQ(bag.ReadProperty("T", std::int32_t{0}), -1);
  EXPECT_EQ(bag.ReadProperty("E", std::int16_t{0}), -1000);
}

TEST(PropertyBag, UnconvertibleValuesRaiseTypeMismatch) {
  PropertyBag bag;
  bag.WriteProperty("Name", std::string("Arial"));
  bag.WriteProperty("Blank", std::string());
  EXPECT_ORVANE_ERROR(bag.ReadProperty("Name", std::int32_t{0}), 13, "PropertyBag",
                      "Type mismatch: property \"Name\" holds the String \"Arial\", which "
                      "cannot be read as a Long.");
  EXPECT_ORVANE_ERROR(bag.ReadProperty("Name", 0.0), 13, "PropertyBag");
  EXPECT_ORVANE_ERROR(bag.ReadProperty("Name", false), 13, "PropertyBag");
  EXPECT_ORVANE_ERROR(bag.ReadProperty("Name", Currency{}), 13, "PropertyBag");
  EXPECT_ORVANE_ERROR(bag.ReadProperty("Blank", std::int16_t{0}), 13, "PropertyBag");
}

TEST(PropertyBag, OutOfRangeValuesRaiseOverflow) {
  PropertyBag bag;
  bag.WriteProperty("Big", std::int32_t{40000});
  bag.WriteProperty("Huge", 3e9);
  bag.WriteProperty("NaN", std::nan(""));
  bag.WriteProperty("Inf", std::numeric_limits<double>::infinity());
  bag.WriteProperty("C", Currency{std::numeric_limits<std::int64_t>::max()});
  EXPECT_ORVANE_ERROR(bag.ReadProperty("Big", std::int16_t{0}), 6, "PropertyBag",
                      "Overflow: property \"Big\" holds 40000, which does not fit a Integer.");
  EXPECT_ORVANE_ERROR(bag.ReadProperty("Huge", std::int32_t{0}), 6, "PropertyBag");
  EXPECT_ORVANE_ERROR(bag.ReadProperty("NaN", std::int32_t{0}), 6, "PropertyBag");
  EXPECT_ORVANE_ERROR(bag.ReadProperty("Inf", Currency{}), 6, "PropertyBag");
  EXPECT_ORVANE_ERROR(bag.ReadProperty("C", std::int32_t{0}), 6, "PropertyBag");
  EXPECT_EQ(bag.ReadProperty("Big", std::int32_t{0}), 40000);
}

// A bag with some content, to check that failed reads leave it as it was.
PropertyBag Sentinel() {
  PropertyBag bag;
  bag.WriteProperty("Keep", std::int32_t{42});
  return bag;
}

void ExpectRefused(const Bytes& bytes) {
  PropertyBag bag = Sentinel();
  try {
    bag.SetContents(bytes);
    ADD_FAILURE() << "accepted " << bytes.size() << " bytes";
  } catch (const Error& e) {
    EXPECT_EQ(e.Number(), 5);
    EXPECT_EQ(e.Source(), "PropertyBag");
    EXPECT_EQ(e.Description().rfind("The property bag contents cannot be read: ", 0), 0u)
        << e.Description();
  }
  EXPECT_EQ(bag.Count(), 1u);
  EXPECT_EQ(bag.ReadProperty("Keep", std::int32_t{0}), 42);
}

TEST(PropertyBag, EveryTruncationIsRefusedAndLeavesTheBagIntact) {
  const Bytes good = EveryType().Contents();
  for (std::size_t n = 0; n < good.size(); ++n) {
    ExpectRefused(Bytes(good.begin(), good.begin() + static_cast<long>(n)));
  }
}

TEST(PropertyBag, ForeignLayoutsAreRefused) {
  Bytes trailing = EveryType().Contents();
  trailing.push_back(0x00);
  ExpectRefused(trailing);
  ExpectRefused({0xA0});                    // an empty map
  ExpectRefused({0x80});                    // an empty array without the header
  ExpectRefused({0x82, 0x61, 'X', 0x01});   // wrong header text
  // A bag's bytes with its first byte (the array header) replaced and one entry more.
  const auto plus = [](Bytes bytes, std::uint8_t first, const Bytes& entry) {
    bytes[0] = first;
    bytes.insert(bytes.end(), entry.begin(), entry.end());
    return bytes;
  };
  const Bytes header = PropertyBag().Contents();
  ASSERT_EQ(header[0], 0x82);
  ExpectRefused(plus(header, 0x85, {0x61, 'K', 0x09, 0x01}));  // a type code beyond Currency
  ExpectRefused(plus(header, 0x85, {0x61, 'K', 0x00, 0xF5}));  // a Long holding a Boolean value
  PropertyBag once;
  once.WriteProperty("K", std::int32_t{1});
  ExpectRefused(plus(once.Contents(), 0x88, {0x61, 'K', 0x00, 0x02}));  // the same key twice
  // An Integer beyond 16 bits.
  PropertyBag small;
  small.WriteProperty("I", std::int16_t{1});
  Bytes wide = small.Contents();
  wide.back() = 0x19;  // uint16 follows
  wide.push_back(0xFF);
  wide.push_back(0xFF);
  ExpectRefused(wide);
}

TEST(PropertyBag, HostileBytesNeitherRecurseNorAllocate) {
  ExpectRefused(Bytes(200000, 0x81));  // arrays nested 200,000 deep
  ExpectRefused(Bytes(200000, 0xA1));  // maps nested likewise
  // An array and a string that claim 2^63 elements but end at once.
  ExpectRefused({0x9B, 0x7F, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF});
  ExpectRefused({0x83, 0x7B, 0x7F, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF});
}

TEST(PropertyBag, DoubleArraysAreExactAndReadOnlyAsArrays) {
  PropertyBag bag;
  std::vector<double> values(10000);
  for (std::size_t i = 0; i < values.size(); ++i) values[i] = std::sin(static_cast<double>(i)) * 1e7;
  bag.WriteProperty("X", values);
  const PropertyBag copy = RoundTrip(bag);
  EXPECT_EQ(copy.ReadProperty("X", std::vector<double>{}), values);
  EXPECT_EQ(copy.ReadProperty("Missing", std::vector<double>{7}), std::vector<double>{7});
  EXPECT_ORVANE_ERROR(copy.ReadProperty("X", 0.0), 13, "PropertyBag");
  EXPECT_ORVANE_ERROR(copy.ReadProperty("X", ""), 13, "PropertyBag");
  PropertyBag scalar;
  scalar.WriteProperty("S", 1.0);
  EXPECT_ORVANE_ERROR(scalar.ReadProperty("S", std::vector<double>{}), 13, "PropertyBag",
                      "Type mismatch: property \"S\" holds the Double \"1\", which cannot be "
                      "read as a DoubleArray.");
  // A byte string that is not a whole number of doubles.
  PropertyBag one;
  one.WriteProperty("A", std::vector<double>{2.0});
  Bytes partial = one.Contents();
  ASSERT_EQ(partial[partial.size() - 9], 0x48);  // byte string of 8
  partial[partial.size() - 9] = 0x47;
  partial.pop_back();
  ExpectRefused(partial);
}

TEST(PropertyBag, EmptyBagRoundTrips) {
  PropertyBag bag = Sentinel();
  bag.SetContents(PropertyBag().Contents());
  EXPECT_EQ(bag.Count(), 0u);
  bag.WriteProperty("New", 1.0);
  bag.Clear();
  EXPECT_FALSE(bag.Contains("New"));
}

}  // namespace
}  // namespace orvane
