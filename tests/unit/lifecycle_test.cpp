#include "core/lifecycle.h"
#include "core/text.h"
#include "engine_test.h"
#include "overlay.h"
#include "picture_text.h"
#include "platform/paths.h"

namespace {

using Texts = std::vector<std::string>;

constexpr std::uint16_t keyX = 0x58;

class Lifecycle : public EngineTest {
protected:
    Texts boxes() const { return desktop.journalOf({JournalKind::box}); }

    static bool activate(const std::u16string& name) {
        const std::u16string path = joinPath(programFolder(), name);
        return OverlayActivateWheelFile(reinterpret_cast<const OverlayChar*>(path.c_str()));
    }
};

TEST_F(Lifecycle, StartMakesHiddenWindowsAndTakesTheToggleKeyOnce) {
    EXPECT_FALSE(OverlayIsWheelVisible());
    EXPECT_EQ(OverlayWheelCount(), 0);
    EXPECT_TRUE(OverlayEngineStart());
    const std::size_t windowCount = desktop.windows.size();
    for (const char* name : {"main", "wheel", "grid"}) {
        ASSERT_NE(desktop.windowNamed(name), nullptr);
        EXPECT_FALSE(desktop.windowNamed(name)->isShown) << name;
    }
    EXPECT_FALSE(desktop.windowNamed("wheel")->letsPointerThrough);
    EXPECT_TRUE(desktop.windowNamed("grid")->letsPointerThrough);
    EXPECT_EQ(desktop.windowNamed("grid")->place, (Rect{0, 0, 100, 100}));
    EXPECT_EQ(desktop.windowNamed("wheel")->place, (Rect{0, 0, 588, 460}));
    EXPECT_EQ(desktop.registeredKeys(), (std::set<std::uint16_t>{keyX}));
    EXPECT_GT(OverlayWheelCount(), 0) << "the files of the first run";
    EXPECT_FALSE(desktop.trayTip);
    EXPECT_TRUE(boxes().empty());
    EXPECT_TRUE(isForeground("game"));

    desktop.clearJournal();
    EXPECT_TRUE(OverlayEngineStart());
    EXPECT_TRUE(desktop.journal.empty());
    EXPECT_EQ(desktop.windows.size(), windowCount);
}

TEST_F(Lifecycle, ThereIsNoStartAfterStop) {
    startWith({wheelOf(4)});
    OverlayEngineStop();
    EXPECT_TRUE(desktop.registeredKeys().empty());
    desktop.clearJournal();
    EXPECT_TRUE(OverlayEngineStart());
    EXPECT_TRUE(desktop.journal.empty());
    EXPECT_TRUE(desktop.registeredKeys().empty());
    OverlayEngineStop(); // a second time
}

TEST_F(Lifecycle, CallsBeforeStartAreHarmless) {
    OverlayToggleWheel();
    OverlayEngineStop();
    EXPECT_FALSE(OverlayIsWheelVisible());
    EXPECT_TRUE(desktop.journal.empty());
}

TEST_F(Lifecycle, WithoutADisplayStartSaysSoAndNothingElseFails) {
    desktop.hasDisplay = false;
    EXPECT_FALSE(OverlayEngineStart());
    OverlayToggleWheel();
    OverlayReloadConfig();
    OverlayEngineStop();
    EXPECT_FALSE(OverlayIsWheelVisible());
    desktop.hasDisplay = true;
    EXPECT_TRUE(OverlayEngineStart()) << "a failed start can be tried again";
}

TEST_F(Lifecycle, ATakenToggleKeyIsToldAndTheEngineRunsWithoutIt) {
    writeProgramFile(u"config.json", R"({"toggleKey": "F9", "gazeEnabled": false, "voiceEnabled": false})");
    desktop.keysTakenByOthers = {0x78};
    bool startHadReturned = false;
    desktop.whileBoxIsOpen = [&] { EXPECT_FALSE(startHadReturned) << "the box blocks the caller"; };
    EXPECT_TRUE(OverlayEngineStart());
    startHadReturned = true;
    EXPECT_EQ(boxes(), (Texts{"[Rotika] Nie udało się zarejestrować globalnego skrótu 'F9'.\n"
                              "Być może inny program już go używa."}));
    desktop.pressKey(0x78);
    desktop.pumpMessages();
    EXPECT_FALSE(OverlayIsWheelVisible());
    OverlayToggleWheel();
    EXPECT_TRUE(OverlayIsWheelVisible());
}

TEST_F(Lifecycle, AStandaloneStartShowsTheProblemsOfItsFilesAndATrayIcon) {
    writeProgramFile(u"config.json", R"({"segmentColor": "red", "toggleKey": "lmb",
                                         "gazeEnabled": false, "voiceEnabled": false})");
    writeProgramFile(u"default.json", R"({"wheels": 5})");
    EXPECT_TRUE(startEngine(true));
    EXPECT_EQ(boxes(), (Texts{"[Rotika] Problemy z konfiguracją:\n\n"
                              "config.json: niepoprawny \"segmentColor\" (format \"#RRGGBB\").\n"
                              "config.json: nieznany klawisz \"lmb\" — używam \"x\".\n"
                              "default.json: brak \"wheels\" ani \"actions\".\n"
                              "default.json: brak poprawnych kół — wyświetlam 6 pustych pól.\n"}));
    EXPECT_EQ(desktop.trayTip, u"Rotika — 'x' pokazuje nakładkę");
    EXPECT_EQ(OverlayWheelCount(), 1);
    desktop.destroyMainWindow();
    EXPECT_FALSE(desktop.trayTip);
    EXPECT_TRUE(desktop.registeredKeys().empty());
}

TEST_F(Lifecycle, UnderTheShellProblemsReachNobody) {
    writeProgramFile(u"config.json", "[");
    writeProgramFile(u"default.json", "[");
    EXPECT_TRUE(OverlayEngineStart());
    EXPECT_TRUE(boxes().empty());
    EXPECT_FALSE(desktop.trayTip);
    EXPECT_EQ(OverlayWheelCount(), 1);
    OverlayToggleWheel();
    EXPECT_EQ(linesOf(pictureLines(*desktop.windowNamed("wheel")->picture), "pie 70").size(), 6U);
}

TEST_F(Lifecycle, AStandaloneStartWithSoundFilesShowsNoBox) {
    EXPECT_TRUE(startEngine(true));
    EXPECT_TRUE(boxes().empty());
    EXPECT_TRUE(desktop.trayTip);
}

TEST_F(Lifecycle, ReloadReadsTheFilesAgainAndKeepsTheWheelAsItIsOpenOrClosed) {
    startWith({wheelOf(4), wheelOf(4)});
    writeProgramFile(u"default.json",
                     R"({"wheels": [{"name": "N", "actions": [{"key": "q"}, {"key": "w"}]}]})");
    writeProgramFile(u"config.json", R"({"segmentColor": "#010203", "toggleKey": "F9"})");
    for (const bool isOpen : {true, false}) {
        if (isOpen)
            pressToggleKey();
        engineState.activeWheel = 1;
        desktop.clearJournal();
        OverlayReloadConfig();
        EXPECT_EQ(OverlayIsWheelVisible(), isOpen);
        EXPECT_EQ(engineState.activeWheel, 0);
        EXPECT_EQ(OverlayWheelCount(), 1);
        EXPECT_EQ(desktop.journal.size(), isOpen ? 1U : 0U); // painted, and nothing else
        if (isOpen) {
            const auto pies = linesOf(pictureLines(*desktop.windowNamed("wheel")->picture), "pie 70");
            EXPECT_EQ(pies, (Texts{"pie 70,6 448x448 from -90 by 180 of 87 01 02 03",
                                   "pie 70,6 448x448 from 90 by 180 of 87 01 02 03"}));
            OverlayToggleWheel();
            engineState.wheels = {wheelOf(4), wheelOf(4)};
        }
    }
    EXPECT_EQ(engineConfig.toggleKey, u"F9");
    EXPECT_EQ(desktop.registeredKeys(), (std::set<std::uint16_t>{keyX})) << "until the next start";
}

TEST_F(Lifecycle, AnOpenWheelWithAHoveredFieldSurvivesAReloadToFewerFields) {
    startWith({wheelOf(24), wheelOf(4)});
    pressToggleKey();
    aimAt(293, 100);
    EXPECT_EQ(engineState.hoveredField, 23);
    writeProgramFile(u"default.json", R"({"actions": [{"key": "q"}]})");
    OverlayReloadConfig();
    desktop.advanceBy(15);
    EXPECT_EQ(engineState.hoveredField, 0);
    clickMouse();
    desktop.advanceBy(1000);
    EXPECT_EQ(desktop.journalOf({JournalKind::input}), (Texts{"key 81 down", "key 81 up"}));
}

TEST_F(Lifecycle, ActivationTakesTheWheelsWithFieldsOrNothing) {
    startWith({wheelOf(4), wheelOf(5)});
    pressToggleKey();
    aimAt(inFieldOfFour[2]);
    engineState.activeWheel = 1;
    engineState.voiceActions = {field(u"stay", 80)};
    writeProgramFile(u"puste.json", R"({"wheels": [{"name": "a", "actions": []}]})");
    writeProgramFile(u"zle.json", R"({"wheels": [{"actions": [{"key": "a"}]}]} reszta)");
    const int paintsBefore = wheelPaintCount();
    EXPECT_FALSE(OverlayActivateWheelFile(nullptr));
    for (const char16_t* name : {u"puste.json", u"zle.json", u"brak.json", u""})
        EXPECT_FALSE(activate(name));
    EXPECT_EQ(OverlayWheelCount(), 2);
    EXPECT_EQ(engineState.activeWheel, 1);
    EXPECT_EQ(engineState.hoveredField, 2);
    EXPECT_EQ(wheelPaintCount(), paintsBefore);

    writeProgramFile(u"mieszane.json", R"({"wheels": [{"name": "a", "actions": []}, 7,
        {"name": "b", "actions": [{"key": "a"}, {"key": "nic"}]}, {"name": "c", "actions": [{"key": "c"}]}]})");
    EXPECT_TRUE(activate(u"mieszane.json"));
    ASSERT_EQ(OverlayWheelCount(), 2);
    EXPECT_EQ(engineState.wheels[0].name, u"b");
    EXPECT_EQ(engineState.wheels[0].actions.size(), 2U);
    EXPECT_EQ(engineState.wheels[1].name, u"c");
    EXPECT_EQ(engineState.activeWheel, 0);
    EXPECT_EQ(engineState.hoveredField, -1);
    EXPECT_EQ(engineState.voiceActions.size(), 1U) << "the voice functions are not read again";
    EXPECT_EQ(wheelPaintCount(), paintsBefore + 1);
    EXPECT_TRUE(OverlayIsWheelVisible());
    OverlayReloadConfig();
    EXPECT_NE(engineState.wheels[0].name, u"b") << "back to default.json";
}

TEST_F(Lifecycle, StopClosesTheWheelWhereItIsAndGivesTheKeyBack) {
    startWith({wheelOf(4)});
    engineConfig.takeFocus = true;
    desktop.addProgram("chat"); // next in line when the wheel goes
    engineState.gridVisible = true;
    engineState.elementsVisible = true;
    showOverlayWindow(engineState.gridWindow);
    pressToggleKey();
    desktop.moveMouse(500, 500);
    OverlayEngineStop();
    EXPECT_FALSE(OverlayIsWheelVisible());
    EXPECT_FALSE(desktop.isCaptured());
    EXPECT_EQ(desktop.cursor, (Point{960, 540}));
    EXPECT_TRUE(isForeground("chat")) << "the focus is not returned on this road";
    EXPECT_FALSE(engineState.gridVisible);
    EXPECT_FALSE(engineState.elementsVisible);
    EXPECT_FALSE(desktop.windowNamed("grid")->isShown);
    EXPECT_TRUE(desktop.registeredKeys().empty());
    EXPECT_TRUE(desktop.windowNamed("main")->isAlive);
}

TEST_F(Lifecycle, StopWaitsForNoRun) {
    startWith({wheelOf(4)});
    WheelAction action;
    engineState.wheels[0].actions[0].steps = {hold(keyOf(65), 60'000)};
    postToMain(MsgVoiceField, 0, 0);
    desktop.advanceBy(200);
    OverlayEngineStop();
    EXPECT_EQ(desktop.keysDown, (std::set<std::uint16_t>{65}));
    desktop.advanceBy(60'000);
    EXPECT_TRUE(desktop.keysDown.empty());
}

TEST_F(Lifecycle, StatusWordsFollowTheirCodesAndUnknownOnesReadAsAnError) {
    const auto gaze = [](std::int32_t code) {
        engineState.gazeStatus = code;
        return utf8FromUtf16(reinterpret_cast<const char16_t*>(OverlayGazeStatus()));
    };
    const auto voice = [](std::int32_t code) {
        engineState.voiceStatus = code;
        return utf8FromUtf16(reinterpret_cast<const char16_t*>(OverlayVoiceStatus()));
    };
    struct WordCase {
        std::int32_t code;
        const char* gaze;
        const char* voice;
    };
    constexpr WordCase cases[] = {
        {0, "wyłączony (gazeEnabled = false)", "wyłączony (voiceEnabled = false)"},
        {1, "szukanie urządzenia…", "ładowanie modelu…"},
        {3, "nie wykryto urządzenia", "brak katalogu modelu języka"},
        {4, "aktywny", "brak mikrofonu"},
        {5, "błąd inicjalizacji", "aktywny"},
        {6, "błąd inicjalizacji", "błąd inicjalizacji"},
        {-1, "błąd inicjalizacji", "błąd inicjalizacji"},
        {1'000'000, "błąd inicjalizacji", "błąd inicjalizacji"},
    };
    for (const WordCase& c : cases) {
        EXPECT_EQ(gaze(c.code), c.gaze) << c.code;
        EXPECT_EQ(voice(c.code), c.voice) << c.code;
    }
    EXPECT_NE(gaze(2).find("tobii_stream_engine"), std::string::npos);
    EXPECT_NE(voice(2).find("libvosk"), std::string::npos);
}

} // namespace
