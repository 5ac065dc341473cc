#include "core/dispatch.h"

#include "base/text.h"
#include "core/activation.h"
#include "core/engine_workers.h"
#include "core/spoken_commands.h"
#include "core/status_texts.h"
#include "layers/grid_window.h"
#include "model/engine_state.h"
#include "model/private_messages.h"
#include "platform/hot_key.h"
#include "platform/tray.h"
#include "pointing/element_labels.h"
#include "wheel/capture.h"
#include "wheel/focus_hold.h"
#include "wheel/icons.h"
#include "wheel/painter.h"
#include "workers/posted_record.h"

#include <cstring>

namespace rotika {

namespace {

constexpr std::uintptr_t activationDataKind = 1;
constexpr std::size_t balloonTextLength = 255;

void onHotKey(int id) noexcept {
    if (id == toggleHotKeyId)
        toggleWheel();
}

void onVoiceSkipped(std::intptr_t payload) {
    const auto phrases = takeRecord<std::u16string>(MsgVoiceSkipped, payload);
    if (phrases == nullptr)
        return;
    const std::u16string text = u"Pominięto frazy ze słowami spoza słownika modelu: " + *phrases;
    showTrayBalloon(u"Rotika — komendy głosowe", cutTo(text, balloonTextLength), BalloonIcon::warning);
}

void onMainMessage(std::uint32_t message, std::uintptr_t wParam, std::intptr_t lParam) noexcept {
    switch (message) {
    case MsgVoiceCommand:
    case MsgVoiceField:
    case MsgVoiceFunction:
        onVoiceMessage(message, wParam, lParam);
        break;
    case MsgElementsReady:
        takeScanResult(lParam);
        break;
    case MsgVoiceSkipped:
        onVoiceSkipped(lParam);
        break;
    case MsgIconLoaded:
        if (takeIcon(lParam))
            repaintOpenWheel();
        break;
    default:
        break;
    }
}

std::u16string pathFromData(const void* bytes, std::size_t byteCount) {
    std::u16string path(byteCount / sizeof(char16_t), u'\0');
    std::memcpy(path.data(), bytes, path.size() * sizeof(char16_t));
    path.erase(path.find_last_not_of(u'\0') + 1);
    return path;
}

/// Another process activates a wheel file. Accepted from any sender.
bool onData(std::uintptr_t kind, const void* bytes, std::size_t byteCount) noexcept {
    if (kind != activationDataKind || bytes == nullptr || byteCount < sizeof(char16_t))
        return false;
    const std::u16string path = pathFromData(bytes, byteCount);
    if (!activateWheelFile(path))
        return false;
    repaintMainWindow(engineState.mainWindow); // the status page shows the counts
    showTrayBalloon(u"Rotika", cutTo(u"Aktywowano konfigurację: " + path, balloonTextLength),
                    BalloonIcon::info);
    return true;
}

void onDestroyed() noexcept {
    if (engineState.wheelVisible)
        hideWheel();
    endFocusHold();
    stopWorkers();
    removeTrayIcon();
    unregisterHotKey(engineState.mainWindow, toggleHotKeyId);
}

/// Visible layers were placed for the old monitors.
void onMonitorsChanged() noexcept {
    closeWheel();
    hideGrid();
    cancelElementLabels();
}

void onSessionLockChanged(bool isLocked) noexcept {
    engineState.sessionLocked = isLocked;
    if (!isLocked)
        return;
    closeWheel();
    endFocusHold();
    hideGrid();
    cancelElementLabels();
}

} // namespace

MainWindowHandlers mainWindowHandlers(void (*openEditor)() noexcept) {
    return {
        .hotKeyPressed = onHotKey,
        .messageArrived = onMainMessage,
        .dataArrived = onData,
        .statusText = statusPageText,
        .editorRequested = openEditor,
        .destroyed = onDestroyed,
        .monitorsChanged = onMonitorsChanged,
        .sessionLockChanged = onSessionLockChanged,
    };
}

} // namespace rotika
