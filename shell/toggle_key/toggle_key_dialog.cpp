#include "shell/toggle_key/toggle_key_dialog.h"

#include "shell/base/json_file.h"
#include "shell/base/message_boxes.h"
#include "shell/toggle_key/key_capture_field.h"
#include "shell/toggle_key/toggle_key_names.h"

#include <QAbstractItemView>
#include <QComboBox>
#include <QCoreApplication>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>
#include <QPointer>
#include <QProcess>
#include <QPushButton>

namespace {

const QString configKey = QStringLiteral("toggleKey");
constexpr int noteLines = 3;

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
    note->setMinimumHeight(noteLines * fontMetrics().lineSpacing());
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
    selector->setAccessibleName(tr("Nowy klawisz z listy"));
    selector->setAccessibleDescription(selector->accessibleName());
    selector->view()->setAccessibleName(selector->accessibleName());
    form->addRow(note);
    form->addRow(buttons);
    setMinimumWidth(420);

    connect(field, &KeyCaptureField::captured, selector, &QComboBox::setCurrentText);
    connect(field, &KeyCaptureField::captured, this, &ToggleKeyDialog::explain);
    connect(field, &KeyCaptureField::unnamedKeyPressed, this, &ToggleKeyDialog::explainUnnamed);
    connect(selector, &QComboBox::currentTextChanged, this, &ToggleKeyDialog::explain);
    connect(buttons, &QDialogButtonBox::accepted, this, &ToggleKeyDialog::save);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
}

void ToggleKeyDialog::explain(const QString& name) {
    field->setText(name);
    QString text = tr("Innym programom klawisz %1 nie będzie służył, gdy Rotika działa.");
    if (name.size() == 1)
        text = name[0].isDigit() ? tr("Cyfry %1 nie wpiszesz, gdy program działa.")
                                 : tr("Litery %1 nie wpiszesz, gdy program działa.");
    showNote(text.arg(name) + '\n' + tr("Po zapisaniu program uruchomi się ponownie."));
}

void ToggleKeyDialog::explainUnnamed() {
    selector->setCurrentText(current);
    field->clear();
    showNote(tr("Ten klawisz nie ma nazwy w pliku config.json, więc nie może otwierać koła. Wybierz inny."));
}

/// Screen readers read the description of the field, not a text that changes elsewhere.
void ToggleKeyDialog::showNote(const QString& text) {
    note->setText(text);
    field->setAccessibleDescription(text);
}

void ToggleKeyDialog::save() {
    const QString name = selector->currentText();
    QJsonObject config = readConfigObject();
    config[configKey] = name;
    if (name.isEmpty() || name == current) {
        reject();
    } else if (!writeConfigObject(config) || readConfigObject() != config) {
        warn(tr("Nie udało się zapisać pliku config.json — może jest na dysku za mało miejsca albo plik jest "
                "chroniony. Koło nadal otwiera klawisz %1.")
                 .arg(current));
    } else if (!restart(!window.isVisible())) {
        warn(tr("Klawisz %1 jest zapisany. Zacznie otwierać koło, gdy zakończysz i ponownie uruchomisz "
                "program.")
                 .arg(name));
        accept();
    } else {
        accept();
    }
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
