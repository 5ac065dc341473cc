#include "shell/toggle_key/toggle_key_names.h"

#include <QKeyEvent>

/// The virtual keys of letters and digits are their characters; F13 to F24 have keys of Qt's.
QString nameByPosition(const QKeyEvent& press) {
    const quint32 key = press.nativeVirtualKey();
    const bool isNamed = (key >= 'A' && key <= 'Z') || (key >= '0' && key <= '9');
    return isNamed ? QString(QChar(key)).toLower() : QString();
}
