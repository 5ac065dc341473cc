#pragma once

#include "platform/windows/windows_api.h"

/// The calling thread may use COM as long as this lives.
class ComSession {
public:
    ComSession() noexcept : isOpen(SUCCEEDED(CoInitializeEx(nullptr, COINIT_MULTITHREADED))) {}
    ComSession(const ComSession&) = delete;
    ComSession& operator=(const ComSession&) = delete;
    ~ComSession() {
        if (isOpen) {
            CoUninitialize();
        }
    }

private:
    bool isOpen;
};
