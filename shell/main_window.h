#pragma once

#include "licence/licence_check.h"

#include <QMainWindow>

class QLabel;
class QLayout;
class QListWidget;
class PageStack;
class QSystemTrayIcon;
class RecoveryBar;
class WheelEditorPage;
class WheelPreview;
struct ThemeInfo;

/// The shell's only top-level window. Owns the tray icon, through which the program is reachable while the
/// window is closed. The engine emits no notifications, so the window polls its status. Main thread.
class MainWindow : public QMainWindow {
    Q_OBJECT

public:
    /// `licence` must outlive the window. The engine must have been started.
    MainWindow(LicenceCheck& licence, const LicenceResult& result, QWidget* parent = nullptr);

    /// Call before the program ends.
    void keepUnsavedChanges();

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void makePages();
    QLayout* makePageColumn();
    QWidget* makeDashboard();
    QWidget* makeSettingsPage();
    QWidget* makeThemeCard();
    QWidget* makeAccountCard();
    QWidget* makeUpdateCard();
    void createTray();
    void createShortcuts();
    void showPage(int row);
    /// Moves the focus between the page list, the bar above the pages and the parts of the page; 1 is
    /// forward.
    void focusNextPart(int direction);
    void showAndActivate();
    void refreshStatus();
    void chooseTheme(const ThemeInfo& theme);
    void openInEditor(const QString& path);

    QListWidget* sidebar = nullptr;
    PageStack* stack = nullptr;
    RecoveryBar* recoveryBar = nullptr;
    WheelPreview* dashboardPreview = nullptr;
    WheelEditorPage* editorPage = nullptr;
    QSystemTrayIcon* tray = nullptr;
    QLabel* gazeLabel = nullptr;
    QLabel* voiceLabel = nullptr;
    QLabel* wheelCountLabel = nullptr;
    LicenceCheck* licenceCheck = nullptr;
    LicenceResult licenceResult;
};
