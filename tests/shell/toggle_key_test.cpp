#include "engine/files/key_names.h"
#include "shell/toggle_key/toggle_key_names.h"

#include <gtest/gtest.h>

#include <QKeyEvent>
#include <tuple>

namespace {

TEST(ToggleKeyNames, AreKeysForTheEngine) {
    for (const QString& name : toggleKeyNames()) {
        const rotika::KeyCode key = rotika::parseKeyCode(name.toStdU16String());
        EXPECT_TRUE(key.valid && !key.isMouse) << name.toStdString();
        EXPECT_EQ(toggleKeyNameOf(' ' + name.toUpper()), name);
    }
    EXPECT_EQ(toggleKeyNameOf("Spacja") + toggleKeyNameOf("lmb") + toggleKeyNameOf(""), "space");
}

TEST(ToggleKeyNames, OfPressedKeysDependOnNoLayout) {
    using Press = std::tuple<int, Qt::KeyboardModifiers, quint32, quint32, const char*>;
    const Press presses[] = {
        {Qt::Key_X, Qt::ShiftModifier, 53, 'X', "x"},
        {0x0427, {}, 53, 'X', "x"},            // Cyrillic
        {Qt::Key_Ampersand, {}, 10, '1', "1"}, // French
        {Qt::Key_Comma, {}, 58, 0xBC, ""},     // French, where the American keyboard has M
        {Qt::Key_F9, {}, 75, 0x78, "F9"},
        {Qt::Key_F13, {}, 191, 0x7C, "F13"},
        {Qt::Key_Space, {}, 65, 0x20, "space"},
        {Qt::Key_Home, Qt::KeypadModifier, 79, 0x24, ""},
        {Qt::Key_Shift, Qt::ShiftModifier, 50, 0x10, ""},
    };
    for (const auto& [key, modifiers, code, virtualKey, name] : presses)
        EXPECT_EQ(toggleKeyName(QKeyEvent(QEvent::KeyPress, key, modifiers, code, virtualKey, 0)), name)
            << std::hex << key;
}

} // namespace
