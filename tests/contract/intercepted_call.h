#pragma once

#include "platform/windows/windows_api.h"

#include <utility>

/// Puts a function of the test's own in the place of a system's, for as long as it lives. `entry` is what
/// this program calls the system by: __imp_ and the name of the function.
template <typename Function>
class InterceptedCall {
public:
    InterceptedCall(Function& importEntry, Function replacement) : entry(importEntry) {
        former = exchange(replacement);
    }
    InterceptedCall(const InterceptedCall&) = delete;
    InterceptedCall& operator=(const InterceptedCall&) = delete;
    ~InterceptedCall() { exchange(former); }

private:
    Function exchange(Function function) {
        DWORD protection = 0;
        VirtualProtect(&entry, sizeof(entry), PAGE_READWRITE, &protection);
        return std::exchange(entry, function);
    }

    Function& entry;
    Function former = nullptr;
};
