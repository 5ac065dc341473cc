#include "core/engine_workers.h"

#include "gaze/gaze_thread.h"
#include "model/engine_config.h"
#include "model/engine_state.h"
#include "model/status_codes.h"
#include "platform/elements.h"
#include "voice/voice_thread.h"
#include "workers/worker_thread.h"

namespace rotika {

namespace {

constexpr std::uint32_t gazeStopLimitMs = 1500;
constexpr std::uint32_t voiceStopLimitMs = 2000;

void startGaze() {
    if (!startWorker(
            engineState.gazeThread, engineState.gazeStop,
            [path = engineConfig.gazeDllPath](const std::atomic<bool>& stop) { gazeThreadMain(path, stop); }))
        engineState.gazeStatus = gazeStatusFailed;
}

void startVoice() {
    prepareElementSearches(); // only voice commands start them
    const VoiceSettings settings{engineConfig.voiceDllPath, engineConfig.voiceModel};
    if (!startWorker(engineState.voiceThread, engineState.voiceStop,
                     [settings](const std::atomic<bool>& stop) { voiceThreadMain(settings, stop); }))
        engineState.voiceStatus = voiceStatusFailed;
}

void stopGaze() {
    stopWorker(engineState.gazeThread, engineState.gazeStop, gazeStopLimitMs);
}

void stopVoice() {
    stopWorker(engineState.voiceThread, engineState.voiceStop, voiceStopLimitMs);
}

} // namespace

void applyGazeSetting() {
    if (!engineConfig.gazeEnabled) {
        stopGaze();
        engineState.gazeStatus = gazeStatusOff;
    } else if (!engineState.gazeThread.valid()) {
        startGaze();
    }
}

void applyVoiceSetting() {
    if (!engineConfig.voiceEnabled) {
        stopVoice();
        engineState.voiceStatus = voiceStatusOff;
    } else if (!engineState.voiceThread.valid()) {
        startVoice();
    }
}

void stopWorkers() {
    stopGaze();
    stopVoice();
}

} // namespace rotika
