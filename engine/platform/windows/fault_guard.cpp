#include "platform/fault_guard.h"

#include "platform/windows/windows_api.h"

#include <malloc.h>

namespace {

enum FrameOutcome : unsigned { bodyReturned, bodyFaulted, stackOverflowed };

} // namespace

extern "C" {

unsigned callInFaultFrame(void (*body)(void* context), void* context);

/// Reached when nothing between the fault and the frame has handled it.
EXCEPTION_DISPOSITION frameFaultHandler(EXCEPTION_RECORD* record, void* frame, CONTEXT*,
                                        DISPATCHER_CONTEXT* dispatch) {
    const auto landing =
        reinterpret_cast<void*>(dispatch->ImageBase + *static_cast<const DWORD*>(dispatch->HandlerData));
    const FrameOutcome outcome =
        record->ExceptionCode == EXCEPTION_STACK_OVERFLOW ? stackOverflowed : bodyFaulted;
    // Without the record: the runtime of a thrown exception would take the unwinding for its own search.
    RtlUnwindEx(frame, landing, nullptr, reinterpret_cast<void*>(static_cast<ULONG_PTR>(outcome)),
                dispatch->ContextRecord, dispatch->HistoryTable);
    return ExceptionContinueSearch;
}
}

bool runGuarded(void (*body)(void* context), void* context) {
    const unsigned outcome = callInFaultFrame(body, context);
    if (outcome == stackOverflowed) {
        // Puts the guard page back; without it the next overflow would end the process.
        _resetstkoflw();
    }
    return outcome == bodyReturned;
}
