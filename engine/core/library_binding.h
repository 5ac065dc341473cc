#pragma once

#include "platform/dynamic_library.h"

/// Sets `function`, a pointer to a function, to what the library exports under `name`; false and null when it
/// has no such name.
template <typename Function>
bool bindFunction(LibraryHandle library, const char* name, Function& function) {
    function = reinterpret_cast<Function>(findLibraryFunction(library, name));
    return function != nullptr;
}
