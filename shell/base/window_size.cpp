#include "shell/base/window_size.h"

#include <QScreen>
#include <QWidget>

QSize maximumWindowSize(const QWidget& widget) {
    // An estimate, because the frame is unknown until the window is shown, plus a margin.
    constexpr QSize frame{40, 60};
    return widget.screen()->availableSize() - frame;
}
