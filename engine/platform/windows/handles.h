#pragma once

#include "platform/windows/windows_api.h"

#include <utility>

namespace rotika {

/// Owns one system object and closes it with `close`. Move-only; empty by default.
template <typename Handle, auto close>
class UniqueHandle {
public:
    UniqueHandle() = default;
    explicit UniqueHandle(Handle owned) noexcept : handle(owned) {}
    UniqueHandle(UniqueHandle&& other) noexcept : handle(std::exchange(other.handle, Handle{})) {}
    UniqueHandle& operator=(UniqueHandle&& other) noexcept {
        if (this != &other) {
            reset();
            handle = std::exchange(other.handle, Handle{});
        }
        return *this;
    }
    ~UniqueHandle() { reset(); }

    Handle get() const noexcept { return handle; }
    Handle operator->() const noexcept { return handle; }
    explicit operator bool() const noexcept { return handle != Handle{}; }
    void reset() noexcept {
        if (handle != Handle{}) {
            close(std::exchange(handle, Handle{}));
        }
    }
    /// Ends the ownership without closing.
    Handle release() noexcept { return std::exchange(handle, Handle{}); }
    /// Where a system call stores the object it makes. The handle must be empty.
    Handle* slot() noexcept { return &handle; }

private:
    Handle handle{};
};

inline void closeKernelHandle(HANDLE handle) {
    CloseHandle(handle);
}
inline void releaseScreenDc(HDC handle) {
    ReleaseDC(nullptr, handle);
}
inline void deleteMemoryDc(HDC handle) {
    DeleteDC(handle);
}
inline void deleteBitmap(HBITMAP handle) {
    DeleteObject(handle);
}
inline void deleteFont(HFONT handle) {
    DeleteObject(handle);
}
inline void destroyMenu(HMENU handle) {
    DestroyMenu(handle);
}
inline void unhook(HHOOK handle) {
    UnhookWindowsHookEx(handle);
}

template <typename Interface>
void releaseInterface(Interface* object) noexcept {
    object->Release();
}

using KernelHandle = UniqueHandle<HANDLE, closeKernelHandle>;
using ScreenDc = UniqueHandle<HDC, releaseScreenDc>;
using MemoryDc = UniqueHandle<HDC, deleteMemoryDc>;
using BitmapHandle = UniqueHandle<HBITMAP, deleteBitmap>;
using FontHandle = UniqueHandle<HFONT, deleteFont>;
using MenuHandle = UniqueHandle<HMENU, destroyMenu>;
using HookHandle = UniqueHandle<HHOOK, unhook>;

/// A counted reference to a COM object.
template <typename Interface>
using ComPointer = UniqueHandle<Interface*, releaseInterface<Interface>>;

/// CreateFile reports failure by INVALID_HANDLE_VALUE, not null.
inline KernelHandle fileHandle(HANDLE opened) {
    return KernelHandle(opened == INVALID_HANDLE_VALUE ? nullptr : opened);
}

/// Selects an object into a device context and restores the former one at the end.
class SelectedObject {
public:
    SelectedObject(HDC context, HGDIOBJ object) noexcept
        : dc(context), former(SelectObject(context, object)) {}
    SelectedObject(const SelectedObject&) = delete;
    SelectedObject& operator=(const SelectedObject&) = delete;
    ~SelectedObject() { SelectObject(dc, former); }

private:
    HDC dc;
    HGDIOBJ former;
};

} // namespace rotika
