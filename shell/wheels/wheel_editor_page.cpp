#include "shell/wheels/wheel_editor_page.h"

#include "engine/core/overlay.h"
#include "shell/base/cards.h"
#include "shell/base/elided_label.h"
#include "shell/base/file_dialogs.h"
#include "shell/base/message_boxes.h"
#include "shell/base/settings.h"
#include "shell/base/shortcuts.h"
#include "shell/wheels/field_icons.h"
#include "shell/wheels/function_form.h"
#include "shell/wheels/recovery_bar.h"
#include "shell/wheels/step_editor.h"
#include "shell/wheels/titled_preview.h"
#include "shell/wheels/wheel_tree.h"

#include <QBoxLayout>
#include <QFileInfo>
#include <QInputDialog>
#include <QPushButton>

namespace {

QString boxTitle() {
    return WheelEditorPage::tr("Edytor kół");
}

void warn(QWidget* parent, const QString& text) {
    makeBox(parent, QMessageBox::Warning, boxTitle(), text)->exec();
}

bool isIndexOf(qsizetype index, qsizetype size) {
    return index >= 0 && index < size;
}

} // namespace

WheelEditorPage::WheelEditorPage(RecoveryBar& bar, QWidget* parent) : QWidget(parent), recoveryBar(&bar) {
    auto* page = new QVBoxLayout(this);
    page->setContentsMargins(18, 14, 18, 14);
    page->setSpacing(10);
    page->addLayout(makeFileRow());
    auto* body = new QHBoxLayout;
    body->setSpacing(12);
    tree = new WheelTree;
    body->addWidget(tree);
    body->addWidget(makeDetails(), 1);
    preview = new TitledPreview;
    preview->placeIn(*body, *page);
    page->addLayout(body, 1);
    connectParts();
    openLastFile();
}

QLayout* WheelEditorPage::makeFileRow() {
    auto* row = new QHBoxLayout;
    openButton = addButton(*row, tr("Otwórz…"));
    saveButton = addButton(*row, tr("Zapisz"));
    saveAsButton = addButton(*row, tr("Zapisz jako…"));
    connect(openButton, &QPushButton::clicked, this, &WheelEditorPage::openFile);
    connect(saveButton, &QPushButton::clicked, this, [this] { saveFile(false); });
    connect(saveAsButton, &QPushButton::clicked, this, [this] { saveFile(true); });
    QPushButton* activate = addButton(*row, tr("Aktywuj"));
    activate->setObjectName("Primary");
    connect(activate, &QPushButton::clicked, this, &WheelEditorPage::activateOnEngine);
    // On this page alone: elsewhere F5 is expected to refresh, and would replace the wheels in force unseen.
    addShortcut(activate, Qt::Key_F5);
    row->addSpacing(10);
    fileLabel = new ElidedLabel(tr("(nie wczytano pliku)"), Qt::ElideMiddle);
    fileLabel->setProperty("role", "cardTitle");
    row->addWidget(fileLabel, 1);
    return row;
}

QWidget* WheelEditorPage::makeDetails() {
    detailsPanel = new QWidget;
    detailsPanel->setEnabled(false);
    auto* column = new QVBoxLayout(detailsPanel);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(8);
    form = new FunctionForm;
    column->addWidget(form);
    stepEditor = new StepEditor;
    column->addWidget(stepEditor, 1);
    return detailsPanel;
}

void WheelEditorPage::connectParts() {
    connect(recoveryBar, &RecoveryBar::restoreRequested, this, &WheelEditorPage::restoreFound);
    connect(recoveryBar, &RecoveryBar::discardRequested, this, &WheelEditorPage::setFoundAside);
    connect(tree, &WheelTree::selectionChanged, this, &WheelEditorPage::onTreeSelection);
    connect(tree, &WheelTree::addWheelRequested, this, &WheelEditorPage::addWheel);
    connect(tree, &WheelTree::addFunctionRequested, this, &WheelEditorPage::addAction);
    connect(tree, &WheelTree::removeRequested, this, &WheelEditorPage::removeSelected);
    connect(tree, &WheelTree::editRequested, form, &FunctionForm::focusName);
    connect(form, &FunctionForm::edited, this, &WheelEditorPage::commitFields);
    connect(form, &FunctionForm::colorChosen, this, [this](const QColor& color) {
        changeFunction([&](EditorFunction& function) { function.color = color; });
    });
    connect(form, &FunctionForm::iconChosen, this, [this](const QString& icon) {
        changeFunction([&](EditorFunction& function) { function.icon = icon; });
    });
    connect(stepEditor, &StepEditor::edited, this, [this](const QList<EditorStep>& steps, int row) {
        changeFunction([&](EditorFunction& function) { function.steps = steps; }, row);
    });
}

void WheelEditorPage::addFileShortcuts(QWidget* window, const std::function<void()>& showPage) {
    const auto add = [&](QPushButton* button, const QKeySequence& keys) {
        describeShortcut(button, keys);
        addShortcut(window, keys, [button, showPage] {
            showPage();
            button->click();
        });
    };
    add(openButton, Qt::CTRL | Qt::Key_O);
    add(saveButton, Qt::CTRL | Qt::Key_S);
    add(saveAsButton, Qt::CTRL | Qt::SHIFT | Qt::Key_S);
}

QList<QWidget*> WheelEditorPage::enabledParts() const {
    QList<QWidget*> parts;
    if (loaded)
        parts.append(tree);
    if (detailsPanel->isEnabled())
        parts.append({form, stepEditor});
    return parts;
}

void WheelEditorPage::openLastFile() {
    const QString last = uiSettings().value(lastWheelFileKey).toString();
    if (!last.isEmpty() && QFileInfo::exists(last))
        loadFile(last);
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

void WheelEditorPage::markDirty() {
    dirty = true;
    fileLabel->setText(doc.path + " *");
    setFoundAside();
    recovery.keep(doc);
}

void WheelEditorPage::markClean() {
    dirty = false;
    fileLabel->setText(doc.path);
}

void WheelEditorPage::loadFile(const QString& path) {
    WheelDocument opened;
    QString error;
    if (!opened.load(path, &error)) {
        warn(this, error);
        return;
    }
    recovery.leave();
    doc = opened;
    loaded = true;
    form->setWheelFolder(doc.folder());
    markClean();
    uiSettings().setValue(lastWheelFileKey, path);
    showDocument();
    found = WheelRecovery::find(doc);
    recoveryBar->hide();
    if (found)
        recoveryBar->offer(*found, path);
}

void WheelEditorPage::showDocument() {
    tree->rebuild(doc, 0, doc.wheels.first().actions.isEmpty() ? -1 : 0);
}

void WheelEditorPage::keepUnsavedChanges() {
    recovery.finish();
}

void WheelEditorPage::restoreFound() {
    const auto restored = std::exchange(found, std::nullopt);
    recoveryBar->hide();
    if (!restored)
        return;
    doc.multiWheel = restored->multiWheel;
    doc.wheels = restored->wheels;
    if (restored->fileHasChanged)
        doc.lastKnownContent = ""; // another content than the file's: saving backs that up
    recovery.adopt(doc.path);
    markDirty();
    showDocument();
}

void WheelEditorPage::setFoundAside() {
    if (const auto left = std::exchange(found, std::nullopt))
        recoveryBar->reportSetAside(recovery.setAside(*left));
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
        warn(this, error);
        return;
    }
    recovery.remove();
    if (saveAs) {
        uiSettings().setValue(lastWheelFileKey, path);
        form->setWheelFolder(doc.folder());
    }
    markClean();
    if (doc.backupPath.isEmpty())
        return;
    const QString text =
        tr("Inny program zmienił w międzyczasie plik %1. Tamta wersja jest zachowana jako %2.")
            .arg(doc.path, doc.backupPath);
    makeBox(this, QMessageBox::Information, boxTitle(), text)->show(); // not modal: the file is saved
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
        warn(this, tr("Silnik nie przyjął konfiguracji — sprawdź, czy plik zawiera koła z funkcjami."));
}

void WheelEditorPage::onTreeSelection(int wheel, int function) {
    selectedWheel = wheel;
    selectedFunction = function;
    showFunction();
    preview->showWheel(currentWheel(), selectedFunction);
}

void WheelEditorPage::showFunction(int stepRow) {
    const EditorFunction* function = currentFunction();
    detailsPanel->setEnabled(function != nullptr);
    if (function == nullptr) {
        form->clear();
        stepEditor->showSteps({});
    } else {
        form->showFunction(*function);
        stepEditor->showSteps(function->steps, stepRow);
    }
}

void WheelEditorPage::commitFields(const QString& name, const QString& voice, int delayMs) {
    EditorFunction* function = currentFunction();
    if (function == nullptr)
        return;
    function->name = name;
    function->voice = voice;
    function->delay = delayMs;
    tree->renameSelected(name);
    markDirty();
    preview->showWheel(currentWheel(), selectedFunction);
}

void WheelEditorPage::changeFunction(const std::function<void(EditorFunction&)>& change, int stepRow) {
    EditorFunction* function = currentFunction();
    if (function == nullptr)
        return;
    change(*function);
    markDirty();
    showFunction(stepRow);
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
    tree->rebuild(doc, static_cast<int>(doc.wheels.size()) - 1, -1);
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
    tree->rebuild(doc, selectedWheel, static_cast<int>(actions.size()) - 1);
    form->focusName(); // so that the user can type the name
}

bool WheelEditorPage::confirmsRemovalOf(const EditorWheel& wheel) {
    if (doc.wheels.size() == 1) {
        makeBox(this, QMessageBox::Information, boxTitle(), tr("Musi zostać przynajmniej jedno koło."))
            ->exec();
        return false;
    }
    const QString question = tr("Usunąć koło \"%1\" wraz z funkcjami?").arg(shortened(wheel.name));
    QMessageBox* box =
        makeBox(this, QMessageBox::Question, boxTitle(), question, QMessageBox::Yes | QMessageBox::No);
    // After a function has been removed its wheel is selected: Delete once too often, and Enter, ends here.
    box->setDefaultButton(QMessageBox::No);
    return box->exec() == QMessageBox::Yes;
}

void WheelEditorPage::removeSelected() {
    EditorWheel* wheel = currentWheel();
    if (wheel == nullptr)
        return;
    if (currentFunction() != nullptr) {
        wheel->actions.removeAt(selectedFunction);
        markDirty();
        tree->rebuild(doc, selectedWheel, -1);
    } else if (confirmsRemovalOf(*wheel)) {
        doc.wheels.removeAt(selectedWheel);
        markDirty();
        tree->rebuild(doc, 0, -1);
    }
}
