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

void tapInjected(std::uint16_t virtualKey, bool extended = false) {
    injectKey(virtualKey, extended, InputMotion::downUntilReleased);
    injectKey(virtualKey, extended, InputMotion::up);
}

void tapReal(std::uint16_t virtualKey) {
    pressRealKey(virtualKey);
    releaseRealKey(virtualKey);
}

TEST_F(InputContract, AHotKeyIsHeardOncePerPressByNobodyElseAndAlsoUnderALitCapsLock) {
    constexpr std::uint16_t capsLock = 0x14;
    constexpr std::uint16_t keyC = 0x43;
    const auto recorder = openRecorder(recorderPlace);
    ASSERT_TRUE(registerHotKey(mainWindow(), 1, keyX));
    tapReal(keyX);
    EXPECT_TRUE(pumpUntil([] { return heard.hotKeys.size() == 1; }));
    tapReal(capsLock);
    tapReal(keyX);
    EXPECT_TRUE(pumpUntil([] { return heard.hotKeys.size() >= 2; }));
    tapReal(capsLock);
    tapInjected(keyB);
    EXPECT_TRUE(pumpUntil([&] { return contains(recorder->events(), "key 66 up"); }));
    EXPECT_FALSE(contains(recorder->events(), "key 88 down"));

    unregisterHotKey(mainWindow(), 1);
    tapReal(keyX);
    tapInjected(keyC);
    EXPECT_TRUE(pumpUntil([&] { return contains(recorder->events(), "key 67 up"); }));
    EXPECT_EQ(heard.hotKeys, (std::vector<int>{1, 1}));
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

TEST_F(InputContract, InjectedKeysReachTheWindowWithTheKeyboardAndOneLeftDownStaysDown) {
    constexpr std::uint16_t keyRight = 0x27;
    const auto recorder = openRecorder(recorderPlace);
    tapInjected(0x31);
    tapInjected(keyRight, true);
    injectKey(0x41, false, InputMotion::downAndLeft);
    tapInjected(keyB);
    injectKey(0x41, false, InputMotion::up);
    const std::vector<std::string> expected{"key 49 down", "key 49 up",   "key 39 down", "key 39 up",
                                            "key 65 down", "key 66 down", "key 66 up",   "key 65 up"};
    EXPECT_TRUE(pumpUntil([&] { return recorder->events().size() >= expected.size(); }));
    EXPECT_EQ(recorder->events(), expected);
}

TEST_F(InputContract, CharactersHaveTheirKeyAndShiftState) {
    const std::pair<char16_t, int> cases[] = {{u'a', 0x41},
                                              {u'A', 0x141},
                                              {u'7', 0x37},
                                              {u'!', 0x131},
                                              {u' ', 0x20},
                                              {u'.', 0xBE},
                                              {u'\u4E2D', noVirtualKey}};
    for (const auto& [character, key] : cases)
        EXPECT_EQ(virtualKeyOfCharacter(character), key) << static_cast<int>(character);
}

} // namespace
