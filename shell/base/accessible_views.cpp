#include "shell/base/accessible_views.h"

#include <QApplication>
#include <QHeaderView>
#include <QListView>
#include <QPersistentModelIndex>
#include <QTreeView>
#include <utility>

namespace {

/// The rows of a tree from top to bottom, without those in collapsed branches.
void appendShownRows(const QTreeView& tree, const QModelIndex& parent, QModelIndexList& shown) {
    for (int row = 0; row < tree.model()->rowCount(parent); ++row) {
        if (tree.isRowHidden(row, parent))
            continue;
        shown.append(tree.model()->index(row, 0, parent));
        if (tree.isExpanded(shown.last()))
            appendShownRows(tree, QModelIndex(shown.last()), shown);
    }
}

QModelIndexList shownRows(const QTreeView& tree) {
    QModelIndexList shown;
    appendShownRows(tree, tree.rootIndex(), shown);
    return shown;
}

// A file dialog's, which may have thousands of rows.
bool isFlat(const QTreeView& tree) {
    return !tree.itemsExpandable();
}

/// What the interfaces within a view have in common.
class ViewPart : public QAccessibleInterface {
public:
    explicit ViewPart(const AccessibleView& accessible) : owner(accessible) {}

    bool isValid() const override { return owner.isValid() && owner.view()->model() != nullptr; }
    QObject* object() const override { return nullptr; }
    QAccessibleInterface* parent() const override {
        return QAccessible::queryAccessibleInterface(owner.object());
    }
    QAccessibleInterface* childAt(int, int) const override { return nullptr; }
    QAccessibleInterface* child(int) const override { return nullptr; }
    int childCount() const override { return 0; }
    int indexOfChild(const QAccessibleInterface*) const override { return -1; }
    void setText(QAccessible::Text, const QString&) override {}

protected:
    const AccessibleView& owner; // which deletes its parts
};

class ViewHeader : public ViewPart {
public:
    ViewHeader(const AccessibleView& accessible, int number) : ViewPart(accessible), section(number) {}

    QAccessible::Role role() const override { return QAccessible::ColumnHeader; }

    QAccessible::State state() const override {
        QAccessible::State state;
        const QHeaderView* const header = widget();
        state.invisible = header == nullptr || !header->isVisible();
        return state;
    }

    QString text(QAccessible::Text kind) const override {
        if (!isValid() || kind != QAccessible::Name)
            return {};
        return owner.view()->model()->headerData(section, Qt::Horizontal).toString();
    }

    QRect rect() const override {
        const QHeaderView* const header = widget();
        if (header == nullptr || !header->isVisible())
            return {};
        return {header->mapToGlobal(QPoint(header->sectionViewportPosition(section), 0)),
                QSize(header->sectionSize(section), header->height())};
    }

    const int section;

private:
    const QHeaderView* widget() const {
        const auto* const tree = isValid() ? qobject_cast<const QTreeView*>(owner.view()) : nullptr;
        return tree == nullptr ? nullptr : tree->header();
    }
};

class ViewRow : public ViewPart, public QAccessibleActionInterface {
public:
    ViewRow(const AccessibleView& accessible, const QModelIndex& place)
        : ViewPart(accessible), index(place) {}

    bool isValid() const override {
        return ViewPart::isValid() && index.isValid() && index.model() == owner.view()->model();
    }

    QAccessible::Role role() const override {
        return owner.role() == QAccessible::Tree ? QAccessible::TreeItem : QAccessible::ListItem;
    }

    QAccessible::State state() const override {
        QAccessible::State state;
        state.invisible = true;
        if (!isValid())
            return state;
        const QAbstractItemView& view = *owner.view();
        const Qt::ItemFlags flags = index.flags();
        const QVariant check = index.data(Qt::CheckStateRole);
        state.invisible = !view.isVisible() || !view.viewport()->rect().intersects(view.visualRect(index));
        state.disabled = !view.isEnabled() || !flags.testFlag(Qt::ItemIsEnabled);
        state.selectable = state.focusable = flags.testFlag(Qt::ItemIsSelectable);
        state.multiSelectable = state.selectable && view.selectionMode() == QAbstractItemView::MultiSelection;
        state.extSelectable =
            state.selectable && view.selectionMode() == QAbstractItemView::ExtendedSelection;
        state.selected = view.selectionModel()->isSelected(index);
        state.focused = owner.hasKeyboard() && view.currentIndex() == index;
        state.checkable = flags.testFlag(Qt::ItemIsUserCheckable) && check.isValid();
        state.checked = check.toInt() == Qt::Checked;
        if (const auto* const tree = qobject_cast<const QTreeView*>(&view)) {
            state.expandable = index.column() == 0 && tree->model()->hasChildren(index);
            state.expanded = tree->isExpanded(index);
            state.collapsed = state.expandable && !state.expanded;
        }
        return state;
    }

    QString text(QAccessible::Text kind) const override {
        if (!isValid())
            return {};
        if (kind == QAccessible::Description)
            return index.data(Qt::AccessibleDescriptionRole).toString();
        if (kind != QAccessible::Name)
            return {};
        const QString name = index.data(Qt::AccessibleTextRole).toString();
        return name.isEmpty() ? index.data(Qt::DisplayRole).toString() : name;
    }

    QRect rect() const override {
        if (!isValid())
            return {};
        const QRect within = owner.view()->visualRect(index);
        return within.isNull() ? within
                               : within.translated(owner.view()->viewport()->mapToGlobal(QPoint(0, 0)));
    }

    void* interface_cast(QAccessible::InterfaceType type) override {
        return type == QAccessible::ActionInterface ? static_cast<QAccessibleActionInterface*>(this)
                                                    : nullptr;
    }

    QStringList actionNames() const override { return {toggleAction()}; }
    QStringList keyBindingsForAction(const QString&) const override { return {}; }

    // The last call may change the model, and so delete this row.
    void doAction(const QString& action) override {
        if (action != toggleAction() || !isValid() || state().disabled || !state().selectable)
            return;
        QAbstractItemView& view = *owner.view();
        if (!state().selected)
            view.setCurrentIndex(index);
        else if (state().multiSelectable || state().extSelectable)
            view.selectionModel()->select(index, QItemSelectionModel::Deselect);
    }

    const QPersistentModelIndex index;
};

} // namespace

AccessibleView::AccessibleView(QAbstractItemView* view)
    : QAccessibleWidget(view,
                        qobject_cast<QTreeView*>(view) != nullptr ? QAccessible::Tree : QAccessible::List) {}

AccessibleView::~AccessibleView() {
    for (const QAccessible::Id id : std::as_const(rows))
        QAccessible::deleteAccessibleInterface(id);
    for (const QAccessible::Id id : std::as_const(headers))
        QAccessible::deleteAccessibleInterface(id);
}

QAbstractItemView* AccessibleView::view() const {
    return qobject_cast<QAbstractItemView*>(object());
}

bool AccessibleView::hasKeyboard() const {
    return QApplication::focusWidget() == view(); // while a completer's list merely has a proxy
}

QAccessible::State AccessibleView::state() const {
    QAccessible::State state = QAccessibleWidget::state();
    state.focused = hasKeyboard() && focusChild() == nullptr;
    return state;
}

QAccessibleInterface* AccessibleView::parent() const {
    if (parentObject()->inherits("QComboBoxPrivateContainer"))
        return QAccessible::queryAccessibleInterface(parentObject()->parent()); // as its child(0) says
    return QAccessibleWidget::parent();
}

QAccessibleInterface* AccessibleView::focusChild() const {
    return hasKeyboard() ? row(view()->currentIndex()) : nullptr;
}

QAccessibleInterface* AccessibleView::childAt(int x, int y) const {
    return row(view()->indexAt(view()->viewport()->mapFromGlobal(QPoint(x, y))));
}

// The order is that of the events that Qt's views send: rows from top to bottom, of a tree every column and
// the header first.

int AccessibleView::childCount() const {
    const QAbstractItemModel* const model = view()->model();
    if (model == nullptr)
        return 0;
    const auto* const tree = qobject_cast<const QTreeView*>(view());
    if (tree == nullptr)
        return model->rowCount(view()->rootIndex());
    const int count =
        isFlat(*tree) ? model->rowCount(tree->rootIndex()) : static_cast<int>(shownRows(*tree).size());
    return (count + 1) * model->columnCount(tree->rootIndex());
}

QAccessibleInterface* AccessibleView::child(int position) const {
    const QAbstractItemModel* const model = view()->model();
    if (model == nullptr || position < 0)
        return nullptr;
    const QModelIndex root = view()->rootIndex();
    if (const auto* const list = qobject_cast<const QListView*>(view()))
        return row(model->index(position, list->modelColumn(), root));
    const auto* const tree = qobject_cast<const QTreeView*>(view());
    const int columns = model->columnCount(root);
    if (tree == nullptr || columns == 0)
        return nullptr;
    if (position < columns)
        return header(position);
    const int shown = position / columns - 1;
    const QModelIndex first = isFlat(*tree) ? model->index(shown, 0, root) : shownRows(*tree).value(shown);
    return row(first.siblingAtColumn(position % columns));
}

int AccessibleView::indexOfChild(const QAccessibleInterface* child) const {
    if (const auto* const part = dynamic_cast<const ViewHeader*>(child))
        return part->section;
    const auto* const part = dynamic_cast<const ViewRow*>(child);
    if (part == nullptr || !part->isValid() || part->index.model() != view()->model())
        return -1;
    const auto* const tree = qobject_cast<const QTreeView*>(view());
    if (tree == nullptr)
        return part->index.row();
    const int shown =
        isFlat(*tree) ? part->index.row()
                      : static_cast<int>(shownRows(*tree).indexOf(part->index.sibling(part->index.row(), 0)));
    return shown < 0 ? -1
                     : (shown + 1) * tree->model()->columnCount(tree->rootIndex()) + part->index.column();
}

QAccessibleInterface* AccessibleView::row(const QModelIndex& index) const {
    if (!index.isValid())
        return nullptr;
    if (rows.contains(index)) {
        const auto* const known =
            dynamic_cast<const ViewRow*>(QAccessible::accessibleInterface(rows.value(index)));
        if (known == nullptr || known->index != index)
            update(); // the model has changed, and the view does not know of it yet
    }
    if (rows.contains(index))
        return QAccessible::accessibleInterface(rows.value(index));
    auto* const made = new ViewRow(*this, index);
    rows.insert(index, QAccessible::registerAccessibleInterface(made));
    return made;
}

QAccessibleInterface* AccessibleView::header(int section) const {
    if (headers.contains(section))
        return QAccessible::accessibleInterface(headers.value(section));
    auto* const made = new ViewHeader(*this, section);
    headers.insert(section, QAccessible::registerAccessibleInterface(made));
    return made;
}

void AccessibleView::update() const {
    const QHash<QModelIndex, QAccessible::Id> before = std::exchange(rows, {});
    for (const QAccessible::Id id : before) {
        const auto* const part = dynamic_cast<const ViewRow*>(QAccessible::accessibleInterface(id));
        if (part != nullptr && part->isValid() && !rows.contains(part->index))
            rows.insert(part->index, id);
        else
            QAccessible::deleteAccessibleInterface(id);
    }
}
