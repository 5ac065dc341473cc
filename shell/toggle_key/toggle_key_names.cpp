#include "shell/toggle_key/toggle_key_names.h"

#include <QKeyEvent>
#include <algorithm>
#include <iterator>

namespace {

struct NamedKey {
    Qt::Key key;
    const char* name;
};

constexpr NamedKey namedKeys[] = {
    {Qt::Key_Space, "space"},
    {Qt::Key_Return, "enter"},
    {Qt::Key_Tab, "tab"},
    {Qt::Key_Escape, "esc"},
    {Qt::Key_Backspace, "backspace"},
    {Qt::Key_CapsLock, "capslock"},
    {Qt::Key_Insert, "insert"},
    {Qt::Key_Delete, "delete"},
    {Qt::Key_Home, "home"},
    {Qt::Key_End, "end"},
    {Qt::Key_PageUp, "pageup"},
    {Qt::Key_PageDown, "pagedown"},
    {Qt::Key_Up, "up"},
    {Qt::Key_Down, "down"},
    {Qt::Key_Left, "left"},
    {Qt::Key_Right, "right"},
    {Qt::Key_Print, "printscreen"},
    {Qt::Key_VolumeUp, "volumeup"},
    {Qt::Key_VolumeDown, "volumedown"},
    {Qt::Key_VolumeMute, "volumemute"},
    {Qt::Key_MediaTogglePlayPause, "playpause"},
    {Qt::Key_MediaNext, "nexttrack"},
    {Qt::Key_MediaPrevious, "prevtrack"},
};

constexpr std::pair<const char*, const char*> otherNames[] = {
    {"spacja", "space"}, {"escape", "esc"}, {"caps", "capslock"}, {"prtsc", "printscreen"}};

constexpr int functionKeyCount = 24;

} // namespace

QStringList toggleKeyNames() {
    QStringList names;
    for (int i = 1; i <= functionKeyCount; ++i)
        names.append(QStringLiteral("F%1").arg(i));
    for (const QChar character : QStringLiteral("abcdefghijklmnopqrstuvwxyz0123456789"))
        names.append(character);
    for (const NamedKey& row : namedKeys)
        names.append(QString::fromLatin1(row.name));
    return names;
}

QString toggleKeyName(const QKeyEvent& press) {
    if (QString name = nameByPosition(press); !name.isEmpty())
        return name;
    const int key = press.key();
    const bool isOnKeypad = press.modifiers().testFlag(Qt::KeypadModifier);
    if (key >= Qt::Key_F1 && key < Qt::Key_F1 + functionKeyCount)
        return QStringLiteral("F%1").arg(key - Qt::Key_F1 + 1);
    const auto* const row = std::find_if(std::begin(namedKeys), std::end(namedKeys),
                                         [key](const NamedKey& named) { return named.key == key; });
    return row != std::end(namedKeys) && !isOnKeypad ? QString::fromLatin1(row->name) : QString();
}

QString toggleKeyNameOf(const QString& written) {
    QString name = written.trimmed();
    for (const auto& [other, usual] : otherNames)
        if (name.compare(QLatin1String(other), Qt::CaseInsensitive) == 0)
            name = QString::fromLatin1(usual);
    for (const QString& known : toggleKeyNames())
        if (name.compare(known, Qt::CaseInsensitive) == 0)
            return known;
    return {};
}
