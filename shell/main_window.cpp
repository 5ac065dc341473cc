#include "shell/main_window.h"

#include "engine/core/overlay.h"
#include "shell/base/cards.h"
#include "shell/base/engine_status.h"
#include "shell/base/shortcuts.h"
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

/// The first that Tab would reach.
QWidget* firstControlIn(const QWidget* part) {
    for (QWidget* widget = part->nextInFocusChain(); part->isAncestorOf(widget);
         widget = widget->nextInFocusChain())
        if ((widget->focusPolicy() & Qt::TabFocus) != 0 && widget->isEnabled() && widget->isVisible())
            return widget;
    return nullptr;
}

/// Gives the focus to the part or its first control. A focus proxy would make both report the focus.
void focusPart(QWidget* part) {
    if (QWidget* control = part->focusPolicy() == Qt::NoFocus ? firstControlIn(part) : part)
        control->setFocus(Qt::ShortcutFocusReason);
}

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
    createShortcuts();
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

void MainWindow::createShortcuts() {
    qApp->installEventFilter(new KeyRules(this));
    for (int row = 0; row < stack->count(); ++row) {
        const QKeySequence keys = QKeyCombination(Qt::CTRL, static_cast<Qt::Key>(Qt::Key_1 + row));
        addShortcut(this, keys, [this, row] { showPage(row); });
        QListWidgetItem* item = sidebar->item(row);
        item->setToolTip(QStringLiteral("%1 (%2)").arg(item->text(), shortcutText(keys)));
        item->setData(Qt::AccessibleDescriptionRole, shortcutText(keys));
        stack->widget(row)->setAccessibleName(item->text()); // announced with the control that gets the focus
    }
    addShortcut(
        sidebar, Qt::Key_Return, [this] { showPage(sidebar->currentRow()); }, Qt::WidgetShortcut);
    editorPage->addFileShortcuts(this, [this] { sidebar->setCurrentRow(editorRow); });
    addShortcut(this, Qt::Key_F6, [this] { focusNextPart(1); });
    addShortcut(this, Qt::SHIFT | Qt::Key_F6, [this] { focusNextPart(-1); });
    addShortcut(this, Qt::CTRL | Qt::Key_Q, [] { QCoreApplication::quit(); });
}

void MainWindow::showPage(int row) {
    sidebar->setCurrentRow(row);
    focusPart(row == editorRow ? editorPage->enabledParts().value(0, editorPage) : stack->widget(row));
}

void MainWindow::focusNextPart(int direction) {
    QList<QWidget*> parts{sidebar};
    if (recoveryBar->isVisible())
        parts.append(recoveryBar);
    const auto pageStart = parts.size();
    parts.append(stack->currentWidget() == editorPage ? editorPage->enabledParts() : QList<QWidget*>());
    if (parts.size() == pageStart)
        parts.append(stack->currentWidget());
    const QWidget* focused = focusWidget();
    const auto holdsFocus = [&](const QWidget* part) {
        return part == focused || part->isAncestorOf(focused);
    };
    const auto current = std::find_if(parts.begin(), parts.end(), holdsFocus);
    // Other controls, such as "Zapisz", are at the beginning of their page.
    const auto next =
        current != parts.end() ? current - parts.begin() + direction : pageStart - (direction < 0 ? 1 : 0);
    focusPart(parts[(next + parts.size()) % parts.size()]);
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
