#include "shell/wheel_editor_page.h"

#include "common/file_names.h"
#include "common/limits.h"
#include "engine/core/overlay.h"
#include "shell/field_icons.h"
#include "shell/file_dialogs.h"
#include "shell/icon_picker_dialog.h"
#include "shell/settings.h"
#include "shell/themes.h"
#include "shell/wheel_preview.h"

#include <QApplication>
#include <QColorDialog>
#include <QComboBox>
#include <QDir>
#include <QFileInfo>
#include <QFontMetrics>
#include <QInputDialog>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMessageBox>
#include <QPushButton>
#include <QSpinBox>
#include <QStackedWidget>
#include <QTreeWidget>
#include <algorithm>

namespace {

constexpr int wheelRole = Qt::UserRole;
constexpr int functionRole = Qt::UserRole + 1; // -1 on a wheel's item
constexpr int openPage = 1;                    // of the step stack

QString functionText(const QString& name) {
    return name.isEmpty() ? WheelEditorPage::tr("(bez nazwy)") : name;
}

QString boxTitle() {
    return WheelEditorPage::tr("Edytor kół");
}

/// A name as a box can show it with its buttons still on the screen.
QString shortened(const QString& name) {
    constexpr int mostLetters = 200;
    const QString line = name.size() > mostLetters ? name.simplified() : name;
    return QFontMetrics(QApplication::font()).elidedText(line, Qt::ElideMiddle, 600, Qt::TextSingleLine);
}

/// Names and paths stand in the text, and what looks like HTML in them must not be taken for it.
QMessageBox* makeBox(QWidget* parent, QMessageBox::Icon icon, const QString& text,
                     QMessageBox::StandardButtons buttons = QMessageBox::Ok) {
    auto* box = new QMessageBox(icon, boxTitle(), text, buttons, parent);
    box->setTextFormat(Qt::PlainText);
    box->setAttribute(Qt::WA_DeleteOnClose);
    return box;
}

bool isIndexOf(qsizetype index, qsizetype size) {
    return index >= 0 && index < size;
}

} // namespace

void WheelEditorPage::openLastFile() {
    const QString last = uiSettings().value(lastWheelFileKey).toString();
    if (!last.isEmpty() && QFileInfo::exists(last))
        loadFile(last);
}

void WheelEditorPage::repaintPreview() {
    preview->update();
}

EditorWheel* WheelEditorPage::currentWheel() {
    return loaded && isIndexOf(selectedWheel, doc.wheels.size()) ? &doc.wheels[selectedWheel] : nullptr;
}

EditorFunction* WheelEditorPage::currentFunction() {
    EditorWheel* wheel = currentWheel();
    if (wheel == nullptr || !isIndexOf(selectedFunction, wheel->actions.size()))
        return nullptr;
    return &wheel->actions[selectedFunction];
}

int WheelEditorPage::currentStepRow() {
    const EditorFunction* function = currentFunction();
    const int row = stepList->currentRow();
    return function != nullptr && isIndexOf(row, function->steps.size()) ? row : -1;
}

QString WheelEditorPage::besideFile(const QString& relativePath) const {
    return QFileInfo(doc.path).dir().filePath(relativePath);
}

void WheelEditorPage::warn(const QString& text) {
    makeBox(this, QMessageBox::Warning, text)->exec();
}

// The file is saved, so this box holds nothing up.
void WheelEditorPage::tellOfKeptCopy() {
    makeBox(this, QMessageBox::Information,
            tr("Inny program zmienił w międzyczasie plik %1. Tamta wersja jest zachowana jako %2.")
                .arg(doc.path, doc.keptCopy))
        ->show();
}

void WheelEditorPage::markDirty() {
    dirty = true;
    fileLabel->setText(doc.path + " *");
}

void WheelEditorPage::markClean() {
    dirty = false;
    fileLabel->setText(doc.path);
}

void WheelEditorPage::loadFile(const QString& path) {
    WheelDocument opened;
    QString error;
    if (!opened.load(path, &error)) {
        warn(error);
        return;
    }
    doc = opened;
    loaded = true;
    markClean();
    uiSettings().setValue(lastWheelFileKey, path);
    rebuildTree(0, doc.wheels.first().actions.isEmpty() ? -1 : 0);
}

void WheelEditorPage::openFile() {
    const QString folder = doc.path.isEmpty() ? QString() : QFileInfo(doc.path).absolutePath();
    const QString path = askFileToOpen(this, tr("Otwórz plik kół"), folder, tr("JSON (*.json)"));
    if (!path.isEmpty())
        loadFile(path);
}

void WheelEditorPage::saveFile(bool saveAs) {
    if (!loaded)
        return;
    QString path;
    if (saveAs) {
        path = askFileToSave(this, tr("Zapisz jako"), doc.path, tr("JSON (*.json)"), "json");
        if (path.isEmpty())
            return;
    }
    QString error;
    if (!(saveAs ? doc.saveAs(path, &error) : doc.save(&error))) {
        warn(error);
        return;
    }
    if (saveAs)
        uiSettings().setValue(lastWheelFileKey, path);
    markClean();
    if (!doc.keptCopy.isEmpty())
        tellOfKeptCopy();
}

void WheelEditorPage::activateOnEngine() {
    if (!loaded)
        return;
    if (dirty)
        saveFile(false);
    if (dirty)
        return;
    const std::u16string path = doc.path.toStdU16String();
    if (!OverlayActivateWheelFile(reinterpret_cast<const OverlayChar*>(path.c_str())))
        warn(tr("Silnik nie przyjął konfiguracji — sprawdź, czy plik zawiera koła z funkcjami."));
}

void WheelEditorPage::rebuildTree(int wheel, int function) {
    updating = true;
    tree->clear();
    for (int i = 0; i < doc.wheels.size(); ++i) {
        const EditorWheel& shown = doc.wheels[i];
        auto* wheelItem = new QTreeWidgetItem(tree);
        wheelItem->setText(0, shown.name.isEmpty() ? tr("(koło bez nazwy)") : shown.name);
        wheelItem->setData(0, wheelRole, i);
        wheelItem->setData(0, functionRole, -1);
        for (int j = 0; j < shown.actions.size(); ++j) {
            auto* item = new QTreeWidgetItem(wheelItem);
            item->setText(0, functionText(shown.actions[j].name));
            if (!shown.actions[j].icon.isEmpty())
                item->setIcon(0, fieldIcon(besideFile(shown.actions[j].icon)));
            item->setData(0, wheelRole, i);
            item->setData(0, functionRole, j);
        }
        wheelItem->setExpanded(true);
    }
    updating = false;
    QTreeWidgetItem* selected = tree->topLevelItem(wheel);
    if (selected == nullptr) {
        onTreeSelection();
        return;
    }
    if (isIndexOf(function, selected->childCount()))
        selected = selected->child(function);
    tree->setCurrentItem(selected);
}

void WheelEditorPage::onTreeSelection() {
    if (updating)
        return;
    const QTreeWidgetItem* item = tree->currentItem();
    selectedWheel = item == nullptr ? -1 : item->data(0, wheelRole).toInt();
    selectedFunction = item == nullptr ? -1 : item->data(0, functionRole).toInt();
    showFunction();
    refreshPreview();
}

void WheelEditorPage::showFunction() {
    updating = true;
    const EditorFunction* function = currentFunction();
    detailsPanel->setEnabled(function != nullptr);
    stepList->clear();
    if (function == nullptr) {
        nameEdit->clear();
        voiceEdit->clear();
        iconLabel->setPixmap({});
    } else {
        nameEdit->setText(function->name);
        voiceEdit->setText(function->voice);
        for (QLineEdit* edit : {nameEdit, voiceEdit})
            edit->home(false); // a long text is read from its beginning
        delaySpin->setValue(function->delay);
        showColor(function->color);
        showIcon(function->icon);
        for (const EditorStep& step : function->steps)
            stepList->addItem(describeStep(step));
    }
    updating = false;
}

void WheelEditorPage::showColor(const QColor& color) {
    const QString name = color.isValid() ? color.name().toUpper() : tr("domyślny");
    colorButton->setText(name);
    colorButton->setAccessibleName(tr("Kolor pola: %1").arg(name));
    colorButton->setStyleSheet(color.isValid()
                                   ? QStringLiteral("background:%1; color:%2;")
                                         .arg(color.name(), color.lightness() > 128 ? "#000" : "#FFF")
                                   : QString());
}

void WheelEditorPage::showIcon(const QString& icon) {
    iconLabel->setPixmap(icon.isEmpty() ? QPixmap() : QPixmap(besideFile(icon)));
    const QString name = icon.isEmpty() ? tr("Wybierz…") : iconNameOf(icon);
    iconButton->setText(name);
    iconButton->setAccessibleName(tr("Ikona: %1").arg(name));
}

void WheelEditorPage::commitFields() {
    EditorFunction* function = currentFunction();
    if (updating || function == nullptr)
        return;
    function->name = nameEdit->text();
    function->voice = voiceEdit->text();
    function->delay = delaySpin->value();
    if (QTreeWidgetItem* item = tree->currentItem())
        item->setText(0, functionText(function->name));
    markDirty();
    refreshPreview();
}

void WheelEditorPage::refreshPreview() {
    const EditorWheel* wheel = currentWheel();
    QStringList labels;
    for (qsizetype i = 0; wheel != nullptr && i < wheel->actions.size(); ++i) {
        const QString& name = wheel->actions[i].name;
        labels.append(name.isEmpty() ? QString::number(i + 1) : name);
    }
    preview->setLabels(labels);
    preview->setHighlight(selectedFunction);
    previewTitle->setText(wheel == nullptr ? QString() : wheel->name);
}

void WheelEditorPage::pickColor() {
    EditorFunction* function = currentFunction();
    if (function == nullptr)
        return;
    const QColor start = function->color.isValid() ? function->color : themeInfo(currentThemeId()).ringColor;
    // Cancelling yields no colour, which is the way back to the wheel's own.
    function->color = QColorDialog::getColor(start, this, tr("Kolor pola"));
    markDirty();
    showFunction();
}

void WheelEditorPage::pickIcon() {
    EditorFunction* function = currentFunction();
    if (function == nullptr)
        return;
    IconPickerDialog picker(besideFile(QString::fromUtf16(iconFolderName)), this);
    picker.select(function->icon);
    if (picker.exec() != QDialog::Accepted)
        return;
    function->icon = picker.chosenIcon();
    markDirty();
    showFunction();
}

void WheelEditorPage::addWheel() {
    if (!loaded)
        return;
    bool isAccepted = false;
    const QString name = QInputDialog::getText(this, tr("Nowe koło"), tr("Nazwa koła:"), QLineEdit::Normal,
                                               tr("Koło %1").arg(doc.wheels.size() + 1), &isAccepted);
    if (!isAccepted)
        return;
    doc.wheels.append({name, {}});
    doc.multiWheel = true;
    markDirty();
    rebuildTree(static_cast<int>(doc.wheels.size()) - 1, -1);
}

void WheelEditorPage::addAction() {
    if (!loaded)
        return;
    if (currentWheel() == nullptr)
        selectedWheel = 0;
    EditorFunction added;
    added.name = tr("Nowa funkcja");
    QList<EditorFunction>& actions = doc.wheels[selectedWheel].actions;
    actions.append(added);
    markDirty();
    rebuildTree(selectedWheel, static_cast<int>(actions.size()) - 1);
    nameEdit->setFocus(); // the name is what comes next
    nameEdit->selectAll();
}

void WheelEditorPage::removeSelected() {
    EditorWheel* wheel = currentWheel();
    if (wheel == nullptr)
        return;
    if (currentFunction() != nullptr) {
        wheel->actions.removeAt(selectedFunction);
        markDirty();
        rebuildTree(selectedWheel, -1);
        return;
    }
    if (doc.wheels.size() == 1) {
        makeBox(this, QMessageBox::Information, tr("Musi zostać przynajmniej jedno koło."))->exec();
        return;
    }
    const QString question = tr("Usunąć koło \"%1\" wraz z funkcjami?").arg(shortened(wheel->name));
    QMessageBox* box = makeBox(this, QMessageBox::Question, question, QMessageBox::Yes | QMessageBox::No);
    if (box->exec() != QMessageBox::Yes)
        return;
    doc.wheels.removeAt(selectedWheel);
    markDirty();
    rebuildTree(0, -1);
}

void WheelEditorPage::onStepKind(int kind) {
    stepStack->setCurrentIndex(kind == static_cast<int>(EditorStepKind::Open) ? openPage : 0);
    stepValueSpin->setEnabled(kind < static_cast<int>(EditorStepKind::Release));
}

void WheelEditorPage::onStepSelection() {
    const int row = currentStepRow();
    if (updating || row < 0)
        return;
    updating = true;
    const EditorStep& step = currentFunction()->steps[row];
    stepKindCombo->setCurrentIndex(static_cast<int>(step.kind));
    if (step.kind == EditorStepKind::Open) {
        openEdit->setText(step.open);
    } else {
        keyCombo->setCurrentText(step.key);
        stepValueSpin->setValue(step.value);
    }
    updating = false;
}

EditorStep WheelEditorPage::stepFromForm() const {
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

void WheelEditorPage::stepAdd() {
    EditorFunction* function = currentFunction();
    const EditorStep step = stepFromForm();
    if (function == nullptr || (step.key.isEmpty() && step.open.isEmpty()))
        return;
    function->steps.append(step);
    markDirty();
    showFunction();
    stepList->setCurrentRow(stepList->count() - 1);
}

void WheelEditorPage::stepReplace() {
    const int row = currentStepRow();
    if (row < 0)
        return;
    currentFunction()->steps[row] = stepFromForm();
    markDirty();
    showFunction();
    stepList->setCurrentRow(row);
}

void WheelEditorPage::stepRemove() {
    const int row = currentStepRow();
    if (row < 0)
        return;
    currentFunction()->steps.removeAt(row);
    markDirty();
    showFunction();
}

void WheelEditorPage::stepMove(int delta) {
    const int row = currentStepRow();
    if (row < 0 || !isIndexOf(row + delta, currentFunction()->steps.size()))
        return;
    currentFunction()->steps.swapItemsAt(row, row + delta);
    markDirty();
    showFunction();
    stepList->setCurrentRow(row + delta);
}
