#include "common/linux/bus_address.h"

#include <gio/gio.h>
#include <sys/stat.h>

#include <cstdlib>
#include <cstring>
#include <memory>

std::string sessionBusAddress() {
    const char* address = std::getenv("DBUS_SESSION_BUS_ADDRESS");
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
