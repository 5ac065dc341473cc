#include "shell/base/shortcuts.h"

#include "shell/base/key_repeat.h"

#include <QApplication>
#include <QKeyEvent>
#include <QPushButton>
#include <QShortcut>

namespace {

/// Whether the key press that is being handled repeats one that is held down.
bool isRepeated = false;

bool isButton(const QObject* watched) {
    return qobject_cast<const QAbstractButton*>(watched) != nullptr;
}

} // namespace

void addShortcut(QWidget* owner, const QKeySequence& keys, std::function<void()> act,
                 Qt::ShortcutContext context) {
    auto* shortcut = new QShortcut(owner);
    QList<QKeySequence> alternatives{keys};
    const QKeyCombination key = keys[0];
    if (key.key() == Qt::Key_Return)
        alternatives.append(QKeyCombination(key.keyboardModifiers(), Qt::Key_Enter)); // of the number pad
    shortcut->setKeys(alternatives);
    shortcut->setContext(context);
    QObject::connect(shortcut, &QShortcut::activated, owner, [act = std::move(act)] {
        // Some window managers activate a window behind a modal dialog.
        if (!isRepeated && QApplication::activeModalWidget() == nullptr)
            act();
    });
}

void describeShortcut(QWidget* widget, const QKeySequence& keys) {
    QString name = widget->accessibleName();
    if (const auto* button = qobject_cast<QPushButton*>(widget); button != nullptr && name.isEmpty())
        name = button->text();
    widget->setToolTip(QStringLiteral("%1 (%2)").arg(name, shortcutText(keys)));
    widget->setAccessibleDescription(shortcutText(keys));
}

void addShortcut(QPushButton* button, const QKeySequence& keys) {
    addShortcut(button, keys, [button] { button->click(); });
    describeShortcut(button, keys);
}

QString shortcutText(const QKeySequence& keys) {
    return keys.toString(QKeySequence::NativeText);
}

bool isEnterPress(const QEvent& event) {
    if (event.type() != QEvent::KeyPress)
        return false;
    const auto& press = static_cast<const QKeyEvent&>(event);
    return (press.key() == Qt::Key_Return || press.key() == Qt::Key_Enter) &&
           (press.modifiers() & ~Qt::KeypadModifier) == Qt::NoModifier;
}

KeyRules::KeyRules(QObject* parent) : QObject(parent) {
    watchKeyRepeats();
}

bool KeyRules::eventFilter(QObject* watched, QEvent* event) {
    const QEvent::Type type = event->type();
    if (type == QEvent::ApplicationStateChange &&
        QGuiApplication::applicationState() != Qt::ApplicationActive)
        forgetHeldKeys();
    if (type != QEvent::KeyPress && type != QEvent::ShortcutOverride)
        return false;
    const auto& key = static_cast<const QKeyEvent&>(*event);
    isRepeated = isRepetition(key);
    const bool isEnter = isEnterPress(key);
    if (isRepeated && (isEnter || (key.key() == Qt::Key_Space && isButton(watched))))
        return true;
    auto* button = qobject_cast<QPushButton*>(watched);
    if (!isEnter || button == nullptr || button->autoDefault()) // in a dialog, which has its own rules
        return false;
    button->click();
    return true;
}
