#include "common/limits.h"
#include "shell/cards.h"
#include "shell/elided_label.h"
#include "shell/wheel_editor_page.h"
#include "shell/wheel_preview.h"

#include <QAbstractItemView>
#include <QBoxLayout>
#include <QComboBox>
#include <QGridLayout>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QSpinBox>
#include <QStackedWidget>
#include <QTreeWidget>

// How the editor page is laid out; what it does is in wheel_editor_page.cpp.

namespace {

/// The keys on offer; any other token can be typed.
QStringList offeredKeys() {
    QStringList keys{"1", "2", "3", "4", "5", "6", "7", "8", "9", "0"};
    for (const QChar letter : QStringLiteral("qwertyuiopasdfghjklzxcvbnm"))
        keys.append(letter);
    for (int i = 1; i <= 12; ++i)
        keys.append(QStringLiteral("F%1").arg(i));
    return keys + QStringList{"space",     "enter",     "esc",         "tab",      "backspace",  "shift",
                              "ctrl",      "alt",       "win",         "capslock", "up",         "down",
                              "left",      "right",     "insert",      "delete",   "home",       "end",
                              "pageup",    "pagedown",  "printscreen", "volumeup", "volumedown", "volumemute",
                              "playpause", "nexttrack", "prevtrack",   "lmb",      "rmb",        "mmb",
                              "mb4",       "mb5"};
}

/// Names the widget for a screen reader as well.
QLabel* makeFieldLabel(const QString& text, QWidget* of) {
    QLabel* label = makeLabel(text, "cardTitle");
    label->setBuddy(of);
    of->setAccessibleName(text); // lists do not take it from their label
    return label;
}

/// A selector's name is its choice on some systems, and only the description is left to say what it is.
void nameSelector(QComboBox* combo, const QString& name) {
    combo->setAccessibleName(name);
    combo->setAccessibleDescription(name);
    combo->view()->setAccessibleName(name);
    if (combo->lineEdit() != nullptr) // which has the focus in its place
        combo->lineEdit()->setAccessibleName(name);
}

QHBoxLayout* makeRow(const QMargins& margins = {}) {
    auto* row = new QHBoxLayout;
    row->setContentsMargins(margins);
    return row;
}

} // namespace

WheelEditorPage::WheelEditorPage(QWidget* parent) : QWidget(parent) {
    auto* page = new QVBoxLayout(this);
    page->setContentsMargins(18, 14, 18, 14);
    page->setSpacing(10);
    page->addLayout(makeFileRow());
    auto* body = makeRow();
    body->setSpacing(12);
    body->addLayout(makeTreeColumn());
    detailsPanel = makeDetails();
    body->addWidget(detailsPanel, 1);
    body->addLayout(makePreviewColumn());
    page->addLayout(body, 1);
    connectForm();
    openLastFile();
}

QBoxLayout* WheelEditorPage::makeFileRow() {
    auto* row = makeRow();
    const auto addButton = [&](const QString& text) {
        auto* button = new QPushButton(text);
        row->addWidget(button);
        return button;
    };
    connect(addButton(tr("Otwórz…")), &QPushButton::clicked, this, &WheelEditorPage::openFile);
    connect(addButton(tr("Zapisz")), &QPushButton::clicked, this, [this] { saveFile(false); });
    connect(addButton(tr("Zapisz jako…")), &QPushButton::clicked, this, [this] { saveFile(true); });
    QPushButton* activate = addButton(tr("Aktywuj"));
    activate->setObjectName("Primary");
    connect(activate, &QPushButton::clicked, this, &WheelEditorPage::activateOnEngine);
    row->addSpacing(10);
    fileLabel = new ElidedLabel(tr("(nie wczytano pliku)"), Qt::ElideMiddle);
    fileLabel->setProperty("role", "cardTitle");
    row->addWidget(fileLabel, 1);
    return row;
}

QBoxLayout* WheelEditorPage::makeTreeColumn() {
    auto* column = new QVBoxLayout;
    tree = new QTreeWidget;
    tree->setAccessibleName(tr("Koła i funkcje"));
    tree->setHeaderHidden(true);
    // As wide as this, or as the buttons below where large letters make them wider.
    tree->setMinimumWidth(230);
    tree->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Expanding);
    tree->setUniformRowHeights(true);
    tree->ensurePolished(); // or rows made before the style sheet reaches it keep the height of bare text
    connect(tree, &QTreeWidget::itemSelectionChanged, this, &WheelEditorPage::onTreeSelection);
    column->addWidget(tree, 1);
    auto* row = makeRow();
    const auto addButton = [&](const QString& text, const QString& spokenName, auto slot) {
        auto* button = new QPushButton(text);
        button->setAccessibleName(spokenName);
        connect(button, &QPushButton::clicked, this, slot);
        row->addWidget(button);
    };
    addButton(tr("+ koło"), tr("Dodaj koło"), &WheelEditorPage::addWheel);
    addButton(tr("+ funkcja"), tr("Dodaj funkcję"), &WheelEditorPage::addAction);
    addButton(tr("Usuń"), tr("Usuń koło lub funkcję"), &WheelEditorPage::removeSelected);
    column->addLayout(row);
    return column;
}

QWidget* WheelEditorPage::makeDetails() {
    auto* panel = new QWidget;
    panel->setEnabled(false);
    auto* column = new QVBoxLayout(panel);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(8);
    column->addLayout(makeFieldForm());
    stepList = new QListWidget;
    stepList->setMinimumHeight(120);
    stepList->ensurePolished(); // as the tree
    column->addWidget(makeFieldLabel(tr("Czynności (kroki sekwencji)"), stepList));
    column->addWidget(stepList, 1);
    column->addLayout(makeStepRow());
    column->addLayout(makeStepButtons());
    return panel;
}

QLayout* WheelEditorPage::makeFieldForm() {
    nameEdit = new QLineEdit;
    voiceEdit = new QLineEdit;
    voiceEdit->setPlaceholderText(tr("np. leczenie"));

    iconLabel = new QLabel;
    iconLabel->setFixedSize(34, 34);
    iconLabel->setScaledContents(true);
    iconButton = new QPushButton;
    auto* iconRow = makeRow();
    iconRow->addWidget(iconLabel);
    iconRow->addWidget(iconButton, 1);
    colorButton = new QPushButton;
    // As wide as for any colour's name, or the fields beside it would move with the selection.
    colorButton->ensurePolished();
    colorButton->setText(QStringLiteral("#DDDDDD"));
    colorButton->setMinimumWidth(colorButton->sizeHint().width());
    showIcon({});
    showColor({});
    delaySpin = new QSpinBox;
    delaySpin->setAccessibleName(tr("Odstęp między krokami w milisekundach"));
    delaySpin->setRange(0, maxDelayMs);
    delaySpin->setValue(defaultDelayMs);
    auto* colorRow = makeRow();
    colorRow->addWidget(colorButton, 1);
    colorRow->addWidget(delaySpin);

    auto* form = new QGridLayout; // the pairs of labels, and of fields, stand level
    form->setSpacing(10);
    form->setColumnStretch(0, 3);
    form->setColumnStretch(1, 2);
    form->addWidget(makeFieldLabel(tr("Nazwa"), nameEdit), 0, 0); // Tab follows the order of adding
    form->addWidget(nameEdit, 1, 0);
    form->addWidget(makeFieldLabel(tr("Fraza głosowa"), voiceEdit), 2, 0);
    form->addWidget(voiceEdit, 3, 0);
    form->addWidget(makeLabel(tr("Ikona"), "cardTitle"), 0, 1);
    form->addLayout(iconRow, 1, 1);
    form->addWidget(makeLabel(tr("Kolor pola / odstęp [ms]"), "cardTitle"), 2, 1);
    form->addLayout(colorRow, 3, 1);
    return form;
}

QBoxLayout* WheelEditorPage::makeStepRow() {
    stepKindCombo = new QComboBox;
    nameSelector(stepKindCombo, tr("Rodzaj kroku"));
    stepKindCombo->addItems({tr("klik"), tr("przytrzymaj"), tr("puść"), tr("otwórz")});
    openEdit = new QLineEdit;
    openEdit->setAccessibleName(tr("Adres lub program do otwarcia"));
    openEdit->setPlaceholderText(tr("https://… albo program.exe"));
    auto* openPage = new QWidget;
    auto* openRow = new QHBoxLayout(openPage);
    openRow->setContentsMargins(0, 0, 0, 0);
    openRow->addWidget(openEdit);
    stepStack = new QStackedWidget;
    stepStack->setMinimumHeight(34);
    stepStack->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    stepStack->addWidget(makeKeyRow());
    stepStack->addWidget(openPage);
    auto* row = makeRow();
    row->addWidget(stepKindCombo);
    row->addWidget(stepStack, 1);
    return row;
}

QWidget* WheelEditorPage::makeKeyRow() {
    keyCombo = new QComboBox;
    keyCombo->setEditable(true);
    nameSelector(keyCombo, tr("Klawisz lub przycisk myszy"));
    keyCombo->setInsertPolicy(QComboBox::NoInsert); // what is typed is a step's, not the list's
    keyCombo->addItems(offeredKeys());
    stepValueSpin = new QSpinBox;
    stepValueSpin->setAccessibleName(tr("Liczba kliknięć albo czas w milisekundach"));
    stepValueSpin->setRange(0, maxHoldMs);
    stepValueSpin->setValue(1);
    auto* page = new QWidget;
    auto* row = new QHBoxLayout(page);
    row->setContentsMargins(0, 0, 0, 0);
    row->addWidget(keyCombo, 1);
    row->addWidget(stepValueSpin);
    return page;
}

QBoxLayout* WheelEditorPage::makeStepButtons() {
    auto* row = makeRow();
    const auto addButton = [&](const QString& text) {
        auto* button = new QPushButton(text);
        row->addWidget(button);
        return button;
    };
    connect(addButton(tr("Dodaj krok")), &QPushButton::clicked, this, &WheelEditorPage::stepAdd);
    connect(addButton(tr("Zamień")), &QPushButton::clicked, this, &WheelEditorPage::stepReplace);
    connect(addButton(tr("Usuń krok")), &QPushButton::clicked, this, &WheelEditorPage::stepRemove);
    row->addStretch();
    QPushButton* up = addButton(tr("▲"));
    up->setAccessibleName(tr("Przesuń krok wyżej"));
    up->setFixedWidth(36);
    connect(up, &QPushButton::clicked, this, [this] { stepMove(-1); });
    QPushButton* down = addButton(tr("▼"));
    down->setAccessibleName(tr("Przesuń krok niżej"));
    down->setFixedWidth(36);
    connect(down, &QPushButton::clicked, this, [this] { stepMove(1); });
    return row;
}

QBoxLayout* WheelEditorPage::makePreviewColumn() {
    auto* column = new QVBoxLayout;
    previewTitle = new ElidedLabel({}, Qt::ElideRight);
    previewTitle->setProperty("role", "value");
    previewTitle->setAlignment(Qt::AlignCenter);
    preview = new WheelPreview;
    preview->setFixedSize(240, 240);
    column->addWidget(previewTitle);
    column->addWidget(preview);
    column->addStretch();
    return column;
}

void WheelEditorPage::connectForm() {
    connect(nameEdit, &QLineEdit::textEdited, this, &WheelEditorPage::commitFields);
    connect(voiceEdit, &QLineEdit::textEdited, this, &WheelEditorPage::commitFields);
    connect(delaySpin, &QSpinBox::valueChanged, this, &WheelEditorPage::commitFields);
    connect(colorButton, &QPushButton::clicked, this, &WheelEditorPage::pickColor);
    connect(iconButton, &QPushButton::clicked, this, &WheelEditorPage::pickIcon);
    connect(stepList, &QListWidget::itemSelectionChanged, this, &WheelEditorPage::onStepSelection);
    connect(stepKindCombo, &QComboBox::currentIndexChanged, this, &WheelEditorPage::onStepKind);
}
