#pragma once

#include <QHash>
#include <QString>

/// The names of an archive's entries, checked one after another. Strict, so that the same archive is safe on
/// every system: makers of speech software use plain ASCII names.
class ArchiveNames {
public:
    /// False if the name may not be used: absolute or with ".." or a drive, with characters or device names
    /// that are special on Windows, longer than a system allows, or the name of an earlier entry, also one
    /// that differs in case only. Folders may be repeated.
    bool add(const QString& name, bool isFolder);

private:
    bool addFolder(const QString& path);

    QHash<QString, QString> folders; // by the name in lower case
    QHash<QString, QString> files;
};
