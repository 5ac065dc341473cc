#pragma once

#include <QString>
#include <QStringList>

class QKeyEvent;

/// The names, as in config.json, of all keys that may open the wheel: not mouse buttons, and not the keys
/// that only modify others.
QStringList toggleKeyNames();

/// The name in toggleKeyNames() of the pressed key, the same on every keyboard layout; empty if it has none.
QString toggleKeyName(const QKeyEvent& press);

/// The name in toggleKeyNames() of a key written in config.json; empty if there is none.
QString toggleKeyNameOf(const QString& written);

/// Where the keyboard itself tells, whatever the layout: a letter, a digit or F13 to F24; else empty.
QString nameByPosition(const QKeyEvent& press);
