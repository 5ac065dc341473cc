#include "shell/wheels/recovery_bar.h"

#include "shell/base/cards.h"
#include "shell/wheels/wheel_recovery.h"

#include <QAccessible>
#include <QBoxLayout>
#include <QFileInfo>
#include <QFrame>
#include <QLabel>
#include <QLocale>
#include <QPushButton>

namespace {

constexpr int buttonHeightPx = 36;

} // namespace

RecoveryBar::RecoveryBar(QWidget* parent) : QWidget(parent) {
    auto* around = new QVBoxLayout(this); // as the pages have it
    around->setContentsMargins(18, 14, 18, 0);
    auto* card = new QFrame;
    card->setObjectName("Card");
    around->addWidget(card);
    auto* column = new QVBoxLayout(card);
    column->setContentsMargins(14, 10, 14, 10);
    text = makeLabel({}, "value");
    text->setTextFormat(Qt::PlainText); // paths may contain HTML
    text->setWordWrap(true);
    column->addWidget(text);
    auto* row = new QHBoxLayout; // below the text, which needs all the width on a small screen
    column->addLayout(row);
    restore = addButton(*row, tr("Przywróć zmiany"));
    discard = addButton(*row, tr("Odrzuć zmiany"));
    dismiss = addButton(*row, tr("Zamknij"));
    row->addStretch();
    for (QPushButton* button : {restore, discard, dismiss})
        button->setMinimumHeight(buttonHeightPx);
    connect(restore, &QPushButton::clicked, this, &RecoveryBar::restoreRequested);
    connect(discard, &QPushButton::clicked, this, &RecoveryBar::discardRequested);
    connect(dismiss, &QPushButton::clicked, this, &QWidget::hide);
    hide();
}

void RecoveryBar::offer(const FoundRecovery& found, const QString& wheelFile) {
    const QString time = QLocale(QLocale::Polish).toString(found.time, QStringLiteral("d MMMM yyyy, HH:mm"));
    QString line =
        tr("Znaleziono niezapisane zmiany w pliku kół %1 (%2).").arg(QFileInfo(wheelFile).fileName(), time);
    if (found.fileHasChanged)
        line += ' ' + tr("Od tego czasu zmienił się też sam plik; jego obecna wersja zostanie przy zapisie "
                         "zachowana jako kopia.");
    if (!found.olderCopy.isEmpty())
        line += ' ' + tr("Starsze zmiany są w pliku %1.").arg(found.olderCopy);
    restore->setVisible(true);
    discard->setVisible(true);
    dismiss->setVisible(false);
    showText(line);
}

void RecoveryBar::reportSetAside(const QString& copy) {
    dismiss->setVisible(true);
    if (discard->hasFocus()) // a hidden button passes it on, and another press would do something else
        dismiss->setFocus();
    restore->setVisible(false);
    discard->setVisible(false);
    showText(copy.isEmpty() ? tr("Wcześniejszych niezapisanych zmian nie udało się przenieść do innego "
                                 "pliku, więc nowe nie są chronione "
                                 "do najbliższego otwarcia pliku.")
                            : tr("Wcześniejsze niezapisane zmiany są w pliku %1.").arg(copy));
}

/// Announced to screen readers: the focus stays where it is.
void RecoveryBar::showText(const QString& line) {
    text->setText(line);
    setAccessibleName(line);
    show();
    QAccessibleEvent alert(this, QAccessible::Alert);
    QAccessible::updateAccessibility(&alert);
}
