#pragma once

#include <QByteArray>
#include <QSet>
#include <QString>
#include <optional>

inline constexpr std::size_t longestExportedName = 255;

// What differs between the systems' forms of the speech library. Any thread.

/// Its file name on this system.
QString speechLibraryFileName();

/// The names that a library exports, read from its tables without loading it: loading runs its code. Null if
/// the bytes are no complete 64-bit library for this system. The bytes are not trusted: tables larger than a
/// linker makes them, and names too long to be of use, are not read.
std::optional<QSet<QByteArray>> exportedNames(const QByteArray& bytes);

/// Whether this process has loaded the library. The loader then goes on using it, whatever file replaces it.
bool isLibraryLoaded(const QString& path);
