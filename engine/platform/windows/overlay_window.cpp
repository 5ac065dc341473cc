#include "platform/overlay_window.h"

#include "platform/windows/handles.h"
#include "platform/windows/input_sending.h"
#include "platform/windows/picture_drawing.h"
#include "platform/windows/pointer_capture.h"
#include "platform/windows/timer.h"

namespace rotika {

namespace {

constexpr DWORD layerStyle = WS_EX_TOPMOST | WS_EX_TOOLWINDOW | WS_EX_LAYERED | WS_EX_NOACTIVATE;
constexpr UINT keepPlace = SWP_NOSIZE | SWP_NOMOVE | SWP_NOACTIVATE;

/// There is one window of each kind.
template <OverlayKind kind>
OverlayWindowHandlers handlersOf{};

void call(void (*handler)() noexcept) noexcept {
    if (handler != nullptr) {
        handler();
    }
}

LRESULT rawInput(HWND window, WPARAM wParam, LPARAM lParam) noexcept {
    rawInputArrived(reinterpret_cast<HRAWINPUT>(lParam));
    // The default procedure frees the record.
    DefWindowProcW(window, WM_INPUT, wParam, lParam);
    return 0;
}

/// While the capture is stale the guard may have freed the mouse, and the press may be meant for another
/// window.
void leftButtonDown(const OverlayWindowHandlers& handlers) noexcept {
    if (!captureIsStale()) {
        call(handlers.leftPressed);
    }
}

int lastPressedKey = 0;

/// The default procedure makes the system's commands of Alt and F4.
LRESULT key(const OverlayWindowHandlers& handlers, HWND window, UINT message, WPARAM wParam,
            LPARAM lParam) noexcept {
    constexpr LPARAM wasDown = LPARAM{1} << 30;
    constexpr LPARAM isUp = LPARAM{1} << 31;
    if (handlers.keyChanged != nullptr && GetMessageExtraInfo() != static_cast<LPARAM>(extraInfoOfOurKeys)) {
        if ((lParam & isUp) == 0) {
            lastPressedKey = static_cast<int>(wParam);
        }
        const KeyChange ofPress = (lParam & wasDown) != 0 ? KeyChange::repeated : KeyChange::pressed;
        handlers.keyChanged(static_cast<std::uint16_t>(wParam),
                            (lParam & isUp) != 0 ? KeyChange::released : ofPress);
    }
    return DefWindowProcW(window, message, wParam, lParam);
}

void privateMessage(const OverlayWindowHandlers& handlers, UINT message, WPARAM wParam,
                    LPARAM lParam) noexcept {
    if (handlers.messageArrived != nullptr) {
        handlers.messageArrived(message, wParam, lParam);
    }
}

template <OverlayKind kind>
LRESULT CALLBACK overlayProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) noexcept {
    const OverlayWindowHandlers handlers = handlersOf<kind>; // a copy: a handler may create a new window
    switch (message) {
    case WM_CLOSE: // the default procedure would destroy the window
        call(handlers.closeRequested);
        return 0;
    case WM_DESTROY:
        call(handlers.destroyed);
        return 0;
    case WM_INPUT:
        return rawInput(window, wParam, lParam);
    case WM_TIMER:
        windowTimerElapsed(window, wParam);
        return 0;
    case WM_LBUTTONDOWN:
        leftButtonDown(handlers);
        return 0;
    case WM_KEYDOWN:
    case WM_KEYUP:
    case WM_SYSKEYDOWN: // with Alt, which a function may hold down
    case WM_SYSKEYUP:
        return key(handlers, window, message, wParam, lParam);
    case WM_KILLFOCUS:
        call(handlers.focusLost);
        break;
    case WM_MOUSEACTIVATE: // implied by WS_EX_NOACTIVATE, but Wine activates anyway
        return MA_NOACTIVATE;
    default:
        break;
    }
    if (message >= WM_APP && message < firstRegisteredMessage) {
        privateMessage(handlers, message, wParam, lParam);
        return 0;
    }
    return DefWindowProcW(window, message, wParam, lParam);
}

const wchar_t* registeredClass(OverlayKind kind) {
    WNDCLASSW description{};
    description.hInstance = moduleInstance();
    if (kind == OverlayKind::wheel) {
        description.lpszClassName = L"RadialOverlayWheel";
        description.lpfnWndProc = overlayProcedure<OverlayKind::wheel>;
        description.hCursor = LoadCursorW(nullptr, IDC_ARROW);
    } else {
        description.lpszClassName = L"RadialOverlayGrid";
        description.lpfnWndProc = overlayProcedure<OverlayKind::grid>;
    }
    RegisterClassW(&description); // fails harmlessly for a second window of the kind
    return description.lpszClassName;
}

bool isClickThrough(HWND window) {
    return (GetWindowLongPtrW(window, GWL_EXSTYLE) & WS_EX_TRANSPARENT) != 0;
}

/// Top-down, 32 bits per pixel.
BitmapHandle pixelBitmap(HDC screen, std::int32_t width, std::int32_t height) {
    BITMAPINFO info{};
    info.bmiHeader.biSize = sizeof(info.bmiHeader);
    info.bmiHeader.biWidth = width;
    info.bmiHeader.biHeight = -height;
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = 32;
    info.bmiHeader.biCompression = BI_RGB;
    void* pixels = nullptr;
    return BitmapHandle(CreateDIBSection(screen, &info, DIB_RGB_COLORS, &pixels, nullptr, 0));
}

} // namespace

WindowHandle createOverlayWindow(OverlayKind kind, std::int32_t width, std::int32_t height,
                                 const OverlayWindowHandlers& handlers) {
    DWORD style = layerStyle;
    if (kind == OverlayKind::wheel) {
        handlersOf<OverlayKind::wheel> = handlers;
    } else {
        handlersOf<OverlayKind::grid> = handlers;
        style |= WS_EX_TRANSPARENT;
    }
    return windowHandle(CreateWindowExW(style, registeredClass(kind), L"", WS_POPUP, 0, 0, width, height,
                                        nullptr, nullptr, moduleInstance(), nullptr));
}

void placeOverlayWindow(WindowHandle window, const Rect& place) {
    SetWindowPos(nativeWindow(window), HWND_TOPMOST, place.left, place.top, place.width(), place.height(),
                 SWP_NOACTIVATE);
}

Rect overlayWindowRect(WindowHandle window) {
    RECT rect{};
    GetWindowRect(nativeWindow(window), &rect);
    return {rect.left, rect.top, rect.right, rect.bottom};
}

void showOverlayWindow(WindowHandle window) {
    if (isClickThrough(nativeWindow(window))) {
        SetWindowPos(nativeWindow(window), HWND_TOPMOST, 0, 0, 0, 0, keepPlace | SWP_SHOWWINDOW);
        return;
    }
    ShowWindow(nativeWindow(window), SW_SHOWNOACTIVATE);
    SetWindowPos(nativeWindow(window), HWND_TOPMOST, 0, 0, 0, 0, keepPlace);
}

void hideOverlayWindow(WindowHandle window) {
    ShowWindow(nativeWindow(window), SW_HIDE);
}

bool overlayKeyIsDown() {
    return lastPressedKey != 0 && GetAsyncKeyState(lastPressedKey) < 0;
}

void presentPicture(WindowHandle window, const Picture& picture) {
    const Rect place = overlayWindowRect(window);
    presentPictureAt(window, {place.left, place.top}, picture);
}

void presentPictureAt(WindowHandle window, Point corner, const Picture& picture) {
    const ScreenDc screen(GetDC(nullptr));
    const MemoryDc memory(CreateCompatibleDC(screen.get()));
    const BitmapHandle bitmap = pixelBitmap(screen.get(), picture.width, picture.height);
    if (!bitmap) {
        return;
    }
    const SelectedObject selected(memory.get(), bitmap.get());
    drawPicture(memory.get(), picture);

    POINT target{corner.x, corner.y};
    SIZE size{picture.width, picture.height};
    POINT source{0, 0};
    BLENDFUNCTION blend{AC_SRC_OVER, 0, 255, AC_SRC_ALPHA};
    UpdateLayeredWindow(nativeWindow(window), screen.get(), &target, &size, memory.get(), &source, 0, &blend,
                        ULW_ALPHA);
}

} // namespace rotika
