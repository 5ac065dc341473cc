#include "shell/voice_install/voice_start.h"

#include "common/data_folder.h"
#include "engine/core/overlay.h"
#include "shell/voice_install/file_placement.h"

#include <QCoreApplication>
#include <QThread>
#include <QTimer>

namespace {

constexpr std::chrono::milliseconds checkPeriod{200};

/// New files of an earlier run, until voice has started with them. If that ends the process, the next start
/// takes them back. Owned by the application.
class VoiceTrial : public QObject {
public:
    explicit VoiceTrial(std::filesystem::path placement);
    ~VoiceTrial() override;

private:
    void confirmIfSettled();

    std::filesystem::path work;
    QString statusBefore = engineVoiceStatus();
    QTimer ticker;
    bool isConfirmed = false;
};

VoiceTrial::VoiceTrial(std::filesystem::path placement)
    : QObject(QCoreApplication::instance()), work(std::move(placement)) {
    connect(&ticker, &QTimer::timeout, this, &VoiceTrial::confirmIfSettled);
    ticker.start(checkPeriod);
}

VoiceTrial::~VoiceTrial() {
    if (!isConfirmed)
        deferConfirmation(work);
}

void VoiceTrial::confirmIfSettled() {
    if (!isVoiceSettledSince(statusBefore))
        return;
    isConfirmed = true;
    confirmPlacement(work);
    removeInBackground(work);
    deleteLater();
}

} // namespace

QString engineVoiceStatus() {
    return QStringView(OverlayVoiceStatus()).toString();
}

bool isVoiceSettledSince(const QString& statusBefore) {
    const QString status = engineVoiceStatus();
    return status != statusBefore && status != QStringLiteral("ładowanie modelu…");
}

void removeInBackground(const std::filesystem::path& work) {
    QThread* const thread = QThread::create([work] { removeWorkFolder(work); });
    QObject::connect(thread, &QThread::finished, thread, &QObject::deleteLater);
    thread->start();
}

void finishVoiceInstallation() {
    const LeftPlacements left = unplaceUnconfirmed(dataFolderPath());
    for (const std::filesystem::path& work : left.onTrial)
        new VoiceTrial(work);
    for (const std::filesystem::path& work : left.ended)
        removeInBackground(work);
}
