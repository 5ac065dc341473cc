#pragma once

#include "platform/microphone.h"

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <string>
#include <vector>

// A listener, for the tests of the microphone. The device hears a tone of 1000 Hz without end.

using ListeningClock = std::chrono::steady_clock;

/// Whether the condition came true within 20 s of listening: an idle device may begin seconds late.
inline bool listenUntil(Microphone& microphone, const std::function<bool()>& condition) {
    const auto deadline = ListeningClock::now() + std::chrono::seconds(20);
    while (!condition()) {
        if (ListeningClock::now() > deadline)
            return false;
        waitForSound(microphone, 250);
    }
    return true;
}

struct HeardBuffer {
    std::string sound;
    std::chrono::milliseconds at{};
};

/// At least so many buffers, or what came within 20 s; each is handed out again at once.
inline std::vector<HeardBuffer> hearBuffers(Microphone& microphone, std::size_t count) {
    std::vector<HeardBuffer> heard;
    listenUntil(microphone, [&] {
        for (std::size_t i = 0; i < soundBufferCount; ++i) {
            if (const auto sound = recordedSound(microphone, i)) {
                const auto now = ListeningClock::now().time_since_epoch();
                heard.push_back(
                    {std::string(*sound), std::chrono::duration_cast<std::chrono::milliseconds>(now)});
                requeueSoundBuffer(microphone, i);
            }
        }
        return heard.size() >= count;
    });
    return heard;
}
