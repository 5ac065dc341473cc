#pragma once

#include <QString>
#include <QStringList>

// Usable before QApplication exists. Main thread.

/// The words of the command line without the program's name.
QStringList programArguments(int argc, char** argv);

/// Writes to the standard output or, for a fault, to the standard error. On Windows, where a program with
/// windows normally has neither, shows a message box instead.
void printText(const QString& text, bool isFault);

/// For a process that has waited in quitRunningCopies and goes on as a copy: from now on it is found by its
/// command line as one. `argv` as main received it.
void forgetRestart(char** argv);
