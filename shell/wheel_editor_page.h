#pragma once

#include "shell/wheel_document.h"

#include <QWidget>

class QBoxLayout;
class QComboBox;
class QLabel;
class QLayout;
class QLineEdit;
class QListWidget;
class QPushButton;
class QSpinBox;
class QStackedWidget;
class QTreeWidget;
class WheelPreview;

/// Edits one wheel file at a time. Saving writes the file; only activating hands it to the engine.
class WheelEditorPage : public QWidget {
    Q_OBJECT

public:
    explicit WheelEditorPage(QWidget* parent = nullptr);

    /// Replaces the open document. A file that cannot be read is told in a box, and the old document stays.
    /// Unsaved changes are dropped without a question.
    void loadFile(const QString& path);

    /// The theme has changed: what is painted by hand does not know by itself.
    void repaintPreview();

private slots:
    void openFile();
    void saveFile(bool saveAs);
    void activateOnEngine();
    void onTreeSelection();
    void addWheel();
    void removeSelected();
    void addAction();
    void onStepSelection();
    void stepAdd();
    void stepReplace();
    void stepRemove();
    void stepMove(int delta);

private:
    QBoxLayout* makeFileRow();
    QBoxLayout* makeTreeColumn();
    QWidget* makeDetails();
    QLayout* makeFieldForm();
    QBoxLayout* makeStepRow();
    QWidget* makeKeyRow();
    QBoxLayout* makeStepButtons();
    QBoxLayout* makePreviewColumn();
    void connectForm();
    void openLastFile();

    EditorWheel* currentWheel();
    EditorFunction* currentFunction();
    /// The row of the step list, -1 without a function or a valid row.
    int currentStepRow();
    EditorStep stepFromForm() const;
    QString besideFile(const QString& relativePath) const;

    void markDirty();
    void markClean();
    void rebuildTree(int wheel, int function);
    void showFunction();
    void showColor(const QColor& color);
    void showIcon(const QString& icon);
    void commitFields();
    void refreshPreview();
    void pickColor();
    void pickIcon();
    void onStepKind(int kind);
    void warn(const QString& text);
    void tellOfKeptCopy();

    WheelDocument doc;
    bool loaded = false;
    bool dirty = false;
    bool updating = false; // the program fills form or tree: their signals are not the user's
    int selectedWheel = -1;
    int selectedFunction = -1; // -1: the wheel itself
    QLabel* fileLabel = nullptr;
    QTreeWidget* tree = nullptr;
    QLineEdit* nameEdit = nullptr;
    QLineEdit* voiceEdit = nullptr;
    QSpinBox* delaySpin = nullptr;
    QPushButton* colorButton = nullptr;
    QPushButton* iconButton = nullptr;
    QLabel* iconLabel = nullptr;
    QListWidget* stepList = nullptr;
    QComboBox* stepKindCombo = nullptr;
    QComboBox* keyCombo = nullptr;
    QSpinBox* stepValueSpin = nullptr;
    QLineEdit* openEdit = nullptr;
    QStackedWidget* stepStack = nullptr;
    QWidget* detailsPanel = nullptr;
    WheelPreview* preview = nullptr;
    QLabel* previewTitle = nullptr;
};
