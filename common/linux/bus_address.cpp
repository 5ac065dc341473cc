#include "common/linux/bus_address.h"

#include <sys/stat.h>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <optional>

namespace {

constexpr char addressVariable[] = "DBUS_SESSION_BUS_ADDRESS";

/// The variable before disableSessionBus, empty if it was not set. Not set: never disabled.
std::optional<std::string> formerAddress;

} // namespace

std::string sessionBusAddress() {
    const char* address = std::getenv(addressVariable);
    if (address != nullptr && *address != '\0')
        return std::strstr(address, "autolaunch:") == nullptr ? address : "";
    const char* folder = std::getenv("XDG_RUNTIME_DIR");
    if (folder == nullptr || *folder != '/')
        return {};
    const std::string path = std::string(folder) + "/bus";
    struct stat status = {};
    if (::stat(path.c_str(), &status) != 0 || !S_ISSOCK(status.st_mode))
        return {};
    const std::unique_ptr<char, decltype(&g_free)> escaped(g_dbus_address_escape_value(path.c_str()),
                                                           &g_free);
    return std::string("unix:path=") + escaped.get();
}

void disableSessionBus() {
    const char* address = std::getenv(addressVariable);
    formerAddress = address != nullptr ? address : "";
    ::setenv(addressVariable, "disabled:", 1);
}

void enableSessionBusIn(GAppLaunchContext* programs) {
    if (!formerAddress)
        return;
    if (formerAddress->empty())
        g_app_launch_context_unsetenv(programs, addressVariable);
    else
        g_app_launch_context_setenv(programs, addressVariable, formerAddress->c_str());
}
