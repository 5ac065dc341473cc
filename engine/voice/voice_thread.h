#pragma once

#include <atomic>
#include <string>

namespace rotika {

/// A copy of the settings, since a reload may change them while the thread runs.
struct VoiceSettings {
    std::u16string libraryPath; // empty: the usual places are searched
    std::u16string model;       // folder; relative to the folder of the program unless it is a full path
};

/// Listens until `voiceStop`, or until something it needs is missing; reports its state in voiceStatus. A
/// missing microphone is retried every 3 s. The body of the voice thread.
void voiceThreadMain(const VoiceSettings& settings, const std::atomic<bool>& voiceStop) noexcept;

} // namespace rotika
