#pragma once

#include "shell/wheel_document.h"

#include <QWidget>

class QComboBox;
class QLayout;
class QLineEdit;
class QListWidget;
class QSpinBox;
class QStackedWidget;

/// The steps of one function as a list, and below it a form for one step with buttons that apply it. Only
/// shows the steps and reports what the user makes of them.
class StepEditor : public QWidget {
    Q_OBJECT

public:
    explicit StepEditor(QWidget* parent = nullptr);

    /// Shows these steps. The form takes the step of `currentRow`; with -1 no row is current and the form
    /// keeps what is in it. Emits nothing.
    void showSteps(const QList<EditorStep>& steps, int currentRow = -1);

signals:
    /// The steps as the user wants them, with the row to be current then (-1: none). They are not shown
    /// before showSteps() is called.
    void edited(const QList<EditorStep>& steps, int currentRow);

private:
    QLayout* makeStepRow();
    QWidget* makeKeyPage();
    QLayout* makeButtonRow();

    EditorStep stepFromForm() const;
    void onStepKind(int kind);
    void onStepSelection();
    void stepAdd();
    void stepReplace();
    void stepRemove();
    void stepMove(int delta);

    QList<EditorStep> shownSteps;
    QListWidget* stepList = nullptr;
    QComboBox* stepKindCombo = nullptr;
    QStackedWidget* stepStack = nullptr;
    QComboBox* keyCombo = nullptr;
    QSpinBox* stepValueSpin = nullptr;
    QLineEdit* openEdit = nullptr;
};
