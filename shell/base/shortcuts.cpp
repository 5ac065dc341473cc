#include "shell/base/shortcuts.h"

#include <QApplication>
#include <QKeyEvent>
#include <QPushButton>
#include <QShortcut>

void addShortcut(QWidget* owner, const QKeySequence& keys, std::function<void()> act,
                 Qt::ShortcutContext context) {
    auto* shortcut = new QShortcut(owner);
    QList<QKeySequence> alternatives{keys};
    const QKeyCombination key = keys[0];
    if (key.key() == Qt::Key_Return)
        alternatives.append(QKeyCombination(key.keyboardModifiers(), Qt::Key_Enter)); // of the number pad
    shortcut->setKeys(alternatives);
    shortcut->setContext(context);
    shortcut->setAutoRepeat(false);
    QObject::connect(shortcut, &QShortcut::activated, owner, [act = std::move(act)] {
        if (QApplication::activeModalWidget() == nullptr) // some window managers activate a window behind it
            act();
    });
}

void describeShortcut(QWidget* widget, const QKeySequence& keys, QString name) {
    if (name.isEmpty())
        name = widget->accessibleName();
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

bool EnterKey::isIn(const QEvent& event) {
    if (event.type() != QEvent::KeyPress)
        return false;
    const auto& press = static_cast<const QKeyEvent&>(event);
    return (press.key() == Qt::Key_Return || press.key() == Qt::Key_Enter) &&
           (press.modifiers() & ~Qt::KeypadModifier) == Qt::NoModifier;
}

bool EnterKey::eventFilter(QObject* watched, QEvent* event) {
    if (!isIn(*event))
        return false;
    if (static_cast<QKeyEvent*>(event)->isAutoRepeat())
        return true;
    auto* button = qobject_cast<QPushButton*>(watched);
    if (button == nullptr || button->autoDefault()) // in a dialog, which has its own rules
        return false;
    button->click();
    return true;
}
