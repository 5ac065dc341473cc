#include "shell/voice_install/archive_names.h"

#include <QRegularExpression>
#include <QStringList>

namespace {

constexpr qsizetype longestPath = 180; // Windows allows 260 with the folder of the program
constexpr qsizetype mostFolders = 12;

bool isAllowedPart(const QString& part) {
    // Printable ASCII without the characters that separate paths or are reserved on Windows. Windows drops a
    // dot or space at the end, which makes another name.
    static const QRegularExpression allowed(QStringLiteral(R"(\A[\x20-\x7e]*[\x21-\x2d\x2f-\x7e]\z)"));
    static const QRegularExpression reserved(QStringLiteral(R"([<>:"/\\|?*])"));
    static const QRegularExpression device(
        QStringLiteral(R"(\A(con|prn|aux|nul|conin\$|conout\$|com[0-9]|lpt[0-9]) *(\.|\z))"),
        QRegularExpression::CaseInsensitiveOption);
    return allowed.match(part).hasMatch() && !reserved.match(part).hasMatch() &&
           !device.match(part).hasMatch();
}

} // namespace

bool ArchiveNames::add(const QString& name, bool isFolder) {
    const QString path = isFolder && name.endsWith('/') ? name.chopped(1) : name;
    const QStringList parts = path.split('/');
    if (path.size() > longestPath || parts.size() > mostFolders)
        return false;
    for (const QString& part : parts)
        if (!isAllowedPart(part))
            return false;
    QString folder;
    for (const QString& part : isFolder ? parts : parts.first(parts.size() - 1)) {
        folder += (folder.isEmpty() ? QString() : QStringLiteral("/")) + part;
        if (!addFolder(folder))
            return false;
    }
    if (isFolder)
        return true;
    const QString key = path.toLower();
    if (files.contains(key) || folders.contains(key))
        return false;
    files.insert(key, path);
    return true;
}

bool ArchiveNames::addFolder(const QString& path) {
    const QString key = path.toLower();
    if (files.contains(key))
        return false;
    const auto known = folders.constFind(key);
    if (known != folders.constEnd())
        return *known == path;
    folders.insert(key, path);
    return true;
}
