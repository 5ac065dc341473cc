#pragma once

#include <QSocketNotifier>
#include <QTimer>
#include <array>
#include <memory>

/// On SIGTERM, SIGINT and SIGHUP ends the event loops with status 0, so that the program shuts down normally:
/// held keys and the mouse are released. Open dialogs are cancelled. A signal that was ignored when the
/// program started stays ignored. A signal before the start of the application's event loop ends the loops of
/// dialogs at once and that loop as soon as it runs. Even if something hangs, the process ends with status 0
/// within two seconds. At most one object at a time. Main thread.
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
