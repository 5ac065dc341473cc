#pragma once

#include "shell/voice_install/file_placement.h"
#include "shell/voice_install/speech_package.h"

#include <QStringList>
#include <filesystem>
#include <vector>

/// The checked and unpacked content of archives, in a work folder of file_placement.h.
struct UnpackedVoice {
    std::filesystem::path work; // empty if nothing was unpacked
    std::vector<PlacedName> names;
    bool hasLibrary = false;
    QString modelFolder;   // empty if there is no model
    QString faultyArchive; // the cause of the failure, if it was one archive
};

/// What the thread that shows the progress reads meanwhile.
struct UnpackingProgress {
    ExtractionProgress extraction;
    std::atomic<std::uint64_t> totalBytes = 0; // 0: not known yet
};

/// Checks and unpacks archives of a library, a model or both. Returns the reason for the user why that
/// failed, and then leaves nothing behind; else empty. A cancellation counts as a failure. Any thread.
QString unpackVoice(const QStringList& archives, UnpackingProgress& progress, UnpackedVoice& unpacked);
