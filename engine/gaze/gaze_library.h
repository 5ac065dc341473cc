#pragma once

#include "platform/dynamic_library.h"

#include <cstdint>
#include <string>
#include <vector>

namespace rotika {

/// A gaze point in the library's layout.
struct GazePoint {
    std::int64_t timestampUs = 0; // the library's own clock
    std::int32_t validity = 0;    // 1: valid
    float x = 0;                  // 0 to 1 across the display area, otherwise outside it
    float y = 0;
};

// The library's handles are opaque.
using GazeUrlReceiver = void (*)(const char* url, void* user);
using GazePointReceiver = void (*)(const GazePoint* point, void* user);

/// The eye tracker's functions, bound by name. A result of 0 is success.
struct GazeLibrary {
    std::int32_t (*apiCreate)(void** api, const void* allocator, const void* log) = nullptr;
    std::int32_t (*apiDestroy)(void* api) = nullptr;
    std::int32_t (*enumerateLocalDeviceUrls)(void* api, GazeUrlReceiver receiver, void* user) = nullptr;
    std::int32_t (*deviceCreate)(void* api, const char* url, std::int32_t fieldOfUse,
                                 void** device) = nullptr;
    std::int32_t (*deviceDestroy)(void* device) = nullptr;
    std::int32_t (*deviceReconnect)(void* device) = nullptr; // optional
    std::int32_t (*gazePointSubscribe)(void* device, GazePointReceiver receiver, void* user) = nullptr;
    std::int32_t (*gazePointUnsubscribe)(void* device) = nullptr; // optional
    std::int32_t (*waitForCallbacks)(std::int32_t deviceCount, void* const* devices) = nullptr;
    std::int32_t (*deviceProcessCallbacks)(void* device) = nullptr;
};

/// Loads from the configured path, else from the folder of the program, else by the system's search order,
/// else from below gazeLibraryRoots(); null if not found.
LibraryHandle loadGazeLibrary(const std::u16string& configuredPath);

/// False when a required function is missing.
bool bindGazeLibrary(LibraryHandle library, GazeLibrary& functions);

/// Appends the full path of every `name` in `folder` and up to `depth` levels of folders below it, a folder's
/// own before those of its subfolders. Folders whose names begin with a full stop are skipped.
void findFileRecursive(const std::u16string& folder, const std::u16string& name, int depth,
                       std::vector<std::u16string>& found);

} // namespace rotika
