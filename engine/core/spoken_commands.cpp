#include "core/spoken_commands.h"

#include "layers/grid_window.h"
#include "model/engine_config.h"
#include "model/engine_state.h"
#include "model/private_messages.h"
#include "model/voice_commands.h"
#include "platform/messages.h"
#include "platform/screen_saver.h"
#include "pointing/element_labels.h"
#include "pointing/grid.h"
#include "run/function_run.h"
#include "wheel/capture.h"
#include "wheel/focus_hold.h"
#include "wheel/selection.h"

namespace rotika {

namespace {

constexpr std::uint32_t closedWheelDelayMs = 100; // before a function run by voice with the wheel closed

/// Runs a function chosen by voice. An open wheel closes even if the function has no steps.
void runByVoice(const WheelAction& chosen) {
    const WheelAction action = chosen; // closing may dispatch a message that replaces the wheels
    const bool wasOpen = engineState.wheelVisible;
    closeWheel();
    if (action.steps.empty())
        return;
    runWithFocusBack(action, wasOpen ? static_cast<std::uint32_t>(engineConfig.sendDelay.load())
                                     : closedWheelDelayMs);
}

void onVoiceField(std::uintptr_t wheelIndex, std::uintptr_t fieldIndex) {
    // The phrase may come from a table older than the wheels.
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

/// A number selects a visible label, or else a cell of the grid.
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

} // namespace

void onVoiceMessage(std::uint32_t message, std::uintptr_t wParam, std::intptr_t lParam) {
    if (engineState.isStopped) // posted before the stop
        return;
    // Commands must not act unseen behind a locked screen. A screen saver counts as a lock too, and a user
    // who only has voice control must be able to end it.
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

} // namespace rotika
