#include "platform/fault_guard.h"

#include "platform/windows/windows_api.h"

#include <malloc.h>

#include <utility>

namespace rotika {

// A fault is found by the frame handler of callInFaultFrame, after every handler of the code below has had
// its turn. The system's search for handlers fails, and ends the process, where it meets code without unwind
// tables, as the matrix kernels of a speech recogniser are. So a vectored handler, which comes before that
// search, looks whether it would arrive, and takes the way out by itself if not.

extern "C" {

unsigned callInFaultFrame(void (*body)(void* context), void* context, void** stackPointer);

/// Not to be called: where the way goes on after a fault, inside callInFaultFrame.
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
    // A stack overflow leaves no room for a search of our own.
    return (record.ExceptionCode & severityMask) == systemError &&
           record.ExceptionCode != EXCEPTION_STACK_OVERFLOW;
}

/// One step towards the caller; false where no table tells the way. Only the function that faulted may be a
/// leaf, which has no table and its return address on top of the stack.
bool stepToCaller(CONTEXT& context, bool mayBeLeaf) {
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

/// Whether the system's search from `context` comes to the frame at `frameStackPointer`.
bool searchArrives(CONTEXT context, DWORD64 frameStackPointer) {
    bool mayBeLeaf = true;
    while (context.Rsp < frameStackPointer) {
        const DWORD64 former = context.Rsp;
        if (!stepToCaller(context, mayBeLeaf) || context.Rsp <= former) {
            return false;
        }
        mayBeLeaf = false;
    }
    return context.Rsp == frameStackPointer;
}

/// The innermost guard of each thread. A slot of the system's, since those of the compiler allocate memory.
DWORD guardSlot() {
    static const DWORD slot = TlsAlloc();
    return slot;
}

LONG CALLBACK firstToSeeFault(EXCEPTION_POINTERS* exception) {
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
    // A search that faults itself has been led astray.
    if (!std::exchange(guard->isSearching, true)) {
        const bool arrives = searchArrives(context, frameStackPointer);
        guard->isSearching = false;
        if (arrives) {
            return EXCEPTION_CONTINUE_SEARCH;
        }
    }
    context.Rip = address(faultLanding);
    context.Rsp = frameStackPointer;
    context.Rax = bodyFaulted;
    return EXCEPTION_CONTINUE_EXECUTION;
}

void watchFaults() {
    // The last of its kind, so that those of a library keep their turn.
    static void* const handler = AddVectoredExceptionHandler(0, firstToSeeFault);
    static_cast<void>(handler);
}

/// The search for a handler and the way back need several register sets, up to 3 kB each with the wide
/// vectors, when the stack has overflown; the system's own reserve is two pages. A thread is asked once.
void keepRoomForHandling() {
    constexpr ULONG roomBytes = 64 * 1024;
    ULONG room = roomBytes;
    if (SetThreadStackGuarantee(&room) != 0 && room < roomBytes) {
        // Wine guards the end of a new stack alone, and minds the reserve once a guard page is set anew.
        _resetstkoflw();
    }
}

} // namespace

EXCEPTION_DISPOSITION frameFaultHandler(EXCEPTION_RECORD* record, void* frame, CONTEXT*,
                                        DISPATCHER_CONTEXT* dispatch) {
    const FrameOutcome outcome =
        record->ExceptionCode == EXCEPTION_STACK_OVERFLOW ? stackOverflowed : bodyFaulted;
    // Without the record: the runtime of a thrown exception would take the unwinding for its own search.
    RtlUnwindEx(frame, reinterpret_cast<void*>(address(faultLanding)), nullptr,
                reinterpret_cast<void*>(static_cast<ULONG_PTR>(outcome)), dispatch->ContextRecord,
                dispatch->HistoryTable);
    return ExceptionContinueSearch;
}

bool runGuarded(void (*body)(void* context), void* context) {
    const DWORD slot = guardSlot();
    watchFaults();
    keepRoomForHandling();
    Guard guard{.outer = static_cast<Guard*>(TlsGetValue(slot))};
    TlsSetValue(slot, &guard);
    const unsigned outcome = callInFaultFrame(body, context, &guard.stackPointer);
    TlsSetValue(slot, guard.outer);
    if (outcome == stackOverflowed) {
        // Puts the guard page back; without it the next overflow would end the process.
        _resetstkoflw();
    }
    return outcome == bodyReturned;
}

} // namespace rotika
