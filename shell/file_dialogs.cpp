#include "shell/file_dialogs.h"

#include "shell/screen_room.h"

#include <QApplication>
#include <QFileDialog>
#include <QFileInfo>
#include <QFontMetrics>
#include <QHeaderView>
#include <QMessageBox>
#include <QTreeView>

namespace {

/// For Qt's own dialog: where the system's is shown there is no list here.
void prepareList(QFileDialog& dialog) {
    auto* files = dialog.findChild<QTreeView*>();
    if (files == nullptr)
        return;
    files->selectionModel()
        ->clear(); // a row that starts out selected can win over the name that is filled in
    // The widths that the columns come with leave no room for the sheets' padding.
    files->header()->setStretchLastSection(false);
    files->header()->setSectionResizeMode(QHeaderView::ResizeToContents);
    files->header()->setSectionResizeMode(0, QHeaderView::Stretch);
    dialog.resize(QSize(760, 480).boundedTo(screenRoom(*dialog.parentWidget())));
}

QString chosenFile(QFileDialog& dialog) {
    prepareList(dialog);
    return dialog.exec() == QDialog::Accepted ? dialog.selectedFiles().value(0) : QString();
}

bool mayOverwrite(QWidget* parent, const QString& title, const QString& path) {
    const QFontMetrics metrics(QApplication::font());
    const QString name = metrics.elidedText(QFileInfo(path).fileName(), Qt::ElideMiddle, 600);
    QMessageBox box(
        QMessageBox::Warning, title,
        QCoreApplication::translate("FileDialogs", "Plik %1 już istnieje. Zastąpić go?").arg(name),
        QMessageBox::Yes | QMessageBox::No, parent);
    box.setTextFormat(Qt::PlainText); // a name may look like HTML
    box.setDefaultButton(QMessageBox::No);
    return box.exec() == QMessageBox::Yes;
}

} // namespace

QString askFileToOpen(QWidget* parent, const QString& title, const QString& start, const QString& filter) {
    QFileDialog dialog(parent, title, start, filter);
    dialog.setFileMode(QFileDialog::ExistingFile);
    return chosenFile(dialog);
}

QString askFileToSave(QWidget* parent, const QString& title, const QString& start, const QString& filter,
                      const QString& suffix) {
    QString path = start;
    for (;;) {
        QFileDialog dialog(parent, title, path, filter);
        dialog.setAcceptMode(QFileDialog::AcceptSave);
        // Some systems' dialogs ask about the name before it gets its suffix.
        dialog.setOption(QFileDialog::DontConfirmOverwrite);
        path = chosenFile(dialog);
        if (path.isEmpty())
            return {};
        if (!path.endsWith('.' + suffix, Qt::CaseInsensitive)) // "koła 2.0" has none yet
            path += '.' + suffix;
        if (!QFileInfo::exists(path) || mayOverwrite(parent, title, path))
            return path;
    }
}
