#include "shell/screen_room.h"

#include <QScreen>
#include <QWidget>

QSize screenRoom(const QWidget& widget) {
    // The frame, which is not known before the window is shown, and a little of what is behind it.
    constexpr QSize frame{40, 60};
    return widget.screen()->availableSize() - frame;
}
