#include "shell/voice_switch.h"

#include "engine/core/overlay.h"
#include "shell/base/config_changes.h"
#include "shell/base/json_file.h"
#include "shell/base/notification.h"
#include "shell/voice_install/voice_start.h"

#include <QCoreApplication>

namespace {

const QString enabledKey = QStringLiteral("voiceEnabled");

bool isWorking() {
    const QString status = engineVoiceStatus();
    return status == QStringLiteral("aktywny") || status == QStringLiteral("ładowanie modelu…");
}

bool apply(bool isEnabled) {
    QString backup;
    const bool isWritten = writeVoiceEnabled(isEnabled, &backup);
    if (!backup.isEmpty())
        showNotification(configBackupText(backup));
    if (isWritten)
        OverlayReloadConfig();
    return isWritten;
}

} // namespace

bool writeVoiceEnabled(bool isEnabled, QString* backup) {
    QJsonObject config = readConfigObject();
    config[enabledKey] = isEnabled;
    return writeConfigObject(config, backup);
}

void switchVoice(bool isEnabled) {
    const bool wasEnabled = readConfigObject()[enabledKey].toBool(true);
    if (isEnabled && wasEnabled && isWorking())
        return;
    // The engine retries only after a reload with voice off.
    const bool isRetry = isEnabled && wasEnabled;
    const bool isDone = (!isRetry || apply(false)) && apply(isEnabled);
    emit ConfigChanges::instance().changed();
    if (!isDone)
        showNotification(QCoreApplication::translate(
            "VoiceSwitch", "Nie udało się zapisać pliku config.json. Może jest na dysku za mało miejsca."));
    else if (!isEnabled)
        explainVoiceOff();
}

void explainVoiceOff() {
    showNotification(QCoreApplication::translate("VoiceSwitch",
                                                 "Komendy głosowe są wyłączone. Włączysz je na stronie "
                                                 "„Komendy głosowe” albo poleceniem „Włącz komendy "
                                                 "głosowe” w menu systemu (rotika --voice on)."));
}
