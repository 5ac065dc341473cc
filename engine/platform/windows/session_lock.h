#pragma once

#include "platform/windows/windows_api.h"

namespace rotika {

// The lock of the user's session. Owner thread.

/// Makes the system post WM_WTSSESSION_CHANGE to the window until endSessionNotification().
void beginSessionNotification(HWND window);
void endSessionNotification(HWND window);

/// False also if unknown.
bool sessionIsLocked();

} // namespace rotika
