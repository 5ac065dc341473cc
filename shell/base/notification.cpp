#include "shell/base/notification.h"

#include <QApplication>
#include <QSystemTrayIcon>
#include <QWidget>

namespace {

constexpr int shownMs = 30'000; // people read at different speeds

} // namespace

void showNotification(const QString& text) {
    const QString title = QStringLiteral("Rotika");
    if (QSystemTrayIcon::isSystemTrayAvailable())
        for (const QWidget* window : QApplication::topLevelWidgets())
            if (auto* tray = window->findChild<QSystemTrayIcon*>()) {
                tray->showMessage(title, text, QSystemTrayIcon::Information, shownMs);
                return;
            }
    showNotificationWithoutTray(title, text);
}
