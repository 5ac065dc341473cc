#include "shell/base/key_repeat.h"

#include <QAbstractNativeEventFilter>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QSet>
#include <utility>

// Last: its macros break Qt's headers.
// clang-format off
#include <X11/XKBlib.h>
#include <xcb/xcb.h>
// clang-format on

// Qt takes a release and a press of the same millisecond for a repeat: it misses repeats whose two events are
// not read together, and marks a key that is really pressed twice so fast, as programs do. Here the server
// sends no releases between repeats. Qt delivers no release to a window that a modal dialog blocks, therefore
// the native events count.

namespace {

using Press = std::pair<quint32, quint64>; // keycode and time

constexpr quint64 longestDelivery = 10'000; // ms, from the native event to Qt's

class KeyRepeatWatch : public QAbstractNativeEventFilter {
public:
    explicit KeyRepeatWatch(Display* server) : display(server) {}

    bool nativeEventFilter(const QByteArray&, void* message, qintptr*) override {
        const auto& event = *static_cast<const xcb_key_press_event_t*>(message);
        const int type = event.response_type & 0x7F; // without the mark of sent events
        if (type == XCB_KEY_RELEASE)
            keysDown.remove(event.detail);
        else if (type == XCB_KEY_PRESS)
            press({event.detail, event.time});
        else if (type == XCB_FOCUS_IN)
            forgetReleasedKeys();
        return false;
    }

    void forgetHeldKeys() { keysDown.clear(); }
    bool isRepetition(const Press& pressed) const { return repetitions.contains(pressed); }

private:
    /// A release goes to nobody while the focus is on its way from a closing window to the next one.
    void forgetReleasedKeys() {
        char down[32] = {};
        if (!keysDown.isEmpty() && XQueryKeymap(display, down) != 0)
            keysDown.removeIf([&down](quint32 code) { return (down[code / 8] >> code % 8 & 1) == 0; });
    }

    void press(const Press& pressed) {
        if (keysDown.contains(pressed.first)) {
            repetitions.insert(pressed);
            lastRepetition = pressed.second;
            return;
        }
        keysDown.insert(pressed.first);
        if (pressed.second - lastRepetition > longestDelivery)
            repetitions.clear();
    }

    Display* display; // Qt's
    QSet<quint32> keysDown;
    QSet<Press> repetitions;
    quint64 lastRepetition = 0;
};

KeyRepeatWatch* watch = nullptr; // null without X11, where Qt's mark is right

} // namespace

void watchKeyRepeats() {
    // Other platforms of Qt have an X11 interface too, some without a display.
    auto* x11 = qApp->nativeInterface<QNativeInterface::QX11Application>();
    if (watch != nullptr || x11 == nullptr || QGuiApplication::platformName() != "xcb" ||
        XkbSetDetectableAutoRepeat(x11->display(), 1, nullptr) == 0)
        return;
    static KeyRepeatWatch instance(x11->display());
    watch = &instance;
    qApp->installNativeEventFilter(watch);
}

void forgetHeldKeys() {
    if (watch != nullptr)
        watch->forgetHeldKeys();
}

bool isRepetition(const QKeyEvent& press) {
    return watch == nullptr ? press.isAutoRepeat()
                            : watch->isRepetition({press.nativeScanCode(), press.timestamp()});
}
