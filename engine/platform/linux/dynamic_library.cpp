#include "platform/dynamic_library.h"

#include "base/text.h"

#include <dlfcn.h>
#include <link.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <system_error>
#include <vector>

namespace rotika {

namespace {

/// Whether the file contains all segments of its program headers. The loader does not check: a truncated
/// library, for instance an incomplete download, would end the program with SIGBUS.
bool isWholeLibrary(std::ifstream& file, std::uint64_t byteCount) {
    ElfW(Ehdr) header{};
    file.read(reinterpret_cast<char*>(&header), sizeof header);
    if (!file || std::memcmp(header.e_ident, ELFMAG, SELFMAG) != 0 ||
        header.e_phentsize != sizeof(ElfW(Phdr))) {
        return false;
    }
    std::vector<ElfW(Phdr)> segments(header.e_phnum);
    file.seekg(static_cast<std::streamoff>(header.e_phoff));
    file.read(reinterpret_cast<char*>(segments.data()),
              static_cast<std::streamsize>(segments.size() * sizeof(ElfW(Phdr))));
    return file && std::ranges::all_of(segments, [&](const ElfW(Phdr) & segment) {
               return segment.p_type != PT_LOAD ||
                      (segment.p_offset <= byteCount && segment.p_filesz <= byteCount - segment.p_offset);
           });
}

bool isWholeLibrary(const std::string& path) {
    std::error_code failure;
    // Opening a pipe would block until there is a writer.
    if (!std::filesystem::is_regular_file(path, failure)) {
        return false;
    }
    const std::uintmax_t byteCount = std::filesystem::file_size(path, failure);
    std::ifstream file(path, std::ios::binary);
    return !failure && isWholeLibrary(file, byteCount);
}

/// Text that is not a valid file name would name another file after the conversion.
bool canBeFileName(const std::u16string& text, const std::string& converted) {
    return !text.empty() && text.find(u'\0') == std::u16string::npos && utf16FromUtf8(converted) == text;
}

} // namespace

// The loader does not search the library's own folder for what it needs: it uses the library's RUNPATH,
// LD_LIBRARY_PATH as of program start, and the system's folders. Both search kinds are the same here.
LibraryHandle loadLibrary(const std::u16string& pathOrName, LibrarySearch) {
    const std::string name = utf8FromUtf16(pathOrName);
    if (!canBeFileName(pathOrName, name)) {
        return nullptr; // an empty name would be this program itself
    }
    const bool isPath = name.find('/') != std::string::npos;
    if (isPath && !isWholeLibrary(name)) {
        return nullptr;
    }
    return static_cast<LibraryHandle>(::dlopen(name.c_str(), RTLD_NOW | RTLD_LOCAL));
}

void* findLibraryFunction(LibraryHandle library, const char* name) {
    // A null library would search the whole program.
    return library == nullptr ? nullptr : ::dlsym(library, name);
}

std::string pathForLibrary(const std::u16string& path) {
    return utf8FromUtf16(path);
}

} // namespace rotika
