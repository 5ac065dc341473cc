#include "platform/linux/accessibility.h"

#include "platform/threads.h"

#include "platform/linux/accessible_questions.h"
#include "platform/linux/glib_handles.h"

#include <sys/stat.h>

#include <cstdlib>
#include <cstring>

namespace {

// The service may have to be started first, on a machine busy with logging in.
constexpr std::chrono::seconds switchingLimit{30};

const char* const serviceName = "org.a11y.Bus";
const char* const servicePath = "/org/a11y/bus";

/// Empty if there is no session bus. GIO's own ways of looking for one may start a bus that nobody else is
/// on.
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
    const GPointer<char> escaped(g_dbus_address_escape_value(path.c_str()));
    return std::string("unix:path=") + escaped.get();
}

} // namespace

bool openAccessibilityBus(BusConnection& bus) {
    if (!bus.open(sessionBusAddress()))
        return false;
    std::string address;
    bus.ask({serviceName, servicePath}, "org.a11y.Bus", "GetAddress", nullptr, "(s)", [&](GVariant* values) {
        const char* text = nullptr;
        if (values != nullptr)
            g_variant_get(values, "(&s)", &text);
        address = text == nullptr ? "" : text;
    });
    bus.waitForAnswers();
    return bus.open(address);
}

BusObject accessibilityDesktop() {
    return {"org.a11y.atspi.Registry", "/org/a11y/atspi/accessible/root"};
}

void turnAccessibilityOn() {
    const std::string address = sessionBusAddress();
    if (address.empty())
        return;
    startDetachedThread([address]() noexcept {
        BusConnection bus(switchingLimit);
        if (!bus.open(address))
            return;
        GVariant* arguments =
            g_variant_new("(ssv)", "org.a11y.Status", "IsEnabled", g_variant_new_boolean(TRUE));
        bus.ask({serviceName, servicePath}, "org.freedesktop.DBus.Properties", "Set", arguments, "()",
                [](GVariant*) {});
        bus.waitForAnswers();
        // Any question starts the registry. Programs of Qt 5 publish nothing if it is not there before them.
        if (openAccessibilityBus(bus))
            askForChildCount(bus, accessibilityDesktop(), [](std::int32_t) {});
        bus.waitForAnswers();
    });
}
