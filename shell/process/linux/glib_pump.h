#pragma once

#include <QTimer>

/// Serves the sources of GLib's default main context from Qt's loop, for a Qt that does not run on GLib
/// (built without it, or QT_NO_GLIB is set). The engine's window events, ticks and messages are such sources.
/// Main thread.
class GlibPump {
public:
    /// True when Qt's own dispatcher of this thread serves the default main context.
    static bool qtServesGlib();

    GlibPump();
    ~GlibPump();
    GlibPump(const GlibPump&) = delete;
    GlibPump& operator=(const GlibPump&) = delete;

private:
    QTimer timer;
    bool owned = false;
};
