// Qt's buttons, modifiers and keys in the control's codes.

#include <gtest/gtest.h>

#include "orvane/qt/input_codes.h"

namespace orvane::qt {
namespace {

TEST(InputCodes, ButtonsAndModifiersBecomeTheirBits) {
  EXPECT_EQ(ButtonCode(Qt::LeftButton), 1);
  EXPECT_EQ(ButtonCode(Qt::RightButton), 2);
  EXPECT_EQ(ButtonCode(Qt::MiddleButton), 4);
  EXPECT_EQ(ButtonCode(Qt::LeftButton | Qt::MiddleButton), 5);
  EXPECT_EQ(ButtonCode(Qt::BackButton), 0);
  EXPECT_EQ(ButtonCode(Qt::NoButton), 0);
  EXPECT_EQ(ShiftCode(Qt::ShiftModifier), 1);
  EXPECT_EQ(ShiftCode(Qt::ControlModifier), 2);
  EXPECT_EQ(ShiftCode(Qt::AltModifier), 4);
  EXPECT_EQ(ShiftCode(Qt::ShiftModifier | Qt::ControlModifier | Qt::AltModifier), 7);
  EXPECT_EQ(ShiftCode(Qt::KeypadModifier | Qt::MetaModifier), 0);
}

TEST(InputCodes, KeysBecomeWindowsKeyCodes) {
  const struct {
    int key;
    Qt::KeyboardModifiers modifiers;
    int code;
  } table[] = {
      {Qt::Key_S, {}, 83},           {Qt::Key_D, Qt::ShiftModifier, 68}, {Qt::Key_Q, {}, 81},
      {Qt::Key_W, {}, 87},           {Qt::Key_O, {}, 79},                {Qt::Key_P, {}, 80},
      {Qt::Key_A, {}, 65},           {Qt::Key_Z, {}, 90},                {Qt::Key_0, {}, 48},
      {Qt::Key_7, Qt::KeypadModifier, 103},
      {Qt::Key_Plus, Qt::KeypadModifier, 107},
      {Qt::Key_Minus, Qt::KeypadModifier, 109},
      {Qt::Key_Plus, {}, 187},       {Qt::Key_Minus, {}, 189},
      {Qt::Key_Asterisk, Qt::KeypadModifier, 106},
      {Qt::Key_Left, {}, 37},        {Qt::Key_Up, {}, 38},               {Qt::Key_Right, {}, 39},
      {Qt::Key_Down, {}, 40},        {Qt::Key_PageUp, {}, 33},           {Qt::Key_PageDown, {}, 34},
      {Qt::Key_End, {}, 35},         {Qt::Key_Home, {}, 36},
      {Qt::Key_Home, Qt::KeypadModifier, 36},  // the pad's 7 without Num Lock
      {Qt::Key_Return, {}, 13},      {Qt::Key_Enter, Qt::KeypadModifier, 13},
      {Qt::Key_Escape, {}, 27},      {Qt::Key_F1, {}, 112},              {Qt::Key_F12, {}, 123},
      {Qt::Key_Delete, {}, 46},      {Qt::Key_unknown, {}, 0},           {Qt::Key_VolumeUp, {}, 0},
  };
  for (const auto& row : table) {
    EXPECT_EQ(WindowsKeyCode(row.key, row.modifiers), row.code) << std::hex << row.key;
  }
}

}  // namespace
}  // namespace orvane::qt
