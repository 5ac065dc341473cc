#pragma once

#include "platform/microphone.h"

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <string>
#include <vector>

// The microphone of these tests hears a tone of 1000 Hz without end; one that was idle may begin seconds
// late.

using ListeningClock = std::chrono::steady_clock;

/// Whether the condition came true within 20 s of listening.
inline bool listenUntil(Microphone& microphone, const std::function<bool()>& condition) {
    const auto deadline = ListeningClock::now() + std::chrono::seconds(20);
    while (!condition()) {
        if (ListeningClock::now() > deadline)
            return false;
        waitForSound(microphone, 250);
    }
    return true;
}

/// At least so many buffers, or what came within 20 s; each is handed out again at once.
inline std::vector<std::string> hearBuffers(Microphone& microphone, std::size_t count) {
    std::vector<std::string> heard;
    listenUntil(microphone, [&] {
        for (std::size_t i = 0; i < soundBufferCount; ++i) {
            if (const auto sound = recordedSound(microphone, i)) {
                heard.emplace_back(*sound);
                requeueSoundBuffer(microphone, i);
            }
        }
        return heard.size() >= count;
    });
    return heard;
}
