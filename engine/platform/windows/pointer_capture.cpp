#include "platform/pointer_capture.h"

#include "platform/pointer.h"

#include "platform/windows/handles.h"
#include "platform/windows/input_guard.h"
#include "platform/windows/input_sending.h"
#include "platform/windows/raw_input.h"

#include <array>
#include <cstddef>
#include <optional>

namespace {

struct PointerCapture {
    bool stands = false;
    PointerCaptureHandlers handlers{};
    HookHandle mouseHook;
    // Device buttons that programs still take for pressed, and those of them that were let go meanwhile.
    std::array<bool, 5> downBefore{};
    std::array<bool, 5> releasedMeanwhile{};
};

PointerCapture& capture() {
    static auto& state = *new PointerCapture;
    return state;
}

/// The device button of a release as the hook sees it: after the user's swap of left and right.
std::optional<std::size_t> releasedButton(WPARAM message, const MSLLHOOKSTRUCT& event) {
    switch (message) {
    case WM_LBUTTONUP:
        return mouseButtonsAreSwapped() ? 1 : 0;
    case WM_RBUTTONUP:
        return mouseButtonsAreSwapped() ? 0 : 1;
    case WM_MBUTTONUP:
        return 2;
    case WM_XBUTTONUP:
        return HIWORD(event.mouseData) == XBUTTON1 ? 3 : 4;
    default:
        return std::nullopt;
    }
}

LRESULT CALLBACK mouseHookProcedure(int code, WPARAM message, LPARAM parameter) noexcept {
    const auto& event = *reinterpret_cast<const MSLLHOOKSTRUCT*>(parameter);
    PointerCapture& state = capture();
    if (code != HC_ACTION || !state.stands || (event.flags & LLMHF_INJECTED) != 0 ||
        !state.handlers.isSwallowing()) {
        return CallNextHookEx(nullptr, code, message, parameter);
    }
    if (message == WM_LBUTTONDOWN) {
        state.handlers.leftPressed();
    } else if (const auto button = releasedButton(message, event)) {
        state.releasedMeanwhile[*button] = state.downBefore[*button];
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

void pinCursor(Point pinned) {
    GuardRecord record;
    record.kind = GuardedThing::pointerPin;
    record.down = 1;
    tellInputGuard(record);
    const RECT place{pinned.x, pinned.y, pinned.x + 1, pinned.y + 1};
    ClipCursor(&place);
}

void unpinCursor() {
    ClipCursor(nullptr);
    GuardRecord record;
    record.kind = GuardedThing::pointerPin;
    tellInputGuard(record);
}

void registerRawMouse(DWORD flags, HWND target) {
    const RAWINPUTDEVICE genericMouse{1, 2, flags, target};
    RegisterRawInputDevices(&genericMouse, 1, sizeof(genericMouse));
}

} // namespace

void beginPointerCapture(WindowHandle wheelWindow, Point pinned, const PointerCaptureHandlers& handlers) {
    PointerCapture& state = capture();
    state.handlers = handlers;
    state.stands = true;
    rememberPressedButtons(state);
    if (!state.mouseHook) {
        state.mouseHook = HookHandle(SetWindowsHookExW(WH_MOUSE_LL, mouseHookProcedure, moduleInstance(), 0));
    }
    pinCursor(pinned);
    registerRawMouse(RIDEV_INPUTSINK, nativeWindow(wheelWindow));
}

bool renewPointerCapture() {
    return true;
}

void endPointerCapture() {
    PointerCapture& state = capture();
    if (!state.stands) {
        return;
    }
    state.stands = false;
    registerRawMouse(RIDEV_REMOVE, nullptr);
    unpinCursor();
    state.mouseHook.reset();
    // The hook swallowed these releases, so the system and the programs would hold the buttons for pressed
    // for ever.
    for (std::size_t i = 0; i < state.releasedMeanwhile.size(); ++i) {
        if (state.releasedMeanwhile[i]) {
            sendButtonEvent(static_cast<std::uint32_t>(i), false);
        }
    }
}

void rawInputArrived(HRAWINPUT record) noexcept {
    RAWINPUT input{};
    UINT size = sizeof(input);
    if (!capture().stands ||
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
