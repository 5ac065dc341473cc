#include "harness/real_mouse.h"

#include "harness/waiting.h"

#include <X11/XKBlib.h>
#include <X11/Xlib.h>
#include <X11/extensions/XInput.h>
#include <X11/extensions/XTest.h>

#include <array>

namespace e2e {

namespace {

class SlaveMouse : public RealMouse {
public:
    SlaveMouse(const XConnection& connection, XDevice* opened) : display(connection.raw()), device(opened) {}

    void move(int dx, int dy) override {
        std::array<int, 2> delta{dx, dy};
        XTestFakeDeviceMotionEvent(display, device, True, 0, delta.data(), 2, CurrentTime);
        XSync(display, False);
    }
    void press(MouseButton button) override { set(button, True); }
    void release(MouseButton button) override { set(button, False); }

private:
    void set(MouseButton button, Bool down) {
        XTestFakeDeviceButtonEvent(display, device, static_cast<unsigned>(button), down, nullptr, 0,
                                   CurrentTime);
        XSync(display, False);
    }

    Display* display;
    XDevice* device; // closed with the connection
};

class TestMouse : public RealMouse {
public:
    explicit TestMouse(const XConnection& connection) : display(connection.raw()) {}

    void move(int dx, int dy) override {
        XTestFakeRelativeMotionEvent(display, dx, dy, CurrentTime);
        XSync(display, False);
    }
    void press(MouseButton button) override { set(button, True); }
    void release(MouseButton button) override { set(button, False); }

private:
    void set(MouseButton button, Bool down) {
        XTestFakeButtonEvent(display, static_cast<unsigned>(button), down, CurrentTime);
        XSync(display, False);
    }

    Display* display;
};

} // namespace

void RealMouse::click(MouseButton button) {
    press(button);
    release(button);
}

std::unique_ptr<RealMouse> openSlaveMouse(const XConnection& connection, const std::string& deviceName) {
    int count = 0;
    XDeviceInfo* devices = XListInputDevices(connection.raw(), &count);
    XDevice* opened = nullptr;
    for (int i = 0; i < count && opened == nullptr; ++i) {
        if (devices[i].name == deviceName)
            opened = XOpenDevice(connection.raw(), devices[i].id);
    }
    XFreeDeviceList(devices);
    if (opened == nullptr)
        throw ScenarioError("the X server has no device " + deviceName);
    return std::make_unique<SlaveMouse>(connection, opened);
}

std::unique_ptr<RealMouse> openTestMouse(const XConnection& connection) {
    return std::make_unique<TestMouse>(connection);
}

void setKey(const XConnection& connection, const std::string& keysymName, bool down) {
    XTestFakeKeyEvent(connection.raw(), connection.keycodeOf(keysymName), down ? True : False, CurrentTime);
    XSync(connection.raw(), False);
}

void tapKey(const XConnection& connection, const std::string& keysymName) {
    setKey(connection, keysymName, true);
    setKey(connection, keysymName, false);
}

void typeText(const XConnection& connection, const std::string& text) {
    for (const char sign : text) {
        const auto symbol = static_cast<KeySym>(static_cast<unsigned char>(sign));
        const char* name = XKeysymToString(symbol);
        if (name == nullptr)
            throw ScenarioError("no key writes " + std::string(1, sign));
        const auto code = static_cast<::KeyCode>(connection.keycodeOf(name));
        const bool isShifted = XkbKeycodeToKeysym(connection.raw(), code, 0, 0) != symbol;
        if (isShifted)
            setKey(connection, "Shift_L", true);
        tapKey(connection, name);
        if (isShifted)
            setKey(connection, "Shift_L", false);
    }
}

void setKeyRepeat(const XConnection& connection, unsigned delayMs, unsigned intervalMs) {
    XkbSetAutoRepeatRate(connection.raw(), XkbUseCoreKbd, delayMs, intervalMs);
    XSync(connection.raw(), False);
}

void placePointer(const XConnection& connection, ScreenPoint place) {
    XTestFakeMotionEvent(connection.raw(), 0, place.x, place.y, CurrentTime);
    XSync(connection.raw(), False);
}

} // namespace e2e
