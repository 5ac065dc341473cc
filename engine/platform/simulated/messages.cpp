#include "platform/messages.h"

#include "platform/simulated/simulated_desktop.h"

namespace rotika {

bool postWindowMessage(WindowHandle window, std::uint32_t message, std::uintptr_t wParam,
                       std::intptr_t lParam) {
    if (window == nullptr || !window->exists)
        return false;
    simulatedDesktop().enqueue(window, [handler = window->messageArrived, message, wParam, lParam] {
        if (handler != nullptr)
            handler(message, wParam, lParam);
    });
    return true;
}

} // namespace rotika
