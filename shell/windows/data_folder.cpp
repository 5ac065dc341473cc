#include "shell/data_folder.h"

#include <QCoreApplication>

QString dataFolder() {
    return QCoreApplication::applicationDirPath();
}

void prepareDataFolder() {}
