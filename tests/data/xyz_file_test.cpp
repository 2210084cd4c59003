#include <gtest/gtest.h>

#include <sstream>

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
  EXPECT_ORVANE_ERROR(Read("1 2 3\n4 5 6 7\n"), 5, "XyzFile",
                      "mem.xyz:2: expected 3 numbers (X, Y, Z), found 4 fields");
  EXPECT_ORVANE_ERROR(Read("# c\n1 2 3\n4 five 6\n"), 5, "XyzFile",
                      "mem.xyz:3: \"4 five 6\" is not three numbers");
  // Only the first content line may be a header.
  EXPECT_ORVANE_ERROR(Read("1 2 3\nX Y Z\n"), 5, "XyzFile",
                      "mem.xyz:2: \"X Y Z\" is not three numbers");
  EXPECT_ORVANE_ERROR(Read("1 2 nan\n"), 5, "XyzFile", "mem.xyz:1: values must be finite numbers");
  EXPECT_ORVANE_ERROR(Read("1 inf 2\n"), 5, "XyzFile", "mem.xyz:1: values must be finite numbers");
  EXPECT_ORVANE_ERROR(Read("1 2 3x\n"), 5, "XyzFile");
}

TEST(XyzFile, MissingFileIsAnError) {
  EXPECT_ORVANE_ERROR(ReadXyzFile("/nonexistent/points.xyz"), 5, "XyzFile",
                      "/nonexistent/points.xyz: cannot open the file (No such file or directory)");
}

}  // namespace
}  // namespace orvane
