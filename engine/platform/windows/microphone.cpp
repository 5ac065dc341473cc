#include "platform/microphone.h"

#include "platform/windows/handles.h"

#include <mmsystem.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <utility>

namespace rotika {

namespace {

using SoundBuffer = std::array<char, soundBufferBytes>;

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
    std::array<WAVEHDR, soundBufferCount> headers{};
    std::array<SoundBuffer, soundBufferCount> buffers{};
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
    std::size_t nextIndex = 0; // the listener goes on with this buffer
    DWORD waitedMs = 0;        // without a buffer, or for the opening
    bool hasBegun = false;     // the device has given a buffer back
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

bool anyBufferIsBack(const Microphone& microphone) {
    for (std::size_t index = 0; index < soundBufferCount; ++index) {
        if (recordedSound(microphone, index)) {
            return true;
        }
    }
    return false;
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

void waitForDevice(Microphone& microphone, DWORD limitMs) {
    const bool isSignalled =
        WaitForSingleObject(microphone.device->bufferReturned.get(), limitMs) == WAIT_OBJECT_0;
    if (anyBufferIsBack(microphone)) {
        microphone.hasBegun = true;
        microphone.waitedMs = 0;
    } else if (!isSignalled) { // the listener may have been faster than the signal
        microphone.waitedMs += limitMs;
    }
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

/// The buffers come back in the order in which they are handed out. After a loss the listener is not told
/// that they are new, so the first is the one that it expects next.
void startMicrophone(Microphone& microphone) {
    Device& device = *microphone.device;
    microphone.hasBegun = false;
    microphone.hasRefused = false;
    microphone.startedAt = GetTickCount64();
    // The opening of the device has set it as well.
    ResetEvent(device.bufferReturned.get());
    for (std::size_t i = 0; i < soundBufferCount; ++i) {
        const std::size_t index = (microphone.nextIndex + i) % soundBufferCount;
        WAVEHDR& header = device.headers[index];
        header = {};
        header.lpData = device.buffers[index].data();
        header.dwBufferLength = soundBufferBytes;
        waveInPrepareHeader(device.handle, &header, sizeof(header));
        handOut(microphone, index);
    }
    waveInStart(device.handle);
}

void waitForSound(Microphone& microphone, std::uint32_t limitMs) {
    if (microphone.opening) {
        followOpening(microphone, limitMs);
        return;
    }
    if (microphone.device) {
        waitForDevice(microphone, limitMs);
    } else {
        Sleep(limitMs);
        microphone.waitedMs += limitMs;
    }
    if (isLost(microphone) && !anyBufferIsBack(microphone)) {
        microphone.opening = beginOpening(microphone.device);
        microphone.waitedMs = 0;
    }
}

std::optional<std::string_view> recordedSound(const Microphone& microphone, std::size_t index) {
    if (!microphone.device) {
        return std::nullopt;
    }
    const WAVEHDR& header = microphone.device->headers[index];
    // Set by a thread of the system's.
    const volatile DWORD& flags = header.dwFlags;
    if ((flags & WHDR_DONE) == 0) {
        return std::nullopt;
    }
    return std::string_view(header.lpData, std::min<std::size_t>(header.dwBytesRecorded, soundBufferBytes));
}

void requeueSoundBuffer(Microphone& microphone, std::size_t index) {
    microphone.nextIndex = (index + 1) % soundBufferCount;
    if (microphone.device) {
        handOut(microphone, index);
    }
}

} // namespace rotika
