#pragma once

#include <QDialog>

class QListWidget;

/// Offers "no icon" and the PNG files in the folders "icons" of some folders. Of files of one name the first
/// folder's is offered.
class IconPickerDialog : public QDialog {
    Q_OBJECT

public:
    explicit IconPickerDialog(const QStringList& folders, QWidget* parent = nullptr);

    /// Selects the icon. One from another folder is added to the list.
    void select(const QString& icon);

    /// "icons/" and the file name, as in wheel files; empty for no icon or no selection.
    QString chosenIcon() const;

private:
    QListWidget* list = nullptr;
};
