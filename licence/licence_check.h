#pragma once

#include <QString>

class QWidget;

// The account and licence check: decides at start whether the program may run. The shell knows nothing of it
// but this header; which implementation a program gets is settled when it is linked.
//
// The implementation that stands beside this header lets everybody in and has no account to show.

struct LicenceResult {
    /// False ends the program before the engine is started.
    bool go = false;
    /// Text of the account card, in Polish. Empty when there is nothing to show: the card is then left out.
    QString accountText;
};

class LicenceCheck {
public:
    /// Asks once. May show dialogs of its own, with nested event loops. First thread, after QApplication and
    /// before the engine.
    LicenceResult check();

    /// Forgets the account and asks the application to quit. May show dialogs over `parent`. First thread.
    void logOut(QWidget* parent);
};
