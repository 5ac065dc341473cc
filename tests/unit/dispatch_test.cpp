#include "core/dispatch.h"
#include "core/handed_over.h"
#include "core/lifecycle.h"
#include "core/text.h"
#include "engine_test.h"

#include <memory>
#include <optional>
#include <tuple>

namespace {

enum : std::uintptr_t {
    showWheelCommand = 1,
    nextWheelCommand = 3,
    previousWheelCommand,
    clickCommand = 7,
    doubleClickCommand,
    rightClickCommand,
};

struct MessageCase {
    std::uint32_t message;
    std::uintptr_t wParam;
    std::intptr_t lParam;
    std::string key = {};
};

class Dispatch : public EngineTest {
protected:
    /// Sends a path as another process would; the answer.
    bool sendPath(const std::u16string& path, std::uintptr_t kind = 1) {
        return desktop.sendData(kind, path.data(), path.size() * sizeof(char16_t));
    }

    /// Posts the phrases that the recogniser skipped, and the same record again as anybody could; the
    /// balloon.
    std::string skip(const std::u16string& phrases) {
        desktop.clearJournal();
        auto record = std::make_unique<std::u16string>(phrases);
        const auto number = reinterpret_cast<std::intptr_t>(record.get());
        EXPECT_TRUE(postRecord(engineState.mainWindow, MsgVoiceSkipped, std::move(record)));
        postToMain(MsgVoiceSkipped, 0, number);
        return journal({JournalKind::tray});
    }
};

TEST_F(Dispatch, AFunctionRunByVoiceWaitsSendDelayOnlyIfItClosedTheWheel) {
    startWith({wheelOf(4), wheelOf(3)});
    engineState.voiceActions = {field({}, 80), field({}, 81)};
    engineConfig.sendDelay = 400;
    const MessageCase cases[] = {
        {MsgVoiceField, 0, 3, "key 68"},
        {MsgVoiceField, 1, 2, "key 67"}, // not the active wheel
        {MsgVoiceFunction, 1, 0, "key 81"},
    };
    for (const MessageCase& c : cases) {
        for (const bool isOpen : {false, true}) {
            if (isOpen)
                pressToggleKey();
            desktop.clearJournal();
            const std::uint64_t start = desktop.clock.now();
            postToMain(c.message, c.wParam, c.lParam);
            EXPECT_FALSE(OverlayIsWheelVisible());
            desktop.advanceBy(2000);
            EXPECT_EQ(played(start), (isOpen ? "400 " : "100 ") + c.key + " down, " +
                                         (isOpen ? "460 " : "160 ") + c.key + " up");
        }
    }
}

TEST_F(Dispatch, StaleIndicesAndWhatNobodyAnswersLeaveTheWheelAsItIs) {
    startWith({wheelOf(4)});
    engineState.voiceActions = {field({}, 80)};
    constexpr auto minusOne = static_cast<std::uintptr_t>(-1);
    const MessageCase cases[] = {
        {MsgVoiceField, 1, 0},         {MsgVoiceField, 0, 4},        {MsgVoiceField, 0, -1},
        {MsgVoiceField, minusOne, 0},  {MsgVoiceField, 9, 99},       {MsgVoiceFunction, 1, 0},
        {MsgVoiceCommand, 0, 0},       {MsgVoiceCommand, 99, 0},     {MsgVoiceCommand, 100, 0},
        {MsgVoiceCommand, 600, 0},     {MsgVoiceCommand, 9999, 0},   {MsgVoiceFunction, minusOne, 0},
        {MsgVoiceSkipped, 0, 0},       {MsgSelectUnderCursor, 0, 0}, {MsgVoiceSkipped, 0, 0x1234},
        {MsgElementsReady, 0, 0x1234}, {MsgIconLoaded, 0, 0x1234},   {MsgIconLoaded, 0, 0}};
    for (const bool isOpen : {false, true}) {
        if (isOpen)
            pressToggleKey();
        desktop.clearJournal();
        for (const MessageCase& c : cases)
            postToMain(c.message, c.wParam, c.lParam);
        desktop.mainHandlers->hotKeyPressed(2);
        ASSERT_TRUE(postWindowMessage(engineState.wheelWindow, MsgVoiceCommand, showWheelCommand));
        ASSERT_TRUE(
            postWindowMessage(engineState.wheelWindow, MsgSelectUnderCursor)); // closed, or in the hole
        ASSERT_TRUE(postWindowMessage(engineState.gridWindow, MsgSelectUnderCursor));
        desktop.advanceBy(1000);
        EXPECT_EQ(OverlayIsWheelVisible(), isOpen);
        EXPECT_TRUE(desktop.journal.empty());
    }
}

TEST_F(Dispatch, VoiceTurnsThePageOfAnOpenWheelBothWaysUnderAStillCursor) {
    startWith({wheelOf(4), wheelOf(1), wheelOf(24)});
    postToMain(MsgVoiceCommand, nextWheelCommand);
    EXPECT_EQ(engineState.activeWheel, 0) << "closed";
    pressToggleKey();
    aimAt(inFieldOfFour[3]);
    // command, and the wheel and hovered field after it: the ring is divided anew
    constexpr std::tuple<std::uintptr_t, std::int32_t, std::int32_t> cases[] = {
        {nextWheelCommand, 1, 0},
        {nextWheelCommand, 2, 19},
        {nextWheelCommand, 0, 3},
        {previousWheelCommand, 2, 19}};
    int paintCount = wheelPaintCount();
    for (const auto& [command, wheel, hovered] : cases) {
        postToMain(MsgVoiceCommand, command);
        EXPECT_EQ(engineState.activeWheel, wheel);
        EXPECT_EQ(engineState.hoveredField, hovered);
        EXPECT_EQ(wheelPaintCount(), ++paintCount);
    }
    engineState.wheels = {wheelOf(4)};
    engineState.activeWheel = 0;
    postToMain(MsgVoiceCommand, nextWheelCommand);
    EXPECT_EQ(wheelPaintCount(), paintCount) << "a single wheel";
}

TEST_F(Dispatch, VoiceClicksAtTheRealCursorOrOnWhatTheVirtualOneIsOn) {
    startWith({wheelOf(4)});
    desktop.cursor = {100, 100};
    const std::string left = "60 button 0 down, 120 button 0 up";
    const std::string twice = left + ", 180 button 0 down, 240 button 0 up";
    const std::string right = "60 button 1 down, 120 button 1 up";
    // command, virtual cursor of the open wheel, what is played, does the wheel stay open
    const std::tuple<std::uintptr_t, std::optional<Point>, std::string, bool> cases[] = {
        {clickCommand, {}, left, false},
        {doubleClickCommand, {}, twice, false},
        {rightClickCommand, {}, right, false},
        {clickCommand, inFieldOfFour[0], "250 key 65 down, 310 key 65 up", false},
        {clickCommand, inHole, "", true},
        {doubleClickCommand, inFieldOfFour[0], twice, true}, // these two pass an open wheel
        {rightClickCommand, inFieldOfFour[0], right, true},
    };
    for (const auto& [command, virtualCursor, expected, wheelStaysOpen] : cases) {
        if (virtualCursor) {
            pressToggleKey();
            aimAt(*virtualCursor);
        }
        desktop.clearJournal();
        const std::uint64_t start = desktop.clock.now();
        postToMain(MsgVoiceCommand, command);
        desktop.advanceBy(2000);
        EXPECT_EQ(played(start), expected);
        EXPECT_EQ(OverlayIsWheelVisible(), wheelStaysOpen);
        if (wheelStaysOpen)
            pressToggleKey();
    }
}

TEST_F(Dispatch, AVoicedClickTakesTheGridAwayButNeitherWheelNorLabels) {
    startWith({wheelOf(4)});
    engineState.elementsVisible = true;
    for (const std::uintptr_t command : {clickCommand, doubleClickCommand, rightClickCommand}) {
        showOverlayWindow(engineState.gridWindow);
        engineState.gridVisible = true;
        postToMain(MsgVoiceCommand, command);
        EXPECT_FALSE(engineState.gridVisible) << command;
        EXPECT_FALSE(desktop.windowNamed("grid")->isShown) << command;
    }
    EXPECT_TRUE(engineState.elementsVisible);
    showOverlayWindow(engineState.gridWindow); // now it holds the labels alone
    postToMain(MsgVoiceCommand, clickCommand);
    EXPECT_TRUE(desktop.windowNamed("grid")->isShown);
    pressToggleKey();
    engineState.gridVisible = true;
    postToMain(MsgVoiceCommand, clickCommand);
    EXPECT_TRUE(engineState.gridVisible) << "with the wheel open the word belongs to the wheel";
}

TEST_F(Dispatch, SkippedPhrasesAreToldInABalloonCutToItsRoom) {
    const std::u16string text = u"Pominięto frazy ze słowami spoza słownika modelu: ";
    const std::string prefix = "warning [Rotika — komendy głosowe] " + utf8FromUtf16(text);
    ASSERT_TRUE(startEngine(true));
    EXPECT_EQ(skip(u"skok w bok, żółw"), prefix + "skok w bok, żółw");
    EXPECT_EQ(skip(std::u16string(300, u'x')), prefix + std::string(255 - text.size(), 'x'));
    desktop.destroyMainWindow();
    EXPECT_FALSE(
        postRecord(engineState.mainWindow, MsgVoiceSkipped, std::make_unique<std::u16string>(u"za późno")));
}

TEST_F(Dispatch, DataFromAnotherProcessActivatesAWheelFileOrIsRefusedWithoutAWord) {
    ASSERT_TRUE(startEngine(true));
    EXPECT_EQ(journal({JournalKind::box}), "") << "sound files";
    const std::u16string path = folder.write(
        "koła.json", R"({"wheels": [{"actions": []}, {"name": "Nowe", "actions": [{"key": "z"}]}]})");
    engineState.wheels = {wheelOf(4), wheelOf(5)};
    engineState.activeWheel = 1;
    desktop.clearJournal();
    for (const std::uintptr_t kind : {0U, 2U})
        EXPECT_FALSE(sendPath(path, kind));
    for (const std::size_t byteCount : {0U, 1U})
        EXPECT_FALSE(desktop.sendData(1, path.data(), byteCount));
    EXPECT_FALSE(desktop.sendData(1, nullptr, 100));
    EXPECT_FALSE(sendPath(std::u16string(8, u'\0')));
    EXPECT_FALSE(sendPath(folder.write("puste.json", R"({"wheels": [{"actions": []}]})")));
    EXPECT_EQ(engineState.activeWheel, 1);
    EXPECT_EQ(desktop.mainWindowRepaints, 0);
    EXPECT_TRUE(desktop.journal.empty());

    EXPECT_TRUE(sendPath(path + std::u16string(3, u'\0')));
    EXPECT_EQ(describe(engineState.wheels), "Nowe[{click z 1}]");
    EXPECT_EQ(desktop.mainWindowRepaints, 1);
    EXPECT_EQ(journal({JournalKind::tray}), "info [Rotika] Aktywowano konfigurację: " + utf8FromUtf16(path));
    const std::u16string longer = path + u'Ł'; // an odd byte at the end is no part of the path
    EXPECT_TRUE(desktop.sendData(1, longer.data(), path.size() * sizeof(char16_t) + 1));
}

TEST_F(Dispatch, TheStatusPageQuotesTheSettingsInForce) {
    startWith({wheelOf(7), wheelOf(3)});
    const auto page = [this] { return utf8FromUtf16(desktop.mainHandlers->statusText()); };
    EXPECT_TRUE(page().starts_with("Rotika — koło wyboru funkcji\n\n•  Naciśnij  'x'  aby pokazać"));
    EXPECT_NE(
        page().find("\nKół funkcji: 2, pól w pierwszym: 7\nTobii Eye Tracker: wyłączony (gazeEnabled = "
                    "false)\nKomendy głosowe: wyłączony (voiceEnabled = false)\nSiatka: \"pokaż siatkę\""),
        std::string::npos);
    EXPECT_TRUE(page().ends_with("Zakończenie: prawy przycisk na ikonie w zasobniku → Zakończ."));
    engineState.wheels.clear();
    EXPECT_NE(page().find("Kół funkcji: 0, pól w pierwszym: 0\n"), std::string::npos);
}

} // namespace
