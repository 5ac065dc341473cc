#include "platform/microphone.h"

#include "platform/windows/handles.h"

#include <mmsystem.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <utility>

namespace rotika {

namespace {

using SoundBuffer = std::array<char, soundChunkBytes>;

constexpr WORD bytesPerSample = 2;

constexpr WAVEFORMATEX soundFormat{
    WAVE_FORMAT_PCM,    1, soundSampleRate, soundSampleRate* bytesPerSample, bytesPerSample,
    8 * bytesPerSample, 0};

constexpr DWORD openingLimitMs = 1500;
// Reopening a lost device blocks no caller.
constexpr DWORD reopeningLimitMs = 10'000;
constexpr DWORD lostAfterMs = 3000;
// Headsets deliver their first sound seconds after they were opened.
constexpr DWORD neverBeganAfterMs = 10'000;

/// The system writes into the headers and the buffers, so this must not move in memory.
struct Device {
    KernelHandle bufferReturned;
    HWAVEIN handle = nullptr;
    std::array<WAVEHDR, soundChunkLimit> headers{}; // used in turn, so they come back in turn
    std::array<SoundBuffer, soundChunkLimit> buffers{};
};

struct DeviceCloser {
    void operator()(Device* device) const noexcept {
        std::unique_ptr<Device> owned(device);
        waveInStop(owned->handle);
        waveInReset(owned->handle);
        for (WAVEHDR& header : owned->headers) {
            waveInUnprepareHeader(owned->handle, &header, sizeof(header));
        }
        if (waveInClose(owned->handle) != MMSYSERR_NOERROR) {
            // Leak: the driver may still write into the 13 kB.
            static_cast<void>(owned.release());
        }
    }
};
using DeviceHandle = std::unique_ptr<Device, DeviceCloser>;

DeviceHandle openDevice() {
    auto device = std::make_unique<Device>();
    device->bufferReturned = KernelHandle(CreateEventW(nullptr, FALSE, FALSE, nullptr));
    if (!device->bufferReturned || waveInOpen(&device->handle, WAVE_MAPPER, &soundFormat,
                                              reinterpret_cast<DWORD_PTR>(device->bufferReturned.get()), 0,
                                              CALLBACK_EVENT) != MMSYSERR_NOERROR) {
        return nullptr;
    }
    return DeviceHandle(device.release());
}

/// Drivers and the sound service may block a caller without limit, so a separate thread closes the former
/// device, if there is one, and opens the next. A caller that stops waiting releases its reference; a device
/// that is opened after that is closed when the thread releases the last one.
struct Opening {
    KernelHandle finished;
    DeviceHandle former;
    DeviceHandle device; // once finished, unless there is none
};
using SharedOpening = std::shared_ptr<Opening>;

std::atomic<int> openingsInProgress{0};

DWORD WINAPI runOpening(void* argument) noexcept {
    {
        const std::unique_ptr<SharedOpening> opening(static_cast<SharedOpening*>(argument));
        (*opening)->former.reset();
        (*opening)->device = openDevice();
        SetEvent((*opening)->finished.get());
    }
    --openingsInProgress;
    return 0;
}

/// Takes ownership of `former`. Returns null and does not change `former` when too many threads hang already
/// or no thread can be created.
SharedOpening beginOpening(DeviceHandle& former) {
    constexpr int maxOpenings = 4;
    auto opening = std::make_shared<Opening>();
    opening->finished = KernelHandle(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    if (!opening->finished) {
        return nullptr;
    }
    if (++openingsInProgress > maxOpenings) {
        --openingsInProgress;
        return nullptr;
    }
    opening->former = std::move(former);
    auto share = std::make_unique<SharedOpening>(opening);
    const KernelHandle thread(CreateThread(nullptr, 0, runOpening, share.get(), 0, nullptr));
    if (!thread) {
        former = std::move(opening->former);
        --openingsInProgress;
        return nullptr;
    }
    static_cast<void>(share.release());
    return opening;
}

} // namespace

struct Microphone {
    DeviceHandle device; // null while a lost one is being replaced
    SharedOpening opening;
    std::size_t oldest = 0; // index of the buffer whose sound comes next, or was returned last
    bool isOldestReturned = false;
    DWORD waitedMs = 0;    // since the last buffer, or since the opening began
    bool hasBegun = false; // the device has returned a buffer
    bool hasRefused = false;
    ULONGLONG startedAt = 0;
};

namespace {

void queueBuffer(Microphone& microphone, std::size_t index) {
    WAVEHDR& header = microphone.device->headers[index];
    // An unplugged device refuses the buffer and leaves the header unchanged: the same sound would be
    // returned again and again.
    header.dwFlags &= ~static_cast<DWORD>(WHDR_DONE);
    header.dwBytesRecorded = 0;
    if (waveInAddBuffer(microphone.device->handle, &header, sizeof(header)) != MMSYSERR_NOERROR) {
        microphone.hasRefused = true;
    }
}

bool isOldestFilled(const Microphone& microphone) {
    // Set by a thread of the system.
    const volatile DWORD& flags = microphone.device->headers[microphone.oldest].dwFlags;
    return (flags & WHDR_DONE) != 0;
}

/// Gives the buffer that was returned to the caller back to the device.
void requeueReturned(Microphone& microphone) {
    if (std::exchange(microphone.isOldestReturned, false)) {
        queueBuffer(microphone, microphone.oldest);
        microphone.oldest = (microphone.oldest + 1) % soundChunkLimit;
    }
}

/// The device was unplugged or no longer works. Only waiting time counts: neither a suspended machine nor a
/// busy listener makes a device count as lost.
bool isLost(const Microphone& microphone) {
    if (microphone.device && microphone.hasRefused) {
        return GetTickCount64() - microphone.startedAt >= lostAfterMs;
    }
    const bool mayBeSlow = microphone.device && !microphone.hasBegun;
    return microphone.waitedMs >= (mayBeSlow ? neverBeganAfterMs : lostAfterMs);
}

void followOpening(Microphone& microphone, DWORD limitMs) {
    if (WaitForSingleObject(microphone.opening->finished.get(), limitMs) == WAIT_OBJECT_0) {
        microphone.device = std::move(microphone.opening->device);
        microphone.opening.reset();
        microphone.waitedMs = 0;
        if (microphone.device) {
            startMicrophone(microphone);
        }
        return;
    }
    microphone.waitedMs += limitMs;
    if (microphone.waitedMs >= reopeningLimitMs) {
        microphone.opening.reset();
    }
}

/// True once the oldest buffer is filled.
bool waitForDevice(Microphone& microphone, DWORD limitMs) {
    const ULONGLONG start = GetTickCount64();
    // The event may still be set for a buffer that was taken without a wait.
    for (ULONGLONG waited = 0; !isOldestFilled(microphone) && waited < limitMs;
         waited = GetTickCount64() - start)
        WaitForSingleObject(microphone.device->bufferReturned.get(), static_cast<DWORD>(limitMs - waited));
    const bool isFilled = isOldestFilled(microphone);
    microphone.hasBegun |= isFilled;
    microphone.waitedMs = isFilled ? 0 : microphone.waitedMs + limitMs;
    return isFilled;
}

} // namespace

MicrophoneHandle openMicrophone() {
    DeviceHandle none;
    const SharedOpening opening = beginOpening(none);
    if (!opening || WaitForSingleObject(opening->finished.get(), openingLimitMs) != WAIT_OBJECT_0 ||
        !opening->device) {
        return nullptr;
    }
    auto microphone = std::make_unique<Microphone>();
    microphone->device = std::move(opening->device);
    return MicrophoneHandle(microphone.release());
}

void MicrophoneCloser::operator()(Microphone* microphone) const noexcept {
    const std::unique_ptr<Microphone> owned(microphone);
}

void startMicrophone(Microphone& microphone) {
    Device& device = *microphone.device;
    microphone.oldest = 0;
    microphone.hasBegun = false;
    microphone.hasRefused = false;
    microphone.startedAt = GetTickCount64();
    for (std::size_t index = 0; index < soundChunkLimit; ++index) {
        WAVEHDR& header = device.headers[index];
        header = {};
        header.lpData = device.buffers[index].data();
        header.dwBufferLength = soundChunkBytes;
        waveInPrepareHeader(device.handle, &header, sizeof(header));
        queueBuffer(microphone, index);
    }
    waveInStart(device.handle);
}

std::string_view nextSound(Microphone& microphone, std::uint32_t limitMs) {
    requeueReturned(microphone);
    if (microphone.opening) {
        followOpening(microphone, limitMs);
        return {};
    }
    if (!microphone.device) {
        Sleep(limitMs);
        microphone.waitedMs += limitMs;
    } else if (waitForDevice(microphone, limitMs)) {
        microphone.isOldestReturned = true;
        const WAVEHDR& header = microphone.device->headers[microphone.oldest];
        return {header.lpData, std::min<std::size_t>(header.dwBytesRecorded, soundChunkBytes)};
    }
    if (isLost(microphone)) {
        microphone.opening = beginOpening(microphone.device);
        microphone.waitedMs = 0;
    }
    return {};
}

} // namespace rotika
