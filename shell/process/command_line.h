#pragma once

#include <QString>
#include <QStringList>

// The words that the program is started with. They are read before QApplication exists, because most of them
// must work without a screen.

enum class Launch { window, minimized, installVoice, quit, version, help, invalid };

struct CommandLine {
    Launch launch = Launch::window;
    QStringList files; // of installVoice, absolute paths; empty: the user chooses them
    QString fault;     // of invalid, a message for the user
};

/// `arguments` without the program's name. Relative file names belong to the current folder.
CommandLine parseCommandLine(const QStringList& arguments);

/// The text that --help prints.
QString commandLineHelp();
