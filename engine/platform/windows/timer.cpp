#include "platform/timer.h"

#include "platform/windows/timer.h"

#include <unordered_map>

namespace rotika {

namespace {

constexpr UINT_PTR windowTimerId = 1;

/// Never destroyed: windows outlive the engine's stop.
std::unordered_map<HWND, void (*)() noexcept>& runningTimers() {
    static auto& timers = *new std::unordered_map<HWND, void (*)() noexcept>;
    return timers;
}

} // namespace

void startWindowTimer(WindowHandle window, std::uint32_t periodMs, void (*tick)() noexcept) {
    runningTimers()[nativeWindow(window)] = tick;
    SetTimer(nativeWindow(window), windowTimerId, periodMs, nullptr);
}

void stopWindowTimer(WindowHandle window) {
    KillTimer(nativeWindow(window), windowTimerId);
    runningTimers().erase(nativeWindow(window));
}

void windowTimerElapsed(HWND window, WPARAM timerId) noexcept {
    // A tick that was queued before the stop still arrives after it.
    const auto timer = runningTimers().find(window);
    if (timerId == windowTimerId && timer != runningTimers().end()) {
        timer->second();
    }
}

} // namespace rotika
