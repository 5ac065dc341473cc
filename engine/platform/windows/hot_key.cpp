#include "platform/hot_key.h"

#include "platform/windows/windows_api.h"

bool registerHotKey(WindowHandle mainWindow, int id, std::uint16_t virtualKey) {
    return RegisterHotKey(nativeWindow(mainWindow), id, MOD_NOREPEAT, virtualKey) != 0;
}

void unregisterHotKey(WindowHandle mainWindow, int id) {
    UnregisterHotKey(nativeWindow(mainWindow), id);
}
