#include "platform/main_window.h"

#include "platform/windows/handles.h"
#include "platform/windows/hot_key.h"
#include "platform/windows/session_lock.h"
#include "platform/windows/tray.h"
#include "platform/windows/ui_font.h"

namespace rotika {

namespace {

constexpr int editorButtonId = 1003;

/// There is one main window.
MainWindowHandlers handlers{};

void createControls(HWND window) noexcept {
    const HWND button = CreateWindowExW(
        0, L"BUTTON", L"Edytor funkcji…", WS_CHILD | WS_VISIBLE, 20, 480, 170, 32, window,
        reinterpret_cast<HMENU>(static_cast<INT_PTR>(editorButtonId)), moduleInstance(), nullptr);
    SendMessageW(button, WM_SETFONT, reinterpret_cast<WPARAM>(interfaceFont()), TRUE);
}

void showFromTray(HWND window) noexcept {
    ShowWindow(window, SW_RESTORE);
    SetForegroundWindow(window);
}

void resized(HWND window, WPARAM how) noexcept {
    if (how == SIZE_MINIMIZED) {
        ShowWindow(window, SW_HIDE);
    }
}

void paintStatusPage(HWND window) noexcept {
    PAINTSTRUCT paint{};
    const HDC surface = BeginPaint(window, &paint);
    RECT area{};
    GetClientRect(window, &area);
    FillRect(surface, &area, reinterpret_cast<HBRUSH>(static_cast<INT_PTR>(COLOR_WINDOW + 1)));
    area.left += 20;
    area.top += 16;
    area.right -= 20;
    SetBkMode(surface, TRANSPARENT);
    {
        const FontHandle font(createInterfaceFont(-16));
        const SelectedObject selected(surface, font.get());
        const std::u16string text = handlers.statusText();
        DrawTextW(surface, wideText(text), static_cast<int>(text.size()), &area, DT_WORDBREAK);
    }
    EndPaint(window, &paint);
}

LRESULT dataArrived(const COPYDATASTRUCT* data) noexcept {
    return data != nullptr && handlers.dataArrived(data->dwData, data->lpData, data->cbData) ? 1 : 0;
}

void command(HWND window, WORD id) noexcept {
    switch (id) {
    case trayShowCommand:
        showFromTray(window);
        break;
    case trayQuitCommand:
        DestroyWindow(window);
        break;
    case editorButtonId:
        if (handlers.editorRequested != nullptr) {
            handlers.editorRequested();
        }
        break;
    default:
        break;
    }
}

void trayEvent(HWND window, LPARAM mouseMessage) noexcept {
    if (mouseMessage == WM_LBUTTONDBLCLK) {
        showFromTray(window);
    } else if (mouseMessage == WM_RBUTTONUP) {
        showTrayMenu(window);
    }
}

void destroyed(HWND window) noexcept {
    endSessionNotification(window);
    handlers.destroyed();
}

/// The system ends the process next. Only the engine without the shell (it alone opens the editor from this
/// window) must end itself here; otherwise the shell does it.
void sessionEnded(HWND window, bool isCertain) noexcept {
    if (isCertain && handlers.editorRequested != nullptr) {
        DestroyWindow(window);
    }
}

void monitorsChanged() noexcept {
    if (handlers.monitorsChanged != nullptr) {
        handlers.monitorsChanged();
    }
}

void sessionLockChanged(bool isLocked) noexcept {
    if (handlers.sessionLockChanged != nullptr) {
        handlers.sessionLockChanged(isLocked);
    }
}

void sessionChanged(WPARAM what) noexcept {
    if (what == WTS_SESSION_LOCK || what == WTS_SESSION_UNLOCK) {
        sessionLockChanged(what == WTS_SESSION_LOCK);
    }
}

LRESULT CALLBACK mainProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) noexcept {
    switch (message) {
    case WM_CREATE:
        createControls(window);
        return 0;
    case WM_DESTROY:
        destroyed(window);
        return 0;
    case WM_SIZE:
        resized(window, wParam);
        return 0;
    case WM_PAINT:
        paintStatusPage(window);
        return 0;
    case WM_CLOSE:
        ShowWindow(window, SW_HIDE);
        return 0;
    case WM_COPYDATA:
        return dataArrived(reinterpret_cast<const COPYDATASTRUCT*>(lParam));
    case WM_COMMAND:
        command(window, LOWORD(wParam));
        return 0;
    case WM_ENDSESSION:
        sessionEnded(window, wParam != 0);
        return 0;
    case WM_HOTKEY:
        handlers.hotKeyPressed(registeredHotKeyId(wParam));
        return 0;
    case heldModifiersMessage:
        followHeldModifiers();
        return 0;
    case WM_DISPLAYCHANGE:
        monitorsChanged();
        return 0;
    case WM_WTSSESSION_CHANGE:
        sessionChanged(wParam);
        return 0;
    case trayCallbackMessage:
        trayEvent(window, lParam);
        return 0;
    default:
        break;
    }
    if (message >= WM_APP && message < firstRegisteredMessage) {
        handlers.messageArrived(message, wParam, lParam);
        return 0;
    }
    return DefWindowProcW(window, message, wParam, lParam);
}

} // namespace

WindowHandle createMainWindow(const MainWindowHandlers& wanted) {
    handlers = wanted;
    WNDCLASSW description{};
    description.lpszClassName = L"RadialOverlayMain";
    description.lpfnWndProc = mainProcedure;
    description.hInstance = moduleInstance();
    description.hCursor = LoadCursorW(nullptr, IDC_ARROW);
    description.hIcon = LoadIconW(nullptr, IDI_APPLICATION);
    RegisterClassW(&description);
    constexpr DWORD style = WS_OVERLAPPED | WS_CAPTION | WS_SYSMENU | WS_MINIMIZEBOX;
    const HWND window = CreateWindowExW(0, description.lpszClassName, L"Rotika", style, CW_USEDEFAULT,
                                        CW_USEDEFAULT, 560, 570, nullptr, nullptr, moduleInstance(), nullptr);
    beginSessionNotification(window);
    if (sessionIsLocked()) {
        sessionLockChanged(true);
    }
    return windowHandle(window);
}

void repaintMainWindow(WindowHandle mainWindow) {
    // A null window would repaint all windows of the desktop; a worker may outlive the main window.
    if (mainWindow != nullptr) {
        InvalidateRect(nativeWindow(mainWindow), nullptr, TRUE);
    }
}

} // namespace rotika
