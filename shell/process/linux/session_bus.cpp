#include "common/linux/bus_address.h"
#include "common/linux/owner_bus.h"
#include "shell/process/event_loop_support.h"

#include <memory>

namespace {

constexpr guint limitMs = 2000;

/// Shared with a callback that may come late.
struct Attempt {
    bool hasAnswered = false;
    bool isOver = false;
};

} // namespace

void dropHangingBus() {
    const std::string address = sessionBusAddress();
    if (address.empty())
        return;
    const auto attempt = std::make_shared<Attempt>();
    openOwnerBus(address, [attempt](GDBusConnection* bus) {
        attempt->hasAnswered = true;
        if (bus != nullptr)
            g_object_unref(bus);
    });
    const guint limit = g_timeout_add(
        limitMs,
        [](gpointer data) -> gboolean {
            static_cast<Attempt*>(data)->isOver = true;
            return G_SOURCE_CONTINUE;
        },
        attempt.get());
    while (!attempt->hasAnswered && !attempt->isOver)
        g_main_context_iteration(nullptr, TRUE);
    g_source_remove(limit);
    if (!attempt->hasAnswered)
        disableSessionBus();
}
