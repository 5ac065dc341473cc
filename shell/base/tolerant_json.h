#pragma once

#include <QByteArray>

/// Converts what the engine's parser accepts but Qt's does not into strict JSON: numbers such as +5, 007 or
/// .5, raw control characters in strings, incomplete \u escapes, invalid UTF-8. Other errors remain.
QByteArray strictJson(const QByteArray& bytes);
