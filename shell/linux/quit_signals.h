#pragma once

#include <QSocketNotifier>
#include <QTimer>
#include <array>
#include <memory>

/// Turns SIGTERM, SIGINT and SIGHUP into an end of the event loops with status 0, so that the program takes
/// itself down in order: a held key is let go and the mouse is given back. Open dialogs count as cancelled. A
/// signal that was ignored when the program started stays ignored. A signal that comes before the
/// application's event loop runs ends the loops of dialogs at once and that loop as soon as it runs. Whatever
/// hangs, the process ends with status 0 within two seconds. At most one object at a time. First thread.
class QuitSignals {
public:
    QuitSignals();
    ~QuitSignals();
    QuitSignals(const QuitSignals&) = delete;
    QuitSignals& operator=(const QuitSignals&) = delete;

private:
    void endLoops();

    std::array<int, 2> ends{-1, -1};
    std::unique_ptr<QSocketNotifier> notifier;
    QTimer repetition;
    int rounds = 0;
};
