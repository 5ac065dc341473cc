#pragma once

namespace rotika {

/// Calls `body(context)` and survives a fault in it (access violation, stack overflow, on Linux also
/// abort()): false if there was one. After a fault, destructors below `body` have not run, and locks held
/// there stay locked. Faults that `body` handles itself are not intercepted. Nestable; any thread.
bool runGuarded(void (*body)(void* context), void* context);

} // namespace rotika
