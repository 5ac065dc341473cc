// The person plays the slave devices that stand for the virtual server's own mouse and keyboard: plain XTest
// events come from a device that counts as injected.

#include "driver.h"
#include "other_process.h"

#include "platform/linux/x11.h"

#include <X11/extensions/XInput.h>
#include <glib.h>

#include <chrono>
#include <cstdlib>
#include <cstring>
#include <map>
#include <set>
#include <string>

namespace {

constexpr unsigned long now = 0;

Display* personsDisplay() {
    static Display* const display = XOpenDisplay(nullptr);
    return display;
}

XDevice* openDevice(const char* name) {
    int count = 0;
    XDeviceInfo* const devices = XListInputDevices(personsDisplay(), &count);
    XDevice* device = nullptr;
    for (int i = 0; i < count && device == nullptr; ++i)
        if (std::strcmp(devices[i].name, name) == 0)
            device = XOpenDevice(personsDisplay(), devices[i].id);
    XFreeDeviceList(devices);
    if (device == nullptr) {
        std::abort(); // no Xvfb
    }
    return device;
}

XDevice* mouse() {
    static XDevice* const device = openDevice("Xvfb mouse");
    return device;
}

XDevice* keyboard() {
    static XDevice* const device = openDevice("Xvfb keyboard");
    return device;
}

void playButton(unsigned xButton, bool down) {
    XTestFakeDeviceButtonEvent(personsDisplay(), mouse(), xButton, down ? 1 : 0, nullptr, 0, now);
    XSync(personsDisplay(), 0);
}

void playKey(std::uint16_t virtualKey, bool down) {
    constexpr std::uint16_t capsLock = 0x14;
    const KeySym letter = KeySym{XK_a} + virtualKey - 'A';
    const KeyCode code =
        XKeysymToKeycode(personsDisplay(), virtualKey == capsLock ? KeySym{XK_Caps_Lock} : letter);
    XTestFakeDeviceKeyEvent(personsDisplay(), keyboard(), code, down ? 1 : 0, nullptr, 0, now);
    XSync(personsDisplay(), 0);
}

unsigned xButtonOf(std::uint32_t button) {
    constexpr unsigned xButtons[] = {1, 3, 2};
    return xButtons[button];
}

// The recorder

std::string nameOfKey(KeySym symbol) {
    if (symbol >= XK_a && symbol <= XK_z)
        return std::to_string(symbol - XK_a + 'A');
    if (symbol >= XK_0 && symbol <= XK_9)
        return std::to_string(symbol - XK_0 + '0');
    return symbol == XK_Right ? "39" : "of keysym " + std::to_string(symbol);
}

void tellKey(XKeyEvent& event, bool down) {
    static std::set<unsigned> keysDown;
    if (down && !keysDown.insert(event.keycode).second) {
        return; // auto-repeat
    }
    if (!down)
        keysDown.erase(event.keycode);
    tellLine("key " + nameOfKey(XLookupKeysym(&event, 0)) + (down ? " down" : " up"));
}

void tellButton(unsigned xButton, bool down) {
    const std::map<unsigned, std::string> names{{1, "button 0"}, {2, "button 2"}, {3, "button 1"}};
    if (const auto named = names.find(xButton); named != names.end())
        tellLine(named->second + (down ? " down" : " up"));
    else if (down)
        tellLine("scroll");
}

void tellEvent(XEvent& event) {
    switch (event.type) {
    case KeyPress:
    case KeyRelease:
        tellKey(event.xkey, event.type == KeyPress);
        break;
    case ButtonPress:
    case ButtonRelease:
        tellButton(event.xbutton.button, event.type == ButtonPress);
        break;
    case FocusIn:
        tellLine("keyboard");
        break;
    default:
        break;
    }
}

/// Without a frame, so that the window lies exactly where it is wanted.
void askForNoFrame(Display* display, Window window) {
    const unsigned long hints[5] = {2, 0, 0, 0, 0}; // flags: decorations; decorations: none
    const Atom property = XInternAtom(display, "_MOTIF_WM_HINTS", 0);
    XChangeProperty(display, window, property, property, 32, PropModeReplace,
                    reinterpret_cast<const unsigned char*>(hints), 5);
}

} // namespace

bool pumpUntil(const std::function<bool()>& condition) {
    const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    const guint wake = g_timeout_add(
        5, [](gpointer) -> gboolean { return G_SOURCE_CONTINUE; }, nullptr);
    bool holds = condition();
    while (!holds && std::chrono::steady_clock::now() < limit) {
        g_main_context_iteration(nullptr, TRUE);
        while (g_main_context_iteration(nullptr, FALSE) != 0 && !condition()) {
        }
        holds = condition();
    }
    g_source_remove(wake);
    return holds;
}

void moveRealMouse(std::int32_t dx, std::int32_t dy) {
    int delta[2] = {dx, dy};
    XTestFakeDeviceMotionEvent(personsDisplay(), mouse(), 1, 0, delta, 2, now);
    XSync(personsDisplay(), 0);
}

void pressRealButton(std::uint32_t button) {
    playButton(xButtonOf(button), true);
}

void releaseRealButton(std::uint32_t button) {
    playButton(xButtonOf(button), false);
}

void scrollRealWheel() {
    playButton(4, true);
    playButton(4, false);
}

void pressRealKey(std::uint16_t virtualKey) {
    playKey(virtualKey, true);
}

void releaseRealKey(std::uint16_t virtualKey) {
    playKey(virtualKey, false);
}

void playRecorder(const Rect& place) {
    Display* const display = XOpenDisplay(nullptr);
    const int screen = DefaultScreen(display);
    const Window window = XCreateSimpleWindow(
        display, RootWindow(display, screen), place.left, place.top, static_cast<unsigned>(place.width()),
        static_cast<unsigned>(place.height()), 0, 0, WhitePixel(display, screen));
    askForNoFrame(display, window);
    XSizeHints hints{};
    hints.flags = USPosition | USSize;
    XSetWMNormalHints(display, window, &hints);
    XSelectInput(display, window,
                 KeyPressMask | KeyReleaseMask | ButtonPressMask | ButtonReleaseMask | FocusChangeMask);
    XkbSetDetectableAutoRepeat(display, 1, nullptr);
    XMapRaised(display, window);
    XSync(display, 0);
    tellLine("window " + std::to_string(window));
    while (true) {
        XEvent event;
        XNextEvent(display, &event);
        tellEvent(event);
    }
}
