#include "shell/base/json_file.h"

#include "common/file_names.h"
#include "common/files.h"
#include "shell/base/data_folder.h"
#include "shell/base/tolerant_json.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>

namespace {

/// Through UTF-8: std::filesystem::path throws on UTF-16 with a lone surrogate.
std::filesystem::path nativePath(const QString& path) {
    const QByteArray bytes = path.toUtf8();
    return std::u8string(bytes.begin(), bytes.end());
}

QJsonObject parseTolerantly(const QByteArray& bytes) {
    return QJsonDocument::fromJson(strictJson(bytes)).object();
}

QString configPath() {
    return dataFolder() + '/' + QString::fromUtf16(configFileName);
}

} // namespace

std::optional<QByteArray> readFile(const QString& path) {
    const std::optional<std::string> bytes = readWholeFile(nativePath(path));
    return bytes ? std::optional(QByteArray::fromStdString(*bytes)) : std::nullopt;
}

bool replaceFile(const QString& path, const QByteArray& bytes) {
    return replaceWholeFile(nativePath(path), {bytes.constData(), static_cast<std::size_t>(bytes.size())});
}

QString freeBackupPath(const QString& path) {
    const QFileInfo file(path);
    const QString ending = file.suffix().isEmpty() ? QString() : '.' + file.suffix();
    for (int number = 1;; ++number) {
        const QString name =
            QStringLiteral("%1-kopia-%2").arg(file.completeBaseName(), QString::number(number));
        QString free = file.dir().filePath(name + ending);
        if (!QFileInfo::exists(free) && !QFileInfo(free).isSymLink())
            return free;
    }
}

QString saveBackupCopy(const QString& path, const QByteArray& bytes) {
    QString copy = freeBackupPath(path);
    if (!replaceFile(copy, bytes))
        return {};
    QFile::setPermissions(copy, QFileInfo(path).permissions());
    return copy;
}

QJsonObject readConfigObject() {
    const QByteArray bytes = readFile(configPath()).value_or(QByteArray());
    const QJsonDocument document = QJsonDocument::fromJson(bytes);
    return document.isNull() ? parseTolerantly(bytes) : document.object();
}

bool writeConfigObject(const QJsonObject& object, QString* backup) {
    const QString path = configPath();
    const std::optional<QByteArray> old = readFile(path);
    const bool holdsNothing = old ? old->trimmed().isEmpty() : !QFileInfo::exists(path);
    const bool isParsed = holdsNothing || (old && QJsonDocument::fromJson(*old).isObject());
    const QString copy = old && !isParsed ? saveBackupCopy(path, *old) : QString();
    if (backup != nullptr)
        *backup = copy;
    const bool mayReplace = isParsed || (old && (!copy.isEmpty() || !parseTolerantly(*old).isEmpty()));
    return mayReplace && replaceFile(path, QJsonDocument(object).toJson());
}

QString configBackupText(const QString& backup) {
    return QStringLiteral("W pliku config.json były błędy. Został zapisany od nowa, a jego poprzednia treść "
                          "jest w pliku %1.")
        .arg(QFileInfo(backup).fileName());
}
