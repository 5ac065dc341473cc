#pragma once

#include "shell/process/control.h"

// The words that the program is started with. They are read before QApplication exists, because most of them
// must work without a screen.

enum class Launch { window, minimized, command, quit, version, help, invalid };

struct CommandLine {
    Launch launch = Launch::window;
    bool isRestart = false; // ends the running copies first; of window and minimized
    ControlCommand command; // of command: for the running copy, or for this one if there is none
    QString fault;          // of invalid or of a restart that failed, a message for the user
};

/// `arguments` without the program's name. Relative file names belong to the current folder.
CommandLine parseCommandLine(const QStringList& arguments);

/// The text that --help prints.
QString commandLineHelp();
