#pragma once

#include "platform/windows/windows_api.h"

namespace rotika {

// The lock of the user's session. Owner thread.

/// From now on the system posts WM_WTSSESSION_CHANGE to the window, until it is told to stop.
void beginSessionNotification(HWND window);
void endSessionNotification(HWND window);

/// False also where the system cannot tell.
bool sessionIsLocked();

} // namespace rotika
