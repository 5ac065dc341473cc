#include "common/data_folder.h"

#include <windows.h>

#include <string>

std::filesystem::path executableFolder() {
    constexpr DWORD longestPath = 32768; // the system's limit, with terminator
    std::wstring name(longestPath, L'\0');
    name.resize(GetModuleFileNameW(nullptr, name.data(), longestPath));
    const std::filesystem::path executable = name;
    return executable.has_parent_path() ? executable.parent_path() : ".";
}

const std::filesystem::path& dataFolderPath() {
    static const auto* const folder = new std::filesystem::path(executableFolder());
    return *folder;
}
