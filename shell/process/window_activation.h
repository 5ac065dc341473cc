#pragma once

class QWidget;

/// Gives a shown window the keyboard as a taskbar does, for a user who asked for it in another program. Of
/// the window's own request a window manager on Linux may think that it is older than that user's work; on
/// Windows that request suffices, since the sender of a command allows it. Main thread.
void activateForUser(const QWidget& window);
