#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>

namespace rotika {

// Sound from the system's default recording device: 16,000 samples a second, one channel, signed 16-bit. It
// is returned in chunks, in the order of recording. While the listener is busy, at least soundChunkLimit
// chunks are kept, the returned one included, and at most maxSoundChunks; later sound is lost. All calls for
// one microphone come from one thread, any but the owner's.

inline constexpr std::uint32_t soundSampleRate = 16000;
inline constexpr std::size_t soundChunkBytes = 3200; // 100 ms
inline constexpr std::size_t soundChunkLimit = 4;
inline constexpr std::size_t maxSoundChunks = 20; // 2 s: a later reaction would surprise

struct Microphone;

struct MicrophoneCloser {
    void operator()(Microphone* microphone) const noexcept;
};

/// Stops the recording and closes the device when it is destroyed.
using MicrophoneHandle = std::unique_ptr<Microphone, MicrophoneCloser>;

/// Null if there is no microphone or it cannot be opened; takes 1.5 s at most. Nothing is recorded yet.
MicrophoneHandle openMicrophone();

/// Starts the recording.
void startMicrophone(Microphone& microphone);

/// The oldest chunk that has not been returned yet, soundChunkBytes at most; valid until the next call. Waits
/// for it up to `limitMs`, and returns an empty view if none came. A lost device is replaced during these
/// waits as soon as there is another one; the caller is not notified.
std::string_view nextSound(Microphone& microphone, std::uint32_t limitMs);

} // namespace rotika
