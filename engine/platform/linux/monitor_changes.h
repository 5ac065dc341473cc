#pragma once

namespace rotika {

/// From now on the owner's loop calls `changed` once for each change of the set of monitors, however many
/// events the server sends. Call once. Owner thread.
void watchMonitors(void (*changed)() noexcept);

} // namespace rotika
