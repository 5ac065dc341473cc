#pragma once

#include "base/relaxed.h"
#include "common/file_names.h"
#include "common/limits.h"
#include "model/wheel_records.h"

#include <cstdint>
#include <string>

namespace rotika {

/// The current settings. The defaults apply from process start; reading the file overwrites only what it
/// supplies. Owned by the owner thread; the relaxed members are read by workers too.
struct EngineConfig {
    RgbColor segmentColor = 0xDB9834; // "#3498DB", red in the low byte
    std::u16string toggleKey = u"x";
    KeyCode toggleKeyCode;
    Relaxed<std::int32_t> sendDelay = 250; // ms from the closing of the wheel to the first step, 0 to 2000
    Relaxed<std::int32_t> keyHold = 60;    // ms a click stays down, and between its repeats, 0 to 1000
    bool takeFocus = false;
    bool gazeEnabled = true;
    std::int32_t gazeDwell = defaultGazeDwellMs; // 0 to maxGazeDwellMs; 0 turns selection by dwell off
    std::u16string gazeDllPath;
    bool voiceEnabled = true;
    Relaxed<bool> voiceGlobal = true;
    std::u16string voiceModel = defaultSpeechModelName;
    std::u16string voiceDllPath;
};

extern EngineConfig& engineConfig; // never destroyed, like engineState

} // namespace rotika
