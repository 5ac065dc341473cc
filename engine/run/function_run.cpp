#include "run/function_run.h"

#include "layers/grid_window.h"
#include "model/engine_config.h"
#include "model/engine_state.h"
#include "platform/clock.h"
#include "platform/injection.h"
#include "platform/launcher.h"
#include "platform/pointer.h"
#include "platform/threads.h"

#include <algorithm>
#include <exception>
#include <functional>
#include <utility>

namespace rotika {

namespace {

/// Owned by the run's thread, which never reads the wheels: they may be replaced meanwhile.
struct FunctionRun {
    WheelAction action;
    std::uint32_t initialDelay = 0; // ms
};

struct PointerClick {
    std::uint32_t button = 0;
    std::int32_t count = 0;
};

constexpr std::uint32_t pointerClickDelayMs = 60;

/// Reads the setting at each wait: a reload during a run takes effect at once.
void sleepKeyHold() {
    sleepMs(static_cast<std::uint32_t>(engineConfig.keyHold.load()));
}

/// A press meant for a program would go to the lock screen. Releases are always sent.
bool mayAct() {
    return !engineState.sessionLocked;
}

void sendMouseButton(std::uint32_t button, InputMotion motion) {
    const bool isSwappable = button <= 1;
    injectMouseButton(isSwappable && mouseButtonsAreSwapped() ? 1 - button : button, motion);
}

void playClicks(const ActionStep& step) {
    const std::int32_t count = std::max(step.value, 1);
    for (std::int32_t i = 0; i < count; ++i) {
        if (i > 0)
            sleepKeyHold();
        injectStep(step, true);
        sleepKeyHold();
        injectStep(step, false);
    }
}

void playHold(const ActionStep& step) {
    injectStep(step, true);
    if (step.value <= 0)
        return; // until another step releases it
    sleepMs(static_cast<std::uint32_t>(step.value));
    injectStep(step, false);
}

void playStep(const ActionStep& step) {
    switch (step.kind) {
    case StepKind::click:
        playClicks(step);
        break;
    case StepKind::hold:
        playHold(step);
        break;
    case StepKind::release:
        injectStep(step, false);
        break;
    case StepKind::open:
        if (mayAct())
            openTarget(step.target);
        break;
    }
}

void playRun(const FunctionRun& run) noexcept {
    sleepMs(run.initialDelay);
    for (std::size_t i = 0; i < run.action.steps.size(); ++i) {
        if (i > 0 && run.action.delay > 0)
            sleepMs(static_cast<std::uint32_t>(run.action.delay));
        playStep(run.action.steps[i]);
    }
}

void playPointerClick(const PointerClick& click) noexcept {
    sleepMs(pointerClickDelayMs);
    for (std::int32_t i = 0; i < click.count; ++i) {
        if (i > 0)
            sleepKeyHold();
        if (!mayAct())
            return;
        sendMouseButton(click.button, InputMotion::downUntilReleased);
        sleepKeyHold();
        sendMouseButton(click.button, InputMotion::up);
    }
}

/// Without a thread the chosen function would be lost silently. Such a system is out of resources: terminate,
/// so that the guard process releases whatever a run still holds down.
void startRun(std::function<void()> body) {
    if (!startDetachedThread(std::move(body)))
        std::terminate();
}

} // namespace

void runFunction(const WheelAction& action, std::uint32_t initialDelay) {
    startRun([run = FunctionRun{action, initialDelay}] { playRun(run); });
}

void startMouseClick(std::uint32_t button, std::int32_t count) {
    if (engineState.gridVisible)
        hideGrid();
    startRun([click = PointerClick{button, count}] { playPointerClick(click); });
}

void injectStep(const ActionStep& step, bool down) {
    if (!step.key.valid || (down && !mayAct()))
        return;
    const bool staysDown = step.kind == StepKind::hold && step.value <= 0;
    const InputMotion press = staysDown ? InputMotion::downPersistent : InputMotion::downUntilReleased;
    const InputMotion motion = down ? press : InputMotion::up;
    if (step.key.isMouse)
        sendMouseButton(step.key.mouseButton, motion);
    else
        injectKey(step.key.vk, step.key.extended, motion);
}

} // namespace rotika
