#pragma once

namespace rotika {

/// Counts as activity of the user: a screen saver that is on goes off, and a locked screen shows its prompt.
/// Returns at once; failures are silent. Owner thread.
void wakeScreen();

} // namespace rotika
