#pragma once

#include "licence/licence_check.h"

#include <QMainWindow>

class QLabel;
class QListWidget;
class QStackedWidget;
class QSystemTrayIcon;

/// The shell's one top-level window, and the owner of the tray icon that keeps the program reachable while
/// the window is closed. The engine sends no events, so what is shown is polled. First thread.
class MainWindow : public QMainWindow {
    Q_OBJECT

public:
    /// `licence` outlives the window.
    MainWindow(LicenceCheck& licence, const LicenceResult& result, QWidget* parent = nullptr);

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    QWidget* makeDashboard();
    void createTray();
    void refreshStatus();
    void bringUp();

    QListWidget* sidebar = nullptr;
    QStackedWidget* stack = nullptr;
    QSystemTrayIcon* tray = nullptr;
    QLabel* gazeLabel = nullptr;
    QLabel* voiceLabel = nullptr;
    QLabel* wheelCountLabel = nullptr;
    LicenceCheck* licenceCheck = nullptr;
    LicenceResult licenceResult;
};
