#pragma once

// The only header that includes Xlib and its extensions, whose macros and names would break other headers.

#include <X11/XKBlib.h>
#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <X11/Xutil.h>
#include <X11/extensions/XI2.h>
#include <X11/extensions/XInput2.h>
#include <X11/extensions/XShm.h>
#include <X11/extensions/XTest.h>
#include <X11/extensions/Xfixes.h>
#include <X11/extensions/Xrandr.h>
#include <X11/extensions/shape.h>
#include <X11/keysym.h>
#undef None
#undef Bool
#undef Status
#undef Always
#undef Success
#undef Unsorted
#undef Complex

#include "base/window_handle.h"

#include <cstdint>
#include <memory>

namespace rotika {

inline constexpr XID noXid = 0;

inline WindowHandle handleOf(Window window) {
    return reinterpret_cast<WindowHandle>(static_cast<std::uintptr_t>(window));
}
inline Window windowOf(WindowHandle handle) {
    return static_cast<Window>(reinterpret_cast<std::uintptr_t>(handle));
}

struct XFreeDeleter {
    void operator()(void* memory) const noexcept {
        if (memory != nullptr)
            XFree(memory);
    }
};
template <typename T>
using XOwned = std::unique_ptr<T, XFreeDeleter>;

} // namespace rotika
