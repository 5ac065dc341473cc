#pragma once

#include "gaze/gaze_library.h"

#include <array>
#include <atomic>
#include <string>

namespace rotika {

/// Stores each valid gaze point of the first tracker in engineState until `gazeStop`, or ends when something
/// it needs is missing; reports its state in gazeStatus. Reconnects to a tracker that was unplugged.
/// `libraryPath` may be empty. The body of the gaze thread.
void gazeThreadMain(const std::u16string& libraryPath, const std::atomic<bool>& gazeStop) noexcept;

/// Address of a tracker, zero-terminated.
using GazeDeviceUrl = std::array<char, 256>;

/// Stores the first address of an enumeration, truncated to the buffer. `buffer` is a GazeDeviceUrl.
void firstDeviceUrl(const char* url, void* buffer) noexcept;

/// Stores a valid point as the current sample. Called by the library on the gaze thread.
void onGazePoint(const GazePoint* point, void* user) noexcept;

} // namespace rotika
