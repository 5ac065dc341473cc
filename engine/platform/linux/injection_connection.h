#pragma once

#include "platform/linux/x11.h"

#include <mutex>

namespace rotika {

/// The connection of the threads that inject input, held locked: keys of two runs must not mix with each
/// other's look-ups. `display` is null without a display.
struct InjectionConnection {
    std::unique_lock<std::mutex> lock;
    Display* display = nullptr;
};

/// Any thread. Opened on first use.
InjectionConnection lockInjectionConnection();

} // namespace rotika
