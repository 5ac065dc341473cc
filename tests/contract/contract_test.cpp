#include "contract_test.h"

#include "platform/focus.h"
#include "platform/injection.h"
#include "platform/main_window.h"
#include "platform/overlay_window.h"
#include "platform/platform.h"
#include "platform/pointer.h"
#include "platform/pointer_capture.h"
#include "platform/timer.h"

#include <algorithm>
#include <ostream>
#include <random>
#include <system_error>
#include <thread>

Heard heard;

namespace {

const std::thread::id ownerThread = std::this_thread::get_id();

void noteThread() {
    heard.wasOnOwnerThread = heard.wasOnOwnerThread && std::this_thread::get_id() == ownerThread;
}

void count(int& events) {
    noteThread();
    ++events;
}

template <typename Entry>
void note(std::vector<Entry>& entries, Entry entry) {
    noteThread();
    entries.push_back(entry);
}

struct OurWindows {
    bool isOpen = openPlatform();
    WindowHandle main = createMainWindow({
        .hotKeyPressed = [](int id) noexcept { note(heard.hotKeys, id); },
        .messageArrived = [](auto... parts) noexcept { note(heard.byMain, HeardMessage(parts...)); },
        .dataArrived = [](std::uintptr_t, const void*, std::size_t) noexcept { return true; },
        .statusText = [] { return count(heard.statusPages), std::u16string(u"Koło"); },
        .editorRequested = []() noexcept { count(heard.editorRequests); },
        .destroyed = []() noexcept {},
        .monitorsChanged = []() noexcept { count(heard.monitorChanges); },
        .sessionLockChanged = [](bool isLocked) noexcept { note(heard.lockChanges, isLocked); },
    });
    WindowHandle wheel = createOverlayWindow(
        OverlayKind::wheel, 200, 100,
        {
            .messageArrived = [](auto... parts) noexcept { note(heard.byWheel, HeardMessage(parts...)); },
            .leftPressed = []() noexcept { count(heard.windowPresses); },
            .closeRequested = []() noexcept { count(heard.closeRequests); },
        });
    WindowHandle grid = createOverlayWindow(OverlayKind::grid, 100, 100, {});
};

const OurWindows& ourWindows() {
    static const OurWindows windows;
    return windows;
}

/// What a function of a wheel has under way, and a key that it leaves down on purpose.
[[noreturn]] void holdInput() {
    openPlatform();
    injectKey('A', false, InputMotion::downUntilReleased);
    injectKey(0x27, true, InputMotion::downUntilReleased);
    injectMouseButton(1, InputMotion::downUntilReleased);
    tapInjected('C');
    injectKey('B', false, InputMotion::downAndLeft);
    while (true)
        pumpOnce();
}

} // namespace

int main(int argc, char** argv) {
    if (argc == 2 && argv[1] == std::string("--hold-input"))
        holdInput();
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}

void ContractTest::SetUp() {
    const OurWindows& ours = ourWindows();
    ASSERT_TRUE(ours.isOpen && ours.main != nullptr && ours.wheel != nullptr && ours.grid != nullptr);
    heard = {};
}

void ContractTest::TearDown() {
    endPointerCapture();
    stopWindowTimer(wheelWindow());
    hideOverlayWindow(wheelWindow());
    hideOverlayWindow(gridWindow());
    EXPECT_TRUE(heard.wasOnOwnerThread);
    for (const std::filesystem::path& folder : folders) {
        std::error_code failure;
        std::filesystem::remove_all(folder, failure);
        EXPECT_FALSE(failure) << "a file of the test is still held open";
    }
}

WindowHandle ContractTest::mainWindow() {
    return ourWindows().main;
}

WindowHandle ContractTest::wheelWindow() {
    return ourWindows().wheel;
}

WindowHandle ContractTest::gridWindow() {
    return ourWindows().grid;
}

void ContractTest::showLayer(WindowHandle layer, std::vector<DrawCommand> commands) {
    placeOverlayWindow(layer, layerPlace);
    presentPicture(layer, {layerPlace.width(), layerPlace.height(), std::move(commands)});
    showOverlayWindow(layer);
}

void ContractTest::beginCapture(Point pinned) {
    const auto addMotion = [](std::int32_t dx, std::int32_t dy) noexcept {
        noteThread();
        heard.motion = {heard.motion.x + dx, heard.motion.y + dy};
    };
    setCursorPosition(pinned);
    beginPointerCapture(wheelWindow(), pinned,
                        {
                            .isSwallowing = []() noexcept { return true; },
                            .leftPressed = []() noexcept { count(heard.capturePresses); },
                            .moved = addMotion,
                        });
    startWindowTimer(wheelWindow(), 15, []() noexcept { renewPointerCapture(); });
}

std::u16string ContractTest::temporaryFolder() {
    std::random_device random;
    const std::string name = "rotika-contract-" + std::to_string(random()) + std::to_string(random());
    folders.push_back(std::filesystem::temp_directory_path() / name);
    std::filesystem::create_directory(folders.back());
    return folders.back().u16string();
}

std::vector<std::string> Recorder::events() {
    poll();
    const std::lock_guard hold(guard);
    return told;
}

bool Recorder::hears(const std::string& event) {
    return pumpUntil([&] { return contains(events(), event); });
}

void Recorder::tell(const std::string& what, bool isDown) {
    const std::lock_guard hold(guard);
    const bool isRepeat = isDown && !down.insert(what).second;
    if (!isDown)
        down.erase(what);
    if (what == "key 90")
        hasHeardZ = true;
    else if (!isRepeat)
        told.push_back(what + (isDown ? " down" : " up"));
}

std::unique_ptr<Recorder> openRecorder(const Rect& place) {
    auto recorder = makeRecorder(place);
    // A window believes to have the keyboard some time before the window manager agrees: a real key tells.
    EXPECT_TRUE(pumpUntil([&] {
        tapRealKey('Z');
        recorder->events();
        return recorder->hasHeardZ && foregroundWindow() == recorder->window();
    })) << "real keys do not reach the recorder";
    return recorder;
}

bool pumpUntil(const std::function<bool()>& condition) {
    const std::uint64_t limit = watchMs() + 10'000;
    while (!condition()) {
        if (watchMs() > limit)
            return false;
        pumpOnce();
    }
    return true;
}

void clickRealButton(std::uint32_t button) {
    playRealButton(button, true);
    playRealButton(button, false);
}

void tapRealKey(std::uint16_t virtualKey) {
    playRealKey(virtualKey, true);
    playRealKey(virtualKey, false);
}

void PrintTo(const Point& point, std::ostream* out) {
    *out << point.x << ", " << point.y;
}

void PrintTo(const Rect& rect, std::ostream* out) {
    *out << rect.left << ", " << rect.top << " to " << rect.right << ", " << rect.bottom;
}

void countTick() noexcept {
    count(heard.ticks);
}

bool contains(const std::vector<std::string>& events, const std::string& event) {
    return std::ranges::find(events, event) != events.end();
}

void tapInjected(std::uint16_t virtualKey, bool extended) {
    injectKey(virtualKey, extended, InputMotion::downUntilReleased);
    injectKey(virtualKey, extended, InputMotion::up);
}

void clickInjected(std::uint32_t button) {
    injectMouseButton(button, InputMotion::downUntilReleased);
    injectMouseButton(button, InputMotion::up);
}
