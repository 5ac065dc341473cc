#pragma once

#include <QString>

/// Shows a message of the desktop, from the tray icon or without one, that does not take the keyboard. A
/// desktop that has neither shows nothing. Main thread.
void showNotification(const QString& text);

/// Where there is no tray icon. For the implementation.
void showNotificationWithoutTray(const QString& title, const QString& text);
