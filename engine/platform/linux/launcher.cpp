#include "platform/launcher.h"

#include "base/text.h"
#include "common/linux/bus_address.h"

#include "platform/linux/glib_handles.h"

#include <unistd.h>

#include <memory>
#include <string>

namespace rotika {

namespace {

GObjectPointer<GAppLaunchContext> contextOfPrograms() {
    GObjectPointer<GAppLaunchContext> context(g_app_launch_context_new());
    enableSessionBusIn(context.get());
    return context;
}

bool runProgram(const std::string& program) {
    std::string name = program;
    char* arguments[] = {name.data(), nullptr};
    constexpr auto flags = static_cast<GSpawnFlags>(G_SPAWN_SEARCH_PATH | G_SPAWN_STDOUT_TO_DEV_NULL |
                                                    G_SPAWN_STDERR_TO_DEV_NULL);
    const std::unique_ptr<char*, decltype(&g_strfreev)> environment(
        g_app_launch_context_get_environment(contextOfPrograms().get()), g_strfreev);
    return g_spawn_async(nullptr, arguments, environment.get(), flags, nullptr, nullptr, nullptr, nullptr) !=
           FALSE;
}

bool openAddress(const std::string& address) {
    return g_app_info_launch_default_for_uri(address.c_str(), contextOfPrograms().get(), nullptr) != FALSE;
}

/// "http:", "mailto:"; a single letter is a Windows drive.
bool isAddress(const std::string& target) {
    const GPointer<char> scheme(g_uri_parse_scheme(target.c_str()));
    return scheme != nullptr && scheme.get()[1] != '\0';
}

bool openFile(const std::string& path) {
    const GObjectPointer<GFile> file(g_file_new_for_path(path.c_str()));
    const GPointer<char> address(g_file_get_uri(file.get()));
    return openAddress(address.get());
}

} // namespace

void openTarget(const std::u16string& target) {
    const std::string text = utf8FromUtf16(target);
    if (isAddress(text)) {
        openAddress(text);
        return;
    }
    const bool isFolder = g_file_test(text.c_str(), G_FILE_TEST_IS_DIR) != FALSE;
    const bool isFile = g_file_test(text.c_str(), G_FILE_TEST_EXISTS) != FALSE;
    const bool isProgram = !isFolder && (!isFile || access(text.c_str(), X_OK) == 0);
    // Foreign file systems mark documents as executable too: a file that cannot be run is opened.
    if (isProgram && runProgram(text))
        return;
    if (isFile)
        openFile(text);
}

} // namespace rotika
