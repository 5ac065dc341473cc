#include "shell/wheels/step_editor.h"

#include "common/limits.h"
#include "shell/base/cards.h"
#include "shell/base/placeholder_edit.h"
#include "shell/base/shortcuts.h"

#include <QBoxLayout>
#include <QComboBox>
#include <QKeyEvent>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QSignalBlocker>
#include <QSpinBox>
#include <QStackedWidget>
#include <algorithm>

namespace {

constexpr int keyPage = 0; // of the step stack
constexpr int openPage = 1;

/// The items of the key selector, in which any other key name can be typed.
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

} // namespace

StepEditor::StepEditor(QWidget* parent) : QWidget(parent) {
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(8);
    stepList = new QListWidget;
    stepList->setMinimumHeight(120);
    stepList->ensurePolished(); // or rows added before the style sheet is applied keep the wrong height
    connect(stepList, &QListWidget::itemSelectionChanged, this, &StepEditor::onStepSelection);
    column->addWidget(makeFieldLabel(tr("Czynności (kroki sekwencji)"), stepList));
    column->addWidget(stepList, 1);
    column->addLayout(makeStepRow());
    column->addLayout(makeButtonRow());
    for (QWidget* field : {static_cast<QWidget*>(keyCombo), static_cast<QWidget*>(stepValueSpin),
                           static_cast<QWidget*>(openEdit)})
        field->installEventFilter(this);
}

QLayout* StepEditor::makeStepRow() {
    stepKindCombo = new QComboBox;
    nameSelector(stepKindCombo, tr("Rodzaj kroku"));
    stepKindCombo->addItems({tr("klik"), tr("przytrzymaj"), tr("puść"), tr("otwórz")});
    connect(stepKindCombo, &QComboBox::currentIndexChanged, this, &StepEditor::onStepKind);
    openEdit = new PlaceholderEdit;
    openEdit->setAccessibleName(tr("Adres lub program do otwarcia"));
    openEdit->setPlaceholderText(tr("https://… albo program.exe"));
    auto* page = new QWidget;
    auto* pageRow = new QHBoxLayout(page);
    pageRow->setContentsMargins(0, 0, 0, 0);
    pageRow->addWidget(openEdit);
    stepStack = new QStackedWidget;
    stepStack->setMinimumHeight(34);
    stepStack->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    stepStack->insertWidget(keyPage, makeKeyPage());
    stepStack->insertWidget(openPage, page);
    auto* row = new QHBoxLayout;
    row->addWidget(stepKindCombo);
    row->addWidget(stepStack, 1);
    return row;
}

QWidget* StepEditor::makeKeyPage() {
    keyCombo = new QComboBox;
    keyCombo->setEditable(true);
    nameSelector(keyCombo, tr("Klawisz lub przycisk myszy"));
    keyCombo->setInsertPolicy(QComboBox::NoInsert); // a typed key is not added to the items
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

QLayout* StepEditor::makeButtonRow() {
    auto* row = new QHBoxLayout;
    const auto addArrow = [&](const QString& text, const QString& spokenName, int delta, Qt::Key key) {
        QPushButton* button = addButton(*row, text);
        button->setAccessibleName(spokenName);
        button->setFixedWidth(36);
        connect(button, &QPushButton::clicked, this, [this, delta] { stepMove(delta); });
        describeShortcut(button, Qt::CTRL | key);
        addShortcut(
            this, Qt::CTRL | key, [this, delta] { stepMove(delta); }, Qt::WidgetWithChildrenShortcut);
    };
    QPushButton* add = addButton(*row, tr("Dodaj krok"));
    connect(add, &QPushButton::clicked, this, &StepEditor::stepAdd);
    connect(addButton(*row, tr("Zamień")), &QPushButton::clicked, this, &StepEditor::stepReplace);
    QPushButton* remove = addButton(*row, tr("Usuń krok"));
    connect(remove, &QPushButton::clicked, this, &StepEditor::stepRemove);
    row->addStretch();
    addArrow(tr("▲"), tr("Przesuń krok wyżej"), -1, Qt::Key_Up);
    addArrow(tr("▼"), tr("Przesuń krok niżej"), 1, Qt::Key_Down);
    addShortcut(add, Qt::CTRL | Qt::Key_Return);
    describeShortcut(remove, Qt::Key_Delete);
    addShortcut(
        stepList, Qt::Key_Delete, [this] { stepRemove(); }, Qt::WidgetShortcut);
    return row;
}

/// Enter in a field of the step adds it. Ctrl+Up and Ctrl+Down stay the field's own keys: moving a step puts
/// it into the form, in place of what has been typed.
bool StepEditor::eventFilter(QObject* field, QEvent* event) {
    if (isEnterPress(*event)) {
        stepAdd();
        QMetaObject::invokeMethod(field == keyCombo ? keyCombo->lineEdit() : field, "selectAll");
        return true; // the selector would complete its text
    }
    if (event->type() != QEvent::ShortcutOverride)
        return false;
    const int key = static_cast<QKeyEvent*>(event)->key();
    if (key != Qt::Key_Up && key != Qt::Key_Down)
        return false;
    event->accept();
    return true;
}

void StepEditor::showSteps(const QList<EditorStep>& steps, int currentRow) {
    {
        const QSignalBlocker blocker(stepList); // ignore selection changes while rows are removed
        shownSteps = steps;
        stepList->clear();
        for (const EditorStep& step : steps)
            stepList->addItem(describeStep(step));
    }
    if (currentRow >= 0)
        stepList->setCurrentRow(currentRow);
}

void StepEditor::onStepKind(int kind) {
    stepStack->setCurrentIndex(kind == static_cast<int>(EditorStepKind::Open) ? openPage : keyPage);
    stepValueSpin->setEnabled(kind < static_cast<int>(EditorStepKind::Release));
}

void StepEditor::onStepSelection() {
    const int row = stepList->currentRow();
    if (row < 0)
        return;
    const EditorStep& step = shownSteps[row];
    stepKindCombo->setCurrentIndex(static_cast<int>(step.kind));
    if (step.kind == EditorStepKind::Open) {
        openEdit->setText(step.open);
    } else {
        keyCombo->setCurrentText(step.key);
        stepValueSpin->setValue(step.value);
    }
}

EditorStep StepEditor::stepFromForm() const {
    EditorStep step;
    step.kind = static_cast<EditorStepKind>(stepKindCombo->currentIndex());
    if (step.kind == EditorStepKind::Open) {
        step.open = openEdit->text().trimmed();
        return step;
    }
    step.key = keyCombo->currentText().trimmed();
    step.value = stepValueSpin->value();
    if (step.kind == EditorStepKind::Click)
        step.value = std::clamp(step.value, 1, maxClickCount);
    return step;
}

void StepEditor::stepAdd() {
    const EditorStep step = stepFromForm();
    if (!step.key.isEmpty() || !step.open.isEmpty())
        emit edited(shownSteps + QList{step}, static_cast<int>(shownSteps.size()));
}

void StepEditor::stepReplace() {
    const int row = stepList->currentRow();
    if (row < 0)
        return;
    QList<EditorStep> steps = shownSteps;
    steps[row] = stepFromForm();
    emit edited(steps, row);
}

void StepEditor::stepRemove() {
    const int row = stepList->currentRow();
    if (row < 0)
        return;
    QList<EditorStep> steps = shownSteps;
    steps.removeAt(row);
    emit edited(steps, -1);
}

void StepEditor::stepMove(int delta) {
    const int row = stepList->currentRow();
    const int target = row + delta;
    if (row < 0 || target < 0 || target >= shownSteps.size())
        return;
    QList<EditorStep> steps = shownSteps;
    steps.swapItemsAt(row, target);
    emit edited(steps, target);
}
