#include "platform/paths.h"

#include "base/text.h"
#include "common/data_folder.h"
#include "platform/files.h"

#include <algorithm>
#include <cstdlib>

namespace rotika {

std::u16string programFolder() {
    return utf16FromUtf8(dataFolderPath().native());
}

std::u16string programFilePath(const std::u16string& name) {
    const std::u16string own = joinPath(programFolder(), name);
    const std::u16string beside = joinPath(utf16FromUtf8(executableFolder().native()), name);
    return !pathExists(own) && pathExists(beside) ? beside : own;
}

std::u16string folderOfTemporaryFiles() {
    const char* const folder = std::getenv("XDG_RUNTIME_DIR"); // private to the user, unlike /tmp
    return folder != nullptr && folder[0] == '/' ? utf16FromUtf8(folder) : u"/tmp";
}

std::u16string joinPath(const std::u16string& folder, const std::u16string& name) {
    // A wheel file made on Windows has backslashes in the paths of its pictures.
    std::u16string native = name;
    std::replace(native.begin(), native.end(), u'\\', u'/');
    return folder + u'/' + native;
}

bool isFullPath(const std::u16string& path) {
    return path.starts_with(u'/');
}

} // namespace rotika
