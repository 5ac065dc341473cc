#include "core/lifecycle.h"

#include "core/activation.h"
#include "core/dispatch.h"
#include "core/engine_workers.h"
#include "core/overlay_windows.h"
#include "files/settings_file.h"
#include "layers/grid_window.h"
#include "model/engine_config.h"
#include "model/engine_state.h"
#include "model/private_messages.h"
#include "platform/hot_key.h"
#include "platform/message_box.h"
#include "platform/overlay_window.h"
#include "platform/platform.h"
#include "platform/tray.h"
#include "voice/phrase_table.h"
#include "wheel/capture.h"
#include "wheel/focus_hold.h"
#include "wheel/icons.h"
#include "wheel/painter.h"

namespace rotika {

namespace {

constexpr char16_t boxTitle[] = u"Rotika";

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

} // namespace

bool startEngine(bool standalone, void (*openEditor)() noexcept) {
    if (!openPlatform())
        return false;
    engineState.isStopped = false;
    std::u16string problems;
    loadConfiguration(problems);
    engineState.mainWindow = createMainWindow(mainWindowHandlers(openEditor));
    createMissingOverlays();
    loadNewIcons();
    registerToggleKey();
    if (standalone)
        announceStandalone(problems);
    applyGazeSetting();
    rebuildPhraseTable(); // before the voice thread, so that its first grammar is complete
    applyVoiceSetting();
    prepareWheel();
    return true;
}

void stopEngine() {
    engineState.isStopped = true;
    if (engineState.wheelVisible)
        hideWheel();
    endFocusHold();
    if (engineState.gridWindow != nullptr) // null without a start
        hideOverlayWindow(engineState.gridWindow);
    clearGridWindowFlags();
    stopWorkers();
    if (engineState.mainWindow != nullptr)
        unregisterHotKey(engineState.mainWindow, toggleHotKeyId);
}

void reloadEngine() {
    std::u16string problems; // not shown here
    reloadFiles(problems);
    if (engineState.mainWindow != nullptr && !engineState.isStopped) { // workers post to the window
        applyGazeSetting();
        applyVoiceSetting();
    }
    repaintOpenWheel();
}

} // namespace rotika
