// How the microphone bears what happens to the sound server: it may be absent, hang, die and come back, and
// lose its device.

#include "listening.h"

#include <csignal>
#include <cstdlib>
#include <ctime>
#include <fstream>

namespace {

using namespace std::chrono_literals;

pid_t serverProcess() {
    pid_t process = 0;
    std::ifstream(std::getenv("ROTIKA_SOUND_PID")) >> process;
    return process;
}

bool control(const std::string& words) {
    return std::system(("pactl " + words + " >/dev/null").c_str()) == 0;
}

bool plugMicrophoneIn() {
    return control("load-module module-remap-source master=room.monitor source_name=microphone");
}

double processorSecondsOfThread() {
    timespec time{};
    ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

MicrophoneHandle startedMicrophone() {
    MicrophoneHandle microphone = openMicrophone();
    if (microphone != nullptr)
        startMicrophone(*microphone);
    return microphone;
}

bool isHeard(Microphone& microphone) {
    return hearBuffers(microphone, 5).size() >= 5;
}

/// Nothing comes, and waiting takes its time and no more, of the processor's neither: what was under way may
/// cut the first short.
void expectQuiet(Microphone& microphone, int seconds = 1) {
    hearBuffers(microphone, 0);
    waitForSound(microphone, 200);
    hearBuffers(microphone, 0);
    const auto start = ListeningClock::now();
    const double busyBefore = processorSecondsOfThread();
    for (int i = 0; i < 5 * seconds; ++i)
        waitForSound(microphone, 200);
    const std::chrono::duration<double> took = ListeningClock::now() - start;
    EXPECT_NEAR(took.count(), seconds + 0.2, 0.3);
    EXPECT_LT(processorSecondsOfThread() - busyBefore, 0.1);
    EXPECT_TRUE(hearBuffers(microphone, 0).empty());
}

TEST(LinuxMicrophone, AServerThatIsAbsentOrHangsIsNotWaitedFor) {
    const std::string usual = std::getenv("PULSE_SERVER");
    ::setenv("PULSE_SERVER", "unix:/nowhere/socket", 1);
    EXPECT_EQ(openMicrophone(), nullptr);
    ::setenv("PULSE_SERVER", usual.c_str(), 1);
    ASSERT_NE(serverProcess(), 0);
    ::kill(serverProcess(), SIGSTOP);
    const auto start = ListeningClock::now();
    EXPECT_EQ(openMicrophone(), nullptr);
    EXPECT_LT(ListeningClock::now() - start, 2s);
    ::kill(serverProcess(), SIGCONT);
}

/// The server offers the monitor of the speakers where there is no microphone, and moves the stream to it.
TEST(LinuxMicrophone, TheComputersOwnSoundIsNoMicrophoneUnlessTheUserNamesIt) {
    MicrophoneHandle microphone = startedMicrophone();
    ASSERT_NE(microphone, nullptr);
    ASSERT_TRUE(isHeard(*microphone));
    ASSERT_TRUE(control("unload-module module-remap-source"));
    expectQuiet(*microphone);
    EXPECT_EQ(openMicrophone(), nullptr);
    ::setenv("PULSE_SOURCE", "room.monitor", 1);
    EXPECT_NE(openMicrophone(), nullptr);
    ::unsetenv("PULSE_SOURCE");
    ASSERT_TRUE(plugMicrophoneIn());
    EXPECT_TRUE(isHeard(*microphone));

    // The server may remember that somebody once moved the program to a monitor.
    ASSERT_TRUE(control("load-module module-stream-restore"));
    ASSERT_TRUE(
        control("move-source-output $(pactl list short source-outputs | tail -n 1 | cut -f 1) room.monitor"));
    microphone.reset();
    microphone = startedMicrophone();
    ASSERT_NE(microphone, nullptr);
    EXPECT_TRUE(isHeard(*microphone));
}

TEST(LinuxMicrophone, ADeviceThatWasLostAndAServerThatHangsOrWasKilledAreHeardAgain) {
    const MicrophoneHandle microphone = startedMicrophone();
    ASSERT_NE(microphone, nullptr);
    ASSERT_TRUE(isHeard(*microphone));
    ASSERT_TRUE(control("unload-module module-null-sink")); // tone and microphone end with it
    EXPECT_EQ(openMicrophone(), nullptr);
    expectQuiet(*microphone);
    ASSERT_TRUE(control("load-module module-null-sink sink_name=room rate=16000 channels=1"));
    ASSERT_TRUE(control("load-module module-sine sink=room frequency=1000"));
    ASSERT_TRUE(plugMicrophoneIn());
    EXPECT_TRUE(isHeard(*microphone));

    const pid_t killed = serverProcess();
    ::kill(killed, SIGKILL);
    EXPECT_TRUE(listenUntil(*microphone, [&] { return serverProcess() != killed; }));
    ::kill(serverProcess(), SIGSTOP);
    expectQuiet(*microphone, 7); // longer than two tries to reach the server
    ::kill(serverProcess(), SIGCONT);
    EXPECT_TRUE(isHeard(*microphone));
}

} // namespace
