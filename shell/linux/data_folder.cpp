#include "shell/data_folder.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>

QString dataFolder() {
    const QString beside = QCoreApplication::applicationDirPath();
    if (QFileInfo(beside).isWritable())
        return beside;
    const QString own =
        QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation) + QStringLiteral("/rotika");
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
