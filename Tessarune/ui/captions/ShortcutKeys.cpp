#include "Tessarune/ui/captions/ShortcutKeys.h"

#include <array>
#include <utility>

namespace tessarune {

namespace {

/// Keys that lie in rows on the keyboard, by the codes from 0 on; 0: no key of its own.
constexpr std::array<int, 51> keysFromZero{
    Qt::Key_A,         Qt::Key_S,         Qt::Key_D,          Qt::Key_F,     Qt::Key_H,
    Qt::Key_G,         Qt::Key_Z,         Qt::Key_X,          Qt::Key_C,     Qt::Key_V,
    0,                 Qt::Key_B,         Qt::Key_Q,          Qt::Key_W,     Qt::Key_E,
    Qt::Key_R,         Qt::Key_Y,         Qt::Key_T,          Qt::Key_1,     Qt::Key_2,
    Qt::Key_3,         Qt::Key_4,         Qt::Key_6,          Qt::Key_5,     Qt::Key_Equal,
    Qt::Key_9,         Qt::Key_7,         Qt::Key_Minus,      Qt::Key_8,     Qt::Key_0,
    Qt::Key_BracketRight, Qt::Key_O,      Qt::Key_U,          Qt::Key_BracketLeft, Qt::Key_I,
    Qt::Key_P,         Qt::Key_Return,    Qt::Key_L,          Qt::Key_J,     Qt::Key_Apostrophe,
    Qt::Key_K,         Qt::Key_Semicolon, Qt::Key_Backslash,  Qt::Key_Comma, Qt::Key_Slash,
    Qt::Key_N,         Qt::Key_M,         Qt::Key_Period,     Qt::Key_Tab,   Qt::Key_Space,
    Qt::Key_QuoteLeft};

constexpr std::pair<std::int64_t, int> otherKeys[] = {
    {51, Qt::Key_Backspace}, {53, Qt::Key_Escape},   {76, Qt::Key_Enter},   {96, Qt::Key_F5},
    {97, Qt::Key_F6},        {98, Qt::Key_F7},       {99, Qt::Key_F3},      {100, Qt::Key_F8},
    {101, Qt::Key_F9},       {103, Qt::Key_F11},     {109, Qt::Key_F10},    {111, Qt::Key_F12},
    {114, Qt::Key_Insert},   {115, Qt::Key_Home},    {116, Qt::Key_PageUp}, {117, Qt::Key_Delete},
    {118, Qt::Key_F4},       {119, Qt::Key_End},     {120, Qt::Key_F2},     {121, Qt::Key_PageDown},
    {122, Qt::Key_F1},       {123, Qt::Key_Left},    {124, Qt::Key_Right},  {125, Qt::Key_Down},
    {126, Qt::Key_Up}};

constexpr std::pair<std::int64_t, Qt::KeyboardModifier> modifierKeys[] = {
    {0x20000, Qt::ShiftModifier},
    {0x40000, Qt::MetaModifier},
    {0x80000, Qt::AltModifier},
    {0x100000, Qt::ControlModifier}};

int keyOf(std::int64_t code) {
    if (code >= 0 && code < static_cast<std::int64_t>(keysFromZero.size()))
        return keysFromZero[static_cast<std::size_t>(code)];
    for (const auto& [candidate, key] : otherKeys) {
        if (candidate == code)
            return key;
    }
    return 0;
}

} // namespace

QKeySequence keysOf(const ShortcutSetting& shortcut) {
    const int key = keyOf(*shortcut.keyCode);
    if (key == 0)
        return {};
    Qt::KeyboardModifiers modifiers;
    for (const auto& [bit, modifier] : modifierKeys)
        modifiers.setFlag(modifier, (*shortcut.modifiers & bit) != 0);
    return QKeyCombination(modifiers, static_cast<Qt::Key>(key));
}

} // namespace tessarune
