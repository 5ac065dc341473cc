#include "platform/microphone.h"

#include "platform/simulated/simulated_desktop.h"

#include <algorithm>
#include <array>

namespace rotika {

namespace {

constexpr std::uint32_t bufferMs = 100;

enum class BufferPlace { nowhere, device, listener };

struct SoundBuffer {
    BufferPlace place = BufferPlace::nowhere;
    std::string bytes;
};

} // namespace

struct Microphone {
    std::array<SoundBuffer, soundBufferCount> buffers;
    std::deque<std::size_t> queue; // of buffers at the device, in the order of their filling
    std::uint64_t nextFullAt = 0;  // of the virtual clock

    bool hasSoundToTake() const {
        return std::ranges::any_of(
            buffers, [](const SoundBuffer& buffer) { return buffer.place == BufferPlace::listener; });
    }

    void fillDueBuffers() {
        SimulatedDesktop& desktop = simulatedDesktop();
        for (; nextFullAt <= desktop.clock.now(); nextFullAt += bufferMs) {
            if (!desktop.microphoneDelivers || queue.empty())
                continue;
            SoundBuffer& buffer = buffers[queue.front()];
            queue.pop_front();
            buffer.place = BufferPlace::listener;
            buffer.bytes.assign(soundBufferBytes, '\0');
            if (!desktop.sound.empty()) {
                buffer.bytes = desktop.sound.front();
                desktop.sound.pop_front();
            }
        }
    }
};

void MicrophoneCloser::operator()(Microphone* microphone) const noexcept {
    --simulatedDesktop().microphonesOpen;
    delete microphone;
}

MicrophoneHandle openMicrophone() {
    SimulatedDesktop& desktop = simulatedDesktop();
    if (!desktop.hasMicrophone)
        return nullptr;
    ++desktop.microphonesOpen;
    return MicrophoneHandle(new Microphone);
}

void startMicrophone(Microphone& microphone) {
    microphone.nextFullAt = simulatedDesktop().clock.now() + bufferMs;
    for (std::size_t i = 0; i < soundBufferCount; ++i)
        requeueSoundBuffer(microphone, i);
}

void waitForSound(Microphone& microphone, std::uint32_t limitMs) {
    VirtualClock& clock = simulatedDesktop().clock;
    const std::uint64_t deadline = clock.now() + limitMs;
    microphone.fillDueBuffers();
    while (!microphone.hasSoundToTake() && clock.now() < deadline) {
        const std::uint64_t before = clock.now();
        const std::uint64_t wake = std::min(deadline, microphone.nextFullAt);
        clock.sleepCallingWorker(static_cast<std::uint32_t>(wake - before));
        if (clock.now() == before) // workers run freely, and time stands
            return;
        microphone.fillDueBuffers();
    }
}

std::optional<std::string_view> recordedSound(const Microphone& microphone, std::size_t index) {
    const SoundBuffer& buffer = microphone.buffers[index];
    if (buffer.place != BufferPlace::listener)
        return std::nullopt;
    return buffer.bytes;
}

void requeueSoundBuffer(Microphone& microphone, std::size_t index) {
    microphone.buffers[index].place = BufferPlace::device;
    microphone.queue.push_back(index);
}

} // namespace rotika
