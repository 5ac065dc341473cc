#pragma once

// Update checks with WinSparkle, loaded at run time. If the library or one of its functions is missing, all
// of these do nothing. Main thread.

/// True if the build names a feed and a key to check updates with (see ROTIKA_UPDATE_KEY), and the library
/// has been loaded with all its functions.
bool updateServiceAvailable();

/// Starts checking in the background. `onShutdownRequest` is called on a thread of the library when an update
/// needs the program to quit.
void startUpdateService(void (*onShutdownRequest)());

/// Stops the background checks.
void stopUpdateService();

/// Checks now; the library shows the result in its own windows.
void checkForUpdatesWithUi();
