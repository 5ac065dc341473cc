#pragma once

/// Name of the lock on every system.
inline constexpr char singleInstanceName[] = "RotikaEngineRunning";

/// Takes the lock that allows only one running copy of the program, with or without the shell. False when
/// another copy holds it; true otherwise, also when the lock could not be tested. The program never releases
/// the lock: the system does when the process ends, so a new copy can start only after that. Call once.
bool claimSingleInstance();
