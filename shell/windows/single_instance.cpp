#include "shell/single_instance.h"

#include <windows.h>

bool claimSingleInstance() {
    CreateMutexW(nullptr, TRUE, L"RotikaEngineRunning");
    return GetLastError() != ERROR_ALREADY_EXISTS;
}
