#include "shell/wheels/wheel_recovery.h"

#include "shell/base/data_folder.h"
#include "shell/base/json_file.h"

#include <QCryptographicHash>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>

namespace {

constexpr char member[] = "rotikaRecovery"; // names the wheel file and the content that was changed
constexpr int delayMs = 2000;
constexpr int flushLimitMs = 1200; // the process may have less than two seconds

QString hashOf(const QByteArray& bytes) {
    return QString::fromLatin1(QCryptographicHash::hash(bytes, QCryptographicHash::Sha256).toHex());
}

/// Where the recovery file of a wheel file may be, the best place first.
QStringList recoveryPaths(const QString& wheelFile) {
    const QFileInfo file(wheelFile);
    const QString name = file.completeBaseName() + QStringLiteral("-odzysk");
    const QString ending = file.suffix().isEmpty() ? QString() : '.' + file.suffix();
    const QString unique = hashOf(file.absoluteFilePath().toUtf8()).left(8);
    return {file.dir().filePath(name + ending),
            dataFolder() + '/' + name + '-' + unique + QStringLiteral(".json")};
}

/// Beside the wheel file only its name counts: the whole folder may have been moved.
bool isFor(const QString& wheelFile, const QString& recoveryPath, const QJsonObject& root) {
    const QFileInfo file(wheelFile);
    const QJsonObject origin = root[member].toObject();
    return QFileInfo(recoveryPath).dir() == file.dir() ? origin["name"].toString() == file.fileName()
                                                       : origin["path"].toString() == file.absoluteFilePath();
}

QJsonObject readObject(const QString& path) {
    return QJsonDocument::fromJson(readFile(path).value_or(QByteArray())).object();
}

bool isRecoveryFile(const QString& wheelFile, const QString& path) {
    return QFileInfo::exists(path) && isFor(wheelFile, path, readObject(path));
}

void removeRecoveryFiles(const QString& wheelFile) {
    for (const QString& path : recoveryPaths(wheelFile))
        if (isRecoveryFile(wheelFile, path))
            QFile::remove(path);
}

/// Gives the file the name of a backup. Returns the new path, empty on failure.
QString moveAside(const QString& path) {
    QString aside = freeBackupPath(path);
    return QFile::rename(path, aside) ? aside : QString();
}

/// A file of another origin that has this name is not lost.
bool makeRoom(const QString& wheelFile, const QString& path) {
    return !QFileInfo::exists(path) || isRecoveryFile(wheelFile, path) ||
           (QFileInfo(path).isFile() && !moveAside(path).isEmpty());
}

/// `isOwned`: the recovery files that exist are this run's, and not an earlier one's that nobody has asked
/// about.
void writeRecoveryFile(const WheelDocument& document, bool isOwned) {
    for (const QString& path : recoveryPaths(document.path))
        if (!isOwned && isRecoveryFile(document.path, path))
            moveAside(path);
    if (document.toJson() == document.lastKnownContent)
        return removeRecoveryFiles(document.path);
    QJsonObject root = document.root();
    root[member] = QJsonObject{{"name", QFileInfo(document.path).fileName()},
                               {"path", QFileInfo(document.path).absoluteFilePath()},
                               {"changedContent", hashOf(document.lastKnownContent)}};
    const QByteArray bytes = QJsonDocument(root).toJson(QJsonDocument::Compact);
    // As private as the wheel file; writable, or the next write would be refused.
    const QFile::Permissions permissions =
        QFile::permissions(document.path) | QFile::WriteOwner | QFile::ReadOwner;
    for (const QString& path : recoveryPaths(document.path)) {
        if (makeRoom(document.path, path) && replaceFile(path, bytes)) {
            QFile::setPermissions(path, permissions);
            return;
        }
    }
}

} // namespace

WheelRecovery::WheelRecovery(QObject* parent) : QObject(parent), writer(std::make_unique<QThreadPool>()) {
    writer->setMaxThreadCount(1);
    delay.setSingleShot(true);
    connect(&delay, &QTimer::timeout, this, &WheelRecovery::write);
}

/// A thread that a file system keeps waiting is abandoned: a pool's destructor would wait for it.
WheelRecovery::~WheelRecovery() {
    if (!writer->waitForDone(flushLimitMs))
        static_cast<void>(writer.release());
}

void WheelRecovery::keep(const WheelDocument& document) {
    if (isBlocked)
        return;
    pending = document;
    if (!delay.isActive())
        delay.start(delayMs);
}

/// The document's lists are shared and not copied, so this costs the main thread nothing.
void WheelRecovery::write() {
    if (!pending)
        return;
    const bool isOwned = std::exchange(ownedFor, pending->path) == pending->path;
    writer->start([document = *pending, isOwned]() noexcept { writeRecoveryFile(document, isOwned); });
    pending.reset();
}

void WheelRecovery::flush() {
    delay.stop();
    write();
    writer->waitForDone(flushLimitMs);
}

void WheelRecovery::finish() {
    flush();
    isBlocked = true;
}

void WheelRecovery::leave() {
    flush();
    ownedFor.clear();
    isBlocked = false;
}

void WheelRecovery::remove() {
    delay.stop();
    pending.reset();
    if (!ownedFor.isEmpty())
        writer->start([wheelFile = ownedFor]() noexcept { removeRecoveryFiles(wheelFile); });
    ownedFor.clear();
}

void WheelRecovery::adopt(const QString& wheelFile) {
    ownedFor = wheelFile;
    isBlocked = false;
}

QString WheelRecovery::setAside(const FoundRecovery& found) {
    QString aside = moveAside(found.path);
    isBlocked = aside.isEmpty();
    return aside;
}

std::optional<FoundRecovery> WheelRecovery::find(const WheelDocument& saved) {
    std::optional<FoundRecovery> newest;
    for (const QString& path : recoveryPaths(saved.path)) {
        const QJsonObject root = readObject(path);
        WheelDocument kept;
        if (!isFor(saved.path, path, root) || !kept.setRoot(root))
            continue;
        if (kept.wheels == saved.wheels && kept.multiWheel == saved.multiWheel) {
            QFile::remove(path);
            continue;
        }
        const QString changed = root[member].toObject()["changedContent"].toString();
        FoundRecovery each{path,
                           kept.multiWheel,
                           kept.wheels,
                           QFileInfo(path).lastModified(),
                           changed != hashOf(saved.lastKnownContent),
                           {}};
        if (newest && each.time > newest->time)
            std::swap(*newest, each);
        if (newest)
            newest->olderCopy = moveAside(each.path);
        else
            newest = each;
    }
    return newest;
}
