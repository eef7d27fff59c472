#include "Tessarune/ui/captions/ShortcutKeys.h"

#include <string_view>
#include <utility>

namespace tessarune {

namespace {

/// The characters of the stored key codes 0, 1, 2 and so on; ~ for a code without a character. Each
/// character is also Qt's code of the key.
constexpr std::string_view signsFromZero = "ASDFHGZXCV~BQWERYT123465=97-80]OU[IP~LJ'K;\\,/NM.~ `";
static_assert(signsFromZero[8] == 'C' && signsFromZero[37] == 'L' && signsFromZero[49] == ' ');

constexpr std::pair<std::int64_t, Qt::Key> otherKeys[] = {
    // clang-format off
    {36, Qt::Key_Return}, {48, Qt::Key_Tab}, {51, Qt::Key_Backspace}, {53, Qt::Key_Escape},
    {76, Qt::Key_Enter}, {114, Qt::Key_Insert}, {117, Qt::Key_Delete}, {115, Qt::Key_Home},
    {119, Qt::Key_End}, {116, Qt::Key_PageUp}, {121, Qt::Key_PageDown}, {123, Qt::Key_Left},
    {124, Qt::Key_Right}, {125, Qt::Key_Down}, {126, Qt::Key_Up}, {122, Qt::Key_F1},
    {120, Qt::Key_F2}, {99, Qt::Key_F3}, {118, Qt::Key_F4}, {96, Qt::Key_F5}, {97, Qt::Key_F6},
    {98, Qt::Key_F7}, {100, Qt::Key_F8}, {101, Qt::Key_F9}, {109, Qt::Key_F10}, {103, Qt::Key_F11},
    {111, Qt::Key_F12},
    // clang-format on
};

constexpr std::pair<std::int64_t, Qt::KeyboardModifier> modifierKeys[] = {
    {0x20000, Qt::ShiftModifier},
    {0x40000, Qt::MetaModifier},
    {0x80000, Qt::AltModifier},
    {0x100000, Qt::ControlModifier}};

std::optional<Qt::Key> keyOf(std::int64_t code) {
    const auto position = static_cast<std::size_t>(code);
    if (code >= 0 && position < signsFromZero.size() && signsFromZero[position] != '~')
        return static_cast<Qt::Key>(signsFromZero[position]);
    for (const auto& [candidate, key] : otherKeys) {
        if (candidate == code)
            return key;
    }
    return std::nullopt;
}

} // namespace

QKeySequence keysOf(const ShortcutSetting& shortcut) {
    const std::optional<Qt::Key> key = keyOf(*shortcut.keyCode);
    if (!key)
        return {};
    Qt::KeyboardModifiers modifiers;
    for (const auto& [bit, modifier] : modifierKeys)
        modifiers.setFlag(modifier, (*shortcut.modifiers & bit) != 0);
    return QKeyCombination(modifiers, *key);
}

int keyWithoutShift(int key, Qt::KeyboardModifiers modifiers, quint32 scanCode) {
    constexpr quint32 one = 10, zero = 19; // the row of digits
    if (!modifiers.testFlag(Qt::ShiftModifier) || scanCode < one || scanCode > zero)
        return key;
    return scanCode == zero ? Qt::Key_0 : Qt::Key_1 + static_cast<int>(scanCode - one);
}

std::optional<StoredKeys> storedKeys(int key, Qt::KeyboardModifiers modifiers) {
    constexpr std::int64_t highestCode = 0x7F;
    StoredKeys stored{0, 0};
    while (keyOf(stored.keyCode) != static_cast<Qt::Key>(key)) {
        if (++stored.keyCode > highestCode)
            return std::nullopt;
    }
    for (const auto& [bit, modifier] : modifierKeys) {
        if (modifiers.testFlag(modifier))
            stored.modifiers |= bit;
    }
    return stored;
}

} // namespace tessarune
