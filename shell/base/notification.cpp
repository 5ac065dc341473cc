#include "shell/base/notification.h"

#include <QApplication>
#include <QSystemTrayIcon>
#include <QWidget>

void showNotification(const QString& text) {
    const QString title = QStringLiteral("Rotika");
    if (QSystemTrayIcon::isSystemTrayAvailable())
        for (const QWidget* window : QApplication::topLevelWidgets())
            if (auto* tray = window->findChild<QSystemTrayIcon*>()) {
                tray->showMessage(title, text);
                return;
            }
    showNotificationWithoutTray(title, text);
}
