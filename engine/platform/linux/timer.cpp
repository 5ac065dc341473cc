#include "platform/timer.h"

#include "platform/linux/owner_loop.h"

#include <map>

namespace rotika {

namespace {

using Tick = void (*)() noexcept;
std::map<WindowHandle, GSource*> timers;

gboolean callTick(gpointer tick) {
    reinterpret_cast<Tick>(tick)();
    return G_SOURCE_CONTINUE;
}

} // namespace

void startWindowTimer(WindowHandle window, std::uint32_t periodMs, void (*tick)() noexcept) {
    stopWindowTimer(window);
    GSource* source = g_timeout_source_new(periodMs);
    // A lower priority than the display's events and the messages that they post. At the same priority a due
    // tick could run between a press and the message that it posts.
    g_source_set_priority(source, G_PRIORITY_DEFAULT + 1);
    g_source_set_callback(source, callTick, reinterpret_cast<gpointer>(tick), nullptr);
    g_source_attach(source, ownerContext());
    timers[window] = source;
}

void stopWindowTimer(WindowHandle window) {
    const auto running = timers.find(window);
    if (running == timers.end())
        return;
    g_source_destroy(running->second);
    g_source_unref(running->second);
    timers.erase(running);
}

} // namespace rotika
