#pragma once

#include "base/window_handle.h"
#include "platform/messages.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace rotika {

/// Events of the hidden main window, on the owner thread. No member may be null except where stated.
struct MainWindowHandlers {
    void (*hotKeyPressed)(int id) noexcept;
    MessageHandler messageArrived;
    /// Another process sent data; the result is returned to it. Windows only: X11 has no such message.
    bool (*dataArrived)(std::uintptr_t kind, const void* bytes, std::size_t byteCount) noexcept;
    /// Text of the status page. Windows only, where a standalone engine shows its window.
    std::u16string (*statusText)();
    /// The button of the status page was pressed. May be null.
    void (*editorRequested)() noexcept;
    void (*destroyed)() noexcept;
    /// A monitor was added, removed, moved or resized. May be null.
    void (*monitorsChanged)() noexcept = nullptr;
    /// The user's session was locked or unlocked; also called soon after the start if it is locked then. May
    /// be null.
    void (*sessionLockChanged)(bool isLocked) noexcept = nullptr;
};

/// Creates the engine's main window, hidden, titled "Rotika"; it receives the hot key and the workers'
/// messages. `handlers` is copied. Null without a display.
WindowHandle createMainWindow(const MainWindowHandlers& handlers);

/// Repaints the status page if it is visible. Windows only; elsewhere the main window is never shown.
/// Any thread.
void repaintMainWindow(WindowHandle mainWindow);

} // namespace rotika
