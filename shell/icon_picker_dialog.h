#pragma once

#include <QDialog>

class QListWidget;

/// Offers the PNG files of a folder as icons of a field, and none at all first.
class IconPickerDialog : public QDialog {
    Q_OBJECT

public:
    explicit IconPickerDialog(const QString& folder, QWidget* parent = nullptr);

    /// Makes it the choice. An icon from elsewhere gets an item of its own.
    void select(const QString& icon);

    /// "icons/" and the file's name, as wheel files write it; empty for no icon or no choice.
    QString chosenIcon() const;

private:
    QListWidget* list = nullptr;
};
