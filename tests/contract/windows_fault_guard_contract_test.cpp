#include "platform/fault_guard.h"

#include <gtest/gtest.h>

// The registers that a callee must put back are spoilt at the time of the fault, and nothing tells the system
// where they or the return address lie: as in hand-written matrix kernels.
extern "C" void faultWithoutUnwindTables(void*);
__asm__(".text\n"
        ".globl faultWithoutUnwindTables\n"
        "faultWithoutUnwindTables:\n"
        "    pushq %rbx\n"
        "    pushq %rsi\n"
        "    subq $200, %rsp\n"
        "    xorl %eax, %eax\n"
        "    movq %rax, (%rsp)\n"
        "    xorl %ebx, %ebx\n"
        "    xorl %esi, %esi\n"
        "    pxor %xmm6, %xmm6\n"
        "    movl %eax, 8\n"
        "    addq $200, %rsp\n"
        "    popq %rsi\n"
        "    popq %rbx\n"
        "    ret\n");

TEST(FaultGuardOnWindowsContract, SurvivesFaultsInCodeWithoutUnwindTables) {
    const volatile double step = 1.5;
    double kept = step;
    int survived = 0;
    for (int round = 0; round < 1000; ++round) {
        survived += runGuarded(faultWithoutUnwindTables, nullptr) ? 0 : 1;
        kept += step;
    }
    EXPECT_EQ(survived, 1000);
    EXPECT_EQ(kept, 1001 * 1.5);
}

TEST(FaultGuardOnWindowsContract, AFaultWithoutUnwindTablesLeavesOnlyTheInnermostGuard) {
    bool innerSurvived = true;
    EXPECT_TRUE(runGuarded(
        [](void* inner) { *static_cast<bool*>(inner) = runGuarded(faultWithoutUnwindTables, nullptr); },
        &innerSurvived));
    EXPECT_FALSE(innerSurvived);
}
