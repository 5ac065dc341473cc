#pragma once

#include "licence/licence_check.h"

#include <QMainWindow>

class QLabel;
class QListWidget;
class PageStack;
class QSystemTrayIcon;
class WheelEditorPage;
class WheelPreview;
struct ThemeInfo;

/// The shell's one top-level window, and the owner of the tray icon that keeps the program reachable while
/// the window is closed. The engine sends no events, so what is shown is polled. First thread.
class MainWindow : public QMainWindow {
    Q_OBJECT

public:
    /// `licence` outlives the window. The engine has been started.
    MainWindow(LicenceCheck& licence, const LicenceResult& result, QWidget* parent = nullptr);

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void makePages();
    QWidget* makeDashboard();
    QWidget* makeSettingsPage();
    QWidget* makeThemeCard();
    QWidget* makeAccountCard();
    QWidget* makeUpdateCard();
    void createTray();
    void refreshStatus();
    void chooseTheme(const ThemeInfo& theme);
    void openInEditor(const QString& path);
    void bringUp();

    QListWidget* sidebar = nullptr;
    PageStack* stack = nullptr;
    WheelPreview* dashboardPreview = nullptr;
    WheelEditorPage* editorPage = nullptr;
    QSystemTrayIcon* tray = nullptr;
    QLabel* gazeLabel = nullptr;
    QLabel* voiceLabel = nullptr;
    QLabel* wheelCountLabel = nullptr;
    LicenceCheck* licenceCheck = nullptr;
    LicenceResult licenceResult;
};
