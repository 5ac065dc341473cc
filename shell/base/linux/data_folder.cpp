#include "shell/base/data_folder.h"

#include "common/data_folder.h"

#include <QDir>
#include <QFile>

QString dataFolder() {
    return QDir::cleanPath(QFile::decodeName(dataFolderPath().c_str()));
}
