#include "shell/wheels/wheel_tree.h"

#include "shell/base/cards.h"
#include "shell/base/shortcuts.h"
#include "shell/wheels/field_icons.h"
#include "shell/wheels/wheel_document.h"

#include <QBoxLayout>
#include <QPushButton>
#include <QSignalBlocker>
#include <QTreeWidget>

namespace {

constexpr int wheelRole = Qt::UserRole;
constexpr int functionRole = Qt::UserRole + 1; // -1 on a wheel's item

QString functionText(const QString& name) {
    return name.isEmpty() ? WheelTree::tr("(bez nazwy)") : name;
}

void addFunctionItem(QTreeWidgetItem* wheelItem, const WheelDocument& document, int wheel, int index) {
    const EditorFunction& function = document.wheels[wheel].actions[index];
    auto* item = new QTreeWidgetItem(wheelItem);
    item->setText(0, functionText(function.name));
    if (!function.icon.isEmpty())
        item->setIcon(0, fieldIcon(iconFile(iconFolders(document.folder()), function.icon)));
    item->setData(0, wheelRole, wheel);
    item->setData(0, functionRole, index);
}

} // namespace

WheelTree::WheelTree(QWidget* parent) : QWidget(parent) {
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(12);
    tree = new QTreeWidget;
    tree->setAccessibleName(tr("Koła i funkcje"));
    tree->setHeaderHidden(true);
    // The column is this wide, or wider if large fonts widen the buttons below.
    tree->setMinimumWidth(230);
    tree->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Expanding);
    tree->setUniformRowHeights(true);
    tree->ensurePolished(); // or rows added before the style sheet is applied keep the wrong height
    connect(tree, &QTreeWidget::itemSelectionChanged, this, &WheelTree::onTreeSelection);
    column->addWidget(tree, 1);
    auto* row = new QHBoxLayout;
    const auto addNamed = [&](const QString& text, const QString& spokenName, auto signal) {
        QPushButton* button = addButton(*row, text);
        button->setAccessibleName(spokenName);
        connect(button, &QPushButton::clicked, this, signal);
        return button;
    };
    addShortcut(addNamed(tr("+ koło"), tr("Dodaj koło"), &WheelTree::addWheelRequested),
                Qt::CTRL | Qt::SHIFT | Qt::Key_N);
    addShortcut(addNamed(tr("+ funkcja"), tr("Dodaj funkcję"), &WheelTree::addFunctionRequested),
                Qt::CTRL | Qt::Key_N);
    QPushButton* remove = addNamed(tr("Usuń"), tr("Usuń koło lub funkcję"), &WheelTree::removeRequested);
    describeShortcut(remove, Qt::Key_Delete);
    addShortcut(
        tree, Qt::Key_Delete, [remove] { remove->click(); }, Qt::WidgetShortcut);
    // Not itemActivated, which some desktops emit for a click.
    addShortcut(
        tree, Qt::Key_Return, [this] { emit editRequested(); }, Qt::WidgetShortcut);
    column->addLayout(row);
}

void WheelTree::rebuild(const WheelDocument& document, int wheel, int function) {
    {
        const QSignalBlocker blocker(tree); // ignore selection changes while items are removed
        tree->clear();
        for (int i = 0; i < document.wheels.size(); ++i) {
            const EditorWheel& shown = document.wheels[i];
            auto* item = new QTreeWidgetItem(tree);
            item->setText(0, shown.name.isEmpty() ? tr("(koło bez nazwy)") : shown.name);
            item->setData(0, wheelRole, i);
            item->setData(0, functionRole, -1);
            for (int j = 0; j < shown.actions.size(); ++j)
                addFunctionItem(item, document, i, j);
            item->setExpanded(true);
        }
    }
    QTreeWidgetItem* selected = tree->topLevelItem(wheel);
    if (selected == nullptr) {
        onTreeSelection();
        return;
    }
    if (QTreeWidgetItem* child = selected->child(function))
        selected = child;
    tree->setCurrentItem(selected);
}

void WheelTree::renameSelected(const QString& name) {
    if (QTreeWidgetItem* item = tree->currentItem())
        item->setText(0, functionText(name));
}

void WheelTree::onTreeSelection() {
    const QTreeWidgetItem* item = tree->currentItem();
    emit selectionChanged(item == nullptr ? -1 : item->data(0, wheelRole).toInt(),
                          item == nullptr ? -1 : item->data(0, functionRole).toInt());
}
