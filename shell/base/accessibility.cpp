#include "shell/base/accessibility.h"

#include <QAbstractItemView>
#include <QAccessible>
#include <QAccessibleWidget>

namespace {

/// Qt makes a dialog's first button the focus proxy of its row, which then has the focus together with it.
class ButtonRow : public QAccessibleWidget {
public:
    using QAccessibleWidget::QAccessibleWidget;

    QAccessible::State state() const override {
        QAccessible::State state = QAccessibleWidget::state();
        state.focused = false;
        return state;
    }
};

QAccessibleInterface* makeInterface(const QString& className, QObject* object) {
    if (className != QStringLiteral("QDialogButtonBox"))
        return nullptr; // Qt's own
    return new ButtonRow(qobject_cast<QWidget*>(object), QAccessible::Grouping);
}

QAccessible::UpdateHandler next = nullptr;

// Qt reports every new current row as the focus: a screen reader would leave the button that has just added a
// row.
void filterEvent(QAccessibleEvent* event) {
    if (event->type() == QAccessible::TableModelChanged)
        return; // already applied, and no platform passes it on; a second time would count the rows twice
    const auto* view = qobject_cast<QAbstractItemView*>(event->object());
    if (event->type() == QAccessible::Focus && view != nullptr && !view->hasFocus())
        return;
    QAccessible::installUpdateHandler(next);
    QAccessible::updateAccessibility(event);
    QAccessible::installUpdateHandler(filterEvent);
}

} // namespace

void installAccessibility() {
    QAccessible::installFactory(makeInterface);
    next = QAccessible::installUpdateHandler(filterEvent);
}
