#include "platform/paths.h"

#include "common/data_folder.h"

#include "platform/windows/windows_api.h"

#include <utility>

namespace rotika {

namespace {

/// The system's longest path, with its terminator.
constexpr DWORD maxPathLength = 32768;

std::u16string withoutTrailingSeparator(std::u16string path) {
    while (path.ends_with(u'\\')) {
        path.pop_back();
    }
    return path;
}

} // namespace

std::u16string programFolder() {
    return withoutTrailingSeparator(reinterpret_cast<const char16_t*>(dataFolderPath().c_str()));
}

std::u16string programFilePath(const std::u16string& name) {
    return joinPath(programFolder(), name);
}

std::u16string folderOfTemporaryFiles() {
    std::u16string path(maxPathLength, u'\0');
    path.resize(GetTempPathW(maxPathLength, reinterpret_cast<wchar_t*>(path.data())));
    return withoutTrailingSeparator(std::move(path));
}

std::u16string joinPath(const std::u16string& folder, const std::u16string& name) {
    return folder + u'\\' + name;
}

bool isFullPath(const std::u16string& path) {
    return path.find(u':') != std::u16string::npos;
}

} // namespace rotika
