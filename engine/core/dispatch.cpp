#include "core/dispatch.h"

#include "core/engine_config.h"
#include "core/engine_state.h"
#include "core/handed_over.h"
#include "core/lifecycle.h"
#include "core/private_messages.h"
#include "core/status_texts.h"
#include "core/text.h"
#include "core/voice_commands.h"
#include "editor/editor_form.h"
#include "platform/hot_key.h"
#include "platform/screen_saver.h"
#include "platform/tray.h"
#include "pointing/element_labels.h"
#include "pointing/grid.h"
#include "run/function_run.h"
#include "wheel/capture.h"
#include "wheel/geometry.h"
#include "wheel/icons.h"
#include "wheel/tick.h"

#include <cstring>
#include <memory>

namespace {

constexpr std::uint32_t closedWheelDelayMs =
    100; // before a function that is run by voice with the wheel closed
constexpr std::uintptr_t activationDataKind = 1;
constexpr std::size_t balloonTextLength = 255;

void onHotKey(int id) noexcept {
    if (id == toggleHotKeyId)
        toggleWheel();
}

/// The road of a function chosen by voice. An open wheel closes even if the function has no steps.
void runByVoice(const WheelAction& chosen) {
    const WheelAction action = chosen; // closing may let in a message that replaces the wheels
    const bool wasOpen = engineState.wheelVisible;
    closeWheel();
    if (action.steps.empty())
        return;
    runFunction(action,
                wasOpen ? static_cast<std::uint32_t>(engineConfig.sendDelay.load()) : closedWheelDelayMs);
}

void onVoiceField(std::uintptr_t wheelIndex, std::uintptr_t fieldIndex) {
    // The table that the phrase came from may be older than the wheels.
    if (wheelIndex >= engineState.wheels.size())
        return;
    const std::vector<WheelAction>& actions = engineState.wheels[wheelIndex].actions;
    if (fieldIndex < actions.size())
        runByVoice(actions[fieldIndex]);
}

void onVoiceFunction(std::uintptr_t index) {
    if (index < engineState.voiceActions.size())
        runByVoice(engineState.voiceActions[index]);
}

void clickByVoice() {
    if (engineState.wheelVisible)
        postWindowMessage(engineState.wheelWindow, MsgSelectUnderCursor);
    else
        startMouseClick(0, 1);
}

void turnPageByVoice(std::int32_t arrow) {
    if (engineState.wheelVisible && engineState.wheels.size() >= 2)
        turnPage(arrow);
}

/// A number means a label if there are any on show, else a cell of the grid.
void numberByVoice(std::int32_t number) {
    if (engineState.elementsVisible)
        clickElement(number, 0, 1);
    else if (engineState.gridVisible)
        narrowGrid(number);
}

bool isNumbered(std::int32_t command, std::int32_t base) {
    return command > base && command <= base + largestSpokenNumber;
}

void onNumberedCommand(std::int32_t command) {
    if (isNumbered(command, commandNumber))
        numberByVoice(command - commandNumber);
    else if (isNumbered(command, commandDoubleClickNumber))
        clickElement(command - commandDoubleClickNumber, 0, 2);
    else if (isNumbered(command, commandRightClickNumber))
        clickElement(command - commandRightClickNumber, 1, 1);
}

void onVoiceCommand(std::int32_t command) {
    switch (command) {
    case commandShowWheel:
        if (!engineState.wheelVisible)
            showWheel();
        break;
    case commandHideWheel:
        closeWheel();
        break;
    case commandNextWheel:
        turnPageByVoice(1);
        break;
    case commandPreviousWheel:
        turnPageByVoice(0);
        break;
    case commandShowGrid:
        showGrid();
        break;
    case commandHideGrid:
        hideGrid();
        break;
    case commandClick:
        clickByVoice();
        break;
    case commandDoubleClick:
        startMouseClick(0, 2);
        break;
    case commandRightClick:
        startMouseClick(1, 1);
        break;
    case commandLabelElements:
        startElementScan(ElementScope::windowAndTaskbar);
        break;
    case commandLabelPage:
        startElementScan(ElementScope::page);
        break;
    case commandHideElements:
        cancelElementLabels();
        break;
    default:
        onNumberedCommand(command);
        break;
    }
}

void onVoiceSkipped(std::intptr_t payload) {
    const auto phrases = takeRecord<std::u16string>(MsgVoiceSkipped, payload);
    if (phrases == nullptr)
        return;
    const std::u16string text = u"Pominięto frazy ze słowami spoza słownika modelu: " + *phrases;
    showTrayBalloon(u"Rotika — komendy głosowe", cutTo(text, balloonTextLength), BalloonIcon::warning);
}

/// What was said. Behind a locked screen nobody can see what a word would do. A screen saver counts as a lock
/// too, and somebody who has only words must be able to end it.
void onSpoken(std::uint32_t message, std::uintptr_t wParam, std::intptr_t lParam) {
    if (engineState.sessionLocked) {
        wakeScreen();
        return;
    }
    if (message == MsgVoiceCommand)
        onVoiceCommand(static_cast<std::int32_t>(wParam));
    else if (message == MsgVoiceField)
        onVoiceField(wParam, static_cast<std::uintptr_t>(lParam));
    else
        onVoiceFunction(wParam);
}

void onMainMessage(std::uint32_t message, std::uintptr_t wParam, std::intptr_t lParam) noexcept {
    switch (message) {
    case MsgVoiceCommand:
    case MsgVoiceField:
    case MsgVoiceFunction:
        onSpoken(message, wParam, lParam);
        break;
    case MsgElementsReady:
        takeScanResult(lParam);
        break;
    case MsgVoiceSkipped:
        onVoiceSkipped(lParam);
        break;
    case MsgIconLoaded:
        takeIcon(lParam);
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

/// Another process switches wheels: the kind and the text count, never the sender.
bool onData(std::uintptr_t kind, const void* bytes, std::size_t byteCount) noexcept {
    if (kind != activationDataKind || bytes == nullptr || byteCount < sizeof(char16_t))
        return false;
    const std::u16string path = pathFromData(bytes, byteCount);
    if (!activateWheelFile(path))
        return false;
    repaintMainWindow(engineState.mainWindow); // the status page quotes the counts
    showTrayBalloon(u"Rotika", cutTo(u"Aktywowano konfigurację: " + path, balloonTextLength),
                    BalloonIcon::info);
    return true;
}

void onDestroyed() noexcept {
    if (engineState.wheelVisible)
        hideWheel();
    stopWorkers();
    removeTrayIcon();
    unregisterHotKey(engineState.mainWindow, toggleHotKeyId);
}

/// What is on the screen was placed for monitors that are no longer so.
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
    hideGrid();
    cancelElementLabels();
}

/// The capture must end with the window that shows it.
void onWheelWindowDestroyed() noexcept {
    closeWheel();
    engineState.wheelWindow = nullptr;
    createMissingOverlays();
}

void onGridWindowDestroyed() noexcept {
    engineState.gridVisible = false;
    engineState.elementsVisible = false;
    engineState.gridWindow = nullptr;
    createMissingOverlays();
}

void onWheelMessage(std::uint32_t message, std::uintptr_t, std::intptr_t) noexcept {
    if (message == MsgSelectUnderCursor)
        selectUnderCursor();
}

} // namespace

MainWindowHandlers mainWindowHandlers() {
    return {
        .hotKeyPressed = onHotKey,
        .messageArrived = onMainMessage,
        .dataArrived = onData,
        .statusText = statusPageText,
        .editorRequested = []() noexcept { openEditor(); },
        .destroyed = onDestroyed,
        .monitorsChanged = onMonitorsChanged,
        .sessionLockChanged = onSessionLockChanged,
    };
}

OverlayWindowHandlers wheelWindowHandlers() {
    return {
        .messageArrived = onWheelMessage,
        .leftPressed = []() noexcept { postWindowMessage(engineState.wheelWindow, MsgSelectUnderCursor); },
        .closeRequested = []() noexcept { closeWheel(); },
        .destroyed = onWheelWindowDestroyed,
    };
}

OverlayWindowHandlers gridWindowHandlers() {
    return {.destroyed = onGridWindowDestroyed};
}
