#pragma once

#include <QColor>
#include <QDir>
#include <QWidget>

class QLabel;
class QLineEdit;
class QPushButton;
class QSpinBox;
struct EditorFunction;

/// The form of one function without its steps: name, voice phrase, icon, colour and delay. Does not change
/// the document; reports what the user enters.
class FunctionForm : public QWidget {
    Q_OBJECT

public:
    explicit FunctionForm(QWidget* parent = nullptr);

    /// The folder of the wheel file, where its icons are. The form shows no other icon at once.
    void setWheelFolder(const QDir& folder);

    /// Emits nothing.
    void showFunction(const EditorFunction& function);

    /// Empties the texts and the icon. Emits nothing.
    void clear();

    /// Gives the name the keyboard focus, with all of it selected.
    void focusName();

signals:
    /// All three values, after the user has changed one. `delayMs` is 0 to maxDelayMs.
    void edited(const QString& name, const QString& voice, int delayMs);
    /// An invalid colour means the wheel's own.
    void colorChosen(const QColor& color);
    /// A path as in wheel files, relative to the folder; empty for no icon.
    void iconChosen(const QString& icon);

private:
    QLayout* makeIconRow();
    QLayout* makeColorRow();
    void showColor(const QColor& color);
    void showIcon(const QString& icon);
    void pickColor();
    void pickIcon();

    QLineEdit* nameEdit = nullptr;
    QLineEdit* voiceEdit = nullptr;
    QSpinBox* delaySpin = nullptr;
    QPushButton* colorButton = nullptr;
    QPushButton* iconButton = nullptr;
    QLabel* iconLabel = nullptr;
    QColor shownColor;
    QString shownIcon;
    QStringList folders; // that icons are relative to
};
