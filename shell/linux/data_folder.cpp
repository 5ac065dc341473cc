#include "shell/data_folder.h"

#include "common/linux/data_folder.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>

QString dataFolder() {
    return QDir::cleanPath(QFile::decodeName(decidedDataFolder().c_str()));
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
