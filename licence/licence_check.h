#pragma once

#include <QString>

class QWidget;

// The account and licence check: decides at start whether the program may run. The shell uses only this
// header; the implementation is chosen at link time.
//
// The implementation beside this header always allows the start and has no account to show.

struct LicenceResult {
    /// False ends the program before the engine is started.
    bool go = false;
    /// Text of the account card, in Polish. Empty when there is nothing to show: the card is then left out.
    QString accountText;
};

class LicenceCheck {
public:
    /// Called once. May show dialogs, with nested event loops. Main thread, after QApplication and before the
    /// engine.
    LicenceResult check();

    /// Forgets the account and asks the application to quit. May show dialogs over `parent`. Main thread.
    void logOut(QWidget* parent);
};
