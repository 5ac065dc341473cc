#pragma once

#include <QByteArray>

/// The same document in strict JSON, if it is one that the engine's reader understands although Qt's does
/// not: numbers such as +5, 007 or .5, raw control characters in strings, incomplete \u escapes, broken
/// UTF-8. Whatever else is wrong stays wrong.
QByteArray strictJson(const QByteArray& bytes);
