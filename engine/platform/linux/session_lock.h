#pragma once

namespace rotika {

/// Watches whether the user's session is locked, as the desktop's lockers report it. The owner's loop calls
/// `changed` on each change, the first time only if the session is locked. Call once. Owner thread.
void watchSessionLock(void (*changed)(bool isLocked) noexcept);

/// Reports user activity to the desktop's lockers. Owner thread.
void reportActivityToLockers();

} // namespace rotika
