#pragma once

#include "base/geometry.h"
#include "base/window_handle.h"

#include <cstdint>

namespace rotika {

/// Called on the owner thread during the capture. No member may be null.
struct PointerCaptureHandlers {
    /// Called for each device event where the system allows a choice: false lets the event pass.
    bool (*isSwallowing)() noexcept;
    /// A device's left button went down. On Windows each press comes twice, by the hook and by raw input.
    void (*leftPressed)() noexcept;
    /// Raw device counts, unaccelerated, of relative devices only.
    void (*moved)(std::int32_t dx, std::int32_t dy) noexcept;
};

/// Withholds every event of the real mice from all programs, except injected events, pins the real cursor at
/// `pinned` (on X11, where another program may move it, it is moved back at most 20 times per capture), and
/// delivers the mice's raw motion and left presses. Also applies to mice connected later. Parts that the
/// system refuses are skipped silently. `handlers` is copied. Owner thread; not nested.
void beginPointerCapture(WindowHandle wheelWindow, Point pinned, const PointerCaptureHandlers& handlers);

/// Time without a heartbeat of the owner thread after which the guard process releases the mouse, in ms.
inline constexpr std::uint64_t captureSilenceLimitMs = 2000;

/// Sends the guard a heartbeat of the owner thread; call on each tick of the open wheel. False when the last
/// one was so long ago that the guard may have released the mouse; the caller then closes the wheel, and
/// presses and motion since then do not reach the handlers. True without a capture. Never blocks.
bool renewPointerCapture();

/// Ends the capture; a button released during the capture is released for the programs too. No effect without
/// a capture. The system ends the capture itself when the process dies. On X11 a mouse whose button was
/// pressed during the capture and is still down is returned on its release, or after 3 s.
void endPointerCapture();

} // namespace rotika
