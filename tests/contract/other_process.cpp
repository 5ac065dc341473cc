#include "other_process.h"

#include "driver.h"
#include "platform/focus.h"
#include "platform/hot_key.h"
#include "platform/injection.h"
#include "platform/main_window.h"
#include "platform/platform.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <thread>

namespace {

/// Killed or not, whoever started us holds the other end of our standard input.
void endWithStarter() {
    std::thread([] {
        while (std::getchar() != EOF) {
        }
        std::_Exit(0);
    }).detach();
}

void takeHotKey(std::uint16_t virtualKey) {
    const WindowHandle window = createMainWindow({
        .hotKeyPressed = [](int) noexcept {},
        .messageArrived = [](std::uint32_t, std::uintptr_t, std::intptr_t) noexcept {},
        .dataArrived = [](std::uintptr_t, const void*, std::size_t) noexcept { return false; },
        .statusText = [] { return std::u16string(); },
        .editorRequested = []() noexcept {},
        .destroyed = []() noexcept {},
    });
    tellLine(registerHotKey(window, 1, virtualKey) ? "ready" : "refused");
}

/// A click and a timed hold under way, and a key that a function leaves down on purpose.
void holdInput() {
    injectKey(0x41, false, InputMotion::downUntilReleased);
    injectKey(0x27, true, InputMotion::downUntilReleased);
    injectMouseButton(1, InputMotion::downUntilReleased);
    injectKey(0x43, false, InputMotion::downUntilReleased);
    injectKey(0x43, false, InputMotion::up);
    injectKey(0x42, false, InputMotion::downAndLeft);
    tellLine("ready");
}

class ProcessRecorder : public Recorder {
public:
    explicit ProcessRecorder(const Rect& place)
        : process({"recorder", std::to_string(place.left), std::to_string(place.top),
                   std::to_string(place.right), std::to_string(place.bottom)}) {
        EXPECT_TRUE(process.tells("keyboard")) << "the recorder got no keyboard";
        EXPECT_TRUE(pumpUntil([this] { return window() != nullptr && foregroundWindow() == window(); }));
        waitForRealKey();
    }

    WindowHandle window() const override {
        const std::string intro = "window ";
        for (const std::string& line : process.lines()) {
            if (line.starts_with(intro))
                return reinterpret_cast<WindowHandle>(
                    static_cast<std::uintptr_t>(std::stoull(line.substr(intro.size()))));
        }
        return nullptr;
    }

    std::vector<std::string> events() const override {
        std::vector<std::string> lines = process.lines();
        std::erase_if(lines, [](const std::string& line) {
            return line.starts_with("window ") || line.starts_with("key 90 ") || line == "keyboard";
        });
        return lines;
    }

private:
    /// A window believes to have the keyboard some time before the window manager agrees: a real key tells.
    void waitForRealKey() {
        constexpr std::uint16_t keyZ = 0x5A;
        EXPECT_TRUE(pumpUntil([this] {
            pressRealKey(keyZ);
            releaseRealKey(keyZ);
            const std::vector<std::string> lines = process.lines();
            return std::ranges::find(lines, "key 90 up") != lines.end();
        })) << "real keys do not reach the recorder";
    }

    OtherProcess process;
};

} // namespace

bool OtherProcess::tells(const std::string& line) const {
    return pumpUntil([&] {
        const std::vector<std::string> told = lines();
        return std::ranges::find(told, line) != told.end();
    });
}

void tellLine(const std::string& line) {
    std::printf("%s\n", line.c_str());
    std::fflush(stdout);
}

int playRole(const std::vector<std::string>& role) {
    endWithStarter();
    const std::string& name = role.at(0);
    const auto number = [&](std::size_t i) { return std::stoi(role.at(i)); };
    if (name == "recorder")
        playRecorder({number(1), number(2), number(3), number(4)});
    if (!openPlatform())
        return 1;
    if (name == "hot-key")
        takeHotKey(static_cast<std::uint16_t>(number(1)));
    else
        holdInput();
    while (true)
        pumpUntil([] { return false; });
}

std::unique_ptr<Recorder> openRecorder(const Rect& place) {
    return std::make_unique<ProcessRecorder>(place);
}

std::shared_ptr<void> takeHotKeyElsewhere(std::uint16_t virtualKey) {
    const std::vector<std::string> role{"hot-key", std::to_string(virtualKey)};
    const auto process = std::make_shared<OtherProcess>(role);
    EXPECT_TRUE(process->tells("ready"));
    return process;
}

std::uint64_t watchMs() {
    const auto sinceBoot = std::chrono::steady_clock::now().time_since_epoch();
    return static_cast<std::uint64_t>(
        std::chrono::duration_cast<std::chrono::milliseconds>(sinceBoot).count());
}
