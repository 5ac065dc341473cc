#pragma once

#include <QSize>

class QWidget;

/// How large a window may be so that it fits on the screen of `widget` with its frame.
QSize screenRoom(const QWidget& widget);
