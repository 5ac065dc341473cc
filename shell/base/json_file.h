#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QString>
#include <optional>

// Reading and writing with the same functions as the engine. Any thread, except for config.json: main thread.

/// Empty if the file cannot be opened, is not a regular file or is too large.
std::optional<QByteArray> readFile(const QString& path);

/// Replaces the content of a file atomically: a full disk or a crash leaves the old content. False if the
/// file is unchanged.
bool replaceFile(const QString& path, const QByteArray& bytes);

/// A free name beside `path` for a backup of it.
QString freeBackupPath(const QString& path);

/// Writes `bytes`, the content of `path`, to a new file beside it. Returns the new path, empty on failure.
QString saveBackupCopy(const QString& path, const QByteArray& bytes);

/// config.json of the data folder, parsed as tolerantly as by the engine. Empty if there is no file or no
/// JSON object in it.
QJsonObject readConfigObject();

/// Rewrites config.json. If Qt cannot parse the old file, it is backed up first; `backup` receives the path.
/// False, with the file unchanged, if it cannot be read or written, or can be neither parsed nor backed up.
bool writeConfigObject(const QJsonObject& object, QString* backup = nullptr);

/// Tells the user of such a backup.
QString configBackupText(const QString& backup);
