#include "trackball.h"

#include <algorithm>
#include <cmath>

namespace orvane::detail {

namespace {

using Quat = std::array<double, 4>;  // x, y, z, w

constexpr double kPi = 3.141592654;  // the angles' own conversion constant

Quat Multiply(const Quat& a, const Quat& b) {
  return {a[3] * b[0] + a[0] * b[3] + a[1] * b[2] - a[2] * b[1],
          a[3] * b[1] - a[0] * b[2] + a[1] * b[3] + a[2] * b[0],
          a[3] * b[2] + a[0] * b[1] - a[1] * b[0] + a[2] * b[3],
          a[3] * b[3] - a[0] * b[0] - a[1] * b[1] - a[2] * b[2]};
}

Quat Conjugate(const Quat& q) { return {-q[0], -q[1], -q[2], q[3]}; }

Quat Normalised(const Quat& q) {
  const double n = std::sqrt(q[0] * q[0] + q[1] * q[1] + q[2] * q[2] + q[3] * q[3]);
  if (!(n > 0.0)) return {0.0, 0.0, 0.0, 1.0};
  return {q[0] / n, q[1] / n, q[2] / n, q[3] / n};
}

// Rotation by angle (radians) about a unit axis.
Quat AxisAngle(double ax, double ay, double az, double angle) {
  const double s = std::sin(angle / 2);
  return {ax * s, ay * s, az * s, std::cos(angle / 2)};
}

double Radians(double degrees) { return degrees * kPi / 180.0; }

// A window point on the ball of radius r (sphere near the centre, hyperbolic sheet
// beyond), in eye coordinates: X right, Y up, the viewer on the negative Z side.
std::array<double, 3> OnBall(double x, double y, double r) {
  const double d = std::sqrt(x * x + y * y);
  double z = 0.0;
  if (d < r * 0.7071067812) {
    z = std::sqrt(r * r - d * d);
  } else {
    const double t = r / 1.414213562;
    z = t * t / d;
  }
  return {x, y, -z};
}

}  // namespace

CTrackball::CTrackball() { Rebuild(); }

void CTrackball::SetRotation(std::int32_t x, std::int32_t y, std::int32_t z) {
  angles_ = {x, y, z};
  Rebuild();
}

void CTrackball::SetRotationX(std::int32_t degrees) {
  angles_[0] = degrees;
  Rebuild();
}

void CTrackball::SetRotationY(std::int32_t degrees) {
  angles_[1] = degrees;
  Rebuild();
}

void CTrackball::SetRotationZ(std::int32_t degrees) {
  angles_[2] = degrees;
  Rebuild();
}

void CTrackball::Rebuild() {
  // The matrix below is that of the conjugate rotation, so the quaternion kept is the
  // conjugate of Rx * Ry * Rz.
  const Quat rx = AxisAngle(1, 0, 0, Radians(angles_[0] - 180.0));
  const Quat ry = AxisAngle(0, 1, 0, Radians(angles_[1]));
  const Quat rz = AxisAngle(0, 0, 1, Radians(-static_cast<double>(angles_[2])));
  q_ = Normalised(Conjugate(Multiply(Multiply(rx, ry), rz)));
}

void CTrackball::Drag(double lastX, double lastY, double x, double y, double width, double height) {
  if (!(width > 0.0) || !(height > 0.0)) return;
  const auto toUnit = [&](double px, double py) {
    return std::array<double, 2>{(2.0 * px - width) / width, (height - 2.0 * py) / height};
  };
  const auto a = toUnit(lastX, lastY);
  const auto b = toUnit(x, y);
  if (a == b) return;
  const auto p1 = OnBall(a[0], a[1], radius_);
  const auto p2 = OnBall(b[0], b[1], radius_);
  double axis[3] = {p1[1] * p2[2] - p1[2] * p2[1], p1[2] * p2[0] - p1[0] * p2[2], p1[0] * p2[1] - p1[1] * p2[0]};
  const double length = std::sqrt(axis[0] * axis[0] + axis[1] * axis[1] + axis[2] * axis[2]);
  if (!(length > 0.0)) return;
  for (double& c : axis) c /= length;
  const double dx = p1[0] - p2[0], dy = p1[1] - p2[1], dz = p1[2] - p2[2];
  const double s = std::clamp(std::sqrt(dx * dx + dy * dy + dz * dz) / (2.0 * radius_), -1.0, 1.0);
  const Quat increment = AxisAngle(axis[0], axis[1], axis[2], 2.0 * std::asin(s));
  // The increment turns the eye-space picture: applied after the current rotation.
  q_ = Normalised(Conjugate(Multiply(increment, Conjugate(q_))));
}

void CTrackball::GetRotationMatrix(double (&m)[16]) const {
  const double x = q_[0], y = q_[1], z = q_[2], w = q_[3];
  m[0] = 1 - 2 * (y * y + z * z);
  m[1] = 2 * (x * y - z * w);
  m[2] = 2 * (z * x + y * w);
  m[3] = 0;
  m[4] = 2 * (x * y + z * w);
  m[5] = 1 - 2 * (z * z + x * x);
  m[6] = 2 * (y * z - x * w);
  m[7] = 0;
  m[8] = 2 * (z * x - y * w);
  m[9] = 2 * (y * z + x * w);
  m[10] = 1 - 2 * (y * y + x * x);
  m[11] = 0;
  m[12] = m[13] = m[14] = 0;
  m[15] = 1;
}

}  // namespace orvane::detail
