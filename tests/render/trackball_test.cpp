#include <gtest/gtest.h>

#include <array>
#include <cmath>

#include "control/trackball.h"

namespace orvane {
namespace {

using detail::CTrackball;

// The rotation applied to a vector (column-major matrix).
std::array<double, 3> Apply(const double (&m)[16], double x, double y, double z) {
  return {m[0] * x + m[4] * y + m[8] * z, m[1] * x + m[5] * y + m[9] * z, m[2] * x + m[6] * y + m[10] * z};
}

TEST(Trackball, AnglesGiveTheDocumentedOrientations) {
  CTrackball ball;
  double m[16];
  // 180 about X undoes the built-in -180: the identity.
  ball.SetRotation(180, 0, 0);
  ball.GetRotationMatrix(m);
  for (int i = 0; i < 16; ++i) EXPECT_NEAR(m[i], i % 5 == 0 ? 1.0 : 0.0, 1e-9) << i;
  // 90: a side view; the plot's Z (after the cube's Y mirror) points up the screen.
  ball.SetRotationX(90);
  ball.GetRotationMatrix(m);
  const auto up = Apply(m, 0, 0, 1);
  EXPECT_NEAR(up[1], 1.0, 1e-9);
  // The default view: Z up and towards the viewer (negative eye Z), X to the right.
  ball.SetRotation(60, 0, 30);
  ball.GetRotationMatrix(m);
  const auto z = Apply(m, 0, 0, 1);
  EXPECT_GT(z[1], 0.8);
  EXPECT_LT(z[2], 0.0);
  EXPECT_GT(Apply(m, 1, 0, 0)[0], 0.8);
  EXPECT_EQ(ball.RotationX(), 60);
  EXPECT_EQ(ball.RotationZ(), 30);
  // Always a rotation: orthonormal columns.
  ball.SetRotation(17, 41, 293);
  ball.GetRotationMatrix(m);
  for (int a = 0; a < 3; ++a) {
    for (int b = 0; b < 3; ++b) {
      const double dot = m[4 * a] * m[4 * b] + m[4 * a + 1] * m[4 * b + 1] + m[4 * a + 2] * m[4 * b + 2];
      EXPECT_NEAR(dot, a == b ? 1.0 : 0.0, 1e-12);
    }
  }
}

TEST(Trackball, DraggingTurnsThePictureWithThePointer) {
  CTrackball ball;
  ball.SetRotation(180, 0, 0);
  double before[16], after[16];
  ball.GetRotationMatrix(before);
  ball.Drag(100, 100, 100, 100, 200, 200);  // no move, no turn
  ball.GetRotationMatrix(after);
  for (int i = 0; i < 16; ++i) EXPECT_EQ(before[i], after[i]);
  // A drag to the right carries the point nearest the viewer to the right, and a drag
  // up carries it up; the radius stays 1.5.
  ball.Drag(100, 100, 140, 100, 200, 200);
  ball.GetRotationMatrix(after);
  EXPECT_GT(Apply(after, 0, 0, -1)[0], 0.2);
  ball.SetRotation(180, 0, 0);
  ball.Drag(100, 100, 100, 60, 200, 200);
  ball.GetRotationMatrix(after);
  EXPECT_GT(Apply(after, 0, 0, -1)[1], 0.2);
  EXPECT_EQ(ball.Radius(), 1.5);
}

}  // namespace
}  // namespace orvane
