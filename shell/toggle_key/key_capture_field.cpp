#include "shell/toggle_key/key_capture_field.h"

#include "shell/toggle_key/toggle_key_names.h"

#include <QKeyEvent>
#include <algorithm>
#include <iterator>

namespace {

bool isForTheDialog(const QKeyEvent& press) {
    constexpr int keys[] = {Qt::Key_Tab,   Qt::Key_Backtab, Qt::Key_Escape,  Qt::Key_Return,
                            Qt::Key_Enter, Qt::Key_Shift,   Qt::Key_Control, Qt::Key_Alt,
                            Qt::Key_AltGr, Qt::Key_Meta,    Qt::Key_Super_L, Qt::Key_Super_R};
    return (press.modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier)) != 0 ||
           std::find(std::begin(keys), std::end(keys), press.key()) != std::end(keys);
}

} // namespace

KeyCaptureField::KeyCaptureField(QWidget* parent) : PlaceholderEdit(parent) {
    setReadOnly(true);
    setContextMenuPolicy(Qt::NoContextMenu);
}

/// The window's shortcuts, of a single key or for moving in a text, must not take the key first.
bool KeyCaptureField::event(QEvent* event) {
    if (event->type() != QEvent::ShortcutOverride || isForTheDialog(static_cast<QKeyEvent&>(*event)))
        return PlaceholderEdit::event(event);
    event->accept();
    return true;
}

void KeyCaptureField::keyPressEvent(QKeyEvent* event) {
    if (isForTheDialog(*event)) {
        event->ignore(); // left to the dialog
    } else if (const QString name = toggleKeyName(*event); !event->isAutoRepeat()) {
        if (name.isEmpty())
            emit unnamedKeyPressed();
        else
            emit captured(name);
    }
}
