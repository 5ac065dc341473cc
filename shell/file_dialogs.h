#pragma once

#include <QString>

class QWidget;

/// The file that the person chose; empty if none. `start` is a folder, or a file to begin with.
QString askFileToOpen(QWidget* parent, const QString& title, const QString& start, const QString& filter);

/// As above, for a file that may be overwritten: asks first if it exists. A name that does not end
/// in `suffix` gets it, and the question is about the name with it.
QString askFileToSave(QWidget* parent, const QString& title, const QString& start, const QString& filter,
                      const QString& suffix);
