#include "shell/voice_install/speech_library_file.h"

#include "shell/voice_install/byte_records.h"

#include <dlfcn.h>
#include <elf.h>

#include <QFile>

namespace {

constexpr std::uint64_t mostSymbols = 1'000'000;

bool isLibraryHeader(const Elf64_Ehdr& header) {
    return std::memcmp(header.e_ident, ELFMAG, SELFMAG) == 0 && header.e_ident[EI_CLASS] == ELFCLASS64 &&
           header.e_ident[EI_DATA] == ELFDATA2LSB && header.e_machine == EM_X86_64 && header.e_type == ET_DYN;
}

bool hasAllSegments(const QByteArray& bytes, const Elf64_Ehdr& header) {
    const auto size = static_cast<std::uint64_t>(bytes.size());
    for (std::uint64_t i = 0; i < header.e_phnum; ++i) {
        const auto segment = recordAt<Elf64_Phdr>(bytes, header.e_phoff + i * sizeof(Elf64_Phdr));
        if (!segment || (segment->p_type == PT_LOAD &&
                         (segment->p_offset > size || segment->p_filesz > size - segment->p_offset)))
            return false;
    }
    return true;
}

std::optional<Elf64_Shdr> sectionAt(const QByteArray& bytes, const Elf64_Ehdr& header, std::uint64_t index) {
    return recordAt<Elf64_Shdr>(bytes, header.e_shoff + index * sizeof(Elf64_Shdr));
}

void addNames(const QByteArray& bytes, const Elf64_Shdr& symbols, std::uint64_t texts,
              QSet<QByteArray>& names) {
    for (std::uint64_t i = 0; i < symbols.sh_size / sizeof(Elf64_Sym) && i < mostSymbols; ++i) {
        const auto symbol = recordAt<Elf64_Sym>(bytes, symbols.sh_offset + i * sizeof(Elf64_Sym));
        if (!symbol)
            return;
        if (symbol->st_shndx != SHN_UNDEF && ELF64_ST_TYPE(symbol->st_info) == STT_FUNC &&
            ELF64_ST_BIND(symbol->st_info) != STB_LOCAL)
            names.insert(textAt(bytes, texts + symbol->st_name, longestExportedName));
    }
}

} // namespace

QString speechLibraryFileName() {
    return QStringLiteral("libvosk.so");
}

std::optional<QSet<QByteArray>> exportedNames(const QByteArray& bytes) {
    const auto header = recordAt<Elf64_Ehdr>(bytes, 0);
    if (!header || !isLibraryHeader(*header) || !hasAllSegments(bytes, *header))
        return std::nullopt;
    QSet<QByteArray> names;
    for (std::uint64_t i = 0; i < header->e_shnum; ++i) {
        const auto section = sectionAt(bytes, *header, i);
        if (!section)
            return std::nullopt;
        if (section->sh_type != SHT_DYNSYM)
            continue;
        if (const auto texts = sectionAt(bytes, *header, section->sh_link))
            addNames(bytes, *section, texts->sh_offset, names);
        break; // there is only one
    }
    return names;
}

bool isLibraryLoaded(const QString& path) {
    void* const library = dlopen(QFile::encodeName(path).constData(), RTLD_LAZY | RTLD_NOLOAD);
    if (library != nullptr)
        dlclose(library);
    return library != nullptr;
}
