#pragma once

#include "shell/voice_install/archive_extractor.h"

#include <QHash>
#include <QString>
#include <cstdint>

/// An archive of the speech library or of a language model, as its maker offers it. Any thread.
struct SpeechPackage {
    enum class Kind { library, model };

    QString archive;
    Kind kind = Kind::library;
    /// Of a model: the name of its folder in the data folder.
    QString folder;
    /// Files to unpack: path in the archive, and name in the data folder or in `folder`.
    QHash<QString, QString> files;
    std::uint64_t bytes = 0; // unpacked
};

/// Lists the archive and finds out what it is. Returns the reason for the user if it is neither, else empty.
QString recognisePackage(const QString& archive, SpeechPackage& package);

/// Whether an unpacked library is one for this system and exports all names that the program uses. Returns
/// the reason for the user if it is not, else empty.
QString checkSpeechLibrary(const QString& path);

/// The name of an installed model's folder in config.json when it has none.
QString defaultModelFolder();
