#pragma once

#include <cstdint>

namespace rotika {

/// State of the gaze thread, in gazeStatus.
enum GazeStatusCode : std::int32_t {
    gazeStatusOff = 0,
    gazeStatusSearching = 1,
    gazeStatusNoLibrary = 2,
    gazeStatusNoDevice = 3,
    gazeStatusActive = 4,
    gazeStatusFailed = 5,
};

/// State of the voice thread, in voiceStatus.
enum VoiceStatusCode : std::int32_t {
    voiceStatusOff = 0,
    voiceStatusLoading = 1,
    voiceStatusNoLibrary = 2,
    voiceStatusNoModel = 3,
    voiceStatusNoMicrophone = 4,
    voiceStatusListening = 5,
    voiceStatusFailed = 6,
};

} // namespace rotika
