#pragma once

#include <QAccessibleWidget>
#include <QHash>
#include <QModelIndex>

class QAbstractItemView;

/// A list or tree as assistive technology sees it. Unlike Qt's own, a row has the focus only while its view
/// has the keyboard, and then in place of the view.
class AccessibleView : public QAccessibleWidget {
public:
    explicit AccessibleView(QAbstractItemView* view);
    ~AccessibleView() override;
    AccessibleView(const AccessibleView&) = delete;
    AccessibleView& operator=(const AccessibleView&) = delete;

    QAccessible::State state() const override;
    QAccessibleInterface* parent() const override;
    QAccessibleInterface* focusChild() const override;
    QAccessibleInterface* childAt(int x, int y) const override;
    int childCount() const override;
    QAccessibleInterface* child(int position) const override;
    int indexOfChild(const QAccessibleInterface* child) const override;

    QAbstractItemView* view() const;
    bool hasKeyboard() const;
    /// To be called after each change of the model: drops the rows that are gone, and keeps the others.
    void update() const;

private:
    QAccessibleInterface* row(const QModelIndex& index) const;
    QAccessibleInterface* header(int section) const;

    // Made when they are first asked for. The keys are the positions at that time.
    mutable QHash<QModelIndex, QAccessible::Id> rows;
    mutable QHash<int, QAccessible::Id> headers;
};
