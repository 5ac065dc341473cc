#include "common/data_folder.h"

#include "common/file_names.h"
#include "common/files.h"

#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <optional>
#include <string>
#include <system_error>
#include <vector>

namespace {

namespace fs = std::filesystem;

/// Empty unless the variable holds an absolute path: the XDG base directory rules ignore any other.
std::string absoluteVariable(const char* name) {
    const char* value = std::getenv(name);
    return value != nullptr && value[0] == '/' ? value : std::string();
}

std::string homeFolder() {
    std::string home = absoluteVariable("HOME");
    if (home.empty()) {
        std::vector<char> buffer(16384);
        passwd entry{};
        passwd* found = nullptr;
        if (::getpwuid_r(::getuid(), &entry, buffer.data(), buffer.size(), &found) == 0 && found != nullptr) {
            home = found->pw_dir;
        }
    }
    return home;
}

std::string userDataFolder() {
    std::string base = absoluteVariable("XDG_DATA_HOME");
    if (base.empty()) {
        const std::string home = homeFolder();
        if (home.empty()) {
            return {};
        }
        base = home + "/.local/share";
    }
    while (base.size() > 1 && base.back() == '/') {
        base.pop_back();
    }
    return base + "/rotika";
}

bool isWritable(const std::string& folder) {
    return ::access(folder.c_str(), W_OK | X_OK) == 0;
}

bool makeFolders(const std::string& folder) {
    for (std::size_t slash = folder.find('/', 1); slash != std::string::npos;
         slash = folder.find('/', slash + 1)) {
        ::mkdir(folder.substr(0, slash).c_str(), 0700);
    }
    ::mkdir(folder.c_str(), 0700);
    return isWritable(folder);
}

void copyIfMissing(const fs::path& prepared, const fs::path& target) {
    std::error_code ignored;
    std::error_code failure;
    // A link, even a broken one, counts as an existing file at the target and is never copied from
    // `prepared`.
    if (fs::symlink_status(target, ignored).type() != fs::file_type::not_found ||
        fs::symlink_status(prepared, ignored).type() != fs::file_type::regular) {
        return;
    }
    const std::optional<std::string> bytes = readWholeFile(prepared);
    const std::uintmax_t size = fs::file_size(prepared, failure);
    if (bytes && !failure && bytes->size() == size) { // not truncated by a read error
        replaceWholeFile(target, *bytes);
    }
}

/// Copies the settings last: while they are missing, an interrupted copy is repeated.
void copyPreparedFiles(const fs::path& beside, const fs::path& own) {
    const fs::path settings = configFileName;
    std::error_code failure;
    if (fs::exists(fs::symlink_status(own / settings, failure))) {
        return;
    }
    for (fs::directory_iterator each(beside, failure); !failure && each != fs::directory_iterator();
         each.increment(failure)) {
        const fs::path name = each->path().filename();
        if (name.extension() == ".json" && name != settings) {
            copyIfMissing(each->path(), own / name);
        }
    }
    copyIfMissing(beside / settings, own / settings);
}

/// Whether `icons` is the link to the program's icons that earlier versions made, also after the program has
/// moved in a folder of the same name. A link of the user's own, for instance to a drive that is not
/// connected, is not.
bool isLinkOfEarlierVersion(const fs::path& icons, const fs::path& shipped) {
    std::error_code ignored;
    if (!fs::is_symlink(fs::symlink_status(icons, ignored))) {
        return false;
    }
    if (fs::exists(icons, ignored)) {
        return fs::equivalent(icons, shipped, ignored);
    }
    const fs::path target = fs::read_symlink(icons, ignored);
    return target.filename() == shipped.filename() &&
           target.parent_path().filename() == shipped.parent_path().filename();
}

/// For the user's own icons, which cannot be added to the program's.
void makeIconFolder(const fs::path& beside, const fs::path& own) {
    const fs::path icons = own / iconFolderName;
    std::error_code ignored;
    if (isLinkOfEarlierVersion(icons, beside / iconFolderName)) {
        fs::remove(icons, ignored);
    }
    fs::create_directory(icons, ignored);
}

} // namespace

std::filesystem::path executableFolder() {
    std::error_code failure;
    const fs::path executable = fs::read_symlink("/proc/self/exe", failure);
    return executable.has_parent_path() ? executable.parent_path() : ".";
}

std::filesystem::path chooseDataFolder(const std::filesystem::path& beside) {
    const bool canWrite = isWritable(beside);
    std::error_code ignored;
    const bool mayWrite = canWrite && !fs::exists(beside / installedMarkName, ignored);
    const std::string own = mayWrite ? std::string() : userDataFolder();
    if (own.empty()) {
        return beside;
    }
    if (makeFolders(own)) {
        copyPreparedFiles(beside, own);
        makeIconFolder(beside, own);
        return own;
    }
    return canWrite ? fs::path(own) : beside; // where nothing can be written
}

const std::filesystem::path& dataFolderPath() {
    static const auto* const folder = new fs::path(chooseDataFolder(executableFolder()));
    return *folder;
}
