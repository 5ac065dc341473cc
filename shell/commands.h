#pragma once

#include "shell/process/command_line.h"

#include <functional>
#include <optional>

class MainWindow;
class QWidget;

/// Whether the command is about a window of the program. The others open neither window nor box, because the
/// user is at work in another program.
bool opensWindow(const ControlCommand& command);

/// Main thread.
void obeyCommand(const ControlCommand& command, MainWindow& window);

/// Visible and in front, while the keyboard stays where it is.
void showWithoutActivating(QWidget& window);

/// Before QApplication exists, which most commands do not need: `isFirstCopy` or else for the first copy. The
/// exit status, or nothing if a window is needed.
std::optional<int> sendCommand(const ControlCommand& command, bool isFirstCopy);

/// The exit status of a second copy. `quit` ends its boxes.
int runAsSecondCopy(const CommandLine& line, std::function<void()> quit);
