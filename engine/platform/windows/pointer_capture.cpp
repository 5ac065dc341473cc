#include "platform/pointer_capture.h"

#include "platform/injection.h"
#include "platform/pointer.h"

#include "platform/windows/cursor_pin.h"
#include "platform/windows/handles.h"
#include "platform/windows/input_guard.h"
#include "platform/windows/pointer_capture.h"

#include <array>
#include <cstddef>
#include <optional>

namespace rotika {

namespace {

constexpr ULONGLONG guardPeriodMs = 250;
/// Shorter than the guard's limit, which starts with the last record that it received.
constexpr ULONGLONG staleAfterMs = 1500;
static_assert(staleAfterMs + guardPeriodMs < captureSilenceLimitMs);

struct PointerCapture {
    bool isActive = false;
    PointerCaptureHandlers handlers{};
    HookHandle mouseHook;
    std::optional<RECT> clipBefore;
    ULONGLONG renewedAt = 0;
    ULONGLONG guardNotifiedAt = 0;
    // Device buttons that were down at the start without a change since, and those of them released since.
    std::array<bool, 5> downBefore{};
    std::array<bool, 5> releasedMeanwhile{};
};

PointerCapture& capture() {
    static auto& state = *new PointerCapture;
    return state;
}

struct ButtonChange {
    std::size_t button; // of the device
    bool down;
};

/// The hook's events are after the user's swap of left and right.
std::optional<ButtonChange> buttonChange(WPARAM message, const MSLLHOOKSTRUCT& event) {
    const std::size_t left = mouseButtonsAreSwapped() ? 1 : 0;
    switch (message) {
    case WM_LBUTTONDOWN:
    case WM_LBUTTONUP:
        return ButtonChange{left, message == WM_LBUTTONDOWN};
    case WM_RBUTTONDOWN:
    case WM_RBUTTONUP:
        return ButtonChange{1 - left, message == WM_RBUTTONDOWN};
    case WM_MBUTTONDOWN:
    case WM_MBUTTONUP:
        return ButtonChange{2, message == WM_MBUTTONDOWN};
    case WM_XBUTTONDOWN:
    case WM_XBUTTONUP:
        return ButtonChange{HIWORD(event.mouseData) == XBUTTON1 ? 3U : 4U, message == WM_XBUTTONDOWN};
    default:
        return std::nullopt;
    }
}

/// A button that is pressed now was not held by the user before: if it was down, a function holds it, and its
/// release here must not reach the programs.
void noteChange(PointerCapture& state, const ButtonChange& change) {
    if (!change.down && state.downBefore[change.button]) {
        state.releasedMeanwhile[change.button] = true;
    }
    state.downBefore[change.button] = false;
}

LRESULT CALLBACK mouseHookProcedure(int code, WPARAM message, LPARAM parameter) noexcept {
    const auto& event = *reinterpret_cast<const MSLLHOOKSTRUCT*>(parameter);
    PointerCapture& state = capture();
    if (code != HC_ACTION || !state.isActive || (event.flags & LLMHF_INJECTED) != 0 || captureIsStale() ||
        !state.handlers.isSwallowing()) {
        return CallNextHookEx(nullptr, code, message, parameter);
    }
    if (message == WM_LBUTTONDOWN) {
        state.handlers.leftPressed();
    }
    if (const auto change = buttonChange(message, event)) {
        noteChange(state, *change);
    }
    return 1;
}

void rememberPressedButtons(PointerCapture& state) {
    constexpr std::array<int, 5> buttonKeys{VK_LBUTTON, VK_RBUTTON, VK_MBUTTON, VK_XBUTTON1, VK_XBUTTON2};
    for (std::size_t i = 0; i < buttonKeys.size(); ++i) {
        state.downBefore[i] = GetAsyncKeyState(buttonKeys[i]) < 0;
        state.releasedMeanwhile[i] = false;
    }
}

/// The guard is notified before the pin is set.
void pin(PointerCapture& state, Point pinned) {
    state.clipBefore = cursorClip();
    if (state.clipBefore) {
        for (const GuardRecord& record : clipRecords(*state.clipBefore)) {
            notifyInputGuard(record);
        }
    }
    notifyInputGuard(pinRecord(true));
    state.renewedAt = state.guardNotifiedAt = GetTickCount64();
    pinCursor(pinned);
}

void registerRawMouse(DWORD flags, HWND target) {
    const RAWINPUTDEVICE genericMouse{1, 2, flags, target};
    RegisterRawInputDevices(&genericMouse, 1, sizeof(genericMouse));
}

} // namespace

void beginPointerCapture(WindowHandle wheelWindow, Point pinned, const PointerCaptureHandlers& handlers) {
    PointerCapture& state = capture();
    state.handlers = handlers;
    state.isActive = true;
    rememberPressedButtons(state);
    if (!state.mouseHook) {
        state.mouseHook = HookHandle(SetWindowsHookExW(WH_MOUSE_LL, mouseHookProcedure, moduleInstance(), 0));
    }
    pin(state, pinned);
    registerRawMouse(RIDEV_INPUTSINK, nativeWindow(wheelWindow));
}

bool captureIsStale() noexcept {
    return capture().isActive && GetTickCount64() - capture().renewedAt > staleAfterMs;
}

bool renewPointerCapture() {
    PointerCapture& state = capture();
    if (captureIsStale()) {
        return false;
    }
    state.renewedAt = GetTickCount64();
    if (state.isActive && state.renewedAt - state.guardNotifiedAt >= guardPeriodMs) {
        state.guardNotifiedAt = state.renewedAt;
        notifyInputGuard(pinRecord(true));
    }
    return true;
}

void endPointerCapture() {
    PointerCapture& state = capture();
    if (!state.isActive) {
        return;
    }
    state.isActive = false;
    registerRawMouse(RIDEV_REMOVE, nullptr);
    unpinCursor(state.clipBefore);
    notifyInputGuard(pinRecord(false));
    state.mouseHook.reset();
    // The hook swallowed these releases: for the system and the programs the buttons would stay down.
    for (std::size_t i = 0; i < state.releasedMeanwhile.size(); ++i) {
        if (state.releasedMeanwhile[i]) {
            injectMouseButton(static_cast<std::uint32_t>(i), InputMotion::up);
        }
    }
}

void rawInputArrived(HRAWINPUT record) noexcept {
    RAWINPUT input{};
    UINT size = sizeof(input);
    if (!capture().isActive || captureIsStale() ||
        GetRawInputData(record, RID_INPUT, &input, &size, sizeof(RAWINPUTHEADER)) == static_cast<UINT>(-1) ||
        input.header.dwType != RIM_TYPEMOUSE) {
        return;
    }
    const RAWMOUSE& mouse = input.data.mouse;
    if ((mouse.usFlags & MOUSE_MOVE_ABSOLUTE) == 0) {
        capture().handlers.moved(mouse.lLastX, mouse.lLastY);
    }
    if ((mouse.usButtonFlags & RI_MOUSE_LEFT_BUTTON_DOWN) != 0) {
        capture().handlers.leftPressed();
    }
}

} // namespace rotika
