// How the microphone bears a device that is unplugged, and one that does not answer.

#include "intercepted_call.h"
#include "listening.h"

#include <mmsystem.h>

#include <atomic>

extern "C" {
extern decltype(&waveInOpen) __imp_waveInOpen;
extern decltype(&waveInClose) __imp_waveInClose;
extern decltype(&waveInAddBuffer) __imp_waveInAddBuffer;
}

namespace {

using namespace std::chrono_literals;

const auto systemOpen = __imp_waveInOpen;
const auto systemClose = __imp_waveInClose;
const auto systemAddBuffer = __imp_waveInAddBuffer;

enum class Device { works, gone, silent, hangs };
std::atomic<Device> device = Device::works;
std::atomic<int> opened = 0;

MMRESULT WINAPI openOrNot(LPHWAVEIN out, UINT id, LPCWAVEFORMATEX format, DWORD_PTR callback,
                          DWORD_PTR instance, DWORD flags) {
    while (device == Device::hangs)
        Sleep(10);
    if (device == Device::gone)
        return MMSYSERR_NODRIVER;
    ++opened;
    return systemOpen(out, id, format, callback, instance, flags);
}

MMRESULT WINAPI closeAndCount(HWAVEIN handle) {
    --opened;
    return systemClose(handle);
}

MMRESULT WINAPI addOrNot(HWAVEIN handle, LPWAVEHDR header, UINT size) {
    if (device == Device::works)
        return systemAddBuffer(handle, header, size);
    return device == Device::gone ? MMSYSERR_NODRIVER : MMSYSERR_NOERROR;
}

TEST(WindowsMicrophone, ADeviceThatHangsIsLostOrFallsSilentIsHeardAgainAndNoOtherIsKept) {
    intercept(__imp_waveInOpen, openOrNot);
    intercept(__imp_waveInClose, closeAndCount);
    intercept(__imp_waveInAddBuffer, addOrNot);
    device = Device::hangs;
    const auto before = ListeningClock::now();
    for (int i = 0; i < 8; ++i)
        EXPECT_EQ(openMicrophone(), nullptr);
    EXPECT_LT(ListeningClock::now() - before, 9s) << "at most four tries hang at a time, 1.5 s each";
    device = Device::works;
    MicrophoneHandle microphone;
    for (int i = 0; i < 50 && microphone == nullptr; ++i) {
        Sleep(100);
        microphone = openMicrophone();
    }
    ASSERT_NE(microphone, nullptr);
    startMicrophone(*microphone);
    for (const auto& [loss, duration] : {std::pair(Device::gone, 4s), std::pair(Device::silent, 1s)}) {
        EXPECT_GE(hearBuffers(*microphone, 6).size(), 6U);
        EXPECT_TRUE(listenUntil(*microphone, [] { return opened == 1; })) << opened;
        device = loss;
        for (const auto end = ListeningClock::now() + duration; ListeningClock::now() < end;) {
            hearBuffers(*microphone, 0);
            waitForSound(*microphone, 250);
        }
        EXPECT_LE(opened, 1);
        device = Device::works;
    }
    EXPECT_GE(hearBuffers(*microphone, 6).size(), 6U);
    EXPECT_EQ(opened, 1);
}

} // namespace
