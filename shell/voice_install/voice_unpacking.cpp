#include "shell/voice_install/voice_unpacking.h"

#include "common/data_folder.h"
#include "shell/base/data_folder.h"
#include "shell/voice_install/speech_library_file.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QSet>
#include <QStorageInfo>

namespace {

constexpr std::uint64_t keptFreeBytes = 64 << 20;

QString text(const char* words) {
    return QCoreApplication::translate("VoiceUnpacking", words);
}

PlacedName placedName(const QString& name) {
    const QByteArray bytes = name.toUtf8();
    return {bytes.begin(), bytes.end()};
}

QString recogniseAll(const QStringList& archives, QList<SpeechPackage>& packages, UnpackedVoice& unpacked) {
    for (const QString& archive : archives) {
        SpeechPackage package;
        if (QString problem = recognisePackage(archive, package); !problem.isEmpty()) {
            unpacked.faultyArchive = archive;
            return problem;
        }
        for (const SpeechPackage& other : packages)
            if (other.kind == package.kind)
                return text(
                    "Wskazano dwie biblioteki mowy albo dwa modele języka. Wskaż po jednym archiwum.");
        packages.append(package);
    }
    return {};
}

QString checkFreeSpace(std::uint64_t needed) {
    const QStorageInfo disk(dataFolder());
    if (!disk.isValid() || disk.bytesAvailable() < 0 ||
        static_cast<std::uint64_t>(disk.bytesAvailable()) >= needed + keptFreeBytes)
        return {};
    return text("Na dysku jest za mało miejsca: potrzeba %1 MB.").arg((needed + keptFreeBytes) >> 20);
}

/// Unpacks one package into "new" of the work folder.
QString unpack(const SpeechPackage& package, const QDir& folder, ExtractionProgress& progress) {
    QHash<QString, QString> targets;
    QSet<QString> folders;
    const QString prefix = package.folder.isEmpty() ? QString() : package.folder + '/';
    for (auto file = package.files.begin(); file != package.files.end(); ++file) {
        const QString name = prefix + *file;
        targets.insert(file.key(), folder.filePath(name));
        folders.insert(QFileInfo(name).path());
    }
    for (const QString& each : folders)
        if (!folder.mkpath(each))
            return text("Nie można utworzyć folderów na rozpakowane pliki.");
    if (QString problem = extractFiles(package.archive, targets, progress); !problem.isEmpty())
        return problem;
    return package.kind == SpeechPackage::Kind::library
               ? checkSpeechLibrary(folder.filePath(speechLibraryFileName()))
               : QString();
}

/// Libraries that the speech library needs come before it.
void addNames(const SpeechPackage& package, UnpackedVoice& unpacked) {
    if (package.kind == SpeechPackage::Kind::model) {
        unpacked.modelFolder = package.folder;
        unpacked.names.push_back(placedName(package.folder));
        return;
    }
    unpacked.hasLibrary = true;
    for (const QString& name : package.files)
        if (name != speechLibraryFileName())
            unpacked.names.push_back(placedName(name));
    unpacked.names.push_back(placedName(speechLibraryFileName()));
}

QString unpackAll(const QList<SpeechPackage>& packages, UnpackingProgress& progress,
                  UnpackedVoice& unpacked) {
    unpacked.work = makeWorkFolder(dataFolderPath());
    if (unpacked.work.empty())
        return text("W folderze programu nie można zapisywać.");
    const std::u8string work = unpacked.work.u8string();
    const QDir folder(
        QString::fromUtf8(reinterpret_cast<const char*>(work.data()), static_cast<qsizetype>(work.size())) +
        QStringLiteral("/new"));
    for (const SpeechPackage& package : packages) {
        if (QString problem = unpack(package, folder, progress.extraction); !problem.isEmpty()) {
            unpacked.faultyArchive = package.archive;
            return problem;
        }
        addNames(package, unpacked);
    }
    return {};
}

} // namespace

QString unpackVoice(const QStringList& archives, UnpackingProgress& progress, UnpackedVoice& unpacked) {
    QList<SpeechPackage> packages;
    if (QString problem = recogniseAll(archives, packages, unpacked); !problem.isEmpty())
        return problem;
    std::uint64_t bytes = 0;
    for (const SpeechPackage& package : packages)
        bytes += package.bytes;
    progress.totalBytes = bytes;
    QString problem = checkFreeSpace(bytes);
    if (problem.isEmpty())
        problem = unpackAll(packages, progress, unpacked);
    if (problem.isEmpty() && progress.extraction.isCancelled)
        problem = text("Przerwano.");
    if (!problem.isEmpty() && !unpacked.work.empty())
        removeWorkFolder(unpacked.work);
    return problem;
}
