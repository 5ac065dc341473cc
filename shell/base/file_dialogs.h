#pragma once

#include <QString>
#include <QStringList>

class QWidget;

/// The file that the user chose, empty if cancelled. `start`: initial folder or file. Main thread.
QString askFileToOpen(QWidget* parent, const QString& title, const QString& start, const QString& filter);

/// As above, for one or more files.
QStringList askFilesToOpen(QWidget* parent, const QString& title, const QString& start,
                           const QString& filter);

/// As the first, for writing. `suffix` is appended to a name without it; then, if such a file exists, the
/// user is asked whether to overwrite it.
QString askFileToSave(QWidget* parent, const QString& title, const QString& start, const QString& filter,
                      const QString& suffix);
