#pragma once

#include "base/window_handle.h"
#include "platform/messages.h"

namespace rotika {

// The windows of this process and the handlers of messages posted to them. Owner thread.

void registerWindow(WindowHandle window, MessageHandler handler);

} // namespace rotika
