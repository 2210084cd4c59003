#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "orvane/core/format.h"

namespace orvane {
namespace {

struct FormatCase {
  double value;
  const char* pattern;
  const char* expected;
};

void ExpectTable(std::initializer_list<FormatCase> cases) {
  for (const FormatCase& c : cases) {
    EXPECT_EQ(FormatNumber(c.value, c.pattern), c.expected)
        << "FormatNumber(" << c.value << ", \"" << c.pattern << "\")";
  }
}

TEST(FormatNumber, FixedDecimals) {
  ExpectTable({
      {0, "0.00", "0.00"},
      {1234.5678, "0.00", "1234.57"},
      {-1234.5678, "0.00", "-1234.57"},
      {0.5, "0.00", "0.50"},
      {7, "0", "7"},
      {5, "00000", "00005"},
      {123456, "00", "123456"},
      {-0.25, "0.0", "-0.3"},
  });
}

TEST(FormatNumber, RoundsHalfAwayFromZeroAtFifteenSignificantDigits) {
  ExpectTable({
      {0.5, "0", "1"},
      {1.5, "0", "2"},
      {2.5, "0", "3"},
      {-2.5, "0", "-3"},
      {2.675, "0.00", "2.68"},  // the double lies below 2.675; 15 digits restore it
      {1.005, "0.00", "1.01"},
      {0.125, "0.00", "0.13"},
      {0.1 + 0.2, "0.0000000000000000", "0.3000000000000000"},
      {9.995, "0.00", "10.00"},
      {-999.999, "#,##0.00", "-1,000.00"},
  });
}

TEST(FormatNumber, ThousandsSeparatorsAndScaling) {
  ExpectTable({
      {1234.5678, "#,##0.0", "1,234.6"},
      {1234567.891, "#,##0.00", "1,234,567.89"},
      {-1234567.891, "#,##0.00", "-1,234,567.89"},
      {0.5, "#,##0.0", "0.5"},
      {999, "#,##0", "999"},
      {1234567, "#,#", "1,234,567"},
      {1234567, "#,##0,", "1,235"},
      {1234567, "0,,", "1"},
      {1234567, "#,##0,,.00", "1.23"},
      {1234.5, "$#,##0.00", "$1,234.50"},
  });
}

TEST(FormatNumber, HashesShowOnlySignificantDigits) {
  ExpectTable({
      {5, "#.##", "5"},
      {0.5, "#.##", ".5"},
      {0, "#.##", ""},
      {0, "#", ""},
      {0.4, "#", ""},
      {5, "#0.0#", "5.0"},
      {5.25, "#0.0#", "5.25"},
      {5.255, "#0.0#", "5.26"},
      {5.5, "0.#0", "5.50"},  // '#' left of a '0' in the fraction acts as '0'
      {5, "0#", "05"},        // '#' right of a '0' in the integer part acts as '0'
  });
}

TEST(FormatNumber, ScientificNotation) {
  ExpectTable({
      {12345.678, "0.00E+00", "1.23E+04"},
      {0.000123, "0.00E+00", "1.23E-04"},
      {0.000123, "0.00E-00", "1.23E-04"},
      {12345, "0.00E-00", "1.23E04"},
      {0, "0.00E+00", "0.00E+00"},
      {9.996, "0.00E+00", "1.00E+01"},
      {-12345, "0.0e+0", "-1.2e+4"},
      {12345, "00.00E+00", "12.35E+03"},
      {12345, "0.0E+#", "1.2E+4"},
      {1e300, "0.00E+00", "1.00E+300"},
      {4.9406564584124654e-324, "0.00E+00", "4.94E-324"},
  });
}

TEST(FormatNumber, PercentMultipliesByAHundred) {
  ExpectTable({
      {0.125, "0%", "13%"},
      {0.5, "0.0%", "50.0%"},
      {-0.0125, "0.00%", "-1.25%"},
      {12345.6, "#,##0%", "1,234,560%"},
      {5, "0\\%", "5%"},  // an escaped percent is only text
  });
}

TEST(FormatNumber, LiteralsQuotedEscapedAndUnknown) {
  ExpectTable({
      {5, "0 \"units\"", "5 units"},
      {5, "\"E+\"0", "E+5"},
      {1234, "00-00", "12-34"},
      {123456, "00-00", "1234-56"},
      {5, "Temp 0.0 C", "Temp 5.0 C"},
      {5, "(0)", "(5)"},
      {5, "abc", "abc"},
      {5, "0.0,0", "5.0,0"},  // after the point a comma is text
  });
}

TEST(FormatNumber, SectionsPositiveNegativeZero) {
  const char* three = "0.0;(0.0);\"zero\"";
  ExpectTable({
      {5, three, "5.0"},
      {-5, three, "(5.0)"},
      {0, three, "zero"},
      {-0.01, three, "zero"},  // rounds to zero in the negative section
      {0.01, three, "zero"},
      {0, "0.0;(0.0)", "0.0"},
      {-5, "0.0;(0.0)", "(5.0)"},
      {-5, "0.0;;\"zero\"", "-5.0"},  // an empty negative section: first section with minus
      {0, "0.0;(0.0);", "0.0"},       // an empty zero section: first section
      {-0.001, "0.00", "0.00"},       // no minus on a value shown as zero
      {-7, "0;0;0;0", "7"},           // a fourth section is text of the third
  });
}

TEST(FormatNumber, LargeValuesKeepEveryIntegerDigitAndNonFiniteOnesAreNamed) {
  ExpectTable({
      {1e20, "0", "100000000000000000000"},
      {1e20, "#,##0", "100,000,000,000,000,000,000"},
      {123456789012345678e3, "0", "123456789012346000000"},
      {-1.7976931348623157e308, "0.00E+00", "-1.80E+308"},
      {std::nan(""), "0.00", "NaN"},
      {std::numeric_limits<double>::infinity(), "0.00", "Infinity"},
      {-std::numeric_limits<double>::infinity(), "", "-Infinity"},
  });
  EXPECT_EQ(FormatNumber(1e300, "0.00").size(), 304u);
}

TEST(FormatNumber, GeneralAndNamedFormats) {
  ExpectTable({
      {1234.5, "", "1234.5"},
      {0, "", "0"},
      {-0.00001, "", "-0.00001"},
      {1e20, "", "1E+20"},
      {1.5e-7, "", "1.5E-07"},
      {0.1 + 0.2, "", "0.3"},
      {123456789012345.0, "", "123456789012345"},
      {1234.5, "General Number", "1234.5"},
      {1234.5, "Fixed", "1234.50"},
      {1234.5, "standard", "1,234.50"},
      {0.5, "Percent", "50.00%"},
      {1234.5, "Scientific", "1.23E+03"},
      {0, "Yes/No", "No"},
      {-2, "True/False", "True"},
      {1, "On/Off", "On"},
  });
}

TEST(LabelFormatFor, AsManyDecimalsAsTheValuesNeedAndScientificForTinyOrHuge) {
  using V = std::vector<double>;
  const auto format = [](const V& values) { return LabelFormatFor(values); };
  EXPECT_EQ(format(V{178500, 179000, 179500}), "0");
  EXPECT_EQ(FormatNumber(178500, format(V{178500, 179000})), "178500");
  EXPECT_EQ(format(V{0, 0.25, 0.5, 0.75}), "0.00");
  EXPECT_EQ(format(V{-2, -1.2, -0.4, 0.4}), "0.0");
  // Ticks made as Min + i * MajorInterval carry the sum's rounding.
  EXPECT_EQ(format(V{0.0, 0.1, 0.1 + 0.1, 0.1 * 3}), "0.0");
  EXPECT_EQ(format(V{0.064, 0.128, 0.192}), "0.000");
  EXPECT_EQ(format(V{1.0 / 3.0}), "0.000000");  // no end: six decimals at most
  // Tiny or huge: scientific, as 1e-06 and 2.5e+06.
  EXPECT_EQ(format(V{0, 1e-6, 2e-6}), "0.###e+00");
  EXPECT_EQ(FormatNumber(2.5e-6, format(V{0, 2.5e-6})), "2.5e-06");
  EXPECT_EQ(FormatNumber(2e6, format(V{1e6, 2e6})), "2e+06");
  // Nothing finite to go by.
  EXPECT_EQ(format(V{}), "0.##");
  EXPECT_EQ(format(V{std::nan(""), std::numeric_limits<double>::infinity()}), "0.##");
  EXPECT_EQ(format(V{std::nan(""), 12.5}), "0.0");
}

}  // namespace
}  // namespace orvane
