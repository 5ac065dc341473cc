#pragma once

// Update checks by WinSparkle, bound by name at run time. Without the library, or without any one of its
// functions, the program runs as it is and all of these do nothing. First thread.

/// True when the library is there with every function.
bool updateServiceAvailable();

/// Names the feed and this program and starts checking in the background. `onShutdownRequest` is called on a
/// foreign thread when an update wants the program closed.
void startUpdateService(void (*onShutdownRequest)());

/// Ends the background check.
void stopUpdateService();

/// Checks at once, with the library's own windows.
void checkForUpdatesWithUi();
