#pragma once

#include <QIcon>
#include <QString>

/// The icon in `file`, not tinted in a selected row.
QIcon fieldIcon(const QString& file);

/// The icon's name for display: the base name of its file. The files that come with the program have ASCII
/// names, for which the Polish spelling is returned.
QString iconNameOf(const QString& file);
