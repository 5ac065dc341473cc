#include "platform/clock.h"

#include "platform/windows/windows_api.h"

namespace rotika {

std::uint64_t tickCount() {
    return GetTickCount64();
}

void sleepMs(std::uint32_t durationMs) {
    Sleep(durationMs);
}

} // namespace rotika
