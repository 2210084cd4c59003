#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <random>
#include <sstream>
#include <streambuf>
#include <string>
#include <thread>

#include "orvane/data/xyz_file.h"
#include "support/expect_error.h"

namespace orvane {
namespace {

XyzPoints Read(const std::string& text) {
  std::istringstream in(text);
  return ReadXyzText(in, "mem.xyz");
}

TEST(XyzFile, SeparatorsHeaderCommentsAndBlankLines) {
  const XyzPoints p = Read("X,Y,Z\r\n# a comment\n\n1,2,3\r\n4\t5\t6\n  7  8 9 \n-1e3, +2.5 ,0\n   # late comment\n");
  EXPECT_EQ(p.x, (std::vector<double>{1, 4, 7, -1000}));
  EXPECT_EQ(p.y, (std::vector<double>{2, 5, 8, 2.5}));
  EXPECT_EQ(p.z, (std::vector<double>{3, 6, 9, 0}));
  EXPECT_TRUE(Read("").x.empty());
  EXPECT_TRUE(Read("# nothing\n\n").x.empty());
}

TEST(XyzFile, MalformedLinesNameTheirLineNumber) {
  EXPECT_ORVANE_ERROR(Read("1 2 3\n4 5\n"), 5, "XyzFile",
                      "mem.xyz:2: expected 3 numbers (X, Y, Z), found 2 fields");
  EXPECT_ORVANE_ERROR(Read("# c\n1 2 3\n4 five 6\n"), 5, "XyzFile",
                      "mem.xyz:3: \"4 five 6\" is not three numbers");
  // Only the first content line may be a header.
  EXPECT_ORVANE_ERROR(Read("1 2 3\nX Y Z\n"), 5, "XyzFile",
                      "mem.xyz:2: \"X Y Z\" is not three numbers");
  EXPECT_ORVANE_ERROR(Read("1 inf 2\n"), 5, "XyzFile", "mem.xyz:1: values must be finite numbers");
  EXPECT_ORVANE_ERROR(Read("1 2 3x\n"), 5, "XyzFile");
}

TEST(XyzFile, ByteOrderMarkAndLineEndings) {
  // The mark is not part of the first line, so that line is data, not a header.
  XyzPoints p = Read("\xEF\xBB\xBF" "1 2 3\n4 5 6\n");
  EXPECT_EQ(p.x, (std::vector<double>{1, 4}));
  p = Read("\xEF\xBB\xBF" "X,Y,Z\n1,2,3\n");
  EXPECT_EQ(p.z, (std::vector<double>{3}));
  // Only at the very start: elsewhere it is text like any other.
  EXPECT_ORVANE_ERROR(Read("1 2 3\n\xEF\xBB\xBF" "4 5 6\n"), 5, "XyzFile",
                      "mem.xyz:2: \"\xEF\xBB\xBF" "4 5 6\" is not three numbers");
  // "\n", "\r\n" and "\r\r\n" all end a line, and the last line needs no ending.
  p = Read("1 2 3\r\r\n4 5 6\r\n7 8 9\n10 11 12\r");
  EXPECT_EQ(p.x, (std::vector<double>{1, 4, 7, 10}));
  EXPECT_EQ(p.z, (std::vector<double>{3, 6, 9, 12}));
  p = Read("\r\r\n# c\r\r\n1 2 3");
  EXPECT_EQ(p.y, (std::vector<double>{2}));
}

TEST(XyzFile, ManyLinesAcrossReadBlocks) {
  // Enough lines of varying length and ending that lines, and runs of carriage returns,
  // straddle every kind of block boundary.
  std::mt19937 random(3);
  std::uniform_real_distribution<double> value(-1e6, 1e6);
  std::uniform_int_distribution<int> ending(0, 2), pad(0, 40);
  const char* const endings[] = {"\n", "\r\n", "\r\r\n"};
  std::string text = "\xEF\xBB\xBF" "x y z\r\n";
  std::vector<double> expected[3];
  char buffer[32];
  for (int k = 0; k < 60000; ++k) {
    text += std::string(static_cast<std::size_t>(pad(random)), ' ');
    for (std::vector<double>& column : expected) {
      column.push_back(value(random));
      text.append(buffer, std::to_chars(buffer, buffer + sizeof buffer, column.back()).ptr);
      text += &column != &expected[2] ? "," : "";
    }
    text += endings[ending(random)];
  }
  const XyzPoints p = Read(text);
  EXPECT_EQ(p.x, expected[0]);
  EXPECT_EQ(p.y, expected[1]);
  EXPECT_EQ(p.z, expected[2]);
}

TEST(XyzFile, AFileAPipeAndAStreamReadAlike) {
  // A file is read with read() in blocks of 256 KiB, a pipe or a stream in blocks of
  // 64 KiB, most lines straight from the block: whole numbers, long ones, signs, CRLF,
  // comments and blank Z among them, across the blocks of each.
  std::mt19937 random(7);
  std::uniform_int_distribution<int> pick(0, 19);
  std::uniform_real_distribution<double> value(-1e3, 1e3);
  std::string text = "x y z\n";
  std::vector<double> expected[3];
  char buffer[96];
  for (int k = 0; k < 40000; ++k) {
    const int kind = pick(random);
    const double z = kind == 1 ? std::nan("") : value(random);
    if (kind == 0) {
      text += "# a comment\r\n";
      continue;
    }
    if (kind == 1) {
      std::snprintf(buffer, sizeof buffer, "%d %d\t\n", k, -k);  // "x y" and a separator: a blank
    } else if (kind == 2) {
      std::snprintf(buffer, sizeof buffer, "+%d -1234567890123456 %.17g\r\n", k, z);
    } else {
      std::snprintf(buffer, sizeof buffer, "%d %d %.17g\n", k, k % 1000, z);
    }
    text += buffer;
    expected[0].push_back(k);
    expected[1].push_back(kind == 1 ? -k : kind == 2 ? -1234567890123456.0 : k % 1000);
    expected[2].push_back(z);
  }
  const auto check = [&expected](const XyzPoints& p) {
    EXPECT_EQ(p.x, expected[0]);
    EXPECT_EQ(p.y, expected[1]);
    ASSERT_EQ(p.z.size(), expected[2].size());
    for (std::size_t k = 0; k < p.z.size(); ++k) {
      ASSERT_TRUE(p.z[k] == expected[2][k] || (std::isnan(p.z[k]) && std::isnan(expected[2][k]))) << k;
    }
  };
  check(Read(text));
  const std::string path = ::testing::TempDir() + "orvane_xyz_" + std::to_string(::getpid()) + ".xyz";
  std::ofstream(path, std::ios::binary) << text;
  check(ReadXyzFile(path));
  const std::string fifo = path + ".fifo";
  ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
  std::thread writer([&fifo, &text] { std::ofstream(fifo, std::ios::binary) << text; });
  const XyzPoints piped = ReadXyzFile(fifo);
  writer.join();
  check(piped);
  std::remove(path.c_str());
  std::remove(fifo.c_str());
}

TEST(XyzFile, LinesLongerThanOneMebibyteAreRefused) {
  constexpr std::size_t kMiB = 1048576;
  // A line of exactly 1 MiB is read, whatever its ending; one byte more is refused.
  std::string line = "1 2 3" + std::string(kMiB - 5, ' ');
  ASSERT_EQ(line.size(), kMiB);
  EXPECT_EQ(Read("0 0 0\n" + line + "\r\r\n7 8 9\n").x, (std::vector<double>{0, 1, 7}));
  EXPECT_EQ(Read(line).x, (std::vector<double>{1}));
  EXPECT_ORVANE_ERROR(Read("0 0 0\n" + line + " \n7 8 9\n"), 5, "XyzFile",
                      "mem.xyz:2: the line is longer than 1 MiB");
  EXPECT_ORVANE_ERROR(Read("# " + line), 5, "XyzFile", "mem.xyz:1: the line is longer than 1 MiB");
}

// Serves zero bytes, as /dev/zero does, up to a limit, counting what was read.
class Zeros : public std::streambuf {
 public:
  explicit Zeros(std::size_t limit) : limit_(limit) {}
  std::size_t served = 0;

 protected:
  int_type underflow() override {
    if (served >= limit_) return traits_type::eof();
    const std::size_t n = std::min(sizeof block_, limit_ - served);
    served += n;
    setg(block_, block_, block_ + n);
    return traits_type::to_int_type(block_[0]);
  }

 private:
  std::size_t limit_;
  char block_[4096] = {};
};

TEST(XyzFile, InputWithoutLineBreaksStopsAfterOneMebibyteAndMissingFilesAreNamed) {
  Zeros zeros(std::size_t{256} << 20);
  std::istream in(&zeros);
  ASSERT_TRUE(testing::RaisesError([&] { ReadXyzText(in, "zeros"); }, 5, "XyzFile",
                                   "zeros:1: the line is longer than 1 MiB"));
  EXPECT_LE(zeros.served, (std::size_t{1} << 20) + (std::size_t{1} << 17));
  // The device itself never ends (a reader that takes whole lines would never return).
  EXPECT_ORVANE_ERROR(ReadXyzFile("/dev/zero"), 5, "XyzFile",
                      "/dev/zero:1: the line is longer than 1 MiB");
  EXPECT_ORVANE_ERROR(ReadXyzFile("/nonexistent/points.xyz"), 5, "XyzFile",
                      "/nonexistent/points.xyz: cannot open the file (No such file or directory)");
}

TEST(XyzFile, QuotedLinesAreCutAndEscaped) {
  // Terminal escape codes, DEL, a C1 control and bytes that are not UTF-8 are shown as
  // \xNN; tabs as \t; a backslash doubled; well-formed UTF-8 as it is.
  EXPECT_ORVANE_ERROR(Read("0 0 0\n\x1b[2J\x1b]0:owned\x07 1\t2\n"), 5, "XyzFile",
                      "mem.xyz:2: \"\\x1b[2J\\x1b]0:owned\\x07 1\\t2\" is not three numbers");
  EXPECT_ORVANE_ERROR(Read("0 0 0\n1 2 \x7f\xc2\x9b\xff\xc3\x28\xc3\xa9\\\n"), 5, "XyzFile",
                      "mem.xyz:2: \"1 2 \\x7f\\xc2\\x9b\\xff\\xc3(\xc3\xa9\\\\\" is not three numbers");
  // A carriage return inside a line is not a line ending.
  EXPECT_ORVANE_ERROR(Read("0 0 0\n1\r2 3 4\n"), 5, "XyzFile",
                      "mem.xyz:2: \"1\\x0d2 3 4\" is not three numbers");
  // At most 80 characters (not bytes) are quoted, then "...".
  const std::string eighty = "1 2 " + std::string(76, 'x');
  EXPECT_ORVANE_ERROR(Read("0 0 0\n" + eighty + "\n"), 5, "XyzFile",
                      "mem.xyz:2: \"" + eighty + "\" is not three numbers");
  EXPECT_ORVANE_ERROR(Read("0 0 0\n" + eighty + "y\n"), 5, "XyzFile",
                      "mem.xyz:2: \"" + eighty + "...\" is not three numbers");
  std::string accents;
  for (int k = 0; k < 76; ++k) accents += "\xc3\xa9";
  EXPECT_ORVANE_ERROR(Read("0 0 0\n1 2 " + accents + "\xc3\xa9\n"), 5, "XyzFile",
                      "mem.xyz:2: \"1 2 " + accents + "...\" is not three numbers");
  std::string escapes;
  for (int k = 0; k < 76; ++k) escapes += "\\x1b";
  EXPECT_ORVANE_ERROR(Read("0 0 0\n1 2 " + std::string(100, '\x1b') + "\n"), 5, "XyzFile",
                      "mem.xyz:2: \"1 2 " + escapes + "...\" is not three numbers");
}

XyzPoints ReadWith(const std::string& text, const XyzReadOptions& options) {
  std::istringstream in(text);
  return ReadXyzText(in, "mem.xyz", options);
}

TEST(XyzFileOptions, ChosenColumnsOfWiderLinesAndSemicolons) {
  XyzReadOptions options;
  options.columns = {3, 5, 2};
  const XyzPoints p = ReadWith("id;z;x;name;y\n1;10;0.5;a;7\n2;20;1.5;b;8;extra\n", options);
  EXPECT_EQ(p.x, (std::vector<double>{0.5, 1.5}));
  EXPECT_EQ(p.y, (std::vector<double>{7, 8}));
  EXPECT_EQ(p.z, (std::vector<double>{10, 20}));
  EXPECT_ORVANE_ERROR(ReadWith("1;10;0.5;a;7\n1;2;3;4\n", options), 5, "XyzFile",
                      "mem.xyz:2: expected at least 5 fields, found 4");
  EXPECT_ORVANE_ERROR(ReadWith("1;10;0.5;a;7\n1;x;3;4;5\n", options), 5, "XyzFile",
                      "mem.xyz:2: \"1;x;3;4;5\" is not numbers in the X, Y and Z columns");
  options.columns = {1, 0, 3};
  EXPECT_ORVANE_ERROR(ReadWith("1 2 3\n", options), 5, "XyzFile",
                      "The X, Y and Z columns must be numbered from 1 to 1048576, not 0.");
  // Semicolons separate like commas; the default columns still want exactly three fields.
  const XyzPoints plain = Read("1;2;3\n4 ; 5 ; 6\n");
  EXPECT_EQ(plain.z, (std::vector<double>{3, 6}));
  EXPECT_ORVANE_ERROR(Read("1;2;3;4\n"), 5, "XyzFile", "mem.xyz:1: expected 3 numbers (X, Y, Z), found 4 fields");
}

TEST(XyzFileOptions, InvalidRowsAreSkippedAndCountedOnlyWhenAsked) {
  const std::string text = "x y z\n0 0 1\n1 nan 2\n2 2\n3 3 inf\n4 4 four\n5 5 5\n";
  EXPECT_ORVANE_ERROR(Read(text), 5, "XyzFile", "mem.xyz:3: values must be finite numbers");
  XyzReadOptions options;
  options.skipInvalid = true;
  const XyzPoints p = ReadWith(text, options);
  EXPECT_EQ(p.x, (std::vector<double>{0, 5}));
  EXPECT_EQ(p.z, (std::vector<double>{1, 5}));
  EXPECT_EQ(p.skipped, 4u);
  // The header is still a header, and comments are not counted.
  EXPECT_EQ(ReadWith("X,Y,Z\n# note\n1,2,3\n", options).skipped, 0u);
  // Missing values between separators are missing fields.
  options.columns = {1, 2, 4};
  const XyzPoints wide = ReadWith("1,2,,4\n1,2,3,\n5,6,7,8\n", options);
  EXPECT_EQ(wide.x, (std::vector<double>{5}));
  EXPECT_EQ(wide.skipped, 2u);
}

TEST(XyzFileOptions, DuplicatePointsMergeIntoTheirMeanZ) {
  XyzPoints p = Read("0 0 1\n1 0 5\n0 0 3\n-0 0 8\n1 1 2\n1 0 7\n");
  EXPECT_EQ(MergeDuplicatePoints(p), 3u);
  EXPECT_EQ(p.x, (std::vector<double>{0, 1, 1}));
  EXPECT_EQ(p.y, (std::vector<double>{0, 0, 1}));
  EXPECT_EQ(p.z, (std::vector<double>{4, 6, 2}));  // (1 + 3 + 8) / 3, (5 + 7) / 2
  EXPECT_EQ(MergeDuplicatePoints(p), 0u);
  XyzPoints nearly = Read("0 0 1\n0 1e-300 3\n");
  EXPECT_EQ(MergeDuplicatePoints(nearly), 0u);  // only exact duplicates merge
  XyzPoints odd;
  odd.x = {std::nan(""), std::nan(""), 1};
  odd.y = {0, 0, 0};
  odd.z = {1, 2, 3};
  EXPECT_EQ(MergeDuplicatePoints(odd), 0u);
}

TEST(XyzFileOptions, MergingEqualsTheLiteralRuleOnManyRepeatedPlaces) {
  // 3000 points on 40 places (with -0 beside 0, and NaN places that never merge): each
  // place keeps its first point, with the Z of all its points summed in file order.
  std::mt19937 random(5);
  XyzPoints p;
  for (int k = 0; k < 3000; ++k) {
    const int a = static_cast<int>(random() % 8), b = static_cast<int>(random() % 5);
    p.x.push_back(a == 7 ? (k % 2 == 0 ? -0.0 : 0.0) : a * 0.1);
    p.y.push_back(b == 4 && k % 97 == 0 ? std::nan("") : b * 0.3);
    p.z.push_back(static_cast<double>(random() % 1000) / 7.0);
  }
  XyzPoints expected;
  std::vector<std::size_t> members;
  for (std::size_t i = 0; i < p.x.size(); ++i) {
    bool seen = false;
    for (std::size_t j = 0; j < i && !seen; ++j) seen = p.x[j] == p.x[i] && p.y[j] == p.y[i];
    if (seen) continue;
    double sum = p.z[i];
    std::size_t count = 1;
    for (std::size_t j = i + 1; j < p.x.size(); ++j) {
      if (p.x[j] == p.x[i] && p.y[j] == p.y[i]) sum += p.z[j], ++count;
    }
    expected.x.push_back(p.x[i]);
    expected.y.push_back(p.y[i]);
    expected.z.push_back(count > 1 ? sum / static_cast<double>(count) : sum);
  }
  EXPECT_EQ(MergeDuplicatePoints(p), 3000 - expected.x.size());
  ASSERT_EQ(p.x.size(), expected.x.size());
  for (std::size_t k = 0; k < p.x.size(); ++k) {
    EXPECT_EQ(std::signbit(p.x[k]), std::signbit(expected.x[k])) << k;
    EXPECT_TRUE(p.y[k] == expected.y[k] || (std::isnan(p.y[k]) && std::isnan(expected.y[k]))) << k;
    EXPECT_EQ(p.z[k], expected.z[k]) << k;
  }
}

}  // namespace
}  // namespace orvane
