#include "shell/voice_install/voice_installer.h"

#include "common/data_folder.h"
#include "common/file_names.h"
#include "engine/core/overlay.h"
#include "shell/base/config_changes.h"
#include "shell/base/data_folder.h"
#include "shell/base/engine_status.h"
#include "shell/base/file_dialogs.h"
#include "shell/base/json_file.h"
#include "shell/base/message_boxes.h"
#include "shell/voice_install/speech_library_file.h"
#include "shell/voice_install/voice_start.h"
#include "shell/voice_install/voice_unpacking.h"

#include <QCoreApplication>
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
constexpr std::chrono::seconds stopLimit{1};   // of the worker; a drive of the network may never answer
constexpr int fullBar = 1000;

QString text(const char* words) {
    return QCoreApplication::translate("VoiceInstaller", words);
}

PlacedName configName() {
    return std::filesystem::path(configFileName).u8string();
}

QString downloadFolder() {
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::DownloadLocation);
    return QFileInfo(folder).isDir() ? folder : QDir::homePath();
}

/// What an installation shares with its worker, which may outlive it. Except for the progress it is the
/// worker's while that runs.
struct VoiceWork {
    QStringList archives;
    UnpackingProgress progress;
    UnpackedVoice unpacked;
    QString problem;
    bool isDone = false; // the last step
};

/// One installation, from the checks to the result. Owned by its window.
class VoiceInstallation : public QObject {
public:
    VoiceInstallation(const QStringList& files, QWidget* mainWindow);
    ~VoiceInstallation() override;

    void raiseDialog();
    bool isCancelled() const { return stage == Stage::cancelled; }

private:
    enum class Stage { unpacking, cancelled, placing, starting, finished };

    void makeDialog();
    void startWorker(std::function<void(VoiceWork&)> task, void (VoiceInstallation::*next)());
    void showProgress();
    void cancel();
    void onUnpacked();
    void prepareToPlace();
    void onSettingsKept();
    void onPlaced();
    void takeBack();
    void onTakenBack();
    QJsonObject newConfig(QJsonObject config) const;
    void awaitStatus();
    void onTick();
    void abandonWorker();
    void finishWhenSettled();
    void finish(QMessageBox::Icon icon, const QString& message);
    QString installedPart() const;
    QString missingPart() const;

    QWidget* window;
    std::shared_ptr<VoiceWork> work = std::make_shared<VoiceWork>();
    QPointer<QProgressDialog> dialog;
    QTimer ticker;
    QPointer<QThread> worker; // deletes itself
    Stage stage = Stage::unpacking;
    bool isOldLibraryLoaded = false;
    bool isModelChanged = false;
    QString statusBefore;
    QDeadlineTimer deadline; // for the worker after a cancellation, later for voice to start
};

VoiceInstallation::VoiceInstallation(const QStringList& files, QWidget* mainWindow)
    : QObject(mainWindow), window(mainWindow) {
    work->archives = files;
    makeDialog();
    connect(&ticker, &QTimer::timeout, this, &VoiceInstallation::onTick);
    ticker.start(progressPeriod);
    startWorker(
        [](VoiceWork& shared) {
            shared.problem = unpackVoice(shared.archives, shared.progress, shared.unpacked);
        },
        &VoiceInstallation::onUnpacked);
}

/// At the end of the program too: the worker mostly notices the request within one block of the archive. One
/// that a drive keeps waiting is abandoned.
VoiceInstallation::~VoiceInstallation() {
    work->progress.extraction.isCancelled = true;
    if (worker && worker->wait(QDeadlineTimer(stopLimit)))
        delete worker.data();
    if (stage == Stage::starting)
        deferConfirmation(work->unpacked.work);
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
    for (const QString& archive : work->archives)
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

void VoiceInstallation::startWorker(std::function<void(VoiceWork&)> task, void (VoiceInstallation::*next)()) {
    worker = QThread::create([shared = work, run = std::move(task)] { run(*shared); });
    connect(worker, &QThread::finished, worker, &QObject::deleteLater);
    connect(worker, &QThread::finished, this, next);
    worker->start();
}

/// Not after a cancellation: a new value would show the dialog again.
void VoiceInstallation::showProgress() {
    const std::uint64_t total = work->progress.totalBytes;
    if (dialog && total > 0)
        dialog->setValue(static_cast<int>(work->progress.extraction.bytes * fullBar / total));
}

void VoiceInstallation::cancel() {
    if (stage != Stage::unpacking)
        return;
    stage = Stage::cancelled;
    work->progress.extraction.isCancelled = true;
    deadline.setRemainingTime(stopLimit);
}

void VoiceInstallation::onUnpacked() {
    if (stage == Stage::cancelled) {
        if (work->problem.isEmpty())
            removeInBackground(work->unpacked.work);
        deleteLater();
    } else if (!work->problem.isEmpty()) {
        const QString archive = QFileInfo(work->unpacked.faultyArchive).fileName();
        const QString title = archive.isEmpty() ? QString() : shortened(archive) + QStringLiteral("\n\n");
        finish(QMessageBox::Warning,
               title + work->problem + QStringLiteral("\n\n") + text("Niczego nie zmieniono."));
    } else {
        prepareToPlace();
    }
}

/// From here on everything that changes is restored by the next start unless this one confirms it.
void VoiceInstallation::prepareToPlace() {
    stage = Stage::placing;
    const QString library = dataFolder() + '/' + speechLibraryFileName();
    isOldLibraryLoaded = work->unpacked.hasLibrary && isLibraryLoaded(library);
    if (dialog) {
        dialog->setLabelText(text("Uruchamianie głosu…"));
        dialog->setRange(0, 0);
        dialog->setCancelButton(nullptr);
    }
    startWorker(
        [](VoiceWork& shared) { shared.isDone = keepForRestoring(shared.unpacked.work, configName()); },
        &VoiceInstallation::onSettingsKept);
}

/// Voice is stopped first, because the engine starts it with new settings only after a stop.
void VoiceInstallation::onSettingsKept() {
    QJsonObject stopped = readConfigObject();
    stopped["voiceEnabled"] = false;
    if (!work->isDone || !writeConfigObject(stopped)) {
        takeBack();
        return;
    }
    OverlayReloadConfig();
    startWorker(
        [](VoiceWork& shared) { shared.isDone = placeFiles(shared.unpacked.work, shared.unpacked.names); },
        &VoiceInstallation::onPlaced);
}

void VoiceInstallation::onPlaced() {
    statusBefore = engineVoiceStatus();
    const QJsonObject before = readConfigObject(), after = newConfig(before);
    isModelChanged = after["voiceModel"] != before["voiceModel"];
    if (!work->isDone || !writeConfigObject(after)) {
        takeBack();
        return;
    }
    OverlayReloadConfig();
    awaitStatus();
}

void VoiceInstallation::takeBack() {
    startWorker([](VoiceWork& shared) { unplaceFiles(shared.unpacked.work); },
                &VoiceInstallation::onTakenBack);
}

void VoiceInstallation::onTakenBack() {
    OverlayReloadConfig();
    removeInBackground(work->unpacked.work);
    finish(QMessageBox::Warning,
           text("Nie udało się zapisać nowych plików w folderze programu — może jest na dysku za mało "
                "miejsca albo inny program ich używa.\n\nNiczego nie zmieniono."));
}

/// A configured library would be used instead of the installed one.
QJsonObject VoiceInstallation::newConfig(QJsonObject config) const {
    config["voiceEnabled"] = true;
    if (work->unpacked.hasLibrary && !config["voiceDllPath"].toString().isEmpty())
        config["voiceDllPath"] = QString();
    const QString model = config["voiceModel"].toString();
    const QString current = model.isEmpty() ? defaultModelFolder() : model;
    if (!work->unpacked.modelFolder.isEmpty() && current != work->unpacked.modelFolder)
        config["voiceModel"] = work->unpacked.modelFolder;
    return config;
}

void VoiceInstallation::awaitStatus() {
    stage = Stage::starting;
    deadline.setRemainingTime(startLimit);
    emit ConfigChanges::instance().changed();
}

void VoiceInstallation::onTick() {
    if (stage == Stage::unpacking)
        showProgress();
    else if (stage == Stage::cancelled && deadline.hasExpired())
        abandonWorker();
    else if (stage == Stage::starting)
        finishWhenSettled();
}

/// It removes its work folder itself.
void VoiceInstallation::abandonWorker() {
    worker.clear();
    deleteLater();
}

/// The files are confirmed only now: if loading them had ended the process, the next start would take them
/// back instead of ending as well. A library that replaces a loaded one is loaded by the next start; until
/// then the user may change the settings.
void VoiceInstallation::finishWhenSettled() {
    if (!isVoiceSettledSince(statusBefore) && !deadline.hasExpired())
        return;
    if (isOldLibraryLoaded) {
        if (!isModelChanged) // else the old settings are needed to find the old model
            forgetKept(work->unpacked.work, configName());
        deferConfirmation(work->unpacked.work);
    } else {
        confirmPlacement(work->unpacked.work);
        removeInBackground(work->unpacked.work);
    }
    const QString status = engineVoiceStatus();
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
    if (work->unpacked.hasLibrary && !work->unpacked.modelFolder.isEmpty())
        return text("Biblioteka mowy i model języka są zainstalowane.");
    return work->unpacked.hasLibrary ? text("Biblioteka mowy jest zainstalowana.")
                                     : text("Model języka jest zainstalowany.");
}

/// A hint at the archive that was not installed yet.
QString VoiceInstallation::missingPart() const {
    if (!work->unpacked.hasLibrary && !QFileInfo::exists(dataFolder() + '/' + speechLibraryFileName()))
        return text("Potrzebna jest jeszcze biblioteka mowy — zainstaluj jej archiwum tak samo.");
    const QString model = readConfigObject()["voiceModel"].toString(defaultModelFolder());
    if (work->unpacked.modelFolder.isEmpty() && !QFileInfo::exists(QDir(dataFolder()).filePath(model)))
        return text("Potrzebny jest jeszcze model języka — zainstaluj jego archiwum tak samo.");
    return {};
}

void VoiceInstallation::finish(QMessageBox::Icon icon, const QString& message) {
    stage = Stage::finished;
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
    if (running && !running->isCancelled()) {
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
    if (!chosen.isEmpty() && (!running || running->isCancelled()))
        running = new VoiceInstallation(chosen, window);
}
