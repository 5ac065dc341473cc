#pragma once

#include <QDialog>

class KeyCaptureField;
class QComboBox;
class QLabel;

/// Chooses the key that opens the wheel. Saving writes it to config.json and restarts the program, because
/// the engine registers the key only at its start. Main thread.
class ToggleKeyDialog : public QDialog {
    Q_OBJECT

public:
    /// `mainWindow`: the restarted program shows its window if this one is visible.
    explicit ToggleKeyDialog(QWidget& mainWindow);

private:
    void explain(const QString& name);
    void explainUnnamed();
    void reserveNote();
    void showNote(const QString& text);
    void save();
    void restartWith(const QString& name);
    void warn(const QString& text);

    QWidget& window;
    QString current;
    KeyCaptureField* field = nullptr;
    QComboBox* selector = nullptr;
    QLabel* note = nullptr;
};

/// Shows the dialog, above any other, or brings it to the front.
void chooseToggleKey(QWidget& mainWindow);
