// The microphone of these tests hears a tone of 1000 Hz without end; one that was idle may begin seconds
// late.

#include "platform/microphone.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

using namespace rotika;

namespace {

using Clock = std::chrono::steady_clock;

/// Whether the shell command has ended well within 20 s. Under Wine nobody tells when a program of the host
/// ends.
bool onHost(const std::string& command) {
    const std::string done = std::string(std::getenv("ROTIKA_SOUND_PID")) + ".done";
    std::filesystem::remove(done);
    const std::string shell = ROTIKA_HOST_SHELL; // up to the quotation mark
    EXPECT_EQ(std::system((shell + command + " && touch " + done + shell.back()).c_str()), 0) << command;
    for (int i = 0; i < 200 && !std::filesystem::exists(done); ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
    return std::filesystem::exists(done);
}

/// At least so many buffers, or what came within 20 s; each is handed out again at once.
std::vector<std::string> hearBuffers(Microphone& microphone, std::size_t count) {
    std::vector<std::string> heard;
    for (const auto limit = Clock::now() + std::chrono::seconds(20); Clock::now() < limit;) {
        for (std::size_t i = 0; i < soundBufferCount; ++i)
            if (const auto sound = recordedSound(microphone, i)) {
                heard.emplace_back(*sound);
                requeueSoundBuffer(microphone, i);
            }
        if (heard.size() >= count)
            break;
        waitForSound(microphone, 250);
    }
    return heard;
}

/// More than were on their way.
bool isHeard(Microphone& microphone) {
    return hearBuffers(microphone, 10).size() >= 10;
}

TEST(MicrophoneContract, AServerThatHangsOrDiesIsNotWaitedForAndHeardAgain) {
    const MicrophoneHandle microphone = (openMicrophone().reset(), openMicrophone()); // the first lets go
    ASSERT_NE(microphone, nullptr);
    startMicrophone(*microphone);
    EXPECT_TRUE(isHeard(*microphone));
    EXPECT_TRUE(onHost("kill -STOP $(cat $ROTIKA_SOUND_PID)"));
    auto before = Clock::now();
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(openMicrophone(), nullptr);
    EXPECT_LT(Clock::now() - before, std::chrono::seconds(6));
    hearBuffers(*microphone, 0); // what was under way
    waitForSound(*microphone, 250);
    before =
        Clock::now(); // every wait takes its time and no longer, while the device or the server is given up
    for (int i = 0; i < 20; ++i)
        waitForSound(*microphone, 250);
    EXPECT_NEAR(std::chrono::duration<double>(Clock::now() - before).count(), 5, 1);
    EXPECT_TRUE(hearBuffers(*microphone, 0).empty());
    EXPECT_TRUE(onHost("kill -CONT $(cat $ROTIKA_SOUND_PID)"));
    EXPECT_TRUE(isHeard(*microphone));
    // One recording is ours, one that of the microphone, which is itself one of the room.
    EXPECT_TRUE(onHost("until test $(pactl list short source-outputs | wc -l) = 2; do sleep 0.1; done"));
    EXPECT_TRUE(onHost("kill -KILL $(cat $ROTIKA_SOUND_PID)"));
    EXPECT_TRUE(isHeard(*microphone));
}

#ifndef _WIN32 // the last one: it takes the microphone away
TEST(MicrophoneContract, TheComputersOwnSoundIsNoneUnlessTheUserNamesIt) {
    EXPECT_TRUE(onHost("pactl unload-module module-remap-source"));
    EXPECT_EQ(openMicrophone(), nullptr);
    ::setenv("PULSE_SOURCE", "room.monitor", 1);
    EXPECT_NE(openMicrophone(), nullptr);
}
#endif

} // namespace
