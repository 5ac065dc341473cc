#include "contract_test.h"

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

std::thread::id ownerThread;

struct OurWindows {
    WindowHandle main = nullptr;
    WindowHandle wheel = nullptr;
    WindowHandle grid = nullptr;
};

void noteThread() {
    if (std::this_thread::get_id() != ownerThread)
        heard.wasOnOwnerThread = false;
}

MainWindowHandlers mainHandlers() {
    return {
        .hotKeyPressed =
            [](int id) noexcept {
                noteThread();
                heard.hotKeys.push_back(id);
            },
        .messageArrived =
            [](std::uint32_t message, std::uintptr_t wParam, std::intptr_t lParam) noexcept {
                noteThread();
                heard.byMain.push_back({message, wParam, lParam});
            },
        .dataArrived = [](std::uintptr_t, const void*, std::size_t) noexcept { return true; },
        .statusText =
            [] {
                ++heard.statusPages;
                return std::u16string(u"Koło");
            },
        .editorRequested = []() noexcept { ++heard.editorRequests; },
        .destroyed = []() noexcept {},
        .monitorsChanged =
            []() noexcept {
                noteThread();
                ++heard.monitorChanges;
            },
        .sessionLockChanged =
            [](bool isLocked) noexcept {
                noteThread();
                heard.lockChanges.push_back(isLocked);
            },
    };
}

OverlayWindowHandlers wheelHandlers() {
    return {
        .messageArrived =
            [](std::uint32_t message, std::uintptr_t wParam, std::intptr_t lParam) noexcept {
                noteThread();
                heard.byWheel.push_back({message, wParam, lParam});
            },
        .leftPressed = []() noexcept { ++heard.windowPresses; },
        .closeRequested = []() noexcept { ++heard.closeRequests; },
    };
}

const OurWindows& ourWindows() {
    static const OurWindows windows = [] {
        ownerThread = std::this_thread::get_id();
        EXPECT_TRUE(openPlatform());
        OurWindows made;
        made.main = createMainWindow(mainHandlers());
        made.wheel = createOverlayWindow(OverlayKind::wheel, 200, 100, wheelHandlers());
        made.grid = createOverlayWindow(OverlayKind::grid, 100, 100, {});
        return made;
    }();
    return windows;
}

} // namespace

void ContractTest::SetUp() {
    ASSERT_NE(ourWindows().main, nullptr);
    ASSERT_NE(ourWindows().wheel, nullptr);
    ASSERT_NE(ourWindows().grid, nullptr);
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

void ContractTest::beginCapture(Point pinned) {
    setCursorPosition(pinned);
    beginPointerCapture(wheelWindow(), pinned,
                        {
                            .isSwallowing = []() noexcept { return true; },
                            .leftPressed =
                                []() noexcept {
                                    noteThread();
                                    ++heard.capturePresses;
                                },
                            .moved =
                                [](std::int32_t dx, std::int32_t dy) noexcept {
                                    noteThread();
                                    heard.motion.x += dx;
                                    heard.motion.y += dy;
                                },
                        });
    startWindowTimer(wheelWindow(), 15, []() noexcept { renewPointerCapture(); });
}

std::u16string ContractTest::temporaryFolder() {
    std::random_device random;
    const std::string name = "rotika-contract-" + std::to_string(random()) + std::to_string(random());
    const std::filesystem::path folder = std::filesystem::temp_directory_path() / name;
    std::filesystem::create_directory(folder);
    folders.push_back(folder);
    return folder.u16string();
}

void PrintTo(const Point& point, std::ostream* out) {
    *out << point.x << ", " << point.y;
}

void PrintTo(const Rect& rect, std::ostream* out) {
    *out << rect.left << ", " << rect.top << " to " << rect.right << ", " << rect.bottom;
}

Picture plainPicture(std::int32_t width, std::int32_t height, PictureColor color) {
    const PictureBox all{0, 0, static_cast<float>(width), static_cast<float>(height)};
    return {width, height, {FilledRectangle{all, color}}};
}

void countTick() noexcept {
    noteThread();
    ++heard.ticks;
}

bool contains(const std::vector<std::string>& events, const std::string& event) {
    return std::ranges::find(events, event) != events.end();
}
