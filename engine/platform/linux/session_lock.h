#pragma once

namespace rotika {

/// Watches from now on whether the person's session is locked, as the desktop's lockers say. `changed` is
/// called by the owner's loop on each change, the first time only if it is locked. Call once. Owner thread.
void watchSessionLock(void (*changed)(bool isLocked) noexcept);

/// Tells the desktop's lockers that the user is active. Owner thread.
void tellLockersOfActivity();

} // namespace rotika
