#include "platform/screen_saver.h"

#include "platform/windows/windows_api.h"

void wakeScreen() {
    SetThreadExecutionState(ES_DISPLAY_REQUIRED);
}
