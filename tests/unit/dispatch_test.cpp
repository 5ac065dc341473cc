#include "core/dispatch.h"
#include "core/lifecycle.h"
#include "core/text.h"
#include "engine_test.h"
#include "overlay.h"
#include "platform/paths.h"

#include <memory>

namespace {

using Played = std::vector<TimedText>;
using Texts = std::vector<std::string>;

enum : std::uintptr_t {
    showWheelCommand = 1,
    hideWheelCommand,
    nextWheelCommand,
    previousWheelCommand,
    clickCommand = 7,
    doubleClickCommand,
    rightClickCommand,
};

constexpr char oneWheel[] = R"({"wheels": [{"name": "pusty", "actions": []},
                               {"name": "Nowe", "actions": [{"name": "z", "key": "z"}]}]})";
constexpr char emptyWheels[] = R"({"wheels": [{"name": "a", "actions": []}]})";

class Dispatch : public EngineTest {
protected:
    /// Sends a path as another process would; the answer.
    bool sendPath(std::u16string path, std::uintptr_t kind = 1) {
        return desktop.sendData(kind, path.data(), path.size() * sizeof(char16_t));
    }

    static std::u16string programPath(const std::u16string& name) { return joinPath(programFolder(), name); }
};

TEST_F(Dispatch, AFunctionRunByVoiceWaitsSendDelayOnlyIfItClosedTheWheel) {
    startWith({wheelOf(4), wheelOf(3)});
    engineState.voiceActions = {field({}, 80), field({}, 81)};
    engineConfig.sendDelay = 400;
    struct RoadCase {
        std::uint32_t message;
        std::uintptr_t wParam;
        std::intptr_t lParam;
        const char* key;
    };
    constexpr RoadCase cases[] = {
        {MsgVoiceField, 0, 3, "key 68"},
        {MsgVoiceField, 1, 2, "key 67"}, // not the active wheel
        {MsgVoiceFunction, 1, 0, "key 81"},
    };
    for (const RoadCase& c : cases) {
        for (const bool isOpen : {false, true}) {
            if (isOpen)
                pressToggleKey();
            desktop.clearJournal();
            const std::uint64_t start = desktop.clock.now();
            postToMain(c.message, c.wParam, c.lParam);
            EXPECT_FALSE(OverlayIsWheelVisible());
            EXPECT_FALSE(engineState.restorePending);
            desktop.advanceBy(2000);
            const std::uint64_t delay = isOpen ? 400 : 100;
            const Played expected{{delay, c.key + std::string(" down")},
                                  {delay + 60, c.key + std::string(" up")}};
            EXPECT_EQ(played(start), expected);
        }
    }
}

TEST_F(Dispatch, StaleIndicesDoNothingAndLeaveTheWheelOpen) {
    startWith({wheelOf(4)});
    engineState.voiceActions = {field({}, 80)};
    pressToggleKey();
    struct StaleCase {
        std::uint32_t message;
        std::uintptr_t wParam;
        std::intptr_t lParam;
    };
    constexpr auto minusOne = static_cast<std::uintptr_t>(-1);
    constexpr StaleCase cases[] = {
        {MsgVoiceField, 1, 0},           {MsgVoiceField, 0, 4},  {MsgVoiceField, 0, -1},
        {MsgVoiceField, minusOne, 0},    {MsgVoiceField, 9, 99}, {MsgVoiceFunction, 1, 0},
        {MsgVoiceFunction, minusOne, 0},
    };
    for (const StaleCase& c : cases)
        postToMain(c.message, c.wParam, c.lParam);
    desktop.advanceBy(1000);
    EXPECT_TRUE(OverlayIsWheelVisible());
    EXPECT_TRUE(played().empty());
}

TEST_F(Dispatch, AVoicedFieldWithoutStepsClosesTheWheelAndRunsNothing) {
    startWith({wheelOf(4)});
    engineState.wheels[0].actions[0].steps.clear();
    pressToggleKey();
    postToMain(MsgVoiceField, 0, 0);
    EXPECT_FALSE(OverlayIsWheelVisible());
    EXPECT_EQ(desktop.clock.workerCount(), 0U);
}

TEST_F(Dispatch, VoiceTurnsThePageOfAnOpenWheelOnly) {
    startWith({wheelOf(4), wheelOf(3), wheelOf(2)});
    postToMain(MsgVoiceCommand, nextWheelCommand);
    EXPECT_EQ(engineState.activeWheel, 0) << "closed";
    pressToggleKey();
    aimAt(inFieldOfFour[3]);
    struct PageCase {
        std::uintptr_t command;
        std::int32_t wheel;
        std::int32_t field;
    };
    constexpr PageCase cases[] = {
        {previousWheelCommand, 2, 1}, {nextWheelCommand, 0, 3}, {nextWheelCommand, 1, 2}};
    for (const PageCase& c : cases) {
        const int paintsBefore = wheelPaintCount();
        postToMain(MsgVoiceCommand, c.command);
        EXPECT_EQ(engineState.activeWheel, c.wheel);
        EXPECT_EQ(engineState.hoveredField, c.field);
        EXPECT_EQ(wheelPaintCount(), paintsBefore + 1);
    }
    engineState.wheels = {wheelOf(4)};
    engineState.activeWheel = 0;
    const int paintsBefore = wheelPaintCount();
    postToMain(MsgVoiceCommand, nextWheelCommand);
    postToMain(MsgVoiceCommand, previousWheelCommand);
    EXPECT_EQ(wheelPaintCount(), paintsBefore) << "a single wheel";
}

TEST_F(Dispatch, VoiceClicksAtTheRealCursorOrOnWhatTheVirtualOneIsOn) {
    startWith({wheelOf(4)});
    desktop.cursor = {100, 100};
    const Played left{{60, "button 0 down"}, {120, "button 0 up"}};
    const Played twice{
        {60, "button 0 down"}, {120, "button 0 up"}, {180, "button 0 down"}, {240, "button 0 up"}};
    const Played right{{60, "button 1 down"}, {120, "button 1 up"}};
    struct ClickCase {
        const char* what;
        std::uintptr_t command;
        bool wheelIsOpen;
        Point cursor;
        Played expected;
        bool wheelStaysOpen;
    };
    const ClickCase cases[] = {
        {"click, closed", clickCommand, false, {}, left, false},
        {"double click, closed", doubleClickCommand, false, {}, twice, false},
        {"right click, closed", rightClickCommand, false, {}, right, false},
        {"click, open on a field",
         clickCommand,
         true,
         inFieldOfFour[0],
         {{250, "key 65 down"}, {310, "key 65 up"}},
         false},
        {"click, open on nothing", clickCommand, true, inHole, {}, true},
        {"double click passes an open wheel", doubleClickCommand, true, inFieldOfFour[0], twice, true},
        {"right click passes an open wheel", rightClickCommand, true, inFieldOfFour[0], right, true},
    };
    for (const ClickCase& c : cases) {
        SCOPED_TRACE(c.what);
        if (c.wheelIsOpen) {
            pressToggleKey();
            aimAt(c.cursor);
        }
        desktop.clearJournal();
        desktop.seenByPrograms.clear();
        const std::uint64_t start = desktop.clock.now();
        postToMain(MsgVoiceCommand, c.command);
        desktop.advanceBy(2000);
        EXPECT_EQ(played(start), c.expected);
        EXPECT_EQ(OverlayIsWheelVisible(), c.wheelStaysOpen);
        const bool isPointing = !c.expected.empty() && c.expected[0].text.starts_with("button");
        EXPECT_EQ(desktop.seenByPrograms.size(), isPointing ? c.expected.size() : 0U);
        if (c.wheelStaysOpen)
            pressToggleKey();
    }
}

TEST_F(Dispatch, AVoicedClickTakesTheGridAwayButNeitherWheelNorLabels) {
    startWith({wheelOf(4)});
    for (const std::uintptr_t command : {clickCommand, doubleClickCommand, rightClickCommand}) {
        engineState.gridVisible = true;
        engineState.elementsVisible = true;
        postToMain(MsgVoiceCommand, command);
        EXPECT_FALSE(engineState.gridVisible) << command;
        EXPECT_TRUE(engineState.elementsVisible) << command;
    }
    pressToggleKey();
    engineState.gridVisible = true;
    postToMain(MsgVoiceCommand, clickCommand);
    EXPECT_TRUE(engineState.gridVisible) << "with the wheel open the word belongs to the wheel";
}

TEST_F(Dispatch, WhatNobodyAnswersIsHarmless) {
    startWith({wheelOf(4)});
    for (const std::uintptr_t command : {0U, 100U, 200U, 300U, 400U, 600U, 99999U})
        postToMain(MsgVoiceCommand, command);
    for (const std::uint32_t message : {0x8002U, 0x8008U, 0U})
        postToMain(message, 0);
    postToMain(MsgVoiceSkipped, 0, 0);
    desktop.mainHandlers->hotKeyPressed(2);
    ASSERT_TRUE(postWindowMessage(engineState.wheelWindow, MsgVoiceCommand, showWheelCommand));
    ASSERT_TRUE(postWindowMessage(engineState.wheelWindow, MsgSelectUnderCursor)); // while closed
    ASSERT_TRUE(postWindowMessage(engineState.gridWindow, MsgSelectUnderCursor));
    desktop.advanceBy(1000);
    EXPECT_TRUE(desktop.journal.empty());
}

TEST_F(Dispatch, AHeldToggleKeyTogglesOnce) {
    startWith({wheelOf(4)});
    for (int i = 0; i < 5; ++i)
        desktop.pressKey(engineConfig.toggleKeyCode.vk);
    desktop.pumpMessages();
    EXPECT_TRUE(OverlayIsWheelVisible());
}

TEST_F(Dispatch, SkippedPhrasesAreToldInABalloonCutToItsRoom) {
    const std::string prefix =
        "warning [Rotika — komendy głosowe] Pominięto frazy ze słowami spoza słownika modelu: ";
    const auto skip = [this](const std::u16string& phrases) {
        desktop.clearJournal();
        auto payload = std::make_unique<std::u16string>(phrases);
        postToMain(MsgVoiceSkipped, 0, reinterpret_cast<std::intptr_t>(payload.release()));
        return desktop.journalOf({JournalKind::tray});
    };
    ASSERT_TRUE(startEngine(true));
    EXPECT_EQ(skip(u"skok w bok, żółw"), (Texts{prefix + "skok w bok, żółw"}));
    const std::u16string fixed = u"Pominięto frazy ze słowami spoza słownika modelu: ";
    EXPECT_EQ(skip(std::u16string(300, u'x')), (Texts{prefix + std::string(255 - fixed.size(), 'x')}));
    desktop.destroyMainWindow();
    EXPECT_FALSE(postWindowMessage(engineState.mainWindow, MsgVoiceSkipped))
        << "the payload stays the sender's";
}

TEST_F(Dispatch, WithoutATrayIconABalloonIsLost) {
    startWith({wheelOf(4)});
    auto payload = std::make_unique<std::u16string>(u"skok");
    postToMain(MsgVoiceSkipped, 0, reinterpret_cast<std::intptr_t>(payload.release()));
    EXPECT_TRUE(desktop.journal.empty());
}

TEST_F(Dispatch, DataFromAnotherProcessActivatesAWheelFile) {
    ASSERT_TRUE(startEngine(true));
    writeProgramFile(u"koła.json", oneWheel);
    pressToggleKey();
    const int paintsBefore = wheelPaintCount();
    desktop.clearJournal();
    const std::u16string path = programPath(u"koła.json");
    EXPECT_TRUE(sendPath(path + std::u16string(3, u'\0')));
    ASSERT_EQ(OverlayWheelCount(), 1);
    EXPECT_EQ(engineState.wheels[0].name, u"Nowe");
    EXPECT_EQ(engineState.hoveredField, -1);
    EXPECT_EQ(wheelPaintCount(), paintsBefore + 1);
    EXPECT_EQ(desktop.mainWindowRepaints, 1);
    EXPECT_EQ(desktop.journalOf({JournalKind::tray}),
              (Texts{"info [Rotika] Aktywowano konfigurację: " + utf8FromUtf16(path)}));
    EXPECT_TRUE(OverlayIsWheelVisible());
}

TEST_F(Dispatch, DataThatIsNoWheelFileIsRefusedWithoutAWord) {
    ASSERT_TRUE(startEngine(true));
    writeProgramFile(u"dobre.json", oneWheel);
    writeProgramFile(u"puste.json", emptyWheels);
    writeProgramFile(u"zle.json", "{");
    engineState.wheels = {wheelOf(4), wheelOf(5)};
    engineState.activeWheel = 1;
    desktop.clearJournal();
    const std::u16string good = programPath(u"dobre.json");
    EXPECT_FALSE(sendPath(good, 0));
    EXPECT_FALSE(sendPath(good, 2));
    EXPECT_FALSE(desktop.sendData(1, good.data(), 1));
    EXPECT_FALSE(desktop.sendData(1, good.data(), 0));
    EXPECT_FALSE(desktop.sendData(1, nullptr, 100));
    EXPECT_FALSE(sendPath(std::u16string(8, u'\0')));
    EXPECT_FALSE(sendPath(programPath(u"puste.json")));
    EXPECT_FALSE(sendPath(programPath(u"zle.json")));
    EXPECT_FALSE(sendPath(programPath(u"brak.json")));
    EXPECT_EQ(OverlayWheelCount(), 2);
    EXPECT_EQ(engineState.activeWheel, 1);
    EXPECT_EQ(desktop.mainWindowRepaints, 0);
    EXPECT_TRUE(desktop.journal.empty());
}

TEST_F(Dispatch, AnOddByteAtTheEndOfTheDataIsNotPartOfThePath) {
    startWith({wheelOf(4)});
    writeProgramFile(u"dobre.json", oneWheel);
    std::u16string path = programPath(u"dobre.json");
    const std::size_t byteCount = path.size() * sizeof(char16_t) + 1;
    path += u'Ł';
    EXPECT_TRUE(desktop.sendData(1, path.data(), byteCount));
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
