#pragma once

#include <QIcon>
#include <QString>
#include <QStringList>

class QDir;

/// The icon in `file`, not tinted in a selected row.
QIcon fieldIcon(const QString& file);

/// The folders that the icons' paths in a wheel file are relative to, in the order of the search:
/// `wheelFolder`, where the file is, and for files of the data folder that of the program, since the icons
/// that came with an installed program are there only.
QStringList iconFolders(const QDir& wheelFolder);

/// Full path of the icon in the first of the folders that has it, or else in the first one.
QString iconFile(const QStringList& folders, const QString& icon);

/// The icon's name for display: the base name of its file. The files that come with the program have ASCII
/// names, for which the Polish spelling is returned.
QString iconNameOf(const QString& file);
