#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QString>

/// Replaces a file's content, whole or not at all: a full disk or a crash leaves the old one. False when the
/// file is as it was. First thread.
bool replaceFile(const QString& path, const QByteArray& bytes);

/// config.json of the data folder; empty when there is none or it holds no JSON object.
QJsonObject readConfigObject();

/// Rewrites config.json. A file that cannot be written is passed over without a word.
void writeConfigObject(const QJsonObject& object);
