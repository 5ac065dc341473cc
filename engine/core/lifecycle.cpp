#include "core/lifecycle.h"

#include "core/dispatch.h"
#include "core/engine_config.h"
#include "core/engine_state.h"
#include "core/private_messages.h"
#include "files/settings_file.h"
#include "files/wheel_files.h"
#include "gaze/gaze_thread.h"
#include "platform/elements.h"
#include "platform/hot_key.h"
#include "platform/message_box.h"
#include "platform/platform.h"
#include "platform/tray.h"
#include "voice/phrase_table.h"
#include "voice/voice_thread.h"
#include "wheel/capture.h"
#include "wheel/geometry.h"
#include "wheel/icons.h"
#include "wheel/painter.h"

#include <algorithm>

namespace {

constexpr char16_t boxTitle[] = u"Rotika";
constexpr std::uint32_t gazeStopLimitMs = 1500;
constexpr std::uint32_t voiceStopLimitMs = 2000;
constexpr std::int32_t gridWindowSizePx = 100; // until the grid is first placed

void createWindows() {
    engineState.mainWindow = createMainWindow(mainWindowHandlers());
    createMissingOverlays();
}

void registerToggleKey() {
    if (registerHotKey(engineState.mainWindow, toggleHotKeyId, engineConfig.toggleKeyCode.vk))
        return;
    showWarningBox(boxTitle, u"Nie udało się zarejestrować globalnego skrótu '" + engineConfig.toggleKey +
                                 u"'.\nByć może inny program już go używa.");
}

void announceStandalone(const std::u16string& problems) {
    if (!problems.empty())
        showWarningBox(boxTitle, u"Problemy z konfiguracją:\n\n" + problems);
    addTrayIcon(engineState.mainWindow, u"Rotika — '" + engineConfig.toggleKey + u"' pokazuje nakładkę");
}

void repaintOpenWheel() {
    if (engineState.wheelVisible)
        paintWheel();
}

void startGaze() {
    if (!startWorker(
            engineState.gazeThread, engineState.gazeStop,
            [path = engineConfig.gazeDllPath](const std::atomic<bool>& stop) { gazeThreadMain(path, stop); }))
        engineState.gazeStatus = gazeStatusFailed;
}

void startVoice() {
    prepareElementSearches(); // which nothing but the voice asks for
    const VoiceSettings settings{engineConfig.voiceDllPath, engineConfig.voiceModel};
    if (!startWorker(engineState.voiceThread, engineState.voiceStop,
                     [settings](const std::atomic<bool>& stop) { voiceThreadMain(settings, stop); }))
        engineState.voiceStatus = voiceStatusFailed;
}

void stopGaze() {
    stopWorker(engineState.gazeThread, engineState.gazeStop, gazeStopLimitMs);
}

void stopVoice() {
    stopWorker(engineState.voiceThread, engineState.voiceStop, voiceStopLimitMs);
}

/// A thread that has given up by itself still counts as running: it is started anew only after the setting
/// was off.
void followGazeSetting() {
    if (!engineConfig.gazeEnabled) {
        stopGaze();
        engineState.gazeStatus = gazeStatusOff;
    } else if (!engineState.gazeThread.valid()) {
        startGaze();
    }
}

void followVoiceSetting() {
    if (!engineConfig.voiceEnabled) {
        stopVoice();
        engineState.voiceStatus = voiceStatusOff;
    } else if (!engineState.voiceThread.valid()) {
        startVoice();
    }
}

} // namespace

void createMissingOverlays() {
    if (engineState.wheelWindow == nullptr)
        engineState.wheelWindow =
            createOverlayWindow(OverlayKind::wheel, layerWidthPx, layerHeightPx, wheelWindowHandlers());
    if (engineState.gridWindow == nullptr)
        engineState.gridWindow =
            createOverlayWindow(OverlayKind::grid, gridWindowSizePx, gridWindowSizePx, gridWindowHandlers());
}

bool startEngine(bool standalone) {
    if (!openPlatform())
        return false;
    std::u16string problems;
    loadConfiguration(problems);
    createWindows();
    loadNewIcons();
    registerToggleKey();
    if (standalone)
        announceStandalone(problems);
    followGazeSetting();
    rebuildPhraseTable(); // before the voice thread, whose first grammar is to be complete
    followVoiceSetting();
    prepareWheel();
    return true;
}

void stopEngine() {
    if (engineState.wheelVisible)
        hideWheel();
    if (engineState.gridWindow != nullptr) // a stop without a start is harmless
        hideOverlayWindow(engineState.gridWindow);
    engineState.gridVisible = false;
    engineState.elementsVisible = false;
    stopWorkers();
    if (engineState.mainWindow != nullptr)
        unregisterHotKey(engineState.mainWindow, toggleHotKeyId);
}

void stopWorkers() {
    stopGaze();
    stopVoice();
}

void reloadEngine() {
    std::u16string problems; // shown to nobody on this road
    loadConfiguration(problems);
    loadNewIcons();
    rebuildPhraseTable();
    if (engineState.mainWindow != nullptr) { // workers talk to it
        followGazeSetting();
        followVoiceSetting();
    }
    repaintOpenWheel();
}

bool activateWheels(std::vector<Wheel> wheels) {
    std::erase_if(wheels, [](const Wheel& wheel) { return wheel.actions.empty(); });
    if (wheels.empty())
        return false;
    engineState.wheels = std::move(wheels);
    engineState.activeWheel = 0;
    engineState.hoveredField = -1;
    loadNewIcons();
    rebuildPhraseTable();
    repaintOpenWheel();
    return true;
}

bool activateWheelFile(const std::u16string& path) {
    std::vector<Wheel> loaded;
    std::u16string problems;
    loadWheelFile(path, loaded, problems);
    return activateWheels(std::move(loaded));
}
