#include "shell/base/engine_status.h"

#include "engine/core/overlay.h"

#include <QCoreApplication>

namespace {

QString engineText(const OverlayChar* text) {
    return QStringView(text).toString();
}

} // namespace

QString gazeStatusLine() {
    return engineText(OverlayGazeStatus());
}

QString voiceStatusLine() {
    return QCoreApplication::translate("EngineStatus", "%1 · %2 fraz")
        .arg(engineText(OverlayVoiceStatus()), QString::number(OverlayVoicePhraseCount()));
}
