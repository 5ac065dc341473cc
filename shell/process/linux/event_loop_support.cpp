#include "shell/process/event_loop_support.h"

#include "shell/process/linux/glib_pump.h"
#include "shell/process/linux/quit_signals.h"

#include <optional>

struct EventLoopSupport::Parts {
    explicit Parts(ProgramEnd& programEnd) : quitSignals(programEnd) {}

    QuitSignals quitSignals;
    std::optional<GlibPump> glibPump;
};

EventLoopSupport::EventLoopSupport(ProgramEnd& programEnd) : parts(std::make_unique<Parts>(programEnd)) {
    if (!GlibPump::qtServesGlib())
        parts->glibPump.emplace();
}

EventLoopSupport::~EventLoopSupport() = default;

void exitOnTermination() {
    QuitSignals::exitUntilCreated();
}

void endNativeLoops() {}
