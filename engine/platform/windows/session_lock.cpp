#include "platform/windows/session_lock.h"

#include <wtsapi32.h>

#include <cstddef>

namespace rotika {

namespace {

/// Missing from the compiler's headers: the class WTSSessionInfoEx and the start of its data.
constexpr auto sessionInfoClass = static_cast<WTS_INFO_CLASS>(25);
struct SessionInfo {
    DWORD level;
    DWORD padding;
    ULONG sessionId;
    WTS_CONNECTSTATE_CLASS state;
    LONG flags;
};
static_assert(offsetof(SessionInfo, flags) == 16);

} // namespace

void beginSessionNotification(HWND window) {
    WTSRegisterSessionNotification(window, NOTIFY_FOR_THIS_SESSION);
}

void endSessionNotification(HWND window) {
    WTSUnRegisterSessionNotification(window);
}

bool sessionIsLocked() {
    constexpr DWORD knownLevel = 1;
    constexpr LONG lockedFlags = 0; // inverted in Windows 7
    LPWSTR bytes = nullptr;
    DWORD size = 0;
    if (WTSQuerySessionInformationW(WTS_CURRENT_SERVER_HANDLE, WTS_CURRENT_SESSION, sessionInfoClass, &bytes,
                                    &size) == 0) {
        return false;
    }
    const auto& info = *reinterpret_cast<const SessionInfo*>(bytes);
    const bool isLocked = size >= sizeof(info) && info.level == knownLevel && info.flags == lockedFlags;
    WTSFreeMemory(bytes);
    return isLocked;
}

} // namespace rotika
