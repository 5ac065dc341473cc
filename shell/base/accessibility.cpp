#include "shell/base/accessibility.h"

#include "shell/base/accessible_views.h"

#include <QAbstractItemView>
#include <QAccessible>
#include <QAccessibleWidget>
#include <QComboBox>
#include <QKeySequence>
#include <QLineEdit>

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

/// As Qt's own, but while it is editable only its text field has the focus.
class ComboBox : public QAccessibleWidget {
public:
    explicit ComboBox(QComboBox* combo) : QAccessibleWidget(combo, QAccessible::ComboBox) {}

    QAccessible::State state() const override {
        QAccessible::State state = QAccessibleWidget::state();
        state.focused = state.focused && !combo().isEditable();
        state.expandable = true;
        state.expanded = combo().view()->isVisible();
        return state;
    }

    int childCount() const override { return combo().isEditable() ? 2 : 1; }

    QAccessibleInterface* child(int position) const override {
        if (position == 0)
            return QAccessible::queryAccessibleInterface(combo().view());
        return position == 1 ? QAccessible::queryAccessibleInterface(combo().lineEdit()) : nullptr;
    }

    int indexOfChild(const QAccessibleInterface* child) const override {
        if (child->object() == combo().view())
            return 0;
        return combo().isEditable() && child->object() == combo().lineEdit() ? 1 : -1;
    }

    QAccessibleInterface* childAt(int x, int y) const override {
        for (int position = childCount() - 1; position >= 0; --position) {
            if (child(position)->rect().contains(x, y))
                return child(position);
        }
        return nullptr;
    }

    QAccessibleInterface* focusChild() const override {
        return combo().isEditable() && combo().hasFocus() ? child(1) : nullptr;
    }

    QString text(QAccessible::Text kind) const override {
#ifdef Q_OS_UNIX // where the label is a relation
        const bool choice = kind == QAccessible::Value || kind == QAccessible::Name;
#else
        const bool choice = kind == QAccessible::Value;
#endif
        if (choice && !combo().currentText().isEmpty())
            return combo().currentText();
        if (kind == QAccessible::Accelerator)
            return QKeySequence(Qt::Key_Down).toString(QKeySequence::NativeText);
        return QAccessibleWidget::text(kind);
    }

    QStringList actionNames() const override {
        return {showMenuAction(), pressAction()};
    }

    void doAction(const QString& action) override {
        if (action != showMenuAction() && action != pressAction())
            QAccessibleWidget::doAction(action);
        else if (combo().view()->isVisible())
            combo().hidePopup();
        else
            combo().showPopup();
    }

private:
    QComboBox& combo() const {
        return *qobject_cast<QComboBox*>(object());
    }
};

QAccessibleInterface* makeInterface(const QString& className, QObject* object) {
    if (className == QStringLiteral("QDialogButtonBox"))
        return new ButtonRow(qobject_cast<QWidget*>(object), QAccessible::Grouping);
    if (className == QStringLiteral("QListView") || className == QStringLiteral("QTreeView"))
        return new AccessibleView(qobject_cast<QAbstractItemView*>(object));
    if (className == QStringLiteral("QComboBox"))
        return new ComboBox(qobject_cast<QComboBox*>(object));
    return nullptr; // Qt's own
}

QAccessible::UpdateHandler next = nullptr;
void filterEvent(QAccessibleEvent* event);

void pass(QAccessibleEvent& event) {
    QAccessible::installUpdateHandler(next);
    QAccessible::updateAccessibility(&event);
    QAccessible::installUpdateHandler(filterEvent);
}

// Qt reports every new current row as the focus: a screen reader would leave the button that has just added a
// row. And it reports a view, not its row, when that gets the focus.
void passFocus(QAccessibleEvent& event) {
    const auto* const widget = qobject_cast<QWidget*>(event.object());
    auto* const accessible = QAccessible::queryAccessibleInterface(event.object());
    const bool isView = dynamic_cast<AccessibleView*>(accessible) != nullptr;
    if (isView && !widget->hasFocus())
        return;
    auto* const within =
        isView || dynamic_cast<ComboBox*>(accessible) != nullptr ? accessible->focusChild() : nullptr;
    if (within == nullptr)
        return pass(event);
    QAccessibleEvent inner(within, QAccessible::Focus);
    pass(inner);
}

void filterEvent(QAccessibleEvent* event) {
    if (event->type() == QAccessible::TableModelChanged) { // no platform passes it on
        const auto* view =
            dynamic_cast<AccessibleView*>(QAccessible::queryAccessibleInterface(event->object()));
        if (view != nullptr)
            view->update();
    } else if (event->type() == QAccessible::Focus) {
        passFocus(*event);
    } else {
        pass(*event);
    }
}

} // namespace

void installAccessibility() {
    QAccessible::installFactory(makeInterface);
    next = QAccessible::installUpdateHandler(filterEvent);
}
