#include "platform/messages.h"

#include "platform/windows/windows_api.h"

namespace rotika {

bool postWindowMessage(WindowHandle window, std::uint32_t message, std::uintptr_t wParam,
                       std::intptr_t lParam) {
    // For a null window the system posts to the calling thread and reports success.
    return window != nullptr && PostMessageW(nativeWindow(window), message, wParam, lParam) != 0;
}

} // namespace rotika
