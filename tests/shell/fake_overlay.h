#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

/// The engine's face without an engine behind it: what it answers, and what it was asked.
struct FakeOverlay {
    std::wstring gazeStatus = L"aktywny";
    std::wstring voiceStatus = L"ładowanie modelu…";
    std::int32_t phraseCount = 7;
    std::int32_t wheelCount = 1;
    bool acceptsActivation = false;
    std::vector<std::wstring> activated; // paths
    int reloads = 0;
    int toggles = 0;
    std::function<void()> onStart;
    std::function<void()> onStop;
    std::function<void()> onReload;
};

extern FakeOverlay fakeOverlay;
