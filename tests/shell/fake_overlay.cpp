#include "fake_overlay.h"

#include "engine/overlay.h"

FakeOverlay fakeOverlay;

namespace {

/// Lives until the next call for the same holder, as the shell may expect of a status text.
const OverlayChar* hold(std::basic_string<OverlayChar>& holder, const std::wstring& text) {
    holder.assign(text.begin(), text.end());
    return holder.c_str();
}

} // namespace

bool OverlayEngineStart() {
    if (fakeOverlay.onStart)
        fakeOverlay.onStart();
    return false;
}

void OverlayEngineStop() {
    if (fakeOverlay.onStop)
        fakeOverlay.onStop();
}

void OverlayReloadConfig() {
    ++fakeOverlay.reloads;
    if (fakeOverlay.onReload)
        fakeOverlay.onReload();
}

bool OverlayActivateWheelFile(const OverlayChar* path) {
    const std::basic_string<OverlayChar> text(path);
    fakeOverlay.activated.emplace_back(text.begin(), text.end());
    return fakeOverlay.acceptsActivation;
}

void OverlayToggleWheel() {
    ++fakeOverlay.toggles;
}

bool OverlayIsWheelVisible() {
    return false;
}

const OverlayChar* OverlayGazeStatus() {
    static std::basic_string<OverlayChar> text;
    return hold(text, fakeOverlay.gazeStatus);
}

const OverlayChar* OverlayVoiceStatus() {
    static std::basic_string<OverlayChar> text;
    return hold(text, fakeOverlay.voiceStatus);
}

std::int32_t OverlayVoicePhraseCount() {
    return fakeOverlay.phraseCount;
}

std::int32_t OverlayWheelCount() {
    return fakeOverlay.wheelCount;
}
