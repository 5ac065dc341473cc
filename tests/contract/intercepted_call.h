#pragma once

#include "platform/windows/windows_api.h"

#include <utility>

/// Puts a function of the test's own in the place of a system's, and answers the former. `entry` is what this
/// program calls the system by: __imp_ and the name of the function.
template <typename Function>
Function intercept(Function& entry, Function replacement) {
    DWORD protection = 0;
    VirtualProtect(&entry, sizeof(entry), PAGE_READWRITE, &protection);
    return std::exchange(entry, replacement);
}
