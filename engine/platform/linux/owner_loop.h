#pragma once

#include <glib.h>

namespace rotika {

// The GLib loop of the owner thread.

/// The GLib context of the owner thread's loop: all sources of the platform are attached to it. Any thread
/// once the platform is open.
GMainContext* ownerContext();

/// Schedules a call of `function` on the owner's loop, before its next tick and the next event of the
/// display. Any thread.
void callOwnerSoon(GSourceFunc function, gpointer data);

/// The same after `delayMs`, repeated as long as `function` returns G_SOURCE_CONTINUE.
void callOwnerAfter(guint delayMs, GSourceFunc function, gpointer data);

} // namespace rotika
