#include "core/lifecycle.h"
#include "core/text.h"
#include "engine_test.h"

namespace {

using Texts = std::vector<std::string>;

constexpr std::uint16_t keyX = 0x58;

class Lifecycle : public EngineTest {
protected:
    std::string boxes() const { return journal({JournalKind::box}); }

    static bool activate(const std::u16string& path) {
        return OverlayActivateWheelFile(reinterpret_cast<const OverlayChar*>(path.c_str()));
    }
};

TEST_F(Lifecycle, StartMakesHiddenWindowsAndTakesTheToggleKeyOnce) {
    EXPECT_TRUE(OverlayEngineStart());
    for (const char* name : {"main", "wheel", "grid"})
        EXPECT_FALSE(desktop.windowNamed(name)->isShown) << name;
    EXPECT_EQ(desktop.registeredKeys(), (std::set<std::uint16_t>{keyX}));
    EXPECT_EQ(OverlayWheelCount(), 1) << "the files of the first run";
    EXPECT_FALSE(desktop.trayTip);
    EXPECT_TRUE(isForeground("game"));
    const std::size_t windowCount = desktop.windows.size();
    desktop.clearJournal();
    EXPECT_TRUE(OverlayEngineStart());
    EXPECT_TRUE(desktop.journal.empty());
    EXPECT_EQ(desktop.windows.size(), windowCount);
}

TEST_F(Lifecycle, CallsWithoutAStartOrADisplayAreHarmlessAndAFailedStartCanBeTriedAgain) {
    desktop.hasDisplay = false;
    for (int i = 0; i < 2; ++i) { // before and after the failed start
        OverlayToggleWheel();
        OverlayReloadConfig();
        OverlayEngineStop();
        EXPECT_FALSE(OverlayIsWheelVisible());
        EXPECT_TRUE(desktop.journal.empty());
        EXPECT_FALSE(OverlayEngineStart());
    }
    desktop.hasDisplay = true;
    EXPECT_TRUE(OverlayEngineStart());
}

TEST_F(Lifecycle, ATakenToggleKeyIsToldAndTheEngineRunsWithoutIt) {
    folder.write("config.json", R"({"toggleKey": "F9", "gazeEnabled": false, "voiceEnabled": false})");
    desktop.keysTakenByOthers = {0x78};
    EXPECT_TRUE(OverlayEngineStart());
    EXPECT_FALSE(desktop.askedForElements) << "nobody can ask for labels while voice is off";
    EXPECT_EQ(boxes(), "[Rotika] Nie udało się zarejestrować globalnego skrótu 'F9'.\n"
                       "Być może inny program już go używa.");
    OverlayToggleWheel();
    EXPECT_TRUE(OverlayIsWheelVisible());
}

TEST_F(Lifecycle, WithoutThreadsVoiceGazeAndScansAreLeftOutAndALaterReloadStartsThem) {
    folder.write("config.json", "{}");
    desktop.refusesThreads = true;
    EXPECT_TRUE(OverlayEngineStart());
    postToMain(MsgVoiceCommand, 10);
    EXPECT_EQ(engineState.elementScanBusy, 1) << "until it is cancelled";
    EXPECT_EQ(textOf(OverlayVoiceStatus()), "błąd inicjalizacji");
    EXPECT_EQ(textOf(OverlayGazeStatus()), "błąd inicjalizacji");
    desktop.refusesThreads = false;
    OverlayReloadConfig();
    desktop.settle();
    EXPECT_EQ(textOf(OverlayVoiceStatus()), "brak simulated-speech");
    EXPECT_TRUE(desktop.askedForElements);
    EXPECT_EQ(textOf(OverlayGazeStatus()), "brak simulated-gaze (zainstaluj oprogramowanie Tobii)");
    OverlayEngineStop();
}

TEST_F(Lifecycle, AStandaloneStartShowsTheProblemsOfItsFilesAndATrayIcon) {
    folder.write("config.json", R"({"toggleKey": "lmb", "gazeEnabled": false, "voiceEnabled": false})");
    folder.write("voice.json", R"({"wheels": [5]})");
    EXPECT_TRUE(startEngine(true));
    EXPECT_EQ(boxes(), "[Rotika] Problemy z konfiguracją:\n\n"
                       "config.json: nieznany klawisz \"lmb\" — używam \"x\".\n"
                       "default.json: koło bez tablicy \"actions\".\n");
    EXPECT_EQ(desktop.trayTip, u"Rotika — 'x' pokazuje nakładkę");
    desktop.destroyMainWindow();
    EXPECT_FALSE(desktop.trayTip);
    EXPECT_TRUE(desktop.registeredKeys().empty());
}

TEST_F(Lifecycle, ReloadReadsTheFilesAgainAndKeepsTheWheelAsItIsOpenOrClosed) {
    for (const bool isOpen : {true, false}) {
        startWith({wheelOf(24), wheelOf(24)});
        folder.write("default.json", R"({"actions": [{"key": "q"}]})");
        folder.write("config.json", R"({"segmentColor": "#010203", "toggleKey": "F9"})");
        if (isOpen) {
            OverlayToggleWheel();
            aimAt({293, 100});
            EXPECT_EQ(engineState.hoveredField, 23);
        }
        engineState.activeWheel = 1;
        desktop.clearJournal();
        OverlayReloadConfig();
        EXPECT_EQ(OverlayIsWheelVisible(), isOpen);
        EXPECT_EQ(engineState.activeWheel, 0);
        EXPECT_EQ(OverlayWheelCount(), 1);
        EXPECT_EQ(desktop.journal.size(), isOpen ? 1U : 0U); // painted, and nothing else
        if (isOpen) {
            EXPECT_EQ(shownLines("pie 70"), (Texts{"pie 70,6 448x448 from -90 by 360 of 87 01 02 03"}));
            clickMouse(); // on the field that took the place of the vanished one
            desktop.advanceBy(1000);
            EXPECT_EQ(journal({JournalKind::input}), "key 81 down, key 81 up");
        }
    }
    EXPECT_EQ(engineConfig.toggleKey, u"F9");
    EXPECT_EQ(desktop.registeredKeys(), (std::set<std::uint16_t>{keyX})) << "until the next start";
}

TEST_F(Lifecycle, ActivationTakesTheWheelsWithFieldsOrNothing) {
    startWith({wheelOf(4), wheelOf(5)});
    pressToggleKey();
    aimAt(inFieldOfFour[2]);
    engineState.activeWheel = 1;
    engineState.voiceActions = {field(u"stay", 80)};
    const int paintsBefore = wheelPaintCount();
    EXPECT_FALSE(OverlayActivateWheelFile(nullptr));
    EXPECT_FALSE(activate(folder.write("zle.json", R"({"wheels": [{"actions": [{"key": "a"}]}]} reszta)")));
    EXPECT_FALSE(activate(folder.path("brak.json")));
    EXPECT_EQ(OverlayWheelCount(), 2);
    EXPECT_EQ(engineState.activeWheel, 1);
    EXPECT_EQ(engineState.hoveredField, 2);
    EXPECT_EQ(wheelPaintCount(), paintsBefore);

    EXPECT_TRUE(activate(folder.write("mieszane.json", R"({"wheels": [{"name": "a", "actions": []}, 7,
        {"name": "b", "actions": [{"key": "a"}, {"key": "nic"}]}, {"name": "c", "actions": [{"key": "c"}]}]})")));
    EXPECT_EQ(describe(engineState.wheels), "b[{click a 1}; {}] c[{click c 1}]");
    EXPECT_EQ(engineState.activeWheel, 0);
    EXPECT_EQ(engineState.hoveredField, -1);
    EXPECT_EQ(engineState.voiceActions.size(), 1U) << "the voice functions are not read again";
    EXPECT_EQ(wheelPaintCount(), paintsBefore + 1);
    EXPECT_TRUE(OverlayIsWheelVisible());
    OverlayReloadConfig();
    EXPECT_EQ(OverlayWheelCount(), 1) << "back to default.json";
}

TEST_F(Lifecycle, StopClosesTheWheelWhereItIsGivesTheKeyBackAndIsForGood) {
    startWith({wheelOf(4)});
    engineConfig.takeFocus = true;
    desktop.addProgram("chat"); // next in line when the wheel goes
    engineState.gridVisible = true;
    engineState.elementsVisible = true;
    showOverlayWindow(engineState.gridWindow);
    pressToggleKey();
    OverlayEngineStop();
    EXPECT_TRUE(isForeground("chat")) << "the focus is not returned on this road";
    EXPECT_FALSE(engineState.gridVisible);
    EXPECT_FALSE(engineState.elementsVisible);
    EXPECT_FALSE(desktop.windowNamed("grid")->isShown);
    EXPECT_TRUE(desktop.registeredKeys().empty());
    EXPECT_TRUE(desktop.windowNamed("main")->isAlive);
    desktop.clearJournal();
    EXPECT_TRUE(OverlayEngineStart()) << "there is no start after it";
    EXPECT_TRUE(desktop.journal.empty());
}

TEST_F(Lifecycle, UnknownStatusCodesReadAsAnError) {
    for (const std::int32_t code : {6, -1, 1'000'000}) {
        engineState.gazeStatus = code;
        engineState.voiceStatus = code;
        EXPECT_EQ(textOf(OverlayGazeStatus()), "błąd inicjalizacji");
        EXPECT_EQ(textOf(OverlayVoiceStatus()), "błąd inicjalizacji");
    }
}

} // namespace
