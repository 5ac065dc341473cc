#pragma once

#include <atomic>
#include <string>

namespace rotika {

/// A copy of the settings, since the thread outlives a reload.
struct VoiceSettings {
    std::u16string libraryPath; // empty: look in the usual places
    std::u16string model;       // folder; relative to the folder of the program unless it is a full path
};

/// Listens until `voiceStop`, or until something it needs is missing, and says in voiceStatus how it fares. A
/// microphone that is missing is tried again every 3 s. The body of the voice thread.
void voiceThreadMain(const VoiceSettings& settings, const std::atomic<bool>& voiceStop) noexcept;

} // namespace rotika
