#pragma once

#include <QWidget>

class QTreeWidget;
struct WheelDocument;

/// The tree of a document's wheels and their functions, with buttons to add and remove. Does not change the
/// document; reports what the user asks for.
class WheelTree : public QWidget {
    Q_OBJECT

public:
    explicit WheelTree(QWidget* parent = nullptr);

    /// Rebuilds the tree from the document and selects a wheel, or its function if `function` is a valid
    /// index. Emits selectionChanged.
    void rebuild(const WheelDocument& document, int wheel, int function);

    /// Shows another name for the selected function.
    void renameSelected(const QString& name);

signals:
    /// Indices in the document. `function` is -1 on a wheel; both are -1 if nothing is selected.
    void selectionChanged(int wheel, int function);
    void addWheelRequested();
    void addFunctionRequested();
    void removeRequested();
    /// The user wants to edit the selected function.
    void editRequested();

private:
    void onTreeSelection();

    QTreeWidget* tree = nullptr;
};
