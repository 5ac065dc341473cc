#include "platform/tray.h"

#include "platform/windows/handles.h"
#include "platform/windows/tray.h"

#include <algorithm>
#include <cstddef>

namespace rotika {

namespace {

/// Zero without a tray icon: the system then refuses a balloon.
NOTIFYICONDATAW trayIconData{};

template <std::size_t size>
void copyCut(wchar_t (&field)[size], const std::u16string& text) {
    const std::size_t length = std::min(text.size(), size - 1);
    std::copy_n(text.begin(), length, field);
    field[length] = L'\0';
}

} // namespace

void addTrayIcon(WindowHandle mainWindow, const std::u16string& tip) {
    trayIconData = {};
    trayIconData.cbSize = sizeof(trayIconData);
    trayIconData.hWnd = nativeWindow(mainWindow);
    trayIconData.uID = 1;
    trayIconData.uFlags = NIF_MESSAGE | NIF_ICON | NIF_TIP;
    trayIconData.uCallbackMessage = trayCallbackMessage;
    trayIconData.hIcon = LoadIconW(nullptr, IDI_APPLICATION);
    copyCut(trayIconData.szTip, tip);
    Shell_NotifyIconW(NIM_ADD, &trayIconData);
}

void removeTrayIcon() {
    Shell_NotifyIconW(NIM_DELETE, &trayIconData);
}

void showTrayBalloon(const std::u16string& title, const std::u16string& text, BalloonIcon icon) {
    trayIconData.uFlags |= NIF_INFO;
    copyCut(trayIconData.szInfoTitle, title);
    copyCut(trayIconData.szInfo, text);
    trayIconData.dwInfoFlags = icon == BalloonIcon::warning ? NIIF_WARNING : NIIF_INFO;
    Shell_NotifyIconW(NIM_MODIFY, &trayIconData);
}

void showTrayMenu(HWND mainWindow) noexcept {
    const MenuHandle menu(CreatePopupMenu());
    AppendMenuW(menu.get(), MF_STRING, trayShowCommand, L"Pokaż okno");
    AppendMenuW(menu.get(), MF_SEPARATOR, 0, nullptr);
    AppendMenuW(menu.get(), MF_STRING, trayQuitCommand, L"Zakończ");
    POINT cursor{};
    GetCursorPos(&cursor);
    // Otherwise the menu would not close when the user clicks elsewhere.
    SetForegroundWindow(mainWindow);
    TrackPopupMenu(menu.get(), TPM_RIGHTBUTTON, cursor.x, cursor.y, 0, mainWindow, nullptr);
}

} // namespace rotika
