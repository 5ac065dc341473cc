#include "shell/process/window_activation.h"

#include <QGuiApplication>
#include <QWidget>

// Last: its macros break Qt's headers.
// clang-format off
#include <X11/Xlib.h>
// clang-format on

void activateForUser(const QWidget& window) {
    constexpr long fromTaskbar = 2; // of the EWMH's source indications
    auto* x11 = qApp->nativeInterface<QNativeInterface::QX11Application>();
    if (x11 == nullptr)
        return;
    Display* const display = x11->display();
    XEvent event{};
    event.xclient.type = ClientMessage;
    event.xclient.window = window.winId();
    event.xclient.message_type = XInternAtom(display, "_NET_ACTIVE_WINDOW", 0);
    event.xclient.format = 32;
    event.xclient.data.l[0] = fromTaskbar;
    XSendEvent(display, DefaultRootWindow(display), 0, SubstructureRedirectMask | SubstructureNotifyMask,
               &event);
    XFlush(display);
}
