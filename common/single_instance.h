#pragma once

/// What the lock is called on every system.
inline constexpr char singleInstanceName[] = "RotikaEngineRunning";

/// Takes the lock that one running copy of the program holds, with the shell or without it. False when
/// another copy holds it; true otherwise, also when the system could not say. The lock is never given back by
/// the program: the system frees it when the process ends, so a new copy can start only after the old process
/// is gone. Call once.
bool claimSingleInstance();
