#pragma once

#include "shell/wheels/wheel_document.h"
#include "shell/wheels/wheel_recovery.h"

#include <QWidget>
#include <functional>

class FunctionForm;
class QLabel;
class QLayout;
class QPushButton;
class RecoveryBar;
class StepEditor;
class TitledPreview;
class WheelTree;

/// Edits one wheel file at a time. Saving writes the file; only activating makes the engine load it. The page
/// owns the document and connects the widgets that show parts of it. Main thread.
class WheelEditorPage : public QWidget {
    Q_OBJECT

public:
    /// `bar` offers unsaved changes that were found; it must outlive the page.
    explicit WheelEditorPage(RecoveryBar& bar, QWidget* parent = nullptr);

    /// Replaces the open document without a question; unsaved changes are kept in its recovery file. If the
    /// file cannot be read, shows a warning and keeps the old document.
    void loadFile(const QString& path);

    /// Adds shortcuts for opening and saving files to the window that the page is in. They call `showPage`
    /// first, so that the user sees what they do.
    void addFileShortcuts(QWidget* window, const std::function<void()>& showPage);

    /// The parts with something to do, in their order; the first control of each is its main one.
    QList<QWidget*> enabledParts() const;

    /// Writes unsaved changes to the recovery file. Call before the program ends.
    void keepUnsavedChanges();

private slots:
    void openFile();
    void saveFile(bool saveAs);
    void activateOnEngine();
    void onTreeSelection(int wheel, int function);
    void addWheel();
    void removeSelected();
    void addAction();

private:
    QLayout* makeFileRow();
    QWidget* makeDetails();
    void connectParts();
    void openLastFile();

    void showDocument();
    void restoreFound();
    /// The user wants the document as it is: found changes get a file of their own.
    void setFoundAside();

    EditorWheel* currentWheel();
    EditorFunction* currentFunction();

    void markDirty();
    void markClean();
    void showFunction(int stepRow = -1);
    void commitFields(const QString& name, const QString& voice, int delayMs);
    /// Changes the selected function, if there is one, and updates the form and the steps.
    void changeFunction(const std::function<void(EditorFunction&)>& change, int stepRow = -1);
    bool confirmsRemovalOf(const EditorWheel& wheel);

    WheelDocument doc;
    bool loaded = false;
    bool dirty = false;
    int selectedWheel = -1;
    int selectedFunction = -1; // -1: the wheel itself
    WheelRecovery recovery;
    std::optional<FoundRecovery> found;
    RecoveryBar* recoveryBar;
    QPushButton* openButton = nullptr;
    QPushButton* saveButton = nullptr;
    QPushButton* saveAsButton = nullptr;
    QLabel* fileLabel = nullptr;
    WheelTree* tree = nullptr;
    QWidget* detailsPanel = nullptr;
    FunctionForm* form = nullptr;
    StepEditor* stepEditor = nullptr;
    TitledPreview* preview = nullptr;
};
