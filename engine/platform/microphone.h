#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>

namespace rotika {

// Sound from the system's default recording device: 16,000 samples a second, one channel, signed 16-bit, in
// four buffers that go round between the device and the listener. All calls for one microphone come from one
// thread, any but the owner's.

inline constexpr std::uint32_t soundSampleRate = 16000;
inline constexpr std::size_t soundBufferCount = 4;
inline constexpr std::size_t soundBufferBytes = 3200; // 100 ms

struct Microphone;

struct MicrophoneCloser {
    void operator()(Microphone* microphone) const noexcept;
};

/// Stops the sound and closes the device when it goes.
using MicrophoneHandle = std::unique_ptr<Microphone, MicrophoneCloser>;

/// Null when there is none, or it is not to be had; takes 1.5 s at most. Nothing is recorded yet.
MicrophoneHandle openMicrophone();

/// Hands all buffers to the device and starts it.
void startMicrophone(Microphone& microphone);

/// Returns when a buffer has come back, or after `limitMs`. In the place of a device
/// that is gone comes another as soon as there is one, and neither is told.
void waitForSound(Microphone& microphone, std::uint32_t limitMs);

/// The bytes recorded in buffer `index`, perhaps none, once the device has given it back; empty optional
/// before. They stay until the buffer is handed out again.
std::optional<std::string_view> recordedSound(const Microphone& microphone, std::size_t index);

/// Hands a buffer that came back to the device again.
void requeueSoundBuffer(Microphone& microphone, std::size_t index);

} // namespace rotika
