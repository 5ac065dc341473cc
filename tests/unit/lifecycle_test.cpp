#include "core/lifecycle.h"
#include "engine_test.h"
#include "gaze/gaze_thread.h"
#include "model/voice_commands.h"
#include "platform/paths.h"
#include "run/function_run.h"
#include "voice/voice_dispatch.h"

#include <cmath>

using namespace rotika;

namespace {

using Lifecycle = EngineTest;

TEST_F(Lifecycle, StartCreatesHiddenWindowsAndRegistersTheToggleKeyOnceAndAStopIsFinal) {
    desktop.hasDisplay = false;
    EXPECT_FALSE(OverlayEngineStart());
    OverlayToggleWheel();
    OverlayReloadConfig();
    OverlayEngineStop();
    EXPECT_TRUE(desktop.journal.empty());
    desktop.hasDisplay = true;
    startWith({wheelOf(1)});
    EXPECT_FALSE(desktop.windowNamed("wheel")->isShown || desktop.windowNamed("grid")->isShown);
    EXPECT_EQ(desktop.registeredKeys(), (std::set<std::uint16_t>{0x58}));
    EXPECT_FALSE(desktop.areElementSearchesPrepared) << "voice is off";
    const std::size_t windowCount = desktop.windows.size();
    EXPECT_TRUE(OverlayEngineStart());
    OverlayEngineStop();
    EXPECT_TRUE(desktop.registeredKeys().empty());
    EXPECT_TRUE(OverlayEngineStart());
    EXPECT_TRUE(desktop.registeredKeys().empty());
    EXPECT_EQ(desktop.windows.size(), windowCount);
    OverlayToggleWheel();
    postWindowMessage(engineState.mainWindow, MsgVoiceCommand, commandShowGrid); // posted just before
    engineState.elementScanBusy = 1;                                             // a scan was still running
    engineState.elementRects = {{0, 0, 20, 20}};
    postWindowMessage(engineState.mainWindow, MsgElementsReady);
    desktop.settle();
    EXPECT_TRUE(!OverlayIsWheelVisible() && !desktop.isCaptured() && !desktop.windowNamed("grid")->isShown);
}

TEST_F(Lifecycle, AStandaloneStartReportsATakenKeyAndInvalidFilesAndHasATrayIcon) {
    configure(R"("toggleKey": "lmb",)");
    folder.write("voice.json", R"({"wheels": [5]})");
    desktop.keysTakenByOthers = {0x58};
    EXPECT_TRUE(startEngine(true));
    EXPECT_EQ(journal(JournalKind::box),
              "[Rotika] Nie udało się zarejestrować globalnego skrótu 'x'.\nByć może inny program już go "
              "używa., [Rotika] Problemy z konfiguracją:\n\nconfig.json: nieznany klawisz \"lmb\" — używam "
              "\"x\".\ndefault.json: koło bez tablicy \"actions\".\n");
    EXPECT_EQ(desktop.trayTip, u"Rotika — 'x' pokazuje nakładkę");
    desktop.destroyMainWindow();
    EXPECT_FALSE(desktop.trayTip);
}

TEST_F(Lifecycle, WithoutThreadsVoiceGazeAndScansFailAndALaterReloadStartsThem) {
    folder.write("config.json", "{}");
    desktop.refusesThreads = true;
    EXPECT_TRUE(OverlayEngineStart());
    dispatchRecognisedText("pokaż elementy");
    EXPECT_EQ(textOf(OverlayVoiceStatus()), "błąd inicjalizacji");
    EXPECT_EQ(textOf(OverlayGazeStatus()), "błąd inicjalizacji");
    desktop.refusesThreads = false;
    OverlayReloadConfig();
    desktop.settle();
    EXPECT_EQ(textOf(OverlayVoiceStatus()), "brak simulated-speech");
    EXPECT_TRUE(desktop.areElementSearchesPrepared);
    EXPECT_EQ(textOf(OverlayGazeStatus()), "brak simulated-gaze (zainstaluj oprogramowanie Tobii)");
}

TEST_F(Lifecycle, AReloadReadsTheFilesAgainAndKeepsTheWheelOpenOnANewField) {
    startWith({wheelOf(24), wheelOf(24)});
    folder.write("default.json", R"({"actions": [{"key": "q"}]})");
    pressToggleKey();
    aimAt({293, 100});
    EXPECT_EQ(engineState.hoveredField, 23);
    engineState.activeWheel = 1;
    reload(R"("segmentColor": "#010203", "toggleKey": "F9",)");
    EXPECT_EQ(engineState.activeWheel, 0);
    EXPECT_TRUE(shown<FilledPie>().size() == 1 && shown<FilledPie>()[0].color.blue == 3);
    EXPECT_EQ(desktop.registeredKeys(), (std::set<std::uint16_t>{0x58})) << "until the next start";
    clickMouse(); // on the field that replaced the removed one
    desktop.advanceBy(1000);
    EXPECT_EQ(journal(JournalKind::input), "key 81 down, key 81 up");
}

TEST_F(Lifecycle, ActivationTakesOnlyWheelsWithFieldsAlsoFromAnotherProcess) {
    configure();
    ASSERT_TRUE(startEngine(true));
    engineState.wheels = {wheelOf(4), wheelOf(5)};
    pressToggleKey();
    aimAt({254, 330});
    engineState.activeWheel = 1;
    desktop.clearJournal();
    const std::u16string good = folder.write("mieszane.json", R"({"wheels": [{"name": "a", "actions": []}, 7,
        {"name": "b", "actions": [{"key": "a"}, {"key": "nic"}]}, {"name": "c", "actions": [{"key": "c"}]}]})");
    const std::u16string bad =
        folder.write("zle.json", R"({"wheels": [{"actions": [{"key": "a"}]}]} reszta)");
    const auto send = [this](std::uintptr_t kind, const std::u16string& path, std::size_t byteCount) {
        return desktop.sendData(kind, path.data(), byteCount);
    };
    const std::size_t size = good.size() * 2;
    EXPECT_FALSE(OverlayActivateWheelFile(nullptr) || activateFile(bad) || send(0, good, size) ||
                 send(1, good, 1) || send(1, bad, bad.size() * 2) || send(1, std::u16string(8, u'\0'), 16) ||
                 desktop.sendData(1, nullptr, 9));
    EXPECT_TRUE(engineState.activeWheel == 1 && engineState.hoveredField == 2 && OverlayWheelCount() == 2);
    EXPECT_TRUE(desktop.journal.empty());
    for (const bool isSent : {false, true}) {
        engineState.activeWheel = 1;
        // a trailing odd byte and trailing zeros are not part of the path
        EXPECT_TRUE(isSent ? send(1, good + std::u16string(3, u'\0'), size + 5) : activateFile(good));
        EXPECT_EQ(describe(engineState.wheels), "b[{click a 1}; {}] c[{click c 1}]");
        EXPECT_TRUE(engineState.activeWheel == 0 && engineState.hoveredField == -1);
        EXPECT_EQ(shown<FilledPie>().size(), 2U);
    }
    EXPECT_EQ(journal(JournalKind::tray), "info [Rotika] Aktywowano konfigurację: " + utf8FromUtf16(good));
    desktop.destroyMainWindow();
    EXPECT_TRUE(desktop.registeredKeys().empty());
}

TEST_F(Lifecycle, ValidPointsBecomeTheCurrentSample) {
    const GazePoint points[] = {{0, 1, 0.5F, 0.25F}, {0, 1, 1.2F, -0.33339F}, {0, 0, 0.9F, 0.9F},
                                {0, 2, 0.9F, 0.9F},  {0, 1, 3e5F, -3e5F},     {0, 1, std::nanf(""), 0}};
    std::string samples;
    for (const GazePoint& point : points) {
        onGazePoint(&point, nullptr);
        samples += std::to_string(engineState.gazeX) + " " + std::to_string(engineState.gazeY) + ", ";
    }
    EXPECT_EQ(samples,
              "5000 2500, 12000 -3333, 12000 -3333, 12000 -3333, 2147483647 -2147483648, -2147483648 0, ");
}

TEST_F(Lifecycle, IconsAreReadOnceOffTheOwnerThreadAndAppearInTheOpenWheel) {
    startWith({wheelOf(2)});
    const std::u16string icon = joinPath(programFolder(), u"icons/ok.png");
    desktop.loadableImages = {icon};
    const std::u16string file = folder.write("koła.json", R"({"wheels": [{"actions": [
        {"name": "Bieg", "icon": "icons/ok.png"}, {"icon": "icons/ok.png"}, {"icon": "/tmp/zły.png"}]}]})");
    pressToggleKey();
    ASSERT_TRUE(activateFile(file));
    EXPECT_TRUE(desktop.imageLoads.empty()) << "a slow file would block the owner thread";
    desktop.settle();
    EXPECT_EQ(shown<ImageInBox>().size(), 2U);
    EXPECT_EQ(shown<TextInBox>().size(), 4U) << "a name under its icon; the number of the field without one";
    ASSERT_TRUE(activateFile(file));
    desktop.settle();
    EXPECT_EQ(desktop.imageLoads, (std::vector{icon, u"/tmp/zły.png"s}));
}

/// For ThreadSanitizer.
TEST_F(Lifecycle, ConcurrentRunsShareOnlyTheSettings) {
    startWith({wheelOf(4)});
    desktop.clock.runWorkersFreely();
    constexpr int runCount = 20;
    for (int i = 0; i < runCount; ++i) {
        runFunction(engineState.wheels[0].actions[1], 5);
        startMouseClick(1, 1);
        engineConfig.keyHold = i;
        OverlayReloadConfig();
        engineState.wheels = {wheelOf(4)};
    }
    desktop.clock.drain();
    const auto texts = desktop.journalOf({JournalKind::input});
    for (const char* text : {"key 66 down", "key 66 up", "button 1 down", "button 1 up"})
        EXPECT_EQ(std::ranges::count(texts, text), runCount) << text;
}

} // namespace
