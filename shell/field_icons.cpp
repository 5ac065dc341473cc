#include "shell/field_icons.h"

#include <QFileInfo>
#include <QHash>

QIcon fieldIcon(const QString& file) {
    QIcon icon(file);
    icon.addFile(file, {}, QIcon::Selected); // without it Qt tints the icon with the selection's colour
    return icon;
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
