// unsigned callInFaultFrame(void (*body)(void*), void* context, void** stackPointer)
//
// Calls body(context) from a frame with a structured exception handler, which GCC cannot generate. Returns zero
// if the body returned, else the value of eax on arrival at faultLanding. The stack pointer that faultLanding
// needs is stored in *stackPointer.
//
// All callee-saved state is kept in the frame, including the control words of the floating-point units: a
// faulted body did not restore them, and hand-written code has no tables from which the system could restore
// registers.

    .text
    .globl  callInFaultFrame
    .globl  faultLanding
    .def    callInFaultFrame; .scl 2; .type 32; .endef
    .seh_proc callInFaultFrame
callInFaultFrame:
    pushq   %rbp
    .seh_pushreg %rbp
    pushq   %rbx
    .seh_pushreg %rbx
    pushq   %rsi
    .seh_pushreg %rsi
    pushq   %rdi
    .seh_pushreg %rdi
    pushq   %r12
    .seh_pushreg %r12
    pushq   %r13
    .seh_pushreg %r13
    pushq   %r14
    .seh_pushreg %r14
    pushq   %r15
    .seh_pushreg %r15
    // 32 bytes for the callee, ten xmm registers, the control words; 16-byte alignment with the pushes above.
    subq    $200, %rsp
    .seh_stackalloc 200
    movaps  %xmm6, 32(%rsp)
    .seh_savexmm %xmm6, 32
    movaps  %xmm7, 48(%rsp)
    .seh_savexmm %xmm7, 48
    movaps  %xmm8, 64(%rsp)
    .seh_savexmm %xmm8, 64
    movaps  %xmm9, 80(%rsp)
    .seh_savexmm %xmm9, 80
    movaps  %xmm10, 96(%rsp)
    .seh_savexmm %xmm10, 96
    movaps  %xmm11, 112(%rsp)
    .seh_savexmm %xmm11, 112
    movaps  %xmm12, 128(%rsp)
    .seh_savexmm %xmm12, 128
    movaps  %xmm13, 144(%rsp)
    .seh_savexmm %xmm13, 144
    movaps  %xmm14, 160(%rsp)
    .seh_savexmm %xmm14, 160
    movaps  %xmm15, 176(%rsp)
    .seh_savexmm %xmm15, 176
    .seh_handler frameFaultHandler, @except
    .seh_endprologue
    stmxcsr 192(%rsp)
    fnstcw  196(%rsp)
    movq    %rsp, (%r8)
    movq    %rcx, %rax
    movq    %rdx, %rcx
    call    *%rax
    xorl    %eax, %eax
leaveFrame:
    addq    $200, %rsp
    popq    %r15
    popq    %r14
    popq    %r13
    popq    %r12
    popq    %rdi
    popq    %rsi
    popq    %rbx
    popq    %rbp
    ret
faultLanding:
    cld
    fninit
    fldcw   196(%rsp)
    ldmxcsr 192(%rsp)
    movaps  32(%rsp), %xmm6
    movaps  48(%rsp), %xmm7
    movaps  64(%rsp), %xmm8
    movaps  80(%rsp), %xmm9
    movaps  96(%rsp), %xmm10
    movaps  112(%rsp), %xmm11
    movaps  128(%rsp), %xmm12
    movaps  144(%rsp), %xmm13
    movaps  160(%rsp), %xmm14
    movaps  176(%rsp), %xmm15
    jmp     leaveFrame
    .seh_endproc
