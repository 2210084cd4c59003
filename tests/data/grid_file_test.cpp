#include <gtest/gtest.h>

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

TEST(GridFile, RefusesWhatItCannotDraw) {
  const std::pair<std::string, std::string> cases[] = {
      {"DSBB\n", "g.grd:1: not a DSAA grid (the first word must be DSAA)"},
      {"DSAA\n1 2\n", "g.grd:2: the grid must have 2 to 10001 columns and rows"},
      {"DSAA\n20000 2\n", "g.grd:2: the grid must have 2 to 10001 columns and rows"},
      {"DSAA\n2 2\n1 0\n0 1\n0 0\n", "g.grd:5: the X minimum must lie below the X maximum"},
      {"DSAA\n2 2\n0 1\n0 nan\n", "g.grd:4: the Y maximum must be a finite number"},
      {"DSAA\n2 2\n0 1\n0 1\n0 0\n1 2\n3 x\n", "g.grd:7: a grid value is not a number"},
      {"DSAA\n2 2\n0 1\n0 1\n0 0\n1 2\n3\n", "g.grd:8: the file ends before a grid value"},
      {"DSAA\n2 2\n0 1\n0 1\n0 0\n1 2\n3 4 5\n", "g.grd:7: more values than the grid's 4"},
      {"DSAA\n2 2\n0 1\n0 1\n0 0\n1 1.70141e38\n3 4\n", "g.grd:6: the grid has blank cells, which cannot be drawn"}};
  for (const auto& c : cases) {
    const std::string& text = c.first;
    EXPECT_ORVANE_ERROR(Read(text), 5, "GridFile", c.second) << text;
  }
  EXPECT_ORVANE_ERROR(ReadDsaaFile("/nonexistent/g.grd"), 5, "GridFile",
                      "/nonexistent/g.grd: cannot open the file (No such file or directory)");
}

}  // namespace
}  // namespace orvane
