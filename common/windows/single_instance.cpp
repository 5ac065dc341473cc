#include "common/single_instance.h"

#include <windows.h>

bool claimSingleInstance() {
    CreateMutexA(nullptr, TRUE, singleInstanceName);
    return GetLastError() != ERROR_ALREADY_EXISTS;
}
