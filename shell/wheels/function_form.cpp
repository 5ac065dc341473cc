#include "shell/wheels/function_form.h"

#include "common/limits.h"
#include "shell/base/cards.h"
#include "shell/base/placeholder_edit.h"
#include "shell/base/themes.h"
#include "shell/wheels/color_dialog.h"
#include "shell/wheels/field_icons.h"
#include "shell/wheels/icon_picker_dialog.h"
#include "shell/wheels/wheel_document.h"

#include <QGridLayout>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalBlocker>
#include <QSpinBox>

FunctionForm::FunctionForm(QWidget* parent) : QWidget(parent) {
    nameEdit = new QLineEdit;
    voiceEdit = new PlaceholderEdit;
    voiceEdit->setPlaceholderText(tr("np. leczenie"));
    auto* form = new QGridLayout(this); // a grid aligns the rows of both columns
    form->setContentsMargins(0, 0, 0, 0);
    form->setSpacing(10);
    form->setColumnStretch(0, 3);
    form->setColumnStretch(1, 2);
    form->addWidget(makeFieldLabel(tr("Nazwa"), nameEdit), 0, 0); // Tab order is the order of adding
    form->addWidget(nameEdit, 1, 0);
    form->addWidget(makeFieldLabel(tr("Fraza głosowa"), voiceEdit), 2, 0);
    form->addWidget(voiceEdit, 3, 0);
    form->addWidget(makeLabel(tr("Ikona"), "cardTitle"), 0, 1);
    form->addLayout(makeIconRow(), 1, 1);
    form->addWidget(makeLabel(tr("Kolor pola / odstęp [ms]"), "cardTitle"), 2, 1);
    form->addLayout(makeColorRow(), 3, 1);
    showIcon({});
    showColor({});

    const auto reportEdit = [this] { emit edited(nameEdit->text(), voiceEdit->text(), delaySpin->value()); };
    connect(nameEdit, &QLineEdit::textEdited, this, reportEdit);
    connect(voiceEdit, &QLineEdit::textEdited, this, reportEdit);
    connect(delaySpin, &QSpinBox::valueChanged, this, reportEdit);
    connect(colorButton, &QPushButton::clicked, this, &FunctionForm::pickColor);
    connect(iconButton, &QPushButton::clicked, this, &FunctionForm::pickIcon);
}

QLayout* FunctionForm::makeIconRow() {
    iconLabel = new QLabel;
    iconLabel->setFixedSize(34, 34);
    iconLabel->setScaledContents(true);
    iconButton = new QPushButton;
    auto* row = new QHBoxLayout;
    row->addWidget(iconLabel);
    row->addWidget(iconButton, 1);
    return row;
}

QLayout* FunctionForm::makeColorRow() {
    colorButton = new QPushButton;
    // Wide enough for any colour, so that the other fields do not move when the selection changes.
    colorButton->ensurePolished();
    colorButton->setText(QStringLiteral("#DDDDDD"));
    colorButton->setMinimumWidth(colorButton->sizeHint().width());
    delaySpin = new QSpinBox;
    delaySpin->setAccessibleName(tr("Odstęp między krokami w milisekundach"));
    delaySpin->setRange(0, maxDelayMs);
    delaySpin->setValue(defaultDelayMs);
    auto* row = new QHBoxLayout;
    row->addWidget(colorButton, 1);
    row->addWidget(delaySpin);
    return row;
}

void FunctionForm::setWheelFolder(const QDir& folder) {
    folders = iconFolders(folder);
}

void FunctionForm::showFunction(const EditorFunction& function) {
    nameEdit->setText(function.name);
    voiceEdit->setText(function.voice);
    for (QLineEdit* edit : {nameEdit, voiceEdit})
        edit->home(false); // shows the beginning of a long text
    const QSignalBlocker blocker(delaySpin);
    delaySpin->setValue(function.delay);
    showColor(function.color);
    showIcon(function.icon);
}

void FunctionForm::clear() {
    nameEdit->clear();
    voiceEdit->clear();
    iconLabel->setPixmap({});
}

void FunctionForm::focusName() {
    nameEdit->setFocus();
    nameEdit->selectAll();
}

void FunctionForm::showColor(const QColor& color) {
    shownColor = color;
    const QString name = color.isValid() ? color.name().toUpper() : tr("domyślny");
    colorButton->setText(name);
    colorButton->setAccessibleName(tr("Kolor pola: %1").arg(name));
    colorButton->setStyleSheet(color.isValid()
                                   ? QStringLiteral("background:%1; color:%2;")
                                         .arg(color.name(), color.lightness() > 128 ? "#000" : "#FFF")
                                   : QString());
}

void FunctionForm::showIcon(const QString& icon) {
    shownIcon = icon;
    iconLabel->setPixmap(icon.isEmpty() ? QPixmap() : QPixmap(iconFile(folders, icon)));
    const QString name = icon.isEmpty() ? tr("Wybierz…") : iconNameOf(icon);
    iconButton->setText(name);
    iconButton->setAccessibleName(tr("Ikona: %1").arg(name));
}

void FunctionForm::pickColor() {
    const QColor start = shownColor.isValid() ? shownColor : themeInfo(currentThemeId()).ringColor;
    // Cancelling yields an invalid colour, which is how the user returns to the wheel's own.
    emit colorChosen(askColor(this, tr("Kolor pola"), start));
}

void FunctionForm::pickIcon() {
    IconPickerDialog picker(folders, this);
    picker.select(shownIcon);
    if (picker.exec() == QDialog::Accepted)
        emit iconChosen(picker.chosenIcon());
}
