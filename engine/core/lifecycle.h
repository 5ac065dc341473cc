#pragma once

namespace rotika {

// Start, reload and stop. Owner thread.

/// Starts the engine; false when there is no display. With `standalone` it runs without the shell: it reports
/// the problems of its files and has its own tray icon and status page, whose button calls `openEditor`.
bool startEngine(bool standalone, void (*openEditor)() noexcept = nullptr);

/// Stops all activity. The engine cannot be started again afterwards.
void stopEngine();

/// Reloads the files, and starts or stops the workers according to the settings.
void reloadEngine();

} // namespace rotika
