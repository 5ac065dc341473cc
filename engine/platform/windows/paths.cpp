#include "platform/paths.h"

#include "platform/windows/windows_api.h"

#include <array>

std::u16string programFolder() {
    std::array<wchar_t, MAX_PATH> buffer{};
    const DWORD length = GetModuleFileNameW(nullptr, buffer.data(), MAX_PATH);
    const std::u16string path(reinterpret_cast<const char16_t*>(buffer.data()), length);
    const std::size_t separator = path.rfind(u'\\');
    return separator == std::u16string::npos ? u"." : path.substr(0, separator);
}

std::u16string programFilePath(const std::u16string& name) {
    return joinPath(programFolder(), name);
}

std::u16string folderOfTemporaryFiles() {
    std::array<wchar_t, MAX_PATH + 1> buffer{};
    DWORD length = GetTempPathW(static_cast<DWORD>(buffer.size()), buffer.data());
    while (length > 0 && buffer[length - 1] == L'\\') {
        --length;
    }
    return {reinterpret_cast<const char16_t*>(buffer.data()), length};
}

std::u16string joinPath(const std::u16string& folder, const std::u16string& name) {
    return folder + u'\\' + name;
}

bool isFullPath(const std::u16string& path) {
    return path.find(u':') != std::u16string::npos;
}
