#include "shell/data_folder.h"

#include "common/data_folder.h"
#include "common/file_names.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace {

QString shellPath(const std::filesystem::path& folder) {
    return QDir::cleanPath(QFile::decodeName(folder.c_str()));
}

} // namespace

QString dataFolder() {
    return shellPath(dataFolderPath());
}

void prepareDataFolder() {
    const QString name = '/' + QString::fromUtf16(iconFolderName);
    const QString icons = dataFolder() + name;
    const QFileInfo known(icons);
    // A broken link, for instance after an update, is replaced; a folder of the user's own is not.
    if (dataFolderPath() == executableFolder() || known.exists())
        return;
    if (known.isSymLink())
        QFile::remove(icons);
    QFile::link(shellPath(executableFolder()) + name, icons);
}
