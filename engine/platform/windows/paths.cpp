#include "platform/paths.h"

#include "platform/windows/windows_api.h"

namespace rotika {

namespace {

/// The longest path that the system knows, with its terminator.
constexpr DWORD longestPath = 32768;

} // namespace

std::u16string programFolder() {
    std::u16string path(longestPath, u'\0');
    path.resize(GetModuleFileNameW(nullptr, reinterpret_cast<wchar_t*>(path.data()), longestPath));
    const std::size_t separator = path.rfind(u'\\');
    return separator == std::u16string::npos ? u"." : path.substr(0, separator);
}

std::u16string programFilePath(const std::u16string& name) {
    return joinPath(programFolder(), name);
}

std::u16string folderOfTemporaryFiles() {
    std::u16string path(longestPath, u'\0');
    path.resize(GetTempPathW(longestPath, reinterpret_cast<wchar_t*>(path.data())));
    while (path.ends_with(u'\\')) {
        path.pop_back();
    }
    return path;
}

std::u16string joinPath(const std::u16string& folder, const std::u16string& name) {
    return folder + u'\\' + name;
}

bool isFullPath(const std::u16string& path) {
    return path.find(u':') != std::u16string::npos;
}

} // namespace rotika
