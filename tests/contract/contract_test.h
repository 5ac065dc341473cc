#pragma once

#include "base/geometry.h"
#include "base/picture.h"
#include "base/window_handle.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <vector>

using rotika::DrawCommand;
using rotika::Point;
using rotika::Rect;
using rotika::WindowHandle;

/// Calls of the platform's handlers since the test began.
struct Received {
    std::vector<int> hotKeys;
    int windowPresses = 0; // ordinary left presses on the wheel's window
    int capturePresses = 0;
    Point motion;                  // sum of the capture's raw motion
    int closeRequests = 0;         // of the wheel's window
    std::vector<std::string> keys; // "13 pressed": changes of keys of the wheel's window, without repeats
    std::set<int> repeatedKeys;
    int focusLosses = 0; // of the wheel's window
    int monitorChanges = 0;
    std::vector<bool> lockChanges;
};
extern Received received;

/// Runs the owner thread's loop until the condition holds, for at most ten seconds; false on timeout.
bool pumpUntil(const std::function<bool()>& condition);

using Events = std::vector<std::string>;
bool contains(const Events& events, const std::string& event);

/// A window of another program with the keyboard focus. Its destructor ends the program.
class Recorder {
public:
    virtual ~Recorder() = default;
    virtual WindowHandle window() const = 0;

    /// Events so far, in order, without motion and the Z key: "button 0 down", "key 65 up".
    Events events();
    /// False if the event does not arrive within the limit of pumpUntil.
    bool receives(const std::string& event) {
        return pumpUntil([&] { return contains(events(), event); });
    }
    bool hasReceivedZ = false; // real keys reach it

protected:
    virtual void poll() = 0;                           // records new events
    void record(const std::string& what, bool isDown); // any thread

private:
    std::mutex guard;
    Events recorded;
};
std::unique_ptr<Recorder> openRecorder(const Rect& place);

// Each platform's driver implements the owner thread's loop, another program, and a user at the real mouse
// and keyboard, whose functions return when the system has the event; it need not have been delivered.

/// Handles pending events, or waits a few milliseconds for one.
void pumpOnce();
std::unique_ptr<Recorder> makeRecorder(const Rect& place);
void moveRealMouse(std::int32_t dx, std::int32_t dy);
void playRealButton(std::uint32_t button, bool isDown);  // 0 left, 1 right, 2 middle, 3 the wheel
void playRealKey(std::uint16_t virtualKey, bool isDown); // letters, Control, Enter and Caps Lock

void clickRealButton(std::uint32_t button);
void tapRealKey(std::uint16_t virtualKey);
void tapInjected(std::uint16_t virtualKey, bool extended = false);

/// All tests share the same three windows, as the engine does.
class ContractTest : public testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;

    static WindowHandle mainWindow();
    static WindowHandle wheelWindow();
    static WindowHandle gridWindow();

    static constexpr Rect recorderPlace{100, 100, 500, 400};
    static constexpr Rect layerPlace{150, 150, 350, 250}; // over the recorder
    static constexpr Point overRecorder{300, 250};

    static void showLayer(WindowHandle layer, std::vector<DrawCommand> commands);
    /// Renews the capture as the open wheel does, until the wheel's timer is stopped.
    static void beginCapture(Point pinned);
    /// An empty folder, without a trailing separator, that is removed after the test.
    std::u16string temporaryFolder();

private:
    std::vector<std::filesystem::path> folders;
};
