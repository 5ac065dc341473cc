#include "platform/paths.h"

#include "platform/simulated/paths.h"

#include <algorithm>
#include <filesystem>
#include <mutex>

namespace rotika {

namespace {

constexpr char16_t missingFolder[] = u"no-such-folder";
constexpr auto separator = static_cast<char16_t>(std::filesystem::path::preferred_separator);

std::mutex folderMutex;
std::u16string currentFolder = missingFolder;
std::u16string currentTemporaryFolder = missingFolder;

} // namespace

std::u16string programFolder() {
    const std::lock_guard lock(folderMutex);
    return currentFolder;
}

std::u16string programFilePath(const std::u16string& name) {
    return joinPath(programFolder(), name);
}

std::u16string folderOfTemporaryFiles() {
    const std::lock_guard lock(folderMutex);
    return currentTemporaryFolder;
}

std::u16string joinPath(const std::u16string& folder, const std::u16string& name) {
    std::u16string native = name;
    if (separator == u'/') {
        std::replace(native.begin(), native.end(), u'\\', u'/');
    }
    return folder + separator + native;
}

void setSimulatedProgramFolder(const std::u16string& folder) {
    const std::lock_guard lock(folderMutex);
    currentFolder = folder;
}

void setSimulatedTemporaryFolder(const std::u16string& folder) {
    const std::lock_guard lock(folderMutex);
    currentTemporaryFolder = folder;
}

void resetSimulatedPaths() {
    setSimulatedProgramFolder(missingFolder);
    setSimulatedTemporaryFolder(missingFolder);
}

bool isFullPath(const std::u16string& path) {
    return path.starts_with(u'/') || path.find(u':') != std::u16string::npos;
}

} // namespace rotika
