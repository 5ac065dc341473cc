#pragma once

#include "base/geometry.h"
#include "base/picture.h"
#include "base/relaxed.h"
#include "base/stop_request.h"
#include "base/window_handle.h"
#include "model/phrase_entry.h"
#include "model/wheel_records.h"

#include <atomic>
#include <cstdint>
#include <future>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace rotika {

struct IconCacheEntry {
    std::u16string path;                 // as written in the file
    const PictureImage* image = nullptr; // null: not read yet, or loading failed, which is not retried
};

/// Process-wide state. Everything belongs to the owner thread, except the atomics and what phraseLock guards.
/// Never destroyed, since detached threads may run until the process ends.
struct EngineState {
    // The wheels
    std::vector<Wheel> wheels;
    std::int32_t activeWheel = 0; // kept across show and hide, reset to 0 by every load or activation
    std::vector<WheelAction> voiceActions;

    // The open wheel
    Relaxed<bool> wheelVisible = false; // the one flag that all input handling checks
    std::int32_t hoveredField = -1;
    std::int32_t hoveredArrow = -1; // 0 left, 1 right
    bool restorePending = false;    // cursor and focus are still to be restored
    bool gazeDriven = false;        // the last motion came from the gaze, so dwell counts
    Point savedCursor;
    WindowHandle savedForeground = nullptr;
    std::int32_t cursorX = 0; // virtual cursor, layer pixels
    std::int32_t cursorY = 0;
    std::int32_t pendingDx = 0; // raw motion not yet applied
    std::int32_t pendingDy = 0;
    std::uint64_t lastMouseMoveTick = 0;
    std::uint16_t heldKey = 0; // of the open wheel: the last one pressed on it, until its release
    bool holdsFocus = false;   // the closed wheel keeps the focus until a key is up
    std::uint64_t focusHoldStart = 0;
    std::vector<std::pair<WheelAction, std::uint32_t>> functionsAfterHold; // with their initial delays
    std::int32_t dwellTarget = -1;                                         // field, or 100 plus arrow
    std::uint64_t dwellStartTick = 0;
    float dwellProgress = 0; // 0 to 1

    // Gaze
    std::atomic<std::int32_t> gazeStatus = 0;
    std::atomic<std::int32_t> gazeX = -1; // ten-thousandths of the primary screen
    std::atomic<std::int32_t> gazeY = -1;
    std::atomic<std::uint64_t> gazeSampleTick = 0;
    StopRequest gazeStop;
    std::future<void> gazeThread; // valid from start to stop, even if the thread has ended by itself

    // Voice
    std::atomic<std::int32_t> voiceStatus = 0;
    StopRequest voiceStop;
    std::future<void> voiceThread;                   // as gazeThread
    PhraseTable phraseTable;                         // guarded by phraseLock
    std::mutex phraseLock;                           // no other lock is taken while it is held
    std::atomic<std::uint32_t> phraseGeneration = 0; // incremented by each rebuild of the table

    // Grid and element labels, which share one window
    WindowHandle gridWindow = nullptr;
    bool gridVisible = false;
    bool elementsVisible = false;
    Rect gridRect;
    std::int32_t gridLevel = 1;
    std::vector<Rect> elementRects;
    Rect elementsOrigin;
    std::atomic<std::int32_t> elementScanBusy = 0;

    // Windows and lifecycle
    WindowHandle mainWindow = nullptr;
    WindowHandle wheelWindow = nullptr;
    std::vector<IconCacheEntry> iconCache; // never shrinks, also across reloads
    bool engineStarted = false;            // stays true after a stop
    bool isStopped = false;                // nothing opens or starts after a stop
    Relaxed<bool> sessionLocked = false;   // nothing opens, is pressed or starts while true
};

extern EngineState& engineState;

/// The wheel at activeWheel. `wheels` must not be empty.
const Wheel& activeWheelRecord();

/// Restores the state of a new process. Tests only.
void resetEngineForTest();

} // namespace rotika
