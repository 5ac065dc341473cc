#pragma once

#include "base/geometry.h"
#include "base/picture.h"
#include "base/window_handle.h"
#include "platform/messages.h"

namespace rotika {

/// The wheel's layer stops the pointer, the grid's lets it through.
enum class OverlayKind { wheel, grid };

struct OverlayWindowHandlers {
    MessageHandler messageArrived = nullptr; // null: messages are dropped
    /// A left press reached the window as an ordinary event; null: nobody cares.
    void (*leftPressed)() noexcept = nullptr;
    /// Somebody asked the window to close (Alt+F4, a task killer). It stays as it is; null: nobody cares.
    void (*closeRequested)() noexcept = nullptr;
    /// Somebody else destroys the window: its handle is good for the functions below only until this returns.
    /// Null: nobody cares.
    void (*destroyed)() noexcept = nullptr;
};

/// A hidden top-most layer with per-pixel transparency that never takes the focus by itself. At 0, 0. Owner
/// thread, like all below.
WindowHandle createOverlayWindow(OverlayKind kind, std::int32_t width, std::int32_t height,
                                 const OverlayWindowHandlers& handlers);

/// Moves, sizes and raises it without activation; the picture shown before is gone if the size changes.
void placeOverlayWindow(WindowHandle window, const Rect& place);
Rect overlayWindowRect(WindowHandle window);

/// Shows it on top of all others without activation.
void showOverlayWindow(WindowHandle window);
void hideOverlayWindow(WindowHandle window);

/// Moves the window's corner there, gives it the picture's size and makes the picture its whole content, in
/// one step where the system can, so that neither the old picture is seen in the new place nor an empty one.
void presentPictureAt(WindowHandle window, Point corner, const Picture& picture);

/// Draws `picture` and makes it the window's whole content, shown or hidden.
void presentPicture(WindowHandle window, const Picture& picture);

} // namespace rotika
