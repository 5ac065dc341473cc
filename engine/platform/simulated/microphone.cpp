#include "platform/microphone.h"

#include "platform/simulated/simulated_desktop.h"

#include <algorithm>
#include <array>
#include <utility>

namespace rotika {

namespace {
constexpr std::uint32_t chunkMs = 100;
}

struct Microphone {
    std::array<std::string, soundChunkLimit> chunks;
    std::size_t oldest = 0;
    std::size_t count = 0; // of chunks in use, from the oldest on
    bool isOldestReturned = false;
    std::uint64_t nextFullAt = 0; // of the virtual clock

    void recordUntilNow() {
        SimulatedDesktop& desktop = simulatedDesktop();
        for (; nextFullAt <= desktop.clock.now(); nextFullAt += chunkMs) {
            if (!desktop.microphoneDelivers || count == chunks.size())
                continue;
            std::string& chunk = chunks[(oldest + count) % chunks.size()];
            ++count;
            chunk.assign(soundChunkBytes, '\0');
            if (!desktop.sound.empty()) {
                chunk = desktop.sound.front();
                desktop.sound.pop_front();
            }
        }
    }

    void releaseReturnedChunk() {
        if (!std::exchange(isOldestReturned, false))
            return;
        oldest = (oldest + 1) % chunks.size();
        --count;
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
    microphone.nextFullAt = simulatedDesktop().clock.now() + chunkMs;
}

std::string_view nextSound(Microphone& microphone, std::uint32_t limitMs) {
    VirtualClock& clock = simulatedDesktop().clock;
    const std::uint64_t deadline = clock.now() + limitMs;
    microphone.recordUntilNow(); // while the caller was busy with the returned chunk
    microphone.releaseReturnedChunk();
    while (microphone.count == 0 && clock.now() < deadline) {
        const std::uint64_t before = clock.now();
        const std::uint64_t wake = std::min(deadline, microphone.nextFullAt);
        clock.sleepCallingWorker(static_cast<std::uint32_t>(wake - before));
        if (clock.now() == before) // workers run freely, and the clock stands still
            return {};
        microphone.recordUntilNow();
    }
    if (microphone.count == 0)
        return {};
    microphone.isOldestReturned = true;
    return microphone.chunks[microphone.oldest];
}

} // namespace rotika
