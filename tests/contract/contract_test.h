#pragma once

#include "driver.h"
#include "platform/geometry_types.h"
#include "platform/messages.h"
#include "platform/picture.h"
#include "platform/window_handle.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <iosfwd>
#include <string>
#include <thread>
#include <vector>

struct HeardMessage {
    std::uint32_t message = 0;
    std::uintptr_t wParam = 0;
    std::intptr_t lParam = 0;

    bool operator==(const HeardMessage&) const = default;
};

/// What the platform has told us through the handlers since the test began.
struct Heard {
    std::vector<HeardMessage> byMain;
    std::vector<HeardMessage> byWheel;
    std::vector<int> hotKeys;
    int windowPresses = 0; // ordinary left presses on the wheel's window
    int capturePresses = 0;
    Point motion; // sum of the capture's raw motion
    int ticks = 0;
    int closeRequests = 0; // of the wheel's window
    int editorRequests = 0;
    int statusPages = 0;
    int monitorChanges = 0;
    std::vector<bool> lockChanges;
    bool wasOnOwnerThread = true; // all of it
};
extern Heard heard;

/// Every test works on the same three windows, as the engine does.
class ContractTest : public testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;

    static WindowHandle mainWindow();
    static WindowHandle wheelWindow();
    static WindowHandle gridWindow();

    /// At 100, 100, 400 by 300: all tests put their layers and clicks within.
    static constexpr Rect recorderPlace{100, 100, 500, 400};

    /// Renews the capture as the open wheel does, until the wheel's timer is stopped.
    static void beginCapture(Point pinned);

    /// An empty folder, without a trailing separator, that goes with the test.
    std::u16string temporaryFolder();

private:
    std::vector<std::filesystem::path> folders;
};

void PrintTo(const Point& point, std::ostream* out);
void PrintTo(const Rect& rect, std::ostream* out);

/// One opaque colour.
Picture plainPicture(std::int32_t width, std::int32_t height, PictureColor color);

/// A handler for startWindowTimer that counts in heard.ticks.
void countTick() noexcept;

bool contains(const std::vector<std::string>& events, const std::string& event);
