// Plays the mouse of a virtual X server as hardware: "real_mouse move 40 -10 click 1".
// Plain XTest events, which xdotool sends, come from the server's own test device and count as injected;
// these go through the slave device that stands for the mouse itself.

#include <X11/Xlib.h>
#include <X11/extensions/XInput.h>
#include <X11/extensions/XTest.h>

#include <cstdlib>
#include <cstring>
#include <iostream>
#include <string>
#include <vector>

namespace {

constexpr const char* kMouseName = "Xvfb mouse";

XDevice* openMouse(Display* display) {
    int count = 0;
    XDeviceInfo* devices = XListInputDevices(display, &count);
    XDevice* mouse = nullptr;
    for (int i = 0; i < count && mouse == nullptr; ++i) {
        if (std::strcmp(devices[i].name, kMouseName) == 0) {
            mouse = XOpenDevice(display, devices[i].id);
        }
    }
    XFreeDeviceList(devices);
    return mouse;
}

void press(Display* display, XDevice* mouse, unsigned button, bool down) {
    XTestFakeDeviceButtonEvent(display, mouse, button, down ? True : False, nullptr, 0, CurrentTime);
}

/** Plays the words from `at` on; false at the first that is no command or lacks its numbers. */
bool playNext(Display* display, XDevice* mouse, const std::vector<std::string>& words, std::size_t& at) {
    const std::string verb = words[at++];
    const auto number = [&] { return std::atoi(words[at++].c_str()); };
    if (verb == "move" && at + 2 <= words.size()) {
        int delta[2] = {number(), 0};
        delta[1] = number();
        return XTestFakeDeviceMotionEvent(display, mouse, True, 0, delta, 2, CurrentTime) != 0;
    }
    if (at >= words.size()) {
        return false;
    }
    const auto button = static_cast<unsigned>(number());
    if (verb == "down" || verb == "click") {
        press(display, mouse, button, true);
    }
    if (verb == "up" || verb == "click") {
        press(display, mouse, button, false);
    }
    return verb == "down" || verb == "up" || verb == "click";
}

} // namespace

int main(int argc, char** argv) {
    const std::vector<std::string> words(argv + 1, argv + argc);
    Display* display = XOpenDisplay(nullptr);
    if (display == nullptr) {
        std::cerr << "real_mouse: no X server\n";
        return 1;
    }
    XDevice* mouse = openMouse(display);
    if (mouse == nullptr) {
        std::cerr << "real_mouse: no device named " << kMouseName << "\n";
        return 1;
    }
    for (std::size_t at = 0; at < words.size();) {
        if (!playNext(display, mouse, words, at)) {
            std::cerr << "real_mouse: use move DX DY, down BUTTON, up BUTTON, click BUTTON\n";
            return 2;
        }
    }
    XSync(display, False);
    XCloseDisplay(display);
    return 0;
}
