#include "shell/data_folder.h"

#include <pwd.h>
#include <unistd.h>

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace {

/// Empty unless the variable holds an absolute path: the base directory rules say to ignore any other.
QString absoluteVariable(const char* name) {
    const QString value = QFile::decodeName(qgetenv(name));
    return QDir::isAbsolutePath(value) ? value : QString();
}

QString homeFolder() {
    const QString home = absoluteVariable("HOME");
    const passwd* entry = home.isEmpty() ? getpwuid(getuid()) : nullptr;
    return entry == nullptr ? home : QFile::decodeName(entry->pw_dir);
}

/// Qt's own answer differs from the engine's where a variable is missing or odd; the two must meet.
QString personsDataFolder() {
    const QString base = absoluteVariable("XDG_DATA_HOME");
    return QDir::cleanPath((base.isEmpty() ? homeFolder() + QStringLiteral("/.local/share") : base) +
                           QStringLiteral("/rotika"));
}

} // namespace

QString dataFolder() {
    QString beside = QCoreApplication::applicationDirPath();
    if (QFileInfo(beside).isWritable())
        return beside;
    const QString own = personsDataFolder();
    return QDir().mkpath(own) && QFileInfo(own).isWritable() ? own : beside;
}

void prepareDataFolder() {
    const QString folder = dataFolder();
    const QString beside = QCoreApplication::applicationDirPath();
    const QString icons = folder + QStringLiteral("/icons");
    const QFileInfo known(icons);
    // A link whose package has moved on is made anew; a folder of the person's own is left alone.
    if (folder == beside || known.exists())
        return;
    if (known.isSymLink())
        QFile::remove(icons);
    QFile::link(beside + QStringLiteral("/icons"), icons);
}
