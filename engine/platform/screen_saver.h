#pragma once

namespace rotika {

/// Simulates user activity: an active screen saver ends, and a locked screen shows its prompt.
/// Returns at once; failures are silent. Owner thread.
void wakeScreen();

} // namespace rotika
