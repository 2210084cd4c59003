// Qt's buttons, modifiers and keys in the control's codes: button and shift bits, and
// Windows virtual-key codes.

#include "orvane/qt/input_codes.h"

namespace orvane::qt {

int ButtonCode(Qt::MouseButtons buttons) noexcept {
  int code = 0;
  if (buttons & Qt::LeftButton) code |= 1;
  if (buttons & Qt::RightButton) code |= 2;
  if (buttons & Qt::MiddleButton) code |= 4;
  return code;
}

int ShiftCode(Qt::KeyboardModifiers modifiers) noexcept {
  int code = 0;
  if (modifiers & Qt::ShiftModifier) code |= 1;
  if (modifiers & Qt::ControlModifier) code |= 2;
  if (modifiers & Qt::AltModifier) code |= 4;
  return code;
}

int WindowsKeyCode(int key, Qt::KeyboardModifiers modifiers) noexcept {
  const bool pad = (modifiers & Qt::KeypadModifier) != 0;
  // Qt's letters and digits are the ASCII codes of the upper-case letters and digits,
  // which the virtual-key codes share; the pad's digits have codes of their own.
  if (key >= Qt::Key_A && key <= Qt::Key_Z) return key;
  if (key >= Qt::Key_0 && key <= Qt::Key_9) return pad ? 96 + (key - Qt::Key_0) : key;
  if (key >= Qt::Key_F1 && key <= Qt::Key_F24) return 112 + (key - Qt::Key_F1);
  switch (key) {
    case Qt::Key_Backspace: return 8;
    case Qt::Key_Tab: return 9;
    case Qt::Key_Clear: return 12;
    case Qt::Key_Return:
    case Qt::Key_Enter: return 13;
    case Qt::Key_Shift: return 16;
    case Qt::Key_Control: return 17;
    case Qt::Key_Alt: return 18;
    case Qt::Key_Pause: return 19;
    case Qt::Key_CapsLock: return 20;
    case Qt::Key_Escape: return 27;
    case Qt::Key_Space: return 32;
    case Qt::Key_PageUp: return 33;
    case Qt::Key_PageDown: return 34;
    case Qt::Key_End: return 35;
    case Qt::Key_Home: return 36;
    case Qt::Key_Left: return 37;
    case Qt::Key_Up: return 38;
    case Qt::Key_Right: return 39;
    case Qt::Key_Down: return 40;
    case Qt::Key_Insert: return 45;
    case Qt::Key_Delete: return 46;
    case Qt::Key_Asterisk: return pad ? 106 : 0;
    case Qt::Key_Plus: return pad ? 107 : 187;
    case Qt::Key_Equal: return 187;
    case Qt::Key_Comma: return 188;
    case Qt::Key_Minus: return pad ? 109 : 189;
    case Qt::Key_Period: return pad ? 110 : 190;
    case Qt::Key_Slash: return pad ? 111 : 191;
    case Qt::Key_NumLock: return 144;
    case Qt::Key_ScrollLock: return 145;
    default: return 0;
  }
}

}  // namespace orvane::qt
