#pragma once

#include <QSize>

class QWidget;

/// The largest size at which a window fits on the screen of `widget` with its frame. Main thread.
QSize maximumWindowSize(const QWidget& widget);
