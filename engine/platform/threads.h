#pragma once

#include <functional>

/// Runs `body` on a thread of its own that nobody waits for. `body` must not throw and must own all it
/// touches. A system that refuses a thread ends the process: a run that cannot happen has nobody to report
/// to.
void startDetachedThread(std::function<void()> body);
