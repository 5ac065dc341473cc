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
#include <chrono>
#include <random>

using namespace rotika;

Received received;

static void noteKey(std::uint16_t virtualKey, KeyChange change) noexcept {
    if (change == KeyChange::repeated)
        received.repeatedKeys.insert(virtualKey);
    else
        received.keys.push_back(std::to_string(virtualKey) +
                                (change == KeyChange::pressed ? " pressed" : " released"));
}

WindowHandle ContractTest::mainWindow() {
    static const WindowHandle window = createMainWindow({
        .hotKeyPressed = [](int id) noexcept { received.hotKeys.push_back(id); },
        .messageArrived = [](auto...) noexcept {},
        .dataArrived = [](std::uintptr_t, const void*, std::size_t) noexcept { return true; },
        .statusText = [] { return std::u16string(u"Koło"); },
        .editorRequested = []() noexcept {},
        .destroyed = []() noexcept {},
        .monitorsChanged = []() noexcept { ++received.monitorChanges; },
        .sessionLockChanged = [](bool isLocked) noexcept { received.lockChanges.push_back(isLocked); },
    });
    return window;
}

WindowHandle ContractTest::wheelWindow() {
    static const WindowHandle window =
        createOverlayWindow(OverlayKind::wheel, 200, 100,
                            {.messageArrived = [](auto...) noexcept {},
                             .leftPressed = []() noexcept { ++received.windowPresses; },
                             .keyChanged = noteKey,
                             .focusLost = []() noexcept { ++received.focusLosses; },
                             .closeRequested = []() noexcept { ++received.closeRequests; }});
    return window;
}

WindowHandle ContractTest::gridWindow() {
    static const WindowHandle window = createOverlayWindow(OverlayKind::grid, 100, 100, {});
    return window;
}

void ContractTest::SetUp() {
    static const bool isOpen = openPlatform();
    ASSERT_TRUE(isOpen && mainWindow() != nullptr && wheelWindow() != nullptr && gridWindow() != nullptr);
    received = {};
}

void ContractTest::TearDown() {
    endPointerCapture();
    stopWindowTimer(wheelWindow());
    hideOverlayWindow(wheelWindow());
    hideOverlayWindow(gridWindow());
    for (const std::filesystem::path& folder : folders) {
        std::error_code failure;
        std::filesystem::remove_all(folder, failure);
        EXPECT_FALSE(failure) << "a file of the test is still held open";
    }
}

void ContractTest::showLayer(WindowHandle layer, std::vector<DrawCommand> commands) {
    placeOverlayWindow(layer, layerPlace);
    presentPicture(layer, {layerPlace.width(), layerPlace.height(), std::move(commands)});
    showOverlayWindow(layer);
}

void ContractTest::beginCapture(Point pinned) {
    const auto addMotion = [](std::int32_t dx, std::int32_t dy) noexcept {
        received.motion = {received.motion.x + dx, received.motion.y + dy};
    };
    setCursorPosition(pinned);
    beginPointerCapture(wheelWindow(), pinned,
                        {.isSwallowing = []() noexcept { return true; },
                         .leftPressed = []() noexcept { ++received.capturePresses; },
                         .moved = addMotion});
    startWindowTimer(wheelWindow(), 15, []() noexcept { renewPointerCapture(); });
}

std::u16string ContractTest::temporaryFolder() {
    const std::string name = "rotika-contract-" + std::to_string(std::random_device()());
    folders.push_back(std::filesystem::temp_directory_path() / name);
    std::filesystem::create_directory(folders.back());
    return folders.back().u16string();
}

Events Recorder::events() {
    poll();
    const std::lock_guard hold(guard);
    return recorded;
}

void Recorder::record(const std::string& what, bool isDown) {
    const std::lock_guard hold(guard);
    if (what == "key 90")
        hasReceivedZ = true;
    else
        recorded.push_back(what + (isDown ? " down" : " up"));
}

std::unique_ptr<Recorder> openRecorder(const Rect& place) {
    auto recorder = makeRecorder(place);
    // A window may report the focus before the window manager agrees: wait for a real key to arrive.
    EXPECT_TRUE(pumpUntil([&] {
        tapRealKey('Z');
        recorder->events();
        return recorder->hasReceivedZ && foregroundWindow() == recorder->window();
    })) << "real keys do not reach the recorder";
    return recorder;
}

bool pumpUntil(const std::function<bool()>& condition) {
    const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (!condition()) {
        if (std::chrono::steady_clock::now() > limit)
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

bool contains(const Events& events, const std::string& event) {
    return std::ranges::find(events, event) != events.end();
}

void tapInjected(std::uint16_t virtualKey, bool extended) {
    injectKey(virtualKey, extended, InputMotion::downUntilReleased);
    injectKey(virtualKey, extended, InputMotion::up);
}
