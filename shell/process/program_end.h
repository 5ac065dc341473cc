#pragma once

#include <QObject>
#include <QTimer>
#include <functional>

/// Ends the program in the normal way, whatever dialog, menu or box is open. QCoreApplication::quit() does so
/// too while this object exists; by default Qt first closes all windows and cancels the quit if one refuses,
/// and the main window always does, because it only hides. Main thread.
class ProgramEnd : public QObject {
    Q_OBJECT

public:
    ProgramEnd();

    /// Ends all event loops with status 0 and cancels the dialogs. Repeated, because the application's loop
    /// ignores that before it has started, and closing a dialog may open another.
    void begin();

    /// What must be done while the process still runs, once: when the application's loop ends, or earlier if
    /// the system will end the process without waiting for that.
    void setLastActs(std::function<void()> acts);
    void performLastActs();

    bool eventFilter(QObject* watched, QEvent* event) override;

signals:
    /// The program will end: no loop has ended yet, no dialog is cancelled.
    void beginning();

private:
    void endLoops();

    std::function<void()> lastActs;
    QTimer repetition;
    int rounds = 0;
};
