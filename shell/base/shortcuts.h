#pragma once

#include <QKeySequence>
#include <QList>
#include <QObject>
#include <functional>

class QPushButton;
class QWidget;

// Keyboard shortcuts of the main window. Main thread.

/// Calls `act` when the keys are pressed in the owner's window, or within the narrower context. Needs a
/// visible and enabled owner. A key that is held down acts once (see KeyRules), and none acts behind a modal
/// dialog.
void addShortcut(QWidget* owner, const QKeySequence& keys, std::function<void()> act,
                 Qt::ShortcutContext context = Qt::WindowShortcut);

/// Shows the keys in the tool tip, "Zapisz (Ctrl+S)", after the widget's accessible name or a button's text,
/// and tells them to screen readers.
void describeShortcut(QWidget* widget, const QKeySequence& keys);

/// The keys press the button while it is visible and enabled, and are described on it.
void addShortcut(QPushButton* button, const QKeySequence& keys);

/// The keys as the user reads them.
QString shortcutText(const QKeySequence& keys);

/// Whether the event is a press of Enter, alone, on either part of the keyboard.
bool isEnterPress(const QEvent& event);

/// Event filter of the application. Enter presses the focused button in windows that are no dialogs. While
/// they are held down, Enter and shortcuts act once, and so does Space on a button: repeated, they would also
/// accept the dialog that the first press has opened.
class KeyRules : public QObject {
    Q_OBJECT

public:
    explicit KeyRules(QObject* parent = nullptr);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
};
