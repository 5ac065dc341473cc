#pragma once

#include <QSocketNotifier>
#include <array>
#include <memory>

/// Turns SIGTERM, SIGINT and SIGHUP into an end of the event loop with status 0, so that the program takes
/// itself down in order: a held key is let go and the mouse is given back. A signal that was ignored when the
/// program started stays ignored. A signal that comes before the application's event loop runs is kept until
/// it does. At most one object at a time. First thread.
class QuitSignals {
public:
    QuitSignals();
    ~QuitSignals();
    QuitSignals(const QuitSignals&) = delete;
    QuitSignals& operator=(const QuitSignals&) = delete;

private:
    void exitOrRetry();

    std::array<int, 2> ends{-1, -1};
    std::unique_ptr<QSocketNotifier> notifier;
};
