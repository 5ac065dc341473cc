#include "shell/toggle_key/toggle_key_dialog.h"

#include "shell/base/cards.h"
#include "shell/base/json_file.h"
#include "shell/base/message_boxes.h"
#include "shell/toggle_key/key_capture_field.h"
#include "shell/toggle_key/toggle_key_names.h"

#include <QComboBox>
#include <QCoreApplication>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>
#include <QPointer>
#include <QProcess>
#include <QPushButton>
#include <algorithm>
#include <utility>

namespace {

const QString configKey = QStringLiteral("toggleKey");

/// Keys that dialogs and texts depend on, and what nobody can do without them.
constexpr std::pair<const char*, const char*> neededKeys[] = {
    {"enter", "nie zatwierdzisz okien"},
    {"space", "nie naciśniesz przycisków ani nie wpiszesz odstępu"},
    {"tab", "nie przejdziesz do następnego pola"},
    {"esc", "nie zamkniesz okien i menu"},
    {"backspace", "nie poprawisz tekstu"},
    {"up", "nie przejdziesz w górę list, menu i tekstu"},
    {"down", "nie przejdziesz w dół list, menu i tekstu"},
    {"left", "nie przejdziesz w lewo w tekście i menu"},
    {"right", "nie przejdziesz w prawo w tekście i menu"},
};

QString noteFor(const QString& name) {
    QString text =
        QStringLiteral("Innym programom klawisz %1 nie będzie służył, gdy Rotika działa.").arg(name);
    if (name.size() == 1)
        text = (name[0].isDigit() ? QStringLiteral("Cyfry %1 nie wpiszesz, gdy program działa.")
                                  : QStringLiteral("Litery %1 nie wpiszesz, gdy program działa."))
                   .arg(name);
    for (const auto& [key, loss] : neededKeys)
        if (name == QLatin1String(key))
            text = QStringLiteral("Uwaga! Bez klawisza %1 %2 w żadnym programie, gdy Rotika działa. Lepiej "
                                  "wybierz inny.")
                       .arg(name, QString::fromUtf8(loss));
    return text + '\n' + QStringLiteral("Po zapisaniu program uruchomi się ponownie.");
}

QString unnamedNote() {
    return QStringLiteral(
        "Ten klawisz nie ma nazwy w pliku config.json, więc nie może otwierać koła. Wybierz "
        "inny.");
}

/// The engine uses x for a name that it does not know, and knows single characters too.
QString keyInForce() {
    const QString written = readConfigObject()[configKey].toString(QStringLiteral("x")).trimmed();
    const QString name = toggleKeyNameOf(written);
    return !name.isEmpty() ? name : written.size() == 1 ? written : QStringLiteral("x");
}

bool restart(bool isMinimized) {
    QStringList words{QStringLiteral("--restart")};
    if (isMinimized)
        words.append(QStringLiteral("--minimized"));
    return QProcess::startDetached(QCoreApplication::applicationFilePath(), words);
}

} // namespace

ToggleKeyDialog::ToggleKeyDialog(QWidget& mainWindow)
    : QDialog(mainWindow.isVisible() && !mainWindow.isMinimized() ? &mainWindow : nullptr),
      window(mainWindow), current(keyInForce()) {
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowTitle(tr("Klawisz koła"));
    setWindowModality(Qt::ApplicationModal);
    field = new KeyCaptureField;
    field->setPlaceholderText(tr("naciśnij nowy klawisz"));
    selector = new QComboBox;
    selector->addItems(toggleKeyNames());
    selector->setCurrentIndex(selector->findText(current, Qt::MatchFixedString));
    note = new QLabel;
    note->setWordWrap(true);
    note->setAlignment(Qt::AlignTop | Qt::AlignLeft);
    auto* buttons = new QDialogButtonBox;
    buttons->addButton(tr("Zapisz"), QDialogButtonBox::AcceptRole);
    buttons->addButton(tr("Anuluj"), QDialogButtonBox::RejectRole);
    auto* form = new QFormLayout(this);
    form->addRow(tr("Teraz koło otwiera:"), new QLabel(tr("klawisz %1").arg(current)));
    const auto addRow = [form](const QString& label, QWidget* control) {
        control->setAccessibleName(label.chopped(1));
        form->addRow(label, control);
    };
    addRow(tr("Nowy klawisz:"), field);
    addRow(tr("albo z listy:"), selector);
    nameSelector(selector, tr("Nowy klawisz z listy"));
    form->addRow(note);
    form->addRow(buttons);
    setMinimumWidth(420);
    reserveNote();

    connect(field, &KeyCaptureField::captured, selector, &QComboBox::setCurrentText);
    connect(field, &KeyCaptureField::captured, this, &ToggleKeyDialog::explain);
    connect(field, &KeyCaptureField::unnamedKeyPressed, this, &ToggleKeyDialog::explainUnnamed);
    connect(selector, &QComboBox::currentTextChanged, this, &ToggleKeyDialog::explain);
    connect(buttons, &QDialogButtonBox::accepted, this, &ToggleKeyDialog::save);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
}

void ToggleKeyDialog::explain(const QString& name) {
    field->setText(name);
    showNote(noteFor(name));
}

void ToggleKeyDialog::explainUnnamed() {
    selector->setCurrentText(current);
    field->clear();
    showNote(unnamedNote());
}

/// For the tallest text at the smallest width, so that no text is cut or changes the dialog's size.
void ToggleKeyDialog::reserveNote() {
    ensurePolished();
    note->ensurePolished();
    const QMargins margins = layout()->contentsMargins();
    const int width =
        std::max(minimumWidth(), layout()->totalMinimumSize().width()) - margins.left() - margins.right();
    int height = 0;
    QStringList texts{unnamedNote()};
    for (const QString& name : toggleKeyNames())
        texts.append(noteFor(name));
    for (const QString& text : texts) {
        note->setText(text);
        height = std::max(height, note->heightForWidth(width));
    }
    note->clear();
    note->setMinimumHeight(height);
}

/// Screen readers read the description of the field, not a text that changes elsewhere.
void ToggleKeyDialog::showNote(const QString& text) {
    note->setText(text);
    field->setAccessibleDescription(text);
}

void ToggleKeyDialog::save() {
    const QString name = selector->currentText();
    QString backup;
    QJsonObject config = readConfigObject();
    config[configKey] = name;
    if (name.isEmpty() || name == current) {
        reject();
    } else if (!writeConfigObject(config, &backup) || readConfigObject() != config) {
        warn(tr("Nie udało się zapisać pliku config.json — może jest na dysku za mało miejsca albo plik jest "
                "chroniony. Koło nadal otwiera klawisz %1.")
                 .arg(current));
    } else {
        if (!backup.isEmpty())
            warn(configBackupText(backup));
        restartWith(name);
    }
}

void ToggleKeyDialog::restartWith(const QString& name) {
    if (!restart(!window.isVisible()))
        warn(tr("Klawisz %1 jest zapisany. Zacznie otwierać koło, gdy zakończysz i ponownie uruchomisz "
                "program.")
                 .arg(name));
    accept();
}

void ToggleKeyDialog::warn(const QString& text) {
    makeBox(this, QMessageBox::Warning, windowTitle(), text)->exec();
}

void chooseToggleKey(QWidget& mainWindow) {
    static QPointer<ToggleKeyDialog> dialog;
    if (!dialog)
        dialog = new ToggleKeyDialog(mainWindow);
    dialog->show();
    dialog->raise();
    dialog->activateWindow();
}
