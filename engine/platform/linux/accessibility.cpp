#include "platform/linux/accessibility.h"

#include "common/linux/bus_address.h"
#include "platform/elements.h"
#include "platform/threads.h"

#include "platform/linux/accessible_requests.h"

namespace rotika {

namespace {

// The call may start the service first, while the machine is busy logging in.
constexpr std::chrono::seconds enableLimit{30};

const char* const serviceName = "org.a11y.Bus";
const char* const servicePath = "/org/a11y/bus";

} // namespace

bool openAccessibilityBus(BusConnection& bus) {
    if (!bus.open(sessionBusAddress()))
        return false;
    std::string address;
    bus.call({serviceName, servicePath}, "org.a11y.Bus", "GetAddress", nullptr, "(s)", [&](GVariant* values) {
        const char* text = nullptr;
        if (values != nullptr)
            g_variant_get(values, "(&s)", &text);
        address = text == nullptr ? "" : text;
    });
    bus.waitForReplies();
    return bus.open(address);
}

BusObject accessibilityDesktop() {
    return {"org.a11y.atspi.Registry", "/org/a11y/atspi/accessible/root"};
}

void prepareElementSearches() {
    const std::string address = sessionBusAddress();
    if (address.empty())
        return;
    const auto enable = [address]() noexcept {
        BusConnection bus(enableLimit);
        if (!bus.open(address))
            return;
        GVariant* arguments =
            g_variant_new("(ssv)", "org.a11y.Status", "IsEnabled", g_variant_new_boolean(TRUE));
        bus.call({serviceName, servicePath}, "org.freedesktop.DBus.Properties", "Set", arguments, "()",
                 [](GVariant*) {});
        bus.waitForReplies();
        // Any call starts the registry. Qt 5 programs that start before it publish nothing.
        if (openAccessibilityBus(bus))
            requestChildCount(bus, accessibilityDesktop(), [](std::int32_t) {});
        bus.waitForReplies();
    };
    // Without the thread only programs that always publish get labels.
    static_cast<void>(startDetachedThread(enable));
}

} // namespace rotika
