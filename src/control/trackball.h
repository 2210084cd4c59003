#pragma once

// CTrackball: the plot's orientation as a unit quaternion, set from whole-degree angles
// or turned by dragging the pointer over a virtual ball. Internal header.
//
// Conventions. The renderer multiplies the model-view matrix by GetRotationMatrix and
// then by the cube's own transform, which mirrors Y (see frame.cpp), so that at angles
// (0, 0, 0) the plot is seen straight from above, X to the right and Y up, as in 2-D.
// The angles build the rotation Rx(RotationX - 180) * Ry(RotationY) * Rz(-RotationZ):
// RotationX tilts the plot away from the top view (90 is a side view, 60 the default
// view from 30 degrees above the XY plane, 120 from below), RotationZ turns it about its
// vertical axis, RotationY rolls it about the screen's vertical.

#include <array>
#include <cstdint>

namespace orvane::detail {

class CTrackball {
 public:
  // Rotation (0, 0, 0), ball radius 1.5.
  CTrackball();

  // Sets all three angles (degrees) and rebuilds the quaternion.
  void SetRotation(std::int32_t x, std::int32_t y, std::int32_t z);
  std::int32_t RotationX() const noexcept { return angles_[0]; }
  std::int32_t RotationY() const noexcept { return angles_[1]; }
  std::int32_t RotationZ() const noexcept { return angles_[2]; }
  // Each setter rebuilds the quaternion from the three stored angles.
  void SetRotationX(std::int32_t degrees);
  void SetRotationY(std::int32_t degrees);
  void SetRotationZ(std::int32_t degrees);

  double Radius() const noexcept { return radius_; }
  void SetRadius(double value) noexcept { radius_ = value; }

  // Turns the pointer's move from (lastX, lastY) to (x, y), in window pixels with Y down,
  // into a rotation increment composed with the current rotation. The window's extent
  // maps to -1..1 on each axis.
  void Drag(double lastX, double lastY, double x, double y, double width, double height);

  // The rotation matrix of the quaternion, column-major as OpenGL takes it.
  void GetRotationMatrix(double (&m)[16]) const;
  // The quaternion (x, y, z, w).
  const std::array<double, 4>& Quaternion() const noexcept { return q_; }

 private:
  void Rebuild();

  std::array<double, 4> q_{0.0, 0.0, 0.0, 1.0};
  std::array<std::int32_t, 3> angles_{0, 0, 0};
  double radius_ = 1.5;
};

}  // namespace orvane::detail
