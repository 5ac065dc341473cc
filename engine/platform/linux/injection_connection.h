#pragma once

#include "platform/linux/x11.h"

#include <mutex>

namespace rotika {

/// The connection of the threads that inject input, locked: keys of two runs must not interleave with each
/// other's look-ups. `display` is null without an X server.
struct InjectionConnection {
    std::unique_lock<std::mutex> lock;
    Display* display = nullptr;
};

/// Any thread. Opened on first use.
InjectionConnection lockInjectionConnection();

} // namespace rotika
