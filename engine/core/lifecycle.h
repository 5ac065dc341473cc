#pragma once

namespace rotika {

// From start to stop. Owner thread.

/// The start sequence. With `standalone` the engine is alone in the process: it shows the problems of its
/// files and has a tray icon and a status page of its own, whose button calls `openEditor`.
bool startEngine(bool standalone, void (*openEditor)() noexcept = nullptr);

/// Ends everything that goes on. The engine cannot be started again afterwards.
void stopEngine();

/// Reads the files again, and starts or ends the workers as the settings now want.
void reloadEngine();

} // namespace rotika
