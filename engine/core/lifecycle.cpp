#include "core/lifecycle.h"

#include "core/dispatch.h"
#include "core/engine_config.h"
#include "core/engine_state.h"
#include "core/private_messages.h"
#include "files/settings_file.h"
#include "files/wheel_files.h"
#include "platform/hot_key.h"
#include "platform/message_box.h"
#include "platform/platform.h"
#include "platform/tray.h"
#include "wheel/capture.h"
#include "wheel/geometry.h"
#include "wheel/painter.h"

#include <algorithm>

namespace {

constexpr char16_t boxTitle[] = u"Rotika";
constexpr std::int32_t gridWindowSizePx = 100; // until the grid is first placed

void createWindows() {
    engineState.mainWindow = createMainWindow(mainWindowHandlers());
    engineState.wheelWindow =
        createOverlayWindow(OverlayKind::wheel, layerWidthPx, layerHeightPx, wheelWindowHandlers());
    engineState.gridWindow = createOverlayWindow(OverlayKind::grid, gridWindowSizePx, gridWindowSizePx, {});
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

} // namespace

bool startEngine(bool standalone) {
    if (!openPlatform())
        return false;
    std::u16string problems;
    loadConfiguration(problems);
    createWindows();
    registerToggleKey();
    if (standalone)
        announceStandalone(problems);
    return true;
}

void stopEngine() {
    if (engineState.wheelVisible)
        hideWheel();
    if (engineState.gridWindow != nullptr) // a stop without a start is harmless
        hideOverlayWindow(engineState.gridWindow);
    engineState.gridVisible = false;
    engineState.elementsVisible = false;
    if (engineState.mainWindow != nullptr)
        unregisterHotKey(engineState.mainWindow, toggleHotKeyId);
}

void reloadEngine() {
    std::u16string problems; // shown to nobody on this road
    loadConfiguration(problems);
    repaintOpenWheel();
}

bool activateWheelFile(const std::u16string& path) {
    std::vector<Wheel> loaded;
    std::u16string problems;
    loadWheelFile(path, loaded, problems);
    std::erase_if(loaded, [](const Wheel& wheel) { return wheel.actions.empty(); });
    if (loaded.empty())
        return false;
    engineState.wheels = std::move(loaded);
    engineState.activeWheel = 0;
    engineState.hoveredField = -1;
    repaintOpenWheel();
    return true;
}
