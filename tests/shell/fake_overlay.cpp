#include "fake_overlay.h"

#include "engine/overlay.h"

FakeOverlay fakeOverlay;

static constexpr OverlayChar status[] = {'o', 'k', 0};

bool OverlayEngineStart() {
    return true;
}

void OverlayReloadConfig() {
    ++fakeOverlay.reloads;
}

bool OverlayActivateWheelFile(const OverlayChar* /*path*/) {
    return false;
}

void OverlayEngineStop() {}
void OverlayToggleWheel() {}

bool OverlayIsWheelVisible() {
    return false;
}

const OverlayChar* OverlayGazeStatus() {
    return status;
}

const OverlayChar* OverlayVoiceStatus() {
    return status;
}

std::int32_t OverlayVoicePhraseCount() {
    return 7;
}

std::int32_t OverlayWheelCount() {
    return 1;
}
