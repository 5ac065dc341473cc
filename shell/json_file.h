#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QString>
#include <optional>

// Files on the first thread, by the road that the engine takes too.

/// Empty optional when it cannot be opened, is no regular file or is too long.
std::optional<QByteArray> readFile(const QString& path);

/// Replaces a file's content, whole or not at all: a full disk or a crash leaves the old one. False when the
/// file is as it was.
bool replaceFile(const QString& path, const QByteArray& bytes);

/// Writes what the file holds to a file beside it that is not there yet; its path, empty if that failed.
QString keepCopyOf(const QString& path, const QByteArray& bytes);

/// config.json of the data folder, also where only the engine's reader understands it; empty when there is
/// none or it holds no JSON object.
QJsonObject readConfigObject();

/// Rewrites config.json. What Qt's reader refuses there is kept in a file beside it first. A file that cannot
/// be read or written, or neither understood nor kept, is passed over without a word.
void writeConfigObject(const QJsonObject& object);
