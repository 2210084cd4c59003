// Qt's buttons, modifiers and keys in the control's codes.

#include <gtest/gtest.h>

#include "orvane/qt/input_codes.h"

namespace orvane::qt {
namespace {

TEST(InputCodes, ButtonsModifiersAndKeysBecomeTheControlsCodes) {
  EXPECT_EQ(ButtonCode(Qt::LeftButton), 1);
  EXPECT_EQ(ButtonCode(Qt::RightButton), 2);
  EXPECT_EQ(ButtonCode(Qt::LeftButton | Qt::MiddleButton | Qt::BackButton), 5);
  EXPECT_EQ(ShiftCode(Qt::ShiftModifier | Qt::AltModifier), 5);
  EXPECT_EQ(ShiftCode(Qt::ControlModifier | Qt::KeypadModifier | Qt::MetaModifier), 2);
  const Qt::KeyboardModifiers pad = Qt::KeypadModifier, none;
  const struct {
    int key;
    Qt::KeyboardModifiers modifiers;
    int code;
  } table[] = {
      {Qt::Key_S, Qt::ShiftModifier, 83}, {Qt::Key_P, none, 80},   {Qt::Key_0, none, 48},
      {Qt::Key_7, pad, 103},              {Qt::Key_Plus, pad, 107}, {Qt::Key_Minus, pad, 109},
      {Qt::Key_Plus, none, 187},          {Qt::Key_Minus, none, 189}, {Qt::Key_Left, none, 37},
      {Qt::Key_Down, none, 40},           {Qt::Key_Up, none, 38},     {Qt::Key_Right, none, 39},
      {Qt::Key_PageUp, none, 33},         {Qt::Key_PageDown, none, 34}, {Qt::Key_End, none, 35},
      {Qt::Key_Home, none, 36},           {Qt::Key_Home, pad, 36},    {Qt::Key_D, none, 68},
      {Qt::Key_Q, none, 81},              {Qt::Key_W, none, 87},      {Qt::Key_O, none, 79},
      {Qt::Key_Enter, pad, 13},           {Qt::Key_F12, none, 123},   {Qt::Key_VolumeUp, none, 0},
  };
  for (const auto& row : table) EXPECT_EQ(WindowsKeyCode(row.key, row.modifiers), row.code) << std::hex << row.key;
}

}  // namespace
}  // namespace orvane::qt
