#include "shell/base/cards.h"
#include "shell/base/settings.h"
#include "shell/base/themes.h"
#include "shell/base/wheel_preview.h"
#include "shell/main_window.h"
#include "shell/process/update_service.h"

#include <QButtonGroup>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>

// The main window's page "Ustawienia".

namespace {

/// A card with a title; `column` takes the content below it.
struct SettingsCard {
    QFrame* frame = nullptr;
    QVBoxLayout* column = nullptr;
};

SettingsCard makeSettingsCard(const QString& title) {
    auto* content = new QWidget;
    auto* column = new QVBoxLayout(content);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(8);
    column->addWidget(makeLabel(title, "value"));
    return {makeCard(content), column};
}

QLabel* makeSwatch(const ThemeInfo& theme) {
    auto* swatch = new QLabel;
    swatch->setFixedSize(46, 20);
    swatch->setStyleSheet(QStringLiteral("background:%1; border:1px solid %2; border-radius:4px;")
                              .arg(theme.hubColor.name(), theme.ringColor.name()));
    return swatch;
}

} // namespace

QWidget* MainWindow::makeSettingsPage() {
    auto* page = new QWidget;
    auto* column = new QVBoxLayout(page);
    column->setContentsMargins(18, 18, 18, 18);
    column->setSpacing(10);
    column->addWidget(makeLabel(tr("Ustawienia"), "pageTitle"));
    column->addWidget(makeThemeCard());
    if (!licenceResult.accountText.isEmpty())
        column->addWidget(makeAccountCard());
    column->addWidget(makeUpdateCard());
    column->addStretch();
    return page;
}

QWidget* MainWindow::makeThemeCard() {
    const SettingsCard card = makeSettingsCard(tr("Motyw interfejsu"));
    auto* choice = new QButtonGroup(card.frame);
    for (const ThemeInfo& theme : themes()) {
        auto* button = new QRadioButton(theme.displayName);
        button->setChecked(theme.themeId == currentThemeId());
        choice->addButton(button);
        connect(button, &QRadioButton::toggled, this, [this, theme](bool isOn) {
            if (isOn)
                chooseTheme(theme);
        });
        auto* row = new QHBoxLayout;
        row->addWidget(button);
        row->addWidget(makeSwatch(theme));
        row->addStretch();
        card.column->addLayout(row);
    }
    return card.frame;
}

void MainWindow::chooseTheme(const ThemeInfo& theme) {
    applyTheme(theme.themeId);
    uiSettings().setValue(themeKey, theme.themeId);
    for (WheelPreview* preview : findChildren<WheelPreview*>())
        preview->update(); // it takes its colours from the theme, not from the style sheet
}

QWidget* MainWindow::makeAccountCard() {
    const SettingsCard card = makeSettingsCard(tr("Konto"));
    card.column->addWidget(makeLabel(licenceResult.accountText, "cardTitle"));
    auto* logOut = new QPushButton(tr("Wyloguj"));
    connect(logOut, &QPushButton::clicked, this, [this] { licenceCheck->logOut(this); });
    card.column->addWidget(logOut, 0, Qt::AlignLeft);
    return card.frame;
}

QWidget* MainWindow::makeUpdateCard() {
    const SettingsCard card = makeSettingsCard(tr("Aktualizacje"));
    card.column->addWidget(makeLabel(tr("Zainstalowana wersja: %1").arg(ROTIKA_VERSION), "cardTitle"));
    // Without an update library the button would do nothing.
    if (updateServiceAvailable()) {
        auto* check = new QPushButton(tr("Sprawdź aktualizacje…"));
        connect(check, &QPushButton::clicked, this, [] { checkForUpdatesWithUi(); });
        card.column->addWidget(check, 0, Qt::AlignLeft);
    }
    return card.frame;
}
