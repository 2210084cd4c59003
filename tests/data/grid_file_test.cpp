#include <gtest/gtest.h>

#include <cmath>
#include <iomanip>
#include <sstream>
#include <string>

#include "orvane/data/grid_file.h"
#include "support/expect_error.h"

namespace orvane {
namespace {

GridFile Read(const std::string& text) {
  std::istringstream in(text);
  return ReadDsaaText(in, "g.grd");
}

TEST(GridFile, ReadsRowsFromTheLowestYWithXAlongEachRow) {
  // 3 columns over 0..2, 2 rows over 10..20; rows may wrap.
  const GridFile g = Read("DSAA\r\n3 2\n0 2\n10 20\n1 6\n1 2\n3\n4 5 6\n");
  EXPECT_EQ(g.x, (std::vector<double>{0, 1, 2}));
  EXPECT_EQ(g.y, (std::vector<double>{10, 20}));
  // z[i * rows + j]: column i, row j.
  EXPECT_EQ(g.z, (std::vector<double>{1, 4, 2, 5, 3, 6}));
  // The last node lands on the maximum exactly, whatever the rounding of the steps.
  EXPECT_EQ(Read("DSAA\n4 2\n0.1 0.7\n0 1\n0 0\n0 0 0 0 0 0 0 0\n").x.back(), 0.7);
}

TEST(GridFile, RefusesWhatIsNotAGridAndReadsBlanksAsNaN) {
  const GridFile blanked = Read("DSAA\n2 2\n0 1\n0 1\n0 0\n1 1.70141E+38\n3 4\n");
  ASSERT_EQ(blanked.z.size(), 4U);
  EXPECT_TRUE(std::isnan(blanked.z[2]));  // column 1 of the first row
  EXPECT_EQ(blanked.z[1], 3.0);
  const std::pair<std::string, std::string> cases[] = {
      {"DSBB\n", "g.grd:1: not a DSAA grid (the first word must be DSAA)"},
      {"DSAA\n1 2\n", "g.grd:2: the grid must have 2 to 10001 columns and rows"},
      {"DSAA\n20000 2\n", "g.grd:2: the grid must have 2 to 10001 columns and rows"},
      {"DSAA\n2 2\n1 0\n0 1\n0 0\n", "g.grd:5: the X minimum must lie below the X maximum"},
      {"DSAA\n2 2\n0 1\n0 nan\n", "g.grd:4: the Y maximum must be a finite number"},
      {"DSAA\n2 2\n0 1\n0 1\n0 0\n1 2\n3 x\n", "g.grd:7: a grid value is not a number"},
      {"DSAA\n2 2\n0 1\n0 1\n0 0\n1 2\n3\n", "g.grd:8: the file ends before a grid value"},
      {"DSAA\n2 2\n0 1\n0 1\n0 0\n1 2\n3 4 5\n", "g.grd:7: more values than the grid's 4"}};
  for (const auto& c : cases) {
    const std::string& text = c.first;
    EXPECT_ORVANE_ERROR(Read(text), 5, "GridFile", c.second) << text;
  }
  EXPECT_ORVANE_ERROR(ReadDsaaFile("/nonexistent/g.grd"), 5, "GridFile",
                      "/nonexistent/g.grd: cannot open the file (No such file or directory)");
}

// The file is read in blocks of 64 KiB: values cut by a block's end, line numbers and
// over-long values must come out as in a small file.
TEST(GridFile, ValuesAndLinesCarryAcrossBlocks) {
  const int cols = 300, rows = 40;
  std::ostringstream text;
  text << "DSAA\n" << cols << ' ' << rows << "\n0 1\n0 1\n0 1\n";
  std::vector<double> expected;
  for (int j = 0; j < rows; ++j) {
    for (int i = 0; i < cols; ++i) {
      // Values of varying length, so that the block ends fall mid-value somewhere.
      const double v = (i * 7 + j * 13) % 97 / 9.0 + j;
      text << (i % 3 == 0 ? "   " : " ") << std::setprecision(6 + (i % 11)) << v;
      expected.push_back(v);
    }
    text << "\r\n";
  }
  const std::string body = text.str();
  ASSERT_GT(body.size(), 2u * 64u * 1024u);
  std::istringstream in(body);
  const GridFile g = ReadDsaaText(in, "g.grd");
  ASSERT_EQ(g.z.size(), expected.size());
  std::ostringstream check;
  for (int j = 0; j < rows; ++j) {
    for (int i = 0; i < cols; ++i) {
      std::ostringstream one;
      one << std::setprecision(6 + (i % 11)) << expected[static_cast<std::size_t>(j * cols + i)];
      ASSERT_EQ(g.z[static_cast<std::size_t>(i * rows + j)], std::stod(one.str())) << i << "," << j;
    }
  }
  // An error after the blocks names the right line: the header's five, then one a row.
  EXPECT_ORVANE_ERROR(Read(body + "7\n"), 5, "GridFile",
                      "g.grd:" + std::to_string(5 + rows + 1) + ": more values than the grid's 12000");
  // A value longer than 4096 characters, across a block end, is refused.
  const std::string padded = "DSAA\n2 2\n0 1\n0 1\n0 1\n" + std::string(65530, ' ') + "1" + std::string(5000, '0');
  EXPECT_ORVANE_ERROR(Read(padded), 5, "GridFile", "g.grd:6: a value is longer than 4096 characters");
}

}  // namespace
}  // namespace orvane
