#include <gtest/gtest.h>

#include <algorithm>
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

// The angle between two orientations: twice the arccosine of their quaternions' dot.
double TurnBetween(const std::array<double, 4>& a, const std::array<double, 4>& b) {
  const double dot = std::fabs(a[0] * b[0] + a[1] * b[1] + a[2] * b[2] + a[3] * b[3]);
  return 2.0 * std::acos(std::min(dot, 1.0));
}

TEST(Trackball, DragAnglesFollowTheBallAndTheSheet) {
  // Across the middle from -1 to 1: both points on the sphere of radius 1.5, z = sqrt(1.25),
  // 2 apart: a turn of 2 asin(2 / 3), about 83.6 degrees.
  CTrackball ball;
  ball.SetRotation(60, 0, 30);
  auto before = ball.Quaternion();
  ball.Drag(0, 100, 200, 100, 200, 200);
  EXPECT_NEAR(TurnBetween(before, ball.Quaternion()), 2.0 * std::asin(2.0 / 3.0), 1e-12);

  // From the centre (on the sphere, z = 1.5) to the corner (1, 1): d = sqrt(2) lies past
  // r / sqrt(2), so the corner is on the sheet, z = (r / 1.414213562)^2 / d.
  before = ball.Quaternion();
  ball.Drag(100, 100, 200, 0, 200, 200);
  const double d = std::sqrt(2.0), t = 1.5 / 1.414213562, zc = t * t / d;
  const double gap = std::sqrt(1.0 + 1.0 + (1.5 - zc) * (1.5 - zc));
  EXPECT_NEAR(TurnBetween(before, ball.Quaternion()), 2.0 * std::asin(gap / 3.0), 1e-12);

  // Far outside the window (the pointer captured past its edges), the sine's argument
  // passes 1 and is clamped: half a turn.
  before = ball.Quaternion();
  ball.Drag(-200, 100, 400, 100, 200, 200);
  EXPECT_NEAR(TurnBetween(before, ball.Quaternion()), M_PI, 1e-9);
}

TEST(Trackball, TheQuaternionStaysUnitAfterManyDrags) {
  CTrackball ball;
  ball.SetRotation(60, 0, 30);
  for (int i = 0; i < 10000; ++i) {
    const double a = i * 0.37, b = i * 0.11;
    ball.Drag(100 + 40 * std::sin(a), 100 + 40 * std::cos(b), 100 + 45 * std::sin(a + 0.2), 100 + 35 * std::cos(b + 0.3),
              200, 150);
  }
  const auto& q = ball.Quaternion();
  EXPECT_NEAR(q[0] * q[0] + q[1] * q[1] + q[2] * q[2] + q[3] * q[3], 1.0, 1e-12);
}

}  // namespace
}  // namespace orvane
