#pragma once

#include "platform/microphone.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <string>
#include <thread>
#include <vector>

// The microphone of these tests hears a tone of 1000 Hz without end; one that was idle may begin seconds
// late.

using ListeningClock = std::chrono::steady_clock;

/// Whether the shell command has ended well within 20 s. Under Wine nobody tells when a program of the host
/// ends.
inline bool onHost(const std::string& command) {
    const std::string done = std::string(std::getenv("ROTIKA_SOUND_PID")) + ".done";
    std::filesystem::remove(done);
    const std::string shell = ROTIKA_HOST_SHELL; // up to the quotation mark
    EXPECT_EQ(std::system((shell + command + " && touch " + done + shell.back()).c_str()), 0) << command;
    for (int i = 0; i < 200 && !std::filesystem::exists(done); ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
    return std::filesystem::exists(done);
}

/// Whether the condition came true within 20 s of listening.
inline bool listenUntil(Microphone& microphone, const std::function<bool()>& condition) {
    const auto deadline = ListeningClock::now() + std::chrono::seconds(20);
    while (!condition() && ListeningClock::now() < deadline)
        waitForSound(microphone, 250);
    return ListeningClock::now() < deadline;
}

/// At least so many buffers, or what came within 20 s; each is handed out again at once.
inline std::vector<std::string> hearBuffers(Microphone& microphone, std::size_t count) {
    std::vector<std::string> heard;
    listenUntil(microphone, [&] {
        for (std::size_t i = 0; i < soundBufferCount; ++i)
            if (const auto sound = recordedSound(microphone, i)) {
                heard.emplace_back(*sound);
                requeueSoundBuffer(microphone, i);
            }
        return heard.size() >= count;
    });
    return heard;
}

/// More than were on their way.
inline bool isHeard(Microphone& microphone) {
    return hearBuffers(microphone, 10).size() >= 10;
}

/// Nothing comes, and every wait takes its time and no longer; what was under way may cut the first short.
inline void expectQuiet(Microphone& microphone, int seconds) {
    for (int i = 0; i < 2; ++i) {
        hearBuffers(microphone, 0);
        waitForSound(microphone, 250);
    }
    const auto start = ListeningClock::now();
    for (int i = 0; i < 4 * seconds; ++i)
        waitForSound(microphone, 250);
    EXPECT_GE(ListeningClock::now() - start, std::chrono::seconds(seconds));
    EXPECT_LT(ListeningClock::now() - start, std::chrono::milliseconds(1200 * seconds));
    EXPECT_TRUE(hearBuffers(microphone, 0).empty());
}
