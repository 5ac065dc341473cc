#pragma once

#include <QColor>

class QString;
class QWidget;

/// Qt's colour dialog with a list of named colours in place of its small wells, which have no names for a
/// screen reader and hardly room for a finger. Returns an invalid colour if the user cancels. Main thread.
QColor askColor(QWidget* parent, const QString& title, const QColor& start);
