#include "shell/wheels/icon_picker_dialog.h"

#include "common/file_names.h"
#include "shell/base/window_size.h"
#include "shell/wheels/field_icons.h"

#include <QDialogButtonBox>
#include <QDir>
#include <QListWidget>
#include <QVBoxLayout>

namespace {

/// "icons/" and the file name, of each once, in the order of the names.
QStringList iconsIn(const QStringList& folders) {
    const QString prefix = QString::fromUtf16(iconFolderName) + '/';
    QStringList icons;
    for (const QString& folder : folders) {
        for (const QString& name : QDir(folder + '/' + prefix).entryList({"*.png"}, QDir::Files))
            icons.append(prefix + name);
    }
    icons.removeDuplicates();
    icons.sort();
    return icons;
}

} // namespace

IconPickerDialog::IconPickerDialog(const QStringList& folders, QWidget* parent) : QDialog(parent) {
    setWindowTitle(tr("Wybierz ikonę"));
    resize(QSize(520, 420).boundedTo(maximumWindowSize(parent == nullptr ? *this : *parent)));
    auto* column = new QVBoxLayout(this);
    list = new QListWidget;
    list->setAccessibleName(tr("Ikony"));
    list->setViewMode(QListView::IconMode);
    list->setIconSize({48, 48});
    // Larger only for large fonts, of which the names would be cut off.
    const QFontMetrics metrics = list->fontMetrics();
    list->setGridSize(QSize(86, 78).expandedTo({metrics.horizontalAdvance(tr("(bez ikony)")) + 16,
                                                list->iconSize().height() + metrics.height() + 13}));
    list->setResizeMode(QListView::Adjust);
    list->setMovement(QListView::Static);
    auto* none = new QListWidgetItem(tr("(bez ikony)"), list);
    none->setData(Qt::UserRole, QString());
    for (const QString& icon : iconsIn(folders)) {
        auto* item = new QListWidgetItem(fieldIcon(iconFile(folders, icon)), iconNameOf(icon), list);
        item->setData(Qt::UserRole, icon);
    }
    column->addWidget(list);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    column->addWidget(buttons);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(list, &QListWidget::itemDoubleClicked, this, &QDialog::accept);
}

void IconPickerDialog::select(const QString& icon) {
    for (int row = 0; row < list->count(); ++row) {
        if (list->item(row)->data(Qt::UserRole) == icon) {
            list->setCurrentRow(row);
            return;
        }
    }
    auto* item = new QListWidgetItem(iconNameOf(icon), list);
    item->setData(Qt::UserRole, icon);
    list->setCurrentItem(item);
}

QString IconPickerDialog::chosenIcon() const {
    const QListWidgetItem* item = list->currentItem();
    return item == nullptr ? QString() : item->data(Qt::UserRole).toString();
}
