#include "platform/microphone.h"

#include "platform/windows/handles.h"

#include <mmsystem.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <utility>

namespace {

using SoundBuffer = std::array<char, soundChunkBytes>;

constexpr WORD bytesPerSample = 2;

constexpr WAVEFORMATEX soundFormat{
    WAVE_FORMAT_PCM,    1, soundSampleRate, soundSampleRate* bytesPerSample, bytesPerSample,
    8 * bytesPerSample, 0};

constexpr DWORD openingLimitMs = 1500;
// Nobody waits for an opening that follows on a lost device.
constexpr DWORD reopeningLimitMs = 10'000;
constexpr DWORD lostAfterMs = 3000;
// Headsets begin seconds after they were opened.
constexpr DWORD neverBeganAfterMs = 10'000;

/// The system writes into the headers and the buffers, so the whole must not move.
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
            // A driver that does not let go may still write: better 13 kB lost than a stranger's memory.
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

/// Drivers and the sound service may keep a caller for as long as they like, so a thread of its own closes
/// the former device, if there is one, and opens the next. Whoever has no more patience drops his share; a
/// device that is opened later than that is closed by the thread's.
struct Opening {
    KernelHandle finished;
    DeviceHandle former;
    DeviceHandle device; // once finished, unless there is none
};
using SharedOpening = std::shared_ptr<Opening>;

std::atomic<int> openingsUnderWay{0};

DWORD WINAPI runOpening(void* argument) noexcept {
    {
        const std::unique_ptr<SharedOpening> opening(static_cast<SharedOpening*>(argument));
        (*opening)->former.reset();
        (*opening)->device = openDevice();
        SetEvent((*opening)->finished.get());
    }
    --openingsUnderWay;
    return 0;
}

/// Takes `former` along, or leaves it where it is and answers null: too many threads hang already, or the
/// system gives no more.
SharedOpening beginOpening(DeviceHandle& former) {
    constexpr int mostOpenings = 4;
    auto opening = std::make_shared<Opening>();
    opening->finished = KernelHandle(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    if (!opening->finished) {
        return nullptr;
    }
    if (++openingsUnderWay > mostOpenings) {
        --openingsUnderWay;
        return nullptr;
    }
    opening->former = std::move(former);
    auto share = std::make_unique<SharedOpening>(opening);
    const KernelHandle thread(CreateThread(nullptr, 0, runOpening, share.get(), 0, nullptr));
    if (!thread) {
        former = std::move(opening->former);
        --openingsUnderWay;
        return nullptr;
    }
    static_cast<void>(share.release());
    return opening;
}

} // namespace

struct Microphone {
    DeviceHandle device; // null while a lost one has no successor
    SharedOpening opening;
    std::size_t oldest = 0; // index of the buffer whose sound comes next, or was returned last
    bool isOldestReturned = false;
    DWORD waitedMs = 0;    // without a buffer, or for the opening
    bool hasBegun = false; // the device has given a buffer back
    bool hasRefused = false;
    ULONGLONG startedAt = 0;
};

namespace {

void handOut(Microphone& microphone, std::size_t index) {
    WAVEHDR& header = microphone.device->headers[index];
    // A device that is gone refuses the buffer and leaves it as it is: the same words would be heard for
    // ever.
    header.dwFlags &= ~static_cast<DWORD>(WHDR_DONE);
    header.dwBytesRecorded = 0;
    if (waveInAddBuffer(microphone.device->handle, &header, sizeof(header)) != MMSYSERR_NOERROR) {
        microphone.hasRefused = true;
    }
}

bool isOldestFilled(const Microphone& microphone) {
    // Set by a thread of the system's.
    const volatile DWORD& flags = microphone.device->headers[microphone.oldest].dwFlags;
    return (flags & WHDR_DONE) != 0;
}

/// Hands the buffer that was returned to the listener back to the device.
void requeueReturned(Microphone& microphone) {
    if (std::exchange(microphone.isOldestReturned, false)) {
        handOut(microphone, microphone.oldest);
        microphone.oldest = (microphone.oldest + 1) % soundChunkLimit;
    }
}

/// The device was unplugged, or is of no use any more. Only time that was waited counts: neither the sleep of
/// the machine nor a busy listener makes a device a lost one.
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
    // The event may still be set for a buffer that was taken without a wait.
    const HANDLE returned = microphone.device->bufferReturned.get();
    while (!isOldestFilled(microphone) && WaitForSingleObject(returned, limitMs) == WAIT_OBJECT_0) {
    }
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
        handOut(microphone, index);
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
