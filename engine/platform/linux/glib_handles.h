#pragma once

#include <gio/gio.h>

#include <memory>

namespace rotika {

struct GObjectDeleter {
    void operator()(gpointer object) const noexcept {
        if (object != nullptr)
            g_object_unref(object);
    }
};
template <typename T>
using GObjectPointer = std::unique_ptr<T, GObjectDeleter>;

struct GFreeDeleter {
    void operator()(gpointer memory) const noexcept { g_free(memory); }
};
template <typename T>
using GPointer = std::unique_ptr<T, GFreeDeleter>;

/// The GLib context that the owner thread's loop runs: all sources of the platform hang on it. Any thread
/// once the platform is open.
GMainContext* ownerContext();

/// Has the owner's loop call `function`, before its next tick and the next event of the display. Any thread.
void callOwnerSoon(GSourceFunc function, gpointer data);

/// The same after `delayMs`, and again as long as `function` answers G_SOURCE_CONTINUE.
void callOwnerAfter(guint delayMs, GSourceFunc function, gpointer data);

} // namespace rotika
