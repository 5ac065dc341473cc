#pragma once

namespace rotika {

/// The connection has one event mask for the root window, shared by several users. Each adds and removes only
/// its own events. Owner thread.
void selectRootEvents(long events);
void unselectRootEvents(long events);

} // namespace rotika
