#pragma once

#include <Qt>

namespace orvane::qt {

/// The control's button code of Qt buttons: 1 left, 2 right, 4 middle, or'ed together.
int ButtonCode(Qt::MouseButtons buttons) noexcept;
/// The control's shift code of Qt modifiers: 1 Shift, 2 Ctrl, 4 Alt, or'ed together.
int ShiftCode(Qt::KeyboardModifiers modifiers) noexcept;
/// The Windows virtual-key code of a Qt key (letters as upper case, the numeric pad's
/// keys told apart by Qt::KeypadModifier); 0 for a key without one.
int WindowsKeyCode(int key, Qt::KeyboardModifiers modifiers) noexcept;

}  // namespace orvane::qt
