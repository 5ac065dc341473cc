#include "shell/event_loop_support.h"

#include "shell/linux/glib_pump.h"
#include "shell/linux/quit_signals.h"

#include <optional>

struct EventLoopSupport::Parts {
    QuitSignals quitSignals;
    std::optional<GlibPump> glibPump;
};

EventLoopSupport::EventLoopSupport() : parts(std::make_unique<Parts>()) {
    if (!GlibPump::qtServesGlib())
        parts->glibPump.emplace();
}

EventLoopSupport::~EventLoopSupport() = default;
