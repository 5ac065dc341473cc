#include "listening.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>

namespace {

constexpr auto all = {0U, 1U, 2U, 3U};

bool hasCome(const Microphone& microphone, std::initializer_list<unsigned> indices) {
    return std::ranges::all_of(indices, [&](unsigned i) { return recordedSound(microphone, i).has_value(); });
}

std::vector<std::string> copies(const Microphone& microphone) {
    std::vector<std::string> sound;
    for (const unsigned i : all)
        sound.emplace_back(recordedSound(microphone, i).value_or(""));
    return sound;
}

/// How often the sound changes its sign; 0 for one too faint to be the tone.
int turns(const std::string& sound) {
    std::vector<std::int16_t> samples(sound.size() / sizeof(std::int16_t));
    std::memcpy(samples.data(), sound.data(), sound.size());
    int count = 0;
    int loudest = 0;
    for (std::size_t i = 1; i < samples.size(); ++i) {
        count += (samples[i - 1] < 0) != (samples[i] < 0) ? 1 : 0;
        loudest = std::max(loudest, std::abs(int{samples[i]}));
    }
    return loudest > 3000 ? count : 0;
}

/// Opened twice: the first must let the device go.
TEST(MicrophoneContract, TheToneComesInBuffersOf100Ms) {
    for (int round = 0; round < 2; ++round) {
        const MicrophoneHandle microphone = openMicrophone();
        ASSERT_NE(microphone, nullptr);
        EXPECT_FALSE(recordedSound(*microphone, 0)) << "not handed out yet";
        startMicrophone(*microphone);
        std::vector<HeardBuffer> heard = hearBuffers(*microphone, 24);
        ASSERT_GE(heard.size(), 24U);
        std::vector<std::int64_t> gaps;
        for (std::size_t i = 4; i < heard.size(); ++i) { // the first may be silent, and come all at once
            EXPECT_EQ(heard[i].sound.size(), soundBufferBytes);
            EXPECT_NEAR(turns(heard[i].sound), 200, 2) << i;
            gaps.push_back((heard[i].at - heard[i - 1].at).count());
        }
        std::ranges::sort(gaps);
        EXPECT_NEAR(static_cast<double>(gaps[gaps.size() / 2]), 100, 40);
    }
}

TEST(MicrophoneContract, OnlyBuffersHandedOutAreFilled) {
    const MicrophoneHandle microphone = openMicrophone();
    ASSERT_NE(microphone, nullptr);
    startMicrophone(*microphone);
    ASSERT_TRUE(listenUntil(*microphone, [&] { return hasCome(*microphone, all); }));
    const std::vector<std::string> first = copies(*microphone);
    const auto listenForASecond = [&] {
        for (int i = 0; i < 4; ++i)
            waitForSound(*microphone, 250);
    };
    listenForASecond();
    EXPECT_TRUE(copies(*microphone) == first) << "a buffer that is being read was written to";

    requeueSoundBuffer(*microphone, 2);
    requeueSoundBuffer(*microphone, 0);
    EXPECT_FALSE(recordedSound(*microphone, 2));
    EXPECT_TRUE(listenUntil(*microphone, [&] { return hasCome(*microphone, {0, 2}); }));
    listenForASecond();
    const std::vector<std::string> second = copies(*microphone);
    EXPECT_TRUE(second[1] == first[1] && second[3] == first[3]);

    for (const unsigned i : all)
        requeueSoundBuffer(*microphone, i);
    EXPECT_TRUE(listenUntil(*microphone, [&] { return hasCome(*microphone, all); }));
}

} // namespace
