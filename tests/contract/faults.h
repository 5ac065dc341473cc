#pragma once

// Faults as a library would make them, for the tests of the guard. They hide themselves from sanitizers,
// which would report them before the system does.

#define ROTIKA_UNCHECKED __attribute__((noinline, no_sanitize("address", "undefined")))

ROTIKA_UNCHECKED inline void writeToNowhere(void*) {
    int* volatile nowhere = nullptr;
    *static_cast<volatile int*>(nowhere) = 1;
}

ROTIKA_UNCHECKED inline void jumpToNowhere(void*) {
    void (*volatile nowhere)() = nullptr;
    nowhere();
}

ROTIKA_UNCHECKED inline void divideByZero(void*) {
    volatile int divisor = 0;
    volatile int quotient = 1;
    quotient = quotient / divisor;
}

ROTIKA_UNCHECKED inline void runIllegalInstruction(void*) {
    __builtin_trap();
}

inline volatile bool isBottomless = true;

/// In steps below a page's size, as the guard page of a stack asks for.
ROTIKA_UNCHECKED inline int deepen(volatile const char* above) {
    volatile char room[3000];
    room[0] = static_cast<char>(above[0] + 1);
    return isBottomless ? deepen(room) + room[0] : 0;
}

ROTIKA_UNCHECKED inline void useUpStack(void*) {
    const volatile char top = 0;
    deepen(&top);
}
