#include "platform/fault_guard.h"

#include "platform/simulated/simulated_desktop.h"

namespace rotika {

bool runGuarded(void (*body)(void* context), void* context) {
    try {
        body(context);
        return true;
    } catch (const SimulatedFault&) {
        return false;
    }
}

} // namespace rotika
