#include "shell/base/key_repeat.h"

#include <QGuiApplication>

// Last: its macros break Qt's headers.
// clang-format off
#include <X11/XKBlib.h>
// clang-format on

// Qt takes a release and a press of the same millisecond for a repeat: it misses repeats whose two events are
// not read together, and marks a key that is really pressed twice so fast, as programs do.
bool makeReleasesGenuine() {
    auto* x11 = qApp->nativeInterface<QNativeInterface::QX11Application>();
    return x11 != nullptr && XkbSetDetectableAutoRepeat(x11->display(), 1, nullptr) != 0;
}
