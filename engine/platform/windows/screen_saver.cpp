#include "platform/screen_saver.h"

#include "platform/windows/windows_api.h"

namespace rotika {

void wakeScreen() {
    SetThreadExecutionState(ES_DISPLAY_REQUIRED);
}

} // namespace rotika
