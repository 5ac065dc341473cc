#include "listening.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace {

/// How often the sound changes its sign.
int turns(const std::string& sound) {
    std::int16_t samples[soundBufferBytes / 2] = {};
    std::memcpy(samples, sound.data(), std::min(sound.size(), sizeof(samples)));
    int count = 0;
    for (std::size_t i = 1; i < std::size(samples); ++i)
        count += (samples[i - 1] < 0) != (samples[i] < 0) ? 1 : 0;
    return count;
}

TEST(MicrophoneContract, TheToneComesInBuffersOf100MsAndOnlyThoseHandedOutAreFilled) {
    const MicrophoneHandle microphone = (openMicrophone().reset(), openMicrophone()); // the first lets go
    ASSERT_NE(microphone, nullptr);
    startMicrophone(*microphone);
    hearBuffers(*microphone, 8); // the first may be silent, and come all at once
    std::vector<double> gaps;
    for (int i = 0; i < 15; ++i) {
        const auto before = ListeningClock::now();
        for (const std::string& sound : hearBuffers(*microphone, 1))
            EXPECT_NEAR(turns(sound), 200, 2);
        gaps.push_back(std::chrono::duration<double>(ListeningClock::now() - before).count());
    }
    std::ranges::nth_element(gaps, gaps.begin() + 7);
    EXPECT_NEAR(gaps[7], 0.1, 0.04);

    const auto sound = [&](std::size_t i) { return std::string(recordedSound(*microphone, i).value_or("")); };
    EXPECT_TRUE(listenUntil(*microphone, [&] {
        return !(sound(0).empty() || sound(1).empty() || sound(2).empty() || sound(3).empty());
    }));
    const std::string kept = sound(1) + sound(3);
    requeueSoundBuffer(*microphone, 2);
    requeueSoundBuffer(*microphone, 0);
    EXPECT_TRUE(sound(2).empty());
    EXPECT_TRUE(listenUntil(*microphone, [&] { return !(sound(0) + sound(2)).empty(); }));
    EXPECT_FALSE(sound(2).empty()) << "handed out before the other";
    EXPECT_TRUE(listenUntil(*microphone, [&] { return !sound(0).empty(); }));
    waitForSound(*microphone, 500);
    EXPECT_TRUE(sound(1) + sound(3) == kept) << "a buffer that is being read was written to";
}

TEST(MicrophoneContract, AServerThatHangsOrDiesIsNotWaitedForAndHeardAgainAndNothingIsLeftOpen) {
    const MicrophoneHandle microphone = openMicrophone();
    ASSERT_NE(microphone, nullptr);
    startMicrophone(*microphone);
    EXPECT_TRUE(isHeard(*microphone));
    EXPECT_TRUE(onHost("kill -STOP $(cat $ROTIKA_SOUND_PID)"));
    const auto before = ListeningClock::now();
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(openMicrophone(), nullptr);
    EXPECT_LT(ListeningClock::now() - before, std::chrono::seconds(6));
    expectQuiet(*microphone, 5); // on Windows the device is given up meanwhile, on Linux the server
    EXPECT_TRUE(onHost("kill -CONT $(cat $ROTIKA_SOUND_PID)"));
    EXPECT_TRUE(isHeard(*microphone));
    // One recording is ours, one that of the microphone, which is itself one of the room.
    EXPECT_TRUE(onHost("until test $(pactl list short source-outputs | wc -l) = 2; do sleep 0.1; done"));
    EXPECT_TRUE(onHost("kill -KILL $(cat $ROTIKA_SOUND_PID)"));
    EXPECT_TRUE(isHeard(*microphone));
}

} // namespace
