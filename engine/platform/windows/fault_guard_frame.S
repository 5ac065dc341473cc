// unsigned callInFaultFrame(void (*body)(void*), void* context)
//
// Calls body(context) below a frame with a structured exception handler, which GCC cannot make by itself.
// Zero if the body returned, else what frameFaultHandler handed to the unwinder.
//
// The unwinder brings back the general and the xmm registers by the tables of the frames in between. The
// control words of the floating-point units are kept here, since a body that changed them did not get to put
// them back.

    .text
    .globl  callInFaultFrame
    .def    callInFaultFrame; .scl 2; .type 32; .endef
    .seh_proc callInFaultFrame
callInFaultFrame:
    subq    $56, %rsp
    .seh_stackalloc 56
    .seh_handler frameFaultHandler, @except
    .seh_endprologue
    stmxcsr 32(%rsp)
    fnstcw  36(%rsp)
    movq    %rcx, %rax
    movq    %rdx, %rcx
    call    *%rax
    xorl    %eax, %eax
    addq    $56, %rsp
    ret
faultLanding:
    // The unwinder has put its return value into eax.
    cld
    fninit
    fldcw   36(%rsp)
    ldmxcsr 32(%rsp)
    addq    $56, %rsp
    ret
    // Where the handler finds the way out.
    .seh_handlerdata
    .rva    faultLanding
    .text
    .seh_endproc
