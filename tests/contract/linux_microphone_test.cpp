// How the microphone bears what happens to the sound server: it may be absent, hang, die and come back, and
// lose its device.

#include "listening.h"

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <ctime>
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

bool plugMicrophoneIn() {
    return control("load-module module-remap-source master=room.monitor source_name=microphone");
}

std::chrono::milliseconds timeOf(const std::function<void()>& act) {
    const auto start = ListeningClock::now();
    act();
    return std::chrono::duration_cast<std::chrono::milliseconds>(ListeningClock::now() - start);
}

/// Where the next connections lead: it accepts them and says nothing.
class SilentServer {
public:
    SilentServer() {
        const std::string path = environment("ROTIKA_SOUND_PID") + ".silent";
        sockaddr_un address{.sun_family = AF_UNIX, .sun_path = {}};
        path.copy(address.sun_path, sizeof address.sun_path - 1);
        EXPECT_EQ(::bind(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
        EXPECT_EQ(::listen(socket, 10), 0);
        ::setenv("PULSE_SERVER", ("unix:" + path).c_str(), 1);
    }
    SilentServer(const SilentServer&) = delete;
    ~SilentServer() { ::close(socket); }
    void giveWay() const { ::setenv("PULSE_SERVER", usual.c_str(), 1); }

private:
    const std::string usual = environment("PULSE_SERVER");
    const int socket = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
};

std::chrono::nanoseconds processorTimeOfThread() {
    timespec time{};
    ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
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

/// The server offers the monitor of the speakers where there is no microphone, and moves the stream to it.
TEST(LinuxMicrophone, TheComputersOwnSoundIsNoMicrophoneUnlessTheUserNamesIt) {
    const MicrophoneHandle microphone = openMicrophone();
    ASSERT_NE(microphone, nullptr);
    startMicrophone(*microphone);
    ASSERT_TRUE(isHeard(*microphone));
    ASSERT_TRUE(control("unload-module module-remap-source"));
    expectQuiet(*microphone);
    EXPECT_EQ(openMicrophone(), nullptr);
    ::setenv("PULSE_SOURCE", "room.monitor", 1);
    EXPECT_NE(openMicrophone(), nullptr);
    ::unsetenv("PULSE_SOURCE");
    ASSERT_TRUE(plugMicrophoneIn());
    EXPECT_TRUE(isHeard(*microphone));
}

TEST(LinuxMicrophone, ADeviceThatWasLostAndAServerThatWasKilledAreHeardAgain) {
    const MicrophoneHandle microphone = openMicrophone();
    ASSERT_NE(microphone, nullptr);
    startMicrophone(*microphone);
    ASSERT_TRUE(isHeard(*microphone));
    ASSERT_TRUE(control("unload-module module-null-sink")); // tone and microphone end with it
    EXPECT_EQ(openMicrophone(), nullptr);
    expectQuiet(*microphone);
    ASSERT_TRUE(control("load-module module-null-sink sink_name=room rate=16000 channels=1"));
    ASSERT_TRUE(control("load-module module-sine sink=room frequency=1000"));
    ASSERT_TRUE(plugMicrophoneIn());
    EXPECT_TRUE(isHeard(*microphone));

    const pid_t killed = serverProcess();
    const SilentServer silent;
    ::kill(killed, SIGKILL);
    const auto before = processorTimeOfThread();
    for (int i = 0; i < 32; ++i) // longer than two tries to reach the server
        waitForSound(*microphone, 250);
    EXPECT_LT(processorTimeOfThread() - before, std::chrono::milliseconds(100));
    silent.giveWay();
    EXPECT_TRUE(listenUntil(*microphone, [&] { return serverProcess() != killed; }));
    EXPECT_TRUE(isHeard(*microphone));
}

} // namespace
