#include "core/overlay.h"

#include "core/activation.h"
#include "core/lifecycle.h"
#include "core/status_texts.h"
#include "model/engine_state.h"
#include "voice/phrase_table.h"
#include "wheel/capture.h"

using namespace rotika;

static_assert(sizeof(OverlayChar) == sizeof(char16_t));

bool OverlayEngineStart() {
    if (!engineState.engineStarted)
        engineState.engineStarted = startEngine(false);
    return engineState.engineStarted;
}

void OverlayEngineStop() {
    stopEngine();
}

void OverlayReloadConfig() {
    reloadEngine();
}

bool OverlayActivateWheelFile(const OverlayChar* path) {
    return path != nullptr && activateWheelFile(reinterpret_cast<const char16_t*>(path));
}

void OverlayToggleWheel() {
    if (engineState.engineStarted)
        toggleWheel();
}

bool OverlayIsWheelVisible() {
    return engineState.wheelVisible;
}

const OverlayChar* OverlayGazeStatus() {
    return reinterpret_cast<const OverlayChar*>(gazeStatusText());
}

const OverlayChar* OverlayVoiceStatus() {
    return reinterpret_cast<const OverlayChar*>(voiceStatusText());
}

std::int32_t OverlayVoicePhraseCount() {
    return phraseCount();
}

std::int32_t OverlayWheelCount() {
    return static_cast<std::int32_t>(engineState.wheels.size());
}
