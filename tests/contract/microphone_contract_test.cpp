// The microphone of these tests records a continuous tone of 1003 Hz; after it was idle the first sound may
// come seconds late.

#include "platform/microphone.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <numbers>
#include <string>
#include <thread>
#include <vector>

using namespace rotika;

namespace {

using Clock = std::chrono::steady_clock;

/// Whether the shell command has succeeded within 20 s. Wine does not report the end of a program of the
/// host.
bool onHost(const std::string& command) {
    const std::string done = std::string(std::getenv("ROTIKA_SOUND_PID")) + ".done";
    std::filesystem::remove(done);
    const std::string shell = ROTIKA_HOST_SHELL; // up to the quotation mark
    EXPECT_EQ(std::system((shell + command + " && touch " + done + shell.back()).c_str()), 0) << command;
    for (int i = 0; i < 200 && !std::filesystem::exists(done); ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
    return std::filesystem::exists(done);
}

/// More sound than was under way; less if it does not come within 20 s.
std::string record(Microphone& microphone) {
    std::string received;
    for (const auto limit = Clock::now() + std::chrono::seconds(20);
         received.size() < 10 * soundChunkBytes && Clock::now() < limit;)
        received += nextSound(microphone, 250);
    return received;
}

bool delivers(Microphone& microphone) {
    return record(microphone).size() >= 10 * soundChunkBytes;
}

/// The largest deviation from an uninterrupted tone, relative to its amplitude. Chunks in the wrong order
/// show, since 100 ms are not a whole number of periods.
double discontinuityOf(const std::string& sound) {
    std::vector<std::int16_t> samples(sound.size() / sizeof(std::int16_t));
    std::memcpy(samples.data(), sound.data(), sound.size());
    const double factor = 2 * std::cos(2 * std::numbers::pi * 1003 / soundSampleRate);
    double largest = 0;
    for (std::size_t i = 2; i < samples.size(); ++i)
        largest = std::max(largest, std::abs(samples[i] - factor * samples[i - 1] + samples[i - 2]));
    return largest / std::ranges::max(samples);
}

TEST(MicrophoneContract, SoundIsInOrderAfterAStallAndAServerThatHangsOrDiesIsConnectedAgain) {
    const MicrophoneHandle microphone = (openMicrophone().reset(), openMicrophone()); // the first is closed
    ASSERT_NE(microphone, nullptr);
    startMicrophone(*microphone);
    EXPECT_TRUE(delivers(*microphone));
    std::string received = record(*microphone);
#ifdef _WIN32 // in a longer stall Wine itself loses sound
    EXPECT_TRUE(onHost("sleep 1 && kill -STOP $(cat $ROTIKA_SOUND_PID)"));
#else // longer than the sound that is kept
    EXPECT_TRUE(onHost("sleep 4 && kill -STOP $(cat $ROTIKA_SOUND_PID)"));
#endif
    for (std::string_view sound = "-"; !sound.empty(); received += sound)
        sound = nextSound(*microphone, 250);
    EXPECT_GE(received.size(), (10 + soundChunkLimit - 1) * soundChunkBytes) << "one was in use";
    EXPECT_LE(received.size(), (10 + maxSoundChunks) * soundChunkBytes);
    EXPECT_LT(discontinuityOf(received), 0.05);
    auto before = Clock::now();
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(openMicrophone(), nullptr);
    EXPECT_LT(Clock::now() - before, std::chrono::seconds(6));
    before = Clock::now(); // every wait takes its whole limit and no longer, also while a device is replaced
    for (int i = 0; i < 20; ++i)
        EXPECT_EQ(nextSound(*microphone, 250), "");
    EXPECT_NEAR(std::chrono::duration<double>(Clock::now() - before).count(), 5, 1);
    EXPECT_TRUE(onHost("kill -CONT $(cat $ROTIKA_SOUND_PID)"));
    EXPECT_TRUE(delivers(*microphone));
    // One recording is ours, the other belongs to the remapped source.
    EXPECT_TRUE(onHost("until test $(pactl list short source-outputs | wc -l) = 2; do sleep 0.1; done"));
    EXPECT_TRUE(onHost("kill -KILL $(cat $ROTIKA_SOUND_PID)"));
    for (std::size_t i = 0; i <= maxSoundChunks; i += 10) // more than was kept before
        EXPECT_TRUE(delivers(*microphone));
}

#ifndef _WIN32 // the last one: it removes the microphone
TEST(MicrophoneContract, AMonitorOfTheSpeakersIsUsedOnlyIfTheUserNamesIt) {
    EXPECT_TRUE(onHost("pactl unload-module module-remap-source"));
    EXPECT_EQ(openMicrophone(), nullptr);
    ::setenv("PULSE_SOURCE", "speakers.monitor", 1);
    EXPECT_NE(openMicrophone(), nullptr);
}
#endif

} // namespace
