#pragma once

namespace rotika {

/// Calls `body(context)` and survives a fault in it, an access violation as well as a stack overflow, and on
/// Linux an abort(): false if there was one. What `body` had begun stays half done: its destructors have not
/// run, and locks that it held stay locked. Faults that the code below handles itself stay its own. Nestable;
/// any thread.
bool runGuarded(void (*body)(void* context), void* context);

} // namespace rotika
