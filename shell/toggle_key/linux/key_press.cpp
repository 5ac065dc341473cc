#include "shell/toggle_key/toggle_key_names.h"

#include <QKeyEvent>

namespace {

struct Row {
    quint32 first; // X keycode
    const char* names;
};

// The codes of the X server's evdev keyboards. Digits have fixed places for the engine; letters only on
// layouts without Latin ones.
constexpr Row digits{10, "1234567890"};
constexpr Row letterRows[] = {{24, "qwertyuiop"}, {38, "asdfghjkl"}, {52, "zxcvbnm"}};
constexpr quint32 f13 = 191;
constexpr quint32 namedLater = 12; // F13 to F24, which no layout calls so

QString nameIn(const Row& row, quint32 code) {
    const QLatin1String names(row.names);
    return code >= row.first && code - row.first < static_cast<quint32>(names.size())
               ? QString(names[static_cast<qsizetype>(code - row.first)])
               : QString();
}

} // namespace

QString nameByPosition(const QKeyEvent& press) {
    const quint32 code = press.nativeScanCode();
    if (press.key() >= Qt::Key_A && press.key() <= Qt::Key_Z)
        return QString(QChar(press.key())).toLower();
    if (code >= f13 && code < f13 + namedLater)
        return QStringLiteral("F%1").arg(code - f13 + 13);
    QString name = nameIn(digits, code);
    if (const QChar typed(press.key() < 0x10000 ? press.key() : 0);
        typed.isLetter() && typed.script() != QChar::Script_Latin)
        for (const Row& row : letterRows)
            name = name.isEmpty() ? nameIn(row, code) : name;
    return name;
}
