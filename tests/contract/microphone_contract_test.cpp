#include "listening.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace {

/// How often the sound changes its sign; 0 for one too faint to be the tone.
int turns(const std::string& sound) {
    std::vector<std::int16_t> samples(sound.size() / sizeof(std::int16_t));
    std::memcpy(samples.data(), sound.data(), sound.size());
    int count = 0;
    for (std::size_t i = 1; i < samples.size(); ++i)
        count += (samples[i - 1] < 0) != (samples[i] < 0) ? 1 : 0;
    return std::ranges::max(samples) > 3000 ? count : 0;
}

TEST(MicrophoneContract, TheToneComesInBuffersOf100MsAndOnlyThoseHandedOutAreFilled) {
    MicrophoneHandle microphone = openMicrophone();
    ASSERT_NE(microphone, nullptr);
    startMicrophone(*microphone);
    EXPECT_GE(hearBuffers(*microphone, 1).size(), 1U);
    microphone.reset(); // lets the device go
    microphone = openMicrophone();
    ASSERT_NE(microphone, nullptr);
    EXPECT_FALSE(recordedSound(*microphone, 0)) << "not handed out yet";
    startMicrophone(*microphone);
    hearBuffers(*microphone, 8); // the first may be silent, and come all at once
    const auto before = ListeningClock::now();
    const std::vector<std::string> heard = hearBuffers(*microphone, 16);
    EXPECT_NEAR(std::chrono::duration<double>(ListeningClock::now() - before).count(), 1.6, 0.3);
    for (const std::string& sound : heard) {
        EXPECT_EQ(sound.size(), soundBufferBytes);
        EXPECT_NEAR(turns(sound), 200, 2);
    }

    const auto isBack = [&](std::size_t i) { return recordedSound(*microphone, i).has_value(); };
    const auto listenedTo = [&] {
        for (int i = 0; i < 3; ++i)
            waitForSound(*microphone, 250);
        std::vector<std::string> sound;
        for (std::size_t i = 0; i < soundBufferCount; ++i)
            sound.emplace_back(recordedSound(*microphone, i).value_or(""));
        return sound;
    };
    EXPECT_TRUE(listenUntil(*microphone, [&] { return isBack(0) && isBack(1) && isBack(2) && isBack(3); }));
    const std::vector<std::string> first = listenedTo();
    requeueSoundBuffer(*microphone, 2);
    requeueSoundBuffer(*microphone, 0);
    EXPECT_FALSE(isBack(2));
    EXPECT_TRUE(listenUntil(*microphone, [&] { return isBack(0) || isBack(2); }));
    EXPECT_TRUE(isBack(2)) << "handed out before the other";
    const std::vector<std::string> second = listenedTo();
    EXPECT_TRUE(isBack(0) && second[1] == first[1] && second[3] == first[3]);
}

} // namespace
