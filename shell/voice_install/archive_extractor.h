#pragma once

#include <QHash>
#include <QList>
#include <QString>
#include <atomic>
#include <cstdint>

// Reading zip archives that are not trusted. Any thread, also a worker.
//
// A result of type QString is the reason for the user why something failed; empty on success.

inline constexpr int mostArchiveEntries = 10'000;
inline constexpr std::uint64_t mostArchiveBytes = std::uint64_t{4} << 30; // unpacked

struct ArchiveFile {
    QString path; // relative, with slashes; fit for a file name on every system
    std::uint64_t size = 0;
};

/// What a thread that unpacks shares with the one that shows it.
struct ExtractionProgress {
    std::atomic<std::uint64_t> bytes = 0;
    std::atomic<bool> isCancelled = false;
};

/// The archive's files. Fails for a file that is no zip archive, is incomplete or encrypted, exceeds the
/// limits above, or has an entry that is neither file nor folder or whose name might lead out of the folder
/// or be another file on some system.
QString listArchive(const QString& archive, QList<ArchiveFile>& files);

/// Unpacks these files of a listed archive: the key is the path in the archive, the value the file to be
/// written, whose folder must exist and which must not. On a failure or a cancellation, files remain.
QString extractFiles(const QString& archive, const QHash<QString, QString>& targets,
                     ExtractionProgress& progress);
