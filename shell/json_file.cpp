#include "shell/json_file.h"

#include "shell/data_folder.h"

#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QSaveFile>

namespace {

QString configPath() {
    return dataFolder() + "/config.json";
}

} // namespace

bool replaceFile(const QString& path, const QByteArray& bytes) {
    // A rename would get past the protection of a file that may not be written.
    const QFileInfo existing(path);
    if (existing.exists() && !existing.isWritable())
        return false;
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return false;
    return file.write(bytes) == bytes.size() && file.commit();
}

QJsonObject readConfigObject() {
    QFile file(configPath());
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return QJsonDocument::fromJson(file.readAll()).object();
}

void writeConfigObject(const QJsonObject& object) {
    replaceFile(configPath(), QJsonDocument(object).toJson());
}
