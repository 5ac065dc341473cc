#include "shell/voice_installer.h"

#include "common/data_folder.h"
#include "common/file_names.h"
#include "engine/core/overlay.h"
#include "shell/data_folder.h"
#include "shell/engine_status.h"
#include "shell/file_dialogs.h"
#include "shell/json_file.h"
#include "shell/message_boxes.h"
#include "shell/speech_library_file.h"
#include "shell/voice_page.h"
#include "shell/voice_unpacking.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QFileInfo>
#include <QLabel>
#include <QPointer>
#include <QProgressBar>
#include <QProgressDialog>
#include <QStandardPaths>
#include <QThread>
#include <QTimer>
#include <memory>

namespace {

constexpr std::chrono::milliseconds progressPeriod{100};
constexpr std::chrono::seconds startLimit{60}; // a large model takes half of it on a slow disk
constexpr int fullBar = 1000;

QString text(const char* words) {
    return QCoreApplication::translate("VoiceInstaller", words);
}

QString engineVoiceStatus() {
    return QStringView(OverlayVoiceStatus()).toString();
}

QString configPath() {
    return dataFolder() + '/' + QString::fromUtf16(configFileName);
}

QString downloadFolder() {
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::DownloadLocation);
    return QFileInfo(folder).isDir() ? folder : QDir::homePath();
}

/// True when the file then has this content.
bool writeConfig(const QJsonObject& config) {
    writeConfigObject(config);
    return readConfigObject() == config;
}

/// One installation, from the checks to the result. Owned by its window.
class VoiceInstallation : public QObject {
public:
    VoiceInstallation(const QStringList& files, QWidget* mainWindow);
    ~VoiceInstallation() override;

    void raiseDialog();

private:
    void makeDialog();
    void startWorker(std::function<void()> task, void (VoiceInstallation::*next)());
    void showProgress();
    void cancel();
    void onUnpacked();
    bool apply();
    bool stopVoice(const QJsonObject& config);
    QJsonObject newConfig(QJsonObject config) const;
    void awaitStatus();
    void onTick();
    void finish(QMessageBox::Icon icon, const QString& message);
    QString installedPart() const;
    QString missingPart() const;

    QWidget* window;
    QStringList archives;
    QPointer<QProgressDialog> dialog;
    QTimer ticker;
    std::unique_ptr<QThread> worker;
    UnpackingProgress progress; // shared with the worker
    UnpackedVoice unpacked;     // the worker's until it ends, as is the next
    QString problem;
    bool isStarting = false;
    bool isOldLibraryLoaded = false;
    QString statusBefore;
    QDeadlineTimer startDeadline;
};

VoiceInstallation::VoiceInstallation(const QStringList& files, QWidget* mainWindow)
    : QObject(mainWindow), window(mainWindow), archives(files) {
    makeDialog();
    connect(&ticker, &QTimer::timeout, this, &VoiceInstallation::onTick);
    ticker.start(progressPeriod);
    startWorker([this] { problem = unpackVoice(archives, progress, unpacked); },
                &VoiceInstallation::onUnpacked);
}

/// At the end of the program too: the worker notices the request within one block of the archive.
VoiceInstallation::~VoiceInstallation() {
    progress.extraction.isCancelled = true;
    if (worker)
        worker->wait();
    delete dialog;
}

/// Not modal: the program goes on working, and a modal one would run events within each change of its value.
void VoiceInstallation::makeDialog() {
    dialog = new QProgressDialog(window);
    dialog->setWindowTitle(text("Instalacja głosu"));
    auto* label = new QLabel;
    label->setTextFormat(Qt::PlainText); // a file name may contain HTML
    label->setAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    dialog->setLabel(label);
    QStringList names;
    for (const QString& archive : archives)
        names.append(shortened(QFileInfo(archive).fileName()));
    dialog->setLabelText(text("Sprawdzanie i rozpakowywanie:") + '\n' + names.join('\n'));
    dialog->setCancelButtonText(text("Anuluj"));
    dialog->setRange(0, fullBar);
    dialog->setAutoClose(false);
    dialog->setAutoReset(false);
    dialog->setMinimumWidth(420);
    if (auto* bar = dialog->findChild<QProgressBar*>())
        bar->setAccessibleName(text("Postęp instalacji"));
    connect(dialog, &QProgressDialog::canceled, this, &VoiceInstallation::cancel);
    raiseDialog();
}

void VoiceInstallation::raiseDialog() {
    if (!dialog)
        return;
    dialog->show();
    dialog->raise();
    dialog->activateWindow();
}

void VoiceInstallation::startWorker(std::function<void()> task, void (VoiceInstallation::*next)()) {
    if (worker)
        worker->wait();
    worker.reset(QThread::create(std::move(task)));
    if (next != nullptr)
        connect(worker.get(), &QThread::finished, this, next);
    worker->start();
}

void VoiceInstallation::showProgress() {
    const std::uint64_t total = progress.totalBytes;
    if (dialog && total > 0)
        dialog->setValue(static_cast<int>(progress.extraction.bytes * fullBar / total));
}

void VoiceInstallation::cancel() {
    progress.extraction.isCancelled = true;
}

void VoiceInstallation::onUnpacked() {
    if (progress.extraction.isCancelled) {
        if (problem.isEmpty())
            startWorker([work = unpacked.work] { removeWorkFolder(work); }, nullptr);
        deleteLater();
    } else if (!problem.isEmpty()) {
        const QString archive = QFileInfo(unpacked.faultyArchive).fileName();
        const QString title = archive.isEmpty() ? QString() : shortened(archive) + QStringLiteral("\n\n");
        finish(QMessageBox::Warning,
               title + problem + QStringLiteral("\n\n") + text("Niczego nie zmieniono."));
    } else if (apply()) {
        startWorker([work = unpacked.work] { removeWorkFolder(work); }, nullptr);
        awaitStatus();
    } else {
        startWorker([work = unpacked.work] { removeWorkFolder(work); }, nullptr);
        finish(QMessageBox::Warning,
               text("Nie udało się zapisać nowych plików w folderze programu — może jest na dysku za mało "
                    "miejsca albo inny program ich używa.\n\nNiczego nie zmieniono."));
    }
}

/// Voice is stopped first, because the engine starts it with new settings only after a stop.
bool VoiceInstallation::apply() {
    const QString library = dataFolder() + '/' + speechLibraryFileName();
    isOldLibraryLoaded = unpacked.hasLibrary && isLibraryLoaded(library);
    const std::optional<QByteArray> before = readFile(configPath());
    const QJsonObject config = readConfigObject();
    const bool isPlaced = stopVoice(config) && placeFiles(unpacked.work, unpacked.names);
    statusBefore = engineVoiceStatus();
    const bool isDone = isPlaced && writeConfig(newConfig(config)) && confirmPlacement(unpacked.work);
    if (!isDone) {
        unplaceFiles(unpacked.work);
        if (before && readFile(configPath()) != before)
            replaceFile(configPath(), *before);
    }
    OverlayReloadConfig();
    return isDone;
}

bool VoiceInstallation::stopVoice(const QJsonObject& config) {
    QJsonObject stopped = config;
    stopped["voiceEnabled"] = false;
    if (!writeConfig(stopped))
        return false;
    OverlayReloadConfig();
    return true;
}

/// A configured library would be used instead of the installed one.
QJsonObject VoiceInstallation::newConfig(QJsonObject config) const {
    config["voiceEnabled"] = true;
    if (unpacked.hasLibrary && !config["voiceDllPath"].toString().isEmpty())
        config["voiceDllPath"] = QString();
    const QString model = config["voiceModel"].toString();
    const QString current = model.isEmpty() ? defaultModelFolder() : model;
    if (!unpacked.modelFolder.isEmpty() && current != unpacked.modelFolder)
        config["voiceModel"] = unpacked.modelFolder;
    return config;
}

void VoiceInstallation::awaitStatus() {
    isStarting = true;
    startDeadline.setRemainingTime(startLimit);
    for (VoicePage* page : window->findChildren<VoicePage*>())
        page->fillFromConfig();
    if (!dialog)
        return;
    dialog->setLabelText(text("Uruchamianie głosu…"));
    dialog->setRange(0, 0);
    dialog->setCancelButton(nullptr);
}

void VoiceInstallation::onTick() {
    if (!isStarting) {
        showProgress();
        return;
    }
    const QString status = engineVoiceStatus();
    const bool isSettled = status != statusBefore && status != text("ładowanie modelu…");
    if (!isSettled && !startDeadline.hasExpired())
        return;
    const bool isActive = status == text("aktywny");
    QString message = installedPart();
    message += QStringLiteral("\n\n") + text("Stan głosu: %1").arg(voiceStatusLine());
    if (const QString missing = missingPart(); !isActive && !missing.isEmpty())
        message += QStringLiteral("\n\n") + missing;
    if (isOldLibraryLoaded)
        message +=
            QStringLiteral("\n\n") +
            text("Nowa biblioteka mowy zacznie działać po zakończeniu i ponownym uruchomieniu programu.");
    finish(isActive ? QMessageBox::Information : QMessageBox::Warning, message);
}

QString VoiceInstallation::installedPart() const {
    if (unpacked.hasLibrary && !unpacked.modelFolder.isEmpty())
        return text("Biblioteka mowy i model języka są zainstalowane.");
    return unpacked.hasLibrary ? text("Biblioteka mowy jest zainstalowana.")
                               : text("Model języka jest zainstalowany.");
}

/// A hint at the archive that was not installed yet.
QString VoiceInstallation::missingPart() const {
    if (!unpacked.hasLibrary && !QFileInfo::exists(dataFolder() + '/' + speechLibraryFileName()))
        return text("Potrzebna jest jeszcze biblioteka mowy — zainstaluj jej archiwum tak samo.");
    const QString model = readConfigObject()["voiceModel"].toString(defaultModelFolder());
    if (unpacked.modelFolder.isEmpty() && !QFileInfo::exists(QDir(dataFolder()).filePath(model)))
        return text("Potrzebny jest jeszcze model języka — zainstaluj jego archiwum tak samo.");
    return {};
}

void VoiceInstallation::finish(QMessageBox::Icon icon, const QString& message) {
    ticker.stop();
    delete dialog;
    QMessageBox* box = makeBox(window, icon, text("Głos"), message);
    box->open();
    deleteLater();
}

} // namespace

void installVoice(const QStringList& files, QWidget* window) {
    static QPointer<VoiceInstallation> running;
    static bool isAsking = false;
    if (running) {
        running->raiseDialog();
        return;
    }
    QStringList chosen = files;
    if (chosen.isEmpty() && !isAsking) {
        isAsking = true;
        chosen = askFilesToOpen(window, text("Wybierz pobrane archiwa głosu: bibliotekę mowy i model języka"),
                                downloadFolder(), text("Archiwa zip (*.zip)"));
        isAsking = false;
    }
    if (!chosen.isEmpty() && !running)
        running = new VoiceInstallation(chosen, window);
}

void finishVoiceInstallation() {
    finishPlacements(dataFolderPath());
}
