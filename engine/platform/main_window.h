#pragma once

#include "base/window_handle.h"
#include "platform/messages.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace rotika {

/// What the hidden main window tells the engine, always on the owner thread. All members are set
/// but where said.
struct MainWindowHandlers {
    void (*hotKeyPressed)(int id) noexcept;
    MessageHandler messageArrived;
    /// Another process sent data; the result is its answer. Windows only: X11 has no such message.
    bool (*dataArrived)(std::uintptr_t kind, const void* bytes, std::size_t byteCount) noexcept;
    /// Text of the status page. Windows only, where a standalone engine shows its window.
    std::u16string (*statusText)();
    /// The button of the status page.
    void (*editorRequested)() noexcept;
    void (*destroyed)() noexcept;
    /// A monitor came, went, moved or changed its size. Null: nobody cares.
    void (*monitorsChanged)() noexcept = nullptr;
    /// The user's session was locked or unlocked; told soon after the start as well, if it is locked then.
    /// Null: nobody cares.
    void (*sessionLockChanged)(bool isLocked) noexcept = nullptr;
};

/// Creates the engine's main window, hidden, titled "Rotika"; it receives the hot key and the workers'
/// messages. `handlers` is copied. Null without a display.
WindowHandle createMainWindow(const MainWindowHandlers& handlers);

/// Has the status page painted anew if it is on show. Windows only; elsewhere the main window is never shown.
/// Any thread.
void repaintMainWindow(WindowHandle mainWindow);

} // namespace rotika
