#include "common/windows/unlimited_path.h"

#include <windows.h>

#include <cstddef>

std::wstring unlimitedPath(const std::wstring& path) {
    constexpr std::size_t roomForSuffix = 32;
    const DWORD size = GetFullPathNameW(path.c_str(), 0, nullptr, nullptr);
    std::wstring full(size, L'\0');
    full.resize(size == 0 ? 0 : GetFullPathNameW(path.c_str(), size, full.data(), nullptr));
    if (full.size() + roomForSuffix < MAX_PATH || full.starts_with(L"\\\\?\\") ||
        full.starts_with(L"\\\\.\\")) {
        return path;
    }
    return full.starts_with(L"\\\\") ? L"\\\\?\\UNC" + full.substr(1) : L"\\\\?\\" + full;
}

std::wstring shortPath(const std::wstring& path) {
    const std::wstring whole = unlimitedPath(path);
    const DWORD size = GetShortPathNameW(whole.c_str(), nullptr, 0);
    std::wstring found(size, L'\0');
    found.resize(size == 0 ? 0 : GetShortPathNameW(whole.c_str(), found.data(), size));
    return found;
}
