#include "gaze/gaze_thread.h"

#include "model/engine_state.h"
#include "model/status_codes.h"
#include "platform/clock.h"
#include "platform/main_window.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

namespace rotika {

namespace {

constexpr std::int32_t interactiveUse = 1;
constexpr std::int32_t timedOut = 6; // no new data, not an error
constexpr std::int32_t validPoint = 1;
constexpr std::uint32_t reconnectPauseMs = 500;

/// One run of the gaze thread. Owns the library's two handles.
class Tracker {
public:
    Tracker(const std::u16string& configuredPath, const std::atomic<bool>& stopRequest)
        : libraryPath(configuredPath), gazeStop(stopRequest) {}
    Tracker(const Tracker&) = delete;
    Tracker& operator=(const Tracker&) = delete;

    ~Tracker() {
        if (device != nullptr)
            library.deviceDestroy(device);
        if (api != nullptr)
            library.apiDestroy(api);
    }

    /// The status to report; gazeStatusActive on success.
    GazeStatusCode connect();
    /// Processes gaze points until the stop request.
    void processPoints();
    void setStatus(GazeStatusCode code) const;

private:
    const std::u16string& libraryPath;
    const std::atomic<bool>& gazeStop;
    GazeLibrary library;
    void* api = nullptr;
    void* device = nullptr;
};

/// An abandoned worker must not overwrite its successor's status.
void Tracker::setStatus(GazeStatusCode code) const {
    if (gazeStop)
        return;
    engineState.gazeStatus = code;
    repaintMainWindow(engineState.mainWindow);
}

GazeStatusCode Tracker::connect() {
    const LibraryHandle handle = loadGazeLibrary(libraryPath);
    if (handle == nullptr)
        return gazeStatusNoLibrary;
    if (!bindGazeLibrary(handle, library))
        return gazeStatusFailed;
    if (library.apiCreate(&api, nullptr, nullptr) != 0) {
        api = nullptr;
        return gazeStatusFailed;
    }
    GazeDeviceUrl url{};
    library.enumerateLocalDeviceUrls(api, firstDeviceUrl, &url);
    if (url[0] == 0)
        return gazeStatusNoDevice;
    if (library.deviceCreate(api, url.data(), interactiveUse, &device) != 0) {
        device = nullptr;
        return gazeStatusFailed;
    }
    if (library.gazePointSubscribe(device, onGazePoint, nullptr) != 0)
        return gazeStatusFailed;
    return gazeStatusActive;
}

void Tracker::processPoints() {
    while (!gazeStop) {
        const std::int32_t result = library.waitForCallbacks(1, &device);
        if (result == timedOut)
            continue;
        if (result == 0) {
            library.deviceProcessCallbacks(device);
            continue;
        }
        sleepMs(reconnectPauseMs);
        if (library.deviceReconnect != nullptr)
            library.deviceReconnect(device);
    }
    if (library.gazePointUnsubscribe != nullptr)
        library.gazePointUnsubscribe(device);
}

/// Ten-thousandths of the screen, truncated toward zero. Untrusted input: saturate.
std::int32_t tenThousandths(float normalised) {
    const float scaled = normalised * 10000.0F;
    constexpr float mostNegative = -2147483648.0F;
    constexpr float firstTooLarge = 2147483648.0F;
    if (std::isnan(scaled))
        return std::numeric_limits<std::int32_t>::min();
    if (scaled >= firstTooLarge)
        return std::numeric_limits<std::int32_t>::max();
    return static_cast<std::int32_t>(std::max(scaled, mostNegative));
}

} // namespace

void gazeThreadMain(const std::u16string& libraryPath, const std::atomic<bool>& gazeStop) noexcept {
    if (!gazeStop)
        engineState.gazeStatus = gazeStatusSearching; // shown with the next change
    Tracker tracker(libraryPath, gazeStop);
    const GazeStatusCode outcome = tracker.connect();
    tracker.setStatus(outcome);
    if (outcome == gazeStatusActive)
        tracker.processPoints();
}

void firstDeviceUrl(const char* url, void* buffer) noexcept {
    GazeDeviceUrl& kept = *static_cast<GazeDeviceUrl*>(buffer);
    if (kept[0] == 0 && url != nullptr)
        std::memcpy(kept.data(), url, std::min(std::strlen(url), kept.size() - 1));
}

void onGazePoint(const GazePoint* point, void*) noexcept {
    if (point->validity != validPoint)
        return;
    engineState.gazeX = tenThousandths(point->x);
    engineState.gazeY = tenThousandths(point->y);
    engineState.gazeSampleTick = tickCount();
}

} // namespace rotika
