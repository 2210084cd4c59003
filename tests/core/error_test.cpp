#include <gtest/gtest.h>

#include "orvane/core/error.h"

namespace orvane {
namespace {

TEST(Error, StandardDescriptionsFillAnEmptyDescription) {
  const Error invalid(5, "Orvada.Line");
  EXPECT_EQ(invalid.Number(), 5);
  EXPECT_EQ(invalid.Source(), "Orvada.Line");
  EXPECT_EQ(invalid.Description(), "Invalid procedure call or argument");
  EXPECT_STREQ(invalid.what(), "Invalid procedure call or argument");
  EXPECT_EQ(Error(9, "Orvada").Description(), "Subscript out of range");
  EXPECT_EQ(Error(6, "Orvada").Description(), "Overflow");
  EXPECT_EQ(Error(13, "Orvada").Description(), "Type mismatch");
}

TEST(Error, GivenDescriptionWinsAndUnknownNumbersStayEmpty) {
  const Error e(5, "Orvadis.Dataset", "Count must be greater than 0.");
  EXPECT_EQ(e.Description(), "Count must be greater than 0.");
  EXPECT_STREQ(e.what(), "Count must be greater than 0.");
  EXPECT_EQ(Error(kObjectErrorBase + 200, "Orvadis.Dataset").Description(), "");
  EXPECT_EQ(kObjectErrorBase + 201, -2147221303);
}

}  // namespace
}  // namespace orvane
