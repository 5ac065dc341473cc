// How the microphone bears what happens to the sound server: it may be absent, hang, die and come back, and
// lose its device.

#include "listening.h"

#include <csignal>
#include <cstdlib>
#include <fstream>

namespace {

std::string environment(const char* name) {
    const char* const value = std::getenv(name);
    return value == nullptr ? "" : value;
}

pid_t serverProcess() {
    pid_t process = 0;
    std::ifstream(environment("ROTIKA_SOUND_PID")) >> process;
    return process;
}

bool control(const std::string& words) {
    return std::system(("pactl " + words + " >/dev/null").c_str()) == 0;
}

std::chrono::milliseconds timeOf(const std::function<void()>& act) {
    const auto start = ListeningClock::now();
    act();
    return std::chrono::duration_cast<std::chrono::milliseconds>(ListeningClock::now() - start);
}

bool isHeard(Microphone& microphone) {
    return hearBuffers(microphone, 5).size() >= 5;
}

/// Nothing comes, and every wait takes its time and no longer: what was under way may cut the first short.
void expectQuiet(Microphone& microphone) {
    constexpr std::chrono::milliseconds limit(200);
    hearBuffers(microphone, 0);
    waitForSound(microphone, 200);
    hearBuffers(microphone, 0);
    for (int i = 0; i < 4; ++i) {
        const auto took = timeOf([&] { waitForSound(microphone, limit.count()); });
        EXPECT_GE(took, limit);
        EXPECT_LT(took, limit + std::chrono::milliseconds(500));
        EXPECT_TRUE(hearBuffers(microphone, 0).empty());
    }
}

TEST(LinuxMicrophone, WithoutAServerThereIsNone) {
    const std::string usual = environment("PULSE_SERVER");
    ::setenv("PULSE_SERVER", "unix:/nowhere/socket", 1);
    EXPECT_EQ(openMicrophone(), nullptr);
    ::setenv("PULSE_SERVER", usual.c_str(), 1);
    EXPECT_NE(openMicrophone(), nullptr);
}

TEST(LinuxMicrophone, AServerThatHangsIsNotWaitedFor) {
    ASSERT_NE(serverProcess(), 0);
    ::kill(serverProcess(), SIGSTOP);
    MicrophoneHandle microphone;
    const auto took = timeOf([&] { microphone = openMicrophone(); });
    EXPECT_EQ(microphone, nullptr);
    EXPECT_LT(took, std::chrono::milliseconds(2000));
    ::kill(serverProcess(), SIGCONT);
}

TEST(LinuxMicrophone, ADeviceThatWasLostAndAServerThatWasKilledAreHeardAgain) {
    const MicrophoneHandle microphone = openMicrophone();
    ASSERT_NE(microphone, nullptr);
    startMicrophone(*microphone);
    ASSERT_TRUE(isHeard(*microphone));
    ASSERT_TRUE(control("unload-module module-null-sink")); // the tone ends with it
    EXPECT_EQ(openMicrophone(), nullptr);
    expectQuiet(*microphone);
    ASSERT_TRUE(control("load-module module-null-sink rate=16000 channels=1"));
    ASSERT_TRUE(control("load-module module-sine frequency=1000"));
    EXPECT_TRUE(isHeard(*microphone));

    const pid_t killed = serverProcess();
    ::kill(killed, SIGKILL);
    EXPECT_TRUE(listenUntil(*microphone, [&] { return serverProcess() != killed; }));
    EXPECT_TRUE(isHeard(*microphone));
}

} // namespace
