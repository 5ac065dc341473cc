#pragma once

#include "shell/wheels/wheel_document.h"

#include <QWidget>

class QComboBox;
class QLayout;
class QLineEdit;
class QListWidget;
class QSpinBox;
class QStackedWidget;

/// The list of a function's steps, a form for one step, and buttons that add, replace, remove and move steps.
/// Does not change the document; reports the steps that the user wants.
class StepEditor : public QWidget {
    Q_OBJECT

public:
    explicit StepEditor(QWidget* parent = nullptr);

    /// Shows the steps and puts the one of `currentRow` into the form. With -1 no row is current and the form
    /// stays as it is. Emits nothing.
    void showSteps(const QList<EditorStep>& steps, int currentRow = -1);

signals:
    /// The changed steps and the row to select, -1 for none. The receiver shows them by calling showSteps().
    void edited(const QList<EditorStep>& steps, int currentRow);

protected:
    bool eventFilter(QObject* field, QEvent* event) override;

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
