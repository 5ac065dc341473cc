#pragma once

#include "harness/x_connection.h"

#include <memory>

namespace e2e {

enum class MouseButton { left = 1, middle = 2, right = 3, side1 = 8, side2 = 9 };

/// The mouse on the desk. What counts as one differs: the server's own test device is a mouse like any other
/// to a program under Wine, while to an X11 program its events are injected.
class RealMouse {
public:
    virtual ~RealMouse() = default;
    virtual void move(int dx, int dy) = 0;
    virtual void press(MouseButton button) = 0;
    virtual void release(MouseButton button) = 0;
    void click(MouseButton button);
};

/// Plays the slave device of that name: hardware to every X11 program.
std::unique_ptr<RealMouse> openSlaveMouse(const XConnection& connection, const std::string& deviceName);
/// Plays the server's test device.
std::unique_ptr<RealMouse> openTestMouse(const XConnection& connection);

/// A key press and release by the server's test device: to all programs a key like any other.
void tapKey(const XConnection& connection, const std::string& keysymName);
void setKey(const XConnection& connection, const std::string& keysymName, bool down);
/// Taps the keys that write this on the server's keyboard. ASCII.
void typeText(const XConnection& connection, const std::string& text);
/// How soon and how often the server repeats a held key.
void setKeyRepeat(const XConnection& connection, unsigned delayMs, unsigned intervalMs);
/// Puts the real cursor somewhere, before anything is at stake.
void placePointer(const XConnection& connection, ScreenPoint place);

} // namespace e2e
