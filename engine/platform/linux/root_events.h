#pragma once

namespace rotika {

/// The connection has one mask for the events of the root window, and several parts want some of them. Each
/// names only its own. Owner thread.
void selectRootEvents(long events);
void unselectRootEvents(long events);

} // namespace rotika
