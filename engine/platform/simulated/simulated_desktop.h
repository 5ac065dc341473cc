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

#include <atomic>
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

/// A library of functions that the test itself provides, by name.
struct SimulatedLibrary {
    std::map<std::string, void*> functions;
};

/// Thrown inside a library's function of a test, it is the fault that the guard around such calls survives.
struct SimulatedFault {};

struct PlatformWindow {
    std::string name;    // "main", "wheel", "grid", or what the test called another program's window
    bool isOurs = false; // made by the engine
    bool isAlive = true;
    bool isShown = false;
    bool letsPointerThrough = false;
    Rect place;
    std::optional<Picture> picture;
    int paintCount = 0;
    MessageHandler messageArrived = nullptr;
    OverlayWindowHandlers overlayHandlers{};
};

enum class JournalKind { input, target, window, picture, focus, cursor, capture, timer, hotKey, box, tray };

/// One thing that the engine did to the desktop, in words such as "key 65 down".
struct JournalEntry {
    std::uint64_t atMs = 0; // of the virtual clock
    JournalKind kind = JournalKind::input;
    std::string text;
};

/// The systems differ in how often they tell of one press of a real button while the capture stands.
enum class PressDelivery {
    onceAsRaw,  // X11
    hookAndRaw, // Windows
};

/// An in-memory desktop on a virtual clock: what the seam's functions act on in tests. The test plays the
/// person and the other programs through the functions below; nothing moves by itself. All on the owner
/// thread, which is the one that made the desktop. A caller that breaks a promise of the seam (the wrong
/// thread, a nested capture, a dead handle) ends the process with a message.
class SimulatedDesktop {
public:
    SimulatedDesktop();

    // The machine
    std::uint64_t bootedBeforeMs = 1'000'000; // tickCount() at the virtual time 0
    bool hasDisplay = true;
    bool refusesThreads = false;                    // the system has none left
    std::vector<Rect> monitors{{0, 0, 1920, 1080}}; // the first one is primary
    Point cursor{960, 540};
    bool buttonsAreSwapped = false;
    std::set<std::uint16_t> keysTakenByOthers; // hot keys that cannot be had
    std::set<std::u16string> loadableImages;   // full paths that hold an image
    PressDelivery pressDelivery = PressDelivery::onceAsRaw;
    bool captureWasSilent = false; // the owner thread stood still for longer than the guard waits

    /// By path, or by bare name for what the system itself would find.
    std::map<std::u16string, SimulatedLibrary> libraries;
    std::vector<std::u16string> gazeRoots;       // what gazeLibraryRoots answers
    std::vector<std::u16string> libraryAttempts; // everything that was tried to be loaded, in order

    bool askedForElements = false;      // whether the programs were asked to publish theirs
    FoundElements elements;             // what a search finds
    std::uint32_t elementSearchMs = 0;  // how long it takes
    std::vector<ElementScope> searches; // all that were begun, in order

    bool hasMicrophone = true;      // whether one can be opened
    bool microphoneDelivers = true; // false: an open one has been unplugged
    /// What is heard, a buffer each; nothing but silence afterwards.
    std::deque<std::string> sound;
    int microphonesOpen = 0;
    int screenWakeUps = 0; // how often a screen saver was told that the user is active

    SimulatedEditor editor; // the engine's own function editor

    // Time and the owner's loop

    VirtualClock clock;

    /// Plays everything that falls due up to and including that moment: workers, then posted messages, then
    /// timers.
    void advanceTo(std::uint64_t tick);
    void advanceBy(std::uint64_t durationMs) { advanceTo(clock.now() + durationMs); }

    /// Handles what is posted now and what that posts, without moving time.
    void pumpMessages();

    /// Workers that are due and messages, without moving time or ticking.
    void settle();

    // The person

    /// Motion of a real mouse, in raw counts.
    void moveMouse(std::int32_t dx, std::int32_t dy);
    /// 0 left, 1 right, 2 middle, 3 and 4 the side buttons.
    void pressMouse(std::uint32_t button);
    void releaseMouse(std::uint32_t button);
    void turnMouseWheel();
    /// A keyboard's key; pressing one that is down is an auto-repeat.
    void pressKey(std::uint16_t virtualKey);
    void releaseKey(std::uint16_t virtualKey);

    // Other programs

    WindowHandle addProgram(const std::string& name);
    void closeProgram(WindowHandle window);
    void focusProgram(WindowHandle window) { foreground = window; }
    /// Another process sends data to the main window; its answer.
    bool sendData(std::uintptr_t kind, const void* bytes, std::size_t byteCount);
    void destroyMainWindow();
    /// Somebody closes or destroys a window of the engine's.
    void askToClose(const std::string& windowName);
    void destroyOverlay(const std::string& windowName);
    /// The monitors are now these.
    void changeMonitors(std::vector<Rect> now);
    void lockSession(bool isLocked);

    // What can be seen

    WindowHandle windowNamed(const std::string& name);
    WindowHandle topProgram() const; // of the other programs' windows
    WindowHandle foreground = nullptr;
    std::optional<MainWindowHandlers> mainHandlers;
    std::optional<Rect> pinnedAt; // the only place that the cursor can be
    bool isCaptured() const { return capture.has_value(); }
    std::set<std::uint16_t> registeredKeys() const;
    std::vector<std::string>
        seenByPrograms;                  // mouse events that reached them, as "left down", "injected left up"
    std::set<std::uint16_t> keysDown;    // pressed by injection and not yet released
    std::set<std::uint32_t> buttonsDown; // likewise, device buttons
    std::vector<std::u16string> imageLoads; // every attempt, in order
    std::optional<std::u16string> trayTip;  // set while the tray icon exists
    std::atomic<int> mainWindowRepaints = 0;

    std::vector<JournalEntry> journal;
    void clearJournal() { journal.clear(); }
    std::vector<std::string> journalOf(std::initializer_list<JournalKind> kinds) const;

    // For the functions of the seam alone

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
    /// A press that no capture holds back, at the cursor.
    void deliverPress(std::uint32_t button, bool isInjected);
    void deliverRelease(std::uint32_t button, bool isInjected);
    void endCapture();

    mutable std::mutex guard; // journal, queue and what injection changes: workers may run side by side
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

    std::thread::id ownerThread = std::this_thread::get_id();
    std::set<std::uint16_t> physicalKeysDown;
    std::set<std::uint32_t> buttonsProgramsSaw; // real buttons that programs believe to be down
    std::set<std::uint32_t> releasedWhileCaptured;
};

/// The desktop in force.
SimulatedDesktop& simulatedDesktop();

/// A new desktop in place of the old one, whose workers are played to their end first.
void resetSimulatedDesktop();

} // namespace rotika
