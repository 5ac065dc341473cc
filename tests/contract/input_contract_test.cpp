// Hot key, injected keys and buttons, and the keyboard's layout.

#include "contract_test.h"
#include "platform/hot_key.h"
#include "platform/injection.h"
#include "platform/keyboard_layout.h"
#include "platform/pointer.h"

#include <gtest/gtest.h>

namespace {

using InputContract = ContractTest;

constexpr std::uint16_t keyX = 0x58;
constexpr std::uint16_t keyB = 0x42;

void tapInjected(std::uint16_t virtualKey) {
    injectKey(virtualKey, false, InputMotion::downUntilReleased);
    injectKey(virtualKey, false, InputMotion::up);
}

TEST_F(InputContract, HotKeyIsHeardOncePerPressAndByNobodyElse) {
    const auto recorder = openRecorder(recorderPlace);
    ASSERT_TRUE(registerHotKey(mainWindow(), 1, keyX));

    pressRealKey(keyX);
    EXPECT_TRUE(pumpUntil([] { return heard.hotKeys.size() == 1; }));
    releaseRealKey(keyX);
    pressRealKey(keyX);
    EXPECT_TRUE(pumpUntil([] { return heard.hotKeys.size() >= 2; }));
    releaseRealKey(keyX);

    tapInjected(keyB);
    EXPECT_TRUE(pumpUntil([&] { return contains(recorder->events(), "key 66 up"); }));
    EXPECT_EQ(heard.hotKeys, (std::vector<int>{1, 1}));
    EXPECT_FALSE(contains(recorder->events(), "key 88 down"));
    unregisterHotKey(mainWindow(), 1);
}

TEST_F(InputContract, ALitCapsLockDoesNotHideTheHotKey) {
    constexpr std::uint16_t capsLock = 0x14;
    const auto recorder = openRecorder(recorderPlace);
    ASSERT_TRUE(registerHotKey(mainWindow(), 1, keyX));
    pressRealKey(capsLock);
    releaseRealKey(capsLock);
    pressRealKey(keyX);
    releaseRealKey(keyX);
    EXPECT_TRUE(pumpUntil([] { return heard.hotKeys.size() == 1; }));
    pressRealKey(capsLock);
    releaseRealKey(capsLock);
    unregisterHotKey(mainWindow(), 1);
}

TEST_F(InputContract, AnUnregisteredHotKeyIsHeardNoMore) {
    const auto recorder = openRecorder(recorderPlace);
    ASSERT_TRUE(registerHotKey(mainWindow(), 1, keyX));
    unregisterHotKey(mainWindow(), 1);
    pressRealKey(keyX);
    releaseRealKey(keyX);
    tapInjected(keyB);
    EXPECT_TRUE(pumpUntil([&] { return contains(recorder->events(), "key 66 up"); }))
        << testing::PrintToString(recorder->events());
    EXPECT_TRUE(heard.hotKeys.empty());
}

TEST_F(InputContract, AHotKeyHeldElsewhereIsRefusedUntilItIsFree) {
    const auto recorder = openRecorder(recorderPlace);
    auto taken = takeHotKeyElsewhere(keyX);
    EXPECT_FALSE(registerHotKey(mainWindow(), 1, keyX));
    EXPECT_TRUE(registerHotKey(mainWindow(), 1, keyB)) << "another key is free";
    unregisterHotKey(mainWindow(), 1);
    taken.reset();
    EXPECT_TRUE(pumpUntil([] { return registerHotKey(mainWindow(), 1, keyX); }));
    unregisterHotKey(mainWindow(), 1);
}

TEST_F(InputContract, InjectedKeysReachTheWindowWithTheKeyboard) {
    const auto recorder = openRecorder(recorderPlace);
    struct Key {
        std::uint16_t virtualKey;
        bool extended;
    };
    // letter, digit, F5, Space, Enter, Shift, and from the extended block Right and Delete
    const std::vector<Key> keys{{0x41, false}, {0x31, false}, {0x74, false}, {0x20, false},
                                {0x0D, false}, {0x10, false}, {0x27, true},  {0x2E, true}};
    std::vector<std::string> expected;
    for (const Key& key : keys) {
        injectKey(key.virtualKey, key.extended, InputMotion::downUntilReleased);
        injectKey(key.virtualKey, key.extended, InputMotion::up);
        expected.push_back("key " + std::to_string(key.virtualKey) + " down");
        expected.push_back("key " + std::to_string(key.virtualKey) + " up");
    }
    EXPECT_TRUE(pumpUntil([&] { return recorder->events().size() >= expected.size(); }));
    EXPECT_EQ(recorder->events(), expected);
}

TEST_F(InputContract, AKeyLeftDownStaysDownUntilReleased) {
    const auto recorder = openRecorder(recorderPlace);
    injectKey(0x41, false, InputMotion::downAndLeft);
    tapInjected(keyB);
    EXPECT_TRUE(pumpUntil([&] { return contains(recorder->events(), "key 66 up"); }));
    EXPECT_EQ(recorder->events(), (std::vector<std::string>{"key 65 down", "key 66 down", "key 66 up"}));
    injectKey(0x41, false, InputMotion::up);
    EXPECT_TRUE(pumpUntil([&] { return contains(recorder->events(), "key 65 up"); }));
}

TEST_F(InputContract, InjectedButtonsArriveWhereTheCursorIs) {
    const auto recorder = openRecorder(recorderPlace);
    setCursorPosition({300, 250});
    ASSERT_TRUE(pumpUntil([] { return cursorPosition() == Point{300, 250}; }));
    std::vector<std::string> expected;
    for (std::uint32_t button = 0; button <= 4; ++button) {
        injectMouseButton(button, InputMotion::downUntilReleased);
        injectMouseButton(button, InputMotion::up);
        expected.push_back("button " + std::to_string(button) + " down");
        expected.push_back("button " + std::to_string(button) + " up");
    }
    EXPECT_TRUE(pumpUntil([&] { return recorder->events().size() >= expected.size(); }));
    EXPECT_EQ(recorder->events(), expected);
}

TEST_F(InputContract, CharactersHaveTheirKeyAndShiftState) {
    EXPECT_EQ(virtualKeyOfCharacter(u'a'), 0x0041);
    EXPECT_EQ(virtualKeyOfCharacter(u'A'), 0x0141);
    EXPECT_EQ(virtualKeyOfCharacter(u'7'), 0x0037);
    EXPECT_EQ(virtualKeyOfCharacter(u'!'), 0x0131);
    EXPECT_EQ(virtualKeyOfCharacter(u' '), 0x0020);
    EXPECT_EQ(virtualKeyOfCharacter(u'.'), 0x00BE);
    EXPECT_EQ(virtualKeyOfCharacter(u'\u4E2D'), noVirtualKey);
}

} // namespace
