#pragma once

#include <QIcon>
#include <QString>

/// A field's icon from its file, in its own colours in a selected row too.
QIcon fieldIcon(const QString& file);

/// The icon's name as a person reads it: the base name of its file, with Polish letters where the file is one
/// of the program's own, whose names are ASCII.
QString iconNameOf(const QString& file);
