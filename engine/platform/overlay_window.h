#pragma once

#include "base/geometry.h"
#include "base/picture.h"
#include "base/window_handle.h"
#include "platform/messages.h"

#include <cstdint>

namespace rotika {

/// The wheel's layer receives pointer events, the grid's is click-through.
enum class OverlayKind { wheel, grid };

/// A repeat is the system's, of a key that is held down, be it since before the window had the focus.
enum class KeyChange { pressed, repeated, released };

struct OverlayWindowHandlers {
    MessageHandler messageArrived = nullptr; // null: messages are discarded
    /// A left press arrived as an ordinary window event. May be null.
    void (*leftPressed)() noexcept = nullptr;
    /// A key changed while the window had the keyboard focus, which only bringToForeground() gives it. By
    /// virtual key, in every state of modifiers and lock keys: a digit of the top row goes by its position,
    /// one of the keypad requires Num Lock. Not called for this program's own injected presses. May be null.
    void (*keyChanged)(std::uint16_t virtualKey, KeyChange change) noexcept = nullptr;
    /// The window has lost the keyboard focus, so releases may be missing. May be null.
    void (*focusLost)() noexcept = nullptr;
    /// The window was requested to close (Alt+F4, a task killer). It stays open. May be null.
    void (*closeRequested)() noexcept = nullptr;
    /// The window is destroyed from outside: its handle is valid for the functions below only until this
    /// returns. May be null.
    void (*destroyed)() noexcept = nullptr;
};

/// A hidden top-most layer with per-pixel transparency that never takes the focus by itself. At 0, 0. Owner
/// thread, like the functions below.
WindowHandle createOverlayWindow(OverlayKind kind, std::int32_t width, std::int32_t height,
                                 const OverlayWindowHandlers& handlers);

/// Moves, sizes and raises it without activation; the picture is lost if the size changes.
void placeOverlayWindow(WindowHandle window, const Rect& place);
Rect overlayWindowRect(WindowHandle window);

/// Shows it above all windows without activation.
void showOverlayWindow(WindowHandle window);
void hideOverlayWindow(WindowHandle window);

/// Moves the window to `corner`, with the size and content of `picture`, atomically where the system can, so
/// that neither the old picture nor an empty one appears in the new place.
void presentPictureAt(WindowHandle window, Point corner, const Picture& picture);

/// Whether the key that a layer with the focus has last received as a press or repeat is still down.
bool overlayKeyIsDown();

/// Draws `picture` and makes it the window's whole content, shown or hidden.
void presentPicture(WindowHandle window, const Picture& picture);

} // namespace rotika
