#include "gaze/gaze_library.h"

#include "platform/device_libraries.h"
#include "platform/files.h"
#include "platform/paths.h"
#include "workers/library_binding.h"

namespace rotika {

namespace {

constexpr int searchDepth = 3;

LibraryHandle loadFromVendorFolders() {
    std::vector<std::u16string> found;
    for (const std::u16string& root : gazeLibraryRoots())
        findFileRecursive(root, gazeLibraryName(), searchDepth, found);
    for (const std::u16string& path : found) {
        if (const LibraryHandle library = loadLibrary(path, LibrarySearch::systemDefault))
            return library;
    }
    return nullptr;
}

} // namespace

LibraryHandle loadGazeLibrary(const std::u16string& configuredPath) {
    const LibraryHandle library =
        loadOptionalLibrary(configuredPath, gazeLibraryName(), LibrarySearch::systemDefault);
    return library != nullptr ? library : loadFromVendorFolders();
}

bool bindGazeLibrary(LibraryHandle library, GazeLibrary& functions) {
    bindFunction(library, "tobii_device_reconnect", functions.deviceReconnect);
    bindFunction(library, "tobii_gaze_point_unsubscribe", functions.gazePointUnsubscribe);
    return bindFunction(library, "tobii_api_create", functions.apiCreate) &&
           bindFunction(library, "tobii_api_destroy", functions.apiDestroy) &&
           bindFunction(library, "tobii_enumerate_local_device_urls", functions.enumerateLocalDeviceUrls) &&
           bindFunction(library, "tobii_device_create", functions.deviceCreate) &&
           bindFunction(library, "tobii_device_destroy", functions.deviceDestroy) &&
           bindFunction(library, "tobii_gaze_point_subscribe", functions.gazePointSubscribe) &&
           bindFunction(library, "tobii_wait_for_callbacks", functions.waitForCallbacks) &&
           bindFunction(library, "tobii_device_process_callbacks", functions.deviceProcessCallbacks);
}

void findFileRecursive(const std::u16string& folder, const std::u16string& name, int depth,
                       std::vector<std::u16string>& found) {
    const std::u16string path = joinPath(folder, name);
    if (pathExists(path))
        found.push_back(path);
    if (depth <= 0)
        return;
    for (const std::u16string& subfolder : foldersIn(folder)) {
        if (!subfolder.starts_with(u'.'))
            findFileRecursive(joinPath(folder, subfolder), name, depth - 1, found);
    }
}

} // namespace rotika
