#include "shell/base/file_dialogs.h"

#include "shell/base/data_folder.h"
#include "shell/base/window_size.h"

#include <QApplication>
#include <QFileDialog>
#include <QFileInfo>
#include <QFontMetrics>
#include <QHeaderView>
#include <QListView>
#include <QMessageBox>
#include <QSplitter>
#include <QTreeView>
#include <QUrl>

namespace {

/// The user's files and the shipped examples, which are elsewhere where a package has installed the program.
void offerFolders(QFileDialog& dialog) {
    QList<QUrl> places = dialog.sidebarUrls();
    for (const QString& folder : {dataFolder(), QCoreApplication::applicationDirPath() + "/przykłady"}) {
        const QUrl place = QUrl::fromLocalFile(folder);
        if (QFileInfo(folder).isDir() && !places.contains(place))
            places.append(place);
    }
    dialog.setSidebarUrls(places);
    const auto* list = dialog.findChild<QListView*>(QStringLiteral("sidebar"));
    auto* splitter = dialog.findChild<QSplitter*>();
    if (list == nullptr || splitter == nullptr)
        return;
    constexpr int padding = 12; // of the list and its frame in the style sheets
    const int width = list->sizeHintForColumn(0) + padding;
    splitter->setSizes({width, dialog.width() - width});
    // Qt forgets the current row whenever the folder changes; arrow keys would begin at the first row again.
    QItemSelectionModel* selection = list->selectionModel();
    QObject::connect(selection, &QItemSelectionModel::selectionChanged, list, [selection] {
        if (selection->hasSelection() && !selection->currentIndex().isValid())
            selection->setCurrentIndex(selection->selectedIndexes().first(), QItemSelectionModel::NoUpdate);
    });
}

/// Applies to Qt's own dialog only: a native dialog has no QTreeView.
void prepareList(QFileDialog& dialog) {
    auto* files = dialog.findChild<QTreeView*>();
    if (files == nullptr)
        return;
    // An initially selected row can override the file name that is filled in.
    files->selectionModel()->clear();
    // The default column widths are too small for the padding of the style sheets.
    files->header()->setStretchLastSection(false);
    files->header()->setSectionResizeMode(QHeaderView::ResizeToContents);
    files->header()->setSectionResizeMode(0, QHeaderView::Stretch);
    dialog.resize(QSize(760, 480).boundedTo(maximumWindowSize(*dialog.parentWidget())));
    offerFolders(dialog);
}

QStringList chosenFiles(QFileDialog& dialog) {
    prepareList(dialog);
    return dialog.exec() == QDialog::Accepted ? dialog.selectedFiles() : QStringList();
}

QString chosenFile(QFileDialog& dialog) {
    return chosenFiles(dialog).value(0);
}

bool mayOverwrite(QWidget* parent, const QString& title, const QString& path) {
    const QFontMetrics metrics(QApplication::font());
    const QString name = metrics.elidedText(QFileInfo(path).fileName(), Qt::ElideMiddle, 600);
    QMessageBox box(
        QMessageBox::Warning, title,
        QCoreApplication::translate("FileDialogs", "Plik %1 już istnieje. Zastąpić go?").arg(name),
        QMessageBox::Yes | QMessageBox::No, parent);
    box.setTextFormat(Qt::PlainText); // a file name may contain HTML
    box.setDefaultButton(QMessageBox::No);
    return box.exec() == QMessageBox::Yes;
}

} // namespace

QString askFileToOpen(QWidget* parent, const QString& title, const QString& start, const QString& filter) {
    QFileDialog dialog(parent, title, start, filter);
    dialog.setFileMode(QFileDialog::ExistingFile);
    return chosenFile(dialog);
}

QStringList askFilesToOpen(QWidget* parent, const QString& title, const QString& start,
                           const QString& filter) {
    QFileDialog dialog(parent, title, start, filter);
    dialog.setFileMode(QFileDialog::ExistingFiles);
    return chosenFiles(dialog);
}

QString askFileToSave(QWidget* parent, const QString& title, const QString& start, const QString& filter,
                      const QString& suffix) {
    QString path = start;
    for (;;) {
        QFileDialog dialog(parent, title, path, filter);
        dialog.setAcceptMode(QFileDialog::AcceptSave);
        // Some native dialogs ask before the suffix is appended.
        dialog.setOption(QFileDialog::DontConfirmOverwrite);
        path = chosenFile(dialog);
        if (path.isEmpty())
            return {};
        // Not setDefaultSuffix(), which takes the ".0" of "koła 2.0" for a suffix.
        if (!path.endsWith('.' + suffix, Qt::CaseInsensitive))
            path += '.' + suffix;
        if (!QFileInfo::exists(path) || mayOverwrite(parent, title, path))
            return path;
    }
}
