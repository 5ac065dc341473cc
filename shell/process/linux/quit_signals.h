#pragma once

#include <QSocketNotifier>
#include <array>
#include <memory>

class ProgramEnd;

/// On SIGTERM, SIGINT and SIGHUP ends the program in the normal way: held keys and the mouse are released. A
/// signal that was ignored when the program started stays ignored. A signal before the start of the
/// application's event loop ends the loops of dialogs at once and that loop as soon as it runs. Even if
/// something hangs, the process ends with status 0 within two seconds. At most one object at a time. Main
/// thread.
class QuitSignals {
public:
    /// Until an object exists, the signals end the process at once with status 0.
    static void exitUntilCreated();

    explicit QuitSignals(ProgramEnd& programEnd);
    ~QuitSignals();
    QuitSignals(const QuitSignals&) = delete;
    QuitSignals& operator=(const QuitSignals&) = delete;

private:
    std::array<int, 2> ends{-1, -1};
    std::unique_ptr<QSocketNotifier> notifier;
};
