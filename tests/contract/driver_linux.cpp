// The user's events are sent through the slave devices of Xvfb's own mouse and keyboard: plain XTest events
// come from a device that counts as injected. Another program is another connection to the X server.

#include "contract_test.h"

#include "platform/linux/x11.h"

#include <X11/extensions/XInput.h>
#include <glib.h>

#include <cstdlib>
#include <string_view>

using namespace rotika;

namespace {

constexpr unsigned xButtons[] = {1, 3, 2, 4};

Display* userDisplay() {
    static Display* const display = XOpenDisplay(nullptr);
    return display;
}

XDevice* device(std::string_view name) {
    int count = 0;
    const XOwned<XDeviceInfo> devices(XListInputDevices(userDisplay(), &count));
    for (int i = 0; i < count; ++i)
        if (devices.get()[i].name == name)
            return XOpenDevice(userDisplay(), devices.get()[i].id);
    std::abort(); // no Xvfb
}

XDevice* mouse() {
    static XDevice* const opened = device("Xvfb mouse");
    return opened;
}

class XRecorder : public Recorder {
public:
    explicit XRecorder(const Rect& place)
        : own(XCreateSimpleWindow(display, DefaultRootWindow(display), place.left, place.top,
                                  static_cast<unsigned>(place.width()), static_cast<unsigned>(place.height()),
                                  0, 0, WhitePixel(display, 0))) {
        const unsigned long noFrame[5] = {2}; // so that its position is exact
        const Atom hints = XInternAtom(display, "_MOTIF_WM_HINTS", 0);
        XChangeProperty(display, own, hints, hints, 32, PropModeReplace,
                        reinterpret_cast<const unsigned char*>(noFrame), 5);
        XSizeHints size{};
        size.flags = USPosition | USSize;
        XSetWMNormalHints(display, own, &size);
        XSelectInput(display, own, KeyPressMask | KeyReleaseMask | ButtonPressMask | ButtonReleaseMask);
        XMapRaised(display, own);
        XSync(display, 0);
    }
    ~XRecorder() override { XCloseDisplay(display); }
    WindowHandle window() const override { return handleOf(own); }

protected:
    void poll() override {
        while (XPending(display) > 0) { // keys are named by their capital letters
            XEvent event;
            XNextEvent(display, &event);
            if (event.type == KeyPress || event.type == KeyRelease)
                record("key " + std::to_string(XLookupKeysym(&event.xkey, 1)), event.type == KeyPress);
            for (std::size_t i = 0; i < std::size(xButtons); ++i)
                if ((event.type == ButtonPress || event.type == ButtonRelease) &&
                    event.xbutton.button == xButtons[i])
                    record("button " + std::to_string(i), event.type == ButtonPress);
        }
    }

private:
    Display* const display = XOpenDisplay(nullptr);
    const Window own;
};

} // namespace

void pumpOnce() {
    static const guint wake = g_timeout_add(
        5, [](gpointer) -> gboolean { return G_SOURCE_CONTINUE; }, nullptr);
    g_main_context_iteration(nullptr, wake != 0);
}

std::unique_ptr<Recorder> makeRecorder(const Rect& place) {
    return std::make_unique<XRecorder>(place);
}

void moveRealMouse(std::int32_t dx, std::int32_t dy) {
    int delta[] = {dx, dy};
    XTestFakeDeviceMotionEvent(userDisplay(), mouse(), 1, 0, delta, 2, CurrentTime);
    XSync(userDisplay(), 0);
}

void playRealButton(std::uint32_t button, bool isDown) {
    XTestFakeDeviceButtonEvent(userDisplay(), mouse(), xButtons[button], isDown ? 1 : 0, nullptr, 0,
                               CurrentTime);
    XSync(userDisplay(), 0);
}

void playRealKey(std::uint16_t virtualKey, bool isDown) {
    static XDevice* const keyboard = device("Xvfb keyboard");
    const KeySym symbol = virtualKey == 0x14   ? XK_Caps_Lock
                          : virtualKey == 0x0D ? XK_Return
                                               : KeySym{virtualKey}; // a letter is its capital
    XTestFakeDeviceKeyEvent(userDisplay(), keyboard, XKeysymToKeycode(userDisplay(), symbol), isDown ? 1 : 0,
                            nullptr, 0, CurrentTime);
    XSync(userDisplay(), 0);
}
