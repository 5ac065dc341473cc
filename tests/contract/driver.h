#pragma once

#include "platform/geometry_types.h"
#include "platform/window_handle.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

// What the contract tests need beside the seam, once per platform: the owner thread's loop, a person at the
// real mouse and keyboard, and other programs. Owner thread.

/// Runs the owner thread's loop until the condition holds, for at most ten seconds; whether it holds at the
/// end.
bool pumpUntil(const std::function<bool()>& condition);

/// Milliseconds by a clock of the test's own. Any thread.
std::uint64_t watchMs();

/// A window of another program, at `place`, with the keyboard; it writes down what it is told.
class Recorder {
public:
    Recorder() = default;
    Recorder(const Recorder&) = delete;
    Recorder& operator=(const Recorder&) = delete;
    /// Ends the program.
    virtual ~Recorder() = default;

    virtual WindowHandle window() const = 0;
    /// "button 0 down", "scroll", "key 65 up": in order, without motion, auto-repeat and the Z key.
    virtual std::vector<std::string> events() const = 0;
};
std::unique_ptr<Recorder> openRecorder(const Rect& place);

/// Another program holds the key as its hot key, for as long as the answer lives. Returns when it does.
std::shared_ptr<void> takeHotKeyElsewhere(std::uint16_t virtualKey);

// The person. Each returns when the system has the event; it need not have arrived.

void moveRealMouse(std::int32_t dx, std::int32_t dy);
void pressRealButton(std::uint32_t button); // 0 left, 1 right, 2 middle
void releaseRealButton(std::uint32_t button);
void scrollRealWheel();
/// Letters and Caps Lock.
void pressRealKey(std::uint16_t virtualKey);
void releaseRealKey(std::uint16_t virtualKey);
