#include "shell/main_window.h"

#include "engine/core/overlay.h"
#include "shell/base/cards.h"
#include "shell/base/engine_status.h"
#include "shell/base/wheel_preview.h"
#include "shell/base/window_size.h"
#include "shell/gaze_page.h"
#include "shell/page_area.h"
#include "shell/voice_page.h"
#include "shell/wheels/recovery_bar.h"
#include "shell/wheels/wheel_editor_page.h"

#include <QApplication>
#include <QCloseEvent>
#include <QHBoxLayout>
#include <QListWidget>
#include <QMenu>
#include <QPushButton>
#include <QSystemTrayIcon>
#include <QTimer>
#include <algorithm>

namespace {

constexpr int editorRow = 1;
constexpr int sidebarWidth = 190;
constexpr int sidebarPadding = 20; // horizontal padding in the style sheets, and the border

} // namespace

MainWindow::MainWindow(LicenceCheck& licence, const LicenceResult& result, QWidget* parent)
    : QMainWindow(parent), licenceCheck(&licence), licenceResult(result) {
    setWindowTitle(tr("Rotika"));
    resize(QSize(860, 560).boundedTo(maximumWindowSize(*this)));

    auto* central = new QWidget;
    auto* row = new QHBoxLayout(central);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(0);

    sidebar = new QListWidget;
    sidebar->setObjectName("Sidebar");
    sidebar->setAccessibleName(tr("Strony"));
    // Rows added before the style sheet is applied would keep the height of unstyled text.
    sidebar->ensurePolished();
    sidebar->addItems(
        {tr("Start"), tr("Koła wyboru"), tr("Komendy głosowe"), tr("Sterowanie wzrokiem"), tr("Ustawienia")});
    sidebar->setCurrentRow(0);
    // Wider only with fonts so large that the names would not fit.
    sidebar->setFixedWidth(std::max(sidebarWidth, sidebar->sizeHintForColumn(0) + sidebarPadding));
    makePages();
    connect(sidebar, &QListWidget::currentRowChanged, stack, &QStackedWidget::setCurrentIndex);
    row->addWidget(sidebar);
    row->addLayout(makePageColumn(), 1);
    setCentralWidget(central);

    createTray();
    refreshStatus();
    auto* poll = new QTimer(this);
    connect(poll, &QTimer::timeout, this, &MainWindow::refreshStatus);
    poll->start(statusPollPeriod);
}

void MainWindow::makePages() {
    stack = new PageStack;
    recoveryBar = new RecoveryBar;
    editorPage = new WheelEditorPage(*recoveryBar);
    stack->addWidget(makeDashboard());
    stack->addWidget(editorPage);
    stack->addWidget(new VoicePage([this](const QString& path) { openInEditor(path); }));
    stack->addWidget(new GazePage);
    stack->addWidget(makeSettingsPage());
}

/// The bar is above all pages: the program starts with the first one, and the user may work on any.
QLayout* MainWindow::makePageColumn() {
    connect(recoveryBar, &RecoveryBar::restoreRequested, this, [this] { sidebar->setCurrentRow(editorRow); });
    auto* column = new QVBoxLayout;
    column->setSpacing(0);
    column->addWidget(recoveryBar);
    column->addWidget(new PageArea(stack, recoveryBar, sidebar->width()), 1);
    return column;
}

QWidget* MainWindow::makeDashboard() {
    auto* left = new QVBoxLayout;
    left->setSpacing(10);
    if (!licenceResult.accountText.isEmpty())
        left->addWidget(makeStatusCard(tr("Konto"), licenceResult.accountText, "value"));
    left->addWidget(makeStatusCard(tr("Tobii Eye Tracker"), {}, "ok", &gazeLabel));
    left->addWidget(makeStatusCard(tr("Komendy głosowe"), {}, "ok", &voiceLabel));
    left->addWidget(makeStatusCard(tr("Konfiguracja kół"), {}, "value", &wheelCountLabel));
    left->addStretch();
    auto* toggle = new QPushButton(tr("Pokaż koło (X)"));
    toggle->setObjectName("Primary");
    toggle->setMinimumHeight(38);
    connect(toggle, &QPushButton::clicked, this, [] { OverlayToggleWheel(); });
    left->addWidget(toggle);

    dashboardPreview = new WheelPreview;
    dashboardPreview->setMinimumSize(240, 240);
    auto* right = new QVBoxLayout;
    right->addStretch();
    right->addWidget(dashboardPreview);
    right->addStretch();

    auto* page = new QWidget;
    auto* columns = new QHBoxLayout(page);
    columns->setContentsMargins(18, 18, 18, 18);
    columns->setSpacing(14);
    columns->addLayout(left, 1);
    columns->addLayout(right, 1);
    return page;
}

void MainWindow::createTray() {
    tray = new QSystemTrayIcon(QApplication::windowIcon(), this);
    tray->setToolTip(tr("Rotika"));
    auto* menu = new QMenu(this);
    menu->addAction(tr("Pokaż koło"), [] { OverlayToggleWheel(); });
    menu->addAction(tr("Pokaż okno"), this, &MainWindow::showAndActivate);
    menu->addSeparator();
    menu->addAction(tr("Zakończ"), qApp, &QCoreApplication::quit);
    tray->setContextMenu(menu);
    connect(tray, &QSystemTrayIcon::activated, this, [this](QSystemTrayIcon::ActivationReason reason) {
        if (reason == QSystemTrayIcon::DoubleClick)
            showAndActivate();
    });
    tray->setVisible(true);
}

void MainWindow::refreshStatus() {
    const int wheelCount = OverlayWheelCount();
    if (gazeLabel != nullptr)
        gazeLabel->setText(gazeStatusLine());
    if (voiceLabel != nullptr)
        voiceLabel->setText(voiceStatusLine());
    if (wheelCountLabel != nullptr)
        wheelCountLabel->setText(tr("%n koło(a)", nullptr, wheelCount));
    // A decoration that shows no particular wheel: twice as many fields as there are wheels.
    if (dashboardPreview != nullptr)
        dashboardPreview->setSegments(std::max(2 * wheelCount, 2));
}

void MainWindow::openInEditor(const QString& path) {
    editorPage->loadFile(path);
    sidebar->setCurrentRow(editorRow);
}

void MainWindow::keepUnsavedChanges() {
    editorPage->keepUnsavedChanges();
}

void MainWindow::showAndActivate() {
    showNormal();
    raise();
    activateWindow();
}

void MainWindow::closeEvent(QCloseEvent* event) {
    if (tray != nullptr && tray->isVisible()) {
        hide();
        event->ignore();
    } else {
        event->accept();
    }
}
