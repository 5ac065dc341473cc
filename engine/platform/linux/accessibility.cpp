#include "platform/linux/accessibility.h"

#include "platform/elements.h"
#include "platform/threads.h"

#include "platform/linux/accessible_questions.h"
#include "platform/linux/bus_address.h"

namespace rotika {

namespace {

// The service may have to be started first, on a machine busy with logging in.
constexpr std::chrono::seconds switchingLimit{30};

const char* const serviceName = "org.a11y.Bus";
const char* const servicePath = "/org/a11y/bus";

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

void prepareElementSearches() {
    const std::string address = sessionBusAddress();
    if (address.empty())
        return;
    const auto turnOn = [address]() noexcept {
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
    };
    // Without a thread only programs that publish unasked get labels.
    static_cast<void>(startDetachedThread(turnOn));
}

} // namespace rotika
