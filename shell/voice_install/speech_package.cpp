#include "shell/voice_install/speech_package.h"

#include "common/file_names.h"
#include "shell/voice_install/speech_library_file.h"

#include <QCoreApplication>
#include <QFile>
#include <QRegularExpression>
#include <algorithm>
#include <array>

namespace {

constexpr qint64 largestLibrary = qint64{512} << 20; // read into memory as a whole

constexpr std::array libraryFileNames{"libvosk.so", "libvosk.dll", "libvosk.dylib"};

/// What the library needs on Windows. Others from the archive must not come into the program's folder, where
/// the program and the system's own components would load them.
constexpr std::array companionFileNames{"libgcc_s_seh-1.dll", "libstdc++-6.dll", "libwinpthread-1.dll"};

/// The engine can do without two of them, at the price of wrong phrases that nobody is told of.
constexpr std::array usedNames{
    "vosk_set_log_level",      "vosk_model_new",          "vosk_model_free",
    "vosk_recognizer_new_grm", "vosk_recognizer_set_grm", "vosk_recognizer_accept_waveform",
    "vosk_recognizer_result",  "vosk_recognizer_free",    "vosk_model_find_word"};

constexpr char modelFile[] = "am/final.mdl";

QString text(const char* words) {
    return QCoreApplication::translate("SpeechPackage", words);
}

QString nameOf(const QString& path) {
    return path.section('/', -1);
}

/// With a slash at the end, or empty.
QString folderOf(const QString& path) {
    return path.left(path.lastIndexOf('/') + 1);
}

bool isCompanion(const QString& name) {
    return std::ranges::any_of(companionFileNames, [&](auto known) {
        return name.compare(QLatin1String(known), Qt::CaseInsensitive) == 0;
    });
}

/// The library itself, and on Windows the libraries beside it that it needs; elsewhere the system has them.
QString takeLibrary(const QString& library, const QList<ArchiveFile>& files, SpeechPackage& package) {
    package.kind = SpeechPackage::Kind::library;
    const bool needsOthers = library.endsWith(QStringLiteral(".dll"));
    for (const ArchiveFile& file : files) {
        const bool isNeeded =
            needsOthers && folderOf(file.path) == folderOf(library) && isCompanion(nameOf(file.path));
        if (file.path != library && !isNeeded)
            continue;
        if (file.path == library && file.size > static_cast<std::uint64_t>(largestLibrary))
            return text("Biblioteka mowy jest za duża.");
        package.files.insert(file.path, nameOf(file.path));
        package.bytes += file.size;
    }
    return {};
}

/// A name of another kind might be a folder of the program, such as its icons.
QString modelFolderName(const QString& root) {
    const QString name = nameOf(root.chopped(root.isEmpty() ? 0 : 1));
    return name.startsWith("vosk-model") ? name : defaultModelFolder();
}

bool isOfAnotherLanguage(const QString& folder) {
    static const QRegularExpression language(QStringLiteral("^vosk-model-(?:small-)?([a-z]{2})-"));
    const QRegularExpressionMatch match = language.match(folder);
    return match.hasMatch() && match.captured(1) != QStringLiteral("pl");
}

/// What the recogniser cannot load a model without. Its graph is one file or two.
QString missingFile(const QHash<QString, QString>& files) {
    const auto names = files.values();
    for (const char* const name : {modelFile, "conf/mfcc.conf", "conf/model.conf"})
        if (!names.contains(QLatin1String(name)))
            return QLatin1String(name);
    const bool hasGraph =
        names.contains(QStringLiteral("graph/HCLG.fst")) ||
        (names.contains(QStringLiteral("graph/HCLr.fst")) && names.contains(QStringLiteral("graph/Gr.fst")));
    return hasGraph ? QString() : QStringLiteral("graph/HCLr.fst, graph/Gr.fst");
}

QString takeModel(const QString& root, const QList<ArchiveFile>& files, SpeechPackage& package) {
    package.kind = SpeechPackage::Kind::model;
    package.folder = modelFolderName(root);
    if (isOfAnotherLanguage(package.folder))
        return text("To model innego języka — potrzebny jest polski, na przykład %1.")
            .arg(defaultModelFolder());
    for (const ArchiveFile& file : files) {
        if (!file.path.startsWith(root))
            continue;
        package.files.insert(file.path, file.path.mid(root.size()));
        package.bytes += file.size;
    }
    const QString missing = missingFile(package.files);
    return missing.isEmpty() ? QString() : text("W modelu języka brakuje: %1.").arg(missing);
}

QString nothingKnown(const QList<ArchiveFile>& files) {
    for (const ArchiveFile& file : files)
        if (std::ranges::any_of(libraryFileNames, [&](auto name) { return nameOf(file.path) == name; }))
            return text("To biblioteka mowy dla innego systemu — potrzebna jest ta z plikiem %1.")
                .arg(speechLibraryFileName());
    for (const ArchiveFile& file : files)
        if (file.path.endsWith(QStringLiteral(".zip"), Qt::CaseInsensitive))
            return text("W archiwum jest następne archiwum, %1 — rozpakuj je i wskaż.")
                .arg(nameOf(file.path));
    return text("To nie jest biblioteka mowy (Vosk) ani model języka.");
}

} // namespace

QString defaultModelFolder() {
    return QString::fromUtf16(defaultSpeechModelName);
}

QString recognisePackage(const QString& archive, SpeechPackage& package) {
    package = {};
    package.archive = archive;
    QList<ArchiveFile> files;
    if (QString problem = listArchive(archive, files); !problem.isEmpty())
        return problem;
    QStringList libraries;
    QStringList models;
    for (const ArchiveFile& file : files) {
        if (nameOf(file.path) == speechLibraryFileName())
            libraries.append(file.path);
        if (('/' + file.path).endsWith(QStringLiteral("/am/final.mdl")))
            models.append(file.path.chopped(static_cast<qsizetype>(sizeof modelFile) - 1));
    }
    if (libraries.size() + models.size() > 1)
        return text("W archiwum jest kilka bibliotek mowy albo modeli — nie wiadomo, którą część wybrać.");
    if (!libraries.isEmpty())
        return takeLibrary(libraries.first(), files, package);
    return models.isEmpty() ? nothingKnown(files) : takeModel(models.first(), files, package);
}

QString checkSpeechLibrary(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return text("Nie można odczytać rozpakowanej biblioteki mowy.");
    const std::optional<QSet<QByteArray>> names = exportedNames(file.readAll());
    if (!names)
        return text("Plik %1 nie jest biblioteką dla tego systemu (64 bity, x86-64) albo jest uszkodzony.")
            .arg(speechLibraryFileName());
    QStringList missing;
    for (const char* const name : usedNames)
        if (!names->contains(name))
            missing.append(QLatin1String(name));
    if (missing.isEmpty())
        return {};
    return text("W bibliotece mowy brakuje funkcji: %1. Potrzebna jest nowsza wersja biblioteki.")
        .arg(missing.join(QStringLiteral(", ")));
}
