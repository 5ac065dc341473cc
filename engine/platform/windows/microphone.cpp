#include "platform/microphone.h"

#include "platform/windows/handles.h"

#include <mmsystem.h>

#include <algorithm>
#include <array>

namespace {

using SoundBuffer = std::array<char, soundBufferBytes>;

constexpr WORD bytesPerSample = 2;

constexpr WAVEFORMATEX soundFormat{
    WAVE_FORMAT_PCM,    1, soundSampleRate, soundSampleRate* bytesPerSample, bytesPerSample,
    8 * bytesPerSample, 0};

} // namespace

/// The device writes into the headers and the buffers, so the whole must not move.
struct Microphone {
    KernelHandle bufferReturned;
    HWAVEIN device = nullptr;
    std::array<WAVEHDR, soundBufferCount> headers{};
    std::array<SoundBuffer, soundBufferCount> buffers{};
};

MicrophoneHandle openMicrophone() {
    auto microphone = std::make_unique<Microphone>();
    microphone->bufferReturned = KernelHandle(CreateEventW(nullptr, FALSE, FALSE, nullptr));
    if (!microphone->bufferReturned ||
        waveInOpen(&microphone->device, WAVE_MAPPER, &soundFormat,
                   reinterpret_cast<DWORD_PTR>(microphone->bufferReturned.get()), 0,
                   CALLBACK_EVENT) != MMSYSERR_NOERROR) {
        return nullptr;
    }
    return MicrophoneHandle(microphone.release());
}

void MicrophoneCloser::operator()(Microphone* microphone) const noexcept {
    std::unique_ptr<Microphone> owned(microphone);
    waveInStop(owned->device);
    waveInReset(owned->device);
    for (WAVEHDR& header : owned->headers) {
        waveInUnprepareHeader(owned->device, &header, sizeof(header));
    }
    if (waveInClose(owned->device) != MMSYSERR_NOERROR) {
        // A driver that does not let go may still write: better 13 kB lost than a stranger's memory.
        static_cast<void>(owned.release());
    }
}

void startMicrophone(Microphone& microphone) {
    // The opening of the device has set it as well.
    ResetEvent(microphone.bufferReturned.get());
    for (std::size_t index = 0; index < soundBufferCount; ++index) {
        WAVEHDR& header = microphone.headers[index];
        header = {};
        header.lpData = microphone.buffers[index].data();
        header.dwBufferLength = soundBufferBytes;
        waveInPrepareHeader(microphone.device, &header, sizeof(header));
        waveInAddBuffer(microphone.device, &header, sizeof(header));
    }
    waveInStart(microphone.device);
}

void waitForSound(Microphone& microphone, std::uint32_t limitMs) {
    WaitForSingleObject(microphone.bufferReturned.get(), limitMs);
}

std::optional<std::string_view> recordedSound(const Microphone& microphone, std::size_t index) {
    const WAVEHDR& header = microphone.headers[index];
    // Set by a thread of the system's.
    const volatile DWORD& flags = header.dwFlags;
    if ((flags & WHDR_DONE) == 0) {
        return std::nullopt;
    }
    return std::string_view(header.lpData, std::min<std::size_t>(header.dwBytesRecorded, soundBufferBytes));
}

void requeueSoundBuffer(Microphone& microphone, std::size_t index) {
    WAVEHDR& header = microphone.headers[index];
    // A device that is gone refuses the buffer and leaves it as it is: the same words would be heard for
    // ever.
    header.dwFlags &= ~static_cast<DWORD>(WHDR_DONE);
    header.dwBytesRecorded = 0;
    waveInAddBuffer(microphone.device, &header, sizeof(header));
}
