#include "engine/files/key_names.h"
#include "shell/toggle_key/toggle_key_names.h"

#include <gtest/gtest.h>

#include <QKeyEvent>

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
    struct Press {
        int key;
        Qt::KeyboardModifiers modifiers;
        quint32 linuxCode, windowsKey;
        const char* name;
    };
    const Press presses[] = {
        {Qt::Key_X, {}, 53, 'X', "x"},
        {Qt::Key_X, Qt::ShiftModifier, 53, 'X', "x"},
        {0x0427, {}, 53, 'X', "x"},            // Cyrillic
        {Qt::Key_Ampersand, {}, 10, '1', "1"}, // French
        {Qt::Key_F9, {}, 75, 0x78, "F9"},
        {Qt::Key_F13, {}, 191, 0x7C, "F13"},
        {Qt::Key_Space, {}, 65, 0x20, "space"},
        {Qt::Key_Home, Qt::KeypadModifier, 79, 0x24, ""},
        {Qt::Key_5, Qt::KeypadModifier, 84, 0x65, ""},
        {Qt::Key_Comma, {}, 58, 0xBC, ""}, // French, where the American keyboard has M
        {Qt::Key_Shift, Qt::ShiftModifier, 50, 0x10, ""},
    };
    for (const Press& press : presses) {
        const QKeyEvent event(QEvent::KeyPress, press.key, press.modifiers, press.linuxCode, press.windowsKey,
                              0);
        EXPECT_EQ(toggleKeyName(event), press.name) << std::hex << press.key;
    }
}

} // namespace
