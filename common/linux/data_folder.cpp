#include "common/linux/data_folder.h"

#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <string>
#include <vector>

namespace {

std::string executableFolder() {
    std::string path(256, '\0');
    while (true) {
        const ssize_t length = ::readlink("/proc/self/exe", path.data(), path.size());
        if (length < 0) {
            return ".";
        }
        if (static_cast<std::size_t>(length) < path.size()) {
            path.resize(static_cast<std::size_t>(length));
            break;
        }
        path.resize(path.size() * 2);
    }
    const std::size_t slash = path.rfind('/');
    if (slash == std::string::npos) {
        return ".";
    }
    return path.substr(0, std::max<std::size_t>(slash, 1));
}

/// Empty unless the variable holds an absolute path: the base directory rules say to ignore any other.
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

std::string decide() {
    std::string beside = executableFolder();
    if (!isWritable(beside)) {
        std::string own = userDataFolder();
        if (!own.empty() && makeFolders(own)) {
            return own;
        }
    }
    return beside;
}

} // namespace

const std::filesystem::path& decidedDataFolder() {
    static const std::filesystem::path folder = decide();
    return folder;
}
