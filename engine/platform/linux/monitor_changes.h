#pragma once

namespace rotika {

/// Calls `changed` from now on by the owner's loop, once for each change of the set of monitors, however many
/// events the server makes of it. Call once. Owner thread.
void watchMonitors(void (*changed)() noexcept);

} // namespace rotika
