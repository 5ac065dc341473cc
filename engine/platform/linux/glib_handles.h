#pragma once

#include <gio/gio.h>

#include <memory>

namespace rotika {

struct GObjectDeleter {
    void operator()(gpointer object) const noexcept {
        if (object != nullptr)
            g_object_unref(object);
    }
};
template <typename T>
using GObjectPointer = std::unique_ptr<T, GObjectDeleter>;

struct GFreeDeleter {
    void operator()(gpointer memory) const noexcept { g_free(memory); }
};
template <typename T>
using GPointer = std::unique_ptr<T, GFreeDeleter>;

} // namespace rotika
