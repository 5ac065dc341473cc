#include "shell/voice_install/archive_extractor.h"

#include "shell/voice_install/archive_names.h"

#include <archive.h>
#include <archive_entry.h>

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <array>
#include <memory>

namespace {

/// An archive that unpacks to more than this many times its size is an attack: language models and libraries
/// stay below 10.
constexpr std::uint64_t highestRatio = 200;
constexpr std::uint64_t ratioFreeBytes = 1 << 20;
constexpr qsizetype longestShownName = 60;

QString text(const char* words) {
    return QCoreApplication::translate("ArchiveExtractor", words);
}

QString damaged() {
    return text("Archiwum jest uszkodzone albo niepełne — pobierz je jeszcze raz.");
}

/// An open archive file. libarchive reads it through the callbacks, since Qt opens any name on any system.
class Reader {
public:
    explicit Reader(const QString& path) : file(path) {}
    Reader(const Reader&) = delete;
    Reader& operator=(const Reader&) = delete;

    QString open();
    archive* get() const { return handle.get(); }

private:
    static la_ssize_t read(archive* from, void* self, const void** buffer) noexcept;
    static la_int64_t seek(archive* from, void* self, la_int64_t offset, int whence) noexcept;

    QFile file;
    std::array<char, 65536> block{};
    struct Closer {
        void operator()(archive* opened) const noexcept { archive_read_free(opened); }
    };
    std::unique_ptr<archive, Closer> handle; // freed before the file
};

QString Reader::open() {
    // Opening a pipe would block.
    if (!QFileInfo(file.fileName()).isFile() || !file.open(QIODevice::ReadOnly))
        return text("Nie można otworzyć tego pliku.");
    handle.reset(archive_read_new());
    archive* const opened = handle.get();
    // The other zip reader ignores the directory at the end, so it takes a truncated archive for a whole one.
    if (opened == nullptr || archive_read_support_format_zip_seekable(opened) != ARCHIVE_OK ||
        archive_read_set_callback_data(opened, this) != ARCHIVE_OK ||
        archive_read_set_read_callback(opened, read) != ARCHIVE_OK ||
        archive_read_set_seek_callback(opened, seek) != ARCHIVE_OK ||
        archive_read_open1(opened) != ARCHIVE_OK)
        return text("To nie jest kompletne archiwum zip — pobierz je jeszcze raz.");
    return {};
}

la_ssize_t Reader::read(archive* from, void* self, const void** buffer) noexcept {
    auto& reader = *static_cast<Reader*>(self);
    const qint64 count = reader.file.read(reader.block.data(), static_cast<qint64>(reader.block.size()));
    if (count < 0) {
        archive_set_error(from, -1, "read error");
        return ARCHIVE_FATAL;
    }
    *buffer = reader.block.data();
    return static_cast<la_ssize_t>(count);
}

la_int64_t Reader::seek(archive*, void* self, la_int64_t offset, int whence) noexcept {
    QFile& file = static_cast<Reader*>(self)->file;
    const la_int64_t base = whence == SEEK_SET ? 0 : whence == SEEK_CUR ? file.pos() : file.size();
    return file.seek(base + offset) ? file.pos() : ARCHIVE_FATAL;
}

/// Any warning of the library, such as a wrong checksum, makes the archive unusable.
enum class Step { entry, end, failed };

Step nextEntry(const Reader& reader, archive_entry*& entry) {
    const int result = archive_read_next_header(reader.get(), &entry);
    return result == ARCHIVE_OK ? Step::entry : result == ARCHIVE_EOF ? Step::end : Step::failed;
}

QString nameOf(archive_entry* entry) {
    const char* const name = archive_entry_pathname(entry);
    return name == nullptr ? QString() : QString::fromUtf8(name);
}

/// Checks one entry and adds it if it is a file.
QString addEntry(archive_entry* entry, ArchiveNames& names, QList<ArchiveFile>& files) {
    const QString name = nameOf(entry);
    const QString shown = name.left(longestShownName);
    const auto type = archive_entry_filetype(entry);
    if (archive_entry_is_encrypted(entry) != 0)
        return text("Archiwum jest zaszyfrowane hasłem.");
    if ((type != AE_IFREG && type != AE_IFDIR) || archive_entry_hardlink(entry) != nullptr)
        return text("Archiwum zawiera dowiązanie albo plik specjalny: %1").arg(shown);
    if (!names.add(name, type == AE_IFDIR))
        return text("Archiwum zawiera niedozwoloną nazwę pliku: %1").arg(shown);
    if (type == AE_IFDIR)
        return {};
    if (archive_entry_size_is_set(entry) == 0 || archive_entry_size(entry) < 0)
        return damaged();
    files.append({name, static_cast<std::uint64_t>(archive_entry_size(entry))});
    return {};
}

QString checkSizes(const QString& archive, const QList<ArchiveFile>& files) {
    std::uint64_t sum = 0;
    for (const ArchiveFile& file : files) {
        if (file.size > mostArchiveBytes || sum + file.size > mostArchiveBytes)
            return text("Archiwum po rozpakowaniu zajęłoby ponad 4 GB.");
        sum += file.size;
    }
    const auto packed = static_cast<std::uint64_t>(QFileInfo(archive).size());
    if (sum > ratioFreeBytes + packed * highestRatio)
        return text("Archiwum po rozpakowaniu byłoby podejrzanie duże.");
    return {};
}

QString extractFile(const Reader& reader, std::uint64_t size, const QString& target,
                    ExtractionProgress& progress) {
    const QString unwritable =
        text("Nie udało się zapisać plików — sprawdź, czy na dysku jest wolne miejsce.");
    QFile file(target);
    // Unbuffered, so that a full disk shows here and not at the close, which reports nothing.
    if (!file.open(QIODevice::WriteOnly | QIODevice::NewOnly | QIODevice::Unbuffered))
        return unwritable;
    std::uint64_t written = 0;
    for (;;) {
        const void* bytes = nullptr;
        std::size_t count = 0;
        la_int64_t offset = 0;
        const int result = archive_read_data_block(reader.get(), &bytes, &count, &offset);
        if (progress.isCancelled)
            return text("Przerwano.");
        if (result == ARCHIVE_EOF)
            return written == size ? QString() : damaged();
        if (result != ARCHIVE_OK || static_cast<std::uint64_t>(offset) != written || count > size - written)
            return damaged();
        const auto length = static_cast<qint64>(count);
        if (file.write(static_cast<const char*>(bytes), length) != length)
            return unwritable;
        written += count;
        progress.bytes += count;
    }
}

} // namespace

QString listArchive(const QString& archive, QList<ArchiveFile>& files) {
    Reader reader(archive);
    if (QString problem = reader.open(); !problem.isEmpty())
        return problem;
    ArchiveNames names;
    int count = 0;
    archive_entry* entry = nullptr;
    Step step = Step::entry;
    while ((step = nextEntry(reader, entry)) == Step::entry) {
        if (++count > mostArchiveEntries)
            return text("Archiwum zawiera ponad 10 000 plików.");
        if (QString problem = addEntry(entry, names, files); !problem.isEmpty())
            return problem;
    }
    if (step == Step::failed)
        return damaged();
    return checkSizes(archive, files);
}

QString extractFiles(const QString& archive, const QHash<QString, QString>& targets,
                     ExtractionProgress& progress) {
    Reader reader(archive);
    if (QString problem = reader.open(); !problem.isEmpty())
        return problem;
    qsizetype left = targets.size();
    archive_entry* entry = nullptr;
    Step step = Step::entry;
    while (left > 0 && (step = nextEntry(reader, entry)) == Step::entry) {
        const auto target = targets.constFind(nameOf(entry));
        if (target == targets.constEnd())
            continue;
        const auto size = static_cast<std::uint64_t>(std::max<la_int64_t>(archive_entry_size(entry), 0));
        if (QString problem = extractFile(reader, size, *target, progress); !problem.isEmpty())
            return problem;
        --left;
    }
    return left == 0 ? QString() : damaged();
}
