#pragma once

#include "platform/messages.h"
#include "platform/window_handle.h"

// The windows of this process and who handles what is posted to them. Owner thread.

void registerWindow(WindowHandle window, MessageHandler handler);
