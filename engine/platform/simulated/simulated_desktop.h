#pragma once

#include "base/geometry.h"
#include "base/picture.h"
#include "platform/elements.h"
#include "platform/main_window.h"
#include "platform/overlay_window.h"
#include "platform/pointer_capture.h"
#include "platform/tray.h"

#include "platform/simulated/broken_contract.h"
#include "platform/simulated/simulated_editor.h"
#include "platform/simulated/virtual_clock.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <initializer_list>
#include <list>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <thread>
#include <vector>

namespace rotika {

struct PictureImage {
    std::u16string path;
};

/// A library of functions that the test provides, by name.
struct SimulatedLibrary {
    std::map<std::string, void*> functions;
};

/// Thrown by a test's library function to simulate a fault, which runGuarded() survives.
struct SimulatedFault {};

struct PlatformWindow {
    std::string name;    // "main", "wheel", "grid", "editor", or the test's name of another program
    bool isOurs = false; // created by the engine
    bool exists = true;
    bool isShown = false;
    bool isClickThrough = false;
    Rect place;
    std::optional<Picture> picture;
    MessageHandler messageArrived = nullptr;
    OverlayWindowHandlers overlayHandlers{};
};

enum class JournalKind { input, target, window, picture, focus, cursor, capture, timer, hotKey, box, tray };

/// One action of the engine on the desktop, for example "key 65 down".
struct JournalEntry {
    std::uint64_t atMs = 0; // of the virtual clock
    JournalKind kind = JournalKind::input;
    std::string text;
};

/// How often the system reports one press of a real button during a capture.
enum class PressDelivery {
    onceAsRaw,  // X11
    hookAndRaw, // Windows
};

/// An in-memory desktop on a virtual clock: the state behind the platform's functions in tests. The test
/// simulates the user and other programs by the functions below; nothing happens by itself. All on the owner
/// thread, which is the one that created the desktop. A caller that violates the interface (wrong thread,
/// nested capture, handle of a destroyed window) aborts the process with a message.
class SimulatedDesktop {
public:
    SimulatedDesktop();

    // The machine
    bool hasDisplay = true;
    bool refusesThreads = false;                    // no thread can be started
    std::vector<Rect> monitors{{0, 0, 1920, 1080}}; // the first is primary
    Point cursor{960, 540};
    bool buttonsAreSwapped = false;
    std::set<std::uint16_t> keysTakenByOthers; // hot keys of other programs
    std::set<std::u16string> loadableImages;   // full paths of image files
    PressDelivery pressDelivery = PressDelivery::onceAsRaw;
    bool captureWasSilent = false; // the owner thread was blocked for longer than the guard's limit

    /// By path, or by bare name for libraries of the system.
    std::map<std::u16string, SimulatedLibrary> libraries;
    std::vector<std::u16string> libraryAttempts; // every attempt to load one, in order

    bool areElementSearchesPrepared = false; // whether prepareElementSearches() was called
    FoundElements elements;                  // the result of a search
    std::uint32_t elementSearchMs = 0;       // duration of a search
    std::vector<ElementScope> searches;      // all that were started, in order

    bool hasMicrophone = true;      // whether one can be opened
    bool microphoneDelivers = true; // false: an open one has been unplugged
    /// The recorded sound, one element per buffer; silence afterwards.
    std::deque<std::string> sound;
    int microphonesOpen = 0;
    int screenWakeUps = 0; // calls of wakeScreen()

    SimulatedEditor editor; // the engine's own function editor

    // Time and the owner's loop

    VirtualClock clock;

    /// Runs everything that is due up to and including that time: workers, then posted messages, then timers.
    void advanceTo(std::uint64_t tick);
    void advanceBy(std::uint64_t durationMs) { advanceTo(clock.now() + durationMs); }

    /// Handles posted messages, including newly posted ones, without advancing time.
    void pumpMessages();

    /// Runs due workers and messages, without advancing time and without timers.
    void settle();

    // The user

    /// Motion of a real mouse, in raw counts.
    void moveMouse(std::int32_t dx, std::int32_t dy);
    /// 0 left, 1 right, 2 middle, 3 and 4 the side buttons.
    void pressMouse(std::uint32_t button);
    /// Pressing a key that is down is an auto-repeat. Other programs' keys are not recorded.
    void pressKey(std::uint16_t virtualKey);
    void releaseKey(std::uint16_t virtualKey);
    bool overlayKeyIsDown() const { return physicalKeysDown.contains(overlayKey); }

    // Other programs

    WindowHandle addProgram(const std::string& name);
    void closeProgram(WindowHandle window);
    void focusProgram(WindowHandle window);
    /// Another process sends data to the main window; returns the window's result.
    bool sendData(std::uintptr_t kind, const void* bytes, std::size_t byteCount);
    void destroyMainWindow();
    /// Another program closes or destroys a window of the engine.
    void requestClose(const std::string& windowName);
    void destroyOverlay(const std::string& windowName);
    void changeMonitors(std::vector<Rect> now);
    void lockSession(bool isLocked);

    // State to check

    WindowHandle windowNamed(const std::string& name);
    WindowHandle topProgram() const; // topmost window of other programs
    WindowHandle foreground = nullptr;
    std::optional<MainWindowHandlers> mainHandlers;
    std::optional<Rect> pinnedAt; // the cursor's clip during a capture
    bool isCaptured() const { return capture.has_value(); }
    std::set<std::uint16_t> registeredKeys() const;
    std::vector<std::u16string> imageLoads; // every attempt, in order
    std::optional<std::u16string> trayTip;  // set while the tray icon exists

    std::vector<JournalEntry> journal;
    void clearJournal() { journal.clear(); }
    std::vector<std::string> journalOf(std::initializer_list<JournalKind> kinds) const;

    // Only for the platform's functions

    struct QueuedMessage {
        WindowHandle window = nullptr;
        std::function<void()> deliver;
    };
    struct HotKey {
        int id = 0;
        std::uint16_t virtualKey = 0;
    };
    struct Timer {
        std::uint32_t periodMs = 0;
        std::uint64_t nextAtMs = 0;
        void (*tick)() noexcept = nullptr;
    };

    void note(JournalKind kind, std::string text);
    void requireOwner(const char* function) const;
    PlatformWindow& addWindow(const std::string& name, const Rect& place);
    PlatformWindow& requireWindow(WindowHandle window, const char* function);
    void raise(WindowHandle window);
    void enqueue(WindowHandle window, std::function<void()> deliver);
    /// Delivers a press at the cursor that no capture swallows.
    void deliverPress(std::uint32_t button);

    mutable std::mutex guard; // journal and queue: workers may run concurrently
    std::list<PlatformWindow> windows;
    std::list<PictureImage> images;
    std::vector<WindowHandle> stack; // bottom to top
    std::map<WindowHandle, Timer> timers;
    std::map<int, HotKey> hotKeys;
    std::deque<QueuedMessage> queue;
    std::optional<PointerCaptureHandlers> capture;

private:
    bool isSwallowed() const { return capture && capture->isSwallowing(); }
    bool fireDueTimer();
    /// To the window with the focus.
    void deliverKey(std::uint16_t virtualKey, KeyChange change);

    std::thread::id ownerThread = std::this_thread::get_id();
    std::set<std::uint16_t> physicalKeysDown;
    std::uint16_t overlayKey = 0; // the last one that an overlay has received as a press or repeat
};

/// The current desktop.
SimulatedDesktop& simulatedDesktop();

/// Replaces the desktop by a new one, after running the old one's workers to their end.
void resetSimulatedDesktop();

} // namespace rotika
