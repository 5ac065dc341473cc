#include "shell/process/linux/glib_pump.h"

#include <QAbstractEventDispatcher>
#include <chrono>

// GLib names a structure member "signals", which Qt defines as a macro.
#undef signals
#include <glib.h>

namespace {

// Well below the engine's tick of 15 ms, so that a tick is late by a third at most.
constexpr std::chrono::milliseconds pumpPeriod{5};
// A source that is ready all the time must not keep Qt's own events waiting.
constexpr int dispatchesPerTurn = 64;

void dispatchReadySources() {
    for (int i = 0; i < dispatchesPerTurn && g_main_context_iteration(nullptr, FALSE); ++i) {
    }
}

} // namespace

bool GlibPump::qtServesGlib() {
    const QAbstractEventDispatcher* dispatcher = QAbstractEventDispatcher::instance();
    return dispatcher != nullptr && dispatcher->inherits("QEventDispatcherGlib");
}

// The context is owned throughout: with no owner, a call that another thread sends to the context would run
// at once on that other thread.
GlibPump::GlibPump() : owned(g_main_context_acquire(nullptr) != FALSE) {
    timer.setTimerType(Qt::PreciseTimer);
    QObject::connect(&timer, &QTimer::timeout, &timer, dispatchReadySources);
    timer.start(pumpPeriod);
}

GlibPump::~GlibPump() {
    timer.stop();
    if (owned)
        g_main_context_release(nullptr);
}
