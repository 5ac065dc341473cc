#include "shell/base/data_folder.h"

#include "common/data_folder.h"

#include <QDir>

QString dataFolder() {
    return QDir::fromNativeSeparators(QString::fromStdWString(dataFolderPath().native()));
}
