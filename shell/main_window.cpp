#include "shell/main_window.h"

#include "engine/overlay.h"

#include <QApplication>
#include <QCloseEvent>
#include <QFrame>
#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QMenu>
#include <QPushButton>
#include <QStackedWidget>
#include <QSystemTrayIcon>
#include <QTimer>
#include <QVBoxLayout>
#include <chrono>

namespace {

constexpr std::chrono::milliseconds pollPeriod{1500};

QString engineText(const OverlayChar* text) {
    return QStringView(text).toString();
}

QLabel* makeLabel(const QString& text, const char* role) {
    auto* label = new QLabel(text);
    label->setProperty("role", role);
    return label;
}

QFrame* makeStatusCard(const QString& title, const QString& text, const char* role,
                       QLabel** labelOut = nullptr) {
    auto* card = new QFrame;
    card->setObjectName("Card");
    auto* column = new QVBoxLayout(card);
    column->setContentsMargins(14, 10, 14, 10);
    column->setSpacing(2);
    column->addWidget(makeLabel(title, "cardTitle"));
    QLabel* value = makeLabel(text, role);
    column->addWidget(value);
    if (labelOut != nullptr)
        *labelOut = value;
    return card;
}

} // namespace

MainWindow::MainWindow(LicenceCheck& licence, const LicenceResult& result, QWidget* parent)
    : QMainWindow(parent), licenceCheck(&licence), licenceResult(result) {
    setWindowTitle(tr("Rotika"));
    resize(860, 560);

    auto* central = new QWidget;
    auto* row = new QHBoxLayout(central);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(0);

    sidebar = new QListWidget;
    sidebar->setObjectName("Sidebar");
    sidebar->setFixedWidth(190);
    // Rows that are laid out before the style sheet has reached the list keep the height of bare text.
    sidebar->ensurePolished();
    sidebar->addItem(tr("Start"));
    sidebar->setCurrentRow(0);
    stack = new QStackedWidget;
    stack->addWidget(makeDashboard());
    connect(sidebar, &QListWidget::currentRowChanged, stack, &QStackedWidget::setCurrentIndex);

    row->addWidget(sidebar);
    row->addWidget(stack, 1);
    setCentralWidget(central);

    createTray();
    refreshStatus();
    auto* poll = new QTimer(this);
    connect(poll, &QTimer::timeout, this, &MainWindow::refreshStatus);
    poll->start(pollPeriod);
}

QWidget* MainWindow::makeDashboard() {
    auto* page = new QWidget;
    auto* column = new QVBoxLayout(page);
    column->setContentsMargins(18, 18, 18, 18);
    column->setSpacing(10);
    if (!licenceResult.accountText.isEmpty())
        column->addWidget(makeStatusCard(tr("Konto"), licenceResult.accountText, "value"));
    column->addWidget(makeStatusCard(tr("Tobii Eye Tracker"), {}, "ok", &gazeLabel));
    column->addWidget(makeStatusCard(tr("Komendy głosowe"), {}, "ok", &voiceLabel));
    column->addWidget(makeStatusCard(tr("Konfiguracja kół"), {}, "value", &wheelCountLabel));
    column->addStretch();

    auto* toggle = new QPushButton(tr("Pokaż koło (X)"));
    toggle->setObjectName("Primary");
    toggle->setMinimumHeight(38);
    connect(toggle, &QPushButton::clicked, this, [] { OverlayToggleWheel(); });
    column->addWidget(toggle);
    auto* quit = new QPushButton(tr("Zakończ"));
    connect(quit, &QPushButton::clicked, qApp, &QCoreApplication::quit);
    column->addWidget(quit);
    return page;
}

void MainWindow::createTray() {
    tray = new QSystemTrayIcon(QApplication::windowIcon(), this);
    tray->setToolTip(tr("Rotika"));
    auto* menu = new QMenu(this);
    menu->addAction(tr("Pokaż koło"), [] { OverlayToggleWheel(); });
    menu->addAction(tr("Pokaż okno"), this, &MainWindow::bringUp);
    menu->addSeparator();
    menu->addAction(tr("Zakończ"), qApp, &QCoreApplication::quit);
    tray->setContextMenu(menu);
    connect(tray, &QSystemTrayIcon::activated, this, [this](QSystemTrayIcon::ActivationReason reason) {
        if (reason == QSystemTrayIcon::DoubleClick)
            bringUp();
    });
    tray->setVisible(true);
}

void MainWindow::refreshStatus() {
    if (gazeLabel != nullptr)
        gazeLabel->setText(engineText(OverlayGazeStatus()));
    if (voiceLabel != nullptr)
        voiceLabel->setText(
            tr("%1 · %2 fraz").arg(engineText(OverlayVoiceStatus())).arg(OverlayVoicePhraseCount()));
    if (wheelCountLabel != nullptr)
        wheelCountLabel->setText(tr("%n koło(a)", nullptr, OverlayWheelCount()));
}

void MainWindow::bringUp() {
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
