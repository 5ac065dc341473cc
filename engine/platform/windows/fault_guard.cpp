#include "platform/fault_guard.h"

#include "platform/windows/windows_api.h"

#include <malloc.h>

#include <utility>

namespace rotika {

// A fault is handled by the frame handler of callInFaultFrame, after all handlers of the code that it calls.
// The system's search for handlers fails, and ends the process, at code without unwind tables, for instance
// the matrix kernels of a speech recogniser. So a vectored handler, which runs before that search, checks
// whether the search would reach the frame, and otherwise jumps there itself.

extern "C" {

unsigned callInFaultFrame(void (*body)(void* context), void* context, void** stackPointer);

/// Not to be called: the label inside callInFaultFrame where execution continues after a fault.
void faultLanding();

EXCEPTION_DISPOSITION frameFaultHandler(EXCEPTION_RECORD* record, void* frame, CONTEXT* context,
                                        DISPATCHER_CONTEXT* dispatch);
}

namespace {

enum FrameOutcome : unsigned { bodyReturned, bodyFaulted, stackOverflowed };

struct Guard {
    Guard* outer = nullptr;
    void* stackPointer = nullptr;
    bool isSearching = false;
};

DWORD64 address(void (*function)()) {
    return reinterpret_cast<DWORD64>(function);
}

bool isFault(const EXCEPTION_RECORD& record) {
    constexpr DWORD severityMask = 0xF0000000;
    constexpr DWORD systemError = 0xC0000000;
    // After a stack overflow there is no stack left for our own search.
    return (record.ExceptionCode & severityMask) == systemError &&
           record.ExceptionCode != EXCEPTION_STACK_OVERFLOW;
}

/// Unwinds one frame; false without an unwind table. Only the function that faulted may be a leaf, which has
/// no table and its return address on top of the stack.
bool unwindFrame(CONTEXT& context, bool mayBeLeaf) {
    DWORD64 image = 0;
    RUNTIME_FUNCTION* const function = RtlLookupFunctionEntry(context.Rip, &image, nullptr);
    if (function != nullptr) {
        void* handlerData = nullptr;
        DWORD64 frame = 0;
        RtlVirtualUnwind(UNW_FLAG_NHANDLER, image, context.Rip, function, &context, &handlerData, &frame,
                         nullptr);
        return true;
    }
    if (mayBeLeaf) {
        context.Rip = *reinterpret_cast<const DWORD64*>(context.Rsp);
        context.Rsp += sizeof(DWORD64);
    }
    return mayBeLeaf;
}

/// Whether the system's search from `context` reaches the frame at `frameStackPointer`.
bool searchReaches(CONTEXT context, DWORD64 frameStackPointer) {
    bool mayBeLeaf = true;
    while (context.Rsp < frameStackPointer) {
        const DWORD64 former = context.Rsp;
        if (!unwindFrame(context, mayBeLeaf) || context.Rsp <= former) {
            return false;
        }
        mayBeLeaf = false;
    }
    return context.Rsp == frameStackPointer;
}

/// The innermost guard of each thread. A TLS slot of the system: thread_local may allocate memory.
DWORD guardSlot() {
    static const DWORD slot = TlsAlloc();
    return slot;
}

LONG CALLBACK onException(EXCEPTION_POINTERS* exception) {
    if (!isFault(*exception->ExceptionRecord)) {
        return EXCEPTION_CONTINUE_SEARCH;
    }
    const DWORD formerError = GetLastError();
    Guard* const guard = static_cast<Guard*>(TlsGetValue(guardSlot()));
    SetLastError(formerError);
    if (guard == nullptr) {
        return EXCEPTION_CONTINUE_SEARCH;
    }
    CONTEXT& context = *exception->ContextRecord;
    const auto frameStackPointer = reinterpret_cast<DWORD64>(guard->stackPointer);
    // A fault during the search: the unwind data are corrupt.
    if (!std::exchange(guard->isSearching, true)) {
        const bool reaches = searchReaches(context, frameStackPointer);
        guard->isSearching = false;
        if (reaches) {
            return EXCEPTION_CONTINUE_SEARCH;
        }
    }
    context.Rip = address(faultLanding);
    context.Rsp = frameStackPointer;
    context.Rax = bodyFaulted;
    return EXCEPTION_CONTINUE_EXECUTION;
}

void installExceptionHandler() {
    // Last in order, so that vectored handlers of libraries run first.
    static void* const handler = AddVectoredExceptionHandler(0, onException);
    static_cast<void>(handler);
}

/// After a stack overflow the search for a handler and the unwinding need several register sets, up to 3 kB
/// each with wide vectors; the system's own reserve is two pages.
void reserveHandlerStack() {
    constexpr ULONG reservedBytes = 64 * 1024;
    ULONG reserved = reservedBytes;
    if (SetThreadStackGuarantee(&reserved) != 0 && reserved < reservedBytes) {
        // The first call in this thread. Wine applies the reserve only when a guard page is set again.
        _resetstkoflw();
    }
}

} // namespace

EXCEPTION_DISPOSITION frameFaultHandler(EXCEPTION_RECORD* record, void* frame, CONTEXT*,
                                        DISPATCHER_CONTEXT* dispatch) {
    const FrameOutcome outcome =
        record->ExceptionCode == EXCEPTION_STACK_OVERFLOW ? stackOverflowed : bodyFaulted;
    // Without the record: the C++ runtime would mistake the unwinding for its own search.
    RtlUnwindEx(frame, reinterpret_cast<void*>(address(faultLanding)), nullptr,
                reinterpret_cast<void*>(static_cast<ULONG_PTR>(outcome)), dispatch->ContextRecord,
                dispatch->HistoryTable);
    return ExceptionContinueSearch;
}

bool runGuarded(void (*body)(void* context), void* context) {
    const DWORD slot = guardSlot();
    installExceptionHandler();
    reserveHandlerStack();
    Guard guard{.outer = static_cast<Guard*>(TlsGetValue(slot))};
    TlsSetValue(slot, &guard);
    const unsigned outcome = callInFaultFrame(body, context, &guard.stackPointer);
    TlsSetValue(slot, guard.outer);
    if (outcome == stackOverflowed) {
        // Restores the guard page; without it the next overflow would end the process.
        _resetstkoflw();
    }
    return outcome == bodyReturned;
}

} // namespace rotika
