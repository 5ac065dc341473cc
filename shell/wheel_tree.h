#pragma once

#include <QWidget>

class QTreeWidget;
struct WheelDocument;

/// The wheels of a document and their functions as a tree, above buttons to add and remove them. Only shows
/// the document and reports what the user does.
class WheelTree : public QWidget {
    Q_OBJECT

public:
    explicit WheelTree(QWidget* parent = nullptr);

    /// Shows the document as it is now and selects a wheel, or one of its functions if `function` is a valid
    /// index there. Emits selectionChanged.
    void rebuild(const WheelDocument& document, int wheel, int function);

    /// Shows another name for the selected function.
    void renameSelected(const QString& name);

signals:
    /// Indices in the document last shown. `function` is -1 on a wheel; both are -1 if nothing is selected.
    void selectionChanged(int wheel, int function);
    void addWheelRequested();
    void addFunctionRequested();
    void removeRequested();

private:
    void onTreeSelection();

    QTreeWidget* tree = nullptr;
};
