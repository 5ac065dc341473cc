#pragma once

#include "platform/windows/windows_api.h"

namespace rotika {

/// The calling thread may use COM as long as this lives; `model` is of COINIT.
class ComSession {
public:
    explicit ComSession(DWORD model = COINIT_MULTITHREADED) noexcept
        : isOpen(SUCCEEDED(CoInitializeEx(nullptr, model))) {}
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

} // namespace rotika
