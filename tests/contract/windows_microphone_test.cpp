// How the microphone bears a device that is unplugged, and one that does not answer.

#include "intercepted_call.h"
#include "listening.h"

#include <mmsystem.h>

#include <atomic>
#include <utility>

extern "C" {
extern decltype(&waveInOpen) __imp_waveInOpen;
extern decltype(&waveInClose) __imp_waveInClose;
extern decltype(&waveInAddBuffer) __imp_waveInAddBuffer;
}

namespace {

using namespace std::chrono_literals;

const decltype(&waveInOpen) systemOpen = __imp_waveInOpen;
const decltype(&waveInClose) systemClose = __imp_waveInClose;
const decltype(&waveInAddBuffer) systemAddBuffer = __imp_waveInAddBuffer;

enum class State { works, gone, silent, hangs };
std::atomic<State> state;
std::atomic<int> opened;

MMRESULT WINAPI openOrNot(LPHWAVEIN device, UINT id, LPCWAVEFORMATEX format, DWORD_PTR callback,
                          DWORD_PTR instance, DWORD flags) {
    while (state == State::hangs) {
        Sleep(10);
    }
    const MMRESULT result =
        state == State::gone ? MMSYSERR_NODRIVER : systemOpen(device, id, format, callback, instance, flags);
    opened += result == MMSYSERR_NOERROR ? 1 : 0;
    return result;
}

MMRESULT WINAPI closeAndCount(HWAVEIN device) {
    const MMRESULT result = systemClose(device);
    opened -= result == MMSYSERR_NOERROR ? 1 : 0;
    return result;
}

MMRESULT WINAPI addOrNot(HWAVEIN device, LPWAVEHDR header, UINT size) {
    switch (state.load()) {
    case State::gone:
        return MMSYSERR_NODRIVER;
    case State::silent:
        return MMSYSERR_NOERROR;
    default:
        return systemAddBuffer(device, header, size);
    }
}

class WindowsMicrophone : public testing::Test {
protected:
    WindowsMicrophone() {
        state = State::works;
        opened = 0;
    }

    const InterceptedCall<decltype(&waveInOpen)> open{__imp_waveInOpen, openOrNot};
    const InterceptedCall<decltype(&waveInClose)> close{__imp_waveInClose, closeAndCount};
    const InterceptedCall<decltype(&waveInAddBuffer)> addBuffer{__imp_waveInAddBuffer, addOrNot};
};

TEST_F(WindowsMicrophone, IsHeardAgainAfterItsDeviceWasLost) {
    const MicrophoneHandle microphone = openMicrophone();
    ASSERT_NE(microphone, nullptr);
    startMicrophone(*microphone);
    constexpr std::pair<State, std::chrono::seconds> losses[] = {{State::gone, 7s}, {State::silent, 1s}};
    for (const auto& [loss, duration] : losses) {
        EXPECT_GE(hearBuffers(*microphone, 6).size(), 6U);
        state = loss;
        const auto goneAt = ListeningClock::now();
        EXPECT_TRUE(listenUntil(*microphone, [&] {
            hearBuffers(*microphone, 0);
            return ListeningClock::now() - goneAt > duration;
        }));
        EXPECT_LE(opened, 1);
        state = State::works;
        EXPECT_GE(hearBuffers(*microphone, 6).size(), 6U);
        EXPECT_EQ(opened, 1);
    }
}

TEST_F(WindowsMicrophone, ADeviceThatDoesNotOpenIsNotWaitedForAndIsNotKeptWhenItDoes) {
    state = State::hangs;
    for (int i = 0; i < 6; ++i) {
        const auto before = ListeningClock::now();
        EXPECT_EQ(openMicrophone(), nullptr);
        EXPECT_LT(ListeningClock::now() - before, 1900ms);
    }
    state = State::works;
    MicrophoneHandle microphone;
    for (int i = 0; i < 20 && microphone == nullptr; ++i) {
        Sleep(100);
        microphone = openMicrophone();
    }
    EXPECT_NE(microphone, nullptr);
    for (int i = 0; i < 200 && opened != 1; ++i) {
        Sleep(50);
    }
    EXPECT_EQ(opened, 1);
}

} // namespace
