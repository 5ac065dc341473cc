#include "shell/wheels/field_icons.h"

#include "shell/base/data_folder.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QHash>

QIcon fieldIcon(const QString& file) {
    QIcon icon(file);
    icon.addFile(file, {}, QIcon::Selected); // without it Qt tints the icon with the selection's colour
    return icon;
}

QStringList iconFolders(const QDir& wheelFolder) {
    QStringList folders{wheelFolder.path()};
    const QDir program(QCoreApplication::applicationDirPath());
    if (wheelFolder == QDir(dataFolder()) && wheelFolder != program)
        folders.append(program.path());
    return folders;
}

QString iconFile(const QStringList& folders, const QString& icon) {
    for (const QString& folder : folders) {
        const QString file = QDir(folder).filePath(icon);
        if (QFileInfo::exists(file))
            return file;
    }
    return QDir(folders.value(0)).filePath(icon);
}

QString iconNameOf(const QString& file) {
    static const QHash<QString, QString> polishNames{{"dzwiek", "dźwięk"},
                                                     {"nastepny", "następny"},
                                                     {"odtworz", "odtwórz"},
                                                     {"ponow", "ponów"},
                                                     {"usun", "usuń"}};
    const QString name = QFileInfo(file).baseName();
    return polishNames.value(name, name);
}
