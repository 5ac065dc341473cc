#pragma once

#include "base/geometry.h"
#include "base/window_handle.h"

#include <cstdint>

namespace rotika {

/// Called on the owner thread while the capture stands. All members are set.
struct PointerCaptureHandlers {
    /// Asked for each device event where the system leaves the choice: false lets the event pass.
    bool (*isSwallowing)() noexcept;
    /// A device's left button went down. On Windows each press comes twice, by the hook and by raw input.
    void (*leftPressed)() noexcept;
    /// Raw device counts, unaccelerated, of relative devices only.
    void (*moved)(std::int32_t dx, std::int32_t dy) noexcept;
};

/// Holds back every event of the real mice from all programs, injected events excepted, pins the real cursor
/// at `pinned` (on X11, where another program may move it, it is put back, 20 times a capture at most), and
/// delivers the mice's raw motion and left presses. Mice plugged in later are held back too. Parts that the
/// system refuses are left out in silence. `handlers` is copied. Owner thread; not nested.
void beginPointerCapture(WindowHandle wheelWindow, Point pinned, const PointerCaptureHandlers& handlers);

/// Silence of the owner thread after which the guard process gives the mouse back, in ms.
inline constexpr std::uint64_t captureSilenceLimitMs = 2000;

/// Called by each tick of the open wheel: tells the guard that the owner thread is alive. False when the
/// thread was silent for so long that the guard may have given the mouse back; the caller then closes the
/// wheel, and nothing that was pressed or moved meanwhile reaches the handlers. True when no capture stands.
/// Never blocks.
bool renewPointerCapture();

/// Gives everything back; a button released during the capture is released for the programs too. Harmless
/// when no capture stands. The system undoes the capture by itself when the process dies. On X11 a mouse
/// whose button was pressed during the capture and is still down comes back with its release, 3 s later at
/// the most.
void endPointerCapture();

} // namespace rotika
