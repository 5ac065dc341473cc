#include "shell/voice_install/speech_library_file.h"

#include "shell/voice_install/byte_records.h"

#include <windows.h>

#include <QDir>

namespace {

constexpr std::uint64_t mostNames = 65'536;
constexpr std::uint64_t mostSections = 96; // the system's limit

/// The headers of an image and their offset.
struct Image {
    std::uint64_t start = 0;
    IMAGE_NT_HEADERS64 headers{};
};

std::optional<Image> imageOf(const QByteArray& bytes) {
    const auto dos = recordAt<IMAGE_DOS_HEADER>(bytes, 0);
    if (!dos || dos->e_magic != IMAGE_DOS_SIGNATURE || dos->e_lfanew < 0)
        return std::nullopt;
    Image image{static_cast<std::uint64_t>(dos->e_lfanew), {}};
    const auto headers = recordAt<IMAGE_NT_HEADERS64>(bytes, image.start);
    if (!headers || headers->Signature != IMAGE_NT_SIGNATURE ||
        headers->FileHeader.Machine != IMAGE_FILE_MACHINE_AMD64 ||
        headers->FileHeader.NumberOfSections > mostSections ||
        (headers->FileHeader.Characteristics & IMAGE_FILE_DLL) == 0 ||
        headers->OptionalHeader.Magic != IMAGE_NT_OPTIONAL_HDR64_MAGIC)
        return std::nullopt;
    image.headers = *headers;
    return image;
}

std::optional<IMAGE_SECTION_HEADER> sectionAt(const QByteArray& bytes, const Image& image,
                                              std::uint64_t index) {
    const std::uint64_t first = image.start + offsetof(IMAGE_NT_HEADERS64, OptionalHeader) +
                                image.headers.FileHeader.SizeOfOptionalHeader;
    return recordAt<IMAGE_SECTION_HEADER>(bytes, first + index * sizeof(IMAGE_SECTION_HEADER));
}

bool hasAllSections(const QByteArray& bytes, const Image& image) {
    const auto size = static_cast<std::uint64_t>(bytes.size());
    for (std::uint64_t i = 0; i < image.headers.FileHeader.NumberOfSections; ++i) {
        const auto section = sectionAt(bytes, image, i);
        if (!section ||
            std::uint64_t{section->PointerToRawData} + std::uint64_t{section->SizeOfRawData} > size)
            return false;
    }
    return true;
}

/// Where the bytes of a loaded address are in the file; null if they are in no section.
std::optional<std::uint64_t> offsetOf(const QByteArray& bytes, const Image& image, std::uint64_t address) {
    for (std::uint64_t i = 0; i < image.headers.FileHeader.NumberOfSections; ++i) {
        const auto section = sectionAt(bytes, image, i);
        if (section && address >= section->VirtualAddress &&
            address - section->VirtualAddress < section->SizeOfRawData)
            return address - section->VirtualAddress + section->PointerToRawData;
    }
    return std::nullopt;
}

} // namespace

QString speechLibraryFileName() {
    return QStringLiteral("libvosk.dll");
}

std::optional<QSet<QByteArray>> exportedNames(const QByteArray& bytes) {
    const std::optional<Image> image = imageOf(bytes);
    if (!image || !hasAllSections(bytes, *image))
        return std::nullopt;
    QSet<QByteArray> names;
    const auto& directory = image->headers.OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_EXPORT];
    const auto table = offsetOf(bytes, *image, directory.VirtualAddress);
    const auto exported = table ? recordAt<IMAGE_EXPORT_DIRECTORY>(bytes, *table) : std::nullopt;
    const auto list = exported ? offsetOf(bytes, *image, exported->AddressOfNames) : std::nullopt;
    for (std::uint64_t i = 0; list && i < exported->NumberOfNames && i < mostNames; ++i) {
        const auto name = recordAt<DWORD>(bytes, *list + i * sizeof(DWORD));
        const auto text = name ? offsetOf(bytes, *image, *name) : std::nullopt;
        if (!text)
            break;
        names.insert(textAt(bytes, *text, longestExportedName));
    }
    return names;
}

bool isLibraryLoaded(const QString& path) {
    return GetModuleHandleW(QDir::toNativeSeparators(path).toStdWString().c_str()) != nullptr;
}
